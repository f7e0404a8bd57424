#include "management/import/Synchronisation.h"

#include "basefun/ItemTypes.h"
#include "management/DatabaseError.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/Sha256.h"
#include "management/Text.h"
#include "management/organisation/Organisation.h"
#include "management/roles/Roles.h"
#include "management/users/UserDepartment.h"
#include "management/users/Users.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <set>
#include <utility>

namespace management {

namespace {

/// A group or view, and all groups below.
std::set<ItemKey> ItemsOfScope(const Organisation& organisation, const std::string& scope)
{
    const ItemKey top = organisation.FindHolder(scope);
    const std::vector<ItemKey> below = organisation.Below(top);
    std::set<ItemKey> items(below.begin(), below.end());
    items.insert(top);
    return items;
}

std::string_view WordOf(LeaverAction action)
{
    switch (action) {
    case LeaverAction::lock:
        return "locked";
    case LeaverAction::move:
        return "moved";
    case LeaverAction::remove:
        return "deleted";
    default:
        return "leaver";
    }
}

void MoveLeaver(Call& call, const std::string& scope, const std::string& target, const UserKey& user)
{
    Directory& directory = call.Directory();
    const std::optional<FieldValues> before = directory.Load(user.id);
    if (!before) {
        return;
    }
    Roles roles(call.Connection());
    for (const ItemKey item : ItemsOfScope(Organisation(call.Connection()), scope)) {
        roles.Unlink(item, user.id);
    }
    UserDepartment department(call.Connection(), target);
    FieldValues values;
    department.AddTo(values);
    ChangeUser(directory, user.id, values);
    department.Place(user.id, *before);
}

} // namespace

void ReadLeaverAction(const std::string& text, SynchronisationOptions& options)
{
    constexpr std::string_view kMove = "move:";
    if (text.starts_with(kMove)) {
        options.action = LeaverAction::move;
        options.target = text.substr(kMove.size());
    } else if (text == "lock" || text == "delete") {
        options.action = text == "lock" ? LeaverAction::lock : LeaverAction::remove;
    } else if (text != "list") {
        throw Error(ErrorCode::invalid,
                    FillPattern("--leavers {} is none of list, lock, move:/VIEW/GROUP and delete", Quoted(text)));
    }
}

Synchronisation::Synchronisation(Call& call, const ImportSource& source, const ColumnOptions& columns,
                                 SynchronisationOptions options)
    : m_options(std::move(options))
{
    const Organisation organisation(call.Connection());
    const std::set<ItemKey> scope = ItemsOfScope(organisation, m_options.scope);
    if (m_options.action == LeaverAction::move && scope.contains(organisation.FindGroup(m_options.target))) {
        throw Error(ErrorCode::invalid, FillPattern("{} is in the scope {} itself; nothing was imported",
                                                    Visible(m_options.target), Visible(m_options.scope)));
    }
    m_report.unreadable = ReadLogins(source, columns, m_logins);
    m_leavers = FindLeavers(call.Connection());
    m_report.leavers = m_leavers.size();
    if (m_options.action != LeaverAction::list) {
        RequireFew();
    }
}

std::string Synchronisation::ScopeCondition(CAConnect& conn) const
{
    std::vector<int> groups = {0};
    std::vector<int> views = {0};
    for (const ItemKey item : ItemsOfScope(Organisation(conn), m_options.scope)) {
        (item.type == kItemTypeView ? views : groups).push_back(item.id);
    }
    return fmt::format(
        "Col_RelType = {} AND Col_DQvItemType = {} AND ((Col_QvItemType = {} AND Col_QvItemID IN ({})) OR "
        "(Col_QvItemType = {} AND Col_QvItemID IN ({})))",
        kMembership, kItemTypeUser, kItemTypeGroup, fmt::join(groups, ", "), kItemTypeView, fmt::join(views, ", "));
}

std::vector<Synchronisation::Leaver> Synchronisation::FindLeavers(CAConnect& conn)
{
    std::vector<Leaver> leavers;
    m_report.people = 0;
    EachRow(
        conn,
        fmt::format("SELECT Col_ID, Col_LoginName, Col_Disabled, Col_IsSuper, Col_IsSystem FROM qv_User WHERE Col_ID "
                    "IN (SELECT Col_DQvItemID FROM qv_Relation WHERE {}) ORDER BY Col_ID",
                    ScopeCondition(conn)),
        [&](CARecordset& row) {
            ++m_report.people;
            Leaver leaver{{NumberIn(row, 1), TextIn(row, 2)}, NumberIn(row, 4) != 0 || NumberIn(row, 5) != 0};
            const bool hasLeftBefore = m_options.action == LeaverAction::lock && NumberIn(row, 3) != 0;
            if (!hasLeftBefore && !IsBuiltIn(leaver.key) && !m_logins.Find(NameKey(leaver.key.login))) {
                leavers.push_back(std::move(leaver));
            }
        });
    return leavers;
}

void Synchronisation::RequireFew() const
{
    if (!m_options.limit.Allows(m_leavers.size(), m_report.people)) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} of {} in {} are not in the file, and --max-leavers allows {}; nothing was imported",
                                m_leavers.size(), Counted(m_report.people, "user"), Visible(m_options.scope),
                                m_options.limit.Text()));
    }
}

std::string Synchronisation::Digest() const
{
    Sha256 digest;
    for (const Leaver& leaver : m_leavers) {
        digest.Add(fmt::format("{} ", leaver.key.id));
    }
    return digest.Finish();
}

void Synchronisation::Apply(Call& call)
{
    if (m_report.unreadable > 0) {
        return;
    }
    for (const auto& [leaver, reason] : DealWithAll(call)) {
        ++(reason.IsEmpty() ? m_report.done : m_report.failed);
        call.Row(Value(), TextValue(leaver->key.login), std::int64_t{leaver->key.id},
                 TextValue(std::string(reason.IsEmpty() ? WordOf(m_options.action) : "failed")), SentenceValue(reason));
    }
}

std::vector<Synchronisation::DealtWith> Synchronisation::DealWithAll(Call& call)
{
    std::vector<DealtWith> all;
    if (m_options.action == LeaverAction::list) {
        std::ranges::transform(m_leavers, std::back_inserter(all),
                               [](const Leaver& leaver) { return DealtWith(&leaver, ""); });
        return all;
    }
    if (m_leavers.empty()) {
        return all;
    }
    Change change(call);
    const std::vector<Leaver> present = FindLeavers(call.Connection());
    for (const Leaver& leaver : m_leavers) {
        if (std::ranges::find(present, leaver.key, &Leaver::key) == present.end()) {
            continue;
        }
        try {
            Deal(call, leaver);
            all.emplace_back(&leaver, "");
        } catch (const DatabaseError&) {
            throw;
        } catch (const Error& e) {
            all.emplace_back(&leaver, e.Why());
        }
    }
    change.Finish();
    return all;
}

void Synchronisation::Deal(Call& call, const Leaver& leaver)
{
    if (leaver.isPrivileged && !m_options.allowPrivileges) {
        throw Error(ErrorCode::isProtected,
                    FillPattern("{} has left and is a super or system user, which needs --allow-privileges",
                                Named(leaver.key)));
    }
    switch (m_options.action) {
    case LeaverAction::lock:
        call.Directory().SetLocked(leaver.key.id, true);
        break;
    case LeaverAction::move:
        MoveLeaver(call, m_options.scope, m_options.target, leaver.key);
        break;
    default:
        DeleteUser(call.Directory(), leaver.key);
    }
}

} // namespace management
