#include "management/organisation/Organisation.h"

#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "directory/GroupItem.h"
#include "directory/RelationItem.h"
#include "directory/ViewItem.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/Lengths.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <tuple>
#include <unordered_set>
#include <utility>

namespace management {

template class Hierarchy<Node>;

namespace {

bool IsSystemView(const Node& node) { return node.BeginsPath(); }

} // namespace

// ---- Names and paths ------------------------------------------------------------------------------------------------

ParentAndName SplitLast(const std::string& path)
{
    const std::size_t begin = path.find('/');
    // A path may begin with an id instead of a view's name.
    const bool beginsWell = begin == 0 || (begin != std::string::npos && Organisation::KeyIn(path.substr(0, begin)));
    const std::vector<std::string> names = beginsWell ? SplitPath(path.substr(begin)) : std::vector<std::string>();
    if (names.size() < (begin == 0 ? 2U : 1U)) {
        throw Error(ErrorCode::invalid, FillPattern("{} is not a path of a group; write /VIEW/GROUP", Quoted(path)));
    }
    return {path.substr(0, path.size() - PathEscaped(names.back()).size() - 1), names.back()};
}

// ---- What is read
// ----------------------------------------------------------------------------------------------------

bool Node::IsTop(ItemKey key) { return key.type == kItemTypeView; }

ItemKey Node::KeyOf(bool isTop, int id) { return {isTop ? kItemTypeView : kItemTypeGroup, id}; }

bool Node::BeginsPath() const { return IsTop(key) && viewType == kSystemView; }

Organisation::Organisation(CAConnect& conn, UserCounts counts) : m_conn(conn)
{
    LoadNodes();
    LoadLinks();
    if (counts == UserCounts::read) {
        LoadUserCounts();
    }
    FindPaths({IsSystemView, [](const Node& node) { return Node::IsTop(node.key) && !IsSystemView(node); }});
}

void Organisation::LoadNodes()
{
    EachRow(m_conn, "SELECT Col_ID, Col_Name, Col_ItemIndex, Col_Type, Col_OwnerID FROM qv_View",
            [this](CARecordset& row) {
                Node& view = Add({kItemTypeView, 0});
                ReadColumns(row, view.key.id, view.name, view.sortIndex, view.viewType, view.viewOwner);
                view.nameKey = NameKey(view.name);
            });
    EachRow(m_conn, "SELECT Col_ID, Col_Name, Col_ItemIndex FROM qv_Group", [this](CARecordset& row) {
        Node& group = Add({kItemTypeGroup, 0});
        ReadColumns(row, group.key.id, group.name, group.sortIndex);
        group.nameKey = NameKey(group.name);
    });
    Sort([](const Node& a, const Node& b) {
        // Views before groups.
        return std::tie(b.key.type, a.sortIndex, a.nameKey, a.name, a.key.id) <
               std::tie(a.key.type, b.sortIndex, b.nameKey, b.name, b.key.id);
    });
}

void Organisation::LoadLinks()
{
    EachRow(m_conn,
            fmt::format("SELECT DISTINCT Col_QvItemType, Col_QvItemID, Col_DQvItemID FROM qv_Relation WHERE "
                        "Col_QvItemType IN ({0}, {1}) AND Col_DQvItemType = {0} AND Col_RelType = {2}",
                        kItemTypeGroup, kItemTypeView, kMembership),
            [this](CARecordset& row) {
                ItemKey holder{};
                ItemKey member{kItemTypeGroup, 0};
                ReadColumns(row, holder.type, holder.id, member.id);
                Link(holder, member);
            });
}

void Organisation::LoadUserCounts()
{
    EachRow(m_conn,
            fmt::format("SELECT r.Col_QvItemType, r.Col_QvItemID, COUNT(DISTINCT r.Col_DQvItemID) FROM qv_Relation r "
                        "INNER JOIN qv_User u ON u.Col_ID = r.Col_DQvItemID WHERE r.Col_QvItemType IN ({}, {}) AND "
                        "r.Col_DQvItemType = {} AND r.Col_RelType = {} GROUP BY r.Col_QvItemType, r.Col_QvItemID",
                        kItemTypeGroup, kItemTypeView, kItemTypeUser, kMembership),
            [this](CARecordset& row) {
                ItemKey holder{};
                int users = 0;
                ReadColumns(row, holder.type, holder.id, users);
                if (const std::optional<std::size_t> node = IndexOf(holder)) {
                    At(*node).users = users;
                }
            });
}

// ---- Look-ups -------------------------------------------------------------------------------------------------------

std::vector<ItemKey> Organisation::FindAll(const std::string& argument) const
{
    return Follow(
        argument, [this](const std::string& name) { return SystemViewsNamed(name); },
        [this](ItemKey parent, const std::string& name) { return ChildrenNamed(parent, name); });
}

ItemKey Organisation::FindHolder(const std::string& argument) const
{
    return RequireOne(argument, FindAll(argument), "group or view", "group tree");
}

ItemKey Organisation::FindGroup(const std::string& argument) const
{
    const ItemKey key = RequireOne(argument, FindAll(argument), "group", "group tree");
    if (key.type != kItemTypeGroup) {
        throw Error(ErrorCode::invalid, FillPattern("{} is a view, not a group", Named(key)));
    }
    return key;
}

ItemKey Organisation::FindView(const std::string& argument) const
{
    const bool isName = !argument.starts_with('/') && !argument.starts_with("view:");
    const ItemKey key =
        RequireOne(argument, isName ? SystemViewsNamed(argument) : FindAll(argument), "view", "view list");
    if (key.type != kItemTypeView) {
        throw Error(ErrorCode::invalid, FillPattern("{} is a group, not a view", Named(key)));
    }
    return key;
}

std::vector<ItemKey> Organisation::ChildrenNamed(ItemKey parent, std::string_view name) const
{
    std::vector<ItemKey> found;
    const std::string key = NameKey(name);
    if (const Node* place = Find(parent)) {
        for (const std::size_t child : place->children) {
            if (Nodes()[child].nameKey == key) {
                found.push_back(Nodes()[child].key);
            }
        }
    }
    return found;
}

std::optional<RowName> Organisation::FindConfusedChild(ItemKey parent, std::string_view name, ItemKey except) const
{
    return FindConfused(m_conn, "qv_Group", name,
                        fmt::format("Col_ID <> {} AND Col_ID IN (SELECT Col_DQvItemID FROM qv_Relation WHERE "
                                    "Col_QvItemID = {} AND Col_QvItemType = {} AND Col_DQvItemType = {} AND "
                                    "Col_RelType = {})",
                                    except.id, parent.id, parent.type, kItemTypeGroup, kMembership));
}

std::vector<ItemKey> Organisation::SystemViewsNamed(std::string_view name) const
{
    std::vector<ItemKey> found;
    const std::string key = NameKey(name);
    for (const Node& place : Nodes()) {
        if (IsSystemView(place) && place.nameKey == key) {
            found.push_back(place.key);
        }
    }
    return found;
}

int Organisation::UsersBelow(ItemKey key) const
{
    int users = 0;
    const std::optional<std::size_t> from = IndexOf(key);
    if (from) {
        for (const std::size_t place : Descendants(*from)) {
            users += place == *from ? 0 : Nodes()[place].users;
        }
    }
    return users;
}

std::optional<GroupData> Organisation::LoadGroup(int id)
{
    return ReadRecord(m_conn,
                      fmt::format("SELECT Col_Name, Col_Description, Col_Creator_Name, Col_Dt_Create, Col_ItemIndex, "
                                  "Col_DomainID, Col_Style FROM qv_Group WHERE Col_ID = {}",
                                  id),
                      &GroupData::name, &GroupData::description, &GroupData::creator, &GroupData::created,
                      &GroupData::sortIndex, &GroupData::domainId, &GroupData::style);
}

std::optional<ViewData> Organisation::LoadView(int id)
{
    return ReadRecord(
        m_conn,
        fmt::format("SELECT Col_Name, Col_Description, Col_Creator_Name, Col_Dt_Create, Col_Type, Col_OwnerID, "
                    "Col_ItemIndex, Col_DomainID, Col_Style, Col_IsPublic FROM qv_View WHERE Col_ID = {}",
                    id),
        &ViewData::name, &ViewData::description, &ViewData::creator, &ViewData::created, &ViewData::type,
        &ViewData::ownerId, &ViewData::sortIndex, &ViewData::domainId, &ViewData::style, &ViewData::isPublic);
}

int Organisation::GroupStyle(int id)
{
    int style = 0;
    Run(m_conn, [&] { return CQVBaseFun::GetGroupStyle(m_conn, id, style); });
    return style;
}

std::map<ItemKey, std::vector<Member>> Organisation::LoadMembers()
{
    std::map<ItemKey, std::vector<Member>> members;
    EachRow(m_conn,
            fmt::format("SELECT DISTINCT r.Col_QvItemType, r.Col_QvItemID, u.Col_ID, u.Col_LoginName, u.Col_Name "
                        "FROM qv_Relation r INNER JOIN qv_User u ON u.Col_ID = r.Col_DQvItemID WHERE "
                        "r.Col_QvItemType IN ({}, {}) AND r.Col_DQvItemType = {} AND r.Col_RelType = {} "
                        "ORDER BY u.Col_LoginName, u.Col_ID",
                        kItemTypeGroup, kItemTypeView, kItemTypeUser, kMembership),
            [&members](CARecordset& row) {
                ItemKey holder{};
                Member member{};
                ReadColumns(row, holder.type, holder.id, member.id, member.login, member.name);
                members[holder].push_back(std::move(member));
            });
    return members;
}

MemberCounts Organisation::CountMembers(const std::vector<int>& groups)
{
    const std::unordered_set<int> counted(groups.begin(), groups.end());
    std::unordered_set<int> members;
    std::unordered_set<int> others; // who are members of other groups
    EachRow(m_conn,
            fmt::format("SELECT r.Col_DQvItemID, r.Col_QvItemID FROM qv_Relation r INNER JOIN qv_User u ON u.Col_ID = "
                        "r.Col_DQvItemID WHERE r.Col_QvItemType = {} AND r.Col_DQvItemType = {} AND r.Col_RelType = {}",
                        kItemTypeGroup, kItemTypeUser, kMembership),
            [&](CARecordset& row) {
                int user = 0;
                ItemKey group{kItemTypeGroup, 0};
                ReadColumns(row, user, group.id);
                if (counted.contains(group.id)) {
                    members.insert(user);
                } else if (IndexOf(group)) {
                    others.insert(user);
                }
            });
    const auto isInOther = [&others](int user) { return others.contains(user); };
    return {members.size(), members.size() - static_cast<std::size_t>(std::ranges::count_if(members, isInOther))};
}

std::vector<Reference> Organisation::References(int type, const std::vector<int>& ids)
{
    return CountReferences(m_conn, type, ids);
}

std::string Organisation::DefaultViewName()
{
    CString name;
    Run(m_conn, [&] { return CQVBaseFun::GetDefaultSysView(m_conn, name); });
    return std::string(name.View());
}

// ---- Writes ---------------------------------------------------------------------------------------------------------

CString Organisation::EscapeLiteral(std::string_view text) const { return management::EscapeLiteral(m_conn, text); }

int Organisation::CreateGroup(ItemKey parent, const GroupData& group)
{
    RequireFits(m_conn, "qv_Group",
                {{"the name", "Col_Name", group.name},
                 {"the description", "Col_Description", group.description},
                 {"the creator", "Col_Creator_Name", group.creator}});
    CGroupItem item;
    item.m_strName = EscapeLiteral(group.name);
    item.m_strDescription = EscapeLiteral(group.description);
    item.m_strCreatorName = EscapeLiteral(group.creator);
    item.m_nItemIndex = group.sortIndex;
    item.m_nDomainID = group.domainId;
    item.m_nStyle = group.style;
    Run(m_conn, [&] { return item.SaveData(m_conn) != 0; });
    const int id = LastInsertedId(m_conn);
    AddMember(parent, {kItemTypeGroup, id});
    return id;
}

int Organisation::CreateView(const ViewData& view)
{
    RequireFits(m_conn, "qv_View",
                {{"the name", "Col_Name", view.name},
                 {"the description", "Col_Description", view.description},
                 {"the creator", "Col_Creator_Name", view.creator}});
    CViewItem item;
    item.m_strName = EscapeLiteral(view.name);
    item.m_nType = view.type;
    item.m_strDescription = EscapeLiteral(view.description);
    item.m_nOwnerID = view.ownerId;
    item.m_nItemIndex = view.sortIndex;
    item.m_strCreatorName = EscapeLiteral(view.creator);
    item.m_nDomainID = view.domainId;
    item.m_nStyle = view.style;
    item.m_bIsPublic = view.isPublic;
    Run(m_conn, [&] { return item.SaveData(m_conn) != 0; });
    return LastInsertedId(m_conn);
}

void Organisation::AddMember(ItemKey holder, ItemKey member)
{
    CRelationItem relation;
    relation.m_nQvItemID = holder.id;
    relation.m_nQvItemType = holder.type;
    relation.m_nDQvItemID = member.id;
    relation.m_nDQvItemType = member.type;
    Run(m_conn, [&] { return relation.SaveData(m_conn) != 0; });
}

void Organisation::RemoveMember(ItemKey holder, ItemKey member)
{
    Run(m_conn, [&] { return CQVBaseFun::DeleteRelation(m_conn, holder.id, holder.type, member.id, member.type); });
}

void Organisation::RenameView(int id, std::string_view name)
{
    RequireFits(m_conn, "qv_View", {{"the name", "Col_Name", name}});
    Run(m_conn, [&] { return CQVBaseFun::UpdateViewName(m_conn, id, EscapeLiteral(name)); });
}

// The module's own changes write more columns than are to be changed.
void Organisation::ChangeGroup(int id, const GroupChanges& changes)
{
    Assignments assignments(m_conn, "qv_Group");
    assignments.Text("Col_Name", "the name", changes.name);
    assignments.Text("Col_Description", "the description", changes.description);
    assignments.Number("Col_ItemIndex", changes.sortIndex);
    assignments.Number("Col_DomainID", changes.domainId);
    assignments.Apply(id);
}

void Organisation::ChangeView(int id, const ViewChanges& changes)
{
    Assignments assignments(m_conn, "qv_View");
    assignments.Text("Col_Description", "the description", changes.description);
    assignments.Number("Col_ItemIndex", changes.sortIndex);
    assignments.Apply(id);
}

void Organisation::SetGroupStyle(int id, int style)
{
    Run(m_conn, [&] { return CQVBaseFun::UpdateGroupStyle(m_conn, id, style); });
}

void Organisation::NameDefaultView(std::string_view name)
{
    Run(m_conn, [&] { return CQVBaseFun::UpdateDefaultSysView(m_conn, EscapeLiteral(name)); });
}

void Organisation::StampView(int id)
{
    Run(m_conn, [&] { return CQVBaseFun::UpdateRelationViewID(m_conn, id, kItemTypeView, id); });
    // A list that could not be read counts as a short one there; its error stays behind.
    if (!CQVBaseFun::m_strLastError.IsEmpty()) {
        throw ModuleError(m_conn);
    }
}

void Organisation::DeleteGroups(const std::vector<int>& ids)
{
    for (const int id : ids) {
        Run(m_conn, [&] { return CQVBaseFun::DelGroupItemByID(m_conn, id); });
    }
    DeleteReferences(m_conn, kItemTypeGroup, ids);
}

void Organisation::DeleteView(int id)
{
    Run(m_conn, [&] { return CQVBaseFun::DeleteViewItem(m_conn, id); });
    DeleteReferences(m_conn, kItemTypeView, {id});
}

} // namespace management
