#include "directory/HumanItem.h"

#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"
#include "dbaccess/CADateTime.h"
#include "dbaccess/CARecordset.h"
#include "platform/CFile.h"

namespace {

using sqltext::Quoted;

constexpr const char* kDateFormat = "%Y-%m-%d";

// The other texts enter statements as they are; which ones do is what callers know and work around.
constexpr CString CHumanItem::* kEscaped[] = {
    &CHumanItem::m_strLoginName,    &CHumanItem::m_strName,          &CHumanItem::m_strCreatorName,
    &CHumanItem::m_strNote,         &CHumanItem::m_strEMail,         &CHumanItem::m_strDescription,
    &CHumanItem::m_strHomeProvince, &CHumanItem::m_strHomeCity,      &CHumanItem::m_strHomeAddress,
    &CHumanItem::m_strCompanyName,  &CHumanItem::m_strOfficeAddress, &CHumanItem::m_strJobTitle,
    &CHumanItem::m_strECard,        &CHumanItem::m_strDeptInfo,      &CHumanItem::m_strUserData,
};

} // namespace

CHumanItem::CHumanItem() : m_dtBirthday(COleDateTime::GetCurrentTime()) {}

CHumanItem::~CHumanItem() = default;

int CHumanItem::SaveData(CAConnect& conn)
{
    const CString birthday = m_dtBirthday.Format(kDateFormat);
    const CString sql = FormatSql(
        "INSERT INTO qv_User (Col_LoginName, Col_Name, Col_PWord, Col_IsSuper, Col_IsSystem, Col_Disabled, Col_Entype, "
        "Col_DomainID, Col_ItemIndex, Col_Creator_Name, Col_Note, Col_EMail, Col_Mobile, Col_Sex, Col_Description, "
        "Col_Birthday, Col_h_Province, Col_h_City, Col_h_Address, Col_h_PostCode, Col_h_Phone, Col_h_Fax, "
        "Col_o_CompanyName, Col_o_Address, Col_o_PostCode, Col_o_JobTitle, Col_o_Phone, Col_o_Fax, Col_ECard, "
        "Col_DeptInfo, Col_UserData, Col_DeptID, Col_Picture ) VALUES "
        "('%s','%s','%s',%d,%d,%d,%d,%d,%d,'%s','%s', '%s','%s',%d,'%s','%s','%s','%s', '%s','%s','%s','%s','%s', "
        "'%s','%s','%s','%s','%s', '%s','%s', '%s', %d, '%s')",
        Quoted(m_strLoginName), Quoted(m_strName), m_strPWord, m_bIsSuper, m_bIsSystem, m_bDisabled, m_nEnType,
        m_nDomainID, m_nItemIndex, Quoted(m_strCreatorName), Quoted(m_strNote), Quoted(m_strEMail), m_strMobile, m_nSex,
        Quoted(m_strDescription), birthday, Quoted(m_strHomeProvince), Quoted(m_strHomeCity), Quoted(m_strHomeAddress),
        m_strHomePostCode, m_strHomePhone, m_strHomeFax, Quoted(m_strCompanyName), Quoted(m_strOfficeAddress),
        m_strOfficePostCode, Quoted(m_strJobTitle), m_strOfficePhone, m_strOfficeFax, Quoted(m_strECard),
        Quoted(m_strDeptInfo), Quoted(m_strUserData), m_nDeptID, m_strPicture);
    CQVBaseFun::WriteToLogFileEx(sql);
    return frame::Run(conn, sql, frame::OnError::keep);
}

int CHumanItem::Update(CAConnect& conn)
{
    const CString birthday = m_dtBirthday.Format(kDateFormat);
    // Other columns than SaveData writes, on purpose: the far-server pair, but neither picture nor user data.
    const CString sql = FormatSql(
        "UPDATE qv_User Set Col_LoginName = '%s', Col_Name = '%s', Col_PWord = '%s', Col_IsSuper = %d, Col_IsSystem = "
        "%d, Col_Disabled = %d, Col_Entype = %d, Col_IsFarUser = %d, Col_FarServer = '%s', Col_DomainID = %d, "
        "Col_ItemIndex = %d, Col_Creator_Name = '%s', Col_Note = '%s', Col_EMail = '%s', Col_Mobile = '%s', Col_Sex = "
        "%d, Col_Description = '%s', Col_Birthday = '%s', Col_h_Province = '%s', Col_h_City = '%s', Col_h_Address = "
        "'%s', Col_h_PostCode = '%s', Col_h_Phone = '%s', Col_h_Fax = '%s', Col_o_CompanyName = '%s', Col_o_Address = "
        "'%s', Col_o_PostCode = '%s', Col_o_JobTitle = '%s', Col_o_Phone = '%s', Col_o_Fax = '%s', Col_ECard = '%s', "
        "Col_DeptInfo = '%s', Col_DeptID = %d WHERE Col_ID = %d",
        Quoted(m_strLoginName), Quoted(m_strName), m_strPWord, m_bIsSuper, m_bIsSystem, m_bDisabled, m_nEnType,
        m_bIsFarUser, m_strFarServer, m_nDomainID, m_nItemIndex, Quoted(m_strCreatorName), Quoted(m_strNote),
        Quoted(m_strEMail), m_strMobile, m_nSex, Quoted(m_strDescription), birthday, Quoted(m_strHomeProvince),
        Quoted(m_strHomeCity), Quoted(m_strHomeAddress), m_strHomePostCode, m_strHomePhone, m_strHomeFax,
        Quoted(m_strCompanyName), Quoted(m_strOfficeAddress), m_strOfficePostCode, Quoted(m_strJobTitle),
        m_strOfficePhone, m_strOfficeFax, Quoted(m_strECard), Quoted(m_strDeptInfo), m_nDeptID, m_nID);
    // SaveData keeps the error's text, this does not: callers tell the two apart.
    return frame::Run(conn, sql, frame::OnError::drop);
}

bool CHumanItem::LoadInfoByID(CAConnect& conn)
{
    const CString sql = FormatSql(
        "SELECT Col_ID,Col_LoginName,Col_Name,Col_PWord,Col_IsSuper,Col_Disabled, Col_Note, Col_EMail, Col_Mobile, "
        "Col_Sex, Col_Description, Col_Birthday, Col_h_Province, Col_h_City, Col_h_Address, Col_h_PostCode, "
        "Col_h_Phone, Col_h_Fax, Col_o_CompanyName, Col_o_Address, Col_o_PostCode, Col_o_JobTitle, Col_o_Phone, "
        "Col_o_Fax, Col_ECard, Col_DeptInfo, Col_ItemIndex, Col_Picture, Col_FarServer, Col_EnType FROM qv_User WHERE "
        "Col_ID = %d",
        m_nID);
    const auto read = [this](CARecordset& row) {
        long column = 1; // the id, which is not read back
        const auto text = [&row, &column](CString& out) { out = row.GetValueToStr(++column, true); };
        const auto value = [&row, &column](auto& out) { row.GetValue(++column, out); };
        text(m_strLoginName);
        text(m_strName);
        text(m_strPWord);
        value(m_bIsSuper);
        value(m_bDisabled);
        text(m_strNote);
        text(m_strEMail);
        text(m_strMobile);
        value(m_nSex);
        text(m_strDescription);
        CADateTime birthday;
        if (row.GetValue(++column, birthday)) {
            m_dtBirthday = birthday.GetOleDateTime();
        }
        text(m_strHomeProvince);
        text(m_strHomeCity);
        text(m_strHomeAddress);
        text(m_strHomePostCode);
        text(m_strHomePhone);
        text(m_strHomeFax);
        text(m_strCompanyName);
        text(m_strOfficeAddress);
        text(m_strOfficePostCode);
        text(m_strJobTitle);
        text(m_strOfficePhone);
        text(m_strOfficeFax);
        text(m_strECard);
        text(m_strDeptInfo);
        value(m_nItemIndex);
        text(m_strPicture);
        text(m_strFarServer);
        value(m_nEnType);
    };
    return frame::ReadFirst(conn, sql, read, frame::OnError::keep);
}

void CHumanItem::CopyData(CHumanItem& from)
{
    m_strExtra1 = from.m_strExtra1;
    m_nID = from.m_nID;
    m_strLoginName = from.m_strLoginName;
    m_strName = from.m_strName;
    m_strPWord = from.m_strPWord;
    m_bIsSystem = from.m_bIsSystem;
    m_bIsSuper = from.m_bIsSuper;
    m_bDisabled = from.m_bDisabled;
    m_nEnType = from.m_nEnType;
    m_bIsFarUser = from.m_bIsFarUser;
    m_strFarServer = from.m_strFarServer;
    m_nDomainID = from.m_nDomainID;
    m_nItemIndex = from.m_nItemIndex;
    m_strExtra2 = from.m_strExtra2;
    m_strCreatorName = from.m_strCreatorName;
    m_nExtra = from.m_nExtra;
    m_strExtra3 = from.m_strExtra3;
    m_strExtra4 = from.m_strExtra4;
    m_strNote = from.m_strNote;
    m_strEMail = from.m_strEMail;
    m_strMobile = from.m_strMobile;
    m_nSex = from.m_nSex;
    m_strDescription = from.m_strDescription;
    m_strExtra5 = from.m_strExtra5;
    m_dtBirthday = from.m_dtBirthday;
    m_strHomeProvince = from.m_strHomeProvince;
    m_strHomeCity = from.m_strHomeCity;
    m_strHomeAddress = from.m_strHomeAddress;
    m_strHomePostCode = from.m_strHomePostCode;
    m_strHomePhone = from.m_strHomePhone;
    m_strHomeFax = from.m_strHomeFax;
    m_strCompanyName = from.m_strCompanyName;
    m_strOfficeAddress = from.m_strOfficeAddress;
    m_strOfficePostCode = from.m_strOfficePostCode;
    m_strJobTitle = from.m_strJobTitle;
    m_strOfficePhone = from.m_strOfficePhone;
    m_strOfficeFax = from.m_strOfficeFax;
    m_strPicture = from.m_strPicture;
    m_strECard = from.m_strECard;
    m_strDeptInfo = from.m_strDeptInfo;
    m_nDeptID = from.m_nDeptID;
    m_strUserData = from.m_strUserData;
}

void CHumanItem::ReplaceVariable()
{
    for (const auto member : kEscaped) {
        (this->*member).Replace("'", "''");
    }
}

bool CHumanItem::WriteToFile(CString path, CString text)
{
    CFile file;
    // A file that does not open shows in the seek, which raises.
    file.Open(path, CFile::modeReadWrite | CFile::shareDenyWrite);
    file.SeekToEnd();
    file.Write(text, static_cast<unsigned>(text.GetLength()));
    file.Close();
    return true;
}
