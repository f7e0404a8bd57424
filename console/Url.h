#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace console {

/// The database to work on: the --db option, else the environment's QVADMIN_DB, else a file in the user's data
/// directory.
/// @throws Refusal for a text without a scheme, and when there is no data directory to be found.
std::string ChooseUrl(const std::optional<std::string>& option);

/// The URL with mode=rw when it is a SQLite file's and names no mode: a file is then opened but never made.
std::string WithoutCreating(const std::string& url);

/// The file behind a SQLite URL; nothing for other engines and for a database in memory.
std::optional<std::filesystem::path> SqliteFile(const std::string& url);
/// Whether opening the URL as it stands makes a SQLite file that is not there.
bool MakesFile(const std::string& url);

/// Makes the directories above a file that are missing, for their owner only. @throws Refusal.
void MakeParentDirectories(const std::filesystem::path& file);

/// The URL for people: a password in it is not shown.
std::string ShownUrl(const std::string& url);

} // namespace console
