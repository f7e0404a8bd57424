#include "console/RightCommands.h"

#include "basefun/ItemTypes.h"
#include "console/Confirm.h"
#include "console/Opened.h"
#include "console/Render.h"
#include "console/UserCommands.h"
#include "console/Words.h"
#include "management/DatabaseError.h"
#include "management/Items.h"
#include "management/Text.h"
#include "management/rights/PermissionMask.h"
#include "management/rights/Rights.h"
#include "management/roles/Roles.h"
#include "management/users/Users.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

namespace console::right {

namespace {

using namespace words;

constexpr int kPlainPower = 1;

constexpr Field kItem{"ITEM", "", {}, Field::Use::given, kItemHelp};
constexpr Field kHolder{"HOLDER", "", {}, Field::Use::given, "who has the right; an item, named as in `right list`"};
constexpr Field kOnItem{"ON_ITEM", "", {}, Field::Use::given, "on what; an item, named as in `right list`"};
constexpr Field kGenre{"GENRE", "", {}, Field::Use::given, "genre of the function"};
constexpr Field kFunction{"FUNCTION", "", {}, Field::Use::given, "name of the function"};
constexpr Field kPower{"POWER", "", {}, Field::Use::given, kPowerHelp};
constexpr Field kPowerOrOne{"POWER", "", {}, Field::Use::given, "as for `right grant`; 1 if not given"};
constexpr Field kUnpower{"unpower", "", {}, Field::Use::given, "second power, stored beside the first; 0 if not given"};
constexpr Field kNewUnpower{"unpower", "", {}, Field::Use::given, "second power; stays as it is if not given"};
constexpr Field kOfGenre{"genre", "", {}, Field::Use::given, "only functions of this genre"};
constexpr Field kAll{"all", "", {}, Field::Use::given, "every right of the item but those on other items; asks first"};
constexpr Field kAs{
    "as", "", {}, Field::Use::given, "holder: what the item may; dependent: what others may on it; both if not given"};

// ---- What the words mean --------------------------------------------------------------------------------------------

Function FunctionGiven(const Arguments& arguments)
{
    return {Given(arguments, kGenre).value_or(""), Given(arguments, kFunction).value_or("")};
}

/// The function of a right to be added. Those that are there already may be called anything.
Function NewFunctionGiven(const Arguments& arguments)
{
    Function function = FunctionGiven(arguments);
    CheckName("genre", function.genre);
    CheckName("function", function.name);
    return function;
}

std::optional<int> PowerGiven(const Arguments& arguments, const Field& field)
{
    const std::optional<std::string> given = Given(arguments, field);
    return given ? std::optional(PowerFrom(*given)) : std::nullopt;
}

Side SideGiven(const Arguments& arguments)
{
    const std::string side = Given(arguments, kAs).value_or("");
    if (side == "holder") {
        return Side::holder;
    }
    if (side == "dependent") {
        return Side::dependent;
    }
    if (Given(arguments, kAs)) {
        throw Error(ErrorCode::invalid, fmt::format("--as takes holder or dependent, not {}", Quoted(side)));
    }
    return Side::either;
}

Item FindGiven(CAConnect& conn, const Arguments& arguments, const Field& field)
{
    return FindItem(conn, Given(arguments, field).value_or(""));
}

// ---- Sentences ------------------------------------------------------------------------------------------------------

/// The right that a command is about.
struct Meant {
    Item holder;
    std::optional<Item> on; ///< none for a right of its own
    Function function;
};

std::string TextOf(const Function& function)
{
    return fmt::format("the right {} {}", Quoted(function.genre), Quoted(function.name));
}

/// "the right 'mail' 'send' on view Main (id 1)".
std::string TextOf(const Meant& meant) { return TextOf(meant.function) + (meant.on ? " on " + Named(*meant.on) : ""); }

[[noreturn]] void RefuseMissing(const Meant& meant)
{
    throw Error(ErrorCode::notFound,
                fmt::format("{} does not have {}; `qvadmin {}` shows what there is", Named(meant.holder), TextOf(meant),
                            meant.on ? "right on list" : "right list"));
}

[[noreturn]] void RefusePresent(const Meant& meant)
{
    throw Error(ErrorCode::conflict,
                fmt::format("{} has {} already; `qvadmin {}` changes its power", Named(meant.holder), TextOf(meant),
                            meant.on ? "right on set" : "right set"));
}

std::string ToldGranted(const Meant& meant, PermissionMask powers)
{
    return fmt::format("{} now has {}, power {}\n", Named(meant.holder), TextOf(meant), powers.power);
}

std::string ToldSet(const Meant& meant, int power, std::size_t rows)
{
    return fmt::format("{} has {} with power {} now, in {}\n", Named(meant.holder), TextOf(meant), power,
                       Counted(rows, "row"));
}

std::string ToldRevoked(const Meant& meant, std::size_t rows)
{
    return fmt::format("{} no longer has {}; deleted {}\n", Named(meant.holder), TextOf(meant), Counted(rows, "row"));
}

// ---- Rights of items ------------------------------------------------------------------------------------------------

Meant FindOwn(CAConnect& conn, const Arguments& arguments)
{
    return {FindGiven(conn, arguments, kItem), std::nullopt, FunctionGiven(arguments)};
}

void Print(const Context& context, const std::vector<ItemRight>& rights)
{
    Table table{{"genre", "function", "power", "unpower"}, {}};
    for (const ItemRight& right : rights) {
        table.rows.push_back({right.function.genre, right.function.name, std::int64_t{right.powers.power},
                              std::int64_t{right.powers.unpower}});
    }
    Render(context.arguments.format, table, context.terminal.out);
}

std::vector<ItemRight> FindRows(Rights& rights, const Meant& meant)
{
    std::vector<ItemRight> rows = rights.Find(meant.holder.key, meant.function);
    if (rows.empty()) {
        RefuseMissing(meant);
    }
    return rows;
}

void RevokeOne(const Context& context, Rights& rights)
{
    Transaction transaction(rights.Connection());
    const Meant meant = FindOwn(rights.Connection(), context.arguments);
    const std::size_t rows = FindRows(rights, meant).size();
    rights.Revoke(meant.holder.key, meant.function);
    transaction.Commit();
    context.terminal.err << ToldRevoked(meant, rows);
}

/// What the user is told when rights on other items are left; else nothing.
std::string ToldLeft(Rights& rights, const Item& item)
{
    const std::size_t left = rights.Between(item.key, Side::holder).size();
    return left == 0 ? ""
                     : fmt::format("left alone: {} on other items; see `qvadmin right on list {}:id:{} --as holder`\n",
                                   Counted(left, "right"), TypeName(item.key.type), item.key.id);
}

constexpr std::string_view kNothingEnded = "no right was ended";

void RevokeEvery(const Context& context, Rights& rights)
{
    const Item item = FindGiven(rights.Connection(), context.arguments, kItem);
    const std::vector<ItemRight> shown = rights.Of(item.key);
    const std::size_t rows = shown.size();
    if (rows == 0) {
        context.terminal.err << fmt::format("{} has no rights of its own\n", Named(item)) << ToldLeft(rights, item);
        return;
    }
    context.terminal.err << fmt::format("{} has {}\n", Named(item), Counted(rows, "right"));
    RequireConfirmation(context, fmt::format("End {} of {}?", Counted(rows, "right"), Named(item)), rows,
                        kNothingEnded);
    Transaction transaction(rights.Connection());
    ThrowIfChanged(Named(item), Named(FindGiven(rights.Connection(), context.arguments, kItem)), kNothingEnded);
    ThrowIfChanged(shown, rights.Of(item.key), kNothingEnded);
    rights.RevokeAll(item.key);
    transaction.Commit();
    context.terminal.err << fmt::format("ended {} of {}\n", Counted(rows, "right"), Named(item))
                         << ToldLeft(rights, item);
}

// ---- Rights of items on items ---------------------------------------------------------------------------------------

/// The verb of `right on` that was written; one command line is read in each run.
Exit (*&ChosenOn())(const Context&)
{
    static Exit (*chosen)(const Context&) = nullptr;
    return chosen;
}

Meant FindBoth(CAConnect& conn, const Arguments& arguments)
{
    return {FindGiven(conn, arguments, kHolder), FindGiven(conn, arguments, kOnItem), FunctionGiven(arguments)};
}

RightOn AsRow(const Meant& meant, PermissionMask powers)
{
    return {meant.function, meant.holder.key, meant.on.value().key, powers};
}

std::vector<RightOn> FindRowsOn(Rights& rights, const Meant& meant)
{
    std::vector<RightOn> rows = rights.FindOn(meant.holder.key, meant.on.value().key, meant.function);
    if (rows.empty()) {
        RefuseMissing(meant);
    }
    return rows;
}

void Print(const Context& context, CAConnect& conn, const std::vector<RightOn>& rights)
{
    NameCache namer(conn);
    Table table{
        {"genre", "function", "holder_type", "holder_id", "holder", "on_type", "on_id", "on", "power", "unpower"}, {}};
    for (const RightOn& right : rights) {
        table.rows.push_back({right.function.genre, right.function.name, TypeName(right.holder.type),
                              std::int64_t{right.holder.id}, namer.NameOf(right.holder), TypeName(right.on.type),
                              std::int64_t{right.on.id}, namer.NameOf(right.on), std::int64_t{right.powers.power},
                              std::int64_t{right.powers.unpower}});
    }
    Render(context.arguments.format, table, context.terminal.out);
}

/// The module writes both powers of all rows at once, so a second power that is to stay must be one.
int CommonUnpower(const Meant& meant, const std::vector<RightOn>& rows)
{
    const int unpower = rows.front().powers.unpower;
    if (std::ranges::any_of(rows, [unpower](const RightOn& row) { return row.powers.unpower != unpower; })) {
        throw Error(ErrorCode::conflict,
                    fmt::format("{} has {} in {} with different second powers; say with --unpower which they are to "
                                "have",
                                Named(meant.holder), TextOf(meant), Counted(rows.size(), "row")));
    }
    return unpower;
}

Exit ListOn(const Context& context)
{
    const Side side = SideGiven(context.arguments);
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    const Item item = FindGiven(conn, context.arguments, kItem);
    Print(context, conn, Rights(conn).Between(item.key, side));
    return Exit::done;
}

Exit ShowOn(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Rights rights(conn);
    Print(context, conn, FindRowsOn(rights, FindBoth(conn, context.arguments)));
    return Exit::done;
}

Exit GrantOn(const Context& context)
{
    const PermissionMask powers{PowerGiven(context.arguments, kPowerOrOne).value_or(kPlainPower),
                                PowerGiven(context.arguments, kUnpower).value_or(0)};
    const Function function = NewFunctionGiven(context.arguments);
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Transaction transaction(conn);
    Rights rights(conn);
    const Meant meant = FindBoth(conn, context.arguments);
    if (rights.ExistsOn(meant.holder.key, meant.on.value().key, function)) {
        RefusePresent(meant);
    }
    rights.GrantOn(AsRow(meant, powers));
    transaction.Commit();
    context.terminal.err << ToldGranted(meant, powers);
    return Exit::done;
}

Exit SetOn(const Context& context)
{
    const int power = PowerGiven(context.arguments, kPower).value_or(0);
    const std::optional<int> unpower = PowerGiven(context.arguments, kNewUnpower);
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Transaction transaction(conn);
    Rights rights(conn);
    const Meant meant = FindBoth(conn, context.arguments);
    const std::vector<RightOn> rows = FindRowsOn(rights, meant);
    rights.SetOn(AsRow(meant, {power, unpower ? *unpower : CommonUnpower(meant, rows)}));
    transaction.Commit();
    context.terminal.err << ToldSet(meant, power, rows.size());
    return Exit::done;
}

Exit RevokeOn(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Transaction transaction(conn);
    Rights rights(conn);
    const Meant meant = FindBoth(conn, context.arguments);
    const std::size_t rows = FindRowsOn(rights, meant).size();
    rights.RevokeOn(meant.holder.key, meant.on.value().key, meant.function);
    transaction.Commit();
    context.terminal.err << ToldRevoked(meant, rows);
    return Exit::done;
}

void TellHolders(const Context& context, CAConnect& conn, const std::vector<RightOn>& rows)
{
    NameCache namer(conn);
    for (const RightOn& row : rows) {
        context.terminal.err << fmt::format("{} has it, power {}\n", Named(namer.Find(row.holder)), row.powers.power);
    }
}

Exit ClearOn(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Rights rights(conn);
    const Item on = FindGiven(conn, context.arguments, kOnItem);
    const Function function = FunctionGiven(context.arguments);
    const std::string what = fmt::format("{} on {}", TextOf(function), Named(on));
    const std::vector<RightOn> rows = rights.HeldOn(on.key, function);
    if (rows.empty()) {
        throw Error(ErrorCode::notFound, fmt::format("nobody has {}", what));
    }
    TellHolders(context, conn, rows);
    RequireConfirmation(context, fmt::format("Delete {} in {}?", what, Counted(rows.size(), "row")), rows.size());
    Transaction transaction(conn);
    ThrowIfChanged(what, fmt::format("{} on {}", TextOf(function), Named(FindGiven(conn, context.arguments, kOnItem))));
    ThrowIfChanged(rows, rights.HeldOn(on.key, function));
    rights.RevokeOnFromAll(on.key, function);
    transaction.Commit();
    context.terminal.err << fmt::format("nobody has {} any more; deleted {}\n", what, Counted(rows.size(), "row"));
    return Exit::done;
}

void DeclareFunction(CLI::App& app, Arguments& arguments, bool required = true)
{
    DeclareArgument(app, arguments, kGenre, required);
    DeclareArgument(app, arguments, kFunction, required);
}

void DeclareBoth(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kHolder);
    DeclareArgument(app, arguments, kOnItem);
    DeclareFunction(app, arguments);
}

// ---- The matrix -----------------------------------------------------------------------------------------------------

using Cell = std::vector<std::int64_t>;

/// The powers of each function, one cell for each role.
std::map<Function, std::vector<Cell>> LoadMatrix(Rights& rights, const std::vector<RoleKey>& roles)
{
    std::map<Function, std::vector<Cell>> matrix;
    for (std::size_t i = 0; i < roles.size(); ++i) {
        for (const ItemRight& right : rights.Of({kItemTypeRole, roles[i].id})) {
            std::vector<Cell>& cells = matrix.try_emplace(right.function, roles.size()).first->second;
            cells[i].push_back(right.powers.power);
        }
    }
    return matrix;
}

Value Shown(const Cell& powers)
{
    if (powers.empty()) {
        return {};
    }
    return powers.size() == 1 ? Value(powers.front()) : Value(fmt::format("{}", fmt::join(powers, ",")));
}

/// The names of the columns, no two alike: programs find values by them.
std::vector<std::string> MatrixColumns(const std::vector<RoleKey>& roles, Format format)
{
    std::vector<std::string> columns = {"genre", "function"};
    std::multiset<std::string> names(columns.begin(), columns.end());
    for (const RoleKey& role : roles) {
        names.insert(role.name);
    }
    for (const RoleKey& role : roles) {
        const std::string name = format == Format::table ? Visible(role.name) : role.name;
        columns.push_back(names.count(role.name) > 1 ? fmt::format("{} (role {})", name, role.id) : name);
    }
    return columns;
}

// ---- What users may -------------------------------------------------------------------------------------------------

/// An empty answer is no answer for a user who has no role. @throws Error (notFound).
void RefuseNobody(const Table& answer, Rights& rights, const UserKey& user)
{
    if (answer.rows.empty() && !rights.HasRole(user.id)) {
        throw Error(ErrorCode::notFound,
                    fmt::format("{} has no role of this system, and the role {} is missing, so no rights apply; "
                                "`qvadmin role default --create` makes that role",
                                Named(user), kDefaultRole));
    }
}

Value ShownLimit(int limit)
{
    return limit == kUnlimited ? Value(Choice{limit, "unlimited"}) : Value(std::int64_t{limit});
}

/// The functions that `right views` is to ask about: the given one, else all that the user's roles have.
std::vector<Function> AskedFunctions(Rights& rights, const UserKey& user, const Arguments& arguments)
{
    return Given(arguments, kGenre) ? std::vector{FunctionGiven(arguments)} : rights.ViewFunctionsOf(user.id);
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareList(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kItem);
    DeclareOption(app, arguments, kOfGenre);
}

void DeclareOne(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kItem);
    DeclareFunction(app, arguments);
}

void DeclareGrant(CLI::App& app, Arguments& arguments)
{
    DeclareSet(app, arguments);
    DeclareOption(app, arguments, kUnpower);
}

void DeclareSet(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareArgument(app, arguments, kPower);
}

void DeclareRevoke(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kItem);
    DeclareFunction(app, arguments, false);
    DeclareFlag(app, arguments, kAll);
    DeclareYes(app, arguments);
}

void DeclareOn(CLI::App& app, Arguments& arguments)
{
    Exit (*&chosen)(const Context&) = ChosenOn();
    chosen = nullptr;
    app.require_subcommand(0, 1);
    CLI::App* list = AddThirdWord(app, "list", "rights of an item on others, and of others on it", chosen, &ListOn);
    DeclareArgument(*list, arguments, kItem);
    DeclareOption(*list, arguments, kAs);
    DeclareBoth(*AddThirdWord(app, "show", "one right, in every row that it has", chosen, &ShowOn), arguments);
    CLI::App* grant = AddThirdWord(app, "grant", "give an item a right on another", chosen, &GrantOn);
    DeclareBoth(*grant, arguments);
    DeclareArgument(*grant, arguments, kPowerOrOne, false);
    DeclareOption(*grant, arguments, kUnpower);
    CLI::App* set = AddThirdWord(app, "set", "give a right that is there another power", chosen, &SetOn);
    DeclareBoth(*set, arguments);
    DeclareArgument(*set, arguments, kPower);
    DeclareOption(*set, arguments, kNewUnpower);
    DeclareBoth(*AddThirdWord(app, "revoke", "take a right on another item from an item", chosen, &RevokeOn),
                arguments);
    CLI::App* clear = AddThirdWord(app, "clear", "take a right on an item from everyone; asks first", chosen, &ClearOn);
    DeclareArgument(*clear, arguments, kOnItem);
    DeclareFunction(*clear, arguments);
    DeclareYes(*clear, arguments);
}

void DeclareMatrix(CLI::App& app, Arguments& arguments)
{
    DeclareWords(app, arguments, "ROLE", "name of a role, case not counting, or id:NUMBER");
}

void DeclareViews(CLI::App& app, Arguments& arguments)
{
    user::DeclareOne(app, arguments);
    DeclareFunction(app, arguments, false);
}

// ---- Rights of items ------------------------------------------------------------------------------------------------

Exit List(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    const Item item = FindGiven(conn, context.arguments, kItem);
    Print(context, Rights(conn).Of(item.key, Given(context.arguments, kOfGenre)));
    return Exit::done;
}

Exit Show(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Rights rights(conn);
    Print(context, FindRows(rights, FindOwn(conn, context.arguments)));
    return Exit::done;
}

Exit Grant(const Context& context)
{
    const PermissionMask powers{PowerGiven(context.arguments, kPower).value_or(0),
                                PowerGiven(context.arguments, kUnpower).value_or(0)};
    const Function function = NewFunctionGiven(context.arguments);
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Transaction transaction(conn);
    Rights rights(conn);
    const Meant meant = FindOwn(conn, context.arguments);
    if (rights.Exists(meant.holder.key, function)) {
        RefusePresent(meant);
    }
    rights.Grant(meant.holder.key, function, powers);
    transaction.Commit();
    context.terminal.err << ToldGranted(meant, powers);
    return Exit::done;
}

Exit Set(const Context& context)
{
    const int power = PowerGiven(context.arguments, kPower).value_or(0);
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Transaction transaction(conn);
    Rights rights(conn);
    const Meant meant = FindOwn(conn, context.arguments);
    const std::size_t rows = FindRows(rights, meant).size();
    rights.Set(meant.holder.key, meant.function, power);
    transaction.Commit();
    context.terminal.err << ToldSet(meant, power, rows);
    return Exit::done;
}

Exit Revoke(const Context& context)
{
    const bool every = Given(context.arguments, kAll).has_value();
    const bool one = Given(context.arguments, kFunction).has_value();
    if (every ? Given(context.arguments, kGenre).has_value() : !one) {
        throw Error(ErrorCode::invalid, "name the genre and the function of one right, or give --all for every right");
    }
    Opened opened(context.arguments);
    Rights rights(opened.Directory().Connection());
    (every ? RevokeEvery : RevokeOne)(context, rights);
    return Exit::done;
}

// ---- Rights of items on items ---------------------------------------------------------------------------------------

Exit On(const Context& context)
{
    if (ChosenOn() == nullptr) {
        throw Error(ErrorCode::invalid,
                    "name what to do, such as `qvadmin right on list`; see `qvadmin right on --help`");
    }
    return ChosenOn()(context);
}

// ---- Comparing and asking -------------------------------------------------------------------------------------------

Exit Matrix(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Roles roles(conn);
    const std::vector<RoleKey> several = FindRoles(roles, context.arguments.users, {});
    Rights rights(conn);
    Table table{MatrixColumns(several, context.arguments.format), {}};
    for (const auto& [function, cells] : LoadMatrix(rights, several)) {
        std::vector<Value>& row = table.rows.emplace_back(std::vector<Value>{function.genre, function.name});
        std::ranges::transform(cells, std::back_inserter(row), &Shown);
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

Exit Effective(const Context& context)
{
    Opened opened(context.arguments);
    Rights rights(opened.Directory().Connection());
    const UserKey user = FindUser(opened.Directory(), context.arguments.user);
    Table table{{"genre", "function", "bits", "publish", "guest", "limit"}, {}};
    for (const Function& function : rights.FunctionsOf(user.id)) {
        const EffectiveRight right = rights.Effective(user.id, function);
        table.rows.push_back({function.genre, function.name, std::int64_t{right.bits}, right.publish, right.guest,
                              ShownLimit(right.limit)});
    }
    RefuseNobody(table, rights, user);
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

Exit Views(const Context& context)
{
    if (Given(context.arguments, kGenre) && !Given(context.arguments, kFunction)) {
        throw Error(ErrorCode::invalid, "name the function too, or no genre either");
    }
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Rights rights(conn);
    const UserKey user = FindUser(opened.Directory(), context.arguments.user);
    NameCache namer(conn);
    Table table{{"genre", "function", "id", "name"}, {}};
    for (const Function& function : AskedFunctions(rights, user, context.arguments)) {
        for (const int view : rights.ViewsOf(user.id, function)) {
            table.rows.push_back(
                {function.genre, function.name, std::int64_t{view}, namer.NameOf({kItemTypeView, view})});
        }
    }
    RefuseNobody(table, rights, user);
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

} // namespace console::right
