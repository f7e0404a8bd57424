#include "directory/JobTitleItem.h"

#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

CJobTitleItem::CJobTitleItem() = default;

CJobTitleItem::~CJobTitleItem() = default;

bool CJobTitleItem::SaveData(CAConnect& conn)
{
    const CString sql = FormatSql("INSERT INTO qv_JobTitle (Col_QvItemID,Col_QvItemType,Col_JobTitle, Col_DQvItemID, "
                                  "Col_DQvItemType, Col_JobTitle_Desc, Col_DQvItemName) VALUES "
                                  "(%d,%d,'%s',%d,%d,'%s','%s') ",
                                  m_nQvItemID, m_nQvItemType, m_strJobTitle, m_nDQvItemID, m_nDQvItemType,
                                  m_strDescription, m_strDQvItemName);
    return frame::Execute(conn, sql, frame::OnError::drop);
}
