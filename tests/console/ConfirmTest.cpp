#include "ConsoleFixture.h"
#include "console/TerminalFrontEnd.h"
#include "dbaccess/CAConnect.h"

#include <fmt/format.h>

#include <sstream>

using namespace console;
using namespace management;
using testing::HasSubstr;

namespace {

/// @return what the question was answered by, or "yes".
std::string Answered(std::size_t removed, const std::string& answer, bool yes = false)
{
    std::istringstream in(answer);
    std::ostringstream out;
    std::ostringstream err;
    Terminal terminal{in, out, err, true, true};
    const Command command;
    CommandLine given;
    given.options.yes = yes;
    TerminalFrontEnd frontEnd(command, given, Format::table, terminal);
    Call call([]() -> CAConnect& { throw Error(ErrorCode::failed, "no directory"); }, frontEnd, given.options);
    try {
        call.Confirm({.lines = {}, .question = "Delete it?", .removed = removed});
        return "yes";
    } catch (const Error& e) {
        EXPECT_EQ(ExitFor(e.Code()), Exit::confirmationRequired);
        return err.str() + e.what();
    }
}

/// Deletions of everything that the console deletes in numbers, on a terminal.
class ConfirmCommandsTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        m_conn.Open(CString(std::string_view(DatabaseUrl())));
    }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    /// Inserts a row for each number from 1 on. @param values  with i for the number.
    void InsertMany(int count, const std::string& into, const std::string& values)
    {
        Execute(fmt::format("WITH RECURSIVE n (i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < {}) INSERT INTO "
                            "{} SELECT {} FROM n",
                            count, into, values));
    }

    ChildResult Answer(const std::string& answer, const std::vector<std::string>& words)
    {
        ChildOptions options = m_options;
        options.terminal = true;
        options.input = answer + "\n";
        ChildProcess child(QVADMIN_PROGRAM, words, options);
        return child.Finish();
    }

    /// A y is not enough, the number is.
    void ExpectNumber(int number, const std::vector<std::string>& words)
    {
        const ChildResult refused = Answer("y", words);
        EXPECT_EQ(refused.exit, 9) << refused.err;
        EXPECT_THAT(refused.err, HasSubstr(fmt::format("This removes {0} things; type {0} to go on: ", number)));
        const ChildResult done = Answer(std::to_string(number), words);
        EXPECT_EQ(done.exit, 0) << done.err;
    }

    CAConnect m_conn;
};

} // namespace

TEST(ConfirmTest, UpToTwentyThingsAYesIsEnough)
{
    for (const char* answer : {"y\n", "Y\n", "yes\n"}) {
        EXPECT_EQ(Answered(20, answer), "yes");
    }
    for (const char* answer : {"", "\n", "n\n", "20\n"}) {
        EXPECT_EQ(Answered(20, answer), "Delete it? [y/N] nothing was deleted");
    }
}

TEST(ConfirmTest, MoreAreConfirmedByTheirNumber)
{
    EXPECT_EQ(Answered(21, "21\n"), "yes");
    EXPECT_EQ(Answered(21, "", true), "yes");
    for (const char* answer : {"", "y\n", "yes\n", "2\n", "210\n", "22\n"}) {
        EXPECT_EQ(Answered(21, answer), "Delete it? This removes 21 things; type 21 to go on: nothing was deleted");
    }
}

TEST_F(ConfirmCommandsTest, ManyUsersRolesMessagesAndEntriesAreDeletedByTheirNumber)
{
    InsertMany(25, "qv_User (Col_ID, Col_LoginName)", "i, 'user' || i");
    InsertMany(25, "qv_Role (Col_ID, Col_Name, Col_AppName)", "i, 'role' || i, 'Tolvan'");
    InsertMany(25, "qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType)", "1, 3, i, 1");
    InsertMany(25, "kel_Msg", "i, '2001-01-01'");
    InsertMany(30, "kel_Msg_Rece (Col_MsgID)", "i + 5");
    InsertMany(25, "kel_log (Col_ID)", "i");
    ExpectNumber(26, {"role", "delete", "role1"});
    std::vector<std::string> users = {"user", "delete"};
    std::vector<std::string> entries = {"loginlog", "delete"};
    for (int i = 1; i <= 21; ++i) {
        users.push_back("user" + std::to_string(i));
        entries.push_back(std::to_string(i));
    }
    ExpectNumber(21, users);
    ExpectNumber(21, entries);
    ExpectNumber(45, {"message", "purge", "--before", "2020-01-01"});
}

TEST_F(ConfirmCommandsTest, AGroupAViewAndAFolderWithMuchBelowAreDeletedByTheirNumber)
{
    InsertMany(25, "qv_User (Col_ID, Col_LoginName)", "i, 'user' || i");
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"view", "create", "Main"},
                                               {"group", "create", "/Main/A"},
                                               {"docroot", "create", "Files", "--path", "/x", "--type", "1"},
                                               {"folder", "create", "/Files/F"}}) {
        ASSERT_EQ(Run(words).exit, 0);
    }
    InsertMany(25, "qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType)", "1, 2, i, 1");
    InsertMany(24, "qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType)", "1, 4, i, 1");
    for (int i = 0; i < 11; ++i) {
        ASSERT_EQ(Run({"folder", "create", "/Files/F/" + std::to_string(i)}).exit, 0);
    }
    ExpectNumber(27, {"group", "delete", "/Main/A", "--recursive"});
    ExpectNumber(25, {"view", "delete", "Main"});
    ExpectNumber(24, {"folder", "delete", "/Files/F", "--recursive"});
}
