#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "tests/directory/Engines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using engines::Copied;
using testing::ElementsAre;
using testing::SizeIs;
using testing::UnorderedElementsAre;

// Every operation on settings, on every engine.

namespace {

class SettingsOnAnEngine : public engines::OnAnEngine {
protected:
    SettingsOnAnEngine() { Execute("DELETE FROM Tab_Config"); }

    void Add(const char* name, const char* value, const char* genre)
    {
        EXPECT_TRUE(CQVBaseFun::InsertTabConfigValue(m_conn, name, value, genre));
    }

    std::vector<std::string> Settings() { return Rows("SELECT Col_Name, Col_Data, Col_Genre FROM Tab_Config"); }

    template <class Number>
    Number Read(bool (*get)(CAConnect&, Number&))
    {
        Number number = 77;
        EXPECT_TRUE(get(m_conn, number));
        return number;
    }

    template <class Test, class... Texts>
    bool Exists(Test test, const Texts&... texts)
    {
        bool exists = false;
        EXPECT_TRUE(test(m_conn, texts..., exists));
        return exists;
    }
};

TEST_P(SettingsOnAnEngine, MissingNumbersAreZero)
{
    EXPECT_EQ(Read(&CQVBaseFun::GetKelServerConfigInfo), 0U);
    EXPECT_EQ(Read(&CQVBaseFun::GetMaxThreadCount), 0U);
    EXPECT_EQ(Read(&CQVBaseFun::GetTaskThreadCount), 0U);
    EXPECT_EQ(Read(&CQVBaseFun::GetKelDocServerFlag), 0U);
    ExpectNoError();
}

TEST_P(SettingsOnAnEngine, NumbersAreReadByNameAndGenre)
{
    Add("KelServerFlag", "1", "KelServerConfig");
    Add("maxThreads", "2", "KelServerConfig");
    Add("MastTaskThreads", "3", "KelServerConfig");
    Add("KelDocServerFlag", "4", "KelDocConfig");
    EXPECT_EQ(Read(&CQVBaseFun::GetKelServerConfigInfo), 1U);
    EXPECT_EQ(Read(&CQVBaseFun::GetMaxThreadCount), 2U);
    EXPECT_EQ(Read(&CQVBaseFun::GetTaskThreadCount), 3U);
    EXPECT_EQ(Read(&CQVBaseFun::GetKelDocServerFlag), 4U);
    Execute("UPDATE Tab_Config SET Col_Genre = 'other'");
    EXPECT_EQ(Read(&CQVBaseFun::GetKelServerConfigInfo), 0U);
    EXPECT_EQ(Read(&CQVBaseFun::GetMaxThreadCount), 0U);
    EXPECT_EQ(Read(&CQVBaseFun::GetTaskThreadCount), 0U);
    EXPECT_EQ(Read(&CQVBaseFun::GetKelDocServerFlag), 0U);
    ExpectNoError();
}

TEST_P(SettingsOnAnEngine, EmptyNumbersAndNullsAreZeroAndOthersReadAsFarAsTheyGo)
{
    Add("KelServerFlag", "", "KelServerConfig");
    Add("maxThreads", "12abc", "KelServerConfig");
    Add("MastTaskThreads", "abc12", "KelServerConfig");
    Add("KelDocServerFlag", "", "KelDocConfig");
    EXPECT_EQ(Read(&CQVBaseFun::GetKelServerConfigInfo), 0U);
    EXPECT_EQ(Read(&CQVBaseFun::GetMaxThreadCount), 12U);
    EXPECT_EQ(Read(&CQVBaseFun::GetTaskThreadCount), 0U);
    EXPECT_EQ(Read(&CQVBaseFun::GetKelDocServerFlag), 0U);
    Execute("UPDATE Tab_Config SET Col_Data = NULL");
    EXPECT_EQ(Read(&CQVBaseFun::GetMaxThreadCount), 0U);
    EXPECT_EQ(Read(&CQVBaseFun::GetKelDocServerFlag), 0U);
    ExpectNoError();
}

TEST_P(SettingsOnAnEngine, ThreadCountsAreAddedUpdatedAndTestedFor)
{
    EXPECT_FALSE(Exists(&CQVBaseFun::ExistThreadInfo, "maxThreads"));
    EXPECT_TRUE(CQVBaseFun::UpdateThreadInfo(m_conn, "maxThreads", 7));
    EXPECT_THAT(Settings(), SizeIs(0));
    Add("maxThreads", "9", "other");
    EXPECT_FALSE(Exists(&CQVBaseFun::ExistThreadInfo, "maxThreads"));
    EXPECT_TRUE(CQVBaseFun::InsertThreadInfo(m_conn, "maxThreads", 7));
    EXPECT_TRUE(CQVBaseFun::InsertThreadInfo(m_conn, "MastTaskThreads", 8));
    EXPECT_TRUE(Exists(&CQVBaseFun::ExistThreadInfo, "maxThreads"));
    EXPECT_EQ(Read(&CQVBaseFun::GetMaxThreadCount), 7U);
    EXPECT_TRUE(CQVBaseFun::UpdateThreadInfo(m_conn, "maxThreads", 4294967295U));
    EXPECT_EQ(Read(&CQVBaseFun::GetMaxThreadCount), 4294967295U);
    EXPECT_THAT(Settings(), UnorderedElementsAre("maxThreads|9|other", "maxThreads|-1|KelServerConfig",
                                                 "MastTaskThreads|8|KelServerConfig"));
    ExpectNoError();
}

TEST_P(SettingsOnAnEngine, TheDocumentServersFlagIsReadHoweverItWasWritten)
{
    EXPECT_FALSE(Exists(&CQVBaseFun::ExistKelDocServerFlag));
    EXPECT_TRUE(CQVBaseFun::UpdateKelDocServerFlag(m_conn, 5));
    EXPECT_THAT(Settings(), SizeIs(0));
    EXPECT_TRUE(CQVBaseFun::InsertKelDocServerFlag(m_conn, 5));
    EXPECT_TRUE(Exists(&CQVBaseFun::ExistKelDocServerFlag));
    EXPECT_THAT(Settings(), ElementsAre("KelDocServerFlag|5|KelDocConfig"));
    EXPECT_EQ(Read(&CQVBaseFun::GetKelDocServerFlag), 5U);
    EXPECT_TRUE(CQVBaseFun::UpdateKelDocServerFlag(m_conn, 2147483648UL));
    EXPECT_THAT(Settings(), ElementsAre("KelDocServerFlag|-2147483648|KelDocConfig"));
    EXPECT_EQ(Read(&CQVBaseFun::GetKelDocServerFlag), 2147483648UL);
    ExpectNoError();
}

TEST_P(SettingsOnAnEngine, DocumentSettingsAreAddedUpdatedTestedForAndRead)
{
    CString value = "before";
    EXPECT_TRUE(CQVBaseFun::GetKelDocConfig(m_conn, "n", value));
    EXPECT_STREQ(value, "before");
    EXPECT_FALSE(Exists(&CQVBaseFun::ExistKelDocConfig, "n"));
    Add("n", "elsewhere", "other");
    EXPECT_FALSE(Exists(&CQVBaseFun::ExistKelDocConfig, "n"));
    EXPECT_TRUE(CQVBaseFun::InsertKelDocConfig(m_conn, "n", Given(R"(v\1 é Ю)")));
    EXPECT_TRUE(CQVBaseFun::InsertKelDocConfig(m_conn, "m", "v2"));
    EXPECT_TRUE(Exists(&CQVBaseFun::ExistKelDocConfig, "n"));
    EXPECT_TRUE(CQVBaseFun::GetKelDocConfig(m_conn, "n", value));
    EXPECT_STREQ(value, R"(v\1 é Ю)");
    EXPECT_TRUE(CQVBaseFun::UpdateKelDocConfig(m_conn, "n", ""));
    EXPECT_TRUE(CQVBaseFun::GetKelDocConfig(m_conn, "n", value));
    EXPECT_STREQ(value, "");
    EXPECT_THAT(Settings(), UnorderedElementsAre("n|elsewhere|other", "n||KelDocConfig", "m|v2|KelDocConfig"));
    ExpectNoError();
}

TEST_P(SettingsOnAnEngine, TheCompanysPictureIsAddedUpdatedTestedForAndReadWithItsBackslashesSingle)
{
    CString picture = "before";
    EXPECT_TRUE(CQVBaseFun::GetCorDisplayPic(m_conn, picture));
    EXPECT_STREQ(picture, "");
    EXPECT_FALSE(Exists(&CQVBaseFun::ExistCorDisplayPic));
    EXPECT_TRUE(CQVBaseFun::InsertCorDisplayPic(m_conn, R"(a\b.png)"));
    EXPECT_TRUE(Exists(&CQVBaseFun::ExistCorDisplayPic));
    EXPECT_TRUE(CQVBaseFun::GetCorDisplayPic(m_conn, picture));
    EXPECT_STREQ(picture, R"(a\b.png)");
    EXPECT_TRUE(CQVBaseFun::UpdateCorDisplayPic(m_conn, R"(c\d.png)"));
    EXPECT_THAT(Settings(), ElementsAre(R"(CorDisplayPic|c\d.png|KelServerConfig)"));
    ExpectNoError();
}

TEST_P(SettingsOnAnEngine, EveryUsersPictureIsSetAtOnce)
{
    EXPECT_TRUE(CQVBaseFun::InsertUser(m_conn, "amy", ""));
    EXPECT_TRUE(CQVBaseFun::InsertUser(m_conn, "bob", ""));
    EXPECT_TRUE(CQVBaseFun::UpdateUserDisplayPic(m_conn, R"(a\b.png)"));
    EXPECT_THAT(Rows("SELECT Col_Picture FROM qv_User"), ElementsAre(R"(a\b.png)", R"(a\b.png)"));
    EXPECT_THAT(Settings(), SizeIs(0));
    ExpectNoError();
}

TEST_P(SettingsOnAnEngine, SettingsOfAnyGenreAreTestedForListedAndDeleted)
{
    Add("n", "v1", "g");
    Add("m", "v2", "g");
    Add("n", "v3", "h");
    EXPECT_TRUE(Exists(&CQVBaseFun::ExistTabConfigName, "n", "h"));
    EXPECT_FALSE(Exists(&CQVBaseFun::ExistTabConfigName, "m", "h"));
    CStringArray names;
    CStringArray values;
    EXPECT_TRUE(CQVBaseFun::LoadTabConfigInfo(m_conn, names, values, "g"));
    EXPECT_THAT(Copied(names), UnorderedElementsAre("n", "m"));
    EXPECT_THAT(Copied(values), UnorderedElementsAre("v1", "v2"));
    EXPECT_TRUE(CQVBaseFun::LoadTabConfigInfo(m_conn, names, values, "g"));
    EXPECT_EQ(names.GetSize(), 4);
    EXPECT_TRUE(CQVBaseFun::DeleteTabConfigValue(m_conn, "n", "g"));
    EXPECT_TRUE(CQVBaseFun::DeleteTabConfigValue(m_conn, "absent", "g"));
    EXPECT_THAT(Settings(), UnorderedElementsAre("m|v2|g", "n|v3|h"));
    ExpectNoError();
}

TEST_P(SettingsOnAnEngine, AnUpdateByNameSetsEveryGenre)
{
    Add("n", "v1", "g");
    Add("n", "v2", "h");
    Add("m", "v3", "g");
    EXPECT_TRUE(CQVBaseFun::UpdateTabConfigValue(m_conn, "n", "new"));
    EXPECT_TRUE(CQVBaseFun::UpdateTabConfigValue(m_conn, "absent", "new"));
    EXPECT_THAT(Settings(), UnorderedElementsAre("n|new|g", "n|new|h", "m|v3|g"));
    ExpectNoError();
}

TEST_P(SettingsOnAnEngine, AQuoteIsRefusedByEveryOperationThatSendsIt)
{
    bool exists = true;
    CString text = "before";
    CStringArray texts;
    EXPECT_FALSE(CQVBaseFun::ExistThreadInfo(m_conn, "o'n", exists));
    EXPECT_FALSE(exists);
    EXPECT_FALSE(CQVBaseFun::ExistKelDocConfig(m_conn, "o'n", exists));
    EXPECT_FALSE(CQVBaseFun::ExistTabConfigName(m_conn, "n", "o'g", exists));
    EXPECT_FALSE(CQVBaseFun::GetKelDocConfig(m_conn, "o'n", text));
    EXPECT_STREQ(text, "before");
    EXPECT_FALSE(CQVBaseFun::LoadTabConfigInfo(m_conn, texts, texts, "o'g"));
    EXPECT_FALSE(CQVBaseFun::InsertThreadInfo(m_conn, "o'n", 1));
    EXPECT_FALSE(CQVBaseFun::UpdateThreadInfo(m_conn, "o'n", 1));
    EXPECT_FALSE(CQVBaseFun::InsertKelDocConfig(m_conn, "n", "o'v"));
    EXPECT_FALSE(CQVBaseFun::UpdateKelDocConfig(m_conn, "n", "o'v"));
    EXPECT_FALSE(CQVBaseFun::InsertCorDisplayPic(m_conn, "o'p"));
    EXPECT_FALSE(CQVBaseFun::UpdateCorDisplayPic(m_conn, "o'p"));
    EXPECT_FALSE(CQVBaseFun::UpdateUserDisplayPic(m_conn, "o'p"));
    EXPECT_FALSE(CQVBaseFun::InsertTabConfigValue(m_conn, "n", "v", "o'g"));
    EXPECT_FALSE(CQVBaseFun::UpdateTabConfigValue(m_conn, "n", "o'v"));
    EXPECT_FALSE(CQVBaseFun::DeleteTabConfigValue(m_conn, "o'n", "g"));
    EXPECT_THAT(m_watch.messages, SizeIs(15));
    EXPECT_THAT(Settings(), SizeIs(0));
}

INSTANTIATE_TEST_SUITE_P(Engines, SettingsOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);

} // namespace
