#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/EngineKind.h"

using frame::Columns;
using frame::Found;

namespace {

// The groups of a name directly under a parent.
CString GroupUnder(const CAConnect& conn, const char* column, const CString& name, int parentID, int parentType)
{
    const CString sameName = dbaccess::EngineKindOf(conn) == dbaccess::EngineKind::comparesInCapitals
                                 ? FormatSql("upper(qv_Group.Col_Name) = upper('%s')", name)
                                 : FormatSql("qv_Group.Col_Name = '%s'", name);
    return FormatSql(
        "SELECT %s FROM qv_Group, qv_Relation WHERE %s AND qv_Group.Col_ID = qv_Relation.Col_DQvItemID AND "
        "qv_Relation.Col_QvItemID = %d AND qv_Relation.Col_QvItemType = %d AND Col_DQvItemType = %d AND "
        "Col_RelType = %d ",
        column, sameName, parentID, parentType, kItemTypeGroup, kMembership);
}

} // namespace

// ---- Groups ------------------------------------------------------------------------------------------------------

bool CQVBaseFun::GetGroupIDByName(CAConnect& conn, CString /*name*/, int& id)
{
    // The name is ignored: callers ask right after adding a group and take the newest.
    id = -1;
    return frame::ReadFirst(conn, "SELECT MAX(Col_ID) FROM qv_Group", Columns(id));
}

bool CQVBaseFun::GetGroupIDByNameAndOwner(CAConnect& conn, CString name, int& id, int ownerID)
{
    id = -1;
    const CString sql = FormatSql("SELECT qv_Group.Col_ID FROM qv_Group,QV_RELATION WHERE qv_Group.Col_Name = '%s' AND "
                                  "QV_RELATION.COL_QVITEMID = %d AND QV_RELATION.COL_DQVITEMID = qv_Group.Col_ID",
                                  name, ownerID);
    return frame::ReadFirst(conn, sql, Columns(id));
}

bool CQVBaseFun::ExistGroupName(CAConnect& conn, CString name, bool& exists)
{
    exists = false;
    const CString sql = dbaccess::EngineKindOf(conn) == dbaccess::EngineKind::comparesInCapitals
                            ? FormatSql("SELECT Col_Name FROM qv_Group WHERE upper(Col_Name) = upper('%s')", name)
                            : FormatSql("SELECT Col_Name FROM qv_Group WHERE Col_Name = '%s'", name);
    return frame::ReadFirst(conn, sql, Found(exists));
}

bool CQVBaseFun::ExistGroupName(CAConnect& conn, CString name, int parentID, int parentType, bool& exists)
{
    exists = false;
    return frame::ReadFirst(conn, GroupUnder(conn, "qv_Group.Col_Name", name, parentID, parentType), Found(exists));
}

int CQVBaseFun::ExistGroupName(CAConnect& conn, CString name, int parentID, int parentType)
{
    int id = 0;
    const CString sql = GroupUnder(conn, "qv_Group.Col_ID", name, parentID, parentType);
    return frame::ReadFirst(conn, sql, Columns(id)) ? id : 0;
}

bool CQVBaseFun::LoadGroup(CAConnect& conn, int parentID, int parentType, CUIntArray& ids, CStringArray& names)
{
    const CString sql = ReplaceSysSQL(FormatSql(
        "SELECT qv_Group.Col_ID, qv_Group.Col_Name FROM qv_Group,qv_Relation WHERE qv_Relation.Col_DQvItemID = "
        "qv_Group.Col_ID AND qv_Relation.Col_DQvItemType=%d AND qv_Relation.Col_QvItemID = %d AND "
        "qv_Relation.Col_QvItemType = %d AND qv_Relation.Col_RelType = %d ORDER BY qv_Group.Col_ItemIndex, "
        "qv_Group.Col_Name",
        kItemTypeGroup, parentID, parentType, kMembership));
    return frame::ReadEach(conn, sql, Columns(ids, names));
}

bool CQVBaseFun::LoadGroupInfo(CAConnect& conn, int id, CString& name, int& itemIndex, CString& description)
{
    const CString sql =
        FormatSql("SELECT Col_Name, Col_ItemIndex, Col_Description FROM qv_Group WHERE Col_ID = %d", id);
    return frame::ReadFirst(conn, sql, Columns(name, itemIndex, description));
}

bool CQVBaseFun::UpdateGroupInfo(CAConnect& conn, int id, CString name, int itemIndex, CString description)
{
    const CString sql =
        FormatSql(" UPDATE qv_Group SET Col_Name = '%s', Col_Description = '%s', Col_ItemIndex = %d WHERE Col_ID = %d",
                  name, description, itemIndex, id);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::GetGroupStyle(CAConnect& conn, int id, int& style)
{
    style = 0;
    const CString sql = FormatSql("SELECT Col_Style FROM qv_Group WHERE Col_ID = %d", id);
    return frame::ReadFirstIgnoringClosed(conn, sql, Columns(style));
}

bool CQVBaseFun::UpdateGroupStyle(CAConnect& conn, int id, int style)
{
    return frame::Execute(conn, FormatSql("UPDATE qv_Group SET Col_Style = %d WHERE Col_ID = %d", style, id));
}

bool CQVBaseFun::DelGroupItemByID(CAConnect& conn, int id)
{
    return frame::Execute(conn, FormatSql("DELETE FROM qv_Group WHERE Col_ID = %d", id));
}
