#include "management/documents/Documents.h"

#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "documents/DocFolderItem.h"
#include "documents/DocFolderLinkItem.h"
#include "documents/DocRootItem.h"
#include "documents/DocRootLinkItem.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/Lengths.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <unordered_set>
#include <utility>

namespace management {

template class Hierarchy<DocNode>;

namespace {

constexpr std::string_view kListedBy = "folder tree";

std::string_view LinkTable(DocKind parent)
{
    return parent == DocKind::root ? "Tab_Doc_Root_Link" : "Tab_Doc_VFolder_Link";
}

std::vector<int> IdsOf(const std::vector<DocKey>& keys, DocKind kind)
{
    std::vector<int> ids;
    for (const DocKey key : keys) {
        if (key.kind == kind) {
            ids.push_back(key.id);
        }
    }
    return ids;
}

} // namespace

void CheckNewName(std::string_view noun, const std::string& name)
{
    CheckName(noun, name);
    for (const std::string_view prefix : {"id:", "root:"}) {
        if (name.starts_with(prefix)) {
            throw Error(ErrorCode::invalid,
                        FillPattern("the {} name {} begins with {}, as only ids do; choose another name",
                                    Sentence(noun), Quoted(name), prefix));
        }
    }
}

ParentAndName SplitLastFolder(const std::string& path)
{
    const FolderTree::PathParts parts = FolderTree::PartsOf(path);
    if (parts.names.size() < (parts.head ? 1U : 2U)) {
        throw Error(ErrorCode::invalid, FillPattern("{} is not a path of a folder; write /ROOT/FOLDER", Quoted(path)));
    }
    const std::string& name = parts.names.back();
    return {path.substr(0, path.size() - PathEscaped(name).size() - 1), name};
}

// ---- What is read ---------------------------------------------------------------------------------------------------

bool DocNode::IsTop(DocKey key) { return key.kind == DocKind::root; }

DocKey DocNode::KeyOf(bool isTop, int id) { return {isTop ? DocKind::root : DocKind::folder, id}; }

bool DocNode::BeginsPath() const { return IsTop(key) && !sharesName; }

FolderTree::FolderTree(CAConnect& conn)
{
    LoadPlaces(conn);
    for (const DocKind parent : {DocKind::root, DocKind::folder}) {
        LoadLinks(conn, parent);
        LoadOthers(conn, parent);
    }
    FindPaths({[](const DocNode& place) { return DocNode::IsTop(place.key); }});
}

void FolderTree::LoadPlaces(CAConnect& conn)
{
    std::map<std::string, int> roots;
    const auto read = [&](DocKind kind, const char* sql) {
        EachRow(conn, sql, [&](CARecordset& row) {
            DocNode& place = Add({kind, 0});
            ReadColumns(row, place.key.id, place.name);
            place.nameKey = NameKey(place.name);
            roots[place.name] += kind == DocKind::root ? 1 : 0;
        });
    };
    read(DocKind::root, "SELECT Col_ID, Col_Name FROM Tab_Doc_Root");
    read(DocKind::folder, "SELECT Col_ID, Col_Name FROM Tab_Doc_VFolder");
    Sort([](const DocNode& a, const DocNode& b) {
        return std::tie(a.key.kind, a.nameKey, a.name, a.key.id) < std::tie(b.key.kind, b.nameKey, b.name, b.key.id);
    });
    for (std::size_t i = 0; i < Nodes().size(); ++i) {
        At(i).sharesName = DocNode::IsTop(At(i).key) && roots.at(At(i).name) > 1;
    }
}

void FolderTree::LoadLinks(CAConnect& conn, DocKind parent)
{
    EachRow(conn,
            fmt::format("SELECT Col_P_ObjID, Col_S_ObjID FROM {} WHERE Col_S_ClassID = {}", LinkTable(parent),
                        kFolderClass),
            [&](CARecordset& row) {
                LinkRow link{{parent, 0}, {DocKind::folder, 0}};
                ReadColumns(row, link.parent.id, link.folder.id);
                m_links.push_back(link);
                Link(link.parent, link.folder);
            });
}

void FolderTree::LoadOthers(CAConnect& conn, DocKind parent)
{
    EachRow(conn,
            fmt::format("SELECT Col_P_ObjID, COUNT(*) FROM {} WHERE Col_S_ClassID <> {} OR Col_S_ClassID IS NULL "
                        "GROUP BY Col_P_ObjID",
                        LinkTable(parent), kFolderClass),
            [&](CARecordset& row) {
                if (const std::optional<std::size_t> place = IndexOf({parent, NumberIn(row, 1)})) {
                    At(*place).others = NumberIn(row, 2);
                }
            });
}

// ---- Look-ups -------------------------------------------------------------------------------------------------------

std::vector<DocKey> FolderTree::NamedAmong(std::vector<std::size_t> places, std::string_view name) const
{
    KeepNamed(places, name, [this](std::size_t place) -> const std::string& { return Nodes()[place].name; });
    return Keys(places);
}

std::vector<DocKey> FolderTree::RootsNamed(std::string_view name) const
{
    std::vector<std::size_t> roots;
    for (std::size_t place = 0; place < Nodes().size() && DocNode::IsTop(Nodes()[place].key); ++place) {
        roots.push_back(place);
    }
    return NamedAmong(std::move(roots), name);
}

std::vector<DocKey> FolderTree::ChildrenNamed(DocKey parent, std::string_view name) const
{
    const DocNode* place = Find(parent);
    return place == nullptr ? std::vector<DocKey>() : NamedAmong(place->children, name);
}

std::vector<DocKey> FolderTree::FindAll(const std::string& argument) const
{
    return Follow(
        argument, [this](const std::string& name) { return RootsNamed(name); },
        [this](DocKey parent, const std::string& name) { return ChildrenNamed(parent, name); });
}

std::string FolderTree::Listed(const std::vector<DocKey>& keys) const
{
    std::string list;
    for (const DocKey key : keys) {
        list += (list.empty() ? "" : ", ") + Named(key);
    }
    return list;
}

DocKey FolderTree::RequireFolder(DocKey key) const
{
    if (key.kind != DocKind::folder) {
        throw Error(ErrorCode::invalid, FillPattern("{} is a document root, not a folder", Named(key)));
    }
    return key;
}

DocKey FolderTree::FindPlace(const std::string& argument) const
{
    return RequireOne(argument, FindAll(argument), "document root or folder", kListedBy);
}

DocKey FolderTree::FindFolder(const std::string& argument) const
{
    return RequireFolder(RequireOne(argument, FindAll(argument), "folder", kListedBy));
}

DocKey FolderTree::FindRoot(const std::string& name) const
{
    return RequireOne(name, RootsNamed(name), "document root", kListedBy);
}

std::vector<Placement> FolderTree::PlacementsAt(const std::string& argument) const
{
    std::vector<Placement> found;
    if (PartsOf(argument).names.empty()) {
        for (const DocKey folder : FindAll(argument)) {
            for (const DocKey parent : Keys(Find(RequireFolder(folder))->parents)) {
                found.push_back({parent, folder});
            }
        }
        return found;
    }
    const ParentAndName parts = SplitLastFolder(argument);
    for (const DocKey parent : FindAll(parts.parent)) {
        for (const DocKey folder : ChildrenNamed(parent, parts.name)) {
            found.push_back({parent, folder});
        }
    }
    return found;
}

Placement FolderTree::FindPlacement(const std::string& argument, const std::optional<std::string>& from) const
{
    std::vector<Placement> found = PlacementsAt(argument);
    const DocKey folder =
        RequireFolder(RequireOne(argument, found.empty() ? FindAll(argument) : FoldersOf(found), "folder", kListedBy));
    if (from) {
        const DocKey parent = FindPlace(*from);
        const std::vector<DocKey> parents = Keys(Find(folder)->parents);
        if (std::ranges::find(parents, parent) == parents.end()) {
            throw Error(ErrorCode::notFound, FillPattern("{} is not directly under {}", Named(folder), Named(parent)));
        }
        return {parent, folder};
    }
    if (found.empty()) {
        throw Error(ErrorCode::conflict, FillPattern("{} is in no place", Named(folder)));
    }
    if (found.size() > 1) {
        std::vector<DocKey> parents;
        std::ranges::transform(found, std::back_inserter(parents), &Placement::parent);
        throw Error(ErrorCode::conflict,
                    FillPattern("{} is in several places; say with --from which of {} it is to leave", Named(folder),
                                Listed(parents)));
    }
    return found.front();
}

std::vector<DocKey> FolderTree::FoldersOf(const std::vector<Placement>& placements)
{
    std::vector<DocKey> folders;
    std::ranges::transform(placements, std::back_inserter(folders), &Placement::folder);
    KeepOnce(folders);
    return folders;
}

std::size_t FolderTree::CountLinks(const std::vector<DocKey>& keys) const
{
    const auto isAmong = [&keys](DocKey key) { return std::ranges::binary_search(keys, key); };
    auto count = static_cast<std::size_t>(std::ranges::count_if(
        m_links, [&](const LinkRow& link) { return isAmong(link.parent) || isAmong(link.folder); }));
    for (const DocKey key : keys) {
        count += static_cast<std::size_t>(Find(key)->others);
    }
    return count;
}

bool FolderTree::HangsWithout(const Placement& placement) const
{
    const std::size_t left = NumberOf(placement.parent);
    const std::size_t folder = NumberOf(placement.folder);
    std::vector<std::size_t> reached;
    std::unordered_set<std::size_t> seen;
    for (std::size_t i = 0; i < Nodes().size() && DocNode::IsTop(Nodes()[i].key); ++i) {
        reached.push_back(i);
    }
    for (std::size_t next = 0; next < reached.size() && !seen.contains(folder); ++next) {
        for (const std::size_t child : Nodes()[reached[next]].children) {
            const bool isLeft = reached[next] == left && child == folder;
            if (!isLeft && seen.insert(child).second) {
                reached.push_back(child);
            }
        }
    }
    return seen.contains(folder);
}

// ---- Documents ------------------------------------------------------------------------------------------------------

CString Documents::EscapeLiteral(std::string_view text) const { return management::EscapeLiteral(m_conn, text); }

/// Runs a write of a record that drops the reason of a failure.
template <class Write>
void Documents::Save(std::string_view what, Write write)
{
    if (!write()) {
        ThrowWriteError(m_conn, fmt::format("the {}", what));
    }
}

// ---- Roots ----------------------------------------------------------------------------------------------------------

std::vector<RootData> Documents::ReadRoots(const std::string& condition)
{
    return ReadRecords(
        m_conn,
        "SELECT Col_ID, Col_Name, Col_Desc, Col_DataPath, Col_Dt_Create, Col_MaxSize, Col_UsedSize, Col_DispName, "
        "Col_HaveSubItem, Col_Type, Col_Style, Col_OwnerID FROM Tab_Doc_Root" +
            condition,
        &RootData::id, &RootData::name, &RootData::description, &RootData::path, &RootData::created, &RootData::maxSize,
        &RootData::usedSize, &RootData::displayName, &RootData::hasSubItems, &RootData::type, &RootData::style,
        &RootData::ownerId);
}

std::vector<RootData> Documents::Roots(std::optional<int> type)
{
    std::vector<RootData> roots = ReadRoots(type ? fmt::format(" WHERE Col_Type = {}", *type) : "");
    std::ranges::sort(roots, [](const RootData& a, const RootData& b) {
        return std::tuple(NameKey(a.name), a.name, a.type, a.id) < std::tuple(NameKey(b.name), b.name, b.type, b.id);
    });
    return roots;
}

std::optional<RootData> Documents::LoadRoot(int id)
{
    const std::vector<RootData> roots = ReadRoots(fmt::format(" WHERE Col_ID = {}", id));
    return roots.empty() ? std::nullopt : std::optional(roots.front());
}

bool Documents::HasCompanyRoot()
{
    bool exists = false;
    // Against its name, it says true when there is one.
    Run(m_conn, [&] { return CQVBaseFun::HasNoDefCorpDocRoot(m_conn, exists); });
    return exists;
}

int Documents::CountRootLinks(int id)
{
    return Number(m_conn, fmt::format("SELECT COUNT(*) FROM Tab_Doc_Root_Link WHERE Col_P_ObjID = {}", id));
}

int Documents::CreateRoot(const RootData& root)
{
    RequireFits(m_conn, "Tab_Doc_Root",
                {{"the name", "Col_Name", root.name},
                 {"the description", "Col_Desc", root.description},
                 {"the path", "Col_DataPath", root.path},
                 {"the display name", "Col_DispName", root.displayName}});
    CDocRootItem item;
    item.m_strName = EscapeLiteral(root.name);
    item.m_strDesc = EscapeLiteral(root.description);
    item.m_strDataPath = EscapeQuotes(m_conn, root.path);
    item.m_nMaxSize = static_cast<int>(root.maxSize);
    item.m_strDispName = EscapeLiteral(root.displayName);
    item.m_nType = root.type;
    item.m_ulStyle = root.style;
    item.m_nOwnerID = root.ownerId;
    Save("new document root", [&] { return item.SaveData(m_conn); });
    return LastInsertedId(m_conn);
}

// The module's own change writes all columns: it would cut numbers of 64 bits and undo what the document server writes.
void Documents::ChangeRoot(int id, const RootChanges& changes)
{
    // As the module writes numbers of 32 bits.
    const auto cut = [](const auto& number) {
        return number ? std::optional(static_cast<int>(*number)) : std::nullopt;
    };
    Assignments assignments(m_conn, "Tab_Doc_Root");
    assignments.Text("Col_Name", "the name", changes.name);
    assignments.Text("Col_Desc", "the description", changes.description);
    assignments.Text("Col_DataPath", "the path", changes.path);
    assignments.Text("Col_DispName", "the display name", changes.displayName);
    assignments.Number("Col_MaxSize", cut(changes.maxSize));
    assignments.Number("Col_Type", changes.type);
    assignments.Number("Col_Style", cut(changes.style));
    assignments.Number("Col_OwnerID", changes.ownerId);
    assignments.Apply(id);
}

// ---- Folders --------------------------------------------------------------------------------------------------------

std::optional<FolderData> Documents::LoadFolder(int id)
{
    return ReadRecord(
        m_conn,
        fmt::format("SELECT Col_Name, Col_Style, Col_Creator_ID, Col_Creator_Name, Col_Dt_Create, Col_HaveSubItem "
                    "FROM Tab_Doc_VFolder WHERE Col_ID = {}",
                    id),
        &FolderData::name, &FolderData::style, &FolderData::creatorId, &FolderData::creator, &FolderData::created,
        &FolderData::hasSubItems);
}

std::optional<RowName> Documents::FindConfusedFolder(DocKey parent, std::string_view name, std::optional<DocKey> except)
{
    return FindConfused(m_conn, "Tab_Doc_VFolder", name,
                        fmt::format("Col_ID <> {} AND Col_ID IN (SELECT Col_S_ObjID FROM {} WHERE Col_P_ObjID = {} AND "
                                    "Col_S_ClassID = {})",
                                    except ? except->id : 0, LinkTable(parent.kind), parent.id, kFolderClass));
}

int Documents::RemoveLinksTo(int folderId)
{
    int removed = 0;
    for (const DocKind parent : {DocKind::root, DocKind::folder}) {
        const std::string links = fmt::format("FROM {} WHERE Col_S_ClassID = {} AND Col_S_ObjID = {}",
                                              LinkTable(parent), kFolderClass, folderId);
        const int count = Number(m_conn, "SELECT COUNT(*) " + links);
        if (count > 0) {
            Execute(m_conn, "DELETE " + links);
        }
        removed += count;
    }
    return removed;
}

NewFolder Documents::CreateFolder(DocKey parent, const FolderData& folder)
{
    RequireFits(m_conn, "Tab_Doc_VFolder",
                {{"the name", "Col_Name", folder.name}, {"the creator", "Col_Creator_Name", folder.creator}});
    CDocFolderItem item;
    item.m_strName = EscapeLiteral(folder.name);
    item.m_nStyle = static_cast<int>(folder.style);
    item.m_nCreatorID = folder.creatorId;
    item.m_strCreatorName = EscapeLiteral(folder.creator);
    Save("new folder", [&] { return item.SaveData(m_conn); });
    const int id = LastInsertedId(m_conn);
    if (Number(m_conn, fmt::format("SELECT COUNT(*) FROM Tab_Doc_VFolder WHERE Col_ID = {} AND Col_Name = '{}'", id,
                                   item.m_strName.View())) == 0) {
        throw Error(ErrorCode::database,
                    FillPattern("the database did not keep the name {} of the new folder as it is; "
                                "nothing was changed",
                                Quoted(folder.name)));
    }
    // Links tell nothing of an id: those of deleted folders stay, and an engine may give their ids once more.
    const NewFolder made{id, RemoveLinksTo(id)};
    AddLink({parent, {DocKind::folder, made.id}}, folder);
    return made;
}

void Documents::AddLink(const Placement& placement, const FolderData& folder)
{
    const auto add = [&](auto link) {
        link.m_strDispName = EscapeLiteral(folder.name);
        link.m_nStyle = static_cast<int>(folder.style);
        link.m_nHaveSubItem = folder.hasSubItems ? 1 : 0;
        link.m_nPObjID = placement.parent.id;
        link.m_nSClassID = kFolderClass;
        link.m_nSObjID = placement.folder.id;
        link.m_nCreatorID = folder.creatorId;
        link.m_strCreatorName = EscapeLiteral(folder.creator);
        Save("new link", [&] { return link.SaveData(m_conn); });
    };
    if (placement.parent.kind == DocKind::root) {
        add(CDocRootLinkItem());
    } else {
        add(CDocFolderLinkItem());
    }
}

void Documents::RemoveLink(const Placement& placement)
{
    const auto remove =
        placement.parent.kind == DocKind::root ? &CQVBaseFun::DeleteDocRootLink : &CQVBaseFun::DeleteDocVFolderLink;
    Run(m_conn, [&] { return remove(m_conn, placement.parent.id, kFolderClass, placement.folder.id); });
}

void Documents::UpdateLinks(int folderId, const std::string& assignment, const std::string& condition)
{
    for (const DocKind parent : {DocKind::root, DocKind::folder}) {
        Execute(m_conn, fmt::format("UPDATE {} SET {} WHERE Col_S_ClassID = {} AND Col_S_ObjID = {} AND {}",
                                    LinkTable(parent), assignment, kFolderClass, folderId, condition));
    }
}

void Documents::RenameFolder(int id, std::string_view oldName, std::string_view newName)
{
    RequireFits(m_conn, "Tab_Doc_VFolder", {{"the name", "Col_Name", newName}});
    Run(m_conn, [&] { return CQVBaseFun::UpdateFolderName(m_conn, id, EscapeLiteral(newName)); });
    UpdateLinks(id, fmt::format("Col_DispName = '{}'", EscapeLiteral(newName).View()),
                fmt::format("Col_DispName = '{}'", EscapeLiteral(oldName).View()));
}

void Documents::SetFolderStyle(int id, unsigned long oldStyle, unsigned long newStyle)
{
    Run(m_conn, [&] { return CQVBaseFun::UpdateFolderStyle(m_conn, id, newStyle); });
    // As the module writes numbers of 32 bits.
    UpdateLinks(id, fmt::format("Col_Style = {}", static_cast<int>(newStyle)),
                fmt::format("Col_Style = {}", static_cast<int>(oldStyle)));
}

void Documents::DeleteLinks(DocKind kind, const std::vector<int>& ids)
{
    ForEachPart(ids, [&](std::span<const int> part) {
        const std::string list = fmt::format("{}", fmt::join(part, ","));
        Execute(m_conn, fmt::format("DELETE FROM {} WHERE Col_P_ObjID IN ({})", LinkTable(kind), list));
        for (const DocKind parent : {DocKind::root, DocKind::folder}) {
            if (kind == DocKind::folder) {
                Execute(m_conn, fmt::format("DELETE FROM {} WHERE Col_S_ClassID = {} AND Col_S_ObjID IN ({})",
                                            LinkTable(parent), kFolderClass, list));
            }
        }
    });
}

void Documents::Delete(const std::vector<DocKey>& keys)
{
    for (const DocKind kind : {DocKind::root, DocKind::folder}) {
        const auto remove = kind == DocKind::root ? static_cast<bool (*)(CAConnect&, int)>(&CQVBaseFun::DeleteDocRoot)
                                                  : &CQVBaseFun::DeleteDocVFolder;
        const std::vector<int> ids = IdsOf(keys, kind);
        DeleteLinks(kind, ids);
        for (const int id : ids) {
            Run(m_conn, [&] { return remove(m_conn, id); });
        }
    }
}

} // namespace management
