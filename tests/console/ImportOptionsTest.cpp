#include "ConsoleFixture.h"
#include "management/Errors.h"
#include "management/import/DecodingBuffer.h"

#include <fmt/format.h>

#include <sstream>

using management::DecodingBuffer;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// Files of people as other programs write them.

namespace {

class ImportOptionsTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
    }

    ChildResult Import(const std::string& text, const std::vector<std::string>& options = {})
    {
        WriteFile("in.csv", text);
        return Run(With({"user", "import", "in.csv"}, options));
    }

    std::string Value(const std::string& login, const std::string& field)
    {
        const ChildResult shown = Run({"user", "show", login, "-o", "json"});
        EXPECT_EQ(shown.exit, 0) << shown.err;
        const nlohmann::json value = nlohmann::json::parse(shown.out).at(field);
        return value.is_string() ? value.get<std::string>() : value.dump();
    }
};

std::string Decoded(const std::string& bytes, const std::string& encoding)
{
    std::istringstream in(bytes);
    DecodingBuffer buffer(*in.rdbuf(), encoding);
    return {std::istreambuf_iterator<char>(&buffer), {}};
}

/// Every character of ASCII as two bytes, the lower one first.
std::string Utf16(const std::string& text)
{
    std::string bytes;
    for (const char ch : text) {
        bytes += ch;
        bytes += '\0';
    }
    return bytes;
}

} // namespace

TEST_F(ImportOptionsTest, ColumnsOfOtherNamesAreMapped)
{
    const std::string text = "Kennung,E-Mail,Abteilung,Kostenstelle\namy,amy@example.org,Sales,17\n";
    const std::string map = "kennung=login,E-Mail=email,Abteilung=department";
    const ChildResult unknown = Import(text, {"--map", map});
    EXPECT_EQ(unknown.exit, 2);
    EXPECT_THAT(unknown.err, HasSubstr("in.csv has an unknown column 'Kostenstelle'"));
    const ChildResult done = Import(text, {"--map", map, "--ignore-unknown"});
    EXPECT_EQ(done.exit, 0) << done.err;
    EXPECT_EQ(Value("amy", "email"), "amy@example.org");
    EXPECT_EQ(Value("amy", "department"), "Sales");
}

TEST_F(ImportOptionsTest, AMapThatMeansNothingIsRefused)
{
    const std::pair<const char*, const char*> kMaps[] = {
        {"E-Mail", "'E-Mail' is not a pair of names"},
        {"=email", "'=email' is not a pair of names"},
        {"note=email,", "'' is not a pair of names"},
        {"", "'' is not a pair of names"},
        {"Post=email", "in.csv has no column 'Post' that --map could rename to email"},
        {"note=wish", "unknown column 'wish'"},
        {"note=email,NOTE=title", "--map names the column 'NOTE' twice"},
        {"note=login", "the column login twice"}};
    for (const auto& [map, sentence] : kMaps) {
        const ChildResult result = Import("login,note\namy,a\n", {"--map", map, "--ignore-unknown"});
        EXPECT_EQ(result.exit, 2);
        EXPECT_THAT(result.err, HasSubstr(sentence));
    }
}

TEST_F(ImportOptionsTest, AFolderIsNoFile)
{
    for (const char* verb : {"user", ""}) {
        std::vector<std::string> words = {"import", Path(".")};
        words.insert(words.begin(), *verb == '\0' ? 0 : 1, verb);
        const ChildResult result = Run(words);
        EXPECT_EQ(result.exit, 1);
        EXPECT_THAT(result.err,
                    AllOf(StartsWith("qvadmin: cannot read "), HasSubstr(": Is a directory; nothing was imported\n")));
    }
}

TEST_F(ImportOptionsTest, ValuesMayBeSeparatedByOtherCharacters)
{
    EXPECT_EQ(Import("login;note\namy;\"a;b\"\n", {"--delimiter", ";"}).exit, 0);
    EXPECT_EQ(Value("amy", "note"), "a;b");
    EXPECT_EQ(Import("login\tnote\nrory\ta,b\n", {"--delimiter", "tab"}).exit, 0);
    EXPECT_EQ(Value("rory", "note"), "a,b");
    EXPECT_THAT(Import("login;note\namy;a\n").err, HasSubstr("or give --delimiter"));
    for (const char* bad : {"", "ab", "\"", "\n"}) {
        EXPECT_EQ(Import("login\n", {"--delimiter", bad}).exit, 2);
    }
}

TEST_F(ImportOptionsTest, EncodingsAreGuessedAndSaid)
{
    std::string latin = "login,name\n";
    for (int i = 0; i < 600; ++i) {
        latin += fmt::format("user{},User\n", i);
    }
    const ChildResult windows = Import(latin + "amelie,Am\xE9lie \x80\n");
    EXPECT_EQ(windows.exit, 0) << windows.err;
    EXPECT_THAT(windows.err, StartsWith("in.csv is read as windows-1252; --encoding names another one\n"));
    EXPECT_EQ(Value("amelie", "name"), "Amélie €");
    for (const std::string& text : {"\xFF\xFE" + Utf16("login,name\namy,Amy\n"), Utf16("login,name\nrory,Rory\n")}) {
        const ChildResult result = Import(text);
        EXPECT_EQ(result.exit, 0) << result.err;
        EXPECT_THAT(result.err, HasSubstr("is read as utf-16"));
    }
    EXPECT_EQ(Value("rory", "name"), "Rory");
    EXPECT_EQ(RunWith("\xFF\xFE" + Utf16("login\nkim\n"), {"user", "import", "-"}).exit, 0);
    EXPECT_EQ(Value("kim", "name"), "kim");
}

TEST_F(ImportOptionsTest, AnEncodingThatIsGivenIsNotGuessed)
{
    const ChildResult cyrillic = Import("login,name\nyulia,\xE0\xCC\xC9\xD1\n", {"--encoding", "koi8-r"});
    EXPECT_EQ(cyrillic.exit, 0) << cyrillic.err;
    EXPECT_THAT(cyrillic.err, Not(HasSubstr("is read as")));
    EXPECT_EQ(Value("yulia", "name"), "Юлия");
    const ChildResult unknown = Import("login\namy\n", {"--encoding", "klingon"});
    EXPECT_EQ(unknown.exit, 2);
    EXPECT_THAT(unknown.err, HasSubstr("there is no encoding 'klingon'"));
    const ChildResult wrong = Import("login\namy\xE9\n", {"--encoding", "us-ascii"});
    EXPECT_EQ(wrong.exit, 2);
    EXPECT_THAT(wrong.err, HasSubstr("holds bytes that are not text of the encoding us-ascii"));
    EXPECT_EQ(Run({"user", "exists", "amy"}).exit, 3);
    // A row that is no UTF-8 fails alone where that is said to be the encoding.
    EXPECT_EQ(Import("login,name\namy,A\nrory,\xE9\n", {"--encoding", "utf-8"}).exit, 7);
}

TEST_F(ImportOptionsTest, DatesMayHaveAnotherForm)
{
    EXPECT_EQ(Import("login,birthday\namy,28.11.1989\nrory,1.2.1990\n", {"--date-format", "DD.MM.YYYY"}).exit, 0);
    EXPECT_EQ(Value("amy", "birthday"), "1989-11-28");
    EXPECT_EQ(Value("rory", "birthday"), "1990-02-01");
    EXPECT_EQ(Import("login,birthday\nkim,11/28/1989\n", {"--date-format", "MM/DD/YYYY"}).exit, 0);
    EXPECT_EQ(Value("kim", "birthday"), "1989-11-28");
    for (const char* text : {"28-11-1989", "28.11.89", "28.11.1989 ", "31.2.1990", "1989-11-28", "28.11."}) {
        const ChildResult bad = Import(fmt::format("login,birthday\nzoe,{}\n", text), {"--date-format", "DD.MM.YYYY"});
        EXPECT_EQ(bad.exit, 7) << text;
        EXPECT_THAT(bad.err, HasSubstr(fmt::format("birthday '{}' is not a date (DD.MM.YYYY)", text)));
    }
    for (const char* form : {"DD.MM.YY", "DD.DD.YYYY", "MM.YYYY"}) {
        EXPECT_EQ(Import("login\nzoe\n", {"--date-format", form}).exit, 2);
    }
}

TEST_F(ImportOptionsTest, ASexMayBeALetter)
{
    EXPECT_EQ(Import("login,sex\namy,f\nrory,M\nkim,Female\nzoe,u\n").exit, 7);
    EXPECT_EQ(Value("amy", "sex"), "2");
    EXPECT_EQ(Value("rory", "sex"), "1");
    EXPECT_EQ(Value("kim", "sex"), "2");
    EXPECT_EQ(Run({"user", "exists", "zoe"}).exit, 3);
}

TEST_F(ImportOptionsTest, EmptyValuesEmptyTextsAndDatesWhereThatIsAskedFor)
{
    Import("login,note,birthday,sort_index,department\namy,a,1989-11-28,7,Sales\n");
    const std::string text = "login,note,birthday,sort_index,department,email\namy,,,,,\nrory,,,,,\n";
    EXPECT_THAT(Import(text, {"--update"}).err, HasSubstr("1 created, 0 updated, 1 unchanged"));
    EXPECT_EQ(Value("amy", "note"), "a");
    EXPECT_THAT(Import(text, {"--update", "--clear-empty"}).err, HasSubstr("0 created, 1 updated, 1 unchanged"));
    EXPECT_EQ(Value("amy", "note"), "");
    EXPECT_EQ(Value("amy", "birthday"), "null");
    EXPECT_EQ(Value("amy", "sort_index"), "7");
    EXPECT_EQ(Value("amy", "department"), "Sales");
    EXPECT_EQ(Value("rory", "name"), "rory");
    EXPECT_THAT(Import(text, {"--update", "--clear-empty"}).err, HasSubstr("0 created, 0 updated, 2 unchanged"));
}

TEST_F(ImportOptionsTest, RowsThatFailAreAFileThatCanBeMendedAndImported)
{
    const std::string text = "Login;Note\namy;\"a;b\"\nrory;\"two\nlines\"\n;none\nkim;a;b\nzoe;\"open\n";
    const std::vector<std::string> options = {"--delimiter", ";", "--failed", "failed.csv"};
    const ChildResult first = Import(text, options);
    EXPECT_EQ(first.exit, 7);
    EXPECT_THAT(first.err, AllOf(HasSubstr("2 created"), HasSubstr("3 failed"),
                                 HasSubstr("the rows that failed are in failed.csv, in UTF-8\n")));
    EXPECT_EQ(ReadFile("failed.csv"), "Login;Note\n;none\nkim;a;b\nzoe;\"open\n");
    WriteFile("mended.csv", "Login;Note\nnobody;none\nkim;a\nzoe;open\n");
    EXPECT_EQ(Run({"user", "import", "mended.csv", "--delimiter", ";", "--failed", "failed.csv"}).exit, 0);
    EXPECT_EQ(ReadFile("failed.csv"), "Login;Note\n");
    EXPECT_EQ(Value("kim", "note"), "a");
    const std::string bytes("login,note\nann,a\0b\nben,\xFF\nz\xC3\xBC,x\n", 31);
    EXPECT_EQ(Import(bytes, {"--failed", "bytes.csv"}).exit, 7);
    EXPECT_EQ(ReadFile("bytes.csv"), bytes.substr(0, 25));
    EXPECT_EQ(Import(text, {"--failed", "in.csv"}).exit, 2);
    EXPECT_EQ(Import(text, {"--delimiter", ";", "--failed", "in.csv.result.csv"}).exit, 2);
    WriteFile("other.txt", "precious\n");
    EXPECT_EQ(Import(text, {"--delimiter", ";", "--failed", "other.txt"}).exit, 4);
    EXPECT_EQ(ReadFile("other.txt"), "precious\n");
}

TEST(DecodingBuffer, GivesTheSameTextWhereverPiecesEnd)
{
    std::string text;
    std::string bytes = "\xFE\xFF";
    for (int i = 0; i < 40000; ++i) {
        text += i % 7 == 0 ? "\xF0\x9F\x98\x80" : i % 3 == 0 ? "é" : "a";
        bytes += i % 7 == 0 ? std::string("\xD8\x3D\xDE\x00", 4) : std::string(1, '\0') + (i % 3 == 0 ? '\xE9' : 'a');
    }
    EXPECT_EQ(Decoded(bytes, "utf-16"), text);
    EXPECT_EQ(Decoded("\xEF\xBB\xBF" + text, "utf-8"), text);
    EXPECT_EQ(Decoded("", "utf-16"), "");
    EXPECT_EQ(Decoded("\xFF\xFE", "utf-16"), "");
}

TEST(DecodingBuffer, BytesThatAreNoTextAreRefused)
{
    EXPECT_THROW(Decoded("ab\xFF", "utf-8"), management::Error);
    EXPECT_THROW(Decoded("a", "utf-16le"), management::Error);
    EXPECT_THROW(Decoded("a", ""), management::Error);
}
