#pragma once

#include "platform/Api.h"
#include "platform/CObject.h"
#include "platform/COleDateTime.h"
#include "platform/CString.h"

class CAConnect;

/// One row of Tab_BIOAce: the right of a directory item on a function of an object outside the directory. The names of
/// holder and creator are copies that are not kept in step, so that a list needs no joins.
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

    int m_nID = 0;
    int m_nQvItemID = 0;
    int m_nQvItemType = 0;
    int m_nClassID = 0;
    int m_nObjID = 0;
    CString m_strFunName;  ///< not escaped
    CString m_strFunGenre; ///< not escaped
    int m_nPower = 0;
    int m_nUnPower = 0;
    CString m_strQvItemName; ///< quotes doubled
    int m_nCreatorID = 0;
    CString m_strCreatorName; ///< quotes doubled
    COleDateTime m_dtCreate;
};
