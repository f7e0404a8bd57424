#include "basefun/ItemTypes.h"
#include "management/Command.h"
#include "management/Items.h"
#include "management/Text.h"
#include "management/rights/PermissionMask.h"
#include "management/rights/Rights.h"
#include "management/roles/Roles.h"
#include "management/users/OneUser.h"
#include "management/users/Users.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <set>

namespace management::rights {

namespace {

constexpr int kPlainPower = 1;
constexpr std::string_view kGenreHelp = "genre of the function";
constexpr std::string_view kFunctionHelp = "name of the function";
constexpr std::string_view kHolderHelp = "who has the right; an item, named as in `right list`";
constexpr std::string_view kOnItemHelp = "on what; an item, named as in `right list`";
constexpr std::string_view kUnpowerHelp = "second power, stored beside the first; 0 if not given";
constexpr std::string_view kNewUnpowerHelp = "second power; stays as it is if not given";

// ---- Parameters -----------------------------------------------------------------------------------------------------

struct Listing {
    std::string item;
    std::optional<std::string> genre;
};

constexpr Param<Listing> kListParams[] = {
    {"ITEM", &Listing::item, Kind::item, kItemHelp},
    {"genre", &Listing::genre, Kind::text, "only functions of this genre"},
};

struct OneRight {
    std::string item;
    std::string genre;
    std::string function;
};

constexpr Param<OneRight> kOneParams[] = {
    {"ITEM", &OneRight::item, Kind::item, kItemHelp},
    {"GENRE", &OneRight::genre, Kind::text, kGenreHelp},
    {"FUNCTION", &OneRight::function, Kind::text, kFunctionHelp},
};

struct RightToGrant : OneRight {
    std::string power;
    std::optional<std::string> unpower;
};

constexpr Param<RightToGrant> kGrantParams[] = {
    {"ITEM", &RightToGrant::item, Kind::item, kItemHelp},
    {"GENRE", &RightToGrant::genre, Kind::text, kGenreHelp},
    {"FUNCTION", &RightToGrant::function, Kind::text, kFunctionHelp},
    {"POWER", &RightToGrant::power, Kind::power, kPowerHelp},
    {"unpower", &RightToGrant::unpower, Kind::power, kUnpowerHelp},
};

struct RightToSet : OneRight {
    std::string power;
};

constexpr Param<RightToSet> kSetParams[] = {
    {"ITEM", &RightToSet::item, Kind::item, kItemHelp},
    {"GENRE", &RightToSet::genre, Kind::text, kGenreHelp},
    {"FUNCTION", &RightToSet::function, Kind::text, kFunctionHelp},
    {"POWER", &RightToSet::power, Kind::power, kPowerHelp},
};

struct RightToRevoke {
    std::string item;
    std::optional<std::string> genre;
    std::optional<std::string> function;
    bool all = false;
};

constexpr Param<RightToRevoke> kRevokeParams[] = {
    {"ITEM", &RightToRevoke::item, Kind::item, kItemHelp},
    {"GENRE", &RightToRevoke::genre, Kind::text, kGenreHelp},
    {"FUNCTION", &RightToRevoke::function, Kind::text, kFunctionHelp},
    {"all", &RightToRevoke::all, Kind::flag, "every right of the item but those on other items; asks first"},
};

struct ListingOn {
    std::string item;
    std::optional<std::string> side;
};

constexpr Param<ListingOn> kListOnParams[] = {
    {"ITEM", &ListingOn::item, Kind::item, kItemHelp},
    {"as", &ListingOn::side, Kind::choice,
     "holder: what the item may; dependent: what others may on it; both if not given", OneOf{{"holder", "dependent"}}},
};

struct OneRightOn {
    std::string holder;
    std::string on;
    std::string genre;
    std::string function;
};

constexpr Param<OneRightOn> kOneOnParams[] = {
    {"HOLDER", &OneRightOn::holder, Kind::item, kHolderHelp},
    {"ON_ITEM", &OneRightOn::on, Kind::item, kOnItemHelp},
    {"GENRE", &OneRightOn::genre, Kind::text, kGenreHelp},
    {"FUNCTION", &OneRightOn::function, Kind::text, kFunctionHelp},
};

struct RightOnToGrant : OneRightOn {
    std::optional<std::string> power;
    std::optional<std::string> unpower;
};

constexpr Param<RightOnToGrant> kGrantOnParams[] = {
    {"HOLDER", &RightOnToGrant::holder, Kind::item, kHolderHelp},
    {"ON_ITEM", &RightOnToGrant::on, Kind::item, kOnItemHelp},
    {"GENRE", &RightOnToGrant::genre, Kind::text, kGenreHelp},
    {"FUNCTION", &RightOnToGrant::function, Kind::text, kFunctionHelp},
    {"POWER", &RightOnToGrant::power, Kind::power, "as for `right grant`; 1 if not given"},
    {"unpower", &RightOnToGrant::unpower, Kind::power, kUnpowerHelp},
};

struct RightOnToSet : OneRightOn {
    std::string power;
    std::optional<std::string> unpower;
};

constexpr Param<RightOnToSet> kSetOnParams[] = {
    {"HOLDER", &RightOnToSet::holder, Kind::item, kHolderHelp},
    {"ON_ITEM", &RightOnToSet::on, Kind::item, kOnItemHelp},
    {"GENRE", &RightOnToSet::genre, Kind::text, kGenreHelp},
    {"FUNCTION", &RightOnToSet::function, Kind::text, kFunctionHelp},
    {"POWER", &RightOnToSet::power, Kind::power, kPowerHelp},
    {"unpower", &RightOnToSet::unpower, Kind::power, kNewUnpowerHelp},
};

struct RightOnToClear {
    std::string on;
    std::string genre;
    std::string function;
};

constexpr Param<RightOnToClear> kClearOnParams[] = {
    {"ON_ITEM", &RightOnToClear::on, Kind::item, kOnItemHelp},
    {"GENRE", &RightOnToClear::genre, Kind::text, kGenreHelp},
    {"FUNCTION", &RightOnToClear::function, Kind::text, kFunctionHelp},
};

struct SeveralRoles {
    std::vector<std::string> roles;
};

constexpr Param<SeveralRoles> kMatrixParams[] = {
    {"ROLE", &SeveralRoles::roles, Kind::role, "name of a role, case not counting, or id:NUMBER"},
};

struct ViewsOfUser {
    std::string user;
    std::optional<std::string> genre;
    std::optional<std::string> function;

    void Check() const
    {
        if (genre && !function) {
            throw Error(ErrorCode::invalid, "name the function too, or no genre either");
        }
    }
};

constexpr Param<ViewsOfUser> kViewsParams[] = {
    {"USER", &ViewsOfUser::user, Kind::user, kUserHelp},
    {"GENRE", &ViewsOfUser::genre, Kind::text, kGenreHelp},
    {"FUNCTION", &ViewsOfUser::function, Kind::text, kFunctionHelp},
};

constexpr Column kColumns[] = {{"genre"}, {"function"}, {"power", Kind::power}, {"unpower", Kind::power}};
constexpr Column kOnColumns[] = {{"genre"},
                                 {"function"},
                                 {"holder_type"},
                                 {"holder_id", Kind::number},
                                 {"holder"},
                                 {"on_type"},
                                 {"on_id", Kind::number},
                                 {"on"},
                                 {"power", Kind::power},
                                 {"unpower", Kind::power}};
constexpr Column kEffectiveColumns[] = {{"genre"},
                                        {"function"},
                                        {"bits", Kind::number},
                                        {"publish", Kind::flag},
                                        {"guest", Kind::flag},
                                        {"limit", Kind::number}};
constexpr Column kViewsColumns[] = {{"genre"}, {"function"}, {"id", Kind::number}, {"name"}};

// ---- What is meant --------------------------------------------------------------------------------------------------

/// The right that a command is about.
struct RightRef {
    Item holder;
    std::optional<Item> on; ///< none for a right of its own
    Function function;
};

template <class In>
RightRef FindOwn(CAConnect& conn, const In& in)
{
    return {FindItem(conn, in.item), std::nullopt, {in.genre, in.function}};
}

template <class In>
RightRef FindBoth(CAConnect& conn, const In& in)
{
    return {FindItem(conn, in.holder), FindItem(conn, in.on), {in.genre, in.function}};
}

/// Of the function of a right to be added. Those that are there already may be called anything.
void CheckFunction(const std::string& genre, const std::string& function)
{
    CheckName("genre", genre);
    CheckName("function", function);
}

std::optional<int> PowerGiven(const std::optional<std::string>& power)
{
    return power ? std::optional(PowerFrom(*power)) : std::nullopt;
}

// ---- Sentences ------------------------------------------------------------------------------------------------------

Sentence TextOf(const Function& function)
{
    return FillPattern("the right {} {}", Quoted(function.genre), Quoted(function.name));
}

/// "the right 'mail' 'send' on view Main (id 1)".
Sentence TextOf(const RightRef& right)
{
    return right.on ? FillPattern("{} on {}", TextOf(right.function), Named(*right.on)) : TextOf(right.function);
}

[[noreturn]] void ThrowMissing(const RightRef& right)
{
    throw Error(ErrorCode::notFound,
                FillPattern("{} does not have {}; `qvadmin {}` shows what there is", Named(right.holder), TextOf(right),
                            right.on ? "right on list" : "right list"));
}

[[noreturn]] void ThrowPresent(const RightRef& right)
{
    throw Error(ErrorCode::conflict,
                FillPattern("{} has {} already; `qvadmin {}` changes its power", Named(right.holder), TextOf(right),
                            right.on ? "right on set" : "right set"));
}

/// What became of an item's right or rights.
Outcome OutcomeOf(const Item& holder, std::string_view outcome, Sentence sentence)
{
    return {"right", holder.key.id, Named(holder), outcome, std::move(sentence)};
}

void ReportGranted(Call& call, const RightRef& right, PermissionMask powers)
{
    call.Report(OutcomeOf(right.holder, "granted",
                          FillPattern("{} now has {}, power {}", Named(right.holder), TextOf(right), powers.power)));
}

void ReportSet(Call& call, const RightRef& right, int power, std::size_t rows)
{
    call.Report(OutcomeOf(right.holder, "set",
                          FillPattern("{} has {} with power {} now, in {}", Named(right.holder), TextOf(right), power,
                                      Counted(rows, "row"))));
}

void ReportRevoked(Call& call, const RightRef& right, std::size_t rows)
{
    call.Report(OutcomeOf(
        right.holder, "revoked",
        FillPattern("{} no longer has {}; deleted {}", Named(right.holder), TextOf(right), Counted(rows, "row"))));
}

// ---- Rights of items ------------------------------------------------------------------------------------------------

Result GiveRows(const Call& call, const std::vector<ItemRight>& rights)
{
    for (const ItemRight& right : rights) {
        if (!call.Row(right.function.genre, right.function.name, std::int64_t{right.powers.power},
                      std::int64_t{right.powers.unpower})) {
            break;
        }
    }
    return {};
}

std::vector<ItemRight> FindRows(Rights& rights, const RightRef& right)
{
    std::vector<ItemRight> rows = rights.Find(right.holder.key, right.function);
    if (rows.empty()) {
        ThrowMissing(right);
    }
    return rows;
}

Result List(Call& call, const Listing& in)
{
    const Item item = FindItem(call.Connection(), in.item);
    return GiveRows(call, Rights(call.Connection()).Of(item.key, in.genre));
}

Result Show(Call& call, const OneRight& in)
{
    Rights rights(call.Connection());
    return GiveRows(call, FindRows(rights, FindOwn(call.Connection(), in)));
}

Result Grant(Call& call, const RightToGrant& in)
{
    const PermissionMask powers{PowerFrom(in.power), PowerGiven(in.unpower).value_or(0)};
    CheckFunction(in.genre, in.function);
    Rights rights(call.Connection());
    const RightRef right = FindOwn(call.Connection(), in);
    if (rights.Exists(right.holder.key, right.function)) {
        ThrowPresent(right);
    }
    rights.Grant(right.holder.key, right.function, powers);
    ReportGranted(call, right, powers);
    return {};
}

Result Set(Call& call, const RightToSet& in)
{
    const int power = PowerFrom(in.power);
    Rights rights(call.Connection());
    const RightRef right = FindOwn(call.Connection(), in);
    const std::size_t rows = FindRows(rights, right).size();
    rights.Set(right.holder.key, right.function, power);
    ReportSet(call, right, power, rows);
    return {};
}

/// Nothing is asked, and nothing is in it, where one right is to be revoked.
struct Revocation : Plan {
    Item item{};
    std::vector<ItemRight> rows;

    bool operator==(const Revocation& other) const
    {
        return Plan::operator==(other) && item.key == other.item.key && rows == other.rows;
    }
};

Revocation PlanRevocation(Call& call, const RightToRevoke& in)
{
    if (in.all ? in.genre.has_value() : !in.function) {
        throw Error(ErrorCode::invalid, "name the genre and the function of one right, or give --all for every right");
    }
    Revocation revocation;
    if (!in.all) {
        return revocation;
    }
    revocation.item = FindItem(call.Connection(), in.item);
    revocation.rows = Rights(call.Connection()).Of(revocation.item.key);
    revocation.removed = revocation.rows.size();
    revocation.nothingDone = Translatable("no right was ended");
    if (revocation.removed != 0) {
        const Sentence rights = Counted(revocation.removed, "right");
        revocation.lines.push_back(FillPattern("{} has {}", Named(revocation.item), rights));
        revocation.question = FillPattern("End {} of {}?", rights, Named(revocation.item));
    }
    return revocation;
}

Result RevokeOne(Call& call, Rights& rights, const RightRef& right)
{
    const std::size_t rows = FindRows(rights, right).size();
    rights.Revoke(right.holder.key, right.function);
    ReportRevoked(call, right, rows);
    return {};
}

/// Rights on other items are none of an item's own, which may surprise.
void ReportLeft(Call& call, Rights& rights, const Item& item)
{
    if (const std::size_t left = rights.Between(item.key, Side::holder).size(); left != 0) {
        call.Report(OutcomeOf(item, "unchanged",
                              FillPattern("left alone: {} on other items; see `qvadmin right on list {}:id:{} --as "
                                          "holder`",
                                          Counted(left, "right"), TypeName(item.key.type), item.key.id)));
    }
}

Result Revoke(Call& call, const RightToRevoke& in, const Revocation& revocation)
{
    Rights rights(call.Connection());
    if (!in.all) {
        const Item holder = FindItem(call.Connection(), in.item);
        return RevokeOne(call, rights, {holder, std::nullopt, {in.genre.value_or(""), in.function.value_or("")}});
    }
    const Item& item = revocation.item;
    if (revocation.rows.empty()) {
        call.Report(OutcomeOf(item, "unchanged", FillPattern("{} has no rights of its own", Named(item))));
        ReportLeft(call, rights, item);
        return Unchanged();
    }
    rights.RevokeAll(item.key);
    call.Report(OutcomeOf(item, "revoked",
                          FillPattern("ended {} of {}", Counted(revocation.rows.size(), "right"), Named(item))));
    ReportLeft(call, rights, item);
    return {};
}

// ---- Rights of items on items ---------------------------------------------------------------------------------------

std::vector<RightOn> FindRowsOn(Rights& rights, const RightRef& right)
{
    std::vector<RightOn> rows = rights.FindOn(right.holder.key, right.on.value().key, right.function);
    if (rows.empty()) {
        ThrowMissing(right);
    }
    return rows;
}

Result GiveRows(const Call& call, const std::vector<RightOn>& rights)
{
    NameCache names(call.Connection());
    for (const RightOn& right : rights) {
        if (!call.Row(right.function.genre, right.function.name, TypeName(right.holder.type),
                      std::int64_t{right.holder.id}, names.NameOf(right.holder), TypeName(right.on.type),
                      std::int64_t{right.on.id}, names.NameOf(right.on), std::int64_t{right.powers.power},
                      std::int64_t{right.powers.unpower})) {
            break;
        }
    }
    return {};
}

Result ListOn(Call& call, const ListingOn& in)
{
    const Side side = !in.side ? Side::either : *in.side == "holder" ? Side::holder : Side::dependent;
    const Item item = FindItem(call.Connection(), in.item);
    return GiveRows(call, Rights(call.Connection()).Between(item.key, side));
}

Result ShowOn(Call& call, const OneRightOn& in)
{
    Rights rights(call.Connection());
    return GiveRows(call, FindRowsOn(rights, FindBoth(call.Connection(), in)));
}

Result GrantOn(Call& call, const RightOnToGrant& in)
{
    const PermissionMask powers{PowerGiven(in.power).value_or(kPlainPower), PowerGiven(in.unpower).value_or(0)};
    CheckFunction(in.genre, in.function);
    Rights rights(call.Connection());
    const RightRef right = FindBoth(call.Connection(), in);
    if (rights.ExistsOn(right.holder.key, right.on.value().key, right.function)) {
        ThrowPresent(right);
    }
    rights.GrantOn({right.function, right.holder.key, right.on.value().key, powers});
    ReportGranted(call, right, powers);
    return {};
}

Result SetOn(Call& call, const RightOnToSet& in)
{
    const int power = PowerFrom(in.power);
    const std::optional<int> unpower = PowerGiven(in.unpower);
    Rights rights(call.Connection());
    const RightRef right = FindBoth(call.Connection(), in);
    const std::size_t rows = FindRowsOn(rights, right).size();
    rights.SetOn(right.holder.key, right.on.value().key, right.function, power, unpower);
    ReportSet(call, right, power, rows);
    return {};
}

Result RevokeOn(Call& call, const OneRightOn& in)
{
    Rights rights(call.Connection());
    const RightRef right = FindBoth(call.Connection(), in);
    const std::size_t rows = FindRowsOn(rights, right).size();
    rights.RevokeOn(right.holder.key, right.on.value().key, right.function);
    ReportRevoked(call, right, rows);
    return {};
}

struct Clearing : Plan {
    ItemKey on{};
    Sentence what; ///< "the right 'mail' 'send' on view Main (id 1)"
    std::vector<RightOn> rows;

    bool operator==(const Clearing&) const = default;
};

Clearing PlanClearing(Call& call, const RightOnToClear& in)
{
    CAConnect& conn = call.Connection();
    const Item on = FindItem(conn, in.on);
    const Function function{in.genre, in.function};
    Clearing clearing;
    clearing.on = on.key;
    clearing.what = FillPattern("{} on {}", TextOf(function), Named(on));
    clearing.rows = Rights(conn).HeldOn(on.key, function);
    if (clearing.rows.empty()) {
        throw Error(ErrorCode::notFound, FillPattern("nobody has {}", clearing.what));
    }
    NameCache names(conn);
    for (const RightOn& row : clearing.rows) {
        clearing.lines.push_back(FillPattern("{} has it, power {}", Named(names.Find(row.holder)), row.powers.power));
    }
    clearing.removed = clearing.rows.size();
    clearing.question = FillPattern("Delete {} in {}?", clearing.what, Counted(clearing.removed, "row"));
    return clearing;
}

Result ClearOn(Call& call, const RightOnToClear& in, const Clearing& clearing)
{
    Rights(call.Connection()).RevokeOnFromAll(clearing.on, {in.genre, in.function});
    call.Report(
        {"right", clearing.on.id, clearing.what, "revoked",
         FillPattern("nobody has {} any more; deleted {}", clearing.what, Counted(clearing.rows.size(), "row"))});
    return {};
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
std::vector<std::string> MatrixColumns(const std::vector<RoleKey>& roles)
{
    std::vector<std::string> columns = {"genre", "function"};
    std::multiset<std::string> names(columns.begin(), columns.end());
    for (const RoleKey& role : roles) {
        names.insert(role.name);
    }
    for (const RoleKey& role : roles) {
        columns.push_back(names.count(role.name) > 1 ? fmt::format("{} (role {})", role.name, role.id) : role.name);
    }
    return columns;
}

Result Matrix(Call& call, const SeveralRoles& in)
{
    Roles roles(call.Connection());
    const std::vector<RoleKey> several = FindRoles(roles, in.roles, {});
    Rights rights(call.Connection());
    call.Front().TakeColumns(MatrixColumns(several));
    for (const auto& [function, cells] : LoadMatrix(rights, several)) {
        std::vector<Value> row = MakeRow(function.genre, function.name);
        std::ranges::transform(cells, std::back_inserter(row), &Shown);
        if (!call.Front().TakeRow(row)) {
            break;
        }
    }
    return {};
}

// ---- What users may -------------------------------------------------------------------------------------------------

/// An empty answer is no answer for a user who has no role. @throws Error (notFound).
void RequireRole(Rights& rights, const UserKey& user)
{
    if (!rights.HasRole(user.id)) {
        throw Error(ErrorCode::notFound,
                    FillPattern("{} has no role of this system, and the role {} is missing, so no rights apply; "
                                "`qvadmin role default --create` makes that role",
                                Named(user), kDefaultRole));
    }
}

Value ShownLimit(int limit)
{
    return limit == kUnlimited ? Value(Choice{limit, "unlimited"}) : Value(std::int64_t{limit});
}

Result Effective(Call& call, const OneUser& in)
{
    Rights rights(call.Connection());
    const UserKey user = FindUser(call.Directory(), in.user);
    const std::vector<Function> functions = rights.FunctionsOf(user.id);
    if (functions.empty()) {
        RequireRole(rights, user);
    }
    for (const Function& function : functions) {
        const EffectiveRight right = rights.Effective(user.id, function);
        if (!call.Row(function.genre, function.name, std::int64_t{right.bits}, right.publish, right.guest,
                      ShownLimit(right.limit))) {
            break;
        }
    }
    return {};
}

Result Views(Call& call, const ViewsOfUser& in)
{
    Rights rights(call.Connection());
    const UserKey user = FindUser(call.Directory(), in.user);
    NameCache names(call.Connection());
    bool isEmpty = true;
    for (const Function& function :
         in.genre ? std::vector{Function{*in.genre, *in.function}} : rights.ViewFunctionsOf(user.id)) {
        for (const int view : rights.ViewsOf(user.id, function)) {
            isEmpty = false;
            if (!call.Row(function.genre, function.name, std::int64_t{view}, names.NameOf({kItemTypeView, view}))) {
                return {};
            }
        }
    }
    if (isEmpty) {
        RequireRole(rights, user);
    }
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"right", "list"},
     .summary = "the rights of an item by genre and function",
     .examples = {"qvadmin right list role:Editors", "qvadmin right list /Company/Sales --genre mail -o json"},
     .columns = kColumns,
     .handler = Read<&List, kListParams>()},
    {.path = {"right", "show"},
     .summary = "one right, in every row that it has",
     .examples = {"qvadmin right show role:Editors mail send"},
     .columns = kColumns,
     .handler = Read<&Show, kOneParams>()},
    {.path = {"right", "grant"},
     .summary = "give an item a right that it does not have",
     .examples = {"qvadmin right grant role:Editors mail send 1", "qvadmin right grant role:id:17 mail size unlimited",
                  "qvadmin right grant user:amy pages edit 0x1F --unpower 2"},
     .effect = Effect::create,
     .handler = Write<&Grant, kGrantParams>()},
    {.path = {"right", "set"},
     .summary = "give a right that is there another power",
     .examples = {"qvadmin right set role:Editors mail size 2048"},
     .effect = Effect::change,
     .handler = Write<&Set, kSetParams>()},
    {.path = {"right", "revoke"},
     .summary = "take a right from an item, or, asking first, all of its own",
     .examples = {"qvadmin right revoke role:Editors mail send", "qvadmin right revoke role:Editors --all"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanRevocation, &Revoke, kRevokeParams>()},
    {.path = {"right", "on"},
     .summary = "rights of one item on another",
     .examples = {"qvadmin right on list view:Company", "qvadmin right on show role:Editors view:Company pages see",
                  "qvadmin right on grant role:Editors view:Company pages see",
                  "qvadmin right on set role:Editors view:Company pages see 3",
                  "qvadmin right on revoke role:Editors view:Company pages see",
                  "qvadmin right on clear view:Company pages see"}},
    {.path = {"right", "on", "list"},
     .summary = "rights of an item on others, and of others on it",
     .examples = {"qvadmin right on list view:Company --as dependent"},
     .columns = kOnColumns,
     .handler = Read<&ListOn, kListOnParams>()},
    {.path = {"right", "on", "show"},
     .summary = "one right, in every row that it has",
     .examples = {"qvadmin right on show role:Editors view:Company pages see"},
     .columns = kOnColumns,
     .handler = Read<&ShowOn, kOneOnParams>()},
    {.path = {"right", "on", "grant"},
     .summary = "give an item a right on another",
     .examples = {"qvadmin right on grant role:Editors view:Company pages see",
                  "qvadmin right on grant user:amy /Company/Sales pages see 3 --unpower 1"},
     .effect = Effect::create,
     .handler = Write<&GrantOn, kGrantOnParams>()},
    {.path = {"right", "on", "set"},
     .summary = "give a right that is there another power",
     .examples = {"qvadmin right on set role:Editors view:Company pages see 3"},
     .effect = Effect::change,
     .handler = Write<&SetOn, kSetOnParams>()},
    {.path = {"right", "on", "revoke"},
     .summary = "take a right on another item from an item",
     .examples = {"qvadmin right on revoke role:Editors view:Company pages see"},
     .effect = Effect::remove,
     .handler = Write<&RevokeOn, kOneOnParams>()},
    {.path = {"right", "on", "clear"},
     .summary = "take a right on an item from everyone; asks first",
     .examples = {"qvadmin right on clear view:Company pages see --yes"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanClearing, &ClearOn, kClearOnParams>()},
    {.path = {"right", "matrix"},
     .summary = "the rights of roles side by side",
     .examples = {"qvadmin right matrix Editors Authors", "qvadmin right matrix id:17 id:18 -o csv"},
     .handler = ReadSnapshot<&Matrix, kMatrixParams>()},
    {.path = {"right", "effective"},
     .summary = "what a user may by his roles, as programs work it out",
     .examples = {"qvadmin right effective amy", "qvadmin right effective id:17 -o json"},
     .columns = kEffectiveColumns,
     .handler = ReadSnapshot<&Effective, kOneUserParams>()},
    {.path = {"right", "views"},
     .summary = "the views that a user may see by his roles",
     .examples = {"qvadmin right views amy", "qvadmin right views amy pages see"},
     .columns = kViewsColumns,
     .handler = ReadSnapshot<&Views, kViewsParams>()},
};

} // namespace

std::span<const Command> RightCommands() { return kCommands; }

} // namespace management::rights
