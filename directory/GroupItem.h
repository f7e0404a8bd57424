#pragma once

#include "platform/Api.h"
#include "platform/CObject.h"
#include "platform/COleDateTime.h"
#include "platform/CString.h"

class CAConnect;

/// One row of qv_Group: a group, the inner node of the organisation tree. Relations place it in the tree.
///
/// A plain value. The remarks at the texts say what is done to each before it enters a statement;
/// CAConnect::EscapeLiteral does the rest. Errors leave their text in CQVBaseFun::m_strLastError; none is notified.
class QV_API CGroupItem : public CObject {
public:
    /// Texts empty, numbers 0, sort index 10000, created now.
    CGroupItem();
    ~CGroupItem() override;

    /// Adds this record as a new group; the id is not read back, and of the creation time only the date is written.
    /// @return 1, or 0 when the connection is not open or the engine refused.
    int SaveData(CAConnect& conn);
    /// Reads the row of this record's id. @return true only when there is one.
    bool LoadInfoByID(CAConnect& conn);
    /// Writes this record over the row of its id, all but the creation time. @return whether nothing was raised.
    bool Update(CAConnect& conn);

    int m_nID = 0;            ///< the key of LoadInfoByID and Update; 0 for a new group
    CString m_strName;        ///< not escaped
    CString m_strDescription; ///< not escaped
    CString m_strCreatorName; ///< not escaped
    COleDateTime m_dtCreate;  ///< when it was created; SaveData writes the day alone
    int m_nItemIndex = 10000; ///< the place in sorted lists, the lowest first
    int m_nDomainID = 0;      ///< the domain, a number of the server's own
    int m_nStyle = 0;         ///< bits whose meaning is the server's
};
