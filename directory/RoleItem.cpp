#include "directory/RoleItem.h"

#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

CRoleItem::CRoleItem() : m_strAppName("Tolvan"), m_dtCreate(COleDateTime::GetCurrentTime()) {}

CRoleItem::~CRoleItem() = default;

bool CRoleItem::SaveData(CAConnect& conn)
{
    const CString sql = FormatSql(
        "INSERT INTO qv_Role (Col_Name,Col_Description, Col_Dt_Create, Col_Creator_Name, Col_ItemIndex, Col_DomainID, "
        "Col_Disabled, Col_AppName, Col_Genre, Col_G_ClassID, Col_Type ) VALUES ( '%s', '%s', '%s', '%s', %d, %d, %d, "
        "'%s', '%s', %d, %d )",
        m_strName, m_strDescription, m_dtCreate.Format("%Y-%m-%d %H:%M:%S"), m_strCreatorName, m_nItemIndex,
        m_nDomainID, m_bDisabled, m_strAppName, m_strGenre, m_nGClassID, m_nType);
    return frame::Execute(conn, sql, frame::OnError::drop);
}

bool CRoleItem::LoadData(CAConnect& conn)
{
    const CString sql =
        FormatSql("SELECT Col_Name, Col_Description, Col_Dt_Create, Col_Creator_Name, Col_ItemIndex, Col_DomainID, "
                  "Col_Disabled, Col_AppName, Col_Genre, Col_G_ClassID, Col_Type FROM qv_Role WHERE Col_ID = %d",
                  m_nID);
    return frame::ReadFirst(conn, sql,
                            frame::Columns(m_strName, m_strDescription, m_dtCreate, m_strCreatorName, m_nItemIndex,
                                           m_nDomainID, m_bDisabled, m_strAppName, m_strGenre, m_nGClassID, m_nType),
                            frame::OnError::drop);
}

bool CRoleItem::UpdateData(CAConnect& conn)
{
    const CString sql = FormatSql("UPDATE qv_Role SET Col_Name = '%s', Col_Description = '%s' WHERE Col_ID = %d",
                                  m_strName, m_strDescription, m_nID);
    return frame::Execute(conn, sql, frame::OnError::drop);
}
