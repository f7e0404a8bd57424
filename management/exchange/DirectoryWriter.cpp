#include "management/exchange/DirectoryWriter.h"

#include "basefun/ItemTypes.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/RowsInsert.h"
#include "management/Text.h"
#include "management/documents/Documents.h"
#include "management/exchange/AddedRows.h"
#include "management/organisation/Organisation.h"
#include "management/users/Users.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <span>

namespace management {

namespace {

/// Runs the body; what it throws about its line fails that.
template <class Body>
void Attempt(MatchedLine& wanted, Body body)
{
    try {
        body();
    } catch (const DatabaseError&) {
        throw;
    } catch (const Error& e) {
        wanted.fate = RowFate::failed;
        wanted.problem = e.Why();
    }
}

std::string TextOf(const ColumnValues& values)
{
    std::string text;
    for (const auto& [column, value] : values) {
        text += fmt::format("{}{}{}\n", column, value ? '=' : '!', value.value_or(""));
    }
    return text;
}

std::string TextOf(const ColumnValues& values, std::string_view column)
{
    const auto found = values.find(column);
    return found == values.end() ? "" : found->second.value_or("");
}

/// 0 for what is none, or a greater one than there are ids.
int NumberOf(const ColumnValues& values, std::string_view column)
{
    const std::string text = TextOf(values, column);
    int number = 0;
    std::from_chars(text.data(), text.data() + text.size(), number);
    return number;
}

/// Whether the row of a user says nothing yet of what a line of a department says.
bool IsWithoutDepartment(const Noun& noun, const PresentRow& row)
{
    return noun.name == "department" && row.values.at("Col_DeptID").value_or("0") == "0";
}

template <class Cycle, class Tree>
void ThrowIfCycle(const Cycle& cycle, const Tree& tree)
{
    if (!cycle.empty()) {
        throw Error(ErrorCode::conflict, FillPattern("this would close a cycle: {}", tree.CycleText(cycle)));
    }
}

bool IsAdded(const MatchedLine& wanted)
{
    return wanted.fate == RowFate::created && wanted.row == nullptr && wanted.problem.IsEmpty();
}

bool IsTop(const std::string& path) { return path.starts_with('/') && DepthOf(path) == 1; }

int TypeOf(MemberKind kind) { return kind == MemberKind::view ? kItemTypeView : kItemTypeGroup; }

/// How a line changes who may do what; empty where it does not.
Sentence PrivilegeChangedBy(const MatchedLine& wanted)
{
    const bool isNew = wanted.row == nullptr;
    if (NameKey(wanted.name) == NameKey(kBuiltInLogin) &&
        (isNew || !HasValues(*wanted.line->noun, wanted.row->values, wanted.values))) {
        return isNew ? Translatable("adds the built-in administrator")
                     : Translatable("changes the built-in administrator");
    }
    for (const std::string_view name : {"super", "system", "locked"}) {
        const std::string_view column = FindField(name)->column;
        const auto given = wanted.values.find(column);
        const std::string before = isNew ? "0" : wanted.row->values.at(column).value_or("0");
        if (given != wanted.values.end() && given->second.value_or("0") != before) {
            return FillPattern("changes {}", name);
        }
    }
    return {};
}

} // namespace

void DirectoryWriter::Write(std::vector<MatchedLine>& lines, bool hasConfused)
{
    DecideAll(lines, hasConfused);
    if (IsTree(m_noun.item)) {
        RequireParents(lines);
    }
    WriteRows(lines);
    if (IsTree(m_noun.item)) {
        LinkToParents(lines);
    }
}

// ---- What becomes of a line -----------------------------------------------------------------------------------------

void DirectoryWriter::DecideAll(std::vector<MatchedLine>& lines, bool hasConfused)
{
    std::set<std::string> repeated;
    for (MatchedLine& wanted : lines) {
        if (!wanted.problem.IsEmpty()) {
            continue;
        }
        Attempt(wanted, [&] {
            RequireOnce(wanted, repeated);
            Decide(wanted, hasConfused);
            if (wanted.row == nullptr && !m_noun.hasId && !repeated.insert(TextOf(wanted.values)).second) {
                wanted.fate = RowFate::unchanged; // an equal line before it adds the row
            }
        });
    }
}

/// @throws Error (conflict) for a second line about one item.
void DirectoryWriter::RequireOnce(const MatchedLine& wanted, std::set<std::string>& repeated) const
{
    const bool isItem = m_noun.item != MemberKind::text || m_noun.name == "user";
    if (isItem && !repeated.insert(wanted.name).second) {
        throw Error(ErrorCode::conflict, "the file has another line about the same");
    }
}

void DirectoryWriter::Decide(MatchedLine& wanted, bool hasConfused)
{
    const bool isNew = wanted.row == nullptr;
    if (isNew && m_noun.name == "department") {
        throw Error(ErrorCode::notFound, "there is no such user");
    }
    if (isNew && hasConfused && m_noun.name == "user") {
        RequireFreeLogin(m_call.Directory(), wanted.name, std::nullopt);
    }
    if (m_noun.name == "user") {
        RequirePrivileges(wanted);
    }
    wanted.fate = FateOf(wanted);
    if (isNew) {
        RequireFree(wanted);
    }
}

RowFate DirectoryWriter::FateOf(const MatchedLine& wanted) const
{
    if (wanted.row == nullptr) {
        return RowFate::created;
    }
    if (HasValues(m_noun, wanted.row->values, wanted.values)) {
        return RowFate::unchanged;
    }
    if (m_made.links.contains(LinkOf(wanted.values)) || IsWithoutDepartment(m_noun, *wanted.row)) {
        return RowFate::created;
    }
    return m_options.update ? RowFate::updated : RowFate::exists;
}

/// @throws Error for a line that changes who may do what, unless that is allowed.
void DirectoryWriter::RequirePrivileges(MatchedLine& wanted) const
{
    const Sentence changed = PrivilegeChangedBy(wanted);
    wanted.isPrivileged = !changed.IsEmpty() && (wanted.row == nullptr || m_options.update);
    if (wanted.isPrivileged && !m_options.allowPrivileges) {
        throw Error(ErrorCode::invalid, FillPattern("{}, which needs --allow-privileges", changed));
    }
}

/// @throws Error (conflict) when the engine takes another name for equal, and for a cycle of groups or folders.
void DirectoryWriter::RequireFree(const MatchedLine& wanted)
{
    const bool isNamed = m_noun.item == MemberKind::view || m_noun.item == MemberKind::plan ||
                         m_noun.item == MemberKind::root || m_noun.name == "package";
    if (isNamed) {
        RequireFreeName(wanted);
    }
    RequireNoCycle(wanted);
}

void DirectoryWriter::RequireFreeName(const MatchedLine& wanted)
{
    const std::string name = wanted.values.at("Col_Name").value_or("");
    if (const std::optional<RowName> other = FindConfused(m_conn, m_noun.table, name)) {
        ThrowConfused("name", name, *other);
    }
}

void DirectoryWriter::RequireNoCycle(const MatchedLine& wanted)
{
    const auto number = [&wanted](std::string_view column) { return NumberOf(wanted.values, column); };
    if (m_noun.name == "member" && number("Col_DQvItemType") == kItemTypeGroup) {
        const Organisation organisation(m_conn);
        const ItemKey holder = {number("Col_QvItemType"), number("Col_QvItemID")};
        const ItemKey group = {kItemTypeGroup, number("Col_DQvItemID")};
        if (organisation.Find(holder) != nullptr) {
            ThrowIfCycle(organisation.CycleClosedBy(holder, group), organisation);
        }
    }
    if (m_noun.name == "folder_link" && number("Col_S_ClassID") == kFolderClass) {
        const FolderTree tree(m_conn);
        const Placement placement = {{DocKind::folder, number("Col_P_ObjID")},
                                     {DocKind::folder, number("Col_S_ObjID")}};
        if (tree.Find(placement.parent) != nullptr && tree.Find(placement.folder) != nullptr) {
            ThrowIfCycle(tree.CycleClosedBy(placement), tree);
        }
    }
}

// ---- Writing --------------------------------------------------------------------------------------------------------

void DirectoryWriter::WriteRows(std::vector<MatchedLine>& lines)
{
    Updates updates;
    AddedRows added(m_conn, m_noun);
    for (MatchedLine& wanted : lines) {
        if (wanted.problem.IsEmpty()) {
            WriteRow(wanted, updates, added);
        }
    }
    added.Finish();
    if (m_noun.item != MemberKind::text) {
        NoteNames(lines);
    }
    for (const auto& [assignments, ids] : updates) {
        Execute(m_conn,
                fmt::format("UPDATE {} SET {} WHERE Col_ID IN ({})", m_noun.table, assignments, fmt::join(ids, ", ")));
    }
}

/// Adds a row, or sets one that no id names; notes what to set of others.
void DirectoryWriter::WriteRow(MatchedLine& wanted, Updates& updates, AddedRows& added)
{
    if (wanted.fate == RowFate::created && wanted.row == nullptr) {
        added.Add(wanted, RowOf(wanted));
    } else if (wanted.fate == RowFate::updated || wanted.fate == RowFate::created) {
        const std::string assignments = AssignmentsOf(wanted);
        if (m_noun.hasId) {
            updates[assignments].push_back(wanted.row->id);
        } else {
            Execute(m_conn, fmt::format("UPDATE {} SET {} WHERE {}", m_noun.table, assignments,
                                        ConditionOn(m_conn, m_noun, *wanted.row)));
        }
    }
}

/// All that is known of the row of a line that adds one.
ColumnValues DirectoryWriter::RowOf(const MatchedLine& wanted) const
{
    ColumnValues values = wanted.values;
    if (m_noun.name == "user") {
        values.emplace("Col_Name", wanted.name);
    }
    if (m_noun.item == MemberKind::role) {
        const ItemName name = ParseItemName(m_noun.item, wanted.name);
        values["Col_AppName"] = name.scope.empty() ? std::string(kOwnApplication) : name.scope.front();
        values["Col_DomainID"] = name.scope.size() < 2 ? "0" : name.scope[1];
    }
    return values;
}

void DirectoryWriter::NoteNames(const std::vector<MatchedLine>& lines)
{
    for (const MatchedLine& wanted : lines) {
        if (IsAdded(wanted)) {
            m_names.Add(m_noun.item, *wanted.id, wanted.name);
            m_made.names.emplace_back(m_noun.item, *wanted.id);
        }
    }
}

/// What differs.
std::string DirectoryWriter::AssignmentsOf(const MatchedLine& wanted) const
{
    std::string text;
    for (const auto& value : wanted.values) {
        const std::string_view column = value.first;
        const auto stored = wanted.row->values.find(column);
        const bool isKey =
            std::ranges::any_of(std::span(m_noun.members).first(m_noun.keys), [column](const LineMember& member) {
                return member.column == column || member.typeColumn == column;
            });
        if (!isKey && (stored == wanted.row->values.end() || stored->second != value.second)) {
            text += fmt::format("{}{} = {}", text.empty() ? "" : ", ", column,
                                LiteralFor(m_conn, m_noun, column, value.second));
        }
    }
    return text;
}

// ---- Groups and folders ---------------------------------------------------------------------------------------------

MemberKind DirectoryWriter::TopKind() const
{
    return m_noun.item == MemberKind::group ? MemberKind::view : MemberKind::root;
}

/// The item that a group or folder is to be in. @return nothing when it is not there.
std::optional<std::pair<MemberKind, int>> DirectoryWriter::ParentOf(const std::string& path) const
{
    const bool isTop = IsTop(path);
    const MemberKind kind = isTop ? TopKind() : m_noun.item;
    const std::optional<int> id = m_names.Find(kind, isTop ? path.substr(1) : path);
    return id ? std::optional(std::pair(kind, *id)) : std::nullopt;
}

/// Fails lines whose parent is neither there nor added.
void DirectoryWriter::RequireParents(std::vector<MatchedLine>& lines)
{
    std::set<std::string> coming;
    std::vector<MatchedLine*> added;
    for (MatchedLine& wanted : lines) {
        if (wanted.problem.IsEmpty() && wanted.fate == RowFate::created) {
            added.push_back(&wanted);
        }
    }
    std::ranges::stable_sort(added, {}, [](const MatchedLine* wanted) { return DepthOf(*wanted->line); });
    for (MatchedLine* wanted : added) {
        Attempt(*wanted, [&] {
            const std::optional<std::string> parent = ParseItemName(m_noun.item, wanted->name).parent;
            if (parent && !coming.contains(NameKey(*parent))) {
                const auto present = ParentOf(*parent);
                if (!present) {
                    throw Error(ErrorCode::notFound, FillPattern("there is no {}", Quoted(*parent)));
                }
                RequireFreeChild(*present, *wanted);
            }
            coming.insert(NameKey(wanted->name));
        });
    }
}

void DirectoryWriter::RequireFreeChild(std::pair<MemberKind, int> parent, const MatchedLine& wanted)
{
    const std::string name = wanted.values.at("Col_Name").value_or("");
    std::optional<RowName> other;
    if (parent.first == MemberKind::root || parent.first == MemberKind::folder) {
        Documents documents(m_conn);
        const DocKind kind = parent.first == MemberKind::root ? DocKind::root : DocKind::folder;
        other = documents.FindConfusedFolder({kind, parent.second}, name, std::nullopt);
    } else {
        other = FindConfused(m_conn, "qv_Group", name,
                             fmt::format("Col_ID IN (SELECT Col_DQvItemID FROM qv_Relation WHERE Col_QvItemID = {} AND "
                                         "Col_QvItemType = {} AND Col_DQvItemType = {})",
                                         parent.second, TypeOf(parent.first), kItemTypeGroup));
    }
    if (other) {
        ThrowConfused("name", name, *other);
    }
}

/// Links the items that were added with those above them.
void DirectoryWriter::LinkToParents(const std::vector<MatchedLine>& lines)
{
    RowsInsert relations(
        m_conn, "qv_Relation",
        "Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, Col_RelType, Col_Ref, Col_ViewID");
    WithDatabaseErrors(m_conn, [&] {
        for (const MatchedLine& wanted : lines) {
            const std::optional<std::string> path =
                IsAdded(wanted) ? ParseItemName(m_noun.item, wanted.name).parent : std::nullopt;
            if (!path) {
                continue;
            }
            const std::pair<MemberKind, int> parent = *ParentOf(*path);
            if (m_noun.item == MemberKind::group) {
                LinkGroup(relations, parent, *wanted.id);
            } else {
                LinkFolder(parent, wanted);
            }
        }
        relations.Finish();
    });
}

void DirectoryWriter::LinkGroup(RowsInsert& relations, std::pair<MemberKind, int> parent, int group)
{
    const int type = TypeOf(parent.first);
    relations.Add([&](std::string& sql) {
        sql += fmt::format("{}, {}, {}, {}, {}, 0, 0", parent.second, type, group, kItemTypeGroup, kMembership);
    });
    m_made.links.insert({"qv_Relation", std::to_string(type), std::to_string(parent.second), std::to_string(group)});
}

void DirectoryWriter::LinkFolder(std::pair<MemberKind, int> parent, const MatchedLine& wanted)
{
    Documents documents(m_conn);
    FolderData folder;
    folder.name = wanted.values.at("Col_Name").value_or("");
    const bool isInRoot = parent.first == MemberKind::root;
    documents.AddLink({{isInRoot ? DocKind::root : DocKind::folder, parent.second}, {DocKind::folder, *wanted.id}},
                      folder);
    m_made.links.insert({isInRoot ? "Tab_Doc_Root_Link" : "Tab_Doc_VFolder_Link", "", std::to_string(parent.second),
                         std::to_string(*wanted.id)});
}

/// What tells links apart that this import has made by itself.
std::vector<std::string> DirectoryWriter::LinkOf(const ColumnValues& values) const
{
    const auto text = [&values](std::string_view column) { return TextOf(values, column); };
    if (m_noun.table == "qv_Relation") {
        const bool isGroup = text("Col_DQvItemType") == std::to_string(kItemTypeGroup);
        return {"qv_Relation", text("Col_QvItemType"), text("Col_QvItemID"), isGroup ? text("Col_DQvItemID") : ""};
    }
    return {std::string(m_noun.table), "", text("Col_P_ObjID"), text("Col_S_ObjID")};
}

} // namespace management
