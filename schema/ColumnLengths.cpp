#include "schema/ColumnLengths.h"

#include "dbaccess/CARecordset.h"
#include "platform/CodePage.h"
#include "schema/Dialect.h"
#include "schema/Tables.h"

#include <algorithm>

namespace schema {

namespace {

std::string Filled(std::string statement, const std::string& table)
{
    constexpr std::string_view kTable = "{table}";
    const std::size_t at = statement.find(kTable);
    return at == std::string::npos ? statement : statement.replace(at, kTable.size(), table);
}

/// @param inUtf16  counts letters beyond the first 65536 twice.
std::size_t LengthOf(std::string_view text, bool inUtf16)
{
    const auto isFirst = [](unsigned char byte) { return (byte & 0xC0U) != 0x80U; };
    const auto isFirstOfFour = [](unsigned char byte) { return byte >= 0xF0U; };
    return static_cast<std::size_t>(std::ranges::count_if(text, isFirst) +
                                    (inUtf16 ? std::ranges::count_if(text, isFirstOfFour) : 0));
}

} // namespace

ColumnLengths::ColumnLengths(CAConnect& conn, const std::string& table)
{
    const Dialect& dialect = DialectOf(conn);
    m_countsUtf16 = dialect.lengthsInUtf16;
    if (dialect.listLengths.empty()) {
        for (const Table& known : TablesOf(dialect)) {
            for (const Column& column : known.columns) {
                if (known.name == table && column.length > 0) {
                    m_most[platform::UpperUtf8(column.name)] = column.length;
                }
            }
        }
        return;
    }
    CARecordset rs;
    rs.Open(Filled(dialect.listLengths, table).c_str(), &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    for (; rs.IsEOF() == 0; rs.MoveNext()) {
        __int64 most = 0;
        if (rs.GetValue(2, most) && most > 0) {
            m_most[platform::UpperUtf8(rs.GetValueToStr(1, true).View())] = static_cast<std::size_t>(most);
        }
    }
}

std::optional<ColumnLengths::Excess> ColumnLengths::ExcessOf(std::string_view column, std::string_view text) const
{
    const auto most = m_most.find(platform::UpperUtf8(column));
    if (most == m_most.end() || text.size() <= most->second) {
        return std::nullopt;
    }
    const std::size_t length = LengthOf(text, m_countsUtf16);
    return length > most->second ? std::optional(Excess{length, most->second}) : std::nullopt;
}

} // namespace schema
