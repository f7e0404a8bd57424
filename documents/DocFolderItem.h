#pragma once

#include "platform/Api.h"
#include "platform/CObject.h"
#include "platform/COleDateTime.h"
#include "platform/CString.h"

class CAConnect;

/// One row of Tab_Doc_VFolder: a folder that exists in the catalogue only. Link rows place it under roots and folders.
///
/// A plain value. The remarks at the texts say what is done to each before it enters a statement;
/// CAConnect::EscapeLiteral does the rest.
class QV_API CDocFolderItem : public CObject {
public:
    /// Texts empty, numbers 0, no sub-items, created now (local time).
    CDocFolderItem();
    ~CDocFolderItem() override;

    /// Adds this folder; the new id is not read back (CQVBaseFun::GetMaxIDFromDocVFolder tells the highest).
    /// @return whether nothing was raised; an error's text is dropped.
    bool SaveData(CAConnect& conn);

    int m_nID = 0;               ///< for callers: SaveData neither writes nor sets it
    CString m_strName;           ///< not escaped
    int m_nStyle = 0;            ///< bits whose meaning is the server's
    bool m_bHaveSubItem = false; ///< whether something is below it, as servers note it
    int m_nGClassID = 0;         ///< class of an object that belongs to the folder
    int m_nGObjID = 0;           ///< id of an object that belongs to the folder
    int m_nCreatorID = 0;        ///< the user who created it; 0 for none
    CString m_strCreatorName;    ///< not escaped
    COleDateTime m_dtCreate;     ///< when it was created, to the second
};
