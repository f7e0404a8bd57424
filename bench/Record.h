#pragma once

#include <array>
#include <string>

namespace bench {

/// A user as a program without the module would keep one: CHumanItem's members, in their order.
struct Record {
    /// Empty texts, CHumanItem's numbers, and the current local time as birthday.
    Record();

    std::string extra1;
    int id = 0;
    std::string loginName;
    std::string name;
    std::string password;
    bool isSystem = false;
    bool isSuper = false;
    bool disabled = false;
    int enType = 1;
    bool isFarUser = false;
    std::string farServer;
    int domainId = 0;
    int itemIndex = 10000;
    std::string extra2;
    std::string creatorName;
    int extra = 0;
    std::string extra3;
    std::string extra4;
    std::string note;
    std::string eMail;
    std::string mobile;
    int sex = 0;
    std::string description;
    std::string extra5;
    double birthday; // days since 30 December 1899
    int birthdayStatus = 0;
    std::string homeProvince;
    std::string homeCity;
    std::string homeAddress;
    std::string homePostCode;
    std::string homePhone;
    std::string homeFax;
    std::string companyName;
    std::string officeAddress;
    std::string officePostCode;
    std::string jobTitle;
    std::string officePhone;
    std::string officeFax;
    std::string picture;
    std::string eCard;
    std::string deptInfo;
    int deptId = 0;
    std::string userData;
};

/// The text with every ' doubled.
std::string DoubledQuotes(const std::string& text);

/// The text in capitals; it is ASCII, as login names of the test data are.
std::string Capitals(std::string text);

/// A day as YYYY-MM-DD, with a NUL behind it. @param days  since 30 December 1899.
std::array<char, 16> DateText(double days);

/// The statement that adds a record, with a ? for each value.
std::string BoundInsert();

/// Calls `visit(value)` for what BoundInsert binds, in its order: texts and whole numbers. @param birthday  as
/// DateText.
template <class Visit>
void VisitValues(const Record& r, const std::string& birthday, Visit visit)
{
    const auto all = [&visit](const auto&... values) { (visit(values), ...); };
    all(r.loginName, r.name, r.password, int{r.isSuper}, int{r.isSystem}, int{r.disabled}, r.enType, r.domainId,
        r.itemIndex, r.creatorName, r.note, r.eMail, r.mobile, r.sex, r.description, birthday, r.homeProvince,
        r.homeCity, r.homeAddress, r.homePostCode, r.homePhone, r.homeFax, r.companyName, r.officeAddress,
        r.officePostCode, r.jobTitle, r.officePhone, r.officeFax, r.eCard, r.deptInfo, r.userData, r.deptId, r.picture);
}

/// The statement that adds the record, with quotes doubled in the fifteen texts for which CHumanItem::SaveData does it.
std::string InsertStatement(const Record& record);

} // namespace bench
