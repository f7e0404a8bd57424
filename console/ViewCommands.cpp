#include "console/ViewCommands.h"

#include "basefun/ItemTypes.h"
#include "console/Confirm.h"
#include "console/Opened.h"
#include "console/Render.h"
#include "console/Words.h"
#include "management/DatabaseError.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/organisation/DepartmentSync.h"
#include "management/organisation/Organisation.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace console::view {

namespace {

using namespace words;

constexpr std::string_view kPlaceholder = "_Empty";

constexpr Field kView{"VIEW", "", {}, Field::Use::given, "name of a system view, or view:NUMBER"};
constexpr Field kAll{"all", "", {}, Field::Use::given, "the views of single users too"};

std::string WrittenView(const Arguments& arguments) { return Given(arguments, kView).value_or(""); }

void RefuseTaken(const Organisation& organisation, const std::string& name, ItemKey except)
{
    for (const ItemKey other : organisation.SystemViewsNamed(name)) {
        if (other != except) {
            throw Error(ErrorCode::conflict,
                        fmt::format("the name {} is taken by {}", Quoted(name), organisation.Named(other)));
        }
    }
    const std::string others = fmt::format("Col_Type = {} AND Col_ID <> {}", kSystemView, except.id);
    if (const auto other = FindConfused(organisation.Connection(), "qv_View", name, others)) {
        ThrowConfused("name", name, *other);
    }
}

ViewData LoadView(Organisation& organisation, ItemKey key)
{
    return organisation.LoadView(key.id).value_or(ViewData{});
}

Value ShownType(int type) { return type == kSystemView ? Value(Choice{type, "system"}) : Value(std::int64_t{type}); }

/// The system view without an owner that bears the placeholder's name.
ItemKey FindPlaceholder(const Organisation& organisation)
{
    std::vector<ItemKey> found = organisation.SystemViewsNamed(kPlaceholder);
    std::erase_if(found, [&](ItemKey key) {
        const Place& place = *organisation.Find(key);
        return place.name != kPlaceholder || place.viewOwner != 0;
    });
    if (found.size() != 1) {
        throw Error(ErrorCode::conflict, fmt::format("there are {} of the name {}; rename them one by one",
                                                     Counted(found.size(), "view"), kPlaceholder));
    }
    return found.front();
}

std::string PresentDefault(Organisation& organisation)
{
    std::string name = organisation.DefaultViewName();
    if (name.empty()) {
        throw Error(ErrorCode::notFound, "there is no default view; `qvadmin view create` adds one");
    }
    return name;
}

void NameDefault(const Context& context, CAConnect& conn, const std::string& name)
{
    CheckName("view", name);
    Transaction transaction(conn);
    Organisation organisation(conn);
    const std::string present = PresentDefault(organisation);
    if (present != kPlaceholder) {
        throw Error(ErrorCode::conflict,
                    fmt::format("the default view is called {} already; `qvadmin view rename` gives "
                                "it another name",
                                Quoted(present)));
    }
    RefuseTaken(organisation, name, FindPlaceholder(organisation));
    organisation.NameDefaultView(name);
    transaction.Commit();
    context.terminal.err << fmt::format("named the default view {}\n", Visible(name));
}

/// What a deletion takes along.
struct Deletion {
    ItemKey key;
    std::string named;
    std::string text;    ///< to be shown
    std::size_t removed; ///< the view and what goes along

    bool operator==(const Deletion&) const = default;
};

Deletion PlanDeletion(CAConnect& conn, const Arguments& arguments)
{
    Organisation organisation(conn);
    const ItemKey key = organisation.FindView(WrittenView(arguments));
    const std::string named = organisation.Named(key);
    const std::size_t groups = organisation.Find(key)->children.size();
    const std::vector<Reference> traces = organisation.References(kItemTypeView, {key.id});
    return {key, named,
            fmt::format("delete {}{}{}\n", named, WithReferences(traces),
                        groups == 0
                            ? ""
                            : fmt::format("; {} directly below stay, without this view", Counted(groups, "group"))),
            1 + CountOf(traces)};
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareList(CLI::App& app, Arguments& arguments) { DeclareFlag(app, arguments, kAll); }

void DeclareOne(CLI::App& app, Arguments& arguments) { DeclareArgument(app, arguments, kView); }

void DeclareCreate(CLI::App& app, Arguments& arguments)
{
    DeclareArgument(app, arguments, kName);
    DeclareOption(app, arguments, kDescription);
    DeclareNumber(app, arguments, kSortIndex);
    DeclareNumber(app, arguments, kStyle);
    DeclareNumber(app, arguments, kDomainId);
    DeclareOption(app, arguments, kCreator);
}

void DeclareSet(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareOption(app, arguments, kDescription);
    DeclareNumber(app, arguments, kSortIndex);
}

void DeclareRename(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareArgument(app, arguments, kName);
}

void DeclareDefault(CLI::App& app, Arguments& arguments) { DeclareArgument(app, arguments, kName, false); }

void DeclareDelete(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareYes(app, arguments);
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Exit List(const Context& context)
{
    Opened opened(context.arguments);
    const Organisation organisation(opened.Directory().Connection());
    const bool all = Given(context.arguments, kAll).has_value();
    Table table{{"id", "name", "type", "owner_id", "sort_index", "users", "groups"}, {}};
    for (const Place& place : organisation.Places()) {
        if (place.key.type == kItemTypeView && (all || place.viewType == kSystemView)) {
            table.rows.push_back({std::int64_t{place.key.id}, place.name, ShownType(place.viewType),
                                  std::int64_t{place.viewOwner}, std::int64_t{place.sortIndex},
                                  std::int64_t{place.users}, static_cast<std::int64_t>(place.children.size())});
        }
    }
    Render(context.arguments.format, table, context.terminal.out);
    return Exit::done;
}

Exit Show(const Context& context)
{
    Opened opened(context.arguments);
    Organisation organisation(opened.Directory().Connection());
    const ItemKey key = organisation.FindView(WrittenView(context.arguments));
    const Place& place = *organisation.Find(key);
    const ViewData view = LoadView(organisation, key);
    const Record record = {
        {"id", std::int64_t{key.id}},
        {"name", view.name},
        {"path", organisation.PathOf(key)},
        {"type", ShownType(view.type)},
        {"owner_id", std::int64_t{view.ownerId}},
        {"public", view.isPublic},
        {"description", view.description},
        {"creator", view.creator},
        {"created", view.created ? Value(*view.created) : Value()},
        {"sort_index", std::int64_t{view.sortIndex}},
        {"domain_id", std::int64_t{view.domainId}},
        {"style", std::int64_t{view.style}},
        {"groups", static_cast<std::int64_t>(place.children.size())},
        {"users", std::int64_t{place.users}},
        {"users_below", std::int64_t{organisation.UsersBelow(key)}},
    };
    Render(context.arguments.format, record, context.terminal.out);
    return Exit::done;
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Exit Create(const Context& context)
{
    const Arguments& arguments = context.arguments;
    ViewData view;
    view.name = Given(arguments, kName).value_or("");
    CheckName("view", view.name);
    view.description = Given(arguments, kDescription).value_or("");
    view.creator = Given(arguments, kCreator).value_or("");
    view.sortIndex = GivenNumber(arguments, kSortIndex).value_or(view.sortIndex);
    view.style = GivenNumber(arguments, kStyle).value_or(0);
    view.domainId = GivenNumber(arguments, kDomainId).value_or(0);
    Opened opened(arguments);
    Transaction transaction(opened.Directory().Connection());
    Organisation organisation(opened.Directory().Connection());
    RefuseTaken(organisation, view.name, {});
    const int id = organisation.CreateView(view);
    transaction.Commit();
    context.terminal.out << id << '\n';
    return Exit::done;
}

Exit Set(const Context& context)
{
    const ViewChanges changes{Given(context.arguments, kDescription), GivenNumber(context.arguments, kSortIndex)};
    if (!changes.description && !changes.sortIndex) {
        throw Error(ErrorCode::invalid, "there is nothing to set; `qvadmin view set --help` lists what can be");
    }
    Opened opened(context.arguments);
    Transaction transaction(opened.Directory().Connection());
    Organisation organisation(opened.Directory().Connection());
    const ItemKey key = organisation.FindView(WrittenView(context.arguments));
    const ViewData stored = LoadView(organisation, key);
    ViewData view = stored;
    view.description = changes.description.value_or(stored.description);
    view.sortIndex = changes.sortIndex.value_or(stored.sortIndex);
    const bool changed = view != stored;
    if (changed) {
        organisation.ChangeView(key.id, changes);
    }
    transaction.Commit();
    context.terminal.err << fmt::format("{} {}\n", changed ? "changed" : "nothing to change in",
                                        organisation.Named(key));
    return Exit::done;
}

Exit Rename(const Context& context)
{
    const std::string name = Given(context.arguments, kName).value_or("");
    CheckName("view", name);
    Opened opened(context.arguments);
    Transaction transaction(opened.Directory().Connection());
    Organisation organisation(opened.Directory().Connection());
    const ItemKey key = organisation.FindView(WrittenView(context.arguments));
    // The views of single users may share their names.
    if (organisation.Find(key)->viewType == kSystemView) {
        RefuseTaken(organisation, name, key);
    }
    organisation.RenameView(key.id, name);
    transaction.Commit();
    context.terminal.err << fmt::format("renamed {} to {}\n", organisation.Named(key), Visible(name));
    return Exit::done;
}

Exit Default(const Context& context)
{
    const std::optional<std::string> name = Given(context.arguments, kName);
    Opened opened(context.arguments);
    if (name) {
        NameDefault(context, opened.Directory().Connection(), *name);
        return Exit::done;
    }
    Organisation organisation(opened.Directory().Connection());
    Render(context.arguments.format, Record{{"name", PresentDefault(organisation)}}, context.terminal.out);
    return Exit::done;
}

Exit Delete(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    const Deletion shown = PlanDeletion(conn, context.arguments);
    context.terminal.err << shown.text;
    RequireConfirmation(context, fmt::format("Delete {}?", shown.named), shown.removed);
    Transaction transaction(conn);
    ThrowIfChanged(shown, PlanDeletion(conn, context.arguments));
    Organisation organisation(conn);
    organisation.DeleteView(shown.key.id);
    const std::size_t departments = SyncDepartments(organisation, shown.key);
    transaction.Commit();
    context.terminal.err << fmt::format("deleted {}{}\n", shown.named, WithDepartments(departments));
    return Exit::done;
}

Exit Stamp(const Context& context)
{
    Opened opened(context.arguments);
    Transaction transaction(opened.Directory().Connection());
    Organisation organisation(opened.Directory().Connection());
    const ItemKey key = organisation.FindView(WrittenView(context.arguments));
    const std::vector<ItemKey> cycle = organisation.FindCycle(key);
    if (!cycle.empty()) {
        throw Error(ErrorCode::conflict, fmt::format("{} cannot be stamped, groups hang below themselves: {}",
                                                     organisation.Named(key), organisation.CycleText(cycle)));
    }
    organisation.StampView(key.id);
    transaction.Commit();
    context.terminal.err << fmt::format("stamped {}\n", organisation.Named(key));
    return Exit::done;
}

} // namespace console::view
