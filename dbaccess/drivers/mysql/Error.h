#pragma once

#include "dbaccess/CAException.h"

#include <string_view>

struct st_mysql;

namespace dbaccess::mysql {

/// A failure's name and number, as CAException::GetErrorCode shows it.
CString ErrorCode(unsigned int number);

/// The last failure on a handle, with the server's or the client library's message and number.
CAException LastError(st_mysql* handle);

/// Whether the last failure on a handle was the end of its connection. A node of a cluster that does not take
/// statements for now (1047) is no such end, whatever its SQLSTATE says.
bool IsLost(st_mysql* handle);

/// Whether another server of a list is worth trying after this failure to connect: nobody answers, or who answers takes
/// nobody in now. A wrong password or database is the same everywhere.
bool IsForAnotherServer(unsigned int number);

} // namespace dbaccess::mysql
