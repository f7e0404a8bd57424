#pragma once

#include "dbaccess/CAConnect.h"

namespace dbaccess {

/// What operations tell engines apart by, with the numbers that CAConnect::m_nDBType, Session::DbType and the option
/// kind of a connection URL have for it.
enum class EngineKind : int {
    access = 0, ///< has neither upper() nor ESCAPE
    sqlServer = 1,
    comparesInCapitals = 3, ///< names are compared through upper(): SQLite, PostgreSQL and others
    mysql = 6,              ///< MySQL and MariaDB: operations double backslashes, and counts are of 64 bits
};

/// The kind that a connection acts on. Programs may set it to another one than its engine's, also to an unknown one.
inline EngineKind EngineKindOf(const CAConnect& conn) noexcept { return static_cast<EngineKind>(conn.m_nDBType); }

/// The number of a kind.
constexpr int NumberOf(EngineKind kind) noexcept { return static_cast<int>(kind); }

} // namespace dbaccess
