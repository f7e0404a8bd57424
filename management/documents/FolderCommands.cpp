#include "management/Command.h"
#include "management/Names.h"
#include "management/Paths.h"
#include "management/Text.h"
#include "management/TreeDrawing.h"
#include "management/documents/Documents.h"
#include "management/users/Users.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace management::documents {

namespace {

constexpr std::string_view kFolderHelp = "/ROOT/FOLDER, or id:NUMBER";
constexpr std::string_view kPlaceHelp = "/ROOT or /ROOT/FOLDER, or id:NUMBER of a folder, or root:NUMBER";
constexpr const char* kNothingChanged = Translatable("nothing was changed");

// ---- Parameters -----------------------------------------------------------------------------------------------------

struct TreeToDraw {
    std::optional<std::string> top;
    std::optional<int> depth;
};

constexpr Param<TreeToDraw> kTreeParams[] = {
    {"ROOT", &TreeToDraw::top, Kind::documentRoot, "name of a document root; or a path, or id:NUMBER of a folder"},
    {"depth", &TreeToDraw::depth, Kind::number, "so many levels and no more",
     Range{0, std::numeric_limits<int>::max()}},
};

struct OnePlace {
    std::string place;
};

constexpr Param<OnePlace> kListParams[] = {{"PATH", &OnePlace::place, Kind::folder, kPlaceHelp}};

struct OneFolder {
    std::string folder;
};

constexpr Param<OneFolder> kOneParams[] = {{"FOLDER", &OneFolder::folder, Kind::folder, kFolderHelp}};

struct NewFolderAt {
    std::string path;
    std::optional<std::uint32_t> style;
    std::optional<std::string> creator;
    bool parents = false;
};

constexpr Param<NewFolderAt> kCreateParams[] = {
    {"PATH", &NewFolderAt::path, Kind::text, "where to add it: path of the parent, / and the new name"},
    {"style", &NewFolderAt::style, Kind::number, "style bits, from 0 to 4294967295"},
    {"creator", &NewFolderAt::creator, Kind::user, "login name of the user who is noted as its creator"},
    {"parents", &NewFolderAt::parents, Kind::flag, "add the folders above that are missing too"},
};

struct FolderToRename {
    std::string folder;
    std::string name;
};

constexpr Param<FolderToRename> kRenameParams[] = {
    {"FOLDER", &FolderToRename::folder, Kind::folder, kFolderHelp},
    {"NAME", &FolderToRename::name, Kind::text, "the name as it is, not as in a path"},
};

struct FolderToStyle {
    std::string folder;
    std::optional<std::uint32_t> style;
};

constexpr Param<FolderToStyle> kStyleParams[] = {
    {"FOLDER", &FolderToStyle::folder, Kind::folder, kFolderHelp},
    {"N", &FolderToStyle::style, Kind::number, "style bits to set, from 0 to 4294967295"},
};

struct FolderToLink {
    std::string folder;
    std::string parent;
};

constexpr Param<FolderToLink> kLinkParams[] = {
    {"FOLDER", &FolderToLink::folder, Kind::folder, kFolderHelp},
    {"PARENT", &FolderToLink::parent, Kind::folder, kPlaceHelp},
};

struct FolderToMove {
    std::string folder;
    std::string parent;
    std::optional<std::string> from;
};

constexpr Param<FolderToMove> kMoveParams[] = {
    {"FOLDER", &FolderToMove::folder, Kind::folder, kFolderHelp},
    {"PARENT", &FolderToMove::parent, Kind::folder, kPlaceHelp},
    {"from", &FolderToMove::from, Kind::folder, "the parent to leave, when it does not follow from the path"},
};

struct FolderToUnlink {
    std::string folder;
    std::optional<std::string> from;
};

constexpr Param<FolderToUnlink> kUnlinkParams[] = {
    {"FOLDER", &FolderToUnlink::folder, Kind::folder, kFolderHelp},
    {"from", &FolderToUnlink::from, Kind::folder, "the parent to leave, when it does not follow from the path"},
};

struct FolderToDelete {
    std::string folder;
    bool recursive = false;
};

constexpr Param<FolderToDelete> kDeleteParams[] = {
    {"FOLDER", &FolderToDelete::folder, Kind::folder, kFolderHelp},
    {"recursive", &FolderToDelete::recursive, Kind::flag,
     "delete the folders below too; other objects only lose their place"},
};

constexpr Column kTreeColumns[] = {{"depth", Kind::number},  {"type"}, {"id", Kind::number}, {"name"},
                                   {"parent", Kind::number}, {"mark"}};
constexpr Column kListColumns[] = {
    {"id", Kind::number}, {"name"}, {"path"}, {"folders", Kind::number}, {"other_objects", Kind::number}};
constexpr Column kShowColumns[] = {
    {"id", Kind::number},
    {"name"},
    {"path"},
    {"parents"},
    {"style", Kind::number},
    {"created", Kind::date},
    {"creator_id", Kind::number},
    {"creator"},
    {"folders", Kind::number},
    {"other_objects", Kind::number},
};
constexpr Column kStyleColumns[] = {{"style", Kind::number}};

// ---- What is meant --------------------------------------------------------------------------------------------------

FolderData LoadFolder(Documents& documents, DocKey key)
{
    const std::optional<FolderData> folder = documents.LoadFolder(key.id);
    if (!folder) {
        throw Error(ErrorCode::notFound, FillPattern("the folder with id {} has just been deleted", key.id));
    }
    return *folder;
}

void RequireFreeName(const FolderTree& tree, Documents& documents, DocKey parent, const std::string& name,
                     std::optional<DocKey> self)
{
    tree.RequireNoOther(tree.ChildrenNamed(parent, name), name, self);
    if (const auto other = documents.FindConfusedFolder(parent, name, self)) {
        ThrowConfused("name", name, *other);
    }
}

// ---- Reading --------------------------------------------------------------------------------------------------------

/// Hands a line of the tree to the front end. @return false when no more are wanted.
bool GiveLine(const Call& call, std::span<const DocNode> places, const TreeLine& line)
{
    const auto depth = static_cast<std::int64_t>(line.depth);
    if (!line.node) {
        return call.TreeRow(line.Drawn("In no document root:"), depth, "nowhere", Value(), "", Value(), "");
    }
    const DocNode& place = places[*line.node];
    const bool isRoot = place.key.kind == DocKind::root;
    return call.TreeRow(
        line.Drawn(fmt::format("{} ({} {})", Visible(place.name), isRoot ? "root" : "id", place.key.id)), depth,
        isRoot ? "root" : "folder", std::int64_t{place.key.id}, place.name,
        line.parent ? Value(std::int64_t{places[*line.parent].key.id}) : Value(),
        TextValue(std::string(NameOf(line.mark))));
}

Result Tree(Call& call, const TreeToDraw& in)
{
    const FolderTree tree(call.Connection());
    const std::span<const DocNode> places = tree.Nodes();
    const auto childrenOf = [places](std::size_t node) { return std::span<const std::size_t>(places[node].children); };
    TreeDrawing drawing({places.size(), childrenOf, {}}, in.depth,
                        [&](const TreeLine& line) { return GiveLine(call, places, line); });
    if (in.top) {
        const bool isPath = in.top->starts_with('/') || in.top->starts_with("id:") || in.top->starts_with("root:");
        drawing.Draw(tree.NumberOf(isPath ? tree.FindPlace(*in.top) : tree.FindRoot(*in.top)));
        return {};
    }
    const auto isRoot = [](const DocNode& place) { return place.key.kind == DocKind::root; };
    const auto isUnrooted = [](const DocNode& place) { return !place.isReachable && !place.parent; };
    drawing.DrawAll(NumbersWhere(places, isRoot), NumbersWhere(places, isUnrooted));
    return {};
}

Result List(Call& call, const OnePlace& in)
{
    const FolderTree tree(call.Connection());
    for (const std::size_t child : tree.Find(tree.FindPlace(in.place))->children) {
        const DocNode& place = tree.Nodes()[child];
        if (!call.Row(std::int64_t{place.key.id}, place.name, tree.PathOf(place.key),
                      static_cast<std::int64_t>(place.children.size()), std::int64_t{place.others})) {
            break;
        }
    }
    return {};
}

Result Show(Call& call, const OneFolder& in)
{
    const FolderTree tree(call.Connection());
    const DocKey key = tree.FindFolder(in.folder);
    const DocNode& place = *tree.Find(key);
    Documents documents(call.Connection());
    const FolderData folder = LoadFolder(documents, key);
    return ResultOf(Record{
        {"id", std::int64_t{key.id}},
        {"name", folder.name},
        {"path", tree.PathOf(key)},
        {"parents", PathsOf(tree, tree.Keys(place.parents))},
        {"style", static_cast<std::int64_t>(folder.style)},
        {"created", OrAbsent(folder.created)},
        {"creator_id", std::int64_t{folder.creatorId}},
        {"creator", folder.creator},
        {"folders", static_cast<std::int64_t>(place.children.size())},
        {"other_objects", std::int64_t{place.others}},
    });
}

Result ShowStyle(Call& call, const FolderToStyle& in)
{
    const DocKey key = FolderTree(call.Connection()).FindFolder(in.folder);
    Documents documents(call.Connection());
    return ResultOf(Record{{"style", static_cast<std::int64_t>(LoadFolder(documents, key).style)}});
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Result Create(Call& call, const NewFolderAt& in)
{
    CheckNewName("folder", SplitLastFolder(in.path).name);
    FolderData folder;
    if (in.creator) {
        folder.creatorId = FindUser(call.Directory(), *in.creator).id;
        folder.creator = call.Directory().NameOfId(folder.creatorId);
    }
    const FolderTree tree(call.Connection());
    Documents documents(call.Connection());
    const NewPath path = SplitNewPath(in.path, in.parents, &SplitLastFolder,
                                      [&tree](const std::string& parent) { return !tree.FindAll(parent).empty(); });
    DocKey key = tree.FindPlace(path.parent);
    RequireFreeName(tree, documents, key, path.names.front(), std::nullopt);
    for (const std::string& name : path.names) {
        CheckNewName("folder", name);
        folder.name = name;
        folder.style = &name == &path.names.back() ? in.style.value_or(0) : 0;
        const NewFolder made = documents.CreateFolder(key, folder);
        key = {DocKind::folder, made.id};
        if (made.removedLinks > 0) {
            call.Report({"folder", made.id, name, "cleaned",
                         FillPattern("removed {} to a folder deleted before, whose id {} the new one has",
                                     Counted(static_cast<std::size_t>(made.removedLinks), "link"), made.id)});
        }
    }
    return ResultOf(Value(std::int64_t{key.id}));
}

Result Rename(Call& call, const FolderToRename& in)
{
    CheckNewName("folder", in.name);
    const FolderTree tree(call.Connection());
    Documents documents(call.Connection());
    const DocKey key = tree.FindFolder(in.folder);
    const DocNode& place = *tree.Find(key);
    for (const DocKey parent : tree.Keys(place.parents)) {
        RequireFreeName(tree, documents, parent, in.name, key);
    }
    documents.RenameFolder(key.id, place.name, in.name);
    call.Report(tree.OutcomeOf(key, "renamed", FillPattern("renamed {} to {}", tree.Named(key), Visible(in.name))));
    return {};
}

Result SetStyle(Call& call, const FolderToStyle& in)
{
    const FolderTree tree(call.Connection());
    const DocKey key = tree.FindFolder(in.folder);
    Documents documents(call.Connection());
    documents.SetFolderStyle(key.id, LoadFolder(documents, key).style, *in.style);
    call.Report(tree.OutcomeOf(key, "changed", FillPattern("changed {}", tree.Named(key))));
    return {};
}

/// Puts a folder in a further place.
void AddPlace(const FolderTree& tree, Documents& documents, const Placement& place)
{
    const std::vector<DocKey> parents = tree.Keys(tree.Find(place.folder)->parents);
    if (std::ranges::find(parents, place.parent) != parents.end()) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} is directly under {} already", tree.Named(place.folder), tree.Named(place.parent)));
    }
    const std::vector<DocKey> cycle = tree.CycleClosedBy(place);
    if (!cycle.empty()) {
        throw Error(ErrorCode::conflict, FillPattern("{} cannot go there, it would be below itself: {}",
                                                     tree.Named(place.folder), tree.CycleText(cycle)));
    }
    FolderData folder = LoadFolder(documents, place.folder);
    // Who made the folder need not have made the link.
    folder.creatorId = 0;
    folder.creator.clear();
    RequireFreeName(tree, documents, place.parent, folder.name, std::nullopt);
    documents.AddLink(place, folder);
}

Result Link(Call& call, const FolderToLink& in)
{
    const FolderTree tree(call.Connection());
    Documents documents(call.Connection());
    const Placement place{tree.FindPlace(in.parent), tree.FindFolder(in.folder)};
    AddPlace(tree, documents, place);
    call.Report(
        tree.OutcomeOf(place.folder, "linked",
                       FillPattern("{} is now under {} too", tree.Named(place.folder), tree.Named(place.parent))));
    return {};
}

Result Move(Call& call, const FolderToMove& in)
{
    const FolderTree tree(call.Connection());
    Documents documents(call.Connection());
    const Placement to{tree.FindPlace(in.parent), tree.FindFolder(in.folder)};
    const bool isSomewhere = !tree.Find(to.folder)->parents.empty();
    const std::optional<Placement> from =
        isSomewhere ? std::optional(tree.FindPlacement(in.folder, in.from)) : std::nullopt;
    AddPlace(tree, documents, to);
    if (from) {
        documents.RemoveLink(*from);
    }
    call.Report(tree.OutcomeOf(to.folder, "moved",
                               FillPattern("{} is now under {}", tree.Named(to.folder), tree.Named(to.parent))));
    return {};
}

struct Unlinking : Plan {
    Placement place{};
    Outcome outcome; ///< what is to be said of it

    bool operator==(const Unlinking& other) const
    {
        return Plan::operator==(other) && place == other.place && outcome.sentence == other.outcome.sentence;
    }
};

Unlinking PlanUnlinking(Call& call, const FolderToUnlink& in)
{
    const FolderTree tree(call.Connection());
    Unlinking unlinking;
    unlinking.nothingDone = kNothingChanged;
    unlinking.place = tree.FindPlacement(in.folder, in.from);
    const Sentence folder = tree.Named(unlinking.place.folder);
    const Sentence parent = tree.Named(unlinking.place.parent);
    if (!tree.HangsWithout(unlinking.place)) {
        unlinking.lines.push_back(
            FillPattern("{} would be in no document root; `qvadmin folder delete` deletes it", folder));
        unlinking.question = FillPattern("Take {} from {} all the same?", folder, parent);
        unlinking.removed = 1;
    }
    unlinking.outcome =
        tree.OutcomeOf(unlinking.place.folder, "unlinked", FillPattern("{} is no longer under {}", folder, parent));
    return unlinking;
}

Result Unlink(Call& call, const FolderToUnlink& /*in*/, const Unlinking& unlinking)
{
    Documents(call.Connection()).RemoveLink(unlinking.place);
    call.Report(unlinking.outcome);
    return {};
}

struct Deletion : Plan {
    DocKey folder{};
    std::string path;
    std::vector<DocKey> keys; ///< of the folder and those that go along

    bool operator==(const Deletion&) const = default;
};

Deletion PlanDeletion(Call& call, const FolderToDelete& in)
{
    const FolderTree tree(call.Connection());
    Deletion deletion;
    deletion.folder = tree.FindFolder(in.folder);
    const DocNode& place = *tree.Find(deletion.folder);
    if (!in.recursive && (!place.children.empty() || place.others > 0)) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} holds {} and {}; add --recursive to delete it, and the folders, all the same",
                                tree.Named(deletion.folder), Counted(place.children.size(), "folder"),
                                Counted(static_cast<std::size_t>(place.others), "other object")));
    }
    deletion.path = tree.PathOf(deletion.folder);
    deletion.keys = tree.OrphanedBy(deletion.folder);
    const std::size_t below = deletion.keys.size() - 1;
    const std::size_t links = tree.CountLinks(deletion.keys);
    const Sentence named = tree.Named(deletion.folder);
    const Sentence subject = below == 0 ? named : FillPattern("{} and {} below", named, Counted(below, "folder"));
    deletion.lines.push_back(
        FillPattern("delete {}{}", subject, links == 0 ? "" : FillPattern(", with {}", Counted(links, "link"))));
    deletion.question = FillPattern("Delete {}?", subject);
    deletion.removed = deletion.keys.size() + links;
    return deletion;
}

Result Delete(Call& call, const FolderToDelete& /*in*/, const Deletion& deletion)
{
    Documents(call.Connection()).Delete(deletion.keys);
    call.Report({"folder", deletion.folder.id, deletion.path, "deleted",
                 FillPattern("deleted {}", Counted(deletion.keys.size(), "folder"))});
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"folder", "tree"},
     .summary = "draw document roots and the folders below them",
     .examples = {"qvadmin folder tree", "qvadmin folder tree Main --depth 2",
                  "qvadmin folder tree /Main/Contracts -o csv"},
     .columns = kTreeColumns,
     .isTree = true,
     .handler = ReadSnapshot<&Tree, kTreeParams>()},
    {.path = {"folder", "list"},
     .summary = "the folders directly under a document root or folder",
     .examples = {"qvadmin folder list /Main", "qvadmin folder list /Main/Contracts -o csv"},
     .columns = kListColumns,
     .handler = Read<&List, kListParams>()},
    {.path = {"folder", "show"},
     .summary = "everything about a folder, and where it is linked",
     .examples = {"qvadmin folder show /Main/Contracts", "qvadmin folder show id:17 -o json"},
     .columns = kShowColumns,
     .handler = Read<&Show, kOneParams>()},
    {.path = {"folder", "create"},
     .summary = "add a folder and print the new id",
     .examples = {"qvadmin folder create /Main/Contracts --creator amy",
                  "qvadmin folder create /Main/Contracts/2024/May --parents", "qvadmin folder create '/Main/In\\/Out'"},
     .effect = Effect::create,
     .handler = Write<&Create, kCreateParams>()},
    {.path = {"folder", "rename"},
     .summary = "give a folder another name",
     .examples = {"qvadmin folder rename /Main/Contracts Agreements"},
     .effect = Effect::change,
     .handler = Write<&Rename, kRenameParams>()},
    {.path = {"folder", "style"},
     .summary = "print a folder's style, or set it",
     .examples = {"qvadmin folder style /Main/Contracts", "qvadmin folder style /Main/Contracts 2"},
     .effect = Effect::change,
     .columns = kStyleColumns,
     .handler = ReadOrWrite<&FolderToStyle::style, &ShowStyle, &SetStyle, kStyleParams>()},
    {.path = {"folder", "link"},
     .summary = "put a folder, with all below it, in a further place",
     .examples = {"qvadmin folder link /Main/Contracts /Archive", "qvadmin folder link id:17 root:4"},
     .effect = Effect::change,
     .handler = Write<&Link, kLinkParams>()},
    {.path = {"folder", "move"},
     .summary = "move a folder, with all below it, from one of its places to another",
     .examples = {"qvadmin folder move /Main/Contracts /Archive", "qvadmin folder move id:17 root:4 --from /Main"},
     .effect = Effect::change,
     .handler = Write<&Move, kMoveParams>()},
    {.path = {"folder", "unlink"},
     .summary = "take a folder out of one of its places; asks first when no other is left",
     .examples = {"qvadmin folder unlink /Archive/Contracts", "qvadmin folder unlink id:17 --from /Archive"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanUnlinking, &Unlink, kUnlinkParams>()},
    {.path = {"folder", "delete"},
     .summary = "delete a folder and its links, wherever it is; asks first",
     .examples = {"qvadmin folder delete /Main/Contracts", "qvadmin folder delete id:17 --recursive --yes"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanDeletion, &Delete, kDeleteParams>()},
};

} // namespace

std::span<const Command> FolderCommands() { return kCommands; }

} // namespace management::documents
