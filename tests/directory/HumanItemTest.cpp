#include "directory/HumanItem.h"

#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "platform/CFile.h"
#include "testing/ScriptedDriver.h"
#include "tests/basefun/ErrorRecorder.h"
#include "tests/directory/HumanMembers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

using scripted::Raise;
using scripted::Reply;
using scripted::Rows;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;

namespace {

namespace fs = std::filesystem;

/// The names of the members that differ between two records.
std::set<std::string> Differences(const CHumanItem& a, const CHumanItem& b)
{
    std::set<std::string> names;
    for (const human::Text& text : human::kTexts) {
        if (!(a.*text.member == b.*text.member)) {
            names.insert(text.name);
        }
    }
    for (const human::Number& number : human::kNumbers) {
        if (a.*number.member != b.*number.member) {
            names.insert(number.name);
        }
    }
    for (const human::Flag& flag : human::kFlags) {
        if (a.*flag.member != b.*flag.member) {
            names.insert(flag.name);
        }
    }
    if (!(a.m_dtBirthday == b.m_dtBirthday)) {
        names.insert("birthday");
    }
    return names;
}

std::string Text(const CString& text) { return std::string(text.View()); }

TEST(HumanItem, BeginsWithItsDefaults)
{
    const COleDateTime before = COleDateTime::GetCurrentTime();
    const CHumanItem item;
    const COleDateTime after = COleDateTime::GetCurrentTime();
    for (const human::Text& text : human::kTexts) {
        EXPECT_TRUE((item.*text.member).IsEmpty()) << text.name;
    }
    for (const human::Flag& flag : human::kFlags) {
        EXPECT_FALSE(item.*flag.member) << flag.name;
    }
    EXPECT_EQ(item.m_nEnType, 1);
    EXPECT_EQ(item.m_nDomainID, 0);
    EXPECT_EQ(item.m_nItemIndex, 10000);
    EXPECT_EQ(item.m_nExtra, 0);
    EXPECT_EQ(item.m_nSex, 0);
    EXPECT_EQ(item.m_nDeptID, 0);
    EXPECT_TRUE(before <= item.m_dtBirthday && item.m_dtBirthday <= after);
}

TEST(HumanItem, IsARecordOfTheFrameworkWithoutACopyConstructor)
{
    static_assert(std::is_base_of_v<CObject, CHumanItem>);
    static_assert(std::has_virtual_destructor_v<CHumanItem>);
    static_assert(!std::is_copy_constructible_v<CHumanItem>);
    const std::unique_ptr<CObject> record = std::make_unique<CHumanItem>();
    EXPECT_NE(dynamic_cast<CHumanItem*>(record.get()), nullptr);
}

TEST(HumanItem, CopiesEveryMember)
{
    CHumanItem from;
    human::Fill(from, "'");
    for (const human::Flag& flag : human::kFlags) {
        CHumanItem to;
        from.*flag.member = true;
        to.CopyData(from);
        EXPECT_THAT(Differences(to, from), IsEmpty());
        from.*flag.member = false;
    }
}

TEST(HumanItem, CopiesFromItself)
{
    CHumanItem item;
    CHumanItem same;
    human::Fill(item, "'");
    human::Fill(same, "'");
    item.CopyData(item);
    EXPECT_THAT(Differences(item, same), IsEmpty());
}

TEST(HumanItem, DoublesTheQuotesOfExactlyFifteenTexts)
{
    const std::set<std::string> escaped = {"login",       "name",      "creator", "note",     "eMail",
                                           "description", "hProvince", "hCity",   "hAddress", "oCompany",
                                           "oAddress",    "oJobTitle", "eCard",   "deptInfo", "userData"};
    ASSERT_THAT(escaped, SizeIs(15));
    CHumanItem item;
    human::Fill(item, R"(''\')");
    CHumanItem before;
    before.CopyData(item);
    item.ReplaceVariable();
    EXPECT_EQ(Differences(item, before), escaped);
    for (const human::Text& text : human::kTexts) {
        const char* ending = escaped.contains(text.name) ? R"(''''\'')" : R"(''\')";
        EXPECT_EQ(Text(item.*text.member), std::string(text.name) + ending);
    }
}

// ---- Statements --------------------------------------------------------------------------------------------------

class HumanItemOnAScript : public testing::Test {
protected:
    HumanItemOnAScript()
    {
        m_database.Connect(m_conn);
        m_watch.ListenTo(m_conn);
        human::Fill(m_item, "'");
        human::Fill(m_before, "'");
    }

    void ExpectNoError() const
    {
        EXPECT_EQ(ErrorRecorder::Text(), ErrorRecorder::kOlder);
        EXPECT_THAT(m_watch.messages, IsEmpty());
    }

    /// The error of the only statement that was sent, with no message of it.
    void ExpectKeptError(const std::string& statement) const
    {
        const std::string text = ErrorRecorder::Text();
        EXPECT_THAT(text, MatchesRegex("directory/HumanItem\\.cpp\\([0-9]+\\): refused \\[Script 1\\]: .*"));
        EXPECT_TRUE(text.ends_with(" [Script 1]: " + statement)) << text;
        EXPECT_THAT(m_watch.messages, IsEmpty());
    }

    ErrorRecorder m_watch;
    scripted::Database m_database;
    CAConnect m_conn;
    CHumanItem m_item;
    CHumanItem m_before;
};

TEST_F(HumanItemOnAScript, SavingAndUpdatingGiveOneAndLeaveTheRecordsOwnTextsAlone)
{
    EXPECT_EQ(m_item.SaveData(m_conn), 1);
    EXPECT_EQ(m_item.Update(m_conn), 1);
    EXPECT_THAT(m_database.executions, SizeIs(2));
    EXPECT_THAT(Differences(m_item, m_before), IsEmpty());
    ExpectNoError();
}

TEST_F(HumanItemOnAScript, SavingThatIsRefusedGivesZeroAndKeepsTheTextWithoutAMessage)
{
    m_database.Answer(Raise("refused"));
    EXPECT_EQ(m_item.SaveData(m_conn), 0);
    ExpectKeptError(m_database.executions.at(0));
    EXPECT_THAT(Differences(m_item, m_before), IsEmpty());
}

TEST_F(HumanItemOnAScript, UpdatingThatIsRefusedGivesZeroAndDropsTheText)
{
    m_database.Answer(Raise("refused"));
    EXPECT_EQ(m_item.Update(m_conn), 0);
    EXPECT_THAT(m_database.executions, SizeIs(1));
    EXPECT_THAT(Differences(m_item, m_before), IsEmpty());
    ExpectNoError();
}

TEST_F(HumanItemOnAScript, LoadingThatIsRefusedGivesFalseAndKeepsTheTextWithoutAMessage)
{
    m_database.Answer(Raise("refused"));
    EXPECT_FALSE(m_item.LoadInfoByID(m_conn));
    ExpectKeptError(m_database.queries.at(0));
    EXPECT_THAT(Differences(m_item, m_before), IsEmpty());
}

TEST_F(HumanItemOnAScript, OnAClosedConnectionAllFailAndSayNothing)
{
    m_database.GoAway();
    EXPECT_EQ(m_item.SaveData(m_conn), 0);
    EXPECT_EQ(m_item.Update(m_conn), 0);
    EXPECT_FALSE(m_item.LoadInfoByID(m_conn));
    EXPECT_THAT(m_database.queries, IsEmpty());
    EXPECT_THAT(m_database.executions, IsEmpty());
    EXPECT_THAT(Differences(m_item, m_before), IsEmpty());
    ExpectNoError();
}

TEST_F(HumanItemOnAScript, LoadingWithoutARowGivesTrueAndLeavesEveryMember)
{
    EXPECT_TRUE(m_item.LoadInfoByID(m_conn));
    EXPECT_THAT(m_database.queries, SizeIs(1));
    EXPECT_THAT(Differences(m_item, m_before), IsEmpty());
    ExpectNoError();
}

Reply UserRow()
{
    std::vector<scripted::Value> row;
    for (int column = 1; column <= 30; ++column) {
        row.emplace_back("v" + std::to_string(column));
    }
    for (const int numberColumn : {1, 5, 6, 10, 27, 30}) {
        row[static_cast<std::size_t>(numberColumn) - 1] = std::to_string(2000 + numberColumn);
    }
    row[11] = "2001-02-03 04:05:06";
    return Rows({row});
}

TEST_F(HumanItemOnAScript, LoadingReadsEachColumnIntoItsMember)
{
    m_database.Answer(UserRow());
    EXPECT_TRUE(m_item.LoadInfoByID(m_conn));
    ExpectNoError();

    const std::vector<std::pair<const char*, CString CHumanItem::*>> texts = {
        {"v2", &CHumanItem::m_strLoginName},      {"v3", &CHumanItem::m_strName},
        {"v4", &CHumanItem::m_strPWord},          {"v7", &CHumanItem::m_strNote},
        {"v8", &CHumanItem::m_strEMail},          {"v9", &CHumanItem::m_strMobile},
        {"v11", &CHumanItem::m_strDescription},   {"v13", &CHumanItem::m_strHomeProvince},
        {"v14", &CHumanItem::m_strHomeCity},      {"v15", &CHumanItem::m_strHomeAddress},
        {"v16", &CHumanItem::m_strHomePostCode},  {"v17", &CHumanItem::m_strHomePhone},
        {"v18", &CHumanItem::m_strHomeFax},       {"v19", &CHumanItem::m_strCompanyName},
        {"v20", &CHumanItem::m_strOfficeAddress}, {"v21", &CHumanItem::m_strOfficePostCode},
        {"v22", &CHumanItem::m_strJobTitle},      {"v23", &CHumanItem::m_strOfficePhone},
        {"v24", &CHumanItem::m_strOfficeFax},     {"v25", &CHumanItem::m_strECard},
        {"v26", &CHumanItem::m_strDeptInfo},      {"v28", &CHumanItem::m_strPicture},
        {"v29", &CHumanItem::m_strFarServer},
    };
    for (const auto& [value, member] : texts) {
        EXPECT_STREQ(m_item.*member, value);
        m_before.*member = value;
    }
    EXPECT_EQ(m_item.m_nSex, 2010);
    EXPECT_EQ(m_item.m_nItemIndex, 2027);
    EXPECT_EQ(m_item.m_nEnType, 2030);
    EXPECT_TRUE(m_item.m_bIsSuper);
    EXPECT_TRUE(m_item.m_bDisabled);
    EXPECT_EQ(m_item.m_dtBirthday, COleDateTime(2001, 2, 3, 4, 5, 6));
    // Nothing else is touched, the id neither.
    EXPECT_EQ(Differences(m_item, m_before),
              (std::set<std::string>{"sex", "itemIndex", "enType", "isSuper", "disabled", "birthday"}));
}

TEST_F(HumanItemOnAScript, LoadingTellsTheTwoFlagsApart)
{
    for (const bool isSuper : {true, false}) {
        Reply reply = UserRow();
        reply.rows[0][4] = isSuper ? "1" : "0";
        reply.rows[0][5] = isSuper ? "0" : "1";
        m_database.Answer(reply);
        EXPECT_TRUE(m_item.LoadInfoByID(m_conn));
        EXPECT_EQ(m_item.m_bIsSuper, isSuper);
        EXPECT_EQ(m_item.m_bDisabled, !isSuper);
    }
}

TEST_F(HumanItemOnAScript, LoadingANullEmptiesTextsAndLeavesBirthdayNumbersAndFlags)
{
    m_item.m_bIsSuper = m_before.m_bIsSuper = true;
    m_item.m_bDisabled = m_before.m_bDisabled = true;
    m_database.Answer(Rows({std::vector<scripted::Value>(30)}));
    EXPECT_TRUE(m_item.LoadInfoByID(m_conn));
    EXPECT_STREQ(m_item.m_strLoginName, "");
    EXPECT_STREQ(m_item.m_strPicture, "");
    EXPECT_STREQ(m_item.m_strFarServer, "");
    const std::set<std::string> changed = Differences(m_item, m_before);
    EXPECT_THAT(changed, SizeIs(23));
    for (const char* left : {"id", "birthday", "sex", "itemIndex", "enType", "isSuper", "disabled"}) {
        EXPECT_FALSE(changed.contains(left)) << left;
    }
    ExpectNoError();
}

TEST_F(HumanItemOnAScript, LoadingABirthdayThatIsNoDateLeavesTheMember)
{
    Reply reply = UserRow();
    reply.rows[0][11] = "2001-02-30";
    m_database.Answer(reply);
    EXPECT_TRUE(m_item.LoadInfoByID(m_conn));
    EXPECT_EQ(m_item.m_dtBirthday, m_before.m_dtBirthday);
    EXPECT_STREQ(m_item.m_strHomeProvince, "v13");
}

TEST_F(HumanItemOnAScript, LoadingTakesTheFirstRowOnly)
{
    Reply reply = UserRow();
    reply.rows.push_back(reply.rows.front());
    reply.raiseAtRow = 1;
    m_database.Answer(reply);
    EXPECT_TRUE(m_item.LoadInfoByID(m_conn));
    ExpectNoError();
}

TEST_F(HumanItemOnAScript, LoadingThatBreaksOffKeepsWhatIsReadSoFar)
{
    // A result of too few columns raises in the middle of the row.
    Reply reply = UserRow();
    reply.rows[0].resize(3);
    m_database.Answer(reply);
    EXPECT_FALSE(m_item.LoadInfoByID(m_conn));
    EXPECT_EQ(Differences(m_item, m_before), (std::set<std::string>{"login", "name"}));
    EXPECT_THAT(ErrorRecorder::Text(),
                testing::HasSubstr("): column 4 is out of range: the result has 3: SELECT Col_ID,"));
    EXPECT_THAT(m_watch.messages, IsEmpty());
}

// ---- Writing to a file -------------------------------------------------------------------------------------------

class HumanItemFile : public testing::Test {
protected:
    HumanItemFile()
    {
        std::string name = (fs::temp_directory_path() / "qv-human-XXXXXX").string();
        m_folder = ::mkdtemp(name.data());
    }
    ~HumanItemFile() override { fs::remove_all(m_folder); }

    [[nodiscard]] CString Path() const { return (m_folder / "users.txt").c_str(); }
    [[nodiscard]] std::string Bytes() const
    {
        std::ifstream in(m_folder / "users.txt", std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }

    fs::path m_folder;
};

TEST_F(HumanItemFile, GetsTheTextsBytesAppendedAndNothingElse)
{
    std::ofstream(m_folder / "users.txt") << "before\n";
    CHumanItem item;
    human::Fill(item, "'");
    EXPECT_TRUE(item.WriteToFile(Path(), "amy"));
    EXPECT_EQ(Bytes(), "before\namy");
    EXPECT_TRUE(item.WriteToFile(Path(), ""));
    EXPECT_TRUE(item.WriteToFile(Path(), CString("b\0b", 3)));
    EXPECT_EQ(Bytes(), std::string("before\namyb\0b", 13));
}

TEST_F(HumanItemFile, ThatDoesNotExistRaisesAndIsNotMade)
{
    CHumanItem item;
    try {
        item.WriteToFile(Path(), "amy");
        ADD_FAILURE() << "nothing was raised";
    } catch (CFileException* e) {
        e->Delete();
    }
    EXPECT_FALSE(fs::exists(m_folder / "users.txt"));
}

TEST_F(HumanItemFile, ThatAnotherHoldsForWritingRaisesAndStaysAsItWas)
{
    std::ofstream(m_folder / "users.txt") << "before";
    CFile other;
    ASSERT_TRUE(other.Open(Path(), CFile::modeReadWrite | CFile::shareDenyWrite));
    CHumanItem item;
    try {
        item.WriteToFile(Path(), "amy");
        ADD_FAILURE() << "nothing was raised";
    } catch (CFileException* e) {
        e->Delete();
    }
    EXPECT_EQ(Bytes(), "before");
}

} // namespace
