#include "access/TabBIOAceItem.h"

#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

CTabBIOAceItem::CTabBIOAceItem() : m_dtCreate(COleDateTime::GetCurrentTime()) {}

CTabBIOAceItem::~CTabBIOAceItem() = default;

bool CTabBIOAceItem::SaveData(CAConnect& conn)
{
    m_strQvItemName = DoubleQuotes(m_strQvItemName);
    m_strCreatorName = DoubleQuotes(m_strCreatorName);
    const CString sql =
        FormatSql("INSERT INTO Tab_BIOAce ( Col_QvItemID, Col_QvItemType, Col_ClassID, Col_ObjID, "
                  "Col_FunName, Col_FunGenre, Col_Power, Col_UnPower, Col_QvItemName, Col_Creator_ID, "
                  "Col_Creator_Name, Col_Dt_Create ) VALUES ( %d, %d, %d, %d, '%s', '%s', %d, %d, "
                  "'%s', %d, '%s', '%s' )",
                  m_nQvItemID, m_nQvItemType, m_nClassID, m_nObjID, m_strFunName, m_strFunGenre, m_nPower, m_nUnPower,
                  m_strQvItemName, m_nCreatorID, m_strCreatorName, m_dtCreate.Format("%Y-%m-%d %H:%M:%S"));
    return frame::Execute(conn, sql, frame::OnError::drop);
}
