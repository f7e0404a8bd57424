#include "management/import/CsvReader.h"

#include <gmock/gmock.h>

#include <sstream>

using namespace management;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

std::vector<CsvRecord> ReadAll(const std::string& text)
{
    std::istringstream in(text);
    CsvReader reader(in);
    std::vector<CsvRecord> records;
    while (const std::optional<CsvRecord> record = reader.Next()) {
        records.push_back(*record);
    }
    EXPECT_FALSE(reader.Failed());
    return records;
}

std::string Described(const std::vector<CsvRecord>& records)
{
    std::string text;
    for (const CsvRecord& record : records) {
        text += std::to_string(record.line) + ":";
        for (const std::string& field : record.fields) {
            text += "[" + field + "]";
        }
        text += record.problem.IsEmpty() ? "\n" : "!\n";
    }
    return text;
}

struct CsvCase {
    const char* name;
    std::string text;
    std::string expected; ///< a line per record: line number, fields, ! for one that cannot be read
};

const CsvCase kCases[] = {
    {"nothing", "", ""},
    {"no line break at the end", "a,b", "1:[a][b]\n"},
    {"CRLF", "a,b\r\nc,d\r\n", "1:[a][b]\n2:[c][d]\n"},
    {"byte order mark",
     "\xEF\xBB\xBF"
     "a,b\n",
     "1:[a][b]\n"},
    {"byte order mark before a quote", "\xEF\xBB\xBF\"a\",b\n", "1:[a][b]\n"},
    {"empty fields", ",\na,,\n", "1:[][]\n2:[a][][]\n"},
    {"blank lines are skipped and counted", "a\n\n  \r\n\t\nb\n", "1:[a]\n5:[b]\n"},
    {"blanks belong to the value", " a , b\n", "1:[ a ][ b]\n"},
    {"quoted comma, quote and line break", "\"a,b\",\"c\"\"d\",\"e\nf\"\ng\n", "1:[a,b][c\"d][e\nf]\n3:[g]\n"},
    {"a quoted CRLF stays", "\"a\r\nb\"\r\nc\r\n", "1:[a\r\nb]\n3:[c]\n"},
    {"quote in the middle", "a\nb\"c,d\ne\n", "1:[a]\n2:!\n3:[e]\n"},
    {"text behind a quote", "\"a\"b\nc\n", "1:!\n2:[c]\n"},
    {"quote never closed", "a\nb,\"c\nd\ne\n", "1:[a]\n2:!\n3:[d]\n4:[e]\n"},
    {"quote closed by a later row's", "a,\"b\nc,\"d\"\ne\n", "1:!\n2:[c][d]\n3:[e]\n"},
    {"two quotes never closed", "\"a\nb,\"c\nd\n", "1:!\n2:!\n3:[d]\n"},
    {"quote never closed on the last line", "a\n\"b", "1:[a]\n2:!\n"},
    {"bytes that are no UTF-8", "a\xFF\nb\n", "1:[a\xFF]!\n2:[b]\n"},
    {"NUL byte", std::string("a\0b\nc\n", 6), std::string("1:[a\0b]!\n2:[c]\n", 15)},
};

} // namespace

TEST(CsvReaderTest, ReadsWhatIsGoodAroundWhatIsNot)
{
    for (const CsvCase& test : kCases) {
        EXPECT_EQ(Described(ReadAll(test.text)), test.expected) << test.name;
    }
}

TEST(CsvReaderTest, SaysWhatIsWrong)
{
    EXPECT_THAT(ReadAll("b\"c\n")[0].problem, HasSubstr("quote"));
    EXPECT_THAT(ReadAll("\"c\n\n\n\"x\n")[0].problem, HasSubstr("line 4"));
    EXPECT_THAT(ReadAll("\"c")[0].problem, HasSubstr("never closed"));
    EXPECT_THAT(ReadAll("\xC3(")[0].problem, HasSubstr("UTF-8"));
    EXPECT_THAT(ReadAll(std::string("\0", 1))[0].problem, HasSubstr("NUL"));
}

TEST(CsvReaderTest, ALineThatNeverEndsCostsOnlyItself)
{
    const std::vector<CsvRecord> records = ReadAll("a\n" + std::string(3 << 20, 'x') + "\nb\n");
    ASSERT_EQ(records.size(), 3U);
    EXPECT_THAT(records[1].problem, HasSubstr("1 MiB"));
    EXPECT_THAT(records[2].fields, ElementsAre("b"));
    EXPECT_EQ(records[2].line, 3);
}

TEST(CsvReaderTest, AnOpenQuoteDoesNotSwallowALargeFile)
{
    std::string text = "\"a\n";
    const std::string row(1000, 'x');
    for (int i = 0; i < 2000; ++i) {
        text += row + "\n";
    }
    const std::vector<CsvRecord> records = ReadAll(text);
    ASSERT_EQ(records.size(), 2001U);
    EXPECT_THAT(records[0].problem, HasSubstr("1 MiB"));
    EXPECT_EQ(records[1].problem, "");
    EXPECT_EQ(records[2000].line, 2001);
}
