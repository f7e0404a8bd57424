#pragma once

#include "platform/CString.h"

/// What a link holds, under a document root as under a folder: the object of a class and id that is under a parent,
/// and how it is shown there. All texts empty and all numbers 0 at first.
struct DocLink {
    int m_nID = 0;            ///< for callers: SaveData neither writes nor sets it
    CString m_strDispName;    ///< not escaped
    int m_nStyle = 0;         ///< bits whose meaning is the server's
    int m_nHaveSubItem = 0;   ///< whether something is below it, as servers note it
    int m_nPObjID = 0;        ///< the parent's id
    int m_nSClassID = 0;      ///< the child's class; 105 for a folder
    int m_nSObjID = 0;        ///< the child's id
    bool m_bIsRef = false;    ///< whether the link is a reference, in the server's sense
    int m_nRelType = 0;       ///< the kind of relation, in the server's sense
    int m_nAce = 0;           ///< a right on the child, in the server's sense
    int m_nCreatorID = 0;     ///< the user who created it; 0 for none
    CString m_strCreatorName; ///< not escaped
    CString m_strNote;        ///< not escaped
    int m_nOrder = 0;         ///< a sort index, by which no operation sorts
};
