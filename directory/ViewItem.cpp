#include "directory/ViewItem.h"

#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

CViewItem::CViewItem() : m_dtCreate(COleDateTime::GetCurrentTime()) {}

CViewItem::~CViewItem() = default;

int CViewItem::SaveData(CAConnect& conn)
{
    const CString sql = FormatSql(
        "INSERT INTO qv_View (Col_Name,Col_Type,Col_Description,Col_OwnerID, Col_ItemIndex, Col_Creator_Name, "
        "Col_Dt_Create, Col_DomainID, Col_Style, Col_IsPublic) VALUES ('%s',%d,'%s',%d,%d,'%s','%s',%d,%d, %d)",
        m_strName, m_nType, m_strDescription, m_nOwnerID, m_nItemIndex, m_strCreatorName, m_dtCreate.Format("%Y-%m-%d"),
        m_nDomainID, m_nStyle, m_bIsPublic);
    return frame::Run(conn, sql, frame::OnError::keep);
}

int CViewItem::LoadInfoByID(CAConnect& conn)
{
    const CString sql =
        FormatSql("SELECT Col_Name, Col_Type, Col_Description, Col_OwnerID, Col_ItemIndex, Col_Creator_Name, "
                  "Col_Dt_Create, Col_DomainID, Col_Style, Col_IsPublic FROM qv_View WHERE Col_ID = %d",
                  m_nID);
    const bool found =
        frame::FindFirst(conn, sql,
                         frame::Columns(m_strName, m_nType, m_strDescription, m_nOwnerID, m_nItemIndex,
                                        m_strCreatorName, m_dtCreate, m_nDomainID, m_nStyle, m_bIsPublic),
                         frame::OnError::keep);
    return found ? 1 : 0;
}

int CViewItem::UpdateData(CAConnect& conn)
{
    // Less than CGroupItem::Update writes, on purpose: creator, style and domain of a view stay.
    const CString sql =
        FormatSql("UPDATE qv_View SET Col_Name ='%s', Col_Description = '%s', Col_ItemIndex = %d WHERE Col_ID = %d",
                  m_strName, m_strDescription, m_nItemIndex, m_nID);
    return frame::Execute(conn, sql, frame::OnError::keep) ? 1 : 0;
}
