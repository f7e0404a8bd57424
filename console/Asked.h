#pragma once

#include "basefun/QVBaseFun.h"
#include "console/Engine.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"

#include <limits>
#include <string>
#include <string_view>
#include <type_traits>

// How the façades ask: the module's operations, and reads of their own.

namespace console {

/// Runs an operation of the module. The error text is emptied first, so that an old one is not taken for its own.
/// @throws DatabaseError when it gives false.
template <class Operation>
void Run(const CAConnect& conn, Operation operation)
{
    CQVBaseFun::m_strLastError.Empty();
    if (!operation()) {
        throw ModuleError(conn);
    }
}

/// Gives every row of a query to `row(recordset)`; when that gives false, it was the last.
/// @param most  rows to read at most. @throws DatabaseError.
template <class Row>
void EachRow(CAConnect& conn, const std::string& sql, Row row, int most = std::numeric_limits<int>::max())
{
    Asking(conn, [&] {
        CARecordset rs;
        if (!rs.Open(sql.c_str(), &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable)) {
            throw CAException("the connection is not open");
        }
        for (int i = 0; i < most && rs.IsEOF() == 0; ++i, rs.MoveNext()) {
            if constexpr (std::is_same_v<decltype(row(rs)), bool>) {
                if (!row(rs)) {
                    return;
                }
            } else {
                row(rs);
            }
        }
    });
}

/// The number that a query gives, 0 where it gives none. @throws DatabaseError.
int Number(CAConnect& conn, const std::string& sql);

/// Says why a record was not saved, which it keeps to itself. @param what  such as "the new role". @throws
/// DatabaseError.
[[noreturn]] void ThrowReason(const CAConnect& conn, std::string_view what);

std::string Text(const CString& text);
/// A column of the current row; the empty text for a NULL.
std::string TextIn(CARecordset& row, long column);

} // namespace console
