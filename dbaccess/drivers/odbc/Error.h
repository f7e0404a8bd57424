#pragma once

#include "dbaccess/CAException.h"

#include <string>
#include <string_view>

namespace dbaccess::odbc {

/// What a handle last failed with: the messages of all its diagnostic records, without the names in brackets before
/// them, and the first one's SQLSTATE and number ("ODBC 42S02 1146").
struct Failure {
    std::string message; // UTF-8
    std::string sqlState;
    long number = 0;

    /// @param what  what was being done, put before the message; empty for nothing.
    [[nodiscard]] CAException Exception(std::string_view what = {}) const;
};

/// @param handleType  SQL_HANDLE_DBC or SQL_HANDLE_STMT.
Failure LastFailure(short handleType, void* handle);

} // namespace dbaccess::odbc
