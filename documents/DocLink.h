#pragma once

#include "platform/CString.h"

/// What a link holds, under a document root as under a folder: the object of a class and id that stands under a parent,
/// and how it is shown there. All texts empty and all numbers 0 at first.
struct DocLink {
    int m_nID = 0;
    CString m_strDispName; ///< not escaped
    int m_nStyle = 0;
    int m_nHaveSubItem = 0;
    int m_nPObjID = 0;   ///< the parent's id
    int m_nSClassID = 0; ///< the child's class and id
    int m_nSObjID = 0;
    bool m_bIsRef = false;
    int m_nRelType = 0;
    int m_nAce = 0;
    int m_nCreatorID = 0;
    CString m_strCreatorName; ///< not escaped
    CString m_strNote;        ///< not escaped
    int m_nOrder = 0;
};
