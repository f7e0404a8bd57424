#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "tests/directory/Engines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// Every operation on passwords, on every engine.

namespace {

class PasswordsOnAnEngine : public engines::OnAnEngine {
protected:
    void Add(const char* loginName) { EXPECT_TRUE(CQVBaseFun::InsertUser(m_conn, loginName, "")); }

    /// Sets a password the way callers do.
    void Set(const char* loginName, const char* password, int type)
    {
        CString text = type == 2 ? CString(loginName) + password : CString(password);
        EXPECT_TRUE(CQVBaseFun::Encrypt(text, "", type));
        EXPECT_TRUE(CQVBaseFun::UpdateItemPassword(m_conn, loginName, Given(text), type));
    }

    bool Matches(const char* loginName, const char* password)
    {
        bool matches = false;
        EXPECT_TRUE(CQVBaseFun::CheckUserPassword(m_conn, loginName, password, matches));
        return matches;
    }

    std::string Key()
    {
        CString key = "before";
        EXPECT_TRUE(CQVBaseFun::GetEncryptKey(m_conn, key));
        return std::string(key.View());
    }
};

TEST_P(PasswordsOnAnEngine, APasswordOfEveryTypeIsStoredAndChecked)
{
    for (const char* login : {"amy", "José", "Юлия"}) {
        Add(login);
        for (const int type : {0, 1, 2, 7, -1}) {
            for (const char* password : {"Secret", "пароль", "pass😀word", "back\\slash"}) {
                Set(login, password, type);
                EXPECT_TRUE(Matches(login, password)) << login << " " << password << " of type " << type;
                EXPECT_FALSE(Matches(login, "secret")) << login << " " << password << " of type " << type;
                EXPECT_FALSE(Matches(login, "")) << login << " " << password << " of type " << type;
            }
        }
    }
    ExpectNoError();
}

TEST_P(PasswordsOnAnEngine, UsersOfDifferentTypesAreEachCheckedByTheirOwn)
{
    Add("amy");
    Add("bob");
    Add("cid");
    Set("amy", "abc", 0);
    Set("bob", "abc", 1);
    Set("cid", "abc", 2);
    EXPECT_THAT(Rows("SELECT Col_LoginName, Col_PWord, Col_EnType FROM qv_User ORDER BY Col_LoginName"),
                ElementsAre("amy|abc|0", "bob|900150983cd24fb0d6963f7d28e17f72|1",
                            testing::MatchesRegex("cid\\|[0-9a-f]+\\|2")));
    for (const char* login : {"amy", "bob", "cid"}) {
        EXPECT_TRUE(Matches(login, "abc")) << login;
    }
    ExpectNoError();
}

TEST_P(PasswordsOnAnEngine, AnEmptyPasswordMatchesAnEmptyOneWhateverTheType)
{
    Add("amy");
    for (const int type : {0, 1, 2, 7}) {
        EXPECT_TRUE(CQVBaseFun::UpdateItemPassword(m_conn, "amy", "", type));
        EXPECT_TRUE(Matches("amy", "")) << type;
        EXPECT_FALSE(Matches("amy", "abc")) << type;
    }
    Execute("UPDATE qv_User SET Col_PWord = NULL");
    EXPECT_TRUE(Matches("amy", ""));
    ExpectNoError();
}

TEST_P(PasswordsOnAnEngine, ATypeThatIsNullMeansAPlainPassword)
{
    Add("amy");
    Execute("UPDATE qv_User SET Col_PWord = 'abc', Col_EnType = NULL");
    EXPECT_TRUE(Matches("amy", "abc"));
    ExpectNoError();
}

TEST_P(PasswordsOnAnEngine, AnUnknownUserIsCheckedInVainAndUpdatedToNoEffect)
{
    Add("amy");
    Set("amy", "abc", 0);
    bool matches = true;
    EXPECT_FALSE(CQVBaseFun::CheckUserPassword(m_conn, "bob", "", matches));
    EXPECT_FALSE(matches);
    EXPECT_TRUE(CQVBaseFun::UpdateItemPassword(m_conn, "bob", "x", 1));
    EXPECT_THAT(Rows("SELECT Col_PWord, Col_EnType FROM qv_User"), ElementsAre("abc|0"));
    ExpectNoError();
}

TEST_P(PasswordsOnAnEngine, AQuoteIsRefusedAndReportedByAllThatSendIt)
{
    Add("amy");
    bool matches = true;
    EXPECT_FALSE(CQVBaseFun::CheckUserPassword(m_conn, "o'brien", "abc", matches));
    EXPECT_FALSE(matches);
    EXPECT_FALSE(CQVBaseFun::UpdateItemPassword(m_conn, "amy", "a'b", 0));
    EXPECT_FALSE(CQVBaseFun::UpdateItemPassword(m_conn, "o'brien", "ab", 0));
    EXPECT_FALSE(CQVBaseFun::SetEncryptKey(m_conn, "k'y"));
    EXPECT_THAT(m_watch.messages, SizeIs(4));
    EXPECT_THAT(Rows("SELECT Col_Name FROM Tab_Config WHERE Col_Name = 'EncryptKey'"), IsEmpty());
}

TEST_P(PasswordsOnAnEngine, AQuoteInATypedPasswordIsOnlyCompared)
{
    Add("amy");
    Set("amy", "a\"b", 1);
    EXPECT_FALSE(Matches("amy", "a'b"));
    ExpectNoError();
}

// ---- The key -----------------------------------------------------------------------------------------------------

TEST_P(PasswordsOnAnEngine, AKeyIsAddedWithoutAGenreAndThenUpdated)
{
    EXPECT_EQ(Key(), "");
    EXPECT_TRUE(CQVBaseFun::SetEncryptKey(m_conn, "first"));
    EXPECT_EQ(Key(), "first");
    EXPECT_TRUE(CQVBaseFun::SetEncryptKey(m_conn, Given(R"(sec\ond é Ю)")));
    EXPECT_EQ(Key(), R"(sec\ond é Ю)");
    EXPECT_THAT(Rows("SELECT Col_Data, Col_Genre FROM Tab_Config WHERE Col_Name = 'EncryptKey'"),
                ElementsAre(R"(sec\ond é Ю|)"));
    ExpectNoError();
}

TEST_P(PasswordsOnAnEngine, AnEmptyKeyIsFollowedByASecondRow)
{
    EXPECT_TRUE(CQVBaseFun::SetEncryptKey(m_conn, ""));
    EXPECT_TRUE(CQVBaseFun::SetEncryptKey(m_conn, "key"));
    EXPECT_THAT(Rows("SELECT Col_Data FROM Tab_Config WHERE Col_Name = 'EncryptKey'"),
                testing::UnorderedElementsAre("", "key"));
    ExpectNoError();
}

INSTANTIATE_TEST_SUITE_P(Engines, PasswordsOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);

} // namespace
