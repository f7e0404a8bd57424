#include "bench/TestData.h"

#include "bench/ByHand.h"
#include "bench/People.h"
#include "bench/Tree.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Schema.h"

#include <sqlite3.h>

#include <array>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <utility>

namespace bench {

namespace {

constexpr std::uint64_t kSeed = 20240229;

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

void MakeDirectory(const std::string& path, int users, const std::function<void(ByHand&)>& insertOthers)
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
    insertOthers(db);
    db.Run("COMMIT");
    db.Run("PRAGMA journal_mode=WAL");
}

void MakeDirectory(const std::string& path, int users, int messages)
{
    MakeDirectory(path, users, [users, messages](ByHand& db) {
        Tree(users).Insert(db);
        InsertMessages(db, messages);
    });
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
