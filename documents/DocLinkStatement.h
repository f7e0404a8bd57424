#pragma once

#include "basefun/SqlText.h"
#include "documents/DocLink.h"

/// The statement that adds a link. @param sql  takes the members but the id, in their order.
inline CString FormatLink(SqlText<CString, int, int, int, int, int, bool, int, int, int, CString, CString, int> sql,
                          const DocLink& link)
{
    return FormatSql<CString, int, int, int, int, int, bool, int, int, int, CString, CString, int>(
        sql, link.m_strDispName, link.m_nStyle, link.m_nHaveSubItem, link.m_nPObjID, link.m_nSClassID, link.m_nSObjID,
        link.m_bIsRef, link.m_nRelType, link.m_nAce, link.m_nCreatorID, link.m_strCreatorName, link.m_strNote,
        link.m_nOrder);
}
