#include "access/AceItem.h"

#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

CAceItem::CAceItem() = default;

CAceItem::~CAceItem() = default;

bool CAceItem::SaveData(CAConnect& conn)
{
    const CString sql = FormatSql("INSERT INTO qv_ItemAce ( Col_QvItemID, Col_QvItemType, Col_FunName, Col_FunGenre, "
                                  "Col_Power, Col_UnPower ) VALUES ( %d, %d, '%s', '%s', %d, %d ",
                                  m_nQvItemID, m_nQvItemType, m_strFunName, m_strFunGenre, m_nPower, m_nUnPower);
    return frame::Execute(conn, sql, frame::OnError::drop);
}
