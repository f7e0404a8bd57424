#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

using frame::Columns;

// ---- Object rights -----------------------------------------------------------------------------------------------

bool CQVBaseFun::LoadTabBIOAceInfo(CAConnect& conn, int classID, int objID, CString funName, CUIntArray& ids,
                                   CUIntArray& itemTypes, CUIntArray& itemIDs, CStringArray& itemNames,
                                   CUIntArray& powers)
{
    const CString sql = FormatSql("SELECT Col_ID, Col_QvItemType, Col_QvItemID, Col_QvItemName, Col_Power FROM "
                                  "Tab_BIOAce WHERE Col_ClassID = %d AND Col_ObjID = %d AND Col_FunName = '%s' ORDER "
                                  "BY Col_QvItemType",
                                  classID, objID, funName);
    return frame::ReadEach(conn, sql, Columns(ids, itemTypes, itemIDs, itemNames, powers));
}

bool CQVBaseFun::ExistTabBIOAceItem(CAConnect& conn, int classID, int objID, int itemID, int itemType, CString funName,
                                    CString funGenre, int& id)
{
    id = 0;
    const CString sql = FormatSql("SELECT Col_ID FROM Tab_BIOAce WHERE Col_ClassID = %d AND Col_ObjID = %d AND "
                                  "Col_QvItemID = %d AND Col_QvItemType = %d AND Col_FunName = '%s' AND Col_FunGenre = "
                                  "'%s'",
                                  classID, objID, itemID, itemType, funName, funGenre);
    return frame::ReadFirst(conn, sql, Columns(id));
}

bool CQVBaseFun::ExistTabBIOAce(CAConnect& conn, int classID, int objID, CString funName, CString /*unused*/,
                                bool& exists)
{
    exists = false;
    const CString sql = FormatSql("SELECT COUNT(*) AS ITEM_COUNT FROM Tab_BIOAce WHERE Col_ClassID = %d AND Col_ObjID "
                                  "= %d AND Col_FunName = '%s'",
                                  classID, objID, funName);
    return frame::ReadFirst(conn, sql, [&](CARecordset& row) { exists = frame::ReadCount(conn, row, 1) > 0; });
}

bool CQVBaseFun::LoadACEInfo(CAConnect& conn, int id, int& itemType, CString& itemName, int& power)
{
    const CString sql =
        FormatSql("SELECT Col_QvItemType, Col_QvItemName, Col_Power FROM Tab_BIOAce WHERE Col_ID = %d", id);
    return frame::ReadFirst(conn, sql, Columns(itemType, itemName, power));
}

bool CQVBaseFun::UpdateTabBIOAceInfo(CAConnect& conn, int id, int power, int unPower)
{
    const CString sql =
        FormatSql("UPDATE Tab_BIOAce SET Col_Power = %d, Col_UnPower = %d WHERE Col_ID = %d", power, unPower, id);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::DeleteTabBIOAceItem(CAConnect& conn, int id)
{
    return frame::Execute(conn, FormatSql("DELETE FROM Tab_BIOAce WHERE Col_ID = %d", id));
}
