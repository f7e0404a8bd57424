#include "management/Names.h"

#include "ConsoleFixture.h"
#include "dbaccess/CAConnect.h"
#include "platform/CodePage.h"
#include "tests/servers/Servers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using management::KeepNamed;
using management::SameName;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// What names are the same.

namespace {

TEST(Names, AreTheSameWhereOnlyCaseDiffers)
{
    const std::vector<std::pair<std::string, std::string>> same = {{"amy", "AMY"},
                                                                   {"Ren\u00E9", "rEN\u00C9"},
                                                                   {"\u0416\u0430\u043D", "\u0436\u0410\u041D"},
                                                                   {"\u00F1", "\u00D1"},
                                                                   {"\u03C3", "\u03C2"},
                                                                   {"\u017Fam", "Sam"},
                                                                   {"\U00010400", "\U00010428"},
                                                                   {"", ""}};
    for (const auto& [a, b] : same) {
        EXPECT_TRUE(SameName(a, b)) << a << " " << b;
        EXPECT_EQ(platform::UpperUtf8(a), platform::UpperUtf8(b)) << "engines would not find " << a << " for " << b;
    }
    const std::vector<std::pair<std::string, std::string>> different = {{"rene", "ren\u00E9"},
                                                                        {"n", "\u00F1"},
                                                                        {"\U0001F600smile", "\U0001F602smile"},
                                                                        {"amy", "amy "},
                                                                        {"i", "\u0131"},
                                                                        {"I", "\u0130"},
                                                                        {"stra\u00DFe", "strasse"},
                                                                        {"\u00E9", "e\u0301"},
                                                                        {"a", "\uFF41"},
                                                                        {"a", "a\u200D"},
                                                                        {"k", "\u212A"},
                                                                        {"a", "a\xFF"}};
    for (const auto& [a, b] : different) {
        EXPECT_FALSE(SameName(a, b)) << a << " " << b;
    }
}

TEST(Names, SpelledExactlySoGoBefore)
{
    const auto kept = [](std::vector<std::string> names, const char* name) {
        KeepNamed(names, name, [](const std::string& text) { return std::string_view(text); });
        return names;
    };
    EXPECT_THAT(kept({"a", "A", "b", "\u00E1"}, "a"), ElementsAre("a"));
    EXPECT_THAT(kept({"ab", "AB", "b"}, "Ab"), ElementsAre("ab", "AB"));
    EXPECT_THAT(kept({"a", "b"}, "c"), IsEmpty());
}

/// The same commands on each engine, and on a MariaDB whose tables take accents and emoji for nothing.
class NamesOn : public ConsoleFixture, public testing::WithParamInterface<const char*> {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        const std::string engine = GetParam();
        m_options.environment["QVADMIN_DB"] = engine == "sqlite"
                                                  ? "sqlite:" + Path("directory.db")
                                                  : servers::NewDatabase(Confuses() ? "mariadb" : engine);
        Init();
        if (Confuses()) {
            CAConnect conn;
            conn.Open(m_options.environment["QVADMIN_DB"].c_str());
            for (const char* table : {"qv_User", "qv_Group", "qv_View", "qv_Role", "qv_JobTitle", "Tab_Doc_Root",
                                      "Tab_Doc_VFolder", "Tab_Doc_Backup_Plan", "kel_AddIn", "kel_Package"}) {
                conn.Execute((std::string("ALTER TABLE ") + table +
                              " CONVERT TO CHARACTER SET utf8mb4 COLLATE utf8mb4_general_ci")
                                 .c_str());
            }
        }
    }

    /// Whether the engine takes different names for equal.
    [[nodiscard]] static bool Confuses() { return GetParam() == std::string("mariadb_general_ci"); }

    void Expect(int exit, const std::vector<std::string>& arguments)
    {
        const ChildResult result = Run(arguments);
        std::string line;
        for (const std::string& argument : arguments) {
            line += " " + argument;
        }
        EXPECT_EQ(result.exit, exit) << line << "\n" << result.err;
    }

    /// A name that another must not be found by, nor given to where the engine takes it for equal.
    void ExpectApart(const std::vector<std::string>& create, const std::vector<std::string>& lookUp,
                     const std::pair<std::string, std::string>& names)
    {
        const auto with = [](std::vector<std::string> words, const std::string& name) {
            for (std::string& word : words) {
                const std::size_t mark = word.find('*');
                word = mark == std::string::npos ? word : word.replace(mark, 1, name);
            }
            return words;
        };
        Expect(0, with(create, names.first));
        Expect(0, with(lookUp, names.first));
        Expect(3, with(lookUp, names.second));
        const ChildResult second = Run(with(create, names.second));
        EXPECT_EQ(second.exit, Confuses() ? 4 : 0) << create[0] << ": " << second.err;
        if (Confuses()) {
            EXPECT_THAT(second.err, AllOf(HasSubstr("takes"), HasSubstr("for equal to '" + names.first + "'")));
        }
        Expect(Confuses() ? 3 : 0, with(lookUp, names.second));
    }
};

TEST_P(NamesOn, OfAllKindsAreToldApart)
{
    const std::pair<std::string, std::string> rene{"ren\u00E9", "rene"};
    const std::pair<std::string, std::string> smile{"\U0001F600smile", "\U0001F602smile"};
    ExpectApart({"user", "create", "*"}, {"user", "show", "*"}, rene);
    ExpectApart({"user", "create", "*"}, {"user", "exists", "*"}, smile);
    ExpectApart({"view", "create", "*"}, {"view", "show", "*"}, rene);
    Expect(0, {"view", "create", "V"});
    ExpectApart({"group", "create", "/V/*"}, {"group", "show", "/V/*"}, {"\u00D1", "n"});
    ExpectApart({"role", "create", "*"}, {"role", "show", "*"}, smile);
    ExpectApart({"plan", "create", "*"}, {"plan", "show", "*"}, rene);
    ExpectApart({"docroot", "create", "*", "--path", "/a", "--type", "1"}, {"docroot", "show", "*"}, rene);
    Expect(0, {"docroot", "create", "Main", "--path", "/a", "--type", "1"});
    ExpectApart({"folder", "create", "/Main/*"}, {"folder", "show", "/Main/*"}, smile);
    ExpectApart({"addin", "create", "*", "--type", "1"}, {"addin", "show", "*"}, rene);
    ExpectApart({"package", "install", "*", "--version", "1"}, {"package", "show", "*"}, rene);
}

TEST_P(NamesOn, OfOthersAreNeitherChangedNorDeleted)
{
    Expect(0, {"user", "create", "ren\u00E9"});
    Expect(0, {"view", "create", "V"});
    Expect(0, {"group", "create", "/V/G"});
    Expect(0, {"title", "give", "/V/G", "ren\u00E9", "Ch\u00E9f"});
    Expect(3, {"user", "lock", "rene"});
    Expect(3, {"user", "delete", "Ren\u00EA", "--yes"});
    Expect(3, {"title", "check", "/V/G", "ren\u00E9", "Chef"});
    Expect(0, {"title", "take", "/V/G", "ren\u00E9", "Chef"});
    Expect(0, {"title", "check", "/V/G", "REN\u00C9", "CH\u00C9F"});
    Expect(Confuses() ? 4 : 0, {"title", "give", "/V/G", "ren\u00E9", "Chef"});
    WriteFile("p.csv", "login,name\nrene,Other\nREN\u00C9,Ren\u00E9\n");
    const ChildResult tried = Run({"user", "import", "p.csv", "--update", "--dry-run", "--result", "-"});
    EXPECT_THAT(tried.out, HasSubstr(Confuses() ? "rene,,failed," : "rene,,created,"));
    const ChildResult imported = Run({"user", "import", "p.csv", "--update", "--result", "-"});
    EXPECT_THAT(imported.out,
                AllOf(HasSubstr("REN\u00C9,1,updated,"),
                      HasSubstr(Confuses() ? "rene,,failed,\"the login name 'rene' is taken: this database "
                                             "takes it for equal to 'ren\u00E9' (id 1)"
                                           : "rene,2,created,")));
    const std::string list = Run({"user", "list", "-o", "csv"}).out;
    EXPECT_THAT(list, HasSubstr("1,ren\u00E9,Ren\u00E9,"));
}

TEST_P(NamesOn, OfNewPeopleInOneFileAreToldApart)
{
    WriteFile("p.csv", "login,name\namy,Amy\nzo\u00EB,Zo\u00EB\nzoe,Zoe\nkim,Kim\n");
    const ChildResult imported = Run({"user", "import", "p.csv", "--result", "-"});
    EXPECT_THAT(imported.out, AllOf(HasSubstr("\n2,amy,"), HasSubstr("\n3,zo\u00EB,"),
                                    HasSubstr(Confuses() ? "zoe,,failed,\"the login name 'zoe' is taken: this database "
                                                           "takes it for equal to 'zo\u00EB' (id "
                                                         : "zoe,3,created,"),
                                    HasSubstr("\n5,kim,")));
    EXPECT_EQ(Run({"user", "count"}).out, Confuses() ? "3\n" : "4\n");
    EXPECT_EQ(Run({"user", "import", "p.csv", "--result", "-"}).exit, Confuses() ? 7 : 0);
    EXPECT_EQ(Run({"user", "count"}).out, Confuses() ? "3\n" : "4\n");
}

TEST_P(NamesOn, OfTheRoleOfEveryUserAreRefusedInOtherLetters)
{
    for (const char* name : {"EVERYONE", "Everyone"}) {
        const ChildResult made = Run({"role", "create", name});
        EXPECT_EQ(made.exit, 5) << made.err;
        EXPECT_THAT(made.err, HasSubstr("role default --create"));
    }
    Expect(5, {"role", "create", "everyone", "--app", "TOLVAN"});
    // Where the engine leaves accents out, this name is its default role's too.
    Expect(Confuses() ? 5 : 0, {"role", "create", "\u00E9veryone"});
    Expect(0, {"role", "default", "--create"});
    EXPECT_THAT(Run({"role", "default"}).out, HasSubstr("everyone"));
}

INSTANTIATE_TEST_SUITE_P(Engines, NamesOn, testing::Values("sqlite", "postgresql", "mariadb", "mariadb_general_ci"),
                         [](const testing::TestParamInfo<const char*>& engine) { return std::string(engine.param); });

} // namespace
