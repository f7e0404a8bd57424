#include "management/Command.h"
#include "management/Text.h"
#include "management/addins/AddIns.h"
#include "management/organisation/Organisation.h"

#include <fmt/format.h>

#include <algorithm>

namespace management::addins {

namespace {

constexpr std::string_view kAddInHelp = "name, or id:NUMBER";
constexpr std::string_view kTypeHelp = "type of the add-in, where several types have the name";
constexpr std::string_view kDataHelp = "its data, any text";
constexpr std::string_view kDataFileHelp = "a file with its data, taken as they are";
constexpr std::string_view kPublicHelp = "it is public";
constexpr std::string_view kPackageHelp = "name of the package that it belongs to";
constexpr std::string_view kIndexHelp = "position; the highest comes first";

// ---- Parameters -----------------------------------------------------------------------------------------------------

constexpr Param<AddInFilter> kListParams[] = {
    {"package", &AddInFilter::package, Kind::package, "only add-ins of this package"},
    {"type", &AddInFilter::type, Kind::number, "only add-ins of this type"},
};

struct OneAddIn {
    std::string addIn;
    std::optional<int> type;
};

constexpr Param<OneAddIn> kOneParams[] = {
    {"ADDIN", &OneAddIn::addIn, Kind::addIn, kAddInHelp},
    {"type", &OneAddIn::type, Kind::number, kTypeHelp},
};

struct SeveralAddIns {
    std::vector<std::string> addIns;
    std::optional<int> type;
};

constexpr Param<SeveralAddIns> kSeveralParams[] = {
    {"ADDIN", &SeveralAddIns::addIns, Kind::addIn, kAddInHelp},
    {"type", &SeveralAddIns::type, Kind::number, kTypeHelp},
};

struct AddInToCreate {
    std::string name;
    int type = 0;
    std::optional<std::string> data;
    std::optional<std::string> dataFile;
    bool isPublic = false;
    std::optional<std::string> description;
    std::optional<std::string> package;
    std::optional<int> index;
};

constexpr Param<AddInToCreate> kCreateParams[] = {
    {"NAME", &AddInToCreate::name, Kind::text, "name of the new add-in"},
    {"type", &AddInToCreate::type, Kind::number, "type of the add-in; needed"},
    {"data", &AddInToCreate::data, Kind::text, kDataHelp},
    {"data_file", &AddInToCreate::dataFile, Kind::file, kDataFileHelp, {}, "data"},
    {"public", &AddInToCreate::isPublic, Kind::flag, kPublicHelp},
    {"description", &AddInToCreate::description, Kind::text, kDescriptionHelp},
    {"package", &AddInToCreate::package, Kind::package, kPackageHelp},
    {"index", &AddInToCreate::index, Kind::number, kIndexHelp},
};

struct AddInToSet : OneAddIn {
    std::optional<std::string> name;
    std::optional<std::string> data;
    std::optional<std::string> dataFile;
    bool isPublic = false;
    bool isNotPublic = false;
    std::optional<std::string> description;
    std::optional<std::string> package;
    std::optional<int> index;
};

constexpr Param<AddInToSet> kSetParams[] = {
    {"ADDIN", &AddInToSet::addIn, Kind::addIn, kAddInHelp},
    {"type", &AddInToSet::type, Kind::number, kTypeHelp},
    {"name", &AddInToSet::name, Kind::text, "name to have from now on"},
    {"data", &AddInToSet::data, Kind::text, kDataHelp},
    {"data_file", &AddInToSet::dataFile, Kind::file, kDataFileHelp, {}, "data"},
    {"public", &AddInToSet::isPublic, Kind::flag, kPublicHelp},
    {"description", &AddInToSet::description, Kind::text, kDescriptionHelp},
    {"package", &AddInToSet::package, Kind::package, kPackageHelp},
    {"index", &AddInToSet::index, Kind::number, kIndexHelp},
    {"no_public", &AddInToSet::isNotPublic, Kind::flag, "it is not public"},
};

struct AddInToMove : OneAddIn {
    std::string where;
};

constexpr Param<AddInToMove> kMoveParams[] = {
    {"ADDIN", &AddInToMove::addIn, Kind::addIn, kAddInHelp},
    {"type", &AddInToMove::type, Kind::number, kTypeHelp},
    {"WHERE", &AddInToMove::where, Kind::choice, "up, down or top", OneOf{{"up", "down", "top"}}},
};

constexpr Column kListColumns[] = {{"id", Kind::number},       {"type", Kind::number},   {"name"},
                                   {"public", Kind::flag},     {"disabled", Kind::flag}, {"description"},
                                   {"package", Kind::package}, {"index", Kind::number}};
constexpr Column kShowColumns[] = {{"id", Kind::number},       {"type", Kind::number},   {"name"},
                                   {"public", Kind::flag},     {"disabled", Kind::flag}, {"description"},
                                   {"package", Kind::package}, {"index", Kind::number},  {"data"}};

Outcome OutcomeOf(const AddIn& addIn, std::string_view outcome, Sentence sentence)
{
    return {"addin", addIn.id, addIn.name, outcome, std::move(sentence)};
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Result List(Call& call, const AddInFilter& in)
{
    AddInFilter filter = in;
    if (filter.package) {
        const std::vector<Package> packages = Packages(call.Connection()).FindAll(*filter.package);
        filter.package = packages.empty() ? filter.package : packages.front().name;
    }
    for (const AddIn& addIn : AddIns(call.Connection()).List(filter)) {
        if (!call.Row(std::int64_t{addIn.id}, std::int64_t{addIn.type}, addIn.name, addIn.isPublic, addIn.isDisabled,
                      addIn.description, addIn.package, std::int64_t{addIn.index})) {
            break;
        }
    }
    return {};
}

Result Show(Call& call, const OneAddIn& in)
{
    AddIns addIns(call.Connection());
    const AddIn addIn = FindAddIn(addIns, in.addIn, in.type);
    return ResultOf(Record{{"id", std::int64_t{addIn.id}},
                           {"type", std::int64_t{addIn.type}},
                           {"name", addIn.name},
                           {"public", addIn.isPublic},
                           {"disabled", addIn.isDisabled},
                           {"description", addIn.description},
                           {"package", addIn.package},
                           {"index", std::int64_t{addIn.index}},
                           {"data", addIns.Data(addIn.id)}});
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Result Create(Call& call, const AddInToCreate& in)
{
    NewAddIn addIn;
    addIn.name = in.name;
    addIn.type = in.type;
    addIn.data = call.TextOrFile(in.data, in.dataFile).value_or("");
    addIn.isPublic = in.isPublic;
    addIn.description = in.description.value_or("");
    addIn.package = in.package.value_or("");
    addIn.index = in.index;
    CheckName("add-in", addIn.name);
    AddIns addIns(call.Connection());
    return ResultOf(Value(std::int64_t{CreateAddIn(addIns, addIn)}));
}

std::optional<bool> GivenPublic(const AddInToSet& in)
{
    if (in.isPublic && in.isNotPublic) {
        throw Error(ErrorCode::invalid, "--public and --no-public contradict each other");
    }
    return in.isPublic || in.isNotPublic ? std::optional(in.isPublic) : std::nullopt;
}

Result Set(Call& call, const AddInToSet& in)
{
    AddInChanges changes;
    changes.name = in.name;
    changes.data = call.TextOrFile(in.data, in.dataFile);
    changes.isPublic = GivenPublic(in);
    changes.description = in.description;
    changes.package = in.package;
    changes.index = in.index;
    if (changes == AddInChanges()) {
        ThrowNothingToSet("addin");
    }
    AddIns addIns(call.Connection());
    const AddIn addIn = FindAddIn(addIns, in.addIn, in.type);
    ChangeAddIn(addIns, addIn, changes);
    call.Report(OutcomeOf(addIn, "changed", FillPattern("changed {}", Named(addIn))));
    return {};
}

Result SetEnabled(Call& call, const SeveralAddIns& in, bool isEnabled)
{
    AddIns addIns(call.Connection());
    const std::string_view outcome = isEnabled ? "enabled" : "disabled";
    bool isChanged = false;
    for (const AddIn& addIn : FindAddIns(addIns, in.addIns, in.type)) {
        if (addIn.isDisabled == isEnabled) {
            isChanged = true;
            addIns.Enable(addIn.id, isEnabled);
            call.Report(OutcomeOf(addIn, outcome,
                                  isEnabled ? FillPattern("enabled {}", Named(addIn))
                                            : FillPattern("disabled {}", Named(addIn))));
        } else {
            call.Report(OutcomeOf(addIn, "unchanged",
                                  isEnabled ? FillPattern("{} was enabled already", Named(addIn))
                                            : FillPattern("{} was disabled already", Named(addIn))));
        }
    }
    return isChanged ? Result() : Unchanged();
}

Result Enable(Call& call, const SeveralAddIns& in) { return SetEnabled(call, in, true); }
Result Disable(Call& call, const SeveralAddIns& in) { return SetEnabled(call, in, false); }

Result Move(Call& call, const AddInToMove& in)
{
    using management::Move;
    const Move move = in.where == "up" ? Move::up : in.where == "down" ? Move::down : Move::top;
    AddIns addIns(call.Connection());
    const AddIn addIn = FindAddIn(addIns, in.addIn, in.type);
    if (!MoveAddIn(addIns, addIn, move)) {
        const std::string_view end = move == Move::down ? "bottom" : "top";
        call.Report(OutcomeOf(addIn, "unchanged", FillPattern("{} is at the {} already", Named(addIn), end)));
        return Unchanged();
    }
    call.Report(OutcomeOf(addIn, "moved", FillPattern("moved {}", Named(addIn))));
    return {};
}

struct Deletion : Plan {
    std::vector<int> ids;

    bool operator==(const Deletion&) const = default;
};

Deletion PlanDeletion(Call& call, const SeveralAddIns& in)
{
    AddIns addIns(call.Connection());
    Deletion deletion;
    for (const AddIn& addIn : FindAddIns(addIns, in.addIns, in.type)) {
        deletion.ids.push_back(addIn.id);
        deletion.lines.push_back(FillPattern("delete {} of type {}", Named(addIn), addIn.type));
    }
    deletion.removed = deletion.ids.size();
    deletion.question = FillPattern("Delete {}?", Counted(deletion.removed, "add-in"));
    return deletion;
}

Result Delete(Call& call, const SeveralAddIns& /*in*/, const Deletion& deletion)
{
    AddIns addIns(call.Connection());
    for (const int id : deletion.ids) {
        addIns.Delete(id);
    }
    const Sentence deleted = Counted(deletion.ids.size(), "add-in");
    call.Report({"addin", 0, deleted, "deleted", FillPattern("deleted {}", deleted)});
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"addin", "list"},
     .summary = "add-ins in their order, the highest index first",
     .examples = {"qvadmin addin list", "qvadmin addin list --package Office --type 2 -o json"},
     .columns = kListColumns,
     .handler = Read<&List, kListParams>()},
    {.path = {"addin", "show"},
     .summary = "everything about an add-in, its data too",
     .examples = {"qvadmin addin show Calendar", "qvadmin addin show id:17 -o json"},
     .columns = kShowColumns,
     .handler = Read<&Show, kOneParams>()},
    {.path = {"addin", "create"},
     .summary = "add an add-in and print the new id",
     .examples = {"qvadmin addin create Calendar --type 2 --data-file calendar.xml --package Office --public"},
     .effect = Effect::create,
     .handler = Write<&Create, kCreateParams>()},
    {.path = {"addin", "set"},
     .summary = "change what is given and leave all else",
     .examples = {"qvadmin addin set Calendar --description 'Who is where' --no-public",
                  "qvadmin addin set Calendar --type 2 --data-file calendar.xml"},
     .effect = Effect::change,
     .handler = Write<&Set, kSetParams>()},
    {.path = {"addin", "enable"},
     .summary = "switch add-ins on",
     .examples = {"qvadmin addin enable Calendar Clock"},
     .effect = Effect::change,
     .handler = Write<&Enable, kSeveralParams>()},
    {.path = {"addin", "disable"},
     .summary = "switch add-ins off",
     .examples = {"qvadmin addin disable Calendar"},
     .effect = Effect::change,
     .handler = Write<&Disable, kSeveralParams>()},
    {.path = {"addin", "move"},
     .summary = "move an add-in in the order of all",
     .examples = {"qvadmin addin move Calendar up", "qvadmin addin move id:17 top"},
     .effect = Effect::change,
     .handler = Write<&Move, kMoveParams>()},
    {.path = {"addin", "delete"},
     .summary = "delete add-ins; asks first",
     .examples = {"qvadmin addin delete Calendar", "qvadmin addin delete id:17 id:18 --yes"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanDeletion, &Delete, kSeveralParams>()},
};

} // namespace

std::span<const Command> AddInCommands() { return kCommands; }

} // namespace management::addins
