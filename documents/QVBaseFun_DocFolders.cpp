#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

using frame::AsDate;
using frame::Columns;
using frame::Found;

namespace {

/// The class number by which links name folders.
constexpr int kFolderClass = 105;

} // namespace

// ---- Folders -----------------------------------------------------------------------------------------------------

bool CQVBaseFun::GetMaxIDFromDocVFolder(CAConnect& conn, int& id)
{
    id = 0;
    return frame::ReadFirst(conn, "SELECT MAX(Col_ID) FROM Tab_Doc_VFolder", Columns(id));
}

bool CQVBaseFun::ExistFolderInRootLink(CAConnect& conn, CString name, int rootId, bool& exists)
{
    exists = false;
    const CString sql =
        FormatSql("SELECT Tab_Doc_VFolder.Col_ID FROM Tab_Doc_VFolder, Tab_Doc_Root_Link WHERE "
                  "Tab_Doc_VFolder.Col_Name = '%s' AND Tab_Doc_VFolder.Col_ID = Tab_Doc_Root_Link.Col_S_ObjID AND "
                  "Tab_Doc_Root_Link.Col_S_ClassID = %d AND Tab_Doc_Root_Link.Col_P_ObjID = %d",
                  name, kFolderClass, rootId);
    return frame::ReadFirst(conn, sql, Found(exists));
}

bool CQVBaseFun::ExistFolderInVFolderLink(CAConnect& conn, CString name, int parentFolderId, bool& exists)
{
    exists = false;
    const CString sql =
        FormatSql("SELECT Tab_Doc_VFolder.Col_ID FROM Tab_Doc_VFolder, Tab_Doc_VFolder_Link WHERE "
                  "Tab_Doc_VFolder.Col_Name = '%s' AND Tab_Doc_VFolder.Col_ID = Tab_Doc_VFolder_Link.Col_S_ObjID AND "
                  "Tab_Doc_VFolder_Link.Col_S_ClassID = %d AND Tab_Doc_VFolder_Link.Col_P_ObjID = %d",
                  name, kFolderClass, parentFolderId);
    return frame::ReadFirst(conn, sql, Found(exists));
}

bool CQVBaseFun::LoadDocRootFolder(CAConnect& conn, int rootId, CStringArray& names, CUIntArray& ids)
{
    const CString sql =
        FormatSql("SELECT Tab_Doc_VFolder.Col_ID, Tab_Doc_VFolder.Col_Name FROM Tab_Doc_VFolder, Tab_Doc_Root_Link "
                  "WHERE Tab_Doc_Root_Link.Col_P_ObjID = %d AND Tab_Doc_Root_Link.Col_S_ClassID = %d AND "
                  "Tab_Doc_Root_Link.Col_S_ObjID = Tab_Doc_VFolder.Col_ID",
                  rootId, kFolderClass);
    return frame::ReadEach(conn, sql, Columns(ids, names));
}

bool CQVBaseFun::LoadFolderSubFolder(CAConnect& conn, int parentFolderId, CStringArray& names, CUIntArray& ids)
{
    const CString sql =
        FormatSql("SELECT Tab_Doc_VFolder.Col_ID, Tab_Doc_VFolder.Col_Name FROM Tab_Doc_VFolder, Tab_Doc_VFolder_Link "
                  "WHERE Tab_Doc_VFolder_Link.Col_P_ObjID = %d AND Tab_Doc_VFolder_Link.Col_S_ClassID = %d AND "
                  "Tab_Doc_VFolder_Link.Col_S_ObjID = Tab_Doc_VFolder.Col_ID",
                  parentFolderId, kFolderClass);
    return frame::ReadEach(conn, sql, Columns(ids, names));
}

bool CQVBaseFun::GetFolerInfo(CAConnect& conn, int id, CString& name, CString& created)
{
    name = "";
    created = "";
    const CString sql = FormatSql("SELECT Col_Name, Col_Dt_Create FROM Tab_Doc_VFolder WHERE Col_ID = %d", id);
    return frame::ReadFirst(conn, sql, Columns(name, AsDate(created, "%Y-%m-%d %H:%M:%S")));
}

bool CQVBaseFun::UpdateFolderStyle(CAConnect& conn, int id, unsigned long style)
{
    return frame::Execute(conn, FormatSql("UPDATE Tab_Doc_VFolder SET Col_Style = %d WHERE Col_ID = %d", style, id));
}

bool CQVBaseFun::UpdateFolderName(CAConnect& conn, int id, CString name)
{
    return frame::Execute(conn, FormatSql("UPDATE Tab_Doc_VFolder SET Col_Name = '%s' WHERE Col_ID = %d", name, id));
}

bool CQVBaseFun::DeleteDocVFolder(CAConnect& conn, int id)
{
    return frame::Execute(conn, FormatSql("DELETE FROM Tab_Doc_VFolder WHERE Col_ID = %d", id));
}

bool CQVBaseFun::DeleteDocVFolderLink(CAConnect& conn, int parentFolderId, int classId, int objectId)
{
    const CString sql =
        FormatSql("DELETE FROM Tab_Doc_VFolder_Link WHERE Col_P_ObjID = %d AND Col_S_ClassID = %d AND Col_S_OBJID = %d",
                  parentFolderId, classId, objectId);
    return frame::Execute(conn, sql);
}
