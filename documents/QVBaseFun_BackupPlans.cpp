#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

using frame::Columns;
using frame::Found;

// ---- Backup plans ------------------------------------------------------------------------------------------------

bool CQVBaseFun::LoadFileBackPlan(CAConnect& conn, CUIntArray& ids, CStringArray& names, CStringArray& descriptions)
{
    return frame::ReadEach(conn, "SELECT Col_ID, Col_Name, Col_Desc FROM Tab_Doc_Backup_Plan",
                           Columns(ids, names, descriptions));
}

bool CQVBaseFun::LoadFileBackPlan(CAConnect& conn, CUIntArray& ids, CStringArray& names)
{
    return frame::ReadEach(conn, "SELECT Col_ID, Col_Name FROM Tab_Doc_Backup_Plan", Columns(ids, names));
}

bool CQVBaseFun::GetFileBackPlanInfo(CAConnect& conn, int id, CString& data)
{
    return frame::ReadFirst(conn, FormatSql("SELECT Col_Data FROM Tab_Doc_Backup_Plan WHERE Col_ID = %d", id),
                            Columns(data));
}

bool CQVBaseFun::GetBackupPlanID(CAConnect& conn, CString name, int& id)
{
    return frame::ReadFirst(conn, FormatSql("SELECT Col_ID FROM Tab_Doc_Backup_Plan WHERE Col_Name = '%s'", name),
                            Columns(id));
}

bool CQVBaseFun::ExistBackupPlan(CAConnect& conn, CString name, bool& exists)
{
    exists = false; // before the look-up, which notifies the connection's window when it fails
    int id = 0;
    if (GetBackupPlanID(conn, name, id) && id > 0) {
        exists = true;
    }
    return true; // also after a failure: callers look at the flag alone
}

bool CQVBaseFun::InsertBackupPlanInfo(CAConnect& conn, CString name, CString description, CString data)
{
    const CString sql = FormatSql("INSERT INTO Tab_Doc_Backup_Plan ( Col_Name, Col_Data, Col_Desc ) VALUES ( '%s', "
                                  "'%s', '%s' ) ",
                                  name, data, description);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::UpdateBackupPlanInfo(CAConnect& conn, int id, CString name, CString description, CString data)
{
    const CString sql = FormatSql("UPDATE Tab_Doc_Backup_Plan SET Col_Name = '%s', Col_Desc = '%s', Col_Data = '%s' "
                                  "WHERE Col_ID = %d",
                                  name, description, data, id);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::DeleteBackupPlan(CAConnect& conn, int id)
{
    return frame::Execute(conn, FormatSql("DELETE FROM Tab_Doc_Backup_Plan WHERE Col_ID = %d", id));
}

bool CQVBaseFun::DeleteBackupRel(CAConnect& conn, int id)
{
    return frame::Execute(conn, FormatSql("DELETE FROM Tab_Doc_Backup_Rel WHERE Col_ID = %d", id));
}

// ---- Backup plans: who has them ----------------------------------------------------------------------------------

bool CQVBaseFun::LoadItemFileBackPlanInfo(CAConnect& conn, int itemId, int itemType, CUIntArray& planIds,
                                          CStringArray& planNames)
{
    // It joins with the assignment's own id and not with its plan; callers know it so, and the one below as well.
    const CString sql =
        FormatSql("SELECT Tab_Doc_Backup_Plan.Col_ID, Tab_Doc_Backup_Plan.Col_Name FROM Tab_Doc_Backup_Plan, "
                  "Tab_Doc_Backup_Rel WHERE Tab_Doc_Backup_Plan.Col_ID = Tab_Doc_Backup_Rel.Col_ID AND "
                  "Tab_Doc_Backup_Rel.Col_QvItem_Type = %d AND Tab_Doc_Backup_Rel.Col_QvItem_ID = %d",
                  itemType, itemId);
    return frame::ReadEach(conn, sql, Columns(planIds, planNames));
}

bool CQVBaseFun::LoadItemFileBackPlanInfo(CAConnect& conn, int itemId, int itemType, CUIntArray& planIds,
                                          CStringArray& planNames, CStringArray& planDescriptions)
{
    const CString sql =
        FormatSql("SELECT Tab_Doc_Backup_Plan.Col_ID, Tab_Doc_Backup_Plan.Col_Name, Tab_Doc_Backup_Plan.Col_Desc FROM "
                  "Tab_Doc_Backup_Plan, Tab_Doc_Backup_Rel WHERE Tab_Doc_Backup_Plan.Col_ID = "
                  "Tab_Doc_Backup_Rel.Col_PlanID AND Tab_Doc_Backup_Rel.Col_QvItem_Type = %d AND "
                  "Tab_Doc_Backup_Rel.Col_QvItem_ID = %d",
                  itemType, itemId);
    return frame::ReadEach(conn, sql, Columns(planIds, planNames, planDescriptions));
}

bool CQVBaseFun::ExistItemFileBackPlanRel(CAConnect& conn, int itemType, int itemId, int planId, bool& exists)
{
    exists = false;
    const CString sql = FormatSql("SELECT Col_ID FROM Tab_Doc_Backup_Rel WHERE Col_QvItem_Type = %d AND Col_QvItem_ID "
                                  "= %d AND Col_PlanID = %d",
                                  itemType, itemId, planId);
    return frame::ReadFirst(conn, sql, Found(exists));
}

bool CQVBaseFun::InsertFileBackPlan(CAConnect& conn, int itemType, int itemId, int planId)
{
    const CString sql = FormatSql("INSERT INTO Tab_Doc_Backup_Rel ( Col_QvItem_Type, Col_QvItem_ID, Col_PlanID ) "
                                  "VALUES ( %d,%d,%d )",
                                  itemType, itemId, planId);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::DeleteFileBackPlan(CAConnect& conn, int itemType, int itemId, int planId)
{
    const CString sql = FormatSql("DELETE FROM Tab_Doc_Backup_Rel WHERE Col_QvItem_Type = %d AND Col_QvItem_ID = %d "
                                  "AND Col_PlanID = %d",
                                  itemType, itemId, planId);
    return frame::Execute(conn, sql);
}

namespace {

using Assignment = bool (*)(CAConnect& conn, int itemType, int itemId, int planId);

// Does the same for a group, then for each member in the order returned, sub-groups with all that is below them. What
// is done stays done when a step fails.
bool ForGroup(CAConnect& conn, int groupId, int planId, Assignment assign)
{
    CUIntArray ids;
    CUIntArray types;
    if (!assign(conn, kItemTypeGroup, groupId, planId) ||
        !CQVBaseFun::LoadSubMember(conn, groupId, kItemTypeGroup, ids, types)) {
        return false;
    }
    for (int i = 0; i < ids.GetSize(); ++i) {
        const int id = static_cast<int>(ids[i]);
        const int type = static_cast<int>(types[i]);
        if (type == kItemTypeGroup && !ForGroup(conn, id, planId, assign)) {
            return false;
        }
        if (type == kItemTypeUser && !assign(conn, kItemTypeUser, id, planId)) {
            return false;
        }
    }
    return true;
}

} // namespace

bool CQVBaseFun::InsertGroupFileBackPlan(CAConnect& conn, int groupId, int planId)
{
    return ForGroup(conn, groupId, planId, &CQVBaseFun::InsertFileBackPlan);
}

bool CQVBaseFun::DeleteGroupFileBackPlan(CAConnect& conn, int groupId, int planId)
{
    return ForGroup(conn, groupId, planId, &CQVBaseFun::DeleteFileBackPlan);
}

// ---- Document log ------------------------------------------------------------------------------------------------

bool CQVBaseFun::InsertDocLog(CAConnect& conn, int classId, int objectId, CString content, CString type, int creatorId,
                              CString creatorName)
{
    const CString sql = FormatSql("INSERT INTO Tab_Doc_Log (Col_Content, Col_Type, Col_R_ClassID, Col_R_ObjID, "
                                  "Col_Creator_ID, Col_Creator_Name, Col_Genre) VALUES ('%s', '%s', %d, %d, %d, '%s', "
                                  "'%s')",
                                  content, type, classId, objectId, creatorId, creatorName, "KelDoc");
    return frame::Execute(conn, sql);
}
