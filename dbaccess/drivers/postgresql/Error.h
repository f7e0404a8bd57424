#pragma once

#include "dbaccess/CAException.h"

#include <string_view>

struct pg_conn;
struct pg_result;

namespace dbaccess::postgresql {

/// What a statement failed with: the server's message and SQLSTATE; of a lost connection, the client library's words
/// and 08006.
CAException StatementError(const pg_result* result);

/// Why a connection could not be made, with 08001. Never holds what it was asked for with.
/// @param lines  as the client library writes them of the servers that were tried.
CAException ConnectError(std::string_view lines);
/// What the handle of a lost connection failed with where there is no result, with 08006.
CAException LostError(const pg_conn* db);

} // namespace dbaccess::postgresql
