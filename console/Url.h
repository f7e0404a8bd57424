#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace console {

/// @param source  names the URL in the sentence, such as "--db". @throws Error for a text without a scheme, and for a
/// SQLite URL that names a server.
void RequireScheme(const std::string& url, std::string_view source);

/// The database to work on: the --db option, else the environment's QVADMIN_DB, else a file in the user's data
/// directory.
/// @throws Error as RequireScheme does, and when there is no data directory to be found.
std::string ChooseUrl(const std::optional<std::string>& option);

/// Whether ChooseUrl takes the file in the user's data directory.
bool IsDefault(const std::optional<std::string>& option);

/// The URL with mode=rw when it is a SQLite file's and names no mode: a file is then opened but never made.
std::string WithoutCreating(const std::string& url);

/// The file behind a SQLite URL; nothing for other engines and for a database in memory.
std::optional<std::filesystem::path> SqliteFile(const std::string& url);
/// Whether opening the URL as it stands makes a SQLite file that is not there.
bool MakesFile(const std::string& url);

/// Whether the URL is that of a SQLite file which it, or the system, lets nobody write.
bool IsReadOnly(const std::string& url);

/// Sees to it that a SQLite file can be made where its URL says; does nothing for any other URL.
/// @param parents  makes the directories above it that are missing, for their owner only. @throws Error when one is
/// missing and not to be made, or cannot be made.
void PrepareDirectory(const std::string& url, bool parents);

/// The URL for people: a password in it is not shown.
std::string ShownUrl(const std::string& url);
/// Whether there is something in the URL that ShownUrl hides.
bool HoldsPassword(const std::string& url);

/// Whether a URL is that of a server, and says nothing of a password.
bool TakesPassword(const std::string& url);
/// The URL, which takes one, with a password in it. @throws Error (invalid) where the URL names no user.
std::string WithPassword(const std::string& url, std::string_view password);

} // namespace console
