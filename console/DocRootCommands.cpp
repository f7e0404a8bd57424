#include "console/DocRootCommands.h"

#include "console/Confirm.h"
#include "console/Opened.h"
#include "console/Render.h"
#include "console/Words.h"
#include "management/DatabaseError.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/documents/Documents.h"
#include "management/users/Users.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <iterator>

namespace console::docroot {

namespace {

using namespace words;

constexpr std::string_view kIdPrefix = "id:";
constexpr const char* kOwnerHelp = "login name of the user whom it belongs to, or id:NUMBER; '' for nobody";

constexpr Field kRoot{"ROOT", "", {}, Field::Use::given, "name of a document root as it is, or id:NUMBER"};
constexpr Field kNewRoot{"NAME", "", {}, Field::Use::given, "name of the new document root"};
constexpr Field kNewName{"name", "", {}, Field::Use::given, "name to have from now on"};
constexpr Field kPath{"path", "", {}, Field::Use::given, "where the server keeps its files"};
constexpr Field kListedType{"type", "", {}, Field::Use::given, "only those of this type"};
constexpr Field kMeantType{
    "type", "", {}, Field::Use::given, "type of the one that is meant, where several share a name"};
constexpr Field kType{"type", "", {}, Field::Use::given, "type number; 1 is that of the company, 0 if not given"};
constexpr Field kNewType{"new_type", "", {}, Field::Use::given, "type number to have from now on"};
constexpr Field kDisplayName{"display_name", "", {}, Field::Use::given, "name to be shown"};
constexpr Field kMaxSize{"max_size", "", {}, Field::Use::given, "number up to which it may grow, as the server counts"};
constexpr Field kOwner{"owner", "", {}, Field::Use::given, kOwnerHelp};
constexpr Field kStyleBits{"style", "", {}, Field::Use::given, "style bits, from 0 to 4294967295"};
constexpr Field kRecursive{
    "recursive", "", {}, Field::Use::given, "delete the folders too that would hang in no other document root"};

// ---- What the words mean --------------------------------------------------------------------------------------------

void DeclareBits(CLI::App& app, Arguments& arguments, const Field& field)
{
    const auto take = [&arguments, &field](std::uint32_t bits) { arguments.fields[&field] = std::to_string(bits); };
    app.add_option_function<std::uint32_t>(OptionOf(field), take, std::string(field.help))->type_name("N");
}

void DeclareColumns(CLI::App& app, Arguments& arguments)
{
    DeclareOption(app, arguments, kDescription);
    DeclareOption(app, arguments, kDisplayName);
    DeclareNumber(app, arguments, kMaxSize);
    DeclareOption(app, arguments, kOwner);
    DeclareBits(app, arguments, kStyleBits);
}

std::string Named(const RootData& root) { return fmt::format("{} (root {})", Visible(root.name), root.id); }

std::string NamedWithType(const RootData& root)
{
    return fmt::format("{} (root {}, type {})", Visible(root.name), root.id, root.type);
}

std::optional<int> IdIn(const std::string& argument)
{
    if (!argument.starts_with(kIdPrefix)) {
        return std::nullopt;
    }
    int id = 0;
    const char* end = argument.data() + argument.size();
    const auto read = std::from_chars(argument.data() + kIdPrefix.size(), end, id);
    if (read.ec != std::errc() || read.ptr != end) {
        throw Error(ErrorCode::invalid,
                    fmt::format("{} is no id of a document root; write id: and a number", Quoted(argument)));
    }
    return id;
}

/// All roots that an argument may mean.
std::vector<RootData> FindAll(Documents& documents, const std::string& argument, std::optional<int> type)
{
    const std::optional<int> id = IdIn(argument);
    std::vector<RootData> found = documents.Roots(type);
    if (id) {
        std::erase_if(found, [&](const RootData& root) { return root.id != *id; });
    } else {
        KeepNamed(found, argument, &RootData::name);
    }
    return found;
}

RootData FindGiven(Documents& documents, const Arguments& arguments)
{
    const std::string argument = Given(arguments, kRoot).value_or("");
    const std::vector<RootData> found = FindAll(documents, argument, GivenNumber(arguments, kMeantType));
    if (found.empty()) {
        throw Error(ErrorCode::notFound,
                    fmt::format("there is no document root {}; `qvadmin docroot list` shows all", Quoted(argument)));
    }
    if (found.size() > 1) {
        std::string list;
        for (const RootData& root : found) {
            list += (list.empty() ? "" : ", ") + NamedWithType(root);
        }
        throw Error(ErrorCode::conflict, fmt::format("{} may be any of {}; write id:{} for the first of them",
                                                     Quoted(argument), list, found.front().id));
    }
    return found.front();
}

/// @param root  with id 0 when it is new.
void RefuseTaken(Documents& documents, const RootData& root)
{
    const auto isOther = [&](const RootData& other) { return SameName(other.name, root.name) && other.id != root.id; };
    if (std::ranges::any_of(documents.Roots(root.type), isOther)) {
        throw Error(ErrorCode::conflict,
                    fmt::format("the name {} is taken by a document root of type {}", Quoted(root.name), root.type));
    }
    const std::string others = fmt::format("Col_Type = {} AND Col_ID <> {}", root.type, root.id);
    if (const auto other = FindConfused(documents.Connection(), "Tab_Doc_Root", root.name, others)) {
        ThrowConfused("name", root.name, *other);
    }
}

int OwnerOf(Directory& directory, const std::string& argument)
{
    return argument.empty() ? 0 : FindUser(directory, argument).id;
}

void CheckPath(const std::string& path)
{
    if (path.empty()) {
        throw Error(ErrorCode::invalid, "the path is empty");
    }
}

/// The columns that were given, but name and type.
RootChanges ColumnsGiven(const Arguments& arguments, Directory& directory)
{
    RootChanges changes;
    changes.description = Given(arguments, kDescription);
    changes.displayName = Given(arguments, kDisplayName);
    changes.maxSize = GivenNumber(arguments, kMaxSize);
    if (const std::optional<std::string> path = Given(arguments, kPath)) {
        CheckPath(*path);
        changes.path = path;
    }
    if (const std::optional<std::string> owner = Given(arguments, kOwner)) {
        changes.ownerId = OwnerOf(directory, *owner);
    }
    if (const std::optional<std::string> bits = Given(arguments, kStyleBits)) {
        changes.style = std::stoul(*bits);
    }
    return changes;
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

// ---- What a deletion takes along ------------------------------------------------------------------------------------

struct Going {
    std::vector<DocKey> keys; ///< the root is the first
    std::size_t links = 0;
    std::size_t left = 0; ///< folders that stay and will hang in no root

    bool operator==(const Going&) const = default;
};

Going WhatGoes(const FolderTree& catalogue, DocKey root, bool isRecursive)
{
    Going going{catalogue.GoneWith(root), 0, 0};
    if (!isRecursive) {
        going.left = going.keys.size() - 1;
        going.keys = {root};
    }
    going.links = catalogue.CountLinks(going.keys);
    return going;
}

std::string Described(const RootData& root, const Going& going)
{
    const std::size_t folders = going.keys.size() - 1;
    return Named(root) + (folders == 0 ? "" : " and " + Counted(folders, "folder"));
}

std::string Told(const RootData& root, const Going& going)
{
    std::string text = fmt::format("delete {}{}\n", Described(root, going),
                                   going.links == 0 ? "" : ", with " + Counted(going.links, "link"));
    if (going.left > 0) {
        text += fmt::format("{} will hang in no document root; --recursive deletes these too\n",
                            Counted(going.left, "folder"));
    }
    return text;
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareList(CLI::App& app, Arguments& arguments) { DeclareNumber(app, arguments, kListedType); }

void DeclareOne(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kRoot);
    DeclareNumber(app, arguments, kMeantType);
}

void DeclareCreate(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kNewRoot);
    const auto take = [&arguments](const std::string& path) { arguments.fields[&kPath] = path; };
    app.add_option_function<std::string>(OptionOf(kPath), take, std::string(kPath.help))->required()->type_name("PATH");
    DeclareNumber(app, arguments, kType);
    DeclareColumns(app, arguments);
}

void DeclareSet(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareOption(app, arguments, kNewName);
    DeclareNumber(app, arguments, kNewType);
    DeclareOption(app, arguments, kPath);
    DeclareColumns(app, arguments);
}

void DeclareDelete(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareFlag(app, arguments, kRecursive);
    DeclareYes(app, arguments);
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Exit List(const Context& context)
{
    Opened opened(context.arguments);
    Documents documents(opened.Directory().Connection());
    Table table{{"id", "name", "type", "path", "display_name", "created"}, {}};
    for (const RootData& root : documents.Roots(GivenNumber(context.arguments, kListedType))) {
        table.rows.push_back({std::int64_t{root.id}, root.name, std::int64_t{root.type}, root.path, root.displayName,
                              root.created ? Value(*root.created) : Value()});
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

Exit Show(const Context& context)
{
    Opened opened(context.arguments);
    Documents documents(opened.Directory().Connection());
    const RootData root = FindGiven(documents, context.arguments);
    const Record record = {
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
        {"owner", ShownOwner(opened.Directory(), root.ownerId)},
        {"created", root.created ? Value(*root.created) : Value()},
        {"has_sub_items", root.hasSubItems},
        {"links", std::int64_t{documents.CountRootLinks(root.id)}},
    };
    Render(context.arguments.format, record, context.terminal.out);
    return Exit::done;
}

Exit Default(const Context& context)
{
    Opened opened(context.arguments);
    const bool isThere = Documents(opened.Directory().Connection()).HasCompanyRoot();
    context.terminal.out << (isThere ? "true\n" : "false\n");
    return isThere ? Exit::done : Exit::notFound;
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Exit Create(const Context& context)
{
    const Arguments& arguments = context.arguments;
    RootData root;
    root.name = Given(arguments, kNewRoot).value_or("");
    root.type = GivenNumber(arguments, kType).value_or(0);
    CheckNewName("document root", root.name);
    Opened opened(arguments);
    Transaction transaction(opened.Directory().Connection());
    Documents documents(opened.Directory().Connection());
    root = With(root, ColumnsGiven(arguments, opened.Directory()));
    RefuseTaken(documents, root);
    const int id = documents.CreateRoot(root);
    transaction.Commit();
    context.terminal.out << id << '\n';
    return Exit::done;
}

Exit Set(const Context& context)
{
    const Arguments& arguments = context.arguments;
    const Field* const settable[] = {&kNewName,     &kNewType, &kPath,  &kDescription,
                                     &kDisplayName, &kMaxSize, &kOwner, &kStyleBits};
    if (std::ranges::none_of(settable, [&](const Field* field) { return arguments.fields.contains(field); })) {
        throw Error(ErrorCode::invalid, "there is nothing to set; `qvadmin docroot set --help` lists what can be");
    }
    Opened opened(arguments);
    Transaction transaction(opened.Directory().Connection());
    Documents documents(opened.Directory().Connection());
    const RootData stored = FindGiven(documents, arguments);
    RootChanges changes = ColumnsGiven(arguments, opened.Directory());
    changes.name = Given(arguments, kNewName);
    changes.type = GivenNumber(arguments, kNewType);
    const RootData root = With(stored, changes);
    if (root.name != stored.name) {
        CheckNewName("document root", root.name);
    }
    if (root.name != stored.name || root.type != stored.type) {
        RefuseTaken(documents, root);
    }
    const bool changed = root != stored;
    if (changed) {
        documents.ChangeRoot(stored.id, changes);
    }
    transaction.Commit();
    context.terminal.err << fmt::format("{} {}\n", changed ? "changed" : "nothing to change in", Named(stored));
    return Exit::done;
}

Exit Delete(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Documents documents(conn);
    const RootData root = FindGiven(documents, context.arguments);
    const DocKey key{DocKind::root, root.id};
    const bool isRecursive = Given(context.arguments, kRecursive).has_value();
    const Going told = WhatGoes(FolderTree(conn), key, isRecursive);
    context.terminal.err << Told(root, told);
    RequireConfirmation(context, fmt::format("Delete {}?", Described(root, told)), told.keys.size() + told.links);
    Transaction transaction(conn);
    const RootData present = FindGiven(documents, context.arguments);
    ThrowIfChanged(Told(root, told), Told(present, told));
    ThrowIfChanged(told, WhatGoes(FolderTree(conn), key, isRecursive));
    documents.Delete(told.keys);
    transaction.Commit();
    context.terminal.err << fmt::format("deleted {}\n", Described(root, told));
    return Exit::done;
}

} // namespace console::docroot
