#include "ConsoleOnEngine.h"
#include "management/Errors.h"
#include "management/exchange/LdifReader.h"

#include <fmt/format.h>

#include <sstream>

using management::LdifEntry;
using management::LdifReader;
using management::ParseDn;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

// Directories of other kinds.

namespace {

/// As a search of a public server writes it.
constexpr const char* kServer = R"(# extended LDIF
#
# LDAPv3
# base <dc=example,dc=org> with scope subtree
version: 1

# example.org
dn: dc=example,dc=org
objectClass: top
objectClass: dcObject
objectClass: organization
o: Example
dc: example

# Product Development, example.org
dn: ou=Product Development,dc=example,dc=org
objectclass: top
objectclass: organizationalUnit
ou: Product Development
description: Makes
  things

dn: ou=Tests\2C slow, ou=Product Development, dc=example,dc=org
objectClass: organizationalUnit
ou: Tests, slow

dn: cn=Am\C3\A9lie Pond,ou=Product Development,dc=example,dc=org
objectClass: inetOrgPerson
cn:: QW3DqWxpZSBQb25k
cn;lang-fr: Amelie
sn: Pond
uid: amy
mail: amy@example.org
mail: other@example.org
telephoneNumber: +1 408
  555 0101
postalAddress: 1 Main Street$Leadworth
userPassword:: e1NTSEF9eA==

dn: uid=rory,ou=Tests\, slow,ou=Product Development,dc=example,dc=org
objectClass: person
uid: rory
cn: Rory Williams
sn: Williams

dn: uid=root,dc=example,dc=org
objectClass: inetOrgPerson
uid: root
cn: root
sn: root

dn: cn=Editors,ou=Product Development,dc=example,dc=org
objectClass: groupOfNames
cn: Editors
description: of pages
member: cn=am\C3\89lie pond,OU=Product Development,dc=example,dc=org
member: uid=rory,ou=Tests\, slow,ou=Product Development,dc=example,dc=org
member:

# search result
search: 2
result: 0 Success
)";

std::vector<LdifEntry> Read(const std::string& text)
{
    std::istringstream in(text);
    LdifReader reader(in);
    std::vector<LdifEntry> entries;
    while (std::optional<LdifEntry> entry = reader.Next()) {
        entries.push_back(std::move(*entry));
    }
    return entries;
}

class LdifTest : public ConsoleOnEngine {
protected:
    ChildResult Import(const std::string& text, const std::vector<std::string>& options = {})
    {
        WriteFile("in.ldif", text);
        return Run(With({"import", Path("in.ldif")}, options));
    }

    void StartAnew()
    {
        const std::string engine = GetParam();
        m_options.environment["QVADMIN_DB"] =
            engine == "sqlite" ? "sqlite:" + Path("another.db") : servers::NewDatabase(engine);
        Init();
    }
};

INSTANTIATE_TEST_SUITE_P(Engines, LdifTest, Engines(), EngineName);

} // namespace

TEST(LdifReader, ReadsWhatServersWrite)
{
    const std::vector<LdifEntry> entries = Read(kServer);
    ASSERT_EQ(entries.size(), 7U);
    EXPECT_EQ(entries[1].dn, "ou=Product Development,dc=example,dc=org");
    EXPECT_EQ(*entries[1].Find("description"), "Makes things");
    EXPECT_EQ(entries[3].line, 27);
    EXPECT_EQ(*entries[3].Find("cn"), "Amélie Pond");
    EXPECT_EQ(*entries[3].Find("telephonenumber"), "+1 408 555 0101");
    EXPECT_EQ(entries[3].Find("nothing"), nullptr);
    for (const LdifEntry& entry : entries) {
        EXPECT_EQ(entry.problem, "");
    }
}

TEST(LdifReader, SaysWhatCannotBeUsed)
{
    const std::pair<const char*, const char*> kBad[] = {
        {"dn: uid=a\nchangetype: add\nuid: a\n", "changetype: add"},
        {"dn: uid=a\ncn:: !!!\n", "is not base64"},
        {"uid: a\ncn: b\n", "has no dn"},
        {"dn: uid=a\nnonsense\n", "'nonsense' is not an attribute with a value"}};
    for (const auto& [text, problem] : kBad) {
        const std::vector<LdifEntry> entries = Read(std::string(text) + "\ndn: uid=b\nuid: b\n");
        ASSERT_EQ(entries.size(), 2U);
        EXPECT_THAT(entries[0].problem, HasSubstr(problem));
        EXPECT_EQ(entries[1].problem, "");
    }
    EXPECT_THAT(Read("dn: uid=a\njpegPhoto:< file:///etc/passwd\n").at(0).elsewhere, testing::ElementsAre("jpegphoto"));
    EXPECT_EQ(Read("\xEF\xBB\xBF"
                   "dn: uid=a\nuid: a\n")
                  .at(0)
                  .dn,
              "uid=a");
    EXPECT_TRUE(Read("").empty());
    EXPECT_TRUE(Read("version: 1\r\n\r\n# end\r\n").empty());
    const std::vector<LdifEntry> windows = Read("dn: uid=a\r\nuid: a\r\n\r\ndn: uid=b\r\nuid: b");
    ASSERT_EQ(windows.size(), 2U);
    EXPECT_EQ(*windows[1].Find("uid"), "b");
}

TEST(LdifReader, TakesDistinguishedNamesApart)
{
    const auto parts = [](const char* dn) {
        std::string text;
        for (const management::RelativeName& name : ParseDn(dn)) {
            text += name.attribute + "=" + name.value + "|";
        }
        return text;
    };
    EXPECT_EQ(parts("UID=amy,ou=A\\, B , dc=c"), "uid=amy|ou=A, B|dc=c|");
    EXPECT_EQ(parts("cn=a+uid=b,ou=c"), "cn=a|ou=c|");
    EXPECT_EQ(parts("cn=\\20a\\ ,o=x"), "cn= a |o=x|");
    EXPECT_EQ(parts("cn=\\C3\\A9"), "cn=é|");
    for (const char* bad : {"amy", "=a", "cn=", "cn=a,b", "cn=a\\"}) {
        EXPECT_THROW(ParseDn(bad), management::Error) << bad;
    }
    for (const std::string value : {"a,b", " a ", "#a", "a\\b", "a\"+<>;=b", "line\nbreak", "é \xF0\x9F\x98\x80"}) {
        EXPECT_EQ(ParseDn("cn=" + management::DnEscaped(value)).front().value, value);
    }
}

TEST(LdifReader, LinesReadBack)
{
    for (const std::string& value :
         {std::string("plain"), std::string(" blank"), std::string(":colon"), std::string("<"), std::string("é"),
          std::string("a\nb"), std::string(500, 'x'), std::string("ends "), std::string("\xFF\x01"), std::string("ab"),
          std::string("abc")}) {
        const std::string line = management::LdifLine("description", value);
        EXPECT_LE(line.find('\n'), 76U);
        const std::vector<LdifEntry> entries = Read("dn: uid=a\n" + line);
        ASSERT_EQ(entries.size(), 1U);
        EXPECT_EQ(*entries[0].Find("description"), value);
    }
}

TEST_P(LdifTest, PeopleUnitsAndGroupsOfAServerAreImported)
{
    const ChildResult result = Import(kServer);
    EXPECT_EQ(result.exit, 0) << result.err;
    EXPECT_THAT(result.err, AllOf(HasSubstr("0 failed"), HasSubstr("left out: 1 entry that")));
    const nlohmann::json amy = nlohmann::json::parse(Done({"user", "show", "amy", "-o", "json"}));
    EXPECT_EQ(amy.at("name"), "Amélie Pond");
    EXPECT_EQ(amy.at("email"), "amy@example.org");
    EXPECT_EQ(amy.at("office_phone"), "+1 408 555 0101");
    EXPECT_EQ(amy.at("office_address"), "1 Main Street\nLeadworth");
    EXPECT_THAT(Done({"user", "groups", "rory"}), HasSubstr("/Product Development/Tests, slow"));
    EXPECT_EQ(nlohmann::json::parse(Done({"user", "show", "rory", "-o", "json"})).at("department"), "Tests, slow");
    EXPECT_THAT(Done({"role", "members", "Editors"}), AllOf(HasSubstr("amy"), HasSubstr("rory")));
    EXPECT_EQ(Run({"user", "exists", "root"}).exit, 0);
    const std::string before = Dump();
    const ChildResult again = Import(kServer, {"--update"});
    EXPECT_THAT(again.err, HasSubstr("0 created, 0 updated"));
    EXPECT_EQ(Dump(), before);
}

TEST_P(LdifTest, UnitsMayGoUnderAViewAndGroupsOfNamesMayBeGroups)
{
    const ChildResult result = Import(kServer, {"--view", "/Company", "--groups-as", "groups"});
    EXPECT_EQ(result.exit, 0) << result.err;
    EXPECT_THAT(Done({"user", "groups", "amy"}),
                AllOf(HasSubstr("/Company/Product Development\n"), HasSubstr("/Company/Product Development/Editors")));
    EXPECT_EQ(nlohmann::json::parse(Done({"user", "show", "rory", "-o", "json"})).at("department"),
              "Product Development/Tests, slow");
    EXPECT_THAT(Done({"member", "list", "/Company"}), HasSubstr("root"));
    EXPECT_THAT(Done({"role", "list"}), Not(HasSubstr("Editors")));
}

TEST_P(LdifTest, WhatCannotBeUsedIsSaidAndStopsNothing)
{
    const ChildResult result = Import("dn: uid=amy,ou=A\nchangetype: add\nobjectClass: person\nuid: amy\n\n"
                                      "dn: cn=nobody,ou=A\nobjectClass: person\ncn: nobody\n\n"
                                      "dn: uid=rory,ou=A\nobjectClass: person\nuid: rory\n\n"
                                      "dn: cn=G\nobjectClass: groupOfNames\nmember: cn=stranger,ou=A\n");
    EXPECT_EQ(result.exit, 7);
    EXPECT_THAT(result.err,
                AllOf(HasSubstr("in.ldif:1: it is a record of changes (changetype: add), and only whole entries"),
                      HasSubstr("in.ldif:6: cn=nobody,ou=A has no uid to log in with"),
                      HasSubstr("in.ldif:14: cn=stranger,ou=A is not a person of the file")));
    EXPECT_EQ(Run({"user", "exists", "rory"}).exit, 0);
    EXPECT_EQ(RunWith("dn: uid=a\n", {"import", "-"}).exit, 2);
}

TEST_P(LdifTest, AValueThatCannotBeStoredCostsItsEntryAlone)
{
    const ChildResult result = Import("\xEF\xBB\xBF"
                                      "dn: uid=amy,ou=A\nobjectClass: person\nuid: amy\njpegPhoto:< file:///amy.jpg\n"
                                      "objectGUID:: /w==\n\n"
                                      "dn: uid=nul,ou=A\nobjectClass: person\nuid:: YQBi\n\n"
                                      "dn: uid=bytes,ou=A\nobjectClass: person\nuid: bytes\ncn:: /w==\n\n"
                                      "dn: uid=far,ou=A\nobjectClass: person\nuid: far\nmail:< file:///etc/hostname\n\n"
                                      "dn: uid=rory,ou=A\nobjectClass: person\nuid: rory\n\n"
                                      "dn: o=B\nobjectClass: organization\n\n"
                                      "dn: o=C\nobjectClass: organization\n");
    EXPECT_EQ(result.exit, 7);
    EXPECT_THAT(result.err,
                AllOf(HasSubstr("in.ldif:7: uid holds a NUL byte"), HasSubstr("in.ldif:11: cn is not UTF-8"),
                      HasSubstr("in.ldif:16: the value of mail is in another file"),
                      HasSubstr("left out: 2 entries that are not people")));
    EXPECT_EQ(Done({"user", "list", "--fields", "login", "-o", "plain"}), "amy\nrory\n");
    EXPECT_EQ(Run({"import", Path("in.ldif"), "--view", ""}).exit, 2);
}

TEST_P(LdifTest, UnitsComeInTheOrderOfTheFile)
{
    ASSERT_EQ(Import("dn: uid=amy,ou=North,ou=Sales,ou=Main\nobjectClass: person\nuid: amy\n\n"
                     "dn: ou=Works,ou=Main\nobjectClass: organizationalUnit\n\n"
                     "dn: ou=Accounts,ou=Main\nobjectClass: organizationalUnit\n\n"
                     "dn: ou=Sales,ou=Main\nobjectClass: organizationalUnit\ndescription: sells\n")
                  .exit,
              0);
    std::string paths;
    std::istringstream lines(Done({"export", "--nouns", "groups"}));
    std::string line;
    for (std::getline(lines, line); std::getline(lines, line);) {
        paths += nlohmann::json::parse(line).at("path").get<std::string>() + "\n";
    }
    EXPECT_EQ(paths, "/Main/Sales\n/Main/Sales/North\n/Main/Works\n/Main/Accounts\n");
}

TEST_P(LdifTest, AnExportReadsBack)
{
    Import(kServer, {"--view", "Company: \"all\", of us"});
    Done({"user", "set", "rory", "--title", "Nurse", "--home-address", "2 Side Street\nLeadworth", "--mobile", " 7"});
    Done({"export", Path("first.ldif"), "--format", "ldif", "--base", "dc=example,dc=com"});
    const std::string text = ReadFile("first.ldif");
    EXPECT_THAT(text, AllOf(StartsWith("version: 1\n\ndn: ou="), HasSubstr("\nobjectClass: organizationalUnit\n"),
                            HasSubstr("\nobjectClass: inetOrgPerson\nuid: rory\ncn: Rory Williams\nsn: Williams\n"),
                            HasSubstr("\nobjectClass: groupOfNames\ncn: Editors\n")));
    StartAnew();
    const ChildResult imported = Import(text);
    EXPECT_EQ(imported.exit, 0) << imported.err;
    Done({"export", Path("again.ldif"), "--format", "ldif", "--base", "dc=example,dc=com"});
    EXPECT_EQ(ReadFile("again.ldif"), text);
    EXPECT_EQ(Run({"export", "--format", "ldif", "--base", "nowhere"}).exit, 2);
    EXPECT_EQ(Run({"export", "--base", "dc=a"}).exit, 2);
    const std::string part =
        Done({"export", "--format", "ldif", "--in", "/Company: \"all\", of us/Product Development/Tests, slow"});
    EXPECT_THAT(part, AllOf(HasSubstr("uid: rory"), Not(HasSubstr("uid: amy"))));
}
