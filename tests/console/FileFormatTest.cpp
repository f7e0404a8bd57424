#include "management/import/FileFormat.h"

#include <gmock/gmock.h>

#include <sstream>
#include <string>
#include <vector>

using namespace management;
using namespace std::string_literals;
using testing::AllOf;
using testing::HasSubstr;

namespace {

struct FileKind {
    std::string text;
    const char* name;
    const char* command;
};

std::string Repeated(const std::string& text, int times)
{
    std::string repeated;
    for (int i = 0; i < times; ++i) {
        repeated += text;
    }
    return repeated;
}

} // namespace

TEST(FileFormat, OtherKindsAreNamedWithTheCommandThatConvertsThem)
{
    const std::vector<FileKind> kinds = {
        {"login,name\namy,\x81\x8D\x8F\n", "is not UTF-8;", "name its encoding with --encoding"},
        {"login,name\ramy,Amy\r", "end with carriage returns", "`tr '\\r' '\\n' <my.csv >my.csv.csv`"},
        {" [\n {\"login\": \"amy\"}]", "is JSON", "@csv' my.csv >my.csv.csv`"},
        {"{\"login\": \"amy\"}\n", "is JSON", "jq -r"},
        {"{\"format\":\"qvadmin directory\",\"version\":1}\n", "an exported directory", "`qvadmin import my.csv`"},
        {"\xEF\xBB\xBF"
         "dn: uid=amy\nuid: amy\n",
         "is LDIF", "`qvadmin import my.csv`"},
        {"version: 1\n\ndn: uid=amy\n", "is LDIF", "`qvadmin import my.csv`"},
        {"version:1\ndn:: dWlkPWFteQ==\n", "is LDIF", "`qvadmin import my.csv`"},
        {"\xEF\xBB\xBF# extended LDIF\r\n#\r\n# a comment that\r\n  goes on\r\n\r\nDN: uid=amy\r\n", "is LDIF",
         "`qvadmin import my.csv`"},
        {"PK\x03\x04\x14\0\x06\0[Content_Types].xml"s, "an Excel workbook (XLSX)", "soffice --headless"},
        {"PK\x03\x04\x14\0mimetypeapplication/vnd.oasis.opendocument.spreadsheet"s, "OpenDocument", "soffice"},
        {"PK\x03\x04\x14\0people.csv"s, "a ZIP archive", "unzip my.csv"},
        {"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1...", "an Excel workbook", "soffice"},
        {"SQLite format 3\0..."s, "a SQLite database", "sqlite3 -header -csv my.csv"},
        {"\x1F\x8B\x08\0"s, "compressed by gzip", "gunzip -c my.csv >my.csv.csv"},
        {"%PDF-1.7\n", "a PDF document", "import the table"},
    };
    for (const FileKind& kind : kinds) {
        EXPECT_EQ(GuessFormat(kind.text, "my.csv").encoding, "");
        EXPECT_THAT(GuessFormat(kind.text, "my.csv").problem,
                    AllOf(HasSubstr("my.csv is "), HasSubstr(kind.name), HasSubstr(kind.command)));
    }
}

TEST(FileFormat, OtherEncodingsAreNamed)
{
    const std::pair<std::string, const char*> kinds[] = {
        {"\xFF\xFEl\0o\0g\0i\0n\0"s, "utf-16"},  {"\xFE\xFF\0l\0o\0g\0i\0n"s, "utf-16"},
        {"l\0o\0g\0i\0n\0\n\0a\0"s, "utf-16le"}, {"\0l\0o\0g\0i\0n\0\n\0a"s, "utf-16be"},
        {"\xFF\xFE\0\0l\0\0\0"s, "utf-32"},      {"login,name\namy,Am\xE9lie\n", "windows-1252"},
    };
    for (const auto& [text, encoding] : kinds) {
        EXPECT_EQ(GuessFormat(text, "my.csv").encoding, encoding);
        EXPECT_EQ(GuessFormat(text, "my.csv").problem, "");
    }
}

TEST(FileFormat, ValuesInUtf8AreRecognized)
{
    for (const std::string& text :
         {""s, "login\n"s, "\xEF\xBB\xBFlogin,name\r\namy,Amy\r\n"s, "login\namélie\n"s, "login,name\namy,\"a\rb\"\n"s,
          "\"login\",note\namy,[]\n"s, "login\nam\xE9lie,Юлия\n"s, "login\nЮ"s, "login\n\xD0"s, "login\na\0b\n"s}) {
        EXPECT_EQ(GuessFormat(text, "my.csv").problem, "") << text;
        EXPECT_EQ(GuessFormat(text, "my.csv").encoding, "") << text;
    }
}

TEST(FileFormat, AOneByteEncodingIsFoundWhereverItIs)
{
    const std::string many = "login,name\n" + Repeated("amy,Amy Somebody\n", 20000);
    const auto other = [](const std::string& text) {
        std::istringstream in(text);
        const OtherFile guess = GuessEncoding(in, "my.csv");
        return guess.encoding + guess.problem;
    };
    EXPECT_EQ(other(many), "");
    EXPECT_THAT(other(many + "rory,Ren\xE9"), "windows-1252");
    EXPECT_THAT(other(many + "rory,Ren\xE9\n" + many), "windows-1252");
    // One row that is wrong among letters that are right is that row's problem.
    EXPECT_EQ(other(many + "rory,Ren\xE9\nkim,Renée\n"), "");
    // Characters that fall on the edge of a piece.
    for (int shift = 0; shift < 4; ++shift) {
        EXPECT_EQ(other(std::string(static_cast<std::size_t>(shift), 'x') + Repeated("\xF0\x9F\x98\x80", 50000)), "");
    }
}
