#pragma once

#include "platform/Api.h"
#include "platform/CObject.h"
#include "platform/COleDateTime.h"
#include "platform/CString.h"

class CAConnect;

/// One row of Tab_Doc_Root: a named storage area of the document server. Names are looked up together with the type.
///
/// A plain value. The remarks at the texts say what is done to each before it enters a statement;
/// CAConnect::EscapeLiteral does the rest, and CAConnect::EscapeQuotes where backslashes are doubled. An error's
/// text is dropped.
class QV_API CDocRootItem : public CObject {
public:
    /// Texts empty, numbers 0, no sub-items, created now (local time).
    CDocRootItem();
    ~CDocRootItem() override;

    /// Adds this root; the new id is not read back (CQVBaseFun::GetDocRootID finds it). On engine kind 6 backslashes
    /// are doubled in the data path, in the record itself, which keeps it so.
    /// @return whether nothing was raised.
    bool SaveData(CAConnect& conn);
    /// Reads the root of m_nID into all other members, which stay as they are when there is none. Of the creation time
    /// the value is taken and not the status. @return whether the statement ran.
    bool LoadData(CAConnect& conn);
    /// Writes all members but the creation time over the root of m_nID. The data path enters as it is on every engine.
    /// @return whether nothing was raised.
    bool UpdateData(CAConnect& conn);

    int m_nID = 0;               ///< the key of LoadData and UpdateData; 0 for a new root
    CString m_strName;           ///< not escaped
    CString m_strDesc;           ///< not escaped
    CString m_strDataPath;       ///< SaveData: backslashes doubled on kind 6; UpdateData: not escaped
    COleDateTime m_dtCreate;     ///< when it was created, to the second
    int m_nMaxSize = 0;          ///< the largest size, in a unit of the server's
    int m_nUsedSize = 0;         ///< the used size, in a unit of the server's
    CString m_strDispName;       ///< not escaped
    bool m_bHaveSubItem = false; ///< whether something is below it, as servers note it
    int m_nType = 0;             ///< the kind of root; 1 is the company's
    unsigned long m_ulStyle = 0; ///< 32 bits whose meaning is the server's
    int m_nOwnerID = 0;          ///< the user to whom it belongs; 0 for nobody
};
