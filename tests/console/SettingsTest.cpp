#include "management/settings/Settings.h"

#include "ConsoleFixture.h"
#include "RefusalOf.h"
#include "console/ExitCode.h"
#include "dbaccess/CAConnect.h"
#include "management/passwords/Passwords.h"
#include "management/users/Directory.h"
#include "schema/Schema.h"

#include <nlohmann/json.hpp>

using namespace console;
using namespace management;
using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

namespace {

const std::vector<std::string> kHardTexts = {"O'Brien", "a\\b", "'", "\\", "\\'", "''\\\\", "%s%d{}", "王 é", ""};

class SettingsTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    /// All settings as "genre/name=value".
    std::vector<std::string> Rows()
    {
        std::vector<std::string> rows;
        for (const Setting& setting : m_settings.All()) {
            rows.push_back(setting.genre + "/" + setting.name + "=" + setting.value);
        }
        return rows;
    }

    CAConnect m_conn;
    Settings m_settings{m_conn};
};

class SettingCommandsTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
    }

    json Json(std::vector<std::string> words)
    {
        words.insert(words.end(), {"-o", "json"});
        return json::parse(Run(words).out);
    }

    void Set(const std::string& name, const std::string& value, const std::string& genre)
    {
        ASSERT_EQ(Run({"setting", "set", name, value, "--genre", genre}).exit, 0);
    }

    void ExpectRefusal(const ChildResult& result, int exit, const std::string& part)
    {
        EXPECT_EQ(result.exit, exit) << result.err;
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.err, AllOf(HasSubstr("qvadmin: "), HasSubstr(part), Not(HasSubstr("s3cret"))));
    }
};

} // namespace

// ---- The facade -----------------------------------------------------------------------------------------------------

TEST_F(SettingsTest, AnyTextComesThrough)
{
    for (const std::string& text : kHardTexts) {
        m_settings.Insert("n" + text, text, "g" + text);
        m_settings.Insert("n" + text, "other", "h");
        const std::vector<Setting> found = m_settings.OfGenre("g" + text);
        ASSERT_EQ(found.size(), 1U) << text;
        EXPECT_EQ(found.front().name, "n" + text);
        EXPECT_EQ(found.front().value, text);
        m_settings.Delete("n" + text, "h");
        m_settings.UpdateAll("n" + text, text + text);
        ASSERT_EQ(m_settings.Named("n" + text).size(), 1U) << text;
        EXPECT_EQ(m_settings.Named("n" + text).front().value, text + text);
    }
    EXPECT_EQ(m_settings.All().size(), kHardTexts.size());
}

TEST_F(SettingsTest, PicturesComeThrough)
{
    Directory directory(m_conn);
    directory.Insert("amy", "Amy");
    for (const std::string& text : kHardTexts) {
        m_settings.SetPicture(text);
        m_settings.SetUsersPicture(text);
        EXPECT_EQ(m_settings.Picture(), text);
        EXPECT_EQ(directory.Load(1).value().at(FindField("picture")), text);
    }
    EXPECT_EQ(m_settings.All().size(), 1U);
}

TEST_F(SettingsTest, BackslashesOfPicturesAreDoubledOnceOnKindSix)
{
    // This engine takes a backslash as it is, so what is stored is what the statement held.
    Directory directory(m_conn);
    directory.Insert("amy", "Amy");
    m_conn.m_nDBType = 6;
    m_settings.SetPicture("a\\b'c");
    EXPECT_EQ(m_settings.Picture(), "a\\\\b'c");
    m_settings.SetPicture("d\\e");
    EXPECT_EQ(m_settings.Picture(), "d\\\\e");
    m_settings.SetUsersPicture("f\\g'");
    EXPECT_EQ(directory.Load(1).value().at(FindField("picture")), "f\\\\g'");
}

TEST_F(SettingsTest, NumbersKeepTheir32Bits)
{
    for (const std::uint32_t number : {0U, 1U, 2147483647U, 2147483648U, 4294967295U}) {
        m_settings.SetMaxThreads(number);
        m_settings.SetTaskThreads(number / 2);
        m_settings.SetDocServerFlag(number);
        EXPECT_EQ(m_settings.MaxThreads(), number);
        EXPECT_EQ(m_settings.TaskThreads(), number / 2);
        EXPECT_EQ(m_settings.DocServerFlag(), number);
    }
    EXPECT_THAT(Rows(), ElementsAre("KelDocConfig/KelDocServerFlag=-1", "KelServerConfig/MastTaskThreads=2147483647",
                                    "KelServerConfig/maxThreads=-1"));
}

TEST_F(SettingsTest, ASettingWithoutAGenreIsOfTheEmptyOne)
{
    m_conn.Execute("INSERT INTO Tab_Config (Col_Name, Col_Data, Col_Genre) VALUES ('a', '1', NULL), ('b', '2', '')");
    EXPECT_EQ(m_settings.OfGenre("").size(), 2U);
    m_settings.Delete("a", "");
    m_settings.Delete("b", "");
    EXPECT_THAT(Rows(), ElementsAre());
}

TEST_F(SettingsTest, TheEncryptionKeyHasOneRowWhateverStoodThere)
{
    EXPECT_EQ(m_settings.EncryptionKey().View(), "");
    for (const std::string text : {"O'key\\", "second"}) {
        m_settings.SetEncryptionKey(Secret(text));
        EXPECT_EQ(m_settings.EncryptionKey().View(), text);
        EXPECT_EQ(m_settings.All().size(), 1U);
    }
    for (const char* nothing : {"''", "NULL"}) {
        m_conn.Execute((std::string("UPDATE Tab_Config SET Col_Data = ") + nothing).c_str());
        m_settings.SetEncryptionKey(Secret("th'ird\\"));
        EXPECT_THAT(Rows(), ElementsAre("/EncryptKey=th'ird\\"));
    }
    m_settings.Insert("EncryptKey", "twin", "");
    EXPECT_EQ(CodeOf([&] { m_settings.SetEncryptionKey(Secret("fourth")); }), Exit::conflict);
}

TEST_F(SettingsTest, NoErrorRepeatsTheKey)
{
    m_settings.Insert("EncryptKey", "", "");
    m_conn.Execute("CREATE TRIGGER refuse BEFORE UPDATE ON Tab_Config BEGIN SELECT RAISE(ABORT, 'not today'); END");
    for (const std::string& key : {std::string("s3cret"), std::string("s3cret\0", 7), std::string("s3cret\xFF")}) {
        try {
            m_settings.SetEncryptionKey(Secret(key));
            FAIL();
        } catch (const Error& e) {
            EXPECT_THAT(e.what(), Not(HasSubstr("s3cret")));
        }
    }
}

// ---- The commands ---------------------------------------------------------------------------------------------------

TEST_F(SettingCommandsTest, SettingsAreAddedChangedListedAndDeleted)
{
    Set("O'x\\", "v'\\", "G'");
    EXPECT_EQ(Json({"setting", "get", "O'x\\"}), json({{"genre", "G'"}, {"name", "O'x\\"}, {"value", "v'\\"}}));
    EXPECT_EQ(Run({"setting", "set", "O'x\\", ""}).exit, 0);
    EXPECT_EQ(Json({"setting", "get", "O'x\\", "--genre", "G'"})["value"], "");
    Set("a", "1", "H");
    EXPECT_EQ(Run({"setting", "list", "-o", "plain"}).out, "G'\tO'x\\\\\t\nH\ta\t1\n");
    EXPECT_EQ(Run({"setting", "list", "--genre", "H", "-o", "plain"}).out, "H\ta\t1\n");
    ExpectRefusal(Run({"setting", "delete", "a", "--genre", "H"}), 9, "--yes");
    EXPECT_EQ(Run({"setting", "delete", "a", "--genre", "H", "--yes"}).exit, 0);
    ExpectRefusal(Run({"setting", "delete", "a", "--genre", "H", "--yes"}), 3, "no setting 'a' of genre 'H'");
    ExpectRefusal(Run({"setting", "get", "a"}), 3, "no setting 'a'");
    ExpectRefusal(Run({"setting", "set", "a", "1"}), 2, "--genre");
    ExpectRefusal(Run({"setting", "set", "", "1", "--genre", "G"}), 2, "empty");
}

TEST_F(SettingCommandsTest, ANameOfSeveralGenresIsNeverChanged)
{
    Set("a", "1", "G");
    Set("a", "2", "H");
    ExpectRefusal(Run({"setting", "get", "a"}), 4, "a of genre 'G', a of genre 'H'");
    EXPECT_EQ(Json({"setting", "get", "a", "--genre", "H"})["value"], "2");
    ExpectRefusal(Run({"setting", "set", "a", "3", "--genre", "H"}), 4, "a of genre 'G', a of genre 'H'");
    ExpectRefusal(Run({"setting", "set", "a", "3"}), 4, "2 settings");
    EXPECT_EQ(Run({"setting", "delete", "a", "--genre", "G", "--yes"}).exit, 0);
    Execute("INSERT INTO Tab_Config (Col_Name, Col_Data, Col_Genre) VALUES ('a', '2', 'H')");
    ExpectRefusal(Run({"setting", "set", "a", "3", "--genre", "H"}), 4, "2 settings");
    EXPECT_EQ(Run({"setting", "list", "-o", "plain"}).out, "H\ta\t2\nH\ta\t2\n");
}

TEST_F(SettingCommandsTest, ThreadsAndFlagsAreShownAndSet)
{
    EXPECT_EQ(Json({"setting", "threads"}), json({{"max", 0}, {"task", 0}}));
    EXPECT_EQ(Run({"setting", "threads", "--max", "4294967295", "--task", "8"}).exit, 0);
    EXPECT_EQ(Run({"setting", "threads", "--task", "9"}).exit, 0);
    EXPECT_EQ(Json({"setting", "threads"}), json({{"max", 4294967295}, {"task", 9}}));
    Execute("INSERT INTO Tab_Config (Col_Name, Col_Data, Col_Genre) VALUES ('KelServerFlag', '-2', 'KelServerConfig')");
    EXPECT_EQ(Run({"setting", "flags", "--doc-flag", "3000000000"}).exit, 0);
    EXPECT_EQ(Json({"setting", "flags"}), json({{"server_flag", 4294967294}, {"doc_flag", 3000000000}}));
    for (const char* number : {"-1", "4294967296", "", "1x", "0x1", "many"}) {
        ExpectRefusal(Run({"setting", "threads", "--max", number}), 2, "--max");
    }
}

TEST_F(SettingCommandsTest, ThePictureIsTheCompanysAndOnRequestEverybodys)
{
    ASSERT_EQ(Run({"user", "create", "amy", "--picture", "own"}).exit, 0);
    EXPECT_EQ(Run({"setting", "picture", "o'p\\"}).exit, 0);
    EXPECT_EQ(Json({"setting", "picture"})["picture"], "o'p\\");
    EXPECT_EQ(Json({"user", "show", "amy"})["picture"], "own");
    ExpectRefusal(Run({"setting", "picture", "--all-users"}), 2, "--all-users");
    ExpectRefusal(Run({"setting", "picture", "x", "--all-users"}), 9, "--yes");
    EXPECT_EQ(Json({"setting", "picture"})["picture"], "o'p\\");
    EXPECT_EQ(Run({"setting", "picture", "x'\\", "--all-users", "--yes"}).exit, 0);
    EXPECT_EQ(Json({"user", "show", "amy"})["picture"], "x'\\");
    m_options.terminal = true;
    EXPECT_EQ(RunWith("n\n", {"setting", "picture", "y", "--all-users"}).exit, 9);
    const ChildResult asked = RunWith("y\n", {"setting", "picture", "", "--all-users"});
    EXPECT_EQ(asked.exit, 0);
    EXPECT_THAT(asked.err, HasSubstr("Replace the picture of 1 user? [y/N]"));
    EXPECT_EQ(Json({"user", "show", "amy"})["picture"], "");
}

TEST_F(SettingCommandsTest, TheEncryptionKeyIsShownOnRequestOnly)
{
    EXPECT_EQ(Json({"setting", "encryption-key", "show"}), json({{"set", false}}));
    const ChildResult set = RunWith("s3cret'\\\n", {"setting", "encryption-key", "set", "--key-stdin"});
    EXPECT_EQ(set.exit, 0);
    EXPECT_EQ(set.out + set.err, "set the encryption key\n");
    EXPECT_EQ(Json({"setting", "encryption-key", "show"}), json({{"set", true}}));
    EXPECT_EQ(Json({"setting", "encryption-key", "show", "--reveal"}), json({{"set", true}, {"key", "s3cret'\\"}}));
    EXPECT_EQ(Json({"setting", "list"}), json({{{"genre", ""}, {"name", "EncryptKey"}, {"value", nullptr}}}));
    ExpectRefusal(Run({"setting", "get", "EncryptKey"}), 2, "is a secret");
    ExpectRefusal(Run({"setting", "set", "encryptkey", "x", "--genre", ""}), 2, "is a secret");
    ExpectRefusal(Run({"setting", "encryption-key", "set", "--key=s3cret"}), 2, "could be read by others");
    ExpectRefusal(Run({"setting", "encryption-key", "set"}), 2, "--key-stdin or --key-file");
    ExpectRefusal(RunWith("\n", {"setting", "encryption-key", "set", "--key-stdin"}), 2, "empty");
    WriteSecretFile("key.txt", "filed");
    EXPECT_EQ(Run({"setting", "encryption-key", "set", "--key-file", "key.txt"}).exit, 0);
    std::filesystem::permissions(Path("key.txt"), static_cast<std::filesystem::perms>(0644));
    ExpectRefusal(Run({"setting", "encryption-key", "set", "--key-file", "key.txt"}), 1,
                  "the key file key.txt is open to others than its owner");
    ExpectRefusal(Run({"setting", "encryption-key"}), 2, "name what to do");
    m_options.terminal = true;
    const ChildResult asked = RunWith("one\none\n", {"setting", "encryption-key", "set"});
    EXPECT_EQ(asked.exit, 0);
    EXPECT_THAT(asked.err, AllOf(HasSubstr("New encryption key: "), HasSubstr("Once more: ")));
    EXPECT_EQ(Json({"setting", "encryption-key", "show", "--reveal"})["key"], "one");
}

TEST_F(SettingCommandsTest, HelpStandsAtEachLevel)
{
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"setting", "--help"},
                                               {"setting", "set", "--help"},
                                               {"setting", "encryption-key", "--help"},
                                               {"setting", "encryption-key", "show", "--help"},
                                               {"user", "password", "--help"},
                                               {"user", "password", "set", "--help"}}) {
        const ChildResult result = Run(words);
        EXPECT_EQ(result.exit, 0);
        EXPECT_EQ(result.err, "");
        EXPECT_THAT(result.out, AllOf(HasSubstr("Usage: qvadmin"), HasSubstr("Examples:\n  qvadmin")));
    }
}
