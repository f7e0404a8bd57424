#include "console/Asked.h"

#include <fmt/format.h>

namespace console {

int Number(CAConnect& conn, const std::string& sql)
{
    int number = 0;
    EachRow(conn, sql, [&number](CARecordset& row) { row.GetValue(1, number); });
    return number;
}

void ThrowReason(const CAConnect& conn, std::string_view what)
{
    if (conn.GetFailure() != nullptr) {
        throw ErrorFrom(conn, *conn.GetFailure());
    }
    throw DatabaseError(fmt::format("{}, without saying why", what), !conn.IsOpen());
}

std::string Text(const CString& text) { return std::string(text.View()); }

std::string TextIn(CARecordset& row, long column) { return Text(row.GetValueToStr(column, true)); }

} // namespace console
