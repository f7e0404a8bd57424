#pragma once

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

/// The statement that adds the record, with quotes doubled in the fifteen texts for which CHumanItem::SaveData does it.
std::string InsertStatement(const Record& record);

} // namespace bench
