#pragma once

#include "platform/Api.h"
#include "platform/CObject.h"
#include "platform/COleDateTime.h"
#include "platform/CString.h"

class CAConnect;

/// One row of Tab_BIOAce: the right of a directory item on a function of an object outside the directory. The names of
/// holder and creator are copies that are not updated later, so that a list needs no joins.
///
/// A plain value.
class QV_API CTabBIOAceItem : public CObject {
public:
    /// Texts empty, numbers 0, created now (local time).
    CTabBIOAceItem();
    ~CTabBIOAceItem() override;

    /// Adds this right; nothing keeps an equal row from being there already (CQVBaseFun::ExistTabBIOAceItem tells).
    /// Quotes are doubled in the names of holder and creator, in the record itself, which keeps them so; they
    /// want CAConnect::EscapeBackslashes, the function's texts CAConnect::EscapeLiteral. The id is not written and not
    /// read back.
    /// @return whether nothing was raised; an error's text is dropped.
    bool SaveData(CAConnect& conn);

    int m_nID = 0;            ///< for callers: SaveData neither writes nor sets it
    int m_nQvItemID = 0;      ///< the holder's id
    int m_nQvItemType = 0;    ///< the holder's type
    int m_nClassID = 0;       ///< the object's class, a number of the caller's own
    int m_nObjID = 0;         ///< the object's id within its class
    CString m_strFunName;     ///< not escaped
    CString m_strFunGenre;    ///< not escaped
    int m_nPower = 0;         ///< the power, 32 bits
    int m_nUnPower = 0;       ///< the second power, 32 bits, by which nothing is decided here
    CString m_strQvItemName;  ///< quotes doubled; the holder's name when the right was granted
    int m_nCreatorID = 0;     ///< the user who granted it; 0 for none
    CString m_strCreatorName; ///< quotes doubled
    COleDateTime m_dtCreate;  ///< when it was granted, to the second
};
