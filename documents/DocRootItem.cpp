#include "documents/DocRootItem.h"

#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

CDocRootItem::CDocRootItem() : m_dtCreate(COleDateTime::GetCurrentTime()) {}

CDocRootItem::~CDocRootItem() = default;

bool CDocRootItem::SaveData(CAConnect& conn)
{
    m_strDataPath = DoubleSlashes(conn, m_strDataPath);
    const CString sql = FormatSql(
        "INSERT INTO Tab_Doc_Root (Col_Name, Col_Desc, Col_DataPath, Col_Dt_Create, Col_MaxSize, Col_UsedSize, "
        "Col_DispName, Col_HaveSubItem, Col_Type, Col_Style, Col_OwnerID) VALUES ('%s', '%s', '%s', '%s', %d, %d, "
        "'%s', %d, %d, %d, %d )",
        m_strName, m_strDesc, m_strDataPath, m_dtCreate.Format("%Y-%m-%d %H:%M:%S"), m_nMaxSize, m_nUsedSize,
        m_strDispName, m_bHaveSubItem, m_nType, m_ulStyle, m_nOwnerID);
    return frame::Execute(conn, sql, frame::OnError::drop);
}

bool CDocRootItem::LoadData(CAConnect& conn)
{
    const CString sql =
        FormatSql("SELECT Col_Name, Col_Desc, Col_DataPath, Col_MaxSize, Col_UsedSize, Col_DispName, Col_HaveSubItem, "
                  "Col_Type, Col_Style, Col_OwnerID, Col_Dt_Create FROM Tab_Doc_Root WHERE Col_ID = %d",
                  m_nID);
    COleDateTime created = m_dtCreate;
    const bool ran =
        frame::ReadFirst(conn, sql,
                         frame::Columns(m_strName, m_strDesc, m_strDataPath, m_nMaxSize, m_nUsedSize, m_strDispName,
                                        m_bHaveSubItem, m_nType, m_ulStyle, m_nOwnerID, created),
                         frame::OnError::drop);
    frame::TakeValue(m_dtCreate, created);
    return ran;
}

bool CDocRootItem::UpdateData(CAConnect& conn)
{
    const CString sql =
        FormatSql("UPDATE Tab_Doc_Root SET Col_Name = '%s', Col_Desc = '%s', Col_DataPath = '%s', Col_MaxSize = %d, "
                  "Col_UsedSize = %d, Col_DispName = '%s', Col_HaveSubItem = %d, Col_Type = %d, Col_Style = %d, "
                  "Col_OwnerID = %d WHERE Col_ID = %d",
                  m_strName, m_strDesc, m_strDataPath, m_nMaxSize, m_nUsedSize, m_strDispName, m_bHaveSubItem, m_nType,
                  m_ulStyle, m_nOwnerID, m_nID);
    return frame::Execute(conn, sql, frame::OnError::drop);
}
