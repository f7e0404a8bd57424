#include "documents/DocFolderItem.h"

#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

CDocFolderItem::CDocFolderItem() : m_dtCreate(COleDateTime::GetCurrentTime()) {}

CDocFolderItem::~CDocFolderItem() = default;

bool CDocFolderItem::SaveData(CAConnect& conn)
{
    const CString sql = FormatSql("INSERT INTO Tab_Doc_VFolder (Col_Name,Col_Style,Col_HaveSubItem, Col_G_ClassID, "
                                  "Col_G_ObjID, Col_Creator_ID, Col_Creator_Name, Col_Dt_Create ) VALUES "
                                  "('%s',%d,%d,%d,%d,%d,'%s','%s')",
                                  m_strName, m_nStyle, m_bHaveSubItem, m_nGClassID, m_nGObjID, m_nCreatorID,
                                  m_strCreatorName, m_dtCreate.Format("%Y-%m-%d %H:%M:%S"));
    return frame::Execute(conn, sql, frame::OnError::drop);
}
