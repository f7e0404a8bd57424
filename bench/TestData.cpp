#include "bench/TestData.h"

#include "bench/ByHand.h"
#include "bench/Tree.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Schema.h"

#include <sqlite3.h>

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>

namespace bench {

namespace {

constexpr std::uint64_t kSeed = 20240229;

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

void Bind(sqlite3_stmt* statement, int parameter, const std::string& text)
{
    sqlite3_bind_text(statement, parameter, text.c_str(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
}

void RunBound(sqlite3_stmt* statement)
{
    if (sqlite3_step(statement) != SQLITE_DONE) {
        throw std::runtime_error("the test data cannot be written");
    }
    sqlite3_reset(statement);
}

void InsertUsers(ByHand& db, int count)
{
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> insert(
        db.PrepareFor("INSERT INTO qv_User (Col_LoginName, Col_Name, Col_PWord, Col_EMail, Col_Mobile, Col_Sex, "
                      "Col_Birthday, Col_h_City, Col_o_CompanyName, Col_o_JobTitle, Col_o_Phone, Col_DeptInfo, "
                      "Col_DeptID, Col_Disabled) VALUES (?, ?, ?, ?, ?, ?, '1980-05-17', ?, ?, ?, ?, ?, ?, ?)"),
        &sqlite3_finalize);
    People people(kSeed);
    for (int i = 0; i < count; ++i) {
        const Record user = people.Next();
        int parameter = 0;
        for (const auto member :
             {&Record::loginName, &Record::name, &Record::password, &Record::eMail, &Record::mobile}) {
            Bind(insert.get(), ++parameter, user.*member);
        }
        sqlite3_bind_int(insert.get(), ++parameter, user.sex);
        for (const auto member :
             {&Record::homeCity, &Record::companyName, &Record::jobTitle, &Record::officePhone, &Record::deptInfo}) {
            Bind(insert.get(), ++parameter, user.*member);
        }
        sqlite3_bind_int(insert.get(), ++parameter, user.deptId);
        sqlite3_bind_int(insert.get(), ++parameter, user.disabled);
        RunBound(insert.get());
    }
}

void InsertMessages(ByHand& db, int count)
{
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> insert(
        db.PrepareFor("INSERT INTO kel_Msg (Col_SendDate) VALUES (?)"), &sqlite3_finalize);
    People random(kSeed);
    for (int i = 0; i < count; ++i) {
        std::array<char, 32> date;
        std::snprintf(date.data(), date.size(), "%04u-%02u-%02u %02u:%02u:%02u", 2005 + random.Below(15),
                      1 + random.Below(12), 1 + random.Below(28), random.Below(24), random.Below(60), random.Below(60));
        Bind(insert.get(), 1, date.data());
        RunBound(insert.get());
    }
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

TemporaryFolder::TemporaryFolder() : m_path((std::filesystem::temp_directory_path() / "qvbench-XXXXXX").string())
{
    if (mkdtemp(m_path.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder for the test data");
    }
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

void MakeDirectory(const std::string& path, int users, int messages)
{
    {
        CAConnect conn;
        conn.Open(("sqlite:" + path).c_str());
        schema::Upgrade(conn);
    }
    ByHand db(path);
    db.Run("PRAGMA journal_mode=MEMORY");
    db.Run("PRAGMA synchronous=OFF");
    db.Run("PRAGMA cache_size=-600000");
    db.Run("BEGIN");
    InsertUsers(db, users);
    Tree(users).Insert(db);
    InsertMessages(db, messages);
    db.Run("COMMIT");
    db.Run("PRAGMA journal_mode=WAL");
}

std::vector<std::string> SomeLoginNames(const std::string& path, int every)
{
    CAConnect conn;
    conn.Open(("sqlite:" + path).c_str());
    CARecordset rs;
    const std::string sql = "SELECT Col_LoginName FROM qv_User WHERE Col_ID % " + std::to_string(every) + " = 0";
    rs.Open(sql.c_str(), &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    std::vector<std::string> names;
    for (rs.MoveFirst(); rs.IsEOF() == 0; rs.MoveNext()) {
        names.emplace_back(rs.GetValueToStr(1, true).GetString());
    }
    People random(kSeed);
    for (std::size_t i = names.size(); i > 1; --i) {
        std::swap(names[i - 1], names[random.Below(static_cast<unsigned>(i))]);
    }
    return names;
}

} // namespace bench
