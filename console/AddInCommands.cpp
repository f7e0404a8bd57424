#include "console/AddInCommands.h"

#include "console/Confirm.h"
#include "console/JsonWriter.h"
#include "console/Opened.h"
#include "console/TextFile.h"
#include "console/Words.h"
#include "management/DatabaseError.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/addins/AddIns.h"
#include "management/messages/Messages.h"
#include "management/organisation/Organisation.h"
#include "platform/COleDateTime.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <iterator>

namespace console {

void Render(Format format, const Record& record, const std::vector<Part>& parts, std::ostream& out)
{
    if (format == Format::json || format == Format::jsonl) {
        JsonWriter json(out, format == Format::json ? JsonWriter::Layout::indented : JsonWriter::Layout::line);
        json.BeginObject();
        json.WriteMembers(record);
        for (const Part& part : parts) {
            json.WriteName(part.name);
            json.BeginArray();
            for (const std::vector<Value>& row : part.rows.rows) {
                json.WriteRow(part.rows.columns, row);
            }
            json.End();
        }
        json.End();
        out << '\n';
        return;
    }
    Record counted = record;
    for (const Part& part : parts) {
        counted.emplace_back(part.name, static_cast<std::int64_t>(part.rows.rows.size()));
    }
    Render(format, counted, out);
    for (const Part& part : parts) {
        if (format == Format::table && !part.rows.rows.empty()) {
            out << '\n' << part.name << ":\n";
            Render(format, part.rows, out);
        }
    }
}

} // namespace console

namespace console::addin {

namespace {

using namespace words;

constexpr const char* kAddInHelp = "name, or id:NUMBER";

constexpr Field kAddIn{"ADDIN", "", {}, Field::Use::given, kAddInHelp};
constexpr Field kNewAddIn{"NAME", "", {}, Field::Use::given, "name of the new add-in"};
constexpr Field kNewName{"name", "", {}, Field::Use::given, "name to have from now on"};
constexpr Field kListedType{"type", "", {}, Field::Use::given, "only add-ins of this type"};
constexpr Field kType{"type", "", {}, Field::Use::given, "type of the add-in, where several types have the name"};
constexpr Field kNewType{"type", "", {}, Field::Use::given, "type of the add-in; needed"};
constexpr Field kListedPackage{"package", "", {}, Field::Use::given, "only add-ins of this package"};
constexpr Field kPackage{"package", "", {}, Field::Use::given, "name of the package that it belongs to"};
constexpr Field kData{"data", "", {}, Field::Use::given, "its data, any text"};
constexpr Field kDataFile{"data_file", "", {}, Field::Use::given, "a file with its data, taken as they are"};
constexpr Field kPublic{"public", "", {}, Field::Use::given, "it is public"};
constexpr Field kNotPublic{"no_public", "", {}, Field::Use::given, "it is not public"};
constexpr Field kIndex{"index", "", {}, Field::Use::given, "position; the highest comes first"};
constexpr Field kDirection{"WHERE", "", {}, Field::Use::given, "up, down or top"};

// ---- What was given -------------------------------------------------------------------------------------------------

AddIn FindGiven(AddIns& addIns, const Arguments& arguments)
{
    return FindAddIn(addIns, Given(arguments, kAddIn).value_or(""), GivenNumber(arguments, kType));
}

std::optional<std::string> DataGiven(const Arguments& arguments)
{
    const std::optional<std::string> data = Given(arguments, kData);
    const std::optional<std::string> file = Given(arguments, kDataFile);
    if (data && file) {
        throw Error(ErrorCode::invalid, "--data and --data-file are two answers to one question");
    }
    return file ? ReadTextFile(*file) : data;
}

std::optional<bool> PublicGiven(const Arguments& arguments)
{
    const bool isPublic = Given(arguments, kPublic).has_value();
    const bool isNot = Given(arguments, kNotPublic).has_value();
    if (isPublic && isNot) {
        throw Error(ErrorCode::invalid, "--public and --no-public contradict each other");
    }
    return isPublic || isNot ? std::optional(isPublic) : std::nullopt;
}

console::Move MoveGiven(const Arguments& arguments)
{
    const std::string word = Given(arguments, kDirection).value_or("");
    if (word == "up") {
        return console::Move::up;
    }
    if (word == "down") {
        return console::Move::down;
    }
    if (word == "top") {
        return console::Move::top;
    }
    throw Error(ErrorCode::invalid, fmt::format("{} is no direction; there are up, down and top", Quoted(word)));
}

void DeclareData(CLI::App& app, Arguments& arguments)
{
    DeclareOption(app, arguments, kData);
    DeclareOption(app, arguments, kDataFile);
    DeclareFlag(app, arguments, kPublic);
    DeclareOption(app, arguments, kDescription);
    DeclareOption(app, arguments, kPackage);
    DeclareNumber(app, arguments, kIndex);
}

struct Deletion {
    std::vector<AddIn> addIns;
    std::string shown;
};

Deletion PlanDeletion(AddIns& addIns, const Arguments& arguments)
{
    Deletion deletion{FindAddIns(addIns, arguments.users, GivenNumber(arguments, kType)), {}};
    for (const AddIn& addIn : deletion.addIns) {
        deletion.shown += fmt::format("delete {} of type {}\n", Named(addIn), addIn.type);
    }
    return deletion;
}

Exit SetEnabled(const Context& context, bool enabled)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    AddIns addIns(conn);
    Transaction transaction(conn);
    const std::string_view word = enabled ? "enabled" : "disabled";
    std::string told;
    for (const AddIn& addIn : FindAddIns(addIns, context.arguments.users, GivenNumber(context.arguments, kType))) {
        addIns.Enable(addIn.id, enabled);
        told += addIn.isDisabled == enabled ? fmt::format("{} {}\n", word, Named(addIn))
                                            : fmt::format("{} was {} already\n", Named(addIn), word);
    }
    transaction.Commit();
    context.terminal.err << told;
    return Exit::done;
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareList(CLI::App& app, Arguments& arguments)
{
    DeclareOption(app, arguments, kListedPackage);
    DeclareNumber(app, arguments, kListedType);
}

void DeclareOne(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kAddIn);
    DeclareNumber(app, arguments, kType);
}

void DeclareSeveral(CLI::App& app, Arguments& arguments)
{
    DeclareWords(app, arguments, "ADDIN", kAddInHelp);
    DeclareNumber(app, arguments, kType);
}

void DeclareCreate(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kNewAddIn);
    DeclareNumber(app, arguments, kNewType);
    DeclareData(app, arguments);
}

void DeclareSet(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareOption(app, arguments, kNewName);
    DeclareData(app, arguments);
    DeclareFlag(app, arguments, kNotPublic);
}

void DeclareMove(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareArgument(app, arguments, kDirection);
}

void DeclareDelete(CLI::App& app, Arguments& arguments)
{
    DeclareSeveral(app, arguments);
    DeclareYes(app, arguments);
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Exit List(const Context& context)
{
    Opened opened(context.arguments);
    AddIns addIns(opened.Directory().Connection());
    AddInFilter filter{Given(context.arguments, kListedPackage), GivenNumber(context.arguments, kListedType)};
    if (filter.package) {
        const std::vector<Package> packages = Packages(opened.Directory().Connection()).FindAll(*filter.package);
        filter.package = packages.empty() ? filter.package : packages.front().name;
    }
    Table table{{"id", "type", "name", "public", "disabled", "description", "package", "index"}, {}};
    for (const AddIn& addIn : addIns.List(filter)) {
        table.rows.push_back({std::int64_t{addIn.id}, std::int64_t{addIn.type}, addIn.name, addIn.isPublic,
                              addIn.isDisabled, addIn.description, addIn.package, std::int64_t{addIn.index}});
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

Exit Show(const Context& context)
{
    Opened opened(context.arguments);
    AddIns addIns(opened.Directory().Connection());
    const AddIn addIn = FindGiven(addIns, context.arguments);
    const Record record = {
        {"id", std::int64_t{addIn.id}}, {"type", std::int64_t{addIn.type}},   {"name", addIn.name},
        {"public", addIn.isPublic},     {"disabled", addIn.isDisabled},       {"description", addIn.description},
        {"package", addIn.package},     {"index", std::int64_t{addIn.index}}, {"data", addIns.Data(addIn.id)}};
    Render(context.arguments.format, record, context.terminal.out);
    return Exit::done;
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Exit Create(const Context& context)
{
    const Arguments& arguments = context.arguments;
    const std::optional<int> type = GivenNumber(arguments, kNewType);
    if (!type) {
        throw Error(ErrorCode::invalid, "say with --type of which type the add-in is");
    }
    NewAddIn addIn;
    addIn.name = Given(arguments, kNewAddIn).value_or("");
    addIn.type = *type;
    addIn.data = DataGiven(arguments).value_or("");
    addIn.isPublic = Given(arguments, kPublic).has_value();
    addIn.description = Given(arguments, kDescription).value_or("");
    addIn.package = Given(arguments, kPackage).value_or("");
    addIn.index = GivenNumber(arguments, kIndex);
    CheckName("add-in", addIn.name);
    Opened opened(arguments);
    CAConnect& conn = opened.Directory().Connection();
    AddIns addIns(conn);
    Transaction transaction(conn);
    const int id = CreateAddIn(addIns, addIn);
    transaction.Commit();
    context.terminal.out << id << '\n';
    return Exit::done;
}

Exit Set(const Context& context)
{
    const Arguments& arguments = context.arguments;
    AddInChanges changes;
    changes.name = Given(arguments, kNewName);
    changes.data = DataGiven(arguments);
    changes.isPublic = PublicGiven(arguments);
    changes.description = Given(arguments, kDescription);
    changes.package = Given(arguments, kPackage);
    changes.index = GivenNumber(arguments, kIndex);
    if (changes == AddInChanges()) {
        throw Error(ErrorCode::invalid, "there is nothing to set; `qvadmin addin set --help` lists what can be");
    }
    Opened opened(arguments);
    CAConnect& conn = opened.Directory().Connection();
    AddIns addIns(conn);
    Transaction transaction(conn);
    const AddIn addIn = FindGiven(addIns, arguments);
    ChangeAddIn(addIns, addIn, changes);
    transaction.Commit();
    context.terminal.err << fmt::format("changed {}\n", Named(addIn));
    return Exit::done;
}

Exit Enable(const Context& context) { return SetEnabled(context, true); }

Exit Disable(const Context& context) { return SetEnabled(context, false); }

Exit Move(const Context& context)
{
    const console::Move move = MoveGiven(context.arguments);
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    AddIns addIns(conn);
    Transaction transaction(conn);
    const AddIn addIn = FindGiven(addIns, context.arguments);
    const bool moved = MoveAddIn(addIns, addIn, move);
    transaction.Commit();
    context.terminal.err << (moved ? fmt::format("moved {}\n", Named(addIn))
                                   : fmt::format("{} is at the {} already\n", Named(addIn),
                                                 move == console::Move::down ? "bottom" : "top"));
    return Exit::done;
}

Exit Delete(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    AddIns addIns(conn);
    const auto [several, shown] = PlanDeletion(addIns, context.arguments);
    context.terminal.err << shown;
    RequireConfirmation(context, fmt::format("Delete {}?", Counted(several.size(), "add-in")), several.size());
    Transaction transaction(conn);
    ThrowIfChanged(shown, PlanDeletion(addIns, context.arguments).shown);
    for (const AddIn& addIn : several) {
        addIns.Delete(addIn.id);
    }
    transaction.Commit();
    context.terminal.err << fmt::format("deleted {}\n", Counted(several.size(), "add-in"));
    return Exit::done;
}

} // namespace console::addin

namespace console::package {

namespace {

using namespace words;

constexpr Field kPackage{"NAME", "", {}, Field::Use::given, "name of the package, as it is"};
constexpr Field kVersion{"version", "", {}, Field::Use::given, "version number; needed"};
constexpr Field kModified{
    "modified", "", {}, Field::Use::given, "when it was made: YYYY-MM-DD or 'YYYY-MM-DD HH:MM:SS'; now if not given"};
constexpr Field kDowngrade{"downgrade", "", {}, Field::Use::given, "take a lower version than the installed one too"};

/// What `package install` was told.
struct Installation {
    std::string name;
    int version = 0;
    std::optional<std::string> description;
    std::string modified;
    bool mayDowngrade = false;
};

Installation InstallationGiven(const Arguments& arguments)
{
    const std::optional<int> version = GivenNumber(arguments, kVersion);
    if (!version) {
        throw Error(ErrorCode::invalid, "say with --version which version of the package it is");
    }
    const std::optional<std::string> modified = Given(arguments, kModified);
    return {Given(arguments, kPackage).value_or(""), *version, Given(arguments, kDescription),
            modified ? WholeDate(*modified)
                     : std::string(COleDateTime::GetCurrentTime().Format("%Y-%m-%d %H:%M:%S").View()),
            Given(arguments, kDowngrade).has_value()};
}

int Add(Packages& packages, const Installation& given)
{
    Package package;
    package.name = given.name;
    package.version = given.version;
    package.description = given.description.value_or("");
    package.modified = given.modified;
    return packages.Insert(package);
}

void Replace(Packages& packages, Package package, const Installation& given)
{
    if (given.version < package.version && !given.mayDowngrade) {
        throw Error(ErrorCode::conflict,
                    fmt::format("{} is installed in version {}, higher than {}; --downgrade goes back",
                                Visible(package.name), package.version, given.version));
    }
    package.version = given.version;
    package.description = given.description.value_or(package.description);
    package.modified = given.modified;
    packages.Update(package);
}

constexpr std::string_view kNothingRemoved = "nothing was removed";

/// The ids of what goes with a package.
struct Removal {
    std::string name; ///< as it is stored
    std::vector<int> packages;
    std::vector<int> addIns;

    bool operator==(const Removal&) const = default;
};

Removal PlanRemoval(CAConnect& conn, const std::string& given)
{
    Removal removal;
    const std::vector<Package> found = Packages(conn).FindAll(given);
    if (found.empty()) {
        throw Error(ErrorCode::notFound,
                    fmt::format("there is no package {}; `qvadmin package list` shows all", Quoted(given)));
    }
    removal.name = found.front().name;
    std::ranges::transform(found, std::back_inserter(removal.packages), &Package::id);
    std::ranges::transform(AddIns(conn).List({removal.name, {}}), std::back_inserter(removal.addIns), &AddIn::id);
    return removal;
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareOne(CLI::App& app, Arguments& arguments) { DeclareArgument(app, arguments, kPackage); }

void DeclareInstall(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareNumber(app, arguments, kVersion);
    DeclareOption(app, arguments, kDescription);
    DeclareOption(app, arguments, kModified);
    DeclareFlag(app, arguments, kDowngrade);
}

void DeclareRemove(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareYes(app, arguments);
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Exit List(const Context& context)
{
    Opened opened(context.arguments);
    Packages packages(opened.Directory().Connection());
    Table table{{"id", "name", "version", "description", "modified", "disabled"}, {}};
    for (const Package& package : packages.List()) {
        table.rows.push_back({std::int64_t{package.id}, package.name, std::int64_t{package.version},
                              package.description, package.modified ? Value(*package.modified) : Value(),
                              package.isDisabled});
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

Exit Show(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Packages packages(conn);
    const Package package = FindPackage(packages, Given(context.arguments, kPackage).value_or(""));
    const Record record = {{"id", std::int64_t{package.id}},
                           {"name", package.name},
                           {"version", std::int64_t{package.version}},
                           {"description", package.description},
                           {"modified", package.modified ? Value(*package.modified) : Value()},
                           {"disabled", package.isDisabled}};
    Part addIns{"add_ins", {{"id", "type", "name", "public", "disabled", "index"}, {}}};
    for (const AddIn& addIn : AddIns(conn).List({package.name, {}})) {
        addIns.rows.rows.push_back({std::int64_t{addIn.id}, std::int64_t{addIn.type}, addIn.name, addIn.isPublic,
                                    addIn.isDisabled, std::int64_t{addIn.index}});
    }
    Render(context.arguments.format, record, {addIns}, context.terminal.out);
    return Exit::done;
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Exit Install(const Context& context)
{
    const Installation given = InstallationGiven(context.arguments);
    CheckName("package", given.name);
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Packages packages(conn);
    Transaction transaction(conn);
    const bool isNew = packages.FindAll(given.name).empty();
    int id = 0;
    if (isNew) {
        if (const auto other = FindConfused(conn, "kel_Package", given.name)) {
            ThrowConfused("package name", given.name, *other);
        }
        id = Add(packages, given);
    } else {
        const Package present = FindPackage(packages, given.name);
        Replace(packages, present, given);
        id = present.id;
    }
    transaction.Commit();
    context.terminal.err << fmt::format("{} version {} of {}\n", isNew ? "installed" : "updated to", given.version,
                                        Visible(given.name));
    context.terminal.out << id << '\n';
    return Exit::done;
}

Exit Remove(const Context& context)
{
    const std::string given = Given(context.arguments, kPackage).value_or("");
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    const Removal removal = PlanRemoval(conn, given);
    const std::string& name = removal.name;
    const std::string what =
        fmt::format("{}{}, with {}", Visible(name),
                    removal.packages.size() > 1 ? fmt::format(" ({} packages)", removal.packages.size()) : "",
                    Counted(removal.addIns.size(), "add-in"));
    RequireConfirmation(context, fmt::format("Remove the package {}?", what),
                        removal.packages.size() + removal.addIns.size(), kNothingRemoved);
    Transaction transaction(conn);
    ThrowIfChanged(removal, PlanRemoval(conn, given), kNothingRemoved);
    AddIns(conn).DeleteOfPackage(name);
    for (const int package : removal.packages) {
        Packages(conn).Delete(package);
    }
    transaction.Commit();
    context.terminal.err << fmt::format("removed {}\n", what);
    return Exit::done;
}

} // namespace console::package
