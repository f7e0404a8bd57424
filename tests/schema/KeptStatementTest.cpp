#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "dbaccess/drivers/common/StatementShape.h"
#include "directory/HumanItem.h"
#include "platform/CObList.h"
#include "schema/Schema.h"
#include "tests/dbaccess/PreparedStatements.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <functional>
#include <regex>
#include <string>
#include <vector>

// What it means for the module that its statements are kept by their shapes (dbaccess/drivers/common/StatementShape.h).

namespace {

class KeptStatements : public testing::Test {
protected:
    KeptStatements()
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    std::vector<std::string> Plan(const std::string& statement)
    {
        CARecordset rs;
        EXPECT_TRUE(rs.Open(("EXPLAIN QUERY PLAN " + statement).c_str(), &m_conn, adbcCursorStatic, adbcLockOptimistic,
                            adbcCommandTable));
        std::vector<std::string> steps;
        for (; rs.IsEOF() == 0; rs.MoveNext()) {
            steps.emplace_back(rs.GetValueToStr(4, true));
        }
        return steps;
    }

    CAConnect m_conn;
};

/// The statements of the tables' list that an engine takes, as they are there and with other numbers in them, of which
/// more are cut out.
std::vector<std::string> StatementsAndVariants()
{
    std::vector<std::string> statements;
    std::ifstream in(QV_STATEMENTS);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.front() != '#' && line.front() != '!') {
            statements.push_back(line);
            statements.push_back(std::regex_replace(line, std::regex("\\b1\\b"), "17"));
        }
    }
    return statements;
}

TEST_F(KeptStatements, ArePlannedAsTheirTexts)
{
    dbaccess::StatementShape shape({});
    int cut = 0;
    int literals = 0;
    const std::vector<std::string> statements = StatementsAndVariants();
    for (const std::string& statement : statements) {
        if (shape.Cut(statement)) {
            EXPECT_EQ(Plan(shape.Text()), Plan(statement)) << statement;
            ++cut;
            literals += static_cast<int>(shape.Literals().size());
        }
    }
    EXPECT_GT(cut, static_cast<int>(statements.size()) * 9 / 10);
    EXPECT_GT(literals, static_cast<int>(statements.size()) * 2);
}

TEST_F(KeptStatements, AreNotPreparedAgainForTheNextCall)
{
    const auto save = [this](const std::string& login) {
        CHumanItem user;
        user.m_strLoginName = login.c_str();
        user.m_strName = "O'Neil";
        EXPECT_EQ(user.SaveData(m_conn), 1);
    };
    struct Call {
        const char* name;
        std::function<bool(const std::string& login, int user)> run;
    };
    const Call calls[] = {
        {"an INSERT", [&](const std::string& login, int) { return save(login + "'s"), true; }},
        {"a look-up",
         [&](const std::string& login, int user) {
             int id = -1;
             return CQVBaseFun::GetHMIDByLoginName(m_conn, login.c_str(), id) && id == user;
         }},
        {"an existence",
         [&](const std::string& login, int) {
             bool exists = false;
             return CQVBaseFun::ExistLoginName(m_conn, login.c_str(), exists) && exists;
         }},
        {"effective rights",
         [&](const std::string& login, int user) {
             unsigned long bits = 0;
             return CQVBaseFun::GetHMBaseACE(m_conn, user, "Mail", ("Function of " + login).c_str(), bits);
         }},
        {"members as objects",
         [&](const std::string&, int user) {
             CObList members;
             return CQVBaseFun::LoadGroupUser(m_conn, user, members) && members.IsEmpty();
         }},
    };
    constexpr int users = 12;
    for (int i = 1; i <= users; ++i) {
        save("user" + std::to_string(i));
    }
    for (const Call& call : calls) {
        constexpr int first = 4; // the default role is looked up from the beginning on
        for (int i = 2; i <= users; ++i) {
            const int before = PreparedStatements();
            EXPECT_TRUE(call.run("user" + std::to_string(i), i)) << call.name;
            const int prepared = PreparedStatements() - before;
            EXPECT_EQ(prepared > 0, i < first && call.name != calls[0].name) << call.name << " " << i;
        }
    }
}

} // namespace
