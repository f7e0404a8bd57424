#pragma once

#include "platform/Api.h"
#include "platform/CObject.h"
#include "platform/COleDateTime.h"
#include "platform/CString.h"

class CAConnect;

/// One row of qv_User: a user account of the organisation directory.
///
/// A plain value: the caller fills it and saves it, or sets its id and loads the rest. Nothing is checked or cut here.
/// The operations keep or drop an error's text as each says; none of them sends a notification.
class QV_API CHumanItem : public CObject {
public:
    /// Texts empty, numbers and flags 0 or false, encoding type 1, sort index 10000, birthday now.
    CHumanItem();
    ~CHumanItem() override;

    /// Adds this record as a new user. Fifteen texts (see ReplaceVariable) have their quotes doubled on a copy, and
    /// want CAConnect::EscapeBackslashes; the others want CAConnect::EscapeLiteral. Neither the far-server pair nor the
    /// id is written; the id that the database gives is not read back (look it up by login name).
    /// @return 1 when the row was added; 0 when the connection is not open, or when the engine refused the statement,
    ///         which also leaves the error's text in CQVBaseFun::m_strLastError.
    int SaveData(CAConnect& conn);

    /// Writes this record over the row of its id; the texts are escaped as the remarks at them say. Picture and user
    /// data are not written, the far-server pair is. Every other column is set, also those that LoadInfoByID does not
    /// read: a caller that loads and writes back must have filled them.
    /// @return 1 when the statement ran, also when there is no such row; 0 when the connection is not open or the
    /// engine
    ///         refused. An error's text is dropped.
    int Update(CAConnect& conn);

    /// Reads the row of this record's id. Not read: system flag, far-user flag, domain id, creator, department id and
    /// user data. A NULL birthday leaves the member as it was.
    /// @return true when the statement ran; a missing row leaves the record as it was. false when the connection is not
    ///         open, or when the engine refused, with the error's text in CQVBaseFun::m_strLastError.
    bool LoadInfoByID(CAConnect& conn);

    /// Copies every member of `from` into this record, the id included.
    void CopyData(CHumanItem& from);

    /// Doubles every ' in the fifteen texts that enter statements escaped: login name, name, creator, note, e-mail,
    /// description, home province, city and address, company, office address, job title, card, department, user data.
    void ReplaceVariable();

    /// Appends the bytes of a text to a file that exists; the record's own data play no part.
    /// @return true. @throws CFileException* when there is no such file or it cannot be written.
    bool WriteToFile(CString path, CString text);

    // Members are in the order in which they are constructed.
    CString m_strExtra1;         ///< for callers; copied, but in no statement
    int m_nID = 0;               ///< the key of Update and LoadInfoByID, to be set first; 0 for a new user
    CString m_strLoginName;      ///< quotes doubled
    CString m_strName;           ///< quotes doubled; the display name
    CString m_strPWord;          ///< not escaped; as stored: already encoded
    bool m_bIsSystem = false;    ///< an account of the system's own
    bool m_bIsSuper = false;     ///< a super user
    bool m_bDisabled = false;    ///< a locked account
    int m_nEnType = 1;           ///< the encoding of m_strPWord: 0 plain text, 1 or 2 MD5 (CQVBaseFun::Encrypt)
    bool m_bIsFarUser = false;   ///< an account of another server
    CString m_strFarServer;      ///< not escaped; that other server
    int m_nDomainID = 0;         ///< the domain, a number of the server's own
    int m_nItemIndex = 10000;    ///< a sort index, by which no operation sorts users
    CString m_strExtra2;         ///< for callers; copied, but in no statement
    CString m_strCreatorName;    ///< quotes doubled
    int m_nExtra = 0;            ///< for callers; copied, but in no statement
    CString m_strExtra3;         ///< for callers; copied, but in no statement
    CString m_strExtra4;         ///< for callers; copied, but in no statement
    CString m_strNote;           ///< quotes doubled
    CString m_strEMail;          ///< quotes doubled
    CString m_strMobile;         ///< not escaped
    int m_nSex = 0;              ///< a number whose meaning is the server's
    CString m_strDescription;    ///< quotes doubled
    CString m_strExtra5;         ///< for callers; copied, but in no statement
    COleDateTime m_dtBirthday;   ///< written as a day
    CString m_strHomeProvince;   ///< quotes doubled
    CString m_strHomeCity;       ///< quotes doubled
    CString m_strHomeAddress;    ///< quotes doubled
    CString m_strHomePostCode;   ///< not escaped
    CString m_strHomePhone;      ///< not escaped
    CString m_strHomeFax;        ///< not escaped
    CString m_strCompanyName;    ///< quotes doubled
    CString m_strOfficeAddress;  ///< quotes doubled
    CString m_strOfficePostCode; ///< not escaped
    CString m_strJobTitle;       ///< quotes doubled
    CString m_strOfficePhone;    ///< not escaped
    CString m_strOfficeFax;      ///< not escaped
    CString m_strPicture;        ///< not escaped; the display picture
    CString m_strECard;          ///< quotes doubled
    CString m_strDeptInfo;       ///< quotes doubled; the department, for people
    int m_nDeptID = 0;           ///< the group that is the department; 0 for none
    CString m_strUserData;       ///< quotes doubled; for callers
};
