#include "documents/DocRootLinkItem.h"

#include "basefun/StatementFrame.h"
#include "documents/DocLinkStatement.h"

CDocRootLinkItem::CDocRootLinkItem() = default;

CDocRootLinkItem::~CDocRootLinkItem() = default;

bool CDocRootLinkItem::SaveData(CAConnect& conn)
{
    const CString sql =
        FormatLink("INSERT INTO Tab_Doc_Root_Link (Col_DispName,Col_Style, Col_HaveSubItem,Col_P_ObjID, Col_S_ClassID, "
                   "Col_S_ObjID, Col_IsRef, Col_RelType, Col_Ace, Col_Creator_ID, Col_Creator_Name, Col_Note, "
                   "Col_Order) VALUES ('%s',%d,%d, %d,%d,%d,%d,%d,%d,%d,'%s','%s',%d )",
                   *this);
    return frame::Execute(conn, sql, frame::OnError::drop);
}
