#pragma once

#include "management/exchange/MatchedLine.h"

#include <string>
#include <unordered_map>
#include <vector>

class CAConnect;

namespace management {

/// Inserts the rows of one noun that lines add, many in a statement, in the order of the lines.
class AddedRows {
public:
    /// Both outlive this.
    AddedRows(CAConnect& conn, const Noun& noun) : m_conn(conn), m_noun(noun) {}

    /// Adds a row, and may insert those that have come together. @param wanted  outlives this; has the row's id once
    /// that is inserted, where rows are views, groups, roles, plans, roots or folders. @throws DatabaseError.
    void Add(MatchedLine& wanted, const ColumnValues& values);
    /// Inserts what is left. @throws DatabaseError, also when another program's new rows cannot be told from these.
    void Finish();

private:
    struct Row {
        MatchedLine* line;
        std::string name; ///< of an item
        std::string literals;
    };

    [[nodiscard]] bool IsItem() const { return m_noun.item != MemberKind::text; }
    void Insert();
    void TakeIds(int greatest);

    CAConnect& m_conn;
    const Noun& m_noun;
    std::string m_columns;
    std::vector<Row> m_rows;
    std::unordered_map<std::string, std::string> m_literals; ///< of items, by name
};

} // namespace management
