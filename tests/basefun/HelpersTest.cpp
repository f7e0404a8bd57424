#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "testing/ScriptedDriver.h"
#include "tests/basefun/ErrorRecorder.h"
#include "tests/platform/AnsiCodePageScope.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>

using scripted::Raise;
using scripted::Rows;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

namespace fs = std::filesystem;

// Read before main, when no operation can have run yet.
const bool startedWithoutError = CQVBaseFun::m_strLastError.IsEmpty();

TEST(LastError, IsEmptyWhenTheLibraryIsLoaded) { EXPECT_TRUE(startedWithoutError); }

// ---- The class ---------------------------------------------------------------------------------------------------

class Derived : public CQVBaseFun {
public:
    Derived(bool& destroyed, int value) : m_destroyed(destroyed), m_value(value) {}
    Derived(const Derived&) = delete;
    Derived& operator=(const Derived&) = delete;
    ~Derived() override { m_destroyed = true; }

    [[nodiscard]] int Value() const { return m_value; }

private:
    bool& m_destroyed;
    int m_value;
};

TEST(QVBaseFun, HoldsNothingButItsVirtualDestructor)
{
    static_assert(sizeof(CQVBaseFun) == sizeof(void*));
    static_assert(std::has_virtual_destructor_v<CQVBaseFun>);
    bool destroyed = false;
    std::unique_ptr<CQVBaseFun> object = std::make_unique<Derived>(destroyed, 1);
    object.reset();
    EXPECT_TRUE(destroyed);
}

TEST(QVBaseFun, IsCopiedAndAssignedWithoutCopyingAnything)
{
    bool destroyed = false;
    Derived one(destroyed, 1);
    Derived two(destroyed, 2);
    CQVBaseFun& target = one;
    EXPECT_EQ(&(target = two), &target);
    EXPECT_EQ(one.Value(), 1);
    const CQVBaseFun copy(one);
    EXPECT_NE(&copy, static_cast<const CQVBaseFun*>(&one));
    EXPECT_NE(dynamic_cast<const Derived*>(&target), nullptr);
}

// ---- ReplaceSysSQL -----------------------------------------------------------------------------------------------

std::string Replaced(const char* sql) { return std::string(CQVBaseFun::ReplaceSysSQL(sql).View()); }

TEST(ReplaceSysSQL, RemovesBackslashes)
{
    EXPECT_EQ(Replaced(R"(C:\dir\file)"), "C:dirfile");
    EXPECT_EQ(Replaced(R"(\\\)"), "");
    EXPECT_EQ(Replaced(""), "");
}

TEST(ReplaceSysSQL, FillsInTextsAndNumbers)
{
    EXPECT_EQ(Replaced("a = '%s' AND b = %d"), "a = '11' AND b = 0");
    EXPECT_EQ(Replaced("%s%s%d%d"), "111100");
    EXPECT_EQ(Replaced("%x %S %D % s"), "%x %S %D % s");
}

TEST(ReplaceSysSQL, RemovesBackslashesBeforeItLooksForPlaceholders) { EXPECT_EQ(Replaced(R"(%\s %\d)"), "11 0"); }

TEST(ReplaceSysSQL, DoesNotLookIntoWhatItHasFilledIn)
{
    EXPECT_EQ(Replaced("%%sd"), "%11d");
    EXPECT_EQ(Replaced("%%ds"), "%0s");
}

TEST(ReplaceSysSQL, FillsInTheCurrentTimeBeforeTheTexts)
{
    // Asked again until no second has passed meanwhile.
    std::string before;
    std::string after;
    std::string replaced;
    do {
        COleDateTime now = COleDateTime::GetCurrentTime();
        before = CQVBaseFun::FormatDBTIMEToStr(now);
        replaced = Replaced(R"(SELECT * FROM t WHERE d < #%s# AND e > #\%s# AND a = '%s' AND b = %d AND c = '#%s')");
        now = COleDateTime::GetCurrentTime();
        after = CQVBaseFun::FormatDBTIMEToStr(now);
    } while (before != after);
    EXPECT_EQ(replaced, "SELECT * FROM t WHERE d < #" + before + "# AND e > #" + before +
                            "# AND a = '11' AND b = 0 AND c = '#11'");
}

TEST(ReplaceSysSQL, LeavesTheCallersTextAlone)
{
    const CString sql = R"(\%s)";
    EXPECT_STREQ(CQVBaseFun::ReplaceSysSQL(sql), "11");
    EXPECT_STREQ(sql, R"(\%s)");
}

// ---- FormatDBTIMEToStr -------------------------------------------------------------------------------------------

TEST(FormatDBTIMEToStr, PadsNoNumber)
{
    COleDateTime morning(2013, 5, 7, 9, 3, 2);
    EXPECT_STREQ(CQVBaseFun::FormatDBTIMEToStr(morning), "2013-5-7 9:3:2");
    COleDateTime midnight(2000, 1, 1, 0, 0, 0);
    EXPECT_STREQ(CQVBaseFun::FormatDBTIMEToStr(midnight), "2000-1-1 0:0:0");
    COleDateTime last(1999, 12, 31, 23, 59, 58);
    EXPECT_STREQ(CQVBaseFun::FormatDBTIMEToStr(last), "1999-12-31 23:59:58");
}

// ---- ToUTF8String ------------------------------------------------------------------------------------------------

std::string Utf8Of(const char* text)
{
    CString converted = text;
    EXPECT_EQ(CQVBaseFun::ToUTF8String(converted), 1);
    return std::string(converted.View());
}

TEST(ToUTF8String, LeavesAsciiAndTheEmptyTextInEveryCodePage)
{
    for (const UINT page : {65001U, 936U, 950U, 932U, 949U, 874U, 1250U, 1251U, 1252U}) {
        const AnsiCodePageScope scope(page);
        EXPECT_EQ(Utf8Of(""), "") << page;
        EXPECT_EQ(Utf8Of("Amy \\ 'Lee' ~"), "Amy \\ 'Lee' ~") << page;
    }
}

TEST(ToUTF8String, ConvertsFromTheCodePageOfTheProcess)
{
    const AnsiCodePageScope western(1252);
    EXPECT_EQ(Utf8Of("Jos\xE9 \x80"), "José €");
    const AnsiCodePageScope cyrillic(1251);
    EXPECT_EQ(Utf8Of("\xDE\xEB\xE8\xFF"), "Юлия");
    const AnsiCodePageScope chinese(936);
    EXPECT_EQ(Utf8Of("\xC4\xE3\xBA\xC3!"), "你好!");
    const AnsiCodePageScope japanese(932);
    EXPECT_EQ(Utf8Of("\x83\x5C"), "ソ");
    const AnsiCodePageScope utf8(65001);
    EXPECT_EQ(Utf8Of("José 你 😀"), "José 你 😀");
}

TEST(ToUTF8String, ConvertsLongTexts)
{
    const AnsiCodePageScope western(1252);
    std::string expected;
    for (int i = 0; i < 100000; ++i) {
        expected += "é";
    }
    EXPECT_EQ(Utf8Of(std::string(100000, '\xE9').c_str()), expected);
}

// ---- IsDataBaseValid ---------------------------------------------------------------------------------------------

class DataBaseValidity : public testing::Test {
protected:
    DataBaseValidity()
    {
        m_database.Connect(m_conn);
        m_watch.ListenTo(m_conn);
    }

    void ExpectNoError() const
    {
        EXPECT_EQ(ErrorRecorder::Text(), ErrorRecorder::kOlder);
        EXPECT_THAT(m_watch.messages, IsEmpty());
    }

    ErrorRecorder m_watch;
    scripted::Database m_database;
    CAConnect m_conn;
};

TEST_F(DataBaseValidity, ShowsByTheRowsThatTheEngineGives)
{
    for (const int kind : {0, 1, 6}) {
        bool valid = false;
        m_database.Answer(Rows({{"qv_User"}}));
        EXPECT_TRUE(CQVBaseFun::IsDataBaseValid(m_conn, kind, "directory", valid));
        EXPECT_TRUE(valid) << kind;
        m_database.Answer(Rows({{{}}}));
        valid = false;
        EXPECT_TRUE(CQVBaseFun::IsDataBaseValid(m_conn, kind, "directory", valid));
        EXPECT_TRUE(valid) << kind << ": a row of NULL is a row";
        EXPECT_TRUE(CQVBaseFun::IsDataBaseValid(m_conn, kind, "directory", valid));
        EXPECT_FALSE(valid) << kind;
    }
    ExpectNoError();
}

TEST_F(DataBaseValidity, OfKind3IsTakenForGrantedAndOfOtherKindsIsNotKnown)
{
    m_database.GoAway();
    bool valid = false;
    EXPECT_TRUE(CQVBaseFun::IsDataBaseValid(m_conn, 3, "directory", valid));
    EXPECT_TRUE(valid);
    for (const int kind : {-1, 2, 4, 5, 7}) {
        valid = true;
        EXPECT_FALSE(CQVBaseFun::IsDataBaseValid(m_conn, kind, "directory", valid)) << kind;
        EXPECT_FALSE(valid) << kind;
    }
    EXPECT_THAT(m_database.queries, IsEmpty());
    ExpectNoError();
}

TEST_F(DataBaseValidity, IsNotKnownOnAClosedConnection)
{
    m_database.GoAway();
    for (const int kind : {0, 1, 6}) {
        bool valid = true;
        EXPECT_FALSE(CQVBaseFun::IsDataBaseValid(m_conn, kind, "directory", valid));
        EXPECT_FALSE(valid);
    }
    EXPECT_THAT(m_database.queries, IsEmpty());
    ExpectNoError();
}

TEST_F(DataBaseValidity, IsReportedWhenTheEngineRefuses)
{
    m_database.Answer(Raise("no such table"));
    bool valid = true;
    EXPECT_FALSE(CQVBaseFun::IsDataBaseValid(m_conn, 0, "directory", valid));
    EXPECT_FALSE(valid);
    EXPECT_THAT(ErrorRecorder::Text(),
                testing::MatchesRegex("basefun/QVBaseFun\\.cpp\\([0-9]+\\): no such table \\[Script 1\\]: SELECT name "
                                      "from MSysObjects where name = 'qv_User'"));
    ASSERT_THAT(m_watch.messages, SizeIs(1));
    EXPECT_EQ(m_watch.messages[0].lParam, reinterpret_cast<LPARAM>(&CQVBaseFun::m_strLastError));
}

// ---- WriteToLogFileEx --------------------------------------------------------------------------------------------

TEST(WriteToLogFileEx, WritesNothingAnywhere)
{
    std::string name = (fs::temp_directory_path() / "qv-log-XXXXXX").string();
    const fs::path folder = ::mkdtemp(name.data());
    const fs::path before = fs::current_path();
    const ErrorRecorder watch;
    fs::current_path(folder);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    CQVBaseFun::WriteToLogFileEx("INSERT %s%n");
    CQVBaseFun::WriteToLogFileEx("");
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    fs::current_path(before);
    EXPECT_TRUE(fs::is_empty(folder));
    EXPECT_EQ(ErrorRecorder::Text(), ErrorRecorder::kOlder);
    fs::remove_all(folder);
}

} // namespace
