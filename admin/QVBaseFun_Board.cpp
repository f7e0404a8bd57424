#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

using frame::AsDateAndTime;
using frame::Columns;
using frame::WithoutFlag;

// ---- Bulletin board ----------------------------------------------------------------------------------------------
// No read looks at whether its statement opened.

bool CQVBaseFun::LoadBulletinInfo(CAConnect& conn, CStringArray& ids, CStringArray& subjects, CStringArray& creators,
                                  CStringArray& times)
{
    // The columns come in another order than the caller's arrays.
    return frame::ReadEachIgnoringClosed(
        conn,
        "SELECT Col_ID, Col_Creator_Name, Col_Subject, Col_Dt_Create FROM Kel_Board "
        "ORDER BY Col_Dt_Create DESC",
        Columns(WithoutFlag(ids), WithoutFlag(creators), WithoutFlag(subjects), AsDateAndTime(times)));
}

bool CQVBaseFun::GetBulletinContent(CAConnect& conn, CString boardID, CString& content)
{
    return frame::ReadFirstIgnoringClosed(conn,
                                          FormatSql("SELECT Col_Content FROM Kel_Board WHERE Col_ID = '%s'", boardID),
                                          Columns(WithoutFlag(content)));
}

bool CQVBaseFun::LoadBulletinAttachments(CAConnect& conn, CString boardID, CStringArray& fileNames)
{
    return frame::ReadEachIgnoringClosed(
        conn, FormatSql("SELECT Col_FileName FROM Kel_Board_Attach WHERE Col_BoardID = '%s'", boardID),
        Columns(WithoutFlag(fileNames)));
}

bool CQVBaseFun::LoadBulletinReplyInfo(CAConnect& conn, CString boardID, CUIntArray& ids, CStringArray& creators,
                                       CStringArray& times, CStringArray& contents)
{
    const CString sql = FormatSql("SELECT Col_ID, Col_Creator_Name, Col_Dt_Create, Col_Content FROM Kel_Board_Revert "
                                  "WHERE Col_BoardID = '%s' ORDER BY Col_Dt_Create",
                                  boardID);
    return frame::ReadEachIgnoringClosed(
        conn, sql, Columns(ids, WithoutFlag(creators), AsDateAndTime(times), WithoutFlag(contents)));
}

bool CQVBaseFun::LoadBulletinVisiterInfo(CAConnect& conn, CString boardID, CUIntArray& ids, CStringArray& items,
                                         CStringArray& itemNames, CStringArray& times, CUIntArray& readFlags)
{
    const CString sql = FormatSql("SELECT Col_ID, Col_QvItem, Col_QvItem_Name, Col_Dt_Readed, Col_Readed FROM "
                                  "Kel_Board_Visiter WHERE Col_BoardID = '%s' ORDER BY Col_Dt_Readed",
                                  boardID);
    return frame::ReadEachIgnoringClosed(
        conn, sql, Columns(ids, WithoutFlag(items), WithoutFlag(itemNames), AsDateAndTime(times), readFlags));
}

bool CQVBaseFun::DeleteBulletinItem(CAConnect& conn, CString boardID)
{
    return frame::Execute(conn, FormatSql("DELETE FROM Kel_Board WHERE Col_ID = '%s'", boardID));
}

bool CQVBaseFun::DeleteBulletinAttach(CAConnect& conn, CString boardID)
{
    return frame::Execute(conn, FormatSql("DELETE FROM Kel_Board_Attach WHERE Col_BoardID = '%s'", boardID));
}

bool CQVBaseFun::DeleteBulletinReply(CAConnect& conn, CString boardID)
{
    return frame::Execute(conn, FormatSql("DELETE FROM Kel_Board_Revert WHERE Col_BoardID = '%s'", boardID));
}

bool CQVBaseFun::DeleteBulletinVisiter(CAConnect& conn, CString boardID)
{
    return frame::Execute(conn, FormatSql("DELETE FROM Kel_Board_Visiter WHERE Col_BoardID = '%s'", boardID));
}
