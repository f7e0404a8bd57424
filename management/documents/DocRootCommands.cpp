#include "management/Command.h"
#include "management/Names.h"
#include "management/Resolve.h"
#include "management/Text.h"
#include "management/documents/Documents.h"
#include "management/users/Users.h"

#include <fmt/format.h>

#include <algorithm>

namespace management::documents {

namespace {

constexpr std::string_view kRootHelp = "name of a document root as it is, or id:NUMBER";
constexpr std::string_view kMeantTypeHelp = "type of the one that is meant, where several share a name";
constexpr std::string_view kPathHelp = "where the server keeps its files";
constexpr std::string_view kDisplayNameHelp = "name to be shown";
constexpr std::string_view kMaxSizeHelp = "number up to which it may grow, as the server counts";
constexpr std::string_view kOwnerHelp = "login name of the user whom it belongs to, or id:NUMBER; '' for nobody";
constexpr std::string_view kStyleHelp = "style bits, from 0 to 4294967295";

// ---- Parameters -----------------------------------------------------------------------------------------------------

struct RootFilter {
    std::optional<int> type;
};

constexpr Param<RootFilter> kListParams[] = {{"type", &RootFilter::type, Kind::number, "only those of this type"}};

struct OneRoot {
    std::string root;
    std::optional<int> meantType;
};

constexpr Param<OneRoot> kOneParams[] = {
    {"ROOT", &OneRoot::root, Kind::documentRoot, kRootHelp},
    {"type", &OneRoot::meantType, Kind::number, kMeantTypeHelp},
};

struct NewRoot {
    std::string name;
    std::string path;
    std::optional<int> type;
    std::optional<std::string> description;
    std::optional<std::string> displayName;
    std::optional<int> maxSize;
    std::optional<std::string> owner;
    std::optional<std::uint32_t> style;
};

constexpr Param<NewRoot> kCreateParams[] = {
    {"NAME", &NewRoot::name, Kind::text, "name of the new document root"},
    {"path", &NewRoot::path, Kind::text, kPathHelp},
    {"type", &NewRoot::type, Kind::number, "type number; 1 is that of the company, 0 if not given"},
    {"description", &NewRoot::description, Kind::text, kDescriptionHelp},
    {"display_name", &NewRoot::displayName, Kind::text, kDisplayNameHelp},
    {"max_size", &NewRoot::maxSize, Kind::number, kMaxSizeHelp},
    {"owner", &NewRoot::owner, Kind::user, kOwnerHelp},
    {"style", &NewRoot::style, Kind::number, kStyleHelp},
};

struct RootToSet : OneRoot {
    std::optional<std::string> name;
    std::optional<int> newType;
    std::optional<std::string> path;
    std::optional<std::string> description;
    std::optional<std::string> displayName;
    std::optional<int> maxSize;
    std::optional<std::string> owner;
    std::optional<std::uint32_t> style;
};

constexpr Param<RootToSet> kSetParams[] = {
    {"ROOT", &RootToSet::root, Kind::documentRoot, kRootHelp},
    {"type", &RootToSet::meantType, Kind::number, kMeantTypeHelp},
    {"name", &RootToSet::name, Kind::text, "name to have from now on"},
    {"new_type", &RootToSet::newType, Kind::number, "type number to have from now on"},
    {"path", &RootToSet::path, Kind::text, kPathHelp},
    {"description", &RootToSet::description, Kind::text, kDescriptionHelp},
    {"display_name", &RootToSet::displayName, Kind::text, kDisplayNameHelp},
    {"max_size", &RootToSet::maxSize, Kind::number, kMaxSizeHelp},
    {"owner", &RootToSet::owner, Kind::user, kOwnerHelp},
    {"style", &RootToSet::style, Kind::number, kStyleHelp},
};

struct RootToDelete : OneRoot {
    bool recursive = false;
};

constexpr Param<RootToDelete> kDeleteParams[] = {
    {"ROOT", &RootToDelete::root, Kind::documentRoot, kRootHelp},
    {"type", &RootToDelete::meantType, Kind::number, kMeantTypeHelp},
    {"recursive", &RootToDelete::recursive, Kind::flag,
     "delete the folders too that would be in no other document root"},
};

constexpr Column kListColumns[] = {{"id", Kind::number},   {"name"}, {"type", Kind::number}, {"path"}, {"display_name"},
                                   {"created", Kind::date}};
constexpr Column kShowColumns[] = {
    {"id", Kind::number},
    {"name"},
    {"display_name"},
    {"description"},
    {"path"},
    {"type", Kind::number},
    {"style", Kind::number},
    {"max_size", Kind::number},
    {"used_size", Kind::number},
    {"owner_id", Kind::number},
    {"owner", Kind::user},
    {"created", Kind::date},
    {"has_sub_items", Kind::flag},
    {"links", Kind::number},
};

// ---- What is meant --------------------------------------------------------------------------------------------------

Sentence Named(const RootData& root) { return FillPattern("{} (root {})", Visible(root.name), root.id); }

std::string NamedWithType(const RootData& root)
{
    return fmt::format("{} (root {}, type {})", Visible(root.name), root.id, root.type);
}

Outcome OutcomeOf(const RootData& root, std::string_view outcome, Sentence sentence)
{
    return {"document root", root.id, root.name, outcome, std::move(sentence)};
}

/// All roots that an argument may mean.
std::vector<RootData> FindAll(Documents& documents, const OneRoot& in)
{
    const std::optional<int> id = IdIn(in.root, Translatable("a document root"));
    std::vector<RootData> found = documents.Roots(in.meantType);
    if (id) {
        std::erase_if(found, [&](const RootData& root) { return root.id != *id; });
    } else {
        KeepNamed(found, in.root, &RootData::name);
    }
    return found;
}

RootData FindRoot(Documents& documents, const OneRoot& in)
{
    const std::vector<RootData> found = FindAll(documents, in);
    if (found.empty()) {
        throw Error(ErrorCode::notFound,
                    FillPattern("there is no document root {}; `qvadmin docroot list` shows all", Quoted(in.root)));
    }
    if (found.size() > 1) {
        std::vector<Candidate> candidates;
        candidates.reserve(found.size());
        for (const RootData& root : found) {
            candidates.push_back({NamedWithType(root), fmt::format("{}{}", kIdPrefix, root.id)});
        }
        ThrowAmbiguous(in.root, candidates);
    }
    return found.front();
}

/// @param root  with id 0 when it is new.
void RequireFreeName(Documents& documents, const RootData& root)
{
    const auto isOther = [&](const RootData& other) { return SameName(other.name, root.name) && other.id != root.id; };
    if (std::ranges::any_of(documents.Roots(root.type), isOther)) {
        throw Error(ErrorCode::conflict,
                    FillPattern("the name {} is taken by a document root of type {}", Quoted(root.name), root.type));
    }
    const std::string others = fmt::format("Col_Type = {} AND Col_ID <> {}", root.type, root.id);
    if (const auto other = FindConfused(documents.Connection(), "Tab_Doc_Root", root.name, others)) {
        ThrowConfused("name", root.name, *other);
    }
}

void RequirePath(const std::string& path)
{
    if (path.empty()) {
        throw Error(ErrorCode::invalid, "the path is empty");
    }
}

std::optional<int> OwnerOf(Call& call, const std::optional<std::string>& argument)
{
    if (!argument) {
        return std::nullopt;
    }
    return argument->empty() ? 0 : FindUser(call.Directory(), *argument).id;
}

/// What a root becomes.
RootData With(RootData root, const RootChanges& changes)
{
    root.name = changes.name.value_or(root.name);
    root.description = changes.description.value_or(root.description);
    root.path = changes.path.value_or(root.path);
    root.displayName = changes.displayName.value_or(root.displayName);
    root.maxSize = changes.maxSize ? *changes.maxSize : root.maxSize;
    root.type = changes.type.value_or(root.type);
    root.style = changes.style.value_or(root.style);
    root.ownerId = changes.ownerId.value_or(root.ownerId);
    return root;
}

Value ShownOwner(Directory& directory, int id)
{
    const std::optional<FieldValues> user = id == 0 ? std::nullopt : directory.Load(id);
    return user ? Value(user->at(FindField("login")).value_or("")) : Value();
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Result List(Call& call, const RootFilter& in)
{
    for (const RootData& root : Documents(call.Connection()).Roots(in.type)) {
        if (!call.Row(std::int64_t{root.id}, root.name, std::int64_t{root.type}, root.path, root.displayName,
                      OrAbsent(root.created))) {
            break;
        }
    }
    return {};
}

Result Show(Call& call, const OneRoot& in)
{
    Documents documents(call.Connection());
    const RootData root = FindRoot(documents, in);
    return ResultOf(Record{
        {"id", std::int64_t{root.id}},
        {"name", root.name},
        {"display_name", root.displayName},
        {"description", root.description},
        {"path", root.path},
        {"type", std::int64_t{root.type}},
        {"style", static_cast<std::int64_t>(root.style)},
        {"max_size", root.maxSize},
        {"used_size", root.usedSize},
        {"owner_id", std::int64_t{root.ownerId}},
        {"owner", ShownOwner(call.Directory(), root.ownerId)},
        {"created", OrAbsent(root.created)},
        {"has_sub_items", root.hasSubItems},
        {"links", std::int64_t{documents.CountRootLinks(root.id)}},
    });
}

Result Default(Call& call) { return Verdict(Documents(call.Connection()).HasCompanyRoot()); }

// ---- Changing -------------------------------------------------------------------------------------------------------

Result Create(Call& call, const NewRoot& in)
{
    CheckNewName("document root", in.name);
    RequirePath(in.path);
    const RootChanges columns{in.name,    in.description, in.path,  in.displayName,
                              in.maxSize, in.type,        in.style, OwnerOf(call, in.owner)};
    const RootData root = With({}, columns);
    Documents documents(call.Connection());
    RequireFreeName(documents, root);
    return ResultOf(Value(std::int64_t{documents.CreateRoot(root)}));
}

Result Set(Call& call, const RootToSet& in)
{
    if (!in.name && !in.newType && !in.path && !in.description && !in.displayName && !in.maxSize && !in.owner &&
        !in.style) {
        ThrowNothingToSet("docroot");
    }
    Documents documents(call.Connection());
    const RootData stored = FindRoot(documents, in);
    if (in.path) {
        RequirePath(*in.path);
    }
    const RootChanges changes{in.name,    in.description, in.path,  in.displayName,
                              in.maxSize, in.newType,     in.style, OwnerOf(call, in.owner)};
    const RootData root = With(stored, changes);
    if (root.name != stored.name) {
        CheckNewName("document root", root.name);
    }
    if (root.name != stored.name || root.type != stored.type) {
        RequireFreeName(documents, root);
    }
    if (root == stored) {
        call.Report(OutcomeOf(stored, "unchanged", FillPattern("nothing to change in {}", Named(stored))));
        return Unchanged();
    }
    documents.ChangeRoot(stored.id, changes);
    call.Report(OutcomeOf(stored, "changed", FillPattern("changed {}", Named(stored))));
    return {};
}

struct Deletion : Plan {
    std::string rootName;
    std::string subject;      ///< the root with its id, and how many folders go along
    std::vector<DocKey> keys; ///< the root is the first

    bool operator==(const Deletion&) const = default;
};

Deletion PlanDeletion(Call& call, const RootToDelete& in)
{
    Documents documents(call.Connection());
    Deletion deletion;
    const RootData root = FindRoot(documents, in);
    deletion.rootName = root.name;
    const FolderTree tree(call.Connection());
    deletion.keys = tree.OrphanedBy({DocKind::root, root.id});
    const std::size_t folders = deletion.keys.size() - 1;
    if (!in.recursive) {
        deletion.keys.erase(deletion.keys.begin() + 1, deletion.keys.end());
    }
    const std::size_t links = tree.CountLinks(deletion.keys);
    deletion.subject =
        deletion.keys.size() == 1 ? Named(root) : FillPattern("{} and {}", Named(root), Counted(folders, "folder"));
    deletion.lines.push_back(FillPattern("delete {}{}", deletion.subject,
                                         links == 0 ? "" : FillPattern(", with {}", Counted(links, "link"))));
    if (!in.recursive && folders > 0) {
        deletion.lines.push_back(
            FillPattern("{} will be in no document root; --recursive deletes these too", Counted(folders, "folder")));
    }
    deletion.question = FillPattern("Delete {}?", deletion.subject);
    deletion.removed = deletion.keys.size() + links;
    return deletion;
}

Result Delete(Call& call, const RootToDelete& /*in*/, const Deletion& deletion)
{
    Documents(call.Connection()).Delete(deletion.keys);
    call.Report({"document root", deletion.keys.front().id, deletion.rootName, "deleted",
                 FillPattern("deleted {}", deletion.subject)});
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"docroot", "list"},
     .summary = "document roots by name",
     .examples = {"qvadmin docroot list", "qvadmin docroot list --type 1 -o json"},
     .columns = kListColumns,
     .handler = Read<&List, kListParams>()},
    {.path = {"docroot", "show"},
     .summary = "everything about a document root",
     .examples = {"qvadmin docroot show Main", "qvadmin docroot show id:4 -o json"},
     .columns = kShowColumns,
     .handler = Read<&Show, kOneParams>()},
    {.path = {"docroot", "create"},
     .summary = "add a document root and print the new id",
     .examples = {"qvadmin docroot create Main --path /srv/documents --type 1 --max-size 1000000"},
     .effect = Effect::create,
     .handler = Write<&Create, kCreateParams>()},
    {.path = {"docroot", "set"},
     .summary = "change what is given and leave all else",
     .examples = {"qvadmin docroot set Main --path /srv/new",
                  "qvadmin docroot set Main --type 2 --name Archive --owner amy"},
     .effect = Effect::change,
     .handler = Write<&Set, kSetParams>()},
    {.path = {"docroot", "delete"},
     .summary = "delete a document root and its links; asks first",
     .examples = {"qvadmin docroot delete Main", "qvadmin docroot delete id:4 --recursive --yes"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanDeletion, &Delete, kDeleteParams>()},
    {.path = {"docroot", "default"},
     .summary = "print whether the company has a document root; ends with 0 or 3",
     .examples = {"qvadmin docroot default"},
     .handler = Read<&Default>()},
};

} // namespace

std::span<const Command> DocRootCommands() { return kCommands; }

} // namespace management::documents
