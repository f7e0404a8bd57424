#include "console/FolderCommands.h"

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
#include <functional>
#include <limits>

namespace console::folder {

namespace {

using namespace words;

constexpr const char* kPlaceHelp = "/ROOT or /ROOT/FOLDER, or id:NUMBER of a folder, or root:NUMBER";

constexpr Field kFolder{"FOLDER", "", {}, Field::Use::given, "/ROOT/FOLDER, or id:NUMBER"};
constexpr Field kPlace{"PATH", "", {}, Field::Use::given, kPlaceHelp};
constexpr Field kTop{"ROOT", "", {}, Field::Use::given, "name of a document root; or a path, or id:NUMBER of a folder"};
constexpr Field kNewPath{"PATH", "", {}, Field::Use::given, "where to add it: path of the parent, / and the new name"};
constexpr Field kParent{"PARENT", "", {}, Field::Use::given, kPlaceHelp};
constexpr Field kFrom{"from", "", {}, Field::Use::given, "the parent to leave, when it does not follow from the path"};
constexpr Field kStyleBits{"style", "", {}, Field::Use::given, "style bits, from 0 to 4294967295"};
constexpr Field kNewStyle{"N", "", {}, Field::Use::given, "style bits to set, from 0 to 4294967295"};
constexpr Field kDepth{"depth", "", {}, Field::Use::given, "so many levels and no more"};
constexpr Field kParents{"parents", "", {}, Field::Use::given, "add the folders above that are missing too"};
constexpr Field kCreatorLogin{
    "creator", "", {}, Field::Use::given, "login name of the user who is noted as its creator"};
constexpr Field kRecursive{
    "recursive", "", {}, Field::Use::given, "delete the folders below too; other objects only lose their place"};

void TakeBits(Arguments& arguments, const Field& field, std::uint32_t bits)
{
    arguments.fields[&field] = std::to_string(bits);
}

std::optional<unsigned long> GivenBits(const Arguments& arguments, const Field& field)
{
    const std::optional<std::string> given = Given(arguments, field);
    return given ? std::optional(std::stoul(*given)) : std::nullopt;
}

// ---- The tree -------------------------------------------------------------------------------------------------------

/// Why what hangs below a folder is not drawn below it.
enum class Mark { none, cycle, above };

/// A line of the tree: a root or folder, or the heading of what hangs nowhere.
struct Line {
    std::string_view indent; ///< box characters, those of the last column apart
    std::string_view branch;
    std::size_t depth = 0;
    const DocPlace* place = nullptr;
    const DocPlace* parent = nullptr;
    Mark mark = Mark::none;
};

/// Gives the tree out line by line and keeps only the way to the present one. A folder that was drawn already is drawn
/// again without what hangs below it, so that neither cycles nor folders in several places make the tree endless.
class TreeDrawing {
public:
    using Sink = std::function<void(const Line&)>;

    TreeDrawing(const FolderTree& catalogue, std::size_t deepest, Sink sink)
        : m_places(catalogue.Places()),
          m_deepest(deepest),
          m_sink(std::move(sink)),
          m_state(m_places.size(), State::unseen)
    {
    }

    void Draw(std::size_t root)
    {
        Enter(root, nullptr, "");
        Finish();
    }

    void DrawNowhere(const std::vector<std::size_t>& tops)
    {
        m_sink({});
        m_steps.push_back({std::nullopt, tops});
        Finish();
    }

private:
    static constexpr std::string_view kBranch = "├── ";
    static constexpr std::string_view kLastBranch = "└── ";
    static constexpr std::string_view kLine = "│   ";
    static constexpr std::string_view kNoLine = "    ";

    enum class State : char { unseen, onWay, drawn };
    struct Step {
        std::optional<std::size_t> place; ///< none for the heading
        std::span<const std::size_t> children;
        std::size_t indent = 0; ///< length of its children's
        std::size_t next = 0;
    };

    void Finish()
    {
        while (!m_steps.empty()) {
            Step& step = m_steps.back();
            if (step.next == step.children.size()) {
                if (step.place) {
                    m_state[*step.place] = State::drawn;
                }
                m_steps.pop_back();
                continue;
            }
            m_indent.resize(step.indent);
            const std::size_t child = step.children[step.next++];
            const bool isLast = step.next == step.children.size();
            const DocPlace* parent = step.place ? &m_places[*step.place] : nullptr;
            Enter(child, parent, isLast ? kLastBranch : kBranch);
        }
        m_indent.clear();
    }

    void Enter(std::size_t index, const DocPlace* parent, std::string_view branch)
    {
        const DocPlace& place = m_places[index];
        const Mark mark = m_state[index] == State::onWay                              ? Mark::cycle
                          : m_state[index] == State::drawn && !place.children.empty() ? Mark::above
                                                                                      : Mark::none;
        const std::size_t depth = m_steps.size();
        m_sink({m_indent, branch, depth, &place, parent, mark});
        if (mark != Mark::none || depth >= m_deepest) {
            return;
        }
        m_indent += branch.empty() ? "" : branch == kLastBranch ? kNoLine : kLine;
        m_state[index] = State::onWay;
        m_steps.push_back({index, place.children, m_indent.size()});
    }

    std::span<const DocPlace> m_places;
    std::size_t m_deepest;
    Sink m_sink;
    std::vector<State> m_state;
    std::vector<Step> m_steps;
    std::string m_indent;
};

void DrawAll(const FolderTree& catalogue, TreeDrawing& drawing)
{
    std::vector<std::size_t> nowhere;
    const std::span<const DocPlace> places = catalogue.Places();
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (places[i].key.kind == DocKind::root) {
            drawing.Draw(i);
        } else if (!places[i].hangsInRoot && !places[i].via) {
            nowhere.push_back(i);
        }
    }
    if (!nowhere.empty()) {
        drawing.DrawNowhere(nowhere);
    }
}

void Draw(const FolderTree& catalogue, const Arguments& arguments, const TreeDrawing::Sink& sink)
{
    const std::optional<int> depth = GivenNumber(arguments, kDepth);
    TreeDrawing drawing(catalogue, depth ? static_cast<std::size_t>(*depth) : std::numeric_limits<std::size_t>::max(),
                        sink);
    const std::optional<std::string> top = Given(arguments, kTop);
    if (!top) {
        DrawAll(catalogue, drawing);
        return;
    }
    const bool isPath = top->starts_with('/') || top->starts_with("id:") || top->starts_with("root:");
    drawing.Draw(catalogue.NumberOf(isPath ? catalogue.FindPlace(*top) : catalogue.FindRoot(*top)));
}

std::string_view MarkText(Mark mark)
{
    return mark == Mark::cycle ? " [cycle: leads back to itself]" : mark == Mark::above ? " [shown above]" : "";
}

void Write(const Line& line, std::ostream& out)
{
    if (line.place == nullptr) {
        out << "In no document root:\n";
        return;
    }
    out << line.indent << line.branch
        << fmt::format("{} ({} {}){}\n", Visible(line.place->name),
                       line.place->key.kind == DocKind::root ? "root" : "id", line.place->key.id, MarkText(line.mark));
}

std::vector<Value> AsRow(const Line& line)
{
    const auto depth = static_cast<std::int64_t>(line.depth);
    if (line.place == nullptr) {
        return {depth, "nowhere", {}, "", {}, ""};
    }
    const char* mark = line.mark == Mark::cycle ? "cycle" : line.mark == Mark::above ? "above" : "";
    return {depth,
            line.place->key.kind == DocKind::root ? "root" : "folder",
            std::int64_t{line.place->key.id},
            line.place->name,
            line.parent == nullptr ? Value() : Value(std::int64_t{line.parent->key.id}),
            mark};
}

// ---- Others ---------------------------------------------------------------------------------------------------------

std::string Paths(const FolderTree& catalogue, const std::vector<DocKey>& keys)
{
    std::string text;
    for (const DocKey key : keys) {
        text += (text.empty() ? "" : ", ") + catalogue.PathOf(key);
    }
    return text;
}

DocKey FindGiven(const FolderTree& catalogue, const Arguments& arguments)
{
    return catalogue.FindFolder(Given(arguments, kFolder).value_or(""));
}

FolderData LoadFolder(Documents& documents, DocKey key)
{
    const std::optional<FolderData> folder = documents.LoadFolder(key.id);
    if (!folder) {
        throw Error(ErrorCode::notFound, fmt::format("the folder with id {} has just been deleted", key.id));
    }
    return *folder;
}

void RefuseTaken(const FolderTree& catalogue, Documents& documents, DocKey parent, const std::string& name,
                 std::optional<DocKey> except)
{
    for (const DocKey other : catalogue.ChildrenNamed(parent, name)) {
        if (other != except) {
            throw Error(ErrorCode::conflict,
                        fmt::format("the name {} is taken by {}", Quoted(name), catalogue.Named(other)));
        }
    }
    if (const auto other = documents.FindConfusedFolder(parent, name, except)) {
        ThrowConfused("name", name, *other);
    }
}

/// The parent of a new folder, and the names to add below it; without --parents only one.
struct NewPlace {
    DocKey parent;
    std::vector<std::string> names;
};

bool HasFolderName(const std::string& path)
{
    return path.starts_with('/') ? SplitPath(path).size() > 1 : path.find('/') != std::string::npos;
}

NewPlace FindNewPlace(const FolderTree& catalogue, const std::string& path, bool withParents)
{
    ParentAndName parts = SplitLastFolder(path);
    std::vector<std::string> names = {parts.name};
    while (withParents && HasFolderName(parts.parent) && catalogue.FindAll(parts.parent).empty()) {
        parts = SplitLastFolder(parts.parent);
        names.insert(names.begin(), parts.name);
    }
    return {catalogue.FindPlace(parts.parent), names};
}

/// What there is to tell of a new folder but its id; mostly nothing.
std::string ToldOf(const NewFolder& made)
{
    return made.removedLinks == 0 ? ""
                                  : fmt::format("removed {} to a folder deleted before, whose id {} the new one has\n",
                                                Counted(static_cast<std::size_t>(made.removedLinks), "link"), made.id);
}

/// What a deletion takes along.
struct Going {
    DocKey folder;
    std::string folderName; ///< with its id
    std::vector<DocKey> keys;
    std::size_t links = 0;

    bool operator==(const Going&) const = default;
};

Going WhatGoes(const FolderTree& catalogue, const Arguments& arguments)
{
    const DocKey folder = FindGiven(catalogue, arguments);
    const DocPlace& place = *catalogue.Find(folder);
    if (!Given(arguments, kRecursive) && (!place.children.empty() || place.others > 0)) {
        throw Error(ErrorCode::conflict,
                    fmt::format("{} holds {} and {}; add --recursive to delete it, and the folders, all the same",
                                catalogue.Named(folder), Counted(place.children.size(), "folder"),
                                Counted(static_cast<std::size_t>(place.others), "other object")));
    }
    Going going{folder, catalogue.Named(folder), catalogue.GoneWith(folder), 0};
    going.links = catalogue.CountLinks(going.keys);
    return going;
}

std::string Described(const Going& going)
{
    const std::size_t below = going.keys.size() - 1;
    return going.folderName + (below == 0 ? "" : " and " + Counted(below, "folder") + " below");
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareTree(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kTop, false);
    DeclareNumber(app, arguments, kDepth);
}

void DeclareList(CLI::App& app, Arguments& arguments) { DeclareArgument(app, arguments, kPlace); }

void DeclareOne(CLI::App& app, Arguments& arguments) { DeclareArgument(app, arguments, kFolder); }

void DeclareCreate(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kNewPath);
    app.add_option_function<std::uint32_t>(
           OptionOf(kStyleBits), [&arguments](std::uint32_t bits) { TakeBits(arguments, kStyleBits, bits); },
           std::string(kStyleBits.help))
        ->type_name("N");
    DeclareOption(app, arguments, kCreatorLogin);
    DeclareFlag(app, arguments, kParents);
}

void DeclareRename(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareArgument(app, arguments, kName);
}

void DeclareStyle(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    app.add_option_function<std::uint32_t>(
           std::string(kNewStyle.name), [&arguments](std::uint32_t bits) { TakeBits(arguments, kNewStyle, bits); },
           std::string(kNewStyle.help))
        ->type_name("");
}

void DeclareLink(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareArgument(app, arguments, kParent);
}

void DeclareUnlink(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareOption(app, arguments, kFrom);
    DeclareYes(app, arguments);
}

void DeclareDelete(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareFlag(app, arguments, kRecursive);
    DeclareYes(app, arguments);
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Exit Tree(const Context& context)
{
    const Arguments& arguments = context.arguments;
    if (GivenNumber(arguments, kDepth).value_or(0) < 0) {
        throw Error(ErrorCode::invalid, "--depth is below 0");
    }
    Opened opened(arguments);
    const FolderTree catalogue(opened.Directory().Connection());
    if (arguments.format == Format::table) {
        Draw(catalogue, arguments, [&](const Line& line) { Write(line, context.terminal.out); });
        return Exit::done;
    }
    Table table{{"depth", "type", "id", "name", "parent", "mark"}, {}};
    Draw(catalogue, arguments, [&table](const Line& line) { table.rows.push_back(AsRow(line)); });
    Render(arguments.format, table, context.terminal.out);
    return Exit::done;
}

Exit List(const Context& context)
{
    Opened opened(context.arguments);
    const FolderTree catalogue(opened.Directory().Connection());
    const DocKey parent = catalogue.FindPlace(Given(context.arguments, kPlace).value_or(""));
    Table table{{"id", "name", "path", "folders", "other_objects"}, {}};
    for (const std::size_t child : catalogue.Find(parent)->children) {
        const DocPlace& place = catalogue.Places()[child];
        table.rows.push_back({std::int64_t{place.key.id}, place.name, catalogue.PathOf(place.key),
                              static_cast<std::int64_t>(place.children.size()), std::int64_t{place.others}});
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

Exit Show(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    const FolderTree catalogue(conn);
    const DocKey key = FindGiven(catalogue, context.arguments);
    const DocPlace& place = *catalogue.Find(key);
    Documents documents(conn);
    const FolderData folder = LoadFolder(documents, key);
    const Record record = {
        {"id", std::int64_t{key.id}},
        {"name", folder.name},
        {"path", catalogue.PathOf(key)},
        {"parents", Paths(catalogue, catalogue.Keys(place.parents))},
        {"style", static_cast<std::int64_t>(folder.style)},
        {"created", folder.created ? Value(*folder.created) : Value()},
        {"creator_id", std::int64_t{folder.creatorId}},
        {"creator", folder.creator},
        {"folders", static_cast<std::int64_t>(place.children.size())},
        {"other_objects", std::int64_t{place.others}},
    };
    Render(context.arguments.format, record, context.terminal.out);
    return Exit::done;
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Exit Create(const Context& context)
{
    const Arguments& arguments = context.arguments;
    const std::string path = Given(arguments, kNewPath).value_or("");
    CheckNewName("folder", SplitLastFolder(path).name);
    Opened opened(arguments);
    CAConnect& conn = opened.Directory().Connection();
    Transaction transaction(conn);
    FolderData folder;
    if (const std::optional<std::string> login = Given(arguments, kCreatorLogin)) {
        folder.creatorId = FindUser(opened.Directory(), *login).id;
        folder.creator = opened.Directory().NameOfId(folder.creatorId);
    }
    const FolderTree catalogue(conn);
    Documents documents(conn);
    const NewPlace place = FindNewPlace(catalogue, path, Given(arguments, kParents).has_value());
    RefuseTaken(catalogue, documents, place.parent, place.names.front(), std::nullopt);
    DocKey added = place.parent;
    std::string told;
    for (const std::string& name : place.names) {
        CheckNewName("folder", name);
        folder.name = name;
        folder.style = &name == &place.names.back() ? GivenBits(arguments, kStyleBits).value_or(0) : 0;
        const NewFolder made = documents.CreateFolder(added, folder);
        added = {DocKind::folder, made.id};
        told += ToldOf(made);
    }
    transaction.Commit();
    context.terminal.err << told;
    context.terminal.out << added.id << '\n';
    return Exit::done;
}

Exit Rename(const Context& context)
{
    const std::string name = Given(context.arguments, kName).value_or("");
    CheckNewName("folder", name);
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Transaction transaction(conn);
    const FolderTree catalogue(conn);
    Documents documents(conn);
    const DocKey key = FindGiven(catalogue, context.arguments);
    const DocPlace& place = *catalogue.Find(key);
    for (const DocKey parent : catalogue.Keys(place.parents)) {
        RefuseTaken(catalogue, documents, parent, name, key);
    }
    documents.RenameFolder(key.id, place.name, name);
    transaction.Commit();
    context.terminal.err << fmt::format("renamed {} to {}\n", catalogue.Named(key), Visible(name));
    return Exit::done;
}

Exit Style(const Context& context)
{
    const std::optional<unsigned long> style = GivenBits(context.arguments, kNewStyle);
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Documents documents(conn);
    if (!style) {
        const DocKey key = FindGiven(FolderTree(conn), context.arguments);
        const auto present = static_cast<std::int64_t>(LoadFolder(documents, key).style);
        Render(context.arguments.format, Record{{"style", present}}, context.terminal.out);
        return Exit::done;
    }
    Transaction transaction(conn);
    const FolderTree catalogue(conn);
    const DocKey key = FindGiven(catalogue, context.arguments);
    documents.SetFolderStyle(key.id, LoadFolder(documents, key).style, *style);
    transaction.Commit();
    context.terminal.err << fmt::format("changed {}\n", catalogue.Named(key));
    return Exit::done;
}

Exit Link(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Transaction transaction(conn);
    const FolderTree catalogue(conn);
    Documents documents(conn);
    const Placement place{catalogue.FindPlace(Given(context.arguments, kParent).value_or("")),
                          FindGiven(catalogue, context.arguments)};
    const std::vector<DocKey> parents = catalogue.Keys(catalogue.Find(place.folder)->parents);
    if (std::ranges::find(parents, place.parent) != parents.end()) {
        throw Error(ErrorCode::conflict, fmt::format("{} is directly under {} already", catalogue.Named(place.folder),
                                                     catalogue.Named(place.parent)));
    }
    const std::vector<DocKey> cycle = catalogue.CycleClosedBy(place);
    if (!cycle.empty()) {
        throw Error(ErrorCode::conflict, fmt::format("{} cannot go there, it would hang below itself: {}",
                                                     catalogue.Named(place.folder), catalogue.CycleText(cycle)));
    }
    FolderData folder = LoadFolder(documents, place.folder);
    // Who made the folder need not have made the link.
    folder.creatorId = 0;
    folder.creator.clear();
    RefuseTaken(catalogue, documents, place.parent, folder.name, std::nullopt);
    documents.AddLink(place, folder);
    transaction.Commit();
    context.terminal.err << fmt::format("{} is now under {} too\n", catalogue.Named(place.folder),
                                        catalogue.Named(place.parent));
    return Exit::done;
}

constexpr std::string_view kNothingTaken = "nothing was changed";

Exit Unlink(const Context& context)
{
    const Arguments& arguments = context.arguments;
    Opened opened(arguments);
    CAConnect& conn = opened.Directory().Connection();
    const std::string path = Given(arguments, kFolder).value_or("");
    const FolderTree catalogue(conn);
    const Placement told = catalogue.FindPlacement(path, Given(arguments, kFrom));
    const std::string folder = catalogue.Named(told.folder);
    const std::string parent = catalogue.Named(told.parent);
    const bool staysInRoot = catalogue.HangsWithout(told);
    if (!staysInRoot) {
        context.terminal.err << fmt::format("{} would hang in no document root; `qvadmin folder delete` deletes it\n",
                                            folder);
        RequireConfirmation(context, fmt::format("Take {} from {} all the same?", folder, parent), 1, kNothingTaken);
    }
    Transaction transaction(conn);
    const FolderTree present(conn);
    const Placement place = present.FindPlacement(path, Given(arguments, kFrom));
    ThrowIfChanged(folder + parent, present.Named(place.folder) + present.Named(place.parent), kNothingTaken);
    ThrowIfChanged(staysInRoot, present.HangsWithout(place), kNothingTaken);
    Documents(conn).RemoveLink(place);
    transaction.Commit();
    context.terminal.err << fmt::format("{} is no longer under {}\n", folder, parent);
    return Exit::done;
}

Exit Delete(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    const FolderTree catalogue(conn);
    const Going told = WhatGoes(catalogue, context.arguments);
    const std::string described = Described(told);
    context.terminal.err << fmt::format("delete {}{}\n", described,
                                        told.links == 0 ? "" : ", with " + Counted(told.links, "link"));
    RequireConfirmation(context, fmt::format("Delete {}?", described), told.keys.size() + told.links);
    Transaction transaction(conn);
    ThrowIfChanged(told, WhatGoes(FolderTree(conn), context.arguments));
    Documents(conn).Delete(told.keys);
    transaction.Commit();
    context.terminal.err << fmt::format("deleted {}\n", Counted(told.keys.size(), "folder"));
    return Exit::done;
}

} // namespace console::folder
