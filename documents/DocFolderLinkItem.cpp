#include "documents/DocFolderLinkItem.h"

#include "basefun/StatementFrame.h"
#include "documents/DocLinkStatement.h"

CDocFolderLinkItem::CDocFolderLinkItem() = default;

CDocFolderLinkItem::~CDocFolderLinkItem() = default;

bool CDocFolderLinkItem::SaveData(CAConnect& conn)
{
    // Table and creator's name are spelled so here alone; engines do not tell the case of either.
    const CString sql =
        FormatLink("INSERT INTO Tab_Doc_VFolder_LINK (Col_DispName,Col_Style, Col_HaveSubItem, Col_P_ObjID, "
                   "Col_S_ClassID, Col_S_ObjID, Col_IsRef, Col_RelType, Col_Ace, Col_Creator_ID, Col_Creator_name, "
                   "Col_Note, Col_Order ) VALUES ( '%s',%d,%d,%d,%d,%d,%d,%d,%d,%d, '%s', '%s', %d ) ",
                   *this);
    return frame::Execute(conn, sql, frame::OnError::drop);
}
