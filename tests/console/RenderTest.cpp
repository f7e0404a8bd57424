#include "console/Render.h"

#include "console/TerminalBuffer.h"
#include "management/Text.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace console;
using namespace management;

namespace {

const Table kPeopleTable = {{"id", "name", "sex", "locked", "note"},
                            {{std::int64_t{7}, "Amy", Choice{2, "female"}, true, std::monostate()},
                             {std::int64_t{12}, "Bo, \"B\"", Choice{0, "unknown"}, false, "a\tb\\c\nd"}}};

std::string Rendered(Format format, const Table& table)
{
    std::ostringstream out;
    Render(format, table, out);
    return out.str();
}

std::string Rendered(Format format, const Record& record)
{
    std::ostringstream out;
    Render(format, record, out);
    return out.str();
}

} // namespace

TEST(RenderTest, TableAlignsColumnsAndPutsNumbersToTheRight)
{
    EXPECT_EQ(Rendered(Format::table, kPeopleTable), "id  name     sex      locked  note\n"
                                                     " 7  Amy      female   yes     \n"
                                                     "12  Bo, \"B\"  unknown  no      a\\tb\\c\\nd\n");
}

TEST(RenderTest, TableCountsWideCharactersAsTwoAndCombiningOnesAsNone)
{
    const Table table = {{"a", "b"}, {{"王芳", "1"}, {"e\xCC\x81t\xCC\x81", "2"}, {"abcd", "3"}}};
    EXPECT_EQ(Rendered(Format::table, table), "a     b\n"
                                              "王芳  1\n"
                                              "e\xCC\x81t\xCC\x81    2\n"
                                              "abcd  3\n");
}

TEST(RenderTest, NoNameCanForgeARowOrReachTheTerminal)
{
    const std::pair<std::string, const char*> kNames[] = {
        {"x\n99  Admin", "x\\n99  Admin"},
        {"\x1B[2J", "\\x1B[2J"},
        {"\xC2\x9B"
         "2J",
         "\\xC2\\x9B2J"},
        {"\xFF", "\\xFF"},
        {std::string("\xE2\x80") + "\xAE" + "nimdA", "\\u202EnimdA"},
        {"\r\x7F", "\\x0D\\x7F"},
        {"\u2066a\u2067b\u2068c\u2069", R"(\u2066a\u2067b\u2068c\u2069)"},
        {"\u200Ea\u200Fb\u061C", R"(\u200Ea\u200Fb\u061C)"},
        {"\u202Aa\u2028\u2029", R"(\u202Aa\u2028\u2029)"},
        {"\u200C\u200D", "\u200C\u200D"}};
    for (const auto& [name, shown] : kNames) {
        EXPECT_EQ(Rendered(Format::table, Table{{"name"}, {{name}}}), std::string("name\n") + shown + "\n");
        EXPECT_EQ(Rendered(Format::table, Table{{name}, {{"x"}}}), std::string(shown) + "\nx\n");
        EXPECT_EQ(Rendered(Format::table, Record{{name, "x"}}), std::string(shown) + "  x\n");
    }
}

TEST(RenderTest, EmptyTableShowsItsHeader)
{
    const Table table = {{"id", "name"}, {}};
    EXPECT_EQ(Rendered(Format::table, table), "id  name\n");
    EXPECT_EQ(Rendered(Format::csv, table), "id,name\n");
    EXPECT_EQ(Rendered(Format::json, table), "[]\n");
    EXPECT_EQ(Rendered(Format::jsonl, table), "");
    EXPECT_EQ(Rendered(Format::plain, table), "");
}

TEST(RenderTest, CsvQuotesWhatItMust)
{
    EXPECT_EQ(Rendered(Format::csv, kPeopleTable), "id,name,sex,locked,note\n"
                                                   "7,Amy,2,true,\n"
                                                   "12,\"Bo, \"\"B\"\"\",0,false,\"a\tb\\c\nd\"\n");
}

TEST(RenderTest, JsonKeepsTheKindsOfValues)
{
    EXPECT_EQ(Rendered(Format::json, kPeopleTable),
              "[\n"
              "  {\"id\":7,\"name\":\"Amy\",\"sex\":2,\"locked\":true,\"note\":null},\n"
              "  {\"id\":12,\"name\":\"Bo, \\\"B\\\"\",\"sex\":0,\"locked\":false,\"note\":\"a\\tb\\\\c\\nd\"}\n"
              "]\n");
    EXPECT_EQ(Rendered(Format::jsonl, Table{{"id"}, {{std::int64_t{1}}, {std::int64_t{2}}}}),
              "{\"id\":1}\n{\"id\":2}\n");
}

TEST(RenderTest, JsonReplacesBytesThatAreNoText)
{
    EXPECT_EQ(Rendered(Format::jsonl, Table{{"name"},
                                            {{"a\xFF"
                                              "b"}}}),
              "{\"name\":\"a\xEF\xBF\xBD"
              "b\"}\n");
}

TEST(RenderTest, PlainHasTabsBetweenAndEscapesThemInside)
{
    EXPECT_EQ(Rendered(Format::plain, kPeopleTable), "7\tAmy\t2\ttrue\t\n"
                                                     "12\tBo, \"B\"\t0\tfalse\ta\\tb\\\\c\\nd\n");
}

TEST(RenderTest, RecordIsALinePerProperty)
{
    const Record record = {{"id", std::int64_t{7}}, {"note", "a\nb"}, {"birthday", Value()}};
    EXPECT_EQ(Rendered(Format::table, record), "id        7\n"
                                               "note      a\\nb\n"
                                               "birthday\n");
    EXPECT_EQ(Rendered(Format::plain, record), "id\t7\nnote\ta\\nb\nbirthday\t\n");
    EXPECT_EQ(Rendered(Format::csv, record), "id,note,birthday\n7,\"a\nb\",\n");
    EXPECT_EQ(Rendered(Format::json, record), "{\n  \"id\": 7,\n  \"note\": \"a\\nb\",\n  \"birthday\": null\n}\n");
    EXPECT_EQ(Rendered(Format::jsonl, record), "{\"id\":7,\"note\":\"a\\nb\",\"birthday\":null}\n");
}

TEST(RenderTest, FormatsAreFoundByName)
{
    EXPECT_EQ(FindFormat("jsonl"), Format::jsonl);
    EXPECT_EQ(FindFormat("xml"), std::nullopt);
}

TEST(TextTest, OuterBlanksAreFoundInAnyScript)
{
    EXPECT_TRUE(HasOuterBlanks(" a"));
    EXPECT_TRUE(HasOuterBlanks("a\xC2\xA0"));
    EXPECT_TRUE(HasOuterBlanks("\xE3\x80\x80"));
    EXPECT_FALSE(HasOuterBlanks("a b"));
    EXPECT_FALSE(HasOuterBlanks(""));
}

TEST(TextTest, ControlCharactersAreFoundAnywhere)
{
    EXPECT_TRUE(HasControlCharacter("a\nb"));
    EXPECT_TRUE(HasControlCharacter("a\xC2\x85"));
    EXPECT_FALSE(HasControlCharacter("Зоя"));
}

TEST(TerminalBufferTest, ShowsWhatWouldActOnTheTerminal)
{
    std::stringbuf terminal;
    {
        TerminalBuffer buffer(terminal, "\n\t");
        std::ostream out(&buffer);
        out << "a\x1B[2J\tb\r\n" << '\x7F' << "\u009B\u2066\u200E" << std::flush;
        EXPECT_EQ(terminal.str(), "a\\x1B[2J\tb\\x0D\n\\x7F\\xC2\\x9B\\u2066\\u200E");
    }
}

TEST(TerminalBufferTest, WaitsForTheRestOfACharacterAndGivesWhatNeverCame)
{
    std::stringbuf terminal;
    {
        TerminalBuffer buffer(terminal, "\n");
        std::ostream out(&buffer);
        out << "a\xC3" << std::flush;
        EXPECT_EQ(terminal.str(), "a");
        out << "\xAB\xE2\x80" << std::flush;
        EXPECT_EQ(terminal.str(), "aë");
    }
    EXPECT_EQ(terminal.str(), "aë\\xE2\\x80");
}

TEST(TerminalBufferTest, PassesOnALongTextBeforeItEnds)
{
    std::stringbuf terminal;
    TerminalBuffer buffer(terminal, "\n");
    std::ostream out(&buffer);
    for (int i = 0; i < 40000; ++i) {
        out << "ë";
    }
    EXPECT_GE(terminal.str().size(), 65536U);
    EXPECT_EQ(terminal.str().size() % 2, 0U);
}

namespace {

class FullTerminal : public std::streambuf {};

} // namespace

TEST(TerminalBufferTest, FailsWhereTheTerminalDoes)
{
    FullTerminal terminal;
    TerminalBuffer buffer(terminal, "\n");
    std::ostream out(&buffer);
    out << "a" << std::flush;
    EXPECT_FALSE(out);
}

TEST(TableWriter, HoldsOnlyTheRowsByWhichWidthsAreMeasured)
{
    for (const Format format : {Format::table, Format::csv, Format::json, Format::jsonl, Format::plain}) {
        std::ostringstream out;
        TableWriter writer(format, {"id", "name"}, out);
        for (std::int64_t i = 0; i < 5000; ++i) {
            ASSERT_TRUE(writer.Write(MakeRow(i, "x")));
            ASSERT_LE(writer.HeldRows(), format == Format::table ? TableWriter::kMeasuredRows : 0);
        }
        EXPECT_EQ(writer.HeldRows(), 0U);
        writer.Finish();
        std::ostringstream whole;
        Table table{{"id", "name"}, {}};
        for (std::int64_t i = 0; i < 1000; ++i) {
            table.rows.push_back(MakeRow(i, "x"));
        }
        Render(format, table, whole);
        const std::string begin = whole.str().substr(0, whole.str().size() - (format == Format::json ? 3 : 0));
        EXPECT_EQ(out.str().substr(0, begin.size()), begin);
    }
}

TEST(TableWriter, AnUnforeseenlyLongValueIsNotCut)
{
    std::ostringstream out;
    TableWriter writer(Format::table, {"id", "name", "note"}, out, {}, 2);
    writer.Write(MakeRow(std::int64_t{1}, "amy", "a"));
    EXPECT_EQ(out.str(), "");
    writer.Write(MakeRow(std::int64_t{20}, "bo", "b"));
    EXPECT_EQ(out.str(), "id  name  note\n 1  amy   a\n20  bo    b\n");
    writer.Write(MakeRow(std::int64_t{300}, "Constance", "c"));
    writer.Write(MakeRow(Value(), "di", "d"));
    writer.Finish();
    EXPECT_EQ(out.str(), "id  name  note\n 1  amy   a\n20  bo    b\n300  Constance  c\n    di    d\n");
}

TEST(TableWriter, SaysWhenNothingCanBeWrittenAnyMore)
{
    std::ostringstream out;
    TableWriter writer(Format::csv, {"id"}, out);
    EXPECT_TRUE(writer.Write(MakeRow(std::int64_t{1})));
    out.setstate(std::ios::badbit);
    EXPECT_FALSE(writer.Write(MakeRow(std::int64_t{2})));
}
