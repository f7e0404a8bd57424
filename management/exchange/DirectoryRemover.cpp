#include "management/exchange/DirectoryRemover.h"

#include "basefun/ItemTypes.h"
#include "management/DatabaseError.h"
#include "management/Query.h"
#include "management/Text.h"
#include "management/board/Board.h"
#include "management/documents/Documents.h"
#include "management/organisation/DepartmentSync.h"
#include "management/organisation/Organisation.h"
#include "management/plans/Plans.h"
#include "management/roles/Roles.h"
#include "management/users/Users.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace management {

namespace {

constexpr std::size_t kMostLines = 256;

bool IsOn(const PresentRow& row, std::string_view field)
{
    return row.values.at(FindField(field)->column).value_or("0") != "0";
}

} // namespace

DirectoryRemover::DirectoryRemover(Call& call, Options options)
    : m_call(call), m_conn(call.Connection()), m_options(options), m_names(m_conn)
{
}

void DirectoryRemover::Remove(std::vector<ExportedLine> lines)
{
    if (!lines.empty() && IsTree(lines.front().noun->item)) {
        std::ranges::stable_sort(lines, std::ranges::greater(), [](const ExportedLine& line) { return DepthOf(line); });
    }
    for (std::size_t begin = 0; begin < lines.size(); begin += kMostLines) {
        RemoveBlock(std::span(lines).subspan(begin, std::min(kMostLines, lines.size() - begin)));
    }
}

void DirectoryRemover::RemoveBlock(std::span<const ExportedLine> lines)
{
    if (m_call.Front().IsStopRequested()) {
        throw Error(ErrorCode::failed, "stopped by a signal; nothing was changed");
    }
    LineMatcher matcher(m_conn, lines, m_names);
    std::vector<MatchedLine> matched = matcher.Resolve();
    matcher.FindRows(matched);
    const Noun& noun = *lines.front().noun;
    for (const MatchedLine& line : matched) {
        if (!line.problem.IsEmpty() || line.row == nullptr) {
            throw Error(ErrorCode::conflict,
                        FillPattern("the {} {} cannot be removed{}{}; nothing was changed", noun.name,
                                    Visible(line.name), line.problem.IsEmpty() ? "" : ": ", line.problem));
        }
    }
    RemoveRows(noun, matched);
}

void DirectoryRemover::RemoveRows(const Noun& noun, const std::vector<MatchedLine>& lines)
{
    std::vector<int> ids;
    for (const MatchedLine& line : lines) {
        if (noun.name == "user") {
            RemoveUser(line);
        } else if (noun.name == "notice") {
            Board(m_conn).Delete(line.row->values.at("Col_ID").value_or(""));
        } else if (!noun.hasId) {
            Execute(m_conn, fmt::format("DELETE FROM {} WHERE {}", noun.table, ConditionOn(m_conn, noun, *line.row)));
        } else {
            ids.push_back(line.row->id);
        }
    }
    if (!ids.empty()) {
        RemoveItems(noun, ids);
    }
}

void DirectoryRemover::RemoveUser(const MatchedLine& line)
{
    const UserKey key = {line.row->id, line.name};
    if (!m_options.allowPrivileges && (IsOn(*line.row, "super") || IsOn(*line.row, "system"))) {
        throw Error(ErrorCode::isProtected,
                    FillPattern("{} is a super or system user, whose removal needs --allow-privileges; nothing was "
                                "changed",
                                Named(key)));
    }
    DeleteUser(m_call.Directory(), key);
}

void DirectoryRemover::RemoveItems(const Noun& noun, const std::vector<int>& ids)
{
    switch (noun.item) {
    case MemberKind::group:
        RemoveGroups(ids);
        break;
    case MemberKind::view:
        for (const int id : ids) {
            Organisation organisation(m_conn);
            organisation.DeleteView(id);
            if (!m_options.keepsDepartments) {
                SyncDepartments(organisation, {kItemTypeView, id});
            }
        }
        break;
    case MemberKind::role:
        for (const int id : ids) {
            Roles(m_conn).Delete(id);
        }
        break;
    case MemberKind::plan:
        for (const int id : ids) {
            Plans(m_conn).Delete(id);
        }
        break;
    case MemberKind::root:
    case MemberKind::folder: {
        const DocKind kind = noun.item == MemberKind::root ? DocKind::root : DocKind::folder;
        std::vector<DocKey> keys;
        std::ranges::transform(ids, std::back_inserter(keys), [kind](int id) { return DocKey{kind, id}; });
        Documents(m_conn).Delete(keys);
        break;
    }
    default:
        Execute(m_conn,
                noun.name == "department"
                    ? fmt::format("UPDATE {} SET Col_DeptID = 0 WHERE Col_ID IN ({})", noun.table, fmt::join(ids, ", "))
                    : fmt::format("DELETE FROM {} WHERE Col_ID IN ({})", noun.table, fmt::join(ids, ", ")));
    }
}

void DirectoryRemover::RemoveGroups(const std::vector<int>& ids)
{
    Organisation organisation(m_conn);
    organisation.DeleteGroups(ids);
    if (m_options.keepsDepartments) {
        Execute(m_conn,
                fmt::format("UPDATE qv_User SET Col_DeptID = 0 WHERE Col_DeptID IN ({})", fmt::join(ids, ", ")));
        return;
    }
    for (const int id : ids) {
        SyncDepartments(organisation, {kItemTypeGroup, id});
    }
}

} // namespace management
