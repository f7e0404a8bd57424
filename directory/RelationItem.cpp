#include "directory/RelationItem.h"

#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

CRelationItem::CRelationItem() = default;

CRelationItem::~CRelationItem() = default;

int CRelationItem::SaveData(CAConnect& conn)
{
    const CString sql =
        FormatSql("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, "
                  "Col_DQvItemType, Col_RelType, Col_Ref, Col_ViewID ) VALUES (%d,%d,%d,%d,%d,%d,%d )",
                  m_nQvItemID, m_nQvItemType, m_nDQvItemID, m_nDQvItemType, m_nRelType, m_nRef, m_nViewID);
    return frame::Run(conn, sql, frame::OnError::keep);
}

int CRelationItem::DelData(CAConnect& conn)
{
    const CString sql =
        FormatSql("DELETE FROM qv_Relation WHERE Col_QvItemID = %d AND Col_QvItemType = %d AND Col_DQvItemID = %d AND "
                  "Col_DQvItemType = %d AND Col_RelType = %d AND Col_Ref = %d",
                  m_nQvItemID, m_nQvItemType, m_nDQvItemID, m_nDQvItemType, m_nRelType, m_nRef);
    return frame::Run(conn, sql, frame::OnError::keep);
}
