#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

using frame::Columns;

namespace {

CString DataOf(const CAConnect& conn, const CString& data) { return DoubleSlashes(conn, DoubleQuotes(data)); }

} // namespace

// ---- Add-ins -----------------------------------------------------------------------------------------------------

bool CQVBaseFun::InsertAddInInfo(CAConnect& conn, CString name, CString data, int addInType, bool isPublic,
                                 CString desc, CString packageName, int index)
{
    const CString sql = FormatSql("INSERT INTO kel_AddIn ( Col_Name, Col_Data, Col_AddInType, Col_IsPublic, Col_Desc, "
                                  "Col_PackageName, Col_Index ) VALUES ( '%s', '%s', %d, %d, '%s', '%s', %d )",
                                  name, DataOf(conn, data), addInType, isPublic, desc, packageName, index);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::ExistAddInInfo(CAConnect& conn, CString name, int addInType, int& id)
{
    id = 0;
    const CString sql =
        FormatSql("SELECT Col_ID FROM kel_AddIn WHERE Col_AddInType = %d AND Col_Name = '%s'", addInType, name);
    return frame::ReadFirst(conn, sql, Columns(id));
}

bool CQVBaseFun::ExistAddInItem(CAConnect& conn, int addInType, CString name, CString packageName, int& id)
{
    id = 0;
    const CString sql = FormatSql("SELECT Col_ID FROM kel_AddIn WHERE Col_AddInType = %d AND Col_Name = '%s' AND "
                                  "Col_PackageName = '%s'",
                                  addInType, name, packageName);
    return frame::ReadFirst(conn, sql, Columns(id));
}

bool CQVBaseFun::UpdateAddInInfo(CAConnect& conn, CString name, int addInType, CString data, CString desc)
{
    const CString sql = FormatSql("UPDATE kel_AddIn SET Col_Data = '%s', Col_Desc = '%s' WHERE Col_Name = '%s' AND "
                                  "Col_AddInType = %d",
                                  DataOf(conn, data), desc, name, addInType);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::UpdateAddInInfo(CAConnect& conn, int id, CString data, CString desc)
{
    const CString sql = FormatSql("UPDATE kel_AddIn SET Col_Data = '%s', Col_Desc = '%s' WHERE Col_ID = %d",
                                  DataOf(conn, data), desc, id);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::GetAddInInfo(CAConnect& conn, CString name, int addInType, CString& data)
{
    const CString sql =
        FormatSql("SELECT Col_Data FROM kel_AddIn WHERE Col_Name = '%s' AND Col_AddInType = %d", name, addInType);
    return frame::ReadFirst(conn, sql, Columns(data));
}

bool CQVBaseFun::LoadKelAddIn(CAConnect& conn, CUIntArray& ids, CUIntArray& types, CStringArray& names,
                              CUIntArray& disabled, CUIntArray& isPublic, CStringArray& descs,
                              CStringArray& packageNames)
{
    // The two flags come in the other order than the caller's arrays.
    return frame::ReadEach(conn,
                           "SELECT Col_ID, Col_AddInType, Col_Name, Col_IsPublic, Col_Disabled, Col_Desc, "
                           "Col_PackageName FROM kel_AddIn ORDER BY Col_Index DESC",
                           Columns(ids, types, names, isPublic, disabled, descs, packageNames));
}

bool CQVBaseFun::EnableAddInItem(CAConnect& conn, int id, bool& disabled)
{
    return frame::Execute(conn, FormatSql("UPDATE kel_AddIn SET Col_Disabled = %d WHERE Col_ID = %d", disabled, id));
}

bool CQVBaseFun::DeleteAddInItem(CAConnect& conn, int id)
{
    return frame::Execute(conn, FormatSql("DELETE FROM kel_AddIn WHERE Col_ID = %d", id));
}

bool CQVBaseFun::DeleteAddIn(CAConnect& conn, CString packageName)
{
    return frame::Execute(conn, FormatSql("DELETE FROM kel_AddIn WHERE Col_PackageName = '%s'", packageName));
}

bool CQVBaseFun::GetAddInItemMaxIndex(CAConnect& conn, int& index)
{
    index = 0;
    return frame::ReadFirst(conn, "SELECT MAX(Col_Index) FROM kel_AddIn", Columns(index));
}

bool CQVBaseFun::GetAddInItemIndex(CAConnect& conn, int id, int& index)
{
    index = 0;
    return frame::ReadFirst(conn, FormatSql("SELECT Col_Index FROM kel_AddIn WHERE Col_ID = %d", id), Columns(index));
}

bool CQVBaseFun::UpdateAddInItemIndex(CAConnect& conn, int id, int index)
{
    return frame::Execute(conn, FormatSql("UPDATE kel_AddIn SET Col_Index = %d WHERE Col_ID = %d", index, id));
}

// ---- Packages ----------------------------------------------------------------------------------------------------

bool CQVBaseFun::LoadAddInPackageInfo(CAConnect& conn, CUIntArray& ids, CStringArray& names, CStringArray& versions,
                                      CStringArray& descs, CUIntArray& disabled)
{
    return frame::ReadEach(conn, "SELECT Col_ID,Col_Name,Col_Ver,Col_Desc,Col_Disabled FROM kel_Package",
                           Columns(ids, names, versions, descs, disabled));
}

bool CQVBaseFun::GetPackageInfo(CAConnect& conn, CString name, int& id, int& version)
{
    id = 0;
    version = 0;
    return frame::ReadFirst(conn, FormatSql("SELECT Col_ID, Col_Ver FROM Kel_Package WHERE Col_Name = '%s'", name),
                            Columns(id, version));
}

bool CQVBaseFun::UpdatePackageInfo(CAConnect& conn, CString modifyTime, int version, CString desc, int id)
{
    const CString sql =
        FormatSql("UPDATE Kel_Package SET Col_Dt_Modify='%s',Col_Ver=%d,Col_Desc='%s' WHERE Col_ID = %d", modifyTime,
                  version, desc, id);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::InsertPackageInfo(CAConnect& conn, CString name, CString modifyTime, int version, CString desc,
                                   int& id)
{
    const CString sql = FormatSql("INSERT INTO Kel_Package (Col_Name,Col_Dt_Modify,Col_Ver,Col_Desc,Col_Disabled) "
                                  "VALUES ( '%s', '%s', %d, '%s', 0 )",
                                  name, modifyTime, version, desc);
    // A refused insert is reported, and the highest id is given all the same: callers know it so.
    static_cast<void>(frame::Execute(conn, sql));
    return frame::ReadFirst(conn, "SELECT MAX(Col_ID) AS PackID FROM Kel_Package", Columns(id));
}

bool CQVBaseFun::DeletePackage(CAConnect& conn, int id)
{
    return frame::Execute(conn, FormatSql("DELETE FROM kel_Package WHERE Col_ID = %d", id));
}
