#pragma once

#include "directory/HumanItem.h"

#include <array>

/// All members of a user's record, for tests that must leave none out.
namespace human {

struct Text {
    const char* name;
    CString CHumanItem::* member;
};
struct Number {
    const char* name;
    int CHumanItem::* member;
    int value; // what Fill gives it
};
struct Flag {
    const char* name;
    bool CHumanItem::* member;
};

inline constexpr std::array<Text, 30> kTexts = {{
    {"extra1", &CHumanItem::m_strExtra1},
    {"login", &CHumanItem::m_strLoginName},
    {"name", &CHumanItem::m_strName},
    {"pword", &CHumanItem::m_strPWord},
    {"farServer", &CHumanItem::m_strFarServer},
    {"extra2", &CHumanItem::m_strExtra2},
    {"creator", &CHumanItem::m_strCreatorName},
    {"extra3", &CHumanItem::m_strExtra3},
    {"extra4", &CHumanItem::m_strExtra4},
    {"note", &CHumanItem::m_strNote},
    {"eMail", &CHumanItem::m_strEMail},
    {"mobile", &CHumanItem::m_strMobile},
    {"description", &CHumanItem::m_strDescription},
    {"extra5", &CHumanItem::m_strExtra5},
    {"hProvince", &CHumanItem::m_strHomeProvince},
    {"hCity", &CHumanItem::m_strHomeCity},
    {"hAddress", &CHumanItem::m_strHomeAddress},
    {"hPostCode", &CHumanItem::m_strHomePostCode},
    {"hPhone", &CHumanItem::m_strHomePhone},
    {"hFax", &CHumanItem::m_strHomeFax},
    {"oCompany", &CHumanItem::m_strCompanyName},
    {"oAddress", &CHumanItem::m_strOfficeAddress},
    {"oPostCode", &CHumanItem::m_strOfficePostCode},
    {"oJobTitle", &CHumanItem::m_strJobTitle},
    {"oPhone", &CHumanItem::m_strOfficePhone},
    {"oFax", &CHumanItem::m_strOfficeFax},
    {"picture", &CHumanItem::m_strPicture},
    {"eCard", &CHumanItem::m_strECard},
    {"deptInfo", &CHumanItem::m_strDeptInfo},
    {"userData", &CHumanItem::m_strUserData},
}};

inline constexpr std::array<Number, 7> kNumbers = {{
    {"id", &CHumanItem::m_nID, 1001},
    {"enType", &CHumanItem::m_nEnType, 1002},
    {"domainID", &CHumanItem::m_nDomainID, 1003},
    {"itemIndex", &CHumanItem::m_nItemIndex, 1004},
    {"extra", &CHumanItem::m_nExtra, 1005},
    {"sex", &CHumanItem::m_nSex, 1006},
    {"deptID", &CHumanItem::m_nDeptID, 1007},
}};

inline constexpr std::array<Flag, 4> kFlags = {{
    {"isSystem", &CHumanItem::m_bIsSystem},
    {"isSuper", &CHumanItem::m_bIsSuper},
    {"disabled", &CHumanItem::m_bDisabled},
    {"isFarUser", &CHumanItem::m_bIsFarUser},
}};

/// Gives every text its name and this ending, every number its own value and the birthday 5 June 1987, 04:03:02. Flags
/// stay false.
inline void Fill(CHumanItem& item, const char* ending)
{
    for (const Text& text : kTexts) {
        item.*text.member = CString(text.name) + ending;
    }
    for (const Number& number : kNumbers) {
        item.*number.member = number.value;
    }
    item.m_dtBirthday = COleDateTime(1987, 6, 5, 4, 3, 2);
}

} // namespace human
