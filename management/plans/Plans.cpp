#include "management/plans/Plans.h"

#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/Lengths.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/Resolve.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <limits>
#include <tuple>

namespace management {

namespace {

std::vector<ListedPlan> AsList(const CUIntArray& ids, const CStringArray& names, const CStringArray& descriptions)
{
    std::vector<ListedPlan> plans;
    plans.reserve(static_cast<std::size_t>(ids.GetSize()));
    for (int i = 0; i < ids.GetSize(); ++i) {
        plans.push_back({static_cast<int>(ids[i]), Text(names[i]), Text(descriptions[i])});
    }
    std::ranges::sort(plans, [](const ListedPlan& a, const ListedPlan& b) {
        return std::tuple(NameKey(a.name), a.name, a.id) < std::tuple(NameKey(b.name), b.name, b.id);
    });
    return plans;
}

} // namespace

// ---- Plans ----------------------------------------------------------------------------------------------------------

CString Plans::EscapeLiteral(std::string_view text) const { return management::EscapeLiteral(m_conn, text); }

std::vector<ListedPlan> Plans::List()
{
    CUIntArray ids;
    CStringArray names;
    CStringArray descriptions;
    Run(m_conn, [&] { return CQVBaseFun::LoadFileBackPlan(m_conn, ids, names, descriptions); });
    return AsList(ids, names, descriptions);
}

std::optional<PlanData> Plans::Load(int id)
{
    return ReadRecord(m_conn,
                      fmt::format("SELECT Col_Name, Col_Desc, Col_Data FROM Tab_Doc_Backup_Plan WHERE Col_ID = {}", id),
                      &PlanData::name, &PlanData::description, &PlanData::data);
}

std::set<ItemKey> Plans::ItemsOf(int id)
{
    std::set<ItemKey> items;
    EachRow(m_conn,
            fmt::format("SELECT Col_QvItem_Type, Col_QvItem_ID FROM Tab_Doc_Backup_Rel WHERE Col_PlanID = {}", id),
            [&items](CARecordset& row) {
                ItemKey item{};
                ReadColumns(row, item.type, item.id);
                items.insert(item);
            });
    return items;
}

int Plans::CountAssignments(int id)
{
    return Number(m_conn, fmt::format("SELECT COUNT(*) FROM Tab_Doc_Backup_Rel WHERE Col_PlanID = {}", id));
}

std::vector<ListedPlan> Plans::OfItem(ItemKey item)
{
    CUIntArray ids;
    CStringArray names;
    CStringArray descriptions;
    Run(m_conn,
        [&] { return CQVBaseFun::LoadItemFileBackPlanInfo(m_conn, item.id, item.type, ids, names, descriptions); });
    std::vector<ListedPlan> plans = AsList(ids, names, descriptions);
    const auto isSame = [](const ListedPlan& a, const ListedPlan& b) { return a.id == b.id; };
    plans.erase(std::unique(plans.begin(), plans.end(), isSame), plans.end());
    return plans;
}

int Plans::Create(const PlanData& plan)
{
    RequireFits(m_conn, "Tab_Doc_Backup_Plan",
                {{"the name", "Col_Name", plan.name},
                 {"the description", "Col_Desc", plan.description},
                 {"the data", "Col_Data", plan.data}});
    Run(m_conn, [&] {
        return CQVBaseFun::InsertBackupPlanInfo(m_conn, EscapeLiteral(plan.name), EscapeLiteral(plan.description),
                                                EscapeLiteral(plan.data));
    });
    return LastInsertedId(m_conn);
}

// The module's own change writes all three columns; here each may be left as it is, also as NULL.
void Plans::Change(int id, const PlanChanges& changes)
{
    Assignments assignments(m_conn, "Tab_Doc_Backup_Plan");
    assignments.Text("Col_Name", "the name", changes.name);
    assignments.Text("Col_Desc", "the description", changes.description);
    assignments.Text("Col_Data", "the data", changes.data);
    assignments.Apply(id);
}

void Plans::Delete(int id)
{
    Run(m_conn, [&] { return CQVBaseFun::DeleteBackupPlan(m_conn, id); });
    const std::string sql = fmt::format("DELETE FROM Tab_Doc_Backup_Rel WHERE Col_PlanID = {}", id);
    WithDatabaseErrors(m_conn, [&] { m_conn.Execute(sql.c_str()); });
}

void Plans::Assign(int id, ItemKey item)
{
    Run(m_conn, [&] { return CQVBaseFun::InsertFileBackPlan(m_conn, item.type, item.id, id); });
}

void Plans::Unassign(int id, ItemKey item)
{
    Run(m_conn, [&] { return CQVBaseFun::DeleteFileBackPlan(m_conn, item.type, item.id, id); });
}

PlanKey FindPlan(Plans& plans, const std::string& argument)
{
    const std::optional<int> id = IdIn(argument, Translatable("a plan"));
    std::vector<ListedPlan> listed = plans.List();
    if (id) {
        std::erase_if(listed, [&](const ListedPlan& plan) { return plan.id != *id; });
    } else {
        KeepNamed(listed, argument, &ListedPlan::name);
    }
    std::vector<PlanKey> found;
    std::ranges::transform(listed, std::back_inserter(found),
                           [](const ListedPlan& plan) { return PlanKey{plan.id, plan.name}; });
    if (found.empty()) {
        throw Error(ErrorCode::notFound,
                    FillPattern("there is no backup plan {}; `qvadmin plan list` shows all", Quoted(argument)));
    }
    if (found.size() > 1) {
        std::vector<Candidate> candidates;
        candidates.reserve(found.size());
        for (const PlanKey& plan : found) {
            candidates.push_back({Named(plan), fmt::format("{}{}", kIdPrefix, plan.id)});
        }
        ThrowAmbiguous(argument, candidates);
    }
    return found.front();
}

void CheckPlanName(const std::string& name)
{
    CheckName("plan", name);
    if (name.starts_with(kIdPrefix)) {
        throw Error(ErrorCode::invalid,
                    FillPattern("the plan name {} begins with {}, as only ids do; choose another name", Quoted(name),
                                kIdPrefix));
    }
}

Sentence Named(const PlanKey& plan) { return FillPattern("{} (plan {})", Visible(plan.name), plan.id); }

// ---- The document log -----------------------------------------------------------------------------------------------

void DocLog::Add(const LogEntry& entry)
{
    RequireFits(m_conn, "Tab_Doc_Log",
                {{"the type", "Col_Type", entry.type}, {"the content", "Col_Content", entry.content}});
    Run(m_conn, [&] {
        return CQVBaseFun::InsertDocLog(m_conn, entry.classId, entry.objectId, EscapeLiteral(m_conn, entry.content),
                                        EscapeLiteral(m_conn, entry.type), entry.creatorId,
                                        EscapeLiteral(m_conn, entry.creator));
    });
}

void DocLog::List(const LogFilter& filter, const std::function<bool(const LogEntry&)>& take)
{
    std::string sql = "SELECT Col_R_ClassID, Col_R_ObjID, Col_Type, Col_Content, Col_Creator_ID, Col_Creator_Name, "
                      "Col_Genre FROM Tab_Doc_Log WHERE 1 = 1";
    sql += filter.classId ? fmt::format(" AND Col_R_ClassID = {}", *filter.classId) : "";
    sql += filter.objectId ? fmt::format(" AND Col_R_ObjID = {}", *filter.objectId) : "";
    sql += filter.type ? fmt::format(" AND Col_Type = '{}'", EscapeLiteral(m_conn, *filter.type).View()) : "";
    const auto read = [&take](CARecordset& row) {
        LogEntry entry;
        ReadColumns(row, entry.classId, entry.objectId, entry.type, entry.content, entry.creatorId, entry.creator,
                    entry.genre);
        return take(entry);
    };
    EachRow(m_conn, sql, read, filter.limit.value_or(std::numeric_limits<int>::max()));
}

} // namespace management
