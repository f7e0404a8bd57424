#pragma once

#include "platform/Api.h"
#include "platform/CObject.h"
#include "platform/COleDateTime.h"
#include "platform/CString.h"

class CAConnect;

/// One row of qv_View: a named root under which groups and users are arranged, of the whole system (type 1, owner 0) or
/// of one user.
///
/// A plain value. The remarks at the texts say what is done to each before it enters a statement;
/// CAConnect::EscapeLiteral does the rest. Errors leave their text in CQVBaseFun::m_strLastError; none is notified.
class QV_API CViewItem : public CObject {
public:
    /// Texts empty, numbers 0, type 1, sort index 10000, created now, not public.
    CViewItem();
    ~CViewItem() override;

    /// Adds this record as a new view; the id is not read back, and of the creation time only the date is written.
    /// @return 1, or 0 when the connection is not open or the engine refused.
    int SaveData(CAConnect& conn);
    /// Reads the row of this record's id. @return 1 when there is one, else 0.
    int LoadInfoByID(CAConnect& conn);
    /// Writes name, description and sort index, and no more, to the row of this record's id.
    /// @return 1, or 0 when something was raised.
    int UpdateData(CAConnect& conn);

    int m_nID = 0;            ///< the key of LoadInfoByID and UpdateData; 0 for a new view
    CString m_strName;        ///< not escaped
    int m_nType = 1;          ///< 1 for a view of the whole system
    CString m_strDescription; ///< not escaped
    int m_nOwnerID = 0;       ///< the user to whom the view belongs; 0 for none
    int m_nItemIndex = 10000; ///< the place in sorted lists, the lowest first
    CString m_strCreatorName; ///< not escaped
    COleDateTime m_dtCreate;  ///< when it was created; SaveData writes the day alone
    int m_nDomainID = 0;      ///< the domain, a number of the server's own
    int m_nStyle = 0;         ///< bits whose meaning is the server's
    bool m_bIsPublic = false; ///< whether others see it; no operation acts on it
};
