#include "bench/engines/ServerDirectory.h"

#include "bench/People.h"
#include "bench/Record.h"
#include "dbaccess/CAConnect.h"
#include "schema/Schema.h"
#include "tests/servers/Servers.h"

namespace bench {

namespace {

constexpr int kUsersOfInsert = 1'000;

std::string ValuesOf(const Record& user)
{
    std::string values;
    for (const auto member :
         {&Record::loginName, &Record::name, &Record::password, &Record::eMail, &Record::mobile, &Record::homeCity,
          &Record::companyName, &Record::jobTitle, &Record::officePhone, &Record::deptInfo}) {
        values += (values.empty() ? "('" : ",'") + DoubledQuotes(user.*member) + "'";
    }
    return values + "," + std::to_string(user.sex) + "," + std::to_string(user.deptId) + "," +
           (user.disabled ? "1)" : "0)");
}

void Insert(CAConnect& conn, int users)
{
    People people(kServerUsers);
    conn.BeginTrans();
    for (int done = 0; done < users; done += kUsersOfInsert) {
        std::string sql = "INSERT INTO qv_User (Col_LoginName, Col_Name, Col_PWord, Col_EMail, Col_Mobile, Col_h_City, "
                          "Col_o_CompanyName, Col_o_JobTitle, Col_o_Phone, Col_DeptInfo, Col_Sex, Col_DeptID, "
                          "Col_Disabled) VALUES ";
        for (int i = 0; i < kUsersOfInsert; ++i) {
            sql += (i == 0 ? "" : ",") + ValuesOf(people.Next());
        }
        conn.Execute(sql.c_str());
    }
    conn.CommitTrans();
}

} // namespace

std::string MakeServerDirectory(const std::string& engine, int users)
{
    std::string url = servers::NewDatabase(engine);
    CAConnect conn;
    conn.Open(url.c_str());
    schema::Upgrade(conn);
    Insert(conn, users);
    if (engine == "postgresql") {
        // Else the server does it by itself, in the middle of a measurement.
        conn.Execute("VACUUM (FREEZE, ANALYZE) qv_User");
    }
    return url;
}

std::string DatabaseOf(const std::string& url)
{
    const std::size_t begin = url.find('/', url.find("//") + 2) + 1;
    return url.substr(begin, url.find('?') - begin);
}

} // namespace bench
