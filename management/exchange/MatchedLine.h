#pragma once

#include "management/exchange/LineResolver.h"
#include "management/exchange/LineSource.h"
#include "management/exchange/Nouns.h"
#include "management/import/Import.h"
#include "management/import/UserBlock.h"

#include <cstddef>
#include <deque>
#include <span>
#include <string>
#include <string_view>
#include <vector>

// Which rows the lines of a file are about.

namespace management {

/// A row that is there.
struct PresentRow {
    int id = 0; ///< 0 where it has none
    ColumnValues values;
    bool isClaimed = false; ///< by a line
};

/// What a line wants, and what becomes of it.
struct MatchedLine : ResolvedLine {
    const ExportedLine* line = nullptr;
    std::string key = {}; ///< of the columns by which it finds its row, case not counting
    PresentRow* row = nullptr;
    RowFate fate = RowFate::failed;
    bool isPrivileged = false;
};

/// How many levels lie above what a path of ItemNames names.
std::size_t DepthOf(const std::string& path);
/// How many levels lie above the group or folder that a line is about, by the path that it begins with.
std::size_t DepthOf(const ExportedLine& line);

/// The key of a row with these values.
std::string FoldedKey(const Noun& noun, const ColumnValues& values);

/// Whether the row has all these values already. Of texts that name rows, case does not count.
bool HasValues(const Noun& noun, const ColumnValues& stored, const ColumnValues& wanted);

/// Finds the rows that lines of one noun are about.
class LineMatcher {
public:
    /// Reads the users whom they name. @param lines  at least one. All parameters outlive this.
    /// @throws DatabaseError.
    LineMatcher(CAConnect& conn, std::span<const ExportedLine> lines, const ItemNames& names);

    /// The lines with ids in place of names; without rows so far.
    [[nodiscard]] std::vector<MatchedLine> Resolve() const;
    /// Gives each line without a problem its row, the most alike first; one without stays without. The rows live as
    /// long as this. @throws DatabaseError.
    void FindRows(std::vector<MatchedLine>& lines);
    /// Whether the engine may take one of the login names for another.
    [[nodiscard]] bool HasConfused() const { return m_users.HasConfused(); }

private:
    CAConnect& m_conn;
    std::span<const ExportedLine> m_lines;
    const Noun& m_noun;
    const ItemNames& m_names;
    UserBlock m_users;
    std::deque<PresentRow> m_rows;
};

/// A value of a column as a statement has it.
std::string LiteralFor(CAConnect& conn, const Noun& noun, std::string_view column, const Stored& value);

/// What a row without an id fulfils, and those that are equal to it.
std::string ConditionOn(CAConnect& conn, const Noun& noun, const PresentRow& row);

} // namespace management
