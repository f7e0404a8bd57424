#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

using frame::AsDate;
using frame::Columns;
using frame::Found;

namespace {

constexpr int kCompanyRoot = 1;
constexpr const char* kDay = "%Y-%m-%d";
constexpr const char* kDayAndTime = "%Y-%m-%d %H:%M:%S";

} // namespace

// ---- Document roots: lists ---------------------------------------------------------------------------------------
// Of the lists with dates, the one of a type has the time of day and the others have the day alone.

bool CQVBaseFun::LoadDocRootInfo(CAConnect& conn, CUIntArray& ids, CStringArray& names, CStringArray& paths,
                                 CStringArray& created, CUIntArray& types)
{
    return frame::ReadEach(conn, "SELECT Col_ID, Col_Name, Col_DataPath, Col_Dt_Create, Col_Type FROM Tab_Doc_Root",
                           Columns(ids, names, paths, AsDate(created, kDay), types));
}

bool CQVBaseFun::LoadDocRootInfo(CAConnect& conn, int type, CUIntArray& ids, CStringArray& names, CStringArray& paths,
                                 CStringArray& created, CUIntArray& styles)
{
    const CString sql = FormatSql(
        "SELECT Col_ID, Col_Name, Col_DataPath, Col_Dt_Create, Col_Style FROM Tab_Doc_Root WHERE Col_Type = %d", type);
    return frame::ReadEach(conn, sql, Columns(ids, names, paths, AsDate(created, kDayAndTime), styles));
}

bool CQVBaseFun::LoadDocRootInfoEx(CAConnect& conn, CUIntArray& ids, CStringArray& names, CStringArray& paths,
                                   CStringArray& created, CUIntArray& types)
{
    return frame::ReadEach(conn,
                           "SELECT Col_ID, Col_Name, Col_DataPath, Col_Dt_Create, Col_Type FROM Tab_Doc_Root WHERE "
                           "Col_Type = 1 OR Col_Type = 2",
                           Columns(ids, names, paths, AsDate(created, kDay), types));
}

bool CQVBaseFun::LoadDocRootInfo(CAConnect& conn, CUIntArray& ids, CStringArray& names, CUIntArray& types)
{
    return frame::ReadEach(conn, "SELECT Col_ID, Col_Name, Col_Type FROM Tab_Doc_Root", Columns(ids, names, types));
}

bool CQVBaseFun::LoadDocRootInfo(CAConnect& conn, CUIntArray& ids, CStringArray& names, int type)
{
    const CString sql = FormatSql("SELECT Col_ID, Col_Name FROM Tab_Doc_Root WHERE Col_Type = %d", type);
    return frame::ReadEach(conn, sql, Columns(ids, names));
}

// ---- Document roots: look-ups ------------------------------------------------------------------------------------

bool CQVBaseFun::ExistDocRootItem(CAConnect& conn, CString name, int type, bool& exists)
{
    exists = false;
    const CString sql =
        FormatSql("SELECT Col_ID FROM Tab_Doc_Root WHERE Col_Name = '%s' AND Col_Type = %d", name, type);
    return frame::ReadFirst(conn, sql, Found(exists));
}

bool CQVBaseFun::GetDRItemIDByName(CAConnect& conn, CString name, int type, int& id)
{
    id = 0;
    const CString sql =
        FormatSql("SELECT Col_ID FROM Tab_Doc_Root WHERE Col_Name = '%s' AND Col_Type = %d ", name, type);
    return frame::ReadFirst(conn, sql, Columns(id));
}

bool CQVBaseFun::GetDocRootID(CAConnect& conn, CString name, int type, int& id)
{
    id = 0;
    const CString sql =
        FormatSql("SELECT Col_ID FROM Tab_Doc_Root WHERE Col_Name = '%s' AND Col_Type = %d", name, type);
    return frame::ReadFirst(conn, sql, Columns(id));
}

bool CQVBaseFun::GetDocRootInfo(CAConnect& conn, CString name, int type, CString& path, unsigned long& style)
{
    path = "";
    style = 0;
    const CString sql = FormatSql(
        "SELECT Col_DataPath, Col_Style FROM Tab_Doc_Root WHERE Col_Name = '%s' AND Col_Type = %d", name, type);
    return frame::ReadFirst(conn, sql, Columns(path, style));
}

bool CQVBaseFun::HasNoDefCorpDocRoot(CAConnect& conn, bool& result)
{
    result = false;
    const CString sql = FormatSql("SELECT COUNT(*) AS COL_COUNT FROM Tab_Doc_Root WHERE Col_Type = %d", kCompanyRoot);
    // True when there is one, against the operation's name: callers ask it so.
    return frame::ReadFirst(conn, sql, [&](CARecordset& row) { result = frame::ReadCount(conn, row, 1) > 0; });
}

// ---- Document roots: writes --------------------------------------------------------------------------------------

bool CQVBaseFun::UpdateDocRoot(CAConnect& conn, int id, CString name, CString path, int style)
{
    const CString sql =
        FormatSql("UPDATE Tab_Doc_Root SET Col_Name = '%s', Col_DataPath='%s', Col_Style = %d WHERE Col_ID = %d", name,
                  DoubleSlashes(conn, path), style, id);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::DeleteDRItem(CAConnect& conn, int id)
{
    return frame::Execute(conn, FormatSql("DELETE FROM Tab_Doc_Root WHERE Col_ID = %d", id));
}

bool CQVBaseFun::DeleteDocRoot(CAConnect& conn, int id)
{
    return frame::Execute(conn, FormatSql("DELETE FROM Tab_Doc_Root WHERE Col_ID = %d", id));
}

bool CQVBaseFun::DeleteDocRoot(CAConnect& conn, CString name, int type)
{
    return frame::Execute(conn,
                          FormatSql("DELETE FROM Tab_Doc_Root WHERE Col_Name = '%s' AND Col_Type = %d", name, type));
}

bool CQVBaseFun::DeleteDocRootLink(CAConnect& conn, int parentId, int classId, int objectId)
{
    const CString sql =
        FormatSql("DELETE FROM Tab_Doc_Root_Link WHERE Col_P_ObjID = %d AND Col_S_ClassID = %d AND Col_S_ObjID = %d",
                  parentId, classId, objectId);
    return frame::Execute(conn, sql);
}
