#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

using frame::Columns;
using frame::Found;

// ---- Item rights -------------------------------------------------------------------------------------------------

bool CQVBaseFun::InsertItemAce(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName, int power,
                               int unPower)
{
    const CString sql = FormatSql("INSERT INTO qv_ItemAce ( Col_QvItemID, Col_QvItemType, Col_FunName, Col_FunGenre, "
                                  "Col_Power, Col_UnPower ) VALUES ( %d, %d, '%s', '%s', %d, %d )",
                                  itemID, itemType, funName, funGenre, power, unPower);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::UpdateItemAce(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName, int power)
{
    const CString sql = FormatSql("UPDATE qv_ItemAce SET Col_Power = %d WHERE Col_QvItemID = %d AND Col_QvItemType = "
                                  "%d AND Col_FunName = '%s' AND Col_FunGenre = '%s'",
                                  power, itemID, itemType, funName, funGenre);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::DeleteItemAce(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName)
{
    const CString sql = FormatSql("DELETE FROM qv_ItemAce WHERE Col_QvItemID = %d AND Col_QvItemType = %d AND "
                                  "Col_FunGenre = '%s' AND Col_FunName = '%s'",
                                  itemID, itemType, funGenre, funName);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::DeleteItemAce(CAConnect& conn, int itemID, int itemType)
{
    const CString sql =
        FormatSql("DELETE FROM qv_ItemAce WHERE Col_QvItemID = %d AND Col_QvItemType = %d", itemID, itemType);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::ExistItemAce(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName,
                              bool& exists)
{
    exists = false;
    const CString sql = FormatSql("SELECT Col_QvItemID FROM qv_ItemAce WHERE Col_QvItemID = %d AND Col_QvItemType = %d "
                                  "AND Col_FunName = '%s' AND Col_FunGenre = '%s'",
                                  itemID, itemType, funName, funGenre);
    return frame::ReadFirst(conn, sql, Found(exists));
}

bool CQVBaseFun::LoadItemAceInfo(CAConnect& conn, int itemID, int itemType, CString funGenre, CString funName,
                                 int& power)
{
    const CString sql = FormatSql("SELECT Col_Power FROM qv_ItemAce WHERE Col_QvItemID = %d AND Col_QvItemType = %d "
                                  "AND Col_FunGenre = '%s' AND Col_FunName = '%s'",
                                  itemID, itemType, funGenre, funName);
    return frame::ReadFirst(conn, sql, Columns(power));
}

bool CQVBaseFun::LoadItemAceInfo(CAConnect& conn, int itemID, int itemType, CString funGenre, CStringArray& funNames,
                                 CUIntArray& powers)
{
    const CString sql = FormatSql("SELECT Col_FunName, Col_Power FROM qv_ItemAce WHERE Col_QvItemID = %d AND "
                                  "Col_QvItemType = %d AND Col_FunGenre = '%s'",
                                  itemID, itemType, funGenre);
    return frame::ReadEach(conn, sql, Columns(funNames, powers));
}

// ---- Item rights with respect to a second item -------------------------------------------------------------------

bool CQVBaseFun::InsertBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType,
                                  CString funGenre, CString funName, int power, int unPower)
{
    const CString sql =
        FormatSql("INSERT INTO qv_BIIAce ( Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, Col_FunGenre, "
                  "Col_FunName, Col_Power, Col_UnPower ) VALUES ( %d, %d, %d, %d, '%s', '%s', %d, %d )",
                  itemID, itemType, dItemID, dItemType, funGenre, funName, power, unPower);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::UpdateBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType,
                                  CString funGenre, CString funName, int power, int unPower)
{
    const CString sql =
        FormatSql("UPDATE qv_BIIAce SET Col_Power = %d, Col_UnPower = %d WHERE Col_QvItemID = %d AND Col_QvItemType = "
                  "%d AND Col_DQvItemID = %d AND Col_DQvItemType = %d AND Col_FunGenre = '%s' AND Col_FunName = '%s'",
                  power, unPower, itemID, itemType, dItemID, dItemType, funGenre, funName);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::DeleteBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType,
                                  CString funGenre, CString funName)
{
    const CString sql =
        FormatSql("DELETE FROM qv_BIIAce WHERE Col_QvItemID = %d AND Col_QvItemType = %d AND Col_DQvItemID = %d AND "
                  "Col_DQvItemType = %d AND Col_FunName = '%s' AND Col_FunGenre = '%s'",
                  itemID, itemType, dItemID, dItemType, funName, funGenre);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::DeleteBIIAceInfo(CAConnect& conn, int dItemID, int dItemType, CString funGenre, CString funName)
{
    const CString sql = FormatSql("DELETE FROM qv_BIIAce WHERE Col_DQvItemID = %d AND Col_DQvItemType = %d AND "
                                  "Col_FunName = '%s' AND Col_FunGenre = '%s'",
                                  dItemID, dItemType, funName, funGenre);
    return frame::Execute(conn, sql);
}

namespace {

CString PowerOnItem(int itemID, int itemType, int dItemID, int dItemType, const CString& funGenre,
                    const CString& funName)
{
    return FormatSql("SELECT Col_Power FROM qv_BIIAce WHERE Col_QvItemID = %d AND Col_QvItemType = %d AND "
                     "Col_DQvItemID = %d AND Col_DQvItemType = %d AND Col_FunGenre = '%s' AND Col_FunName = '%s'",
                     itemID, itemType, dItemID, dItemType, funGenre, funName);
}

} // namespace

bool CQVBaseFun::ExistBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType,
                                 CString funGenre, CString funName, bool& exists)
{
    exists = false;
    const CString sql = PowerOnItem(itemID, itemType, dItemID, dItemType, funGenre, funName);
    return frame::ReadFirst(conn, sql, Found(exists));
}

bool CQVBaseFun::GetBIIAceInfo(CAConnect& conn, int itemID, int itemType, int dItemID, int dItemType, CString funGenre,
                               CString funName, int& power)
{
    power = 0;
    const CString sql = PowerOnItem(itemID, itemType, dItemID, dItemType, funGenre, funName);
    return frame::ReadFirst(conn, sql, Columns(power));
}

bool CQVBaseFun::LoadBIIAceInfo(CAConnect& conn, int dItemID, int dItemType, CString funName, CString funGenre,
                                CUIntArray& itemIDs, CUIntArray& itemTypes)
{
    const CString sql = FormatSql("SELECT Col_QvItemID, Col_QvItemType FROM qv_BIIAce WHERE Col_DQvItemID = %d AND "
                                  "Col_DQvItemType = %d AND Col_FunName = '%s' AND Col_FunGenre = '%s' AND Col_Power = "
                                  "%d",
                                  dItemID, dItemType, funName, funGenre, 1);
    return frame::ReadEach(conn, sql, Columns(itemIDs, itemTypes));
}
