#pragma once

#include "management/Call.h"
#include "management/exchange/DirectoryImport.h"
#include "management/exchange/ItemNames.h"
#include "management/exchange/MatchedLine.h"

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace management {

class AddedRows;
class RowsInsert;

/// What an import has made beside the rows that lines say.
struct MadeItems {
    std::set<std::vector<std::string>> links;      ///< for the paths of groups and folders
    std::vector<std::pair<MemberKind, int>> names; ///< that the block at hand has given to ItemNames
};

/// Decides what becomes of a block of lines of one noun, and writes it.
class DirectoryWriter {
public:
    /// All of them outlive this. @param names  get those of what is added.
    DirectoryWriter(Call& call, const DirectoryImportOptions& options, const Noun& noun, ItemNames& names,
                    MadeItems& made)
        : m_call(call), m_conn(call.Connection()), m_options(options), m_noun(noun), m_names(names), m_made(made)
    {
    }

    /// @param lines  with the rows that they are about; get what became of them. @param hasConfused  whether the engine
    /// may take one of their login names for another. @throws DatabaseError.
    void Write(std::vector<MatchedLine>& lines, bool hasConfused);

private:
    using Updates = std::map<std::string, std::vector<int>>; ///< ids by what is set

    void DecideAll(std::vector<MatchedLine>& lines, bool hasConfused);
    void Decide(MatchedLine& wanted, bool hasConfused);
    [[nodiscard]] RowFate FateOf(const MatchedLine& wanted) const;
    void RequireOnce(const MatchedLine& wanted, std::set<std::string>& repeated) const;
    void RequirePrivileges(MatchedLine& wanted) const;
    void RequireFree(const MatchedLine& wanted);
    void RequireFreeName(const MatchedLine& wanted);
    void RequireNoCycle(const MatchedLine& wanted);

    void WriteRows(std::vector<MatchedLine>& lines);
    void WriteRow(MatchedLine& wanted, Updates& updates, AddedRows& added);
    [[nodiscard]] ColumnValues RowOf(const MatchedLine& wanted) const;
    void NoteNames(const std::vector<MatchedLine>& lines);
    [[nodiscard]] std::string AssignmentsOf(const MatchedLine& wanted) const;

    [[nodiscard]] MemberKind TopKind() const;
    [[nodiscard]] std::optional<std::pair<MemberKind, int>> ParentOf(const std::string& path) const;
    void RequireParents(std::vector<MatchedLine>& lines);
    void RequireFreeChild(std::pair<MemberKind, int> parent, const MatchedLine& wanted);
    void LinkToParents(const std::vector<MatchedLine>& lines);
    void LinkGroup(RowsInsert& relations, std::pair<MemberKind, int> parent, int group);
    void LinkFolder(std::pair<MemberKind, int> parent, const MatchedLine& wanted);
    [[nodiscard]] std::vector<std::string> LinkOf(const ColumnValues& values) const;

    Call& m_call;
    CAConnect& m_conn;
    const DirectoryImportOptions& m_options;
    const Noun& m_noun;
    ItemNames& m_names;
    MadeItems& m_made;
};

} // namespace management
