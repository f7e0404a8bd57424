#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "tests/directory/StatementCase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

namespace password_statements {

using statements::ExpectTable;
using statements::kAllKinds;
using statements::Read;
using statements::StatementCase;
using statements::Write;

namespace {

// Every text holds a quote and a backslash, so that what is doubled shows; no two arguments of a call are the same, so
// that an exchange shows.

struct Outputs {
    bool flag = false;
    CString text;
};

std::vector<StatementCase> Passwords()
{
    return {
        {"CheckUserPassword", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::CheckUserPassword(conn, R"(lo'g\in)", R"(pa's\s)", out.flag);
         },
         Read(R"(SELECT Col_PWord, Col_Entype FROM qv_User WHERE Col_LoginName = 'lo'g\in')")},
        {"UpdateItemPassword", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateItemPassword(conn, R"(lo'g\in)", R"(pa's\s)", 501); },
         Write(R"(UPDATE qv_User SET Col_PWord = 'pa's\s', Col_EnType = 501 WHERE Col_LoginName = 'lo'g\in')")},
        {"GetEncryptKey", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetEncryptKey(conn, out.text);
         },
         Read("SELECT Col_Data FROM Tab_Config WHERE Col_Name = 'EncryptKey'")},
        {"SetEncryptKey without one",
         kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::SetEncryptKey(conn, R"(ke'y\k)"); },
         {{"SELECT Col_Data FROM Tab_Config WHERE Col_Name = 'EncryptKey'"},
          {R"(INSERT INTO Tab_Config (Col_Name, Col_Data) VALUES ('EncryptKey', 'ke'y\k'))"}}},
    };
}

TEST(PasswordStatements, AreSentByteForByte) { ExpectTable(Passwords()); }

TEST(PasswordStatements, AKeyThatIsThereIsUpdated)
{
    for (const int kind : kAllKinds) {
        scripted::Database database;
        CAConnect conn;
        database.Connect(conn, kind);
        database.Answer(scripted::Rows({{"present"}}));
        CQVBaseFun::SetEncryptKey(conn, R"(ke'y\k)");
        EXPECT_THAT(database.queries,
                    testing::ElementsAre("SELECT Col_Data FROM Tab_Config WHERE Col_Name = 'EncryptKey'"));
        EXPECT_THAT(database.executions,
                    testing::ElementsAre(R"(UPDATE Tab_Config SET Col_Data = 'ke'y\k' WHERE Col_Name = 'EncryptKey')"));
    }
}

} // namespace

} // namespace password_statements
