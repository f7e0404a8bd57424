#include "basefun/ItemTypes.h"
#include "management/Command.h"
#include "management/FindEach.h"
#include "management/Items.h"
#include "management/Text.h"
#include "management/rights/ObjectRights.h"
#include "management/rights/PermissionMask.h"
#include "management/users/Users.h"

#include <fmt/format.h>

#include <array>

namespace management::rights {

namespace {

constexpr std::string_view kIdHelp = "number of the right, as `objright list` shows it";
constexpr std::string_view kClassHelp = "number of the kind of object";
constexpr std::string_view kObjectHelp = "number of the object within its kind";
constexpr std::string_view kGenreHelp = "genre of the function, as it is";
constexpr std::string_view kFunctionHelp = "name of the function, as it is";

// ---- Parameters -----------------------------------------------------------------------------------------------------

struct RightsOnObject {
    int classId = 0;
    int object = 0;
    std::optional<std::string> function;
};

constexpr Param<RightsOnObject> kListParams[] = {
    {"CLASS", &RightsOnObject::classId, Kind::number, kClassHelp},
    {"OBJECT", &RightsOnObject::object, Kind::number, kObjectHelp},
    {"FUNCTION", &RightsOnObject::function, Kind::text, kFunctionHelp},
};

struct OneRight {
    int id = 0;
};

constexpr Param<OneRight> kOneParams[] = {{"ID", &OneRight::id, Kind::number, kIdHelp, kIds}};

struct RightToCheck {
    std::string item;
    int classId = 0;
    int object = 0;
    std::string genre;
    std::string function;
};

constexpr Param<RightToCheck> kCheckParams[] = {
    {"ITEM", &RightToCheck::item, Kind::item, kItemHelp},
    {"CLASS", &RightToCheck::classId, Kind::number, kClassHelp},
    {"OBJECT", &RightToCheck::object, Kind::number, kObjectHelp},
    {"GENRE", &RightToCheck::genre, Kind::text, kGenreHelp},
    {"FUNCTION", &RightToCheck::function, Kind::text, kFunctionHelp},
};

struct RightToGrant : RightToCheck {
    std::string power;
    std::optional<std::string> unpower;
    std::optional<std::string> by;
};

constexpr Param<RightToGrant> kGrantParams[] = {
    {"ITEM", &RightToGrant::item, Kind::item, kItemHelp},
    {"CLASS", &RightToGrant::classId, Kind::number, kClassHelp},
    {"OBJECT", &RightToGrant::object, Kind::number, kObjectHelp},
    {"GENRE", &RightToGrant::genre, Kind::text, kGenreHelp},
    {"FUNCTION", &RightToGrant::function, Kind::text, kFunctionHelp},
    {"POWER", &RightToGrant::power, Kind::power, kPowerHelp},
    {"unpower", &RightToGrant::unpower, Kind::power, "second power, stored beside the first; 0 if not given"},
    {"by", &RightToGrant::by, Kind::user, "login name of the user who is noted as the one who granted it"},
};

struct RightToSet {
    int id = 0;
    std::string power;
    std::optional<std::string> unpower;
};

constexpr Param<RightToSet> kSetParams[] = {
    {"ID", &RightToSet::id, Kind::number, kIdHelp, kIds},
    {"POWER", &RightToSet::power, Kind::power, kPowerHelp},
    {"unpower", &RightToSet::unpower, Kind::power, "second power; stays as it is if not given"},
};

struct SeveralRights {
    std::vector<std::string> ids;
};

constexpr Param<SeveralRights> kRevokeParams[] = {{"ID", &SeveralRights::ids, Kind::text, kIdHelp}};

constexpr Column kListColumns[] = {{"id", Kind::number},
                                   {"holder_type", Kind::choice},
                                   {"holder_id", Kind::number},
                                   {"holder"},
                                   {"genre"},
                                   {"function"},
                                   {"power", Kind::power},
                                   {"unpower", Kind::power},
                                   {"creator"},
                                   {"created", Kind::date}};
constexpr Column kShowColumns[] = {{"id", Kind::number},
                                   {"class_id", Kind::number},
                                   {"object_id", Kind::number},
                                   {"holder_type", Kind::choice},
                                   {"holder_id", Kind::number},
                                   {"holder"},
                                   {"genre"},
                                   {"function"},
                                   {"power", Kind::power},
                                   {"unpower", Kind::power},
                                   {"creator_id", Kind::number},
                                   {"creator"},
                                   {"created", Kind::date}};

// ---- What is meant --------------------------------------------------------------------------------------------------

std::optional<int> PowerGiven(const std::optional<std::string>& power)
{
    return power ? std::optional(PowerFrom(*power)) : std::nullopt;
}

ObjectRight FindRight(ObjectRights& rights, int id)
{
    const std::optional<ObjectRight> right = rights.Load(id);
    if (!right) {
        throw Error(ErrorCode::notFound,
                    FillPattern("there is no right on an object with id {}; `qvadmin objright list` "
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

// ---- Sentences and values -------------------------------------------------------------------------------------------

Value ShownType(int type)
{
    constexpr std::array<std::string_view, 4> kTypes = {"user", "group", "role", "view"};
    const bool isKnown = type >= kItemTypeUser && type <= kItemTypeView;
    return isKnown ? Value(Choice{type, kTypes[static_cast<std::size_t>(type - kItemTypeUser)]})
                   : Value(std::int64_t{type});
}

/// "the right 'docs' 'read' of user amy (id 1) on object 7 of class 3".
Sentence Named(const ObjectRightKey& key, const Item& holder)
{
    return FillPattern("the right {} {} of {} on object {} of class {}", Quoted(key.genre), Quoted(key.function),
                       management::Named(holder), key.object.id, key.object.classId);
}

/// "right 5, the right 'docs' 'read' of ...".
Sentence Named(NameCache& names, const ObjectRight& right)
{
    return FillPattern("right {}, {}", right.id, Named(right.key, names.Find(right.key.holder)));
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Result List(Call& call, const RightsOnObject& in)
{
    ObjectRights rights(call.Connection());
    const ObjectKey object{in.classId, in.object};
    for (const ObjectRight& right : in.function ? rights.On(object, *in.function) : rights.On(object)) {
        if (!call.Row(std::int64_t{right.id}, ShownType(right.key.holder.type), std::int64_t{right.key.holder.id},
                      right.holderName, right.key.genre, right.key.function, std::int64_t{right.power},
                      std::int64_t{right.unpower}, right.creator, OrAbsent(right.created))) {
            break;
        }
    }
    return {};
}

Result Show(Call& call, const OneRight& in)
{
    ObjectRights rights(call.Connection());
    const ObjectRight right = FindRight(rights, in.id);
    return ResultOf(Record{
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
        {"created", OrAbsent(right.created)},
    });
}

Result Check(Call& call, const RightToCheck& in)
{
    const Item holder = FindItem(call.Connection(), in.item);
    const ObjectRightKey key{holder.key, {in.classId, in.object}, in.genre, in.function};
    return Verdict(ObjectRights(call.Connection()).Find(key).has_value());
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Result Grant(Call& call, const RightToGrant& in)
{
    ObjectRight right;
    right.key.object = {in.classId, in.object};
    right.key.genre = in.genre;
    right.key.function = in.function;
    right.power = PowerFrom(in.power);
    right.unpower = PowerGiven(in.unpower).value_or(0);
    CheckName("genre", right.key.genre);
    CheckName("function", right.key.function);
    Directory& directory = call.Directory();
    const Item holder = FindItem(call.Connection(), in.item);
    right.key.holder = holder.key;
    right.holderName = DisplayName(directory, holder);
    if (in.by) {
        right.creatorId = FindUser(directory, *in.by).id;
        right.creator = directory.NameOfId(right.creatorId);
    }
    ObjectRights rights(call.Connection());
    if (const std::optional<int> present = rights.Find(right.key)) {
        throw Error(ErrorCode::conflict, FillPattern("{} is there already; `qvadmin objright set {}` changes its power",
                                                     Named(right.key, holder), *present));
    }
    return ResultOf(Value(std::int64_t{rights.Grant(right)}));
}

Result Set(Call& call, const RightToSet& in)
{
    const int power = PowerFrom(in.power);
    const std::optional<int> unpower = PowerGiven(in.unpower);
    ObjectRights rights(call.Connection());
    NameCache names(call.Connection());
    const Sentence name = Named(names, FindRight(rights, in.id));
    rights.Set(in.id, power, unpower);
    call.Report({"objright", in.id, name, "set", FillPattern("{}, has power {} now", name, power)});
    return {};
}

struct Revocation : Plan {
    std::vector<int> ids;

    bool operator==(const Revocation&) const = default;
};

Revocation PlanRevocation(Call& call, const SeveralRights& in)
{
    ObjectRights rights(call.Connection());
    NameCache names(call.Connection());
    const auto find = [&rights](const std::string& argument) {
        const auto id = binding::ReadNumber(kRevokeParams[0].name, argument, kIds, kIds);
        return FindRight(rights, static_cast<int>(id));
    };
    Revocation revocation;
    for (const ObjectRight& right :
         FindEach(in.ids, Translatable("rights on objects with these ids:"),
                  Translatable("`qvadmin objright list` shows those on one object"), find, &ObjectRight::id)) {
        revocation.ids.push_back(right.id);
        revocation.lines.push_back(FillPattern("revoke {}", Named(names, right)));
    }
    revocation.removed = revocation.ids.size();
    revocation.question = FillPattern("Revoke {}?", Counted(revocation.removed, "right"));
    revocation.nothingDone = Translatable("nothing was revoked");
    return revocation;
}

Result Revoke(Call& call, const SeveralRights& /*in*/, const Revocation& revocation)
{
    ObjectRights rights(call.Connection());
    for (const int id : revocation.ids) {
        rights.Revoke(id);
    }
    const Sentence revoked = Counted(revocation.ids.size(), "right");
    call.Report({"objright", 0, revoked, "revoked", FillPattern("revoked {}", revoked)});
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"objright", "list"},
     .summary = "the rights on an object, or those on one of its functions, by type of holder",
     .examples = {"qvadmin objright list 3 17", "qvadmin objright list 3 17 read -o csv"},
     .columns = kListColumns,
     .handler = Read<&List, kListParams>()},
    {.path = {"objright", "show"},
     .summary = "everything about a right on an object",
     .examples = {"qvadmin objright show 5 -o json"},
     .columns = kShowColumns,
     .handler = Read<&Show, kOneParams>()},
    {.path = {"objright", "grant"},
     .summary = "give an item a right on an object and print the new id",
     .examples = {"qvadmin objright grant user:amy 3 17 docs read 1",
                  "qvadmin objright grant role:Editors 3 17 docs size unlimited --by rory"},
     .effect = Effect::create,
     .handler = Write<&Grant, kGrantParams>()},
    {.path = {"objright", "set"},
     .summary = "give a right on an object another power",
     .examples = {"qvadmin objright set 5 0x1F", "qvadmin objright set 5 3 --unpower 1"},
     .effect = Effect::change,
     .handler = Write<&Set, kSetParams>()},
    {.path = {"objright", "revoke"},
     .summary = "take rights on objects away; asks first",
     .examples = {"qvadmin objright revoke 5", "qvadmin objright revoke 5 6 --yes"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanRevocation, &Revoke, kRevokeParams>()},
    {.path = {"objright", "check"},
     .summary = "print true or false; ends with 0 or 3",
     .examples = {"qvadmin objright check user:amy 3 17 docs read"},
     .handler = Read<&Check, kCheckParams>()},
};

} // namespace

std::span<const Command> ObjectRightCommands() { return kCommands; }

} // namespace management::rights
