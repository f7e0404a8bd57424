#include "console/ObjectRightCommands.h"

#include "basefun/ItemTypes.h"
#include "console/Confirm.h"
#include "console/Opened.h"
#include "console/Render.h"
#include "console/Words.h"
#include "management/DatabaseError.h"
#include "management/FindEach.h"
#include "management/Items.h"
#include "management/Text.h"
#include "management/rights/ObjectRights.h"
#include "management/rights/PermissionMask.h"
#include "management/users/Users.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>

namespace console::objright {

namespace {

using namespace words;

constexpr const char* kIdHelp = "number of the right, as `objright list` shows it";

constexpr Field kItem{"ITEM", "", {}, Field::Use::given, kItemHelp};
constexpr Field kClass{"CLASS", "", {}, Field::Use::given, "number of the kind of object"};
constexpr Field kObject{"OBJECT", "", {}, Field::Use::given, "number of the object within its kind"};
constexpr Field kGenre{"GENRE", "", {}, Field::Use::given, "genre of the function, as it is"};
constexpr Field kFunction{"FUNCTION", "", {}, Field::Use::given, "name of the function, as it is"};
constexpr Field kPower{"POWER", "", {}, Field::Use::given, kPowerHelp};
constexpr Field kUnpower{"unpower", "", {}, Field::Use::given, "second power, stored beside the first; 0 if not given"};
constexpr Field kNewUnpower{"unpower", "", {}, Field::Use::given, "second power; stays as it is if not given"};
constexpr Field kBy{"by", "", {}, Field::Use::given, "login name of the user who is noted as the one who granted it"};
constexpr Field kId{"ID", "", {}, Field::Use::given, kIdHelp};

// ---- What the words mean --------------------------------------------------------------------------------------------

void DeclarePower(CLI::App& app, Arguments& arguments, const Field& field)
{
    const auto take = [&arguments, &field](const std::string& text) { arguments.fields[&field] = text; };
    app.add_option_function<std::string>(OptionOf(field), take, std::string(field.help))->type_name("POWER");
}

int NumberFrom(const std::string& text, std::string_view what)
{
    int number = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end) {
        throw Error(ErrorCode::invalid, fmt::format("{} {} is no whole number of 32 bits", what, Quoted(text)));
    }
    return number;
}

int NumberGiven(const Arguments& arguments, const Field& field)
{
    return NumberFrom(Given(arguments, field).value_or(""), field.name);
}

std::optional<int> PowerGiven(const Arguments& arguments, const Field& field)
{
    const std::optional<std::string> given = Given(arguments, field);
    return given ? std::optional(PowerFrom(*given)) : std::nullopt;
}

ObjectKey ObjectGiven(const Arguments& arguments)
{
    return {NumberGiven(arguments, kClass), NumberGiven(arguments, kObject)};
}

/// All but the holder, which is looked up in the database.
ObjectRightKey KeyGiven(const Arguments& arguments)
{
    return {
        {}, ObjectGiven(arguments), Given(arguments, kGenre).value_or(""), Given(arguments, kFunction).value_or("")};
}

Item FindHolder(CAConnect& conn, const Arguments& arguments)
{
    return FindItem(conn, Given(arguments, kItem).value_or(""));
}

ObjectRight FindRight(ObjectRights& rights, int id)
{
    const std::optional<ObjectRight> right = rights.Load(id);
    if (!right) {
        throw Error(ErrorCode::notFound,
                    fmt::format("there is no right on an object with id {}; `qvadmin objright list` "
                                "shows those on one object",
                                id));
    }
    return *right;
}

/// The name under which people know an item, not the one that leads to it.
std::string DisplayName(Directory& directory, const Item& item)
{
    if (item.key.type == kItemTypeUser) {
        return directory.NameOfId(item.key.id);
    }
    if (item.key.type == kItemTypeGroup) {
        const Organisation organisation(directory.Connection());
        return organisation.Find(item.key)->name;
    }
    return item.name;
}

void NoteCreator(Directory& directory, const Arguments& arguments, ObjectRight& right)
{
    if (const std::optional<std::string> login = Given(arguments, kBy)) {
        right.creatorId = FindUser(directory, *login).id;
        right.creator = directory.NameOfId(right.creatorId);
    }
}

// ---- Outputs --------------------------------------------------------------------------------------------------------

Value ShownType(int type)
{
    constexpr std::array<std::string_view, 4> kTypes = {"user", "group", "role", "view"};
    const bool isKnown = type >= kItemTypeUser && type <= kItemTypeView;
    return isKnown ? Value(Choice{type, kTypes[static_cast<std::size_t>(type - kItemTypeUser)]})
                   : Value(std::int64_t{type});
}

Value ShownCreated(const ObjectRight& right) { return right.created ? Value(*right.created) : Value(); }

Table AsTable(const std::vector<ObjectRight>& rights)
{
    Table table{
        {"id", "holder_type", "holder_id", "holder", "genre", "function", "power", "unpower", "creator", "created"},
        {}};
    for (const ObjectRight& right : rights) {
        table.rows.push_back({std::int64_t{right.id}, ShownType(right.key.holder.type),
                              std::int64_t{right.key.holder.id}, right.holderName, right.key.genre, right.key.function,
                              std::int64_t{right.power}, std::int64_t{right.unpower}, right.creator,
                              ShownCreated(right)});
    }
    return table;
}

Record AsRecord(const ObjectRight& right)
{
    return {
        {"id", std::int64_t{right.id}},
        {"class_id", std::int64_t{right.key.object.classId}},
        {"object_id", std::int64_t{right.key.object.id}},
        {"holder_type", ShownType(right.key.holder.type)},
        {"holder_id", std::int64_t{right.key.holder.id}},
        {"holder", right.holderName},
        {"genre", right.key.genre},
        {"function", right.key.function},
        {"power", std::int64_t{right.power}},
        {"unpower", std::int64_t{right.unpower}},
        {"creator_id", std::int64_t{right.creatorId}},
        {"creator", right.creator},
        {"created", ShownCreated(right)},
    };
}

/// "the right 'docs' 'read' of user amy (id 1) on object 7 of class 3".
std::string Named(const ObjectRightKey& key, const Item& holder)
{
    return fmt::format("the right {} {} of {} on object {} of class {}", Quoted(key.genre), Quoted(key.function),
                       console::Named(holder), key.object.id, key.object.classId);
}

/// "right 5, which is the right 'docs' 'read' of ...".
std::string Named(NameCache& namer, const ObjectRight& right)
{
    return fmt::format("right {}, {}", right.id, Named(right.key, namer.Find(right.key.holder)));
}

struct Revocation {
    std::vector<int> ids;
    std::string shown;
};

Revocation PlanRevocation(ObjectRights& rights, const Arguments& arguments)
{
    NameCache namer(rights.Connection());
    const auto find = [&rights](const std::string& word) { return FindRight(rights, NumberFrom(word, kId.name)); };
    Revocation revocation;
    for (const ObjectRight& right : FindEach(
             arguments.users, "rights on objects with these ids:", "`qvadmin objright list` shows those on one object",
             find, &ObjectRight::id)) {
        revocation.ids.push_back(right.id);
        revocation.shown += fmt::format("revoke {}\n", Named(namer, right));
    }
    return revocation;
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareList(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kClass);
    DeclareArgument(app, arguments, kObject);
    DeclareArgument(app, arguments, kFunction, false);
}

void DeclareOne(CLI::App& app, Arguments& arguments) { DeclareArgument(app, arguments, kId); }

void DeclareCheck(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kItem);
    DeclareArgument(app, arguments, kClass);
    DeclareArgument(app, arguments, kObject);
    DeclareArgument(app, arguments, kGenre);
    DeclareArgument(app, arguments, kFunction);
}

void DeclareGrant(CLI::App& app, Arguments& arguments)
{
    DeclareCheck(app, arguments);
    DeclareArgument(app, arguments, kPower);
    DeclarePower(app, arguments, kUnpower);
    DeclareOption(app, arguments, kBy);
}

void DeclareSet(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareArgument(app, arguments, kPower);
    DeclarePower(app, arguments, kNewUnpower);
}

void DeclareRevoke(CLI::App& app, Arguments& arguments)
{
    DeclareWords(app, arguments, "ID", kIdHelp);
    DeclareYes(app, arguments);
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Exit List(const Context& context)
{
    const ObjectKey object = ObjectGiven(context.arguments);
    Opened opened(context.arguments);
    ObjectRights rights(opened.Directory().Connection());
    const std::optional<std::string> function = Given(context.arguments, kFunction);
    Render(context.arguments.format, AsTable(function ? rights.On(object, *function) : rights.On(object)),
           context.terminal.out);
    return Exit::done;
}

Exit Show(const Context& context)
{
    const int id = NumberGiven(context.arguments, kId);
    Opened opened(context.arguments);
    ObjectRights rights(opened.Directory().Connection());
    Render(context.arguments.format, AsRecord(FindRight(rights, id)), context.terminal.out);
    return Exit::done;
}

Exit Check(const Context& context)
{
    ObjectRightKey key = KeyGiven(context.arguments);
    Opened opened(context.arguments);
    ObjectRights rights(opened.Directory().Connection());
    key.holder = FindHolder(rights.Connection(), context.arguments).key;
    const bool exists = rights.Find(key).has_value();
    context.terminal.out << (exists ? "true\n" : "false\n");
    return exists ? Exit::done : Exit::notFound;
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Exit Grant(const Context& context)
{
    ObjectRight right;
    right.key = KeyGiven(context.arguments);
    right.power = PowerGiven(context.arguments, kPower).value_or(0);
    right.unpower = PowerGiven(context.arguments, kUnpower).value_or(0);
    CheckName("genre", right.key.genre);
    CheckName("function", right.key.function);
    Opened opened(context.arguments);
    Directory& directory = opened.Directory();
    Transaction transaction(directory.Connection());
    ObjectRights rights(directory.Connection());
    const Item holder = FindHolder(rights.Connection(), context.arguments);
    right.key.holder = holder.key;
    right.holderName = DisplayName(directory, holder);
    NoteCreator(directory, context.arguments, right);
    if (const std::optional<int> present = rights.Find(right.key)) {
        throw Error(ErrorCode::conflict, fmt::format("{} is there already; `qvadmin objright set {}` changes its power",
                                                     Named(right.key, holder), *present));
    }
    const int id = rights.Grant(right);
    transaction.Commit();
    context.terminal.out << id << '\n';
    return Exit::done;
}

Exit Set(const Context& context)
{
    const int id = NumberGiven(context.arguments, kId);
    const int power = PowerGiven(context.arguments, kPower).value_or(0);
    const std::optional<int> unpower = PowerGiven(context.arguments, kNewUnpower);
    Opened opened(context.arguments);
    Transaction transaction(opened.Directory().Connection());
    ObjectRights rights(opened.Directory().Connection());
    NameCache namer(rights.Connection());
    const ObjectRight right = FindRight(rights, id);
    const std::string name = Named(namer, right);
    rights.Set(id, power, unpower);
    transaction.Commit();
    context.terminal.err << fmt::format("{}, has power {} now\n", name, power);
    return Exit::done;
}

Exit Revoke(const Context& context)
{
    for (const std::string& word : context.arguments.users) {
        NumberFrom(word, kId.name);
    }
    Opened opened(context.arguments);
    ObjectRights rights(opened.Directory().Connection());
    const auto [ids, shown] = PlanRevocation(rights, context.arguments);
    context.terminal.err << shown;
    RequireConfirmation(context, fmt::format("Revoke {}?", Counted(ids.size(), "right")), ids.size());
    Transaction transaction(rights.Connection());
    ThrowIfChanged(shown, PlanRevocation(rights, context.arguments).shown, "nothing was revoked");
    for (const int id : ids) {
        rights.Revoke(id);
    }
    transaction.Commit();
    context.terminal.err << fmt::format("revoked {}\n", Counted(ids.size(), "right"));
    return Exit::done;
}

} // namespace console::objright
