#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/EngineKind.h"

using frame::Columns;
using frame::Found;

// ---- Roles -------------------------------------------------------------------------------------------------------

bool CQVBaseFun::GetRoleIDByName(CAConnect& conn, CString name, CString appName, int domainID, int& id)
{
    id = 0;
    const CString sql =
        FormatSql("SELECT Col_ID FROM qv_Role WHERE Col_Name = '%s' AND Col_AppName = '%s' AND Col_DomainID = %d", name,
                  appName, domainID);
    return frame::ReadFirst(conn, sql, Columns(id));
}

bool CQVBaseFun::ExistRoleName(CAConnect& conn, CString name, CString appName, int domainID, bool& exists)
{
    exists = false;
    const CString sql =
        dbaccess::EngineKindOf(conn) == dbaccess::EngineKind::comparesInCapitals
            ? FormatSql("SELECT Col_ID FROM qv_Role WHERE upper(Col_Name) = upper('%s') AND upper(Col_AppName) = "
                        "upper('%s') AND Col_DomainID = %d",
                        name, appName, domainID)
            : FormatSql("SELECT Col_ID FROM qv_Role WHERE Col_Name = '%s' AND Col_AppName = '%s' AND Col_DomainID = %d",
                        name, appName, domainID);
    return frame::ReadFirst(conn, sql, Found(exists));
}

bool CQVBaseFun::LoadRole(CAConnect& conn, CString appName, int domainID, CUIntArray& ids, CStringArray& names)
{
    const CString sql = FormatSql("SELECT Col_ID, Col_Name FROM qv_Role WHERE Col_DomainID = %d AND Col_AppName = '%s'",
                                  domainID, appName);
    return frame::ReadEach(conn, sql, Columns(ids, names));
}

bool CQVBaseFun::LoadRole(CAConnect& conn, CString appName, int domainID, CUIntArray& ids, CStringArray& names,
                          CStringArray& descriptions)
{
    const CString sql = FormatSql(
        "SELECT Col_ID, Col_Name, Col_Description FROM qv_Role WHERE Col_DomainID = %d AND Col_AppName = '%s' ",
        domainID, appName);
    return frame::ReadEach(conn, sql, Columns(ids, names, descriptions));
}

bool CQVBaseFun::GetRoleNameByID(CAConnect& conn, int id, CString& name)
{
    name = "";
    const CString sql = FormatSql("SELECT Col_Name FROM qv_Role WHERE Col_ID = %d", id);
    return frame::ReadFirstIgnoringClosed(conn, sql, Columns(name));
}

bool CQVBaseFun::DeleteRole(CAConnect& conn, int id)
{
    return frame::Execute(conn, FormatSql("DELETE FROM qv_Role WHERE Col_ID = %d", id));
}

// The three lists of a user's roles differ on purpose: the first has roles of every application and no default role;
// the other two have this system's only and end with the default role, id 0 when there is none.

bool CQVBaseFun::LoadHMRole(CAConnect& conn, int userID, CUIntArray& ids, CStringArray& names)
{
    const CString sql = FormatSql("SELECT qv_Role.Col_ID, qv_Role.Col_Name FROM qv_Role,qv_Relation WHERE "
                                  "qv_Role.Col_ID = qv_Relation.Col_QvItemID AND qv_Relation.Col_QvItemType = %d AND "
                                  "qv_Relation.Col_DQvItemID = %d AND qv_Relation.Col_DQvItemType = %d",
                                  kItemTypeRole, userID, kItemTypeUser);
    return frame::ReadEach(conn, sql, Columns(ids, names));
}

bool CQVBaseFun::LoadHMRole(CAConnect& conn, int userID, CUIntArray& ids, CStringArray& names,
                            CStringArray& descriptions)
{
    const CString sql = FormatSql("SELECT qv_Role.Col_ID, qv_Role.Col_Name, qv_Role.Col_Description FROM "
                                  "qv_Role,qv_Relation WHERE qv_Role.Col_ID = qv_Relation.Col_QvItemID AND "
                                  "qv_Relation.Col_QvItemType = %d AND qv_Relation.Col_DQvItemID = %d AND "
                                  "qv_Relation.Col_DQvItemType = %d AND Col_AppName = '%s'",
                                  kItemTypeRole, userID, kItemTypeUser, "Tolvan");
    if (!frame::ReadEach(conn, sql, Columns(ids, names, descriptions))) {
        return false;
    }
    int id = 0;
    CString name;
    CString description;
    if (GetDefaultRoleInfo(conn, id, name, description)) {
        ids.Add(static_cast<unsigned int>(id));
        names.Add(name);
        descriptions.Add(description);
    }
    return true;
}

bool CQVBaseFun::LoadHMRole(CAConnect& conn, int userID, CUIntArray& ids)
{
    const CString sql = FormatSql("SELECT qv_Role.Col_ID, qv_Role.Col_Name, qv_Role.Col_Description FROM "
                                  "qv_Role,qv_Relation WHERE qv_Role.Col_ID = qv_Relation.Col_QvItemID AND "
                                  "qv_Relation.Col_QvItemType = %d AND qv_Relation.Col_DQvItemID = %d AND "
                                  "qv_Relation.Col_DQvItemType = %d AND qv_Role.Col_AppName = 'Tolvan'",
                                  kItemTypeRole, userID, kItemTypeUser);
    if (!frame::ReadEach(conn, sql, Columns(ids))) {
        return false;
    }
    int id = 0;
    if (GetDefaultRoleID(conn, id)) {
        ids.Add(static_cast<unsigned int>(id));
    }
    return true;
}

bool CQVBaseFun::GetDefaultRoleInfo(CAConnect& conn, int& id, CString& name, CString& description)
{
    id = 0;
    return frame::ReadFirst(conn,
                            "SELECT Col_ID,Col_Name,Col_Description FROM qv_Role WHERE Col_Name = 'everyone' AND "
                            "Col_AppName = 'Tolvan' ",
                            Columns(id, name, description));
}

bool CQVBaseFun::GetDefaultRoleID(CAConnect& conn, int& id)
{
    id = 0;
    return frame::ReadFirst(conn, "SELECT Col_ID FROM qv_Role WHERE Col_Name = 'everyone' AND Col_AppName = 'Tolvan' ",
                            Columns(id));
}
