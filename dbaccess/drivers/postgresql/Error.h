#pragma once

#include "dbaccess/CAException.h"

struct pg_conn;
struct pg_result;

namespace dbaccess::postgresql {

/// What a statement failed with: the server's message and SQLSTATE; of a lost connection, the client library's words
/// and 08006.
CAException StatementError(const pg_result* result);

/// What a handle last failed with where there is no result: 08001 while it is being connected, 08006 from then on.
/// Never holds what the connection was asked for with.
CAException ConnectError(const pg_conn* db);
CAException LostError(const pg_conn* db);

} // namespace dbaccess::postgresql
