#pragma once

#include "platform/Api.h"
#include "platform/CObject.h"
#include "platform/COleDateTime.h"
#include "platform/CString.h"

class CAConnect;

/// One row of qv_Role: a named set of users within one application and one domain. Relations link it to the users that
/// hold it.
///
/// A plain value. The remarks at the texts say what is done to each before it enters a statement;
/// CAConnect::EscapeLiteral does the rest. An error's text is dropped; none is notified.
class QV_API CRoleItem : public CObject {
public:
    /// Texts empty, numbers 0, application "Tolvan", created now.
    CRoleItem();
    ~CRoleItem() override;

    /// Adds this record as a new role; the id is not read back. @return whether nothing was raised.
    bool SaveData(CAConnect& conn);
    /// Reads the row of this record's id; without one the members stay. @return whether the statement ran.
    bool LoadData(CAConnect& conn);
    /// Writes name and description, and no more, to the row of this record's id. @return whether nothing was raised.
    bool UpdateData(CAConnect& conn);

    int m_nID = 0;            ///< the key of LoadData and UpdateData; 0 for a new role
    CString m_strName;        ///< not escaped
    CString m_strDescription; ///< not escaped
    CString m_strCreatorName; ///< not escaped
    CString m_strAppName;     ///< not escaped; the application to which the role belongs
    int m_nItemIndex = 0;     ///< a sort index, by which no operation sorts
    int m_nDomainID = 0;      ///< the domain, a number of the server's own
    bool m_bDisabled = false; ///< whether the role is switched off; no operation acts on it
    COleDateTime m_dtCreate;  ///< when it was created, to the second
    CString m_strGenre;       ///< not escaped
    int m_nGClassID = 0;      ///< a class number whose meaning is the server's
    int m_nType = 0;          ///< a kind whose meaning is the server's
};
