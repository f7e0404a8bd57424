#include "console/Asked.h"

#include <fmt/format.h>

namespace console {

int Number(CAConnect& conn, const std::string& sql)
{
    int number = 0;
    EachRow(conn, sql, [&number](CARecordset& row) { row.GetValue(1, number); });
    return number;
}

void ThrowReason(CAConnect& conn, std::string_view table, std::string_view what)
{
    // A write that changes nothing meets the same trouble and tells, unless it only meets the transaction that the
    // first one has broken.
    constexpr std::string_view brokenTransaction = "[PostgreSQL 25P02]";
    const std::string probe = fmt::format("DELETE FROM {} WHERE 1 = 0", table);
    try {
        Asking(conn, [&] { conn.Execute(probe.c_str()); });
    } catch (const DatabaseError& e) {
        if (e.EngineLine().find(brokenTransaction) == std::string::npos) {
            throw;
        }
    }
    throw DatabaseError(fmt::format("{}, without saying why", what), !conn.IsOpen());
}

std::string Text(const CString& text) { return std::string(text.View()); }

std::string TextIn(CARecordset& row, long column) { return Text(row.GetValueToStr(column, true)); }

} // namespace console
