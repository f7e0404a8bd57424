#include "management/Command.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/addins/AddIns.h"
#include "management/messages/Messages.h"
#include "management/organisation/Organisation.h"
#include "platform/COleDateTime.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace management::addins {

namespace {

constexpr std::string_view kPackageHelp = "name of the package, as it is";

struct OnePackage {
    std::string name;
};

constexpr Param<OnePackage> kOneParams[] = {{"NAME", &OnePackage::name, Kind::package, kPackageHelp}};

struct PackageToInstall {
    std::string name;
    int version = 0;
    std::optional<std::string> description;
    std::optional<std::string> modified;
    bool downgrade = false;
};

constexpr Param<PackageToInstall> kInstallParams[] = {
    {"NAME", &PackageToInstall::name, Kind::package, kPackageHelp},
    {"version", &PackageToInstall::version, Kind::number, "version number; needed"},
    {"description", &PackageToInstall::description, Kind::text, kDescriptionHelp},
    {"modified", &PackageToInstall::modified, Kind::date,
     "when it was made: YYYY-MM-DD or 'YYYY-MM-DD HH:MM:SS'; now if not given"},
    {"downgrade", &PackageToInstall::downgrade, Kind::flag, "take a lower version than the installed one too"},
};

constexpr Column kListColumns[] = {{"id", Kind::number},      {"name"},
                                   {"version", Kind::number}, {"description"},
                                   {"modified", Kind::date},  {"disabled", Kind::flag}};
constexpr Column kShowColumns[] = {{"id", Kind::number},      {"name"},
                                   {"version", Kind::number}, {"description"},
                                   {"modified", Kind::date},  {"disabled", Kind::flag},
                                   {"add_ins", Kind::rows}};

// ---- Reading --------------------------------------------------------------------------------------------------------

Result List(Call& call)
{
    for (const Package& package : Packages(call.Connection()).List()) {
        if (!call.Row(std::int64_t{package.id}, package.name, std::int64_t{package.version}, package.description,
                      OrAbsent(package.modified), package.isDisabled)) {
            break;
        }
    }
    return {};
}

Result Show(Call& call, const OnePackage& in)
{
    Packages packages(call.Connection());
    const Package package = FindPackage(packages, in.name);
    Part addIns{"add_ins", {{"id", "type", "name", "public", "disabled", "index"}, {}}};
    for (const AddIn& addIn : AddIns(call.Connection()).List({package.name, {}})) {
        addIns.rows.rows.push_back({std::int64_t{addIn.id}, std::int64_t{addIn.type}, addIn.name, addIn.isPublic,
                                    addIn.isDisabled, std::int64_t{addIn.index}});
    }
    return ResultOf(Record{{"id", std::int64_t{package.id}},
                           {"name", package.name},
                           {"version", std::int64_t{package.version}},
                           {"description", package.description},
                           {"modified", OrAbsent(package.modified)},
                           {"disabled", package.isDisabled}},
                    {addIns});
}

// ---- Installing -----------------------------------------------------------------------------------------------------

std::string ModifiedGiven(const PackageToInstall& in)
{
    return in.modified ? WholeDate(*in.modified)
                       : std::string(COleDateTime::GetCurrentTime().Format("%Y-%m-%d %H:%M:%S").View());
}

int Add(Packages& packages, CAConnect& conn, const PackageToInstall& in)
{
    if (const auto other = FindConfused(conn, "kel_Package", in.name)) {
        ThrowConfused(Translatable("package name"), in.name, *other);
    }
    Package package;
    package.name = in.name;
    package.version = in.version;
    package.description = in.description.value_or("");
    package.modified = ModifiedGiven(in);
    return packages.Insert(package);
}

int Replace(Packages& packages, const PackageToInstall& in)
{
    Package package = FindPackage(packages, in.name);
    if (in.version < package.version && !in.downgrade) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} is installed in version {}, higher than {}; --downgrade goes back",
                                Visible(package.name), package.version, in.version));
    }
    package.version = in.version;
    package.description = in.description.value_or(package.description);
    package.modified = ModifiedGiven(in);
    packages.Update(package);
    return package.id;
}

Result Install(Call& call, const PackageToInstall& in)
{
    CheckName("package", in.name);
    Packages packages(call.Connection());
    const bool isNew = packages.FindAll(in.name).empty();
    const int id = isNew ? Add(packages, call.Connection(), in) : Replace(packages, in);
    call.Report({"package", id, in.name, isNew ? "installed" : "updated",
                 isNew ? FillPattern("installed version {} of {}", in.version, Visible(in.name))
                       : FillPattern("updated to version {} of {}", in.version, Visible(in.name))});
    return ResultOf(Value(std::int64_t{id}));
}

// ---- Removing -------------------------------------------------------------------------------------------------------

struct Removal : Plan {
    std::string name; ///< as it is stored
    std::vector<int> packages;
    std::vector<int> addIns;

    bool operator==(const Removal&) const = default;
};

/// "Office, with 3 add-ins".
Sentence Described(const Removal& removal)
{
    const std::size_t packages = removal.packages.size();
    const Sentence addIns = Counted(removal.addIns.size(), "add-in");
    return packages > 1 ? FillPattern("{} ({} packages), with {}", Visible(removal.name), packages, addIns)
                        : FillPattern("{}, with {}", Visible(removal.name), addIns);
}

Removal PlanRemoval(Call& call, const OnePackage& in)
{
    const std::vector<Package> found = Packages(call.Connection()).FindAll(in.name);
    if (found.empty()) {
        throw Error(ErrorCode::notFound,
                    FillPattern("there is no package {}; `qvadmin package list` shows all", Quoted(in.name)));
    }
    Removal removal;
    removal.name = found.front().name;
    std::ranges::transform(found, std::back_inserter(removal.packages), &Package::id);
    std::ranges::transform(AddIns(call.Connection()).List({removal.name, {}}), std::back_inserter(removal.addIns),
                           &AddIn::id);
    removal.question = FillPattern("Remove the package {}?", Described(removal));
    removal.removed = removal.packages.size() + removal.addIns.size();
    removal.nothingDone = Translatable("nothing was removed");
    return removal;
}

Result Remove(Call& call, const OnePackage& /*in*/, const Removal& removal)
{
    AddIns(call.Connection()).DeleteOfPackage(removal.name);
    Packages packages(call.Connection());
    for (const int package : removal.packages) {
        packages.Delete(package);
    }
    call.Report(
        {"package", removal.packages.front(), removal.name, "removed", FillPattern("removed {}", Described(removal))});
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"package", "list"},
     .summary = "packages by name",
     .examples = {"qvadmin package list -o csv"},
     .columns = kListColumns,
     .handler = Read<&List>()},
    {.path = {"package", "show"},
     .summary = "everything about a package, and its add-ins",
     .examples = {"qvadmin package show Office -o json"},
     .columns = kShowColumns,
     .handler = Read<&Show, kOneParams>()},
    {.path = {"package", "install"},
     .summary = "add a package, or bring it to another version, and print its id",
     .examples = {"qvadmin package install Office --version 3 --description 'Calendar and clock'",
                  "qvadmin package install Office --version 2 --downgrade"},
     .effect = Effect::change,
     .handler = Write<&Install, kInstallParams>()},
    {.path = {"package", "remove"},
     .summary = "delete a package with its add-ins; asks first",
     .examples = {"qvadmin package remove Office"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanRemoval, &Remove, kOneParams>()},
};

} // namespace

std::span<const Command> PackageCommands() { return kCommands; }

} // namespace management::addins
