#include "management/exchange/AddedRows.h"

#include "management/Query.h"
#include "management/RowsInsert.h"

#include <fmt/format.h>

namespace management {

// Rows of one name get their ids from each other only where nothing else tells them apart either.
void AddedRows::Add(MatchedLine& wanted, const ColumnValues& values)
{
    std::string columns;
    Row row{&wanted, {}, {}};
    for (const auto& [column, value] : values) {
        columns += fmt::format("{}{}", columns.empty() ? "" : ", ", column);
        row.literals += (row.literals.empty() ? "" : ", ") + LiteralFor(m_conn, m_noun, column, value);
    }
    if (IsItem()) {
        row.name = values.at("Col_Name").value_or("");
        const auto same = m_literals.find(row.name);
        if (same != m_literals.end() && same->second != row.literals) {
            Finish();
        }
    }
    if (columns != m_columns) {
        Finish();
        m_columns = std::move(columns);
    }
    if (IsItem()) {
        m_literals.emplace(row.name, row.literals);
    }
    m_rows.push_back(std::move(row));
}

void AddedRows::Finish()
{
    if (m_rows.empty()) {
        return;
    }
    if (!IsItem()) {
        Insert();
    } else if (m_rows.size() == 1) {
        Insert();
        m_rows.front().line->id = LastInsertedId(m_conn);
    } else {
        const int greatest = Number(m_conn, fmt::format("SELECT MAX(Col_ID) FROM {}", m_noun.table));
        Insert();
        TakeIds(greatest);
    }
    m_rows.clear();
    m_literals.clear();
}

void AddedRows::Insert()
{
    WithDatabaseErrors(m_conn, [this] {
        RowsInsert insert(m_conn, m_noun.table, m_columns);
        for (const Row& row : m_rows) {
            insert.Add([&row](std::string& sql) { sql += row.literals; });
        }
        insert.Finish();
    });
}

/// Finds the ids of the rows that were just inserted, by their names. @param greatest  the greatest id before them.
void AddedRows::TakeIds(int greatest)
{
    std::unordered_map<std::string, std::vector<int>> ids; // from the last one on
    EachRow(
        m_conn,
        fmt::format("SELECT Col_ID, Col_Name FROM {} WHERE Col_ID > {} ORDER BY Col_ID DESC", m_noun.table, greatest),
        [&ids](CARecordset& row) { ids[TextIn(row, 2)].push_back(NumberIn(row, 1)); });
    const auto requireSure = [](bool isSure) {
        if (!isSure) {
            throw DatabaseError("its new rows cannot be told from those that another program adds at the same moment",
                                false);
        }
    };
    for (const Row& row : m_rows) {
        std::vector<int>& left = ids[row.name];
        requireSure(!left.empty());
        row.line->id = left.back();
        left.pop_back();
    }
    for (const Row& row : m_rows) {
        requireSure(ids[row.name].empty());
    }
}

} // namespace management
