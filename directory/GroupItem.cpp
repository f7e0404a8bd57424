#include "directory/GroupItem.h"

#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

CGroupItem::CGroupItem() : m_dtCreate(COleDateTime::GetCurrentTime()) {}

CGroupItem::~CGroupItem() = default;

int CGroupItem::SaveData(CAConnect& conn)
{
    const CString sql = FormatSql("INSERT INTO qv_Group (Col_Name,Col_Description,Col_Creator_Name,Col_Dt_Create,"
                                  "Col_ItemIndex, Col_DomainID, Col_Style) VALUES ( '%s','%s','%s','%s',%d, %d, %d )",
                                  m_strName, m_strDescription, m_strCreatorName, m_dtCreate.Format("%Y-%m-%d"),
                                  m_nItemIndex, m_nDomainID, m_nStyle);
    return frame::Run(conn, sql, frame::OnError::keep);
}

bool CGroupItem::LoadInfoByID(CAConnect& conn)
{
    const CString sql = FormatSql("SELECT Col_Name, Col_Description, Col_Creator_Name, Col_Dt_Create, Col_ItemIndex, "
                                  "Col_DomainID, Col_Style FROM qv_Group WHERE Col_ID = %d",
                                  m_nID);
    return frame::FindFirst(
        conn, sql,
        frame::Columns(m_strName, m_strDescription, m_strCreatorName, m_dtCreate, m_nItemIndex, m_nDomainID, m_nStyle),
        frame::OnError::keep);
}

bool CGroupItem::Update(CAConnect& conn)
{
    const CString sql =
        FormatSql("UPDATE qv_Group SET Col_Name = '%s', Col_Description = '%s', Col_Creator_Name = '%s', "
                  "Col_ItemIndex = %d, Col_Style = %d, Col_DomainID = %d WHERE Col_ID = %d",
                  m_strName, m_strDescription, m_strCreatorName, m_nItemIndex, m_nStyle, m_nDomainID, m_nID);
    return frame::Execute(conn, sql, frame::OnError::keep);
}
