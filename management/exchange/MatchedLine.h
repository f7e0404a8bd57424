#pragma once

#include "management/exchange/LineResolver.h"
#include "management/exchange/LineSource.h"
#include "management/exchange/Nouns.h"
#include "management/import/Import.h"
#include "management/import/UserBlock.h"

#include <cstddef>
#include <deque>
#include <string>
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
/// The same of the path that a line of a group or folder begins with.
std::size_t DepthOf(const ExportedLine& line);

/// The key of a row with these values.
std::string FoldedKey(const Noun& noun, const ColumnValues& values);

/// Whether the row has all these values already. Of texts that name rows, case does not count.
bool HasValues(const Noun& noun, const ColumnValues& stored, const ColumnValues& wanted);

/// The rows of the users of a block.
std::deque<PresentRow> RowsOf(const UserBlock& users);

/// The rows of another noun that the lines may be about. @throws DatabaseError.
std::deque<PresentRow> ReadRows(CAConnect& conn, const Noun& noun, const std::vector<MatchedLine>& lines);

/// Gives each line its row, the most alike first; one without stays without. @param rows  outlive the lines.
void MatchRows(const Noun& noun, std::vector<MatchedLine>& lines, std::deque<PresentRow>& rows);

} // namespace management
