#include "bench/People.h"

#include <iterator>
#include <utility>

namespace bench {

namespace {

constexpr const char* kFirstNames[] = {"Anna", "Bertrand", "Chloe",  "Dominik", "Eleonora",    "Zoë",  "Jürgen",
                                       "Ines", "José",     "Katrin", "Łukasz",  "Maximiliane", "王芳", "Søren",
                                       "Paul", "Roberta",  "Сергей", "Tim",     "Ulrike",      "李伟"};
constexpr const char* kLastNames[] = {"Abel",     "Brandt",    "O'Connor",  "Dvořák",  "Eriksson",
                                      "Fischer",  "García",    "Ho",        "Ivanova", "Johansson-Krüger",
                                      "Kowalska", "Lindqvist", "Müller",    "Novak",   "Peters",
                                      "Quist",    "Rossi",     "Schneider", "Tanaka",  "Wagner"};
constexpr const char* kDepartments[] = {"Research and Development, Hall ", "Purchasing and Logistics, Floor ",
                                        "Customer Service North, Team ", "Finance and Controlling, Room "};
constexpr const char* kTitles[] = {"Design Engineer", "Senior Engineer", "Accounts Clerk",
                                   "Head of Section", "Project Manager", "Strategic Buyer"};
constexpr const char* kCities[] = {"Hamburg", "Lyon", "Gdańsk", "Bologna", "Aarhus", "Porto"};

std::string Base36(unsigned number)
{
    std::string digits;
    do {
        digits.insert(digits.begin(), "0123456789abcdefghijklmnopqrstuvwxyz"[number % 36]);
        number /= 36;
    } while (number != 0);
    return digits;
}

} // namespace

unsigned People::Below(unsigned limit)
{
    m_state += 0x9E3779B97F4A7C15U;
    std::uint64_t mixed = m_state;
    mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9U;
    mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBU;
    return static_cast<unsigned>((mixed >> 33) % limit);
}

std::string People::Word(unsigned length)
{
    std::string word;
    for (unsigned i = 0; i < length; ++i) {
        word += i % 2 == 0 ? "bcdfghklmnprstvwz"[Below(17)] : "aeiou"[Below(5)];
    }
    return word;
}

std::string People::Digits(unsigned length)
{
    std::string digits;
    for (unsigned i = 0; i < length; ++i) {
        digits += static_cast<char>('0' + Below(10));
    }
    return digits;
}

Record People::Next()
{
    Record user;
    const std::string serial = Base36(m_count++);
    // 8 to 20 bytes; the point keeps letters and serial apart, so that no two are alike.
    user.loginName = Word(8 + Below(13) - 1 - static_cast<unsigned>(serial.size())) + "." + serial;
    user.name =
        std::string(kFirstNames[Below(std::size(kFirstNames))]) + " " + kLastNames[Below(std::size(kLastNames))];
    user.password = Digits(32);
    user.eMail = user.loginName.substr(0, 14) + "@example.com";
    user.mobile = "+49 17" + Digits(8);
    user.sex = static_cast<int>(Below(3));
    user.homeCity = kCities[Below(std::size(kCities))];
    user.companyName = "Example Works";
    user.jobTitle = kTitles[Below(std::size(kTitles))];
    user.officePhone = "+49 40 " + Digits(6);
    user.deptId = static_cast<int>(1 + Below(200));
    user.deptInfo = kDepartments[Below(std::size(kDepartments))] + std::to_string(user.deptId);
    user.disabled = Below(50) == 0;
    user.creatorName = "Admin";
    return user;
}

void Fill(CHumanItem& item, const Record& record)
{
    static constexpr std::pair<CString CHumanItem::*, std::string Record::*> texts[] = {
        {&CHumanItem::m_strLoginName, &Record::loginName},     {&CHumanItem::m_strName, &Record::name},
        {&CHumanItem::m_strPWord, &Record::password},          {&CHumanItem::m_strEMail, &Record::eMail},
        {&CHumanItem::m_strMobile, &Record::mobile},           {&CHumanItem::m_strHomeCity, &Record::homeCity},
        {&CHumanItem::m_strCompanyName, &Record::companyName}, {&CHumanItem::m_strJobTitle, &Record::jobTitle},
        {&CHumanItem::m_strOfficePhone, &Record::officePhone}, {&CHumanItem::m_strDeptInfo, &Record::deptInfo},
        {&CHumanItem::m_strCreatorName, &Record::creatorName},
    };
    for (const auto& [to, from] : texts) {
        item.*to = (record.*from).c_str();
    }
    item.m_nSex = record.sex;
    item.m_nDeptID = record.deptId;
    item.m_bDisabled = record.disabled;
}

} // namespace bench
