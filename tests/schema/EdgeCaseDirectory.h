#pragma once

#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Tables.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

/// A directory with rows in every table that hold what is easily lost or changed on the way to another engine.
namespace awkward {

inline const std::vector<std::string>& Texts()
{
    // The shortest column takes 32 characters.
    static const std::vector<std::string> texts = {
        "",
        "it's",
        "'; DROP TABLE qv_User; --",
        R"(C:\data\)",
        R"(\')",
        "a\\\nb",
        "a\\\r\nb",
        "two\r\nlines\tand a tab\n",
        " blanks around ",
        R"(100% _any_ {table} "{id}" /* */)",
        "\x01\x1F\x7F",
        "gr\xC3\xB6\xC3\x9Fter \xC3\xA9 \xCE\xA9",
        "\xD0\x96\xD0\xB0\xD0\xBD\xD0\xBD\xD0\xB0",
        "\xE6\x97\xA5\xE6\x9C\xAC\xE8\xAA\x9E",
        "\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D",
        "\xF0\x9F\x98\x80\xF0\xA0\x80\x8B",
        "e\xCC\x81",
        "NULL",
        "007",
    };
    return texts;
}

struct SourceColumn {
    std::string name;
    std::string type;
    bool takesNull;
};

inline std::string Quoted(const CAConnect& conn, const std::string& text)
{
    return "'" + std::string(conn.EscapeLiteral(CString(std::string_view(text))).View()) + "'";
}

/// A value of a column in a row, both numbered, as it stands in a statement.
inline std::string ValueFor(const CAConnect& conn, const SourceColumn& column, std::size_t row, std::size_t number)
{
    static const std::vector<std::string> numbers = {"0", "-1", "2147483647", "-2147483648", "7"};
    static const std::vector<std::string> days = {"1969-07-20", "1900-01-01", "2038-01-20", "9999-12-31", "2000-02-29"};
    static const std::vector<std::string> times = {"1969-12-31 23:59:59", "1000-01-01 00:00:00", "2013-05-07 09:03:00"};
    const std::size_t at = row + number;
    if (column.takesNull && at % 6 == 5) {
        return "NULL";
    }
    if (column.type == "INTEGER") {
        return numbers[at % numbers.size()];
    }
    if (column.type == "DATE") {
        return Quoted(conn, days[at % days.size()]);
    }
    return Quoted(conn, column.type == "DATETIME" ? times[at % times.size()] : Texts()[at % Texts().size()]);
}

inline std::vector<SourceColumn> ColumnsOf(CAConnect& conn, const std::string& table)
{
    std::vector<SourceColumn> columns;
    const std::string sql =
        "SELECT name, type, \"notnull\" FROM pragma_table_xinfo('" + table + "') WHERE hidden = 0 AND name <> 'Col_ID'";
    CARecordset rs;
    for (rs.Open(sql.c_str(), &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandText); rs.IsEOF() == 0;
         rs.MoveNext()) {
        int notNull = 0;
        rs.GetValue(3, notNull);
        columns.push_back({rs.GetValueToStr(1, true).GetString(), rs.GetValueToStr(2, true).GetString(), notNull == 0});
    }
    return columns;
}

/// A row of a table by its number; rows of tables without ids come twice.
inline void AddRow(CAConnect& conn, const schema::Table& table, std::size_t row)
{
    std::string names;
    std::string values;
    std::size_t number = 0;
    for (const SourceColumn& column : ColumnsOf(conn, table.name)) {
        names += (names.empty() ? "" : ",") + column.name;
        values += (values.empty() ? "" : ",") + ValueFor(conn, column, row, number++);
    }
    if (table.columns.front().name != "Col_ID") {
        const std::string sql = "INSERT INTO " + table.name + " (" + names + ") VALUES (" + values + ")";
        conn.Execute((sql + ",(" + values + ")").c_str());
        return;
    }
    // Holes between them, and one that means "none" to some; texts in the order in which engines may keep them.
    const std::string id =
        table.columns.front().isAutoIncrement ? std::to_string(row * row) : "'board " + std::to_string(100 + row) + "'";
    conn.Execute(("INSERT INTO " + table.name + " (Col_ID" + (names.empty() ? "" : "," + names) + ") VALUES (" + id +
                  (values.empty() ? "" : "," + values) + ")")
                     .c_str());
}

inline std::vector<schema::Table> Tables() { return schema::TablesOf(schema::sqlite::TheDialect()); }

/// The same without the record of changes, which early directories lack, and which no two runs write alike.
inline std::vector<schema::Table> TablesWithoutRecord()
{
    std::vector<schema::Table> tables = Tables();
    std::erase_if(tables, [](const schema::Table& table) { return table.name.starts_with("qv_Audit"); });
    return tables;
}

/// Fills a directory of SQLite that has no rows.
inline void Fill(CAConnect& conn)
{
    conn.BeginTrans();
    for (const schema::Table& table : Tables()) {
        for (std::size_t row = 0; row < 2 * Texts().size(); ++row) {
            AddRow(conn, table, row);
        }
    }
    conn.Execute("INSERT INTO kel_Msg (Col_ID, Col_SendDate) VALUES (5000000001, '2024-02-29 12:00:00')");
    conn.Execute("INSERT INTO kel_Msg_Rece (Col_ID, Col_MsgID) VALUES (9007199254740993, 5000000001)");
    std::string longText;
    while (longText.size() < 600'000) {
        longText += R"(it's a \ long text: )"
                    "\xF0\x9F\x98\x80\n";
    }
    conn.Execute(("UPDATE qv_User SET Col_UserData = " + Quoted(conn, longText) + " WHERE Col_ID = 4").c_str());
    // Ids that nobody has any more.
    conn.Execute("INSERT INTO qv_User (Col_ID, Col_LoginName) VALUES (7000, 'gone')");
    conn.Execute("DELETE FROM qv_User WHERE Col_ID = 7000");
    conn.Execute("DELETE FROM kel_AddIn");
    conn.CommitTrans();
}

/// All rows of tables with all columns that every engine has, NULLs told from texts, in an order of their bytes.
inline std::string Dump(CAConnect& conn, const std::vector<schema::Table>& tables = Tables())
{
    std::string dump;
    for (const schema::Table& table : tables) {
        std::string names;
        for (const schema::Column& column : table.columns) {
            names += (names.empty() ? "" : ",") + column.name;
        }
        std::vector<std::string> rows;
        CARecordset rs;
        for (rs.Open(("SELECT " + names + " FROM " + table.name).c_str(), &conn, adbcCursorStatic, adbcLockOptimistic,
                     adbcCommandText);
             rs.IsEOF() == 0; rs.MoveNext()) {
            std::string row;
            for (long column = 1; column <= rs.GetColumnCount(); ++column) {
                CString text;
                row += rs.GetValue(column, text, true) ? "<" + std::string(text.View()) + ">" : "NULL";
            }
            rows.push_back(row);
        }
        std::sort(rows.begin(), rows.end());
        dump += table.name + "\n";
        for (const std::string& row : rows) {
            dump += row + "\n";
        }
    }
    return dump;
}

} // namespace awkward
