#include "management/addins/AddIns.h"

#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "dbaccess/EngineKind.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/FindEach.h"
#include "management/Lengths.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/Resolve.h"
#include "management/Text.h"
#include "management/organisation/Organisation.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <set>
#include <tuple>

namespace management {

namespace {

constexpr std::int64_t kHighestIndex = std::numeric_limits<int>::max();

// ---- Finding --------------------------------------------------------------------------------------------------------

AddIn FindById(AddIns& addIns, int id, std::optional<int> type)
{
    const std::optional<AddIn> addIn = addIns.Load(id);
    if (!addIn || (type && addIn->type != *type)) {
        throw Error(ErrorCode::notFound, FillPattern("there is no add-in with id {}{}; `qvadmin addin list` shows all",
                                                     id, type ? FillPattern(" of type {}", *type) : ""));
    }
    return *addIn;
}

// A name that could not be used afterwards is none.
void CheckNewName(const std::string& name)
{
    CheckName("add-in", name);
    if (name.starts_with(kIdPrefix)) {
        throw Error(ErrorCode::invalid, FillPattern("an add-in cannot be called {}: that means an id", Quoted(name)));
    }
}

/// @param except  id of an add-in that may have the name.
void RequireFreeName(AddIns& addIns, const std::string& name, int type, int except)
{
    const std::vector<AddIn> found = addIns.FindAll(name, type);
    if (std::ranges::any_of(found, [&](const AddIn& other) { return other.id != except; })) {
        throw Error(ErrorCode::conflict,
                    FillPattern("there is an add-in {} of type {} already; nothing was changed", Quoted(name), type));
    }
    const std::string others = fmt::format("Col_AddInType = {} AND Col_ID <> {}", type, except);
    if (const auto other = FindConfused(addIns.Connection(), "kel_AddIn", name, others)) {
        ThrowConfused("name", name, *other);
    }
}

// ---- Moving ---------------------------------------------------------------------------------------------------------

/// An add-in in the new order of the list.
struct Placed {
    int id;
    int stored;         ///< index that it has
    std::int64_t index; ///< index to have
    std::size_t place;  ///< in the old order

    [[nodiscard]] bool IsChanged() const { return index != stored; }
};

using Order = std::vector<Placed>;

/// Exchanges two neighbours, and their indexes.
void Exchange(Order& order, std::size_t upper)
{
    std::swap(order[upper], order[upper + 1]);
    std::swap(order[upper].index, order[upper + 1].index);
}

void PutOnTop(Order& order, std::size_t position)
{
    const auto moved = order.begin() + static_cast<std::ptrdiff_t>(position);
    moved->index = order.front().index + 1;
    std::rotate(order.begin(), moved, moved + 1);
}

/// Raises what would not stand above its lower neighbour. Those of one index keep it while they keep their order.
void OpenGaps(Order& order)
{
    for (std::size_t i = order.size() - 1; i > 0; --i) {
        Placed& upper = order[i - 1];
        const Placed& lower = order[i];
        const bool mayTie = !upper.IsChanged() && !lower.IsChanged() && upper.place < lower.place;
        if (upper.index < lower.index || (upper.index == lower.index && !mayTie)) {
            upper.index = lower.index + 1;
        }
    }
}

void NumberAnew(Order& order)
{
    auto index = static_cast<std::int64_t>(order.size());
    for (Placed& placed : order) {
        placed.index = index--;
    }
}

bool IsFirst(const Order& order, std::size_t position)
{
    return position == 0 && (order.size() == 1 || order[0].index > order[1].index);
}

/// @return whether there was anything to do.
bool Rearrange(Order& order, std::size_t position, Move move)
{
    if (move == Move::down) {
        if (position + 1 == order.size()) {
            return false;
        }
        Exchange(order, position);
    } else if (IsFirst(order, position)) {
        return false;
    } else if (move == Move::top || position == 0) {
        PutOnTop(order, position);
    } else {
        Exchange(order, position - 1);
    }
    OpenGaps(order);
    if (order.front().index > kHighestIndex) {
        NumberAnew(order);
    }
    return true;
}

} // namespace

// ---- Add-ins --------------------------------------------------------------------------------------------------------

std::string AddIns::Text(std::string_view text) const { return std::string(EscapeLiteral(m_conn, text).View()); }

std::vector<AddIn> AddIns::Select(const std::string& condition)
{
    return ReadRecords(
        m_conn,
        "SELECT Col_ID, Col_Name, Col_AddInType, Col_IsPublic, Col_Disabled, Col_Desc, Col_PackageName, Col_Index "
        "FROM kel_AddIn" +
            condition,
        &AddIn::id, &AddIn::name, &AddIn::type, &AddIn::isPublic, &AddIn::isDisabled, &AddIn::description,
        &AddIn::package, &AddIn::index);
}

void AddIns::KeepOfPackage(std::vector<AddIn>& addIns, std::string_view package)
{
    std::set<std::string> installed;
    EachRow(m_conn, "SELECT Col_Name FROM kel_Package", [&](CARecordset& row) { installed.insert(TextIn(row, 1)); });
    std::erase_if(addIns, [&](const AddIn& addIn) {
        return addIn.package != package && (!SameName(addIn.package, package) || installed.contains(addIn.package));
    });
}

std::vector<AddIn> AddIns::List(const AddInFilter& filter)
{
    std::vector<AddIn> addIns = Select(filter.type ? fmt::format(" WHERE Col_AddInType = {}", *filter.type) : "");
    if (filter.package) {
        KeepOfPackage(addIns, *filter.package);
    }
    std::ranges::sort(
        addIns, [](const AddIn& a, const AddIn& b) { return std::tuple(b.index, a.id) < std::tuple(a.index, b.id); });
    return addIns;
}

std::vector<AddIn> AddIns::FindAll(std::string_view name, std::optional<int> type)
{
    std::vector<AddIn> found =
        Select((type ? fmt::format(" WHERE Col_AddInType = {}", *type) : "") + std::string(" ORDER BY Col_ID"));
    KeepNamed(found, name, &AddIn::name);
    return found;
}

std::optional<AddIn> AddIns::Load(int id)
{
    const std::vector<AddIn> found = Select(fmt::format(" WHERE Col_ID = {}", id));
    return found.empty() ? std::nullopt : std::optional(found.front());
}

std::string AddIns::Data(int id)
{
    std::string data;
    EachRow(m_conn, fmt::format("SELECT Col_Data FROM kel_AddIn WHERE Col_ID = {}", id),
            [&data](CARecordset& row) { data = TextIn(row, 1); });
    return data;
}

int AddIns::HighestIndex()
{
    int index = 0;
    Run(m_conn, [&] { return CQVBaseFun::GetAddInItemMaxIndex(m_conn, index); });
    return index;
}

int AddIns::Create(const NewAddIn& addIn, int index)
{
    RequireFits(m_conn, "kel_AddIn",
                {{"the name", "Col_Name", addIn.name},
                 {"the description", "Col_Desc", addIn.description},
                 {"the package", "Col_PackageName", addIn.package},
                 {"the data", "Col_Data", addIn.data}});
    // The module doubles the quotes of data itself, and backslashes by the engine kind.
    const bool isKindOfEngine =
        (dbaccess::EngineKindOf(m_conn) == dbaccess::EngineKind::mysql) == EscapesBackslashes(m_conn);
    const CString slashes = EscapeBackslashes(m_conn, addIn.data);
    Run(m_conn, [&] {
        return CQVBaseFun::InsertAddInInfo(m_conn, EscapeLiteral(m_conn, addIn.name),
                                           isKindOfEngine ? CString(std::string_view(addIn.data)) : slashes, addIn.type,
                                           addIn.isPublic, EscapeLiteral(m_conn, addIn.description),
                                           EscapeLiteral(m_conn, addIn.package), index);
    });
    const int id = LastInsertedId(m_conn);
    if (!isKindOfEngine && dbaccess::EngineKindOf(m_conn) == dbaccess::EngineKind::mysql) {
        AddInChanges asTheyAre;
        asTheyAre.data = addIn.data;
        Change(id, asTheyAre);
    }
    return id;
}

// The module's own change writes data and description together; here one of them may be left as it is, also as NULL.
void AddIns::Change(int id, const AddInChanges& changes)
{
    Assignments assignments(m_conn, "kel_AddIn");
    assignments.Text("Col_Name", "the name", changes.name);
    assignments.Text("Col_Data", "the data", changes.data);
    assignments.Text("Col_Desc", "the description", changes.description);
    assignments.Text("Col_PackageName", "the package", changes.package);
    assignments.Number("Col_IsPublic", changes.isPublic);
    assignments.Number("Col_Index", changes.index);
    assignments.Apply(id);
}

void AddIns::Enable(int id, bool enabled)
{
    // The operation's flag says the contrary of its name.
    bool disabled = !enabled;
    Run(m_conn, [&] { return CQVBaseFun::EnableAddInItem(m_conn, id, disabled); });
}

void AddIns::SetIndex(int id, int index)
{
    Run(m_conn, [&] { return CQVBaseFun::UpdateAddInItemIndex(m_conn, id, index); });
}

void AddIns::Delete(int id)
{
    Run(m_conn, [&] { return CQVBaseFun::DeleteAddInItem(m_conn, id); });
}

void AddIns::DeleteOfPackage(std::string_view package)
{
    // One by one: by name, an engine may take those of other packages too.
    AddInFilter ofPackage;
    ofPackage.package = package;
    for (const AddIn& addIn : List(ofPackage)) {
        Delete(addIn.id);
    }
}

// ---- Packages -------------------------------------------------------------------------------------------------------

std::vector<Package> Packages::Select(const std::string& condition)
{
    return ReadRecords(
        m_conn, "SELECT Col_ID, Col_Name, Col_Ver, Col_Desc, Col_Dt_Modify, Col_Disabled FROM kel_Package" + condition,
        &Package::id, &Package::name, &Package::version, &Package::description, &Package::modified,
        &Package::isDisabled);
}

std::vector<Package> Packages::List()
{
    std::vector<Package> packages = Select("");
    std::ranges::sort(
        packages, [](const Package& a, const Package& b) { return std::tie(a.name, a.id) < std::tie(b.name, b.id); });
    return packages;
}

std::vector<Package> Packages::FindAll(std::string_view name)
{
    std::vector<Package> packages = Select(" ORDER BY Col_ID");
    KeepNamed(packages, name, &Package::name);
    const auto isOther = [&](const Package& package) { return package.name != packages.front().name; };
    if (std::ranges::any_of(packages, isOther)) {
        std::string list;
        for (const Package& package : packages) {
            list += (list.empty() ? "" : ", ") + Quoted(package.name);
        }
        throw Error(ErrorCode::conflict,
                    FillPattern("{} may be any of the packages {}; write it as it is listed", Quoted(name), list));
    }
    return packages;
}

int Packages::Insert(const Package& package)
{
    RequireFits(m_conn, "kel_Package",
                {{"the name", "Col_Name", package.name}, {"the description", "Col_Desc", package.description}});
    // The module's operation goes on after a refused row, and its next error would hide the reason.
    const CString name = EscapeLiteral(m_conn, package.name);
    const std::string sql = fmt::format(
        "INSERT INTO kel_Package (Col_Name, Col_Dt_Modify, Col_Ver, Col_Desc, Col_Disabled) VALUES ('{}', '{}', {}, "
        "'{}', 0)",
        name.View(), EscapeLiteral(m_conn, package.modified.value_or("")).View(), package.version,
        EscapeLiteral(m_conn, package.description).View());
    WithDatabaseErrors(m_conn, [&] { m_conn.Execute(sql.c_str()); });
    return LastInsertedId(m_conn);
}

void Packages::Update(const Package& package)
{
    RequireFits(m_conn, "kel_Package", {{"the description", "Col_Desc", package.description}});
    Run(m_conn, [&] {
        return CQVBaseFun::UpdatePackageInfo(m_conn, EscapeLiteral(m_conn, package.modified.value_or("")),
                                             package.version, EscapeLiteral(m_conn, package.description), package.id);
    });
}

void Packages::Delete(int id)
{
    Run(m_conn, [&] { return CQVBaseFun::DeletePackage(m_conn, id); });
}

// ---- What an administrator does with add-ins ------------------------------------------------------------------------

AddIn FindAddIn(AddIns& addIns, const std::string& argument, std::optional<int> type)
{
    if (const std::optional<int> id = IdIn(argument, Translatable("an add-in"))) {
        return FindById(addIns, *id, type);
    }
    const std::vector<AddIn> found = addIns.FindAll(argument, type);
    if (found.empty()) {
        throw Error(ErrorCode::notFound, FillPattern("there is no add-in {}{}; `qvadmin addin list` shows all",
                                                     Quoted(argument), type ? FillPattern(" of type {}", *type) : ""));
    }
    if (found.size() > 1) {
        std::vector<Candidate> candidates;
        candidates.reserve(found.size());
        for (const AddIn& addIn : found) {
            candidates.push_back(
                {FillPattern("{} of type {}", Named(addIn), addIn.type), fmt::format("{}{}", kIdPrefix, addIn.id)});
        }
        ThrowAmbiguous(argument, candidates, Translatable("add --type, or "));
    }
    return found.front();
}

std::vector<AddIn> FindAddIns(AddIns& addIns, const std::vector<std::string>& arguments, std::optional<int> type)
{
    return FindEach(
        arguments, Translatable("add-ins"), Translatable("`qvadmin addin list` shows all"),
        [&](const std::string& argument) { return FindAddIn(addIns, argument, type); }, &AddIn::id);
}

int CreateAddIn(AddIns& addIns, const NewAddIn& addIn)
{
    CheckNewName(addIn.name);
    RequireFreeName(addIns, addIn.name, addIn.type, 0);
    const int highest = addIn.index ? 0 : addIns.HighestIndex();
    if (highest == kHighestIndex) {
        throw Error(ErrorCode::conflict,
                    FillPattern("an add-in has the highest index that there is, {}; say --index, or "
                                "give that one another index",
                                highest));
    }
    return addIns.Create(addIn, addIn.index.value_or(highest + 1));
}

void ChangeAddIn(AddIns& addIns, const AddIn& addIn, const AddInChanges& changes)
{
    if (changes.name && *changes.name != addIn.name) {
        CheckNewName(*changes.name);
        RequireFreeName(addIns, *changes.name, addIn.type, addIn.id);
    }
    addIns.Change(addIn.id, changes);
}

bool MoveAddIn(AddIns& addIns, const AddIn& addIn, Move move)
{
    Order order;
    std::size_t position = 0;
    for (const AddIn& listed : addIns.List({})) {
        position = listed.id == addIn.id ? order.size() : position;
        order.push_back({listed.id, listed.index, listed.index, order.size()});
    }
    if (!Rearrange(order, position, move)) {
        return false;
    }
    for (const Placed& placed : order) {
        if (placed.IsChanged()) {
            addIns.SetIndex(placed.id, static_cast<int>(placed.index));
        }
    }
    return true;
}

Package FindPackage(Packages& packages, const std::string& name)
{
    const std::vector<Package> found = packages.FindAll(name);
    if (found.empty()) {
        throw Error(ErrorCode::notFound,
                    FillPattern("there is no package {}; `qvadmin package list` shows all", Quoted(name)));
    }
    if (found.size() > 1) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} packages are called {}; `qvadmin package remove` removes them all", found.size(),
                                Quoted(name)));
    }
    return found.front();
}

Sentence Named(const AddIn& addIn) { return FillPattern("{} (add-in {})", Visible(addIn.name), addIn.id); }

} // namespace management
