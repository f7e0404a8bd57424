#include "dbaccess/CAConnect.h"
#include "dbaccess/CADateTime.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"
#include "testing/ScriptedDriver.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <string>
#include <vector>

namespace {

bool Open(CARecordset& rs, CAConnect& conn, const char* sql)
{
    return rs.Open(sql, &conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
}

class RecordsetTest : public testing::Test {
protected:
    RecordsetTest() { m_conn.Open("sqlite::memory:"); }

    CARecordset& Query(const char* sql)
    {
        EXPECT_TRUE(Open(m_rs, m_conn, sql));
        return m_rs;
    }

    int IntOf(const char* value)
    {
        int number = -77;
        EXPECT_TRUE(Query((std::string("SELECT ") + value).c_str()).GetValue(1, number));
        return number;
    }

    CAConnect m_conn;
    CARecordset m_rs;
};

TEST_F(RecordsetTest, StandsOnTheFirstRowAndWalksToTheEnd)
{
    CARecordset& rs = Query("SELECT 1 UNION ALL SELECT 2 UNION ALL SELECT 3");
    std::vector<int> read;
    EXPECT_NE(rs.MoveFirst(), 0);
    for (; rs.IsEOF() == 0; rs.MoveNext()) {
        int number = 0;
        EXPECT_TRUE(rs.GetValue(1, number));
        read.push_back(number);
    }
    EXPECT_EQ(read, (std::vector{1, 2, 3}));
    EXPECT_EQ(rs.MoveNext(), 0);
}

TEST_F(RecordsetTest, GoesBackToTheFirstRow)
{
    CARecordset& rs = Query("SELECT 1 UNION ALL SELECT 2");
    rs.MoveNext();
    rs.MoveNext();
    EXPECT_NE(rs.IsEOF(), 0);
    EXPECT_NE(rs.MoveFirst(), 0);
    EXPECT_STREQ(rs.GetValueToStr(1, true), "1");
}

TEST_F(RecordsetTest, IsAtTheEndOfAnEmptyResultAtOnce)
{
    CARecordset& rs = Query("SELECT 1 WHERE 0");
    EXPECT_NE(rs.IsEOF(), 0);
    EXPECT_EQ(rs.MoveFirst(), 0);
    EXPECT_EQ(rs.MoveNext(), 0);
}

TEST_F(RecordsetTest, GivesNothingWithoutACurrentRowAndRaisesNothing)
{
    CARecordset& rs = Query("SELECT 1 AS a WHERE 0");
    int number = 5;
    bool flag = true;
    CString text = "kept";
    CADateTime date(2013, 5, 7, 9, 3, 2);
    EXPECT_FALSE(rs.GetValue(1, number));
    EXPECT_FALSE(rs.GetValue(1, flag));
    EXPECT_FALSE(rs.GetValue(1, text, true));
    EXPECT_FALSE(rs.GetValue(1, date));
    EXPECT_FALSE(rs.GetValueByName("a", number));
    EXPECT_EQ(number, 5);
    EXPECT_TRUE(flag);
    EXPECT_STREQ(text, "kept");
    EXPECT_EQ(date.GetYear(), 2013);
    EXPECT_STREQ(rs.GetValueToStr(1, true), "");
}

TEST_F(RecordsetTest, LeavesOutputsAloneForNull)
{
    CARecordset& rs = Query("SELECT NULL AS a");
    int number = 5;
    unsigned long wide = 6;
    __int64 big = 7;
    bool flag = true;
    CString text = "kept";
    CADateTime date(2013, 5, 7, 9, 3, 2);
    EXPECT_FALSE(rs.GetValue(1, number));
    EXPECT_FALSE(rs.GetValue(1, wide));
    EXPECT_FALSE(rs.GetValue(1, big));
    EXPECT_FALSE(rs.GetValue(1, flag));
    EXPECT_FALSE(rs.GetValue(1, text, true));
    EXPECT_FALSE(rs.GetValue(1, date));
    EXPECT_FALSE(rs.GetValueByName("A", flag));
    EXPECT_EQ(number, 5);
    EXPECT_EQ(wide, 6UL);
    EXPECT_EQ(big, 7);
    EXPECT_TRUE(flag);
    EXPECT_STREQ(text, "kept");
    EXPECT_EQ(date.GetDay(), 7);
    EXPECT_STREQ(rs.GetValueToStrByName("a", true), "");
}

TEST_F(RecordsetTest, RaisesForAColumnThatIsNotThereRowOrNoRow)
{
    int number = 0;
    for (const char* sql : {"SELECT 1 AS a", "SELECT 1 AS a WHERE 0"}) {
        CARecordset& rs = Query(sql);
        EXPECT_THROW(rs.GetValue(0, number), CAException);
        EXPECT_THROW(rs.GetValue(2, number), CAException);
        EXPECT_THROW(rs.GetValue(-1, number), CAException);
        EXPECT_THROW(rs.GetValueByName("b", number), CAException);
        EXPECT_THROW(rs.GetValueToStrByName("", true), CAException);
    }
}

TEST_F(RecordsetTest, FindsColumnsByNameWithoutRegardToCase)
{
    CARecordset& rs = Query("SELECT 1 AS Col_ID, 2 AS col_entype");
    int number = 0;
    EXPECT_TRUE(rs.GetValueByName("COL_id", number));
    EXPECT_EQ(number, 1);
    EXPECT_TRUE(rs.GetValueByName("Col_EnType", number));
    EXPECT_EQ(number, 2);
    EXPECT_EQ(rs.GetColumnNumber("Col_EnType"), 2);
    EXPECT_EQ(rs.GetColumnCount(), 2);
    EXPECT_STREQ(rs.GetColumnName(1), "Col_ID");
}

TEST_F(RecordsetTest, ReadsNumbersFromTextsAsAtoiDoes)
{
    EXPECT_EQ(IntOf("'17'"), 17);
    EXPECT_EQ(IntOf("'  -17x'"), -17);
    EXPECT_EQ(IntOf("'+8'"), 8);
    EXPECT_EQ(IntOf("'+-8'"), 0);
    EXPECT_EQ(IntOf("''"), 0);
    EXPECT_EQ(IntOf("'x1'"), 0);
    EXPECT_EQ(IntOf("'0x10'"), 0);
    EXPECT_EQ(IntOf("'3.9'"), 3);
    EXPECT_EQ(IntOf("x'3432'"), 42);
}

TEST_F(RecordsetTest, ReadsNumbersFromRealsWithoutTheirFraction)
{
    EXPECT_EQ(IntOf("3.9"), 3);
    EXPECT_EQ(IntOf("-3.9"), -3);
    __int64 big = 0;
    EXPECT_TRUE(Query("SELECT 1e300").GetValue(1, big));
    EXPECT_EQ(big, INT64_MAX);
    EXPECT_TRUE(Query("SELECT -1e300").GetValue(1, big));
    EXPECT_EQ(big, INT64_MIN);
}

TEST_F(RecordsetTest, KeepsThe32BitsOfAPowerWhateverTheSign)
{
    unsigned long power = 0;
    EXPECT_TRUE(Query("SELECT -1").GetValue(1, power));
    EXPECT_EQ(power, 4294967295UL);
    EXPECT_TRUE(Query("SELECT 4294967295").GetValue(1, power));
    EXPECT_EQ(power, 4294967295UL);
    EXPECT_TRUE(Query("SELECT 4294967296").GetValue(1, power));
    EXPECT_EQ(power, 0UL);
    EXPECT_EQ(IntOf("4294967295"), -1);
    EXPECT_EQ(IntOf("-2147483648"), INT_MIN);
}

TEST_F(RecordsetTest, ReadsWideCounts)
{
    __int64 count = 0;
    EXPECT_TRUE(Query("SELECT 9223372036854775807").GetValue(1, count));
    EXPECT_EQ(count, INT64_MAX);
    EXPECT_TRUE(Query("SELECT '99999999999999999999'").GetValue(1, count));
    EXPECT_EQ(count, INT64_MAX);
    EXPECT_TRUE(Query("SELECT '-99999999999999999999'").GetValue(1, count));
    EXPECT_EQ(count, INT64_MIN);
}

TEST_F(RecordsetTest, ReadsTextsFromNumbers)
{
    EXPECT_STREQ(Query("SELECT -17").GetValueToStr(1, true), "-17");
    EXPECT_STREQ(Query("SELECT 1.5").GetValueToStr(1, true), "1.5");
    CString text;
    EXPECT_TRUE(Query("SELECT 12").GetValue(1, text, true));
    EXPECT_STREQ(text, "12");
}

TEST_F(RecordsetTest, ReadsFlagsFromNumbersAndTexts)
{
    for (const auto& [value, expected] : std::vector<std::pair<const char*, bool>>{
             {"0", false}, {"1", true}, {"-1", true}, {"'0'", false}, {"'1'", true}, {"''", false}, {"2.5", true}}) {
        bool flag = !expected;
        EXPECT_TRUE(Query((std::string("SELECT ") + value).c_str()).GetValue(1, flag));
        EXPECT_EQ(flag, expected) << value;
    }
}

TEST_F(RecordsetTest, KeepsEveryByteOfAText)
{
    const CString text = Query("SELECT 'a' || char(0) || 'b'").GetValueToStr(1, true);
    EXPECT_EQ(text.View(), std::string_view("a\0b", 3));
    EXPECT_EQ(Query("SELECT printf('%.*c', 100000, 'x')").GetValueToStr(1, true).GetLength(), 100000);
}

TEST_F(RecordsetTest, GivesTheSameTextWhenAColumnIsReadTwice)
{
    CARecordset& rs = Query("SELECT 'long enough not to be short', 7");
    int number = 0;
    EXPECT_STREQ(rs.GetValueToStr(1, true), "long enough not to be short");
    EXPECT_TRUE(rs.GetValue(1, number));
    EXPECT_STREQ(rs.GetValueToStr(2, true), "7");
    EXPECT_TRUE(rs.GetValue(2, number));
    EXPECT_EQ(number, 7);
    EXPECT_STREQ(rs.GetValueToStr(1, true), "long enough not to be short");
}

TEST_F(RecordsetTest, ReadsDatesFromIsoText)
{
    CADateTime date;
    EXPECT_TRUE(Query("SELECT '2013-05-07 09:03:02'").GetValue(1, date));
    EXPECT_EQ(date.GetYear(), 2013);
    EXPECT_EQ(date.GetMonth(), 5);
    EXPECT_EQ(date.GetDay(), 7);
    EXPECT_EQ(date.GetHour(), 9);
    EXPECT_EQ(date.GetMinute(), 3);
    EXPECT_EQ(date.GetSecond(), 2);
    EXPECT_EQ(date.GetOleDateTime(), COleDateTime(2013, 5, 7, 9, 3, 2));
    EXPECT_FALSE(Query("SELECT 'soon'").GetValue(1, date));
    EXPECT_FALSE(Query("SELECT ''").GetValue(1, date));
    EXPECT_FALSE(Query("SELECT 41401").GetValue(1, date));
    EXPECT_EQ(date.GetYear(), 2013);
}

TEST_F(RecordsetTest, OpensAgainWithAnotherQuery)
{
    Query("SELECT 1");
    EXPECT_STREQ(Query("SELECT 'b', 'c'").GetValueToStr(2, true), "c");
    EXPECT_THROW(Open(m_rs, m_conn, "SELECT nonsense FROM nowhere"), CAException);
    EXPECT_NE(m_rs.IsEOF(), 0);
    EXPECT_EQ(m_rs.GetColumnCount(), 0);
}

TEST(Recordset, OutlivesItsConnection)
{
    CARecordset rs;
    {
        CAConnect conn;
        conn.Open("sqlite::memory:");
        Open(rs, conn, "SELECT 1 UNION ALL SELECT 2");
    }
    rs.MoveNext();
    EXPECT_STREQ(rs.GetValueToStr(1, true), "2");
}

TEST(Recordset, LetsARowThatFailsRaiseWhereItIsSteppedTo)
{
    scripted::Database database;
    scripted::Reply reply = scripted::Rows({{"1"}, {"2"}});
    reply.raiseAtRow = 1;
    database.Answer(reply);
    CAConnect conn;
    database.Connect(conn);
    CARecordset rs;
    EXPECT_TRUE(Open(rs, conn, "SELECT"));
    EXPECT_STREQ(rs.GetValueToStr(1, true), "1");
    EXPECT_THROW(rs.MoveNext(), CAException);
    EXPECT_NE(rs.IsEOF(), 0);
}

} // namespace
