#pragma once

#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/DatabaseError.h"
#include "schema/ColumnLengths.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

// How the façades ask: the module's operations, and reads of their own.

namespace management {

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
    WithDatabaseErrors(conn, [&] {
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

/// How many numbers one statement lists: engines limit its length.
inline constexpr std::size_t kIdsPerStatement = 500;

/// Gives ids to `use(span)` part by part, each part as many as one statement lists.
template <class Use>
void ForEachPart(std::span<const int> ids, Use use)
{
    for (; !ids.empty(); ids = ids.subspan(std::min(ids.size(), kIdsPerStatement))) {
        use(ids.first(std::min(ids.size(), kIdsPerStatement)));
    }
}

/// Runs a statement whose rows nobody wants. @throws DatabaseError.
void Execute(CAConnect& conn, const std::string& sql);

/// The number that a query gives, 0 where it gives none. @throws DatabaseError.
int Number(CAConnect& conn, const std::string& sql);

/// The id of the row that was inserted last, see schema::LastInsertedId. @throws DatabaseError.
int LastInsertedId(CAConnect& conn);

/// The assignments of an UPDATE, for columns that are to be changed and no others.
class Assignments {
public:
    Assignments(CAConnect& conn, std::string table) : m_conn(conn), m_table(std::move(table)) {}

    /// Nothing leaves the column as it is.
    /// @param name  of the text, for sentences, such as "the name".
    /// @throws Error (invalid) for a text that is longer than the column or has a NUL byte, DatabaseError.
    void Text(std::string_view column, std::string_view name, const std::optional<std::string>& text);
    void Number(std::string_view column, const std::optional<int>& number);
    /// Changes the row of an id, if there is anything to change. @throws DatabaseError.
    void Apply(int id) const;
    /// Changes every row of which a condition holds, if there is anything to change. @throws DatabaseError.
    void Apply(std::string_view condition) const;

private:
    void Add(std::string_view column, std::string_view value);

    CAConnect& m_conn;
    std::string m_table;
    std::optional<schema::ColumnLengths> m_lengths; ///< once they are wanted
    std::string m_text;
};

/// Says why a record was not saved, which it keeps to itself. @param what  such as "the new role". @throws
/// DatabaseError.
[[noreturn]] void ThrowWriteError(const CAConnect& conn, std::string_view what);

std::string Text(const CString& text);
/// A column of the current row; the empty text for a NULL.
std::string TextIn(CARecordset& row, long column);
/// A column of the current row; nothing for a NULL.
std::optional<std::string> OptionalTextIn(CARecordset& row, long column);
/// A number in a column of the current row; 0 for a NULL.
int NumberIn(CARecordset& row, long column);

/// Reads a column of the current row. A NULL leaves a number as it was, is the empty text, or nothing.
void ReadColumn(CARecordset& row, long column, int& out);
void ReadColumn(CARecordset& row, long column, bool& out);
void ReadColumn(CARecordset& row, long column, unsigned long& out);
void ReadColumn(CARecordset& row, long column, std::int64_t& out);
void ReadColumn(CARecordset& row, long column, std::string& out);
void ReadColumn(CARecordset& row, long column, std::optional<int>& out);
void ReadColumn(CARecordset& row, long column, std::optional<std::string>& out);
/// Reads columns 1, 2, ... of the current row, in their order.
template <class... Out>
void ReadColumns(CARecordset& row, Out&... out)
{
    long column = 0;
    (ReadColumn(row, ++column, out), ...);
}

/// The rows of a query, its columns 1, 2, ... as the members, in their order. @throws DatabaseError.
template <class Record, class... Member>
std::vector<Record> ReadRecords(CAConnect& conn, const std::string& sql, Member Record::*... members)
{
    std::vector<Record> records;
    EachRow(conn, sql, [&](CARecordset& row) {
        Record& record = records.emplace_back();
        ReadColumns(row, record.*members...);
    });
    return records;
}
/// The one row of a query; nothing where it gives none. @throws DatabaseError.
template <class Record, class... Member>
std::optional<Record> ReadRecord(CAConnect& conn, const std::string& sql, Member Record::*... members)
{
    std::vector<Record> records = ReadRecords(conn, sql, members...);
    return records.empty() ? std::nullopt : std::optional(std::move(records.back()));
}

} // namespace management
