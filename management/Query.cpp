#include "management/Query.h"

#include "management/Escape.h"
#include "management/Lengths.h"
#include "schema/Schema.h"

#include <fmt/format.h>

namespace management {

void Execute(CAConnect& conn, const std::string& sql)
{
    WithDatabaseErrors(conn, [&] { conn.Execute(sql.c_str()); });
}

int Number(CAConnect& conn, const std::string& sql)
{
    int number = 0;
    EachRow(conn, sql, [&number](CARecordset& row) { row.GetValue(1, number); });
    return number;
}

int LastInsertedId(CAConnect& conn)
{
    return WithDatabaseErrors(conn, [&] { return schema::LastInsertedId(conn); });
}

void Assignments::Text(std::string_view column, std::string_view name, const std::optional<std::string>& text)
{
    if (text) {
        if (!m_lengths) {
            m_lengths = LengthsOf(m_conn, m_table);
        }
        RequireFits(*m_lengths, {name, column, *text});
        Add(column, Literal(m_conn, *text));
    }
}

void Assignments::Number(std::string_view column, const std::optional<int>& number)
{
    if (number) {
        Add(column, std::to_string(*number));
    }
}

void Assignments::Apply(int id) const { Apply(fmt::format("Col_ID = {}", id)); }

void Assignments::Apply(std::string_view condition) const
{
    if (!m_text.empty()) {
        Execute(m_conn, fmt::format("UPDATE {} SET {} WHERE {}", m_table, m_text, condition));
    }
}

void Assignments::Add(std::string_view column, std::string_view value)
{
    m_text += fmt::format("{}{} = {}", m_text.empty() ? "" : ", ", column, value);
}

void ThrowWriteError(const CAConnect& conn, std::string_view what)
{
    if (conn.GetFailure() != nullptr) {
        throw ErrorFrom(conn, *conn.GetFailure());
    }
    throw DatabaseError(fmt::format("{}, without saying why", what), !conn.IsOpen());
}

std::string Text(const CString& text) { return std::string(text.View()); }

std::string TextIn(CARecordset& row, long column) { return Text(row.GetValueToStr(column, true)); }

std::optional<std::string> OptionalTextIn(CARecordset& row, long column)
{
    CString text;
    return row.GetValue(column, text, true) ? std::optional(Text(text)) : std::nullopt;
}

int NumberIn(CARecordset& row, long column)
{
    int number = 0;
    row.GetValue(column, number);
    return number;
}

void ReadColumn(CARecordset& row, long column, int& out) { row.GetValue(column, out); }
void ReadColumn(CARecordset& row, long column, bool& out) { row.GetValue(column, out); }
void ReadColumn(CARecordset& row, long column, unsigned long& out) { row.GetValue(column, out); }
void ReadColumn(CARecordset& row, long column, std::int64_t& out)
{
    __int64 number = out;
    row.GetValue(column, number);
    out = number;
}
void ReadColumn(CARecordset& row, long column, std::optional<int>& out)
{
    int number = 0;
    out = row.GetValue(column, number) ? std::optional(number) : std::nullopt;
}
void ReadColumn(CARecordset& row, long column, std::string& out) { out = TextIn(row, column); }
void ReadColumn(CARecordset& row, long column, std::optional<std::string>& out) { out = OptionalTextIn(row, column); }

} // namespace management
