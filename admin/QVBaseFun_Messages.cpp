#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

// ---- Messages ----------------------------------------------------------------------------------------------------

bool CQVBaseFun::ClearMsgData(CAConnect& conn, CString date)
{
    return DeleteMsgData(conn, date) && DeleteAttachNoMsg(conn) && DeleteRecvNoMsg(conn);
}

bool CQVBaseFun::DeleteMsgData(CAConnect& conn, CString date)
{
    return frame::ExecuteBuilt(conn, [&] {
        return FormatSql("DELETE FROM kel_Msg WHERE kel_Msg.Col_SendDate <= %s ", conn.GetDateStrOnSQL(date));
    });
}

bool CQVBaseFun::DeleteAttachNoMsg(CAConnect& conn)
{
    return frame::Execute(conn, "DELETE FROM kel_Msg_AttachMent WHERE ( (SELECT COUNT(*) FROM kel_Msg WHERE "
                                "kel_Msg_AttachMent.Col_MsgID = kel_Msg.Col_ID ) = 0 )");
}

bool CQVBaseFun::DeleteRecvNoMsg(CAConnect& conn)
{
    return frame::Execute(conn, "DELETE FROM kel_Msg_Rece WHERE ( (SELECT COUNT(*) FROM kel_Msg WHERE "
                                "kel_Msg_Rece.Col_MsgID = kel_Msg.Col_ID) = 0 )");
}

bool CQVBaseFun::GetMinDate(CAConnect& conn, CString /*text*/, COleDateTime& minDate)
{
    COleDateTime oldest = minDate;
    const bool ran =
        frame::ReadFirst(conn, "SELECT Col_SendDate FROM kel_Msg ORDER BY Col_SendDate ASC", frame::Columns(oldest));
    if (oldest < minDate) {
        frame::TakeValue(minDate, oldest);
    }
    return ran;
}

// ---- Login log ---------------------------------------------------------------------------------------------------

bool CQVBaseFun::DeleteLoginLogItem(CAConnect& conn, int id)
{
    return frame::Execute(conn, FormatSql("DELETE FROM kel_log WHERE Col_ID = %d", id));
}
