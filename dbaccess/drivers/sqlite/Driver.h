#pragma once

#include "dbaccess/Driver.h"

#include <memory>
#include <string_view>

struct sqlite3;

namespace dbaccess::sqlite {

/// Marks a file as a directory's, in the file's header.
inline constexpr int kApplicationId = 0x5156444C;

/// Opens "PATH?option=value..." or ":memory:". Options: mode=ro|rw|rwc (read only; must exist; made when missing, the
/// default), busy_timeout=MILLISECONDS that a locked file is waited for (5000), statement-cache=N, kind=N.
/// @throws CAException, also for a file that is no SQLite file or belongs to another application.
std::unique_ptr<Session> OpenSession(std::string_view location);

/// Gives a connection the upper() that the directory's indexes are ordered by, in place of the engine's own.
void RegisterUpper(sqlite3* db);

} // namespace dbaccess::sqlite
