#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/EngineKind.h"
#include "directory/ViewItem.h"

using frame::Columns;

// ---- Views -------------------------------------------------------------------------------------------------------

bool CQVBaseFun::GetViewIDByName(CAConnect& conn, CString name, int type, int& id)
{
    id = 0;
    const CString sql = FormatSql("SELECT Col_ID FROM qv_View WHERE Col_Name = '%s' AND Col_Type = %d", name, type);
    return frame::ReadFirst(conn, sql, Columns(id));
}

int CQVBaseFun::ExistViewName(CAConnect& conn, CString name, int type)
{
    const CString sql =
        dbaccess::EngineKindOf(conn) == dbaccess::EngineKind::comparesInCapitals
            ? FormatSql("SELECT Col_ID FROM qv_View WHERE upper(Col_Name) = upper('%s') AND Col_Type = %d", name, type)
            : FormatSql("SELECT Col_ID FROM qv_View WHERE Col_Name = '%s' AND Col_Type = %d", name, type);
    int id = 0;
    return frame::ReadFirst(conn, sql, Columns(id)) ? id : 0;
}

bool CQVBaseFun::LoadView(CAConnect& conn, CUIntArray& ids, CStringArray& names, int type)
{
    const CString sql =
        FormatSql("SELECT Col_ID, Col_Name FROM qv_View WHERE Col_Type = %d ORDER BY Col_ItemIndex, Col_Name", type);
    return frame::ReadEach(conn, sql, Columns(ids, names));
}

int CQVBaseFun::LoadViewbyUserID(CAConnect& conn, int ownerID, CUIntArray& ids, CStringArray& names, int type,
                                 bool createIfEmpty)
{
    const CString select = FormatSql("SELECT Col_ID, Col_Name FROM qv_View WHERE Col_OwnerID = %d AND Col_Type = %d "
                                     "ORDER BY Col_ItemIndex, Col_Name",
                                     ownerID, type);
    if (!frame::ReadEach(conn, select, Columns(ids, names))) {
        return 0;
    }
    // Arrays that came with entries never lead to a placeholder.
    if (!ids.IsEmpty() || !createIfEmpty) {
        return 1;
    }
    const CString insert =
        FormatSql("INSERT INTO qv_View (Col_Name,Col_OwnerID,Col_Type) VALUES ( '_Empty','%d','%d' )", ownerID, type);
    if (frame::Run(conn, insert, frame::OnError::keep_and_notify) == 0) {
        return 0;
    }
    return LoadViewbyUserID(conn, ownerID, ids, names, type, true);
}

bool CQVBaseFun::LoadSysView(CAConnect& conn, CObList& views)
{
    const CString sql = FormatSql(
        "SELECT Col_ID, Col_Name, Col_Description, Col_ItemIndex FROM qv_View WHERE Col_Type = %d", kSystemView);
    return frame::ReadObjects<CViewItem>(conn, sql, views,
                                         frame::Members(&CViewItem::m_nID, &CViewItem::m_strName,
                                                        &CViewItem::m_strDescription, &CViewItem::m_nItemIndex));
}

bool CQVBaseFun::GetViewNameByID(CAConnect& conn, int id, CString& name)
{
    name = "";
    return frame::ReadFirst(conn, FormatSql("SELECT Col_Name FROM qv_View WHERE Col_ID = %d", id), Columns(name));
}

bool CQVBaseFun::UpdateViewName(CAConnect& conn, int id, CString name)
{
    return frame::Execute(conn, FormatSql("UPDATE qv_View SET Col_Name = '%s' WHERE Col_ID = %d", name, id));
}

bool CQVBaseFun::GetDefaultSysView(CAConnect& conn, CString& name)
{
    name = "";
    const CString sql = FormatSql("SELECT Col_Name FROM qv_View WHERE Col_Type = %d AND Col_OwnerID = 0 ", kSystemView);
    return frame::ReadFirst(conn, sql, Columns(name));
}

bool CQVBaseFun::UpdateDefaultSysView(CAConnect& conn, CString name)
{
    // Only while it bears the placeholder's name: a view is named once in this way.
    const CString sql =
        FormatSql("UPDATE qv_View SET Col_Name = '%s' WHERE Col_Type = %d AND Col_OwnerID = 0 AND Col_Name = '_Empty' ",
                  name, kSystemView);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::HasNoSysView(CAConnect& conn, bool& flag)
{
    flag = false;
    const CString sql = FormatSql("SELECT COUNT(*) AS COL_COUNT FROM qv_View WHERE Col_Type = %d", kSystemView);
    // True when there is one, against the operation's name: callers ask it so.
    return frame::ReadFirst(conn, sql, [&](CARecordset& row) { flag = frame::ReadCount(conn, row, 1) > 0; });
}

bool CQVBaseFun::GetSysViewCount(CAConnect& conn, int& count)
{
    count = 0;
    const CString sql = FormatSql("SELECT COUNT(*) FROM qv_View WHERE Col_Type = %d", kSystemView);
    return frame::ReadFirstIgnoringClosed(conn, sql, Columns(count));
}

bool CQVBaseFun::DeleteViewItem(CAConnect& conn, int id)
{
    return frame::Execute(conn, FormatSql("DELETE FROM qv_View WHERE Col_ID = %d", id));
}
