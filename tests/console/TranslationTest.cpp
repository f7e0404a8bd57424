#include "ConsoleFixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

using testing::HasSubstr;

/// The C library forgets the list that it makes of LOCPATH.
extern "C" __attribute__((visibility("default"))) const char* __lsan_default_suppressions()
{
    return "leak:argz_add_sep\n";
}

namespace {

/// Commands in locales that were made for the tests: those of the system are an administrator's choice.
class TranslationTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        m_options.environment["LOCPATH"] = LOCALES_DIRECTORY;
        WriteFile("leaks", __lsan_default_suppressions());
        m_options.environment["LSAN_OPTIONS"] = "suppressions=" + Path("leaks");
    }

    void Use(const std::string& locale) { m_options.environment["LC_ALL"] = locale; }
};

} // namespace

TEST_F(TranslationTest, HelpIsInTheLanguageOfTheLocale)
{
    Use("de_DE.UTF-8");
    const std::string german = Run({"user", "delete", "--help"}).out;
    EXPECT_THAT(german, HasSubstr("Benutzer löschen, und was anderswo über sie gespeichert ist; fragt nach\n\n"
                                  "Aufruf: qvadmin user delete [OPTIONEN] USER...\n\nArgumente:\n"));
    EXPECT_THAT(german, HasSubstr("  --yes                           nicht nachfragen\n"));
    EXPECT_THAT(german, HasSubstr("Beispiele:\n  qvadmin user delete amy\n"));
    EXPECT_THAT(Run({"--help"}).out, HasSubstr("Hauptwörter:\n  db                              Datenbank anlegen"));
    EXPECT_THAT(Run({"user", "password", "set", "--help"}).out,
                HasSubstr("--password-stdin                password ist die erste Zeile der Standardeingabe\n"));
    Use("zh_CN.UTF-8");
    EXPECT_THAT(Run({"user", "delete", "--help"}).out, HasSubstr("用法： qvadmin user delete [选项] USER..."));
    EXPECT_THAT(Run({"shell", "--help"}).out, HasSubstr("按键：Tab 补全单词"));
}

TEST_F(TranslationTest, ErrorsAreInTheLanguageOfTheLocale)
{
    Init();
    Use("de_DE.UTF-8");
    const ChildResult german = Run({"user", "show", "nobody"});
    EXPECT_EQ(german.exit, 3);
    EXPECT_EQ(german.err, "qvadmin: es gibt keinen Benutzer 'nobody'; `qvadmin user list` zeigt alle\n");
    EXPECT_EQ(Run({"user", "shwo", "nobody"}).err,
              "qvadmin: user kennt nicht das Verb 'shwo'; gemeint ist vielleicht show?\n");
    EXPECT_EQ(Run({"role", "add", "Ghosts", "nobody", "noone"}).exit, 3);
    EXPECT_EQ(Run({"user", "show", "nobody", "noone"}).err,
              "qvadmin: Benutzer nicht vorhanden: 'nobody', 'noone'; `qvadmin user list` zeigt alle\n");
    Use("zh_CN.UTF-8");
    EXPECT_EQ(Run({"user", "show", "nobody"}).err, "qvadmin: 没有用户 'nobody'；`qvadmin user list` 显示全部\n");
}

TEST_F(TranslationTest, OutcomesAndCountsAreInTheLanguageOfTheLocale)
{
    Init();
    Use("de_DE.UTF-8");
    EXPECT_EQ(Run({"user", "create", "amy"}).err, "");
    ASSERT_EQ(Run({"user", "create", "rory"}).exit, 0);
    EXPECT_EQ(Run({"user", "lock", "amy", "--dry-run"}).err,
              "Probelauf: gesperrt: amy (Id 1)\nProbelauf: nichts wurde geändert\n");
    EXPECT_EQ(Run({"user", "delete", "amy", "rory", "--yes"}).err,
              "amy (Id 1) löschen\nrory (Id 2) löschen\ngelöscht: 2 Benutzer\n");
    Use("zh_CN.UTF-8");
    ASSERT_EQ(Run({"user", "create", "amy"}).exit, 0);
    EXPECT_EQ(Run({"user", "delete", "amy", "--yes"}).err, "删除 amy（id 3）\n已删除 1 名用户\n");
}

TEST_F(TranslationTest, QuestionsAreInTheLanguageOfTheLocale)
{
    Init();
    ASSERT_EQ(Run({"user", "create", "amy"}).exit, 0);
    Use("de_DE.UTF-8");
    m_options.terminal = true;
    const ChildResult refused = RunWith("n\n", {"user", "delete", "amy"});
    EXPECT_EQ(refused.exit, 9);
    EXPECT_THAT(refused.err, HasSubstr("1 Benutzer löschen? [y/N] "));
    EXPECT_THAT(refused.err, HasSubstr(" nichts wurde gelöscht"));
    EXPECT_THAT(RunWith("y\n", {"user", "delete", "amy"}).err, HasSubstr("gelöscht: 1 Benutzer"));
}

TEST_F(TranslationTest, HeadingsOfTablesAreTranslatedAndThoseForProgramsAreNot)
{
    Init();
    ASSERT_EQ(Run({"user", "create", "amy"}).exit, 0);
    Use("de_DE.UTF-8");
    const std::string table = Run({"user", "list"}).out;
    EXPECT_THAT(table, HasSubstr("Anmeldename"));
    EXPECT_THAT(table, HasSubstr("gesperrt"));
    EXPECT_THAT(table, HasSubstr("nein"));
    EXPECT_THAT(Run({"user", "list", "-o", "csv"}).out,
                testing::StartsWith("id,login,name,sex,mobile,email,department,title,locked\n"));
}

TEST_F(TranslationTest, ReasonsOfRowsAreInTheLanguageOfTheLocaleAndEnglishInTheResult)
{
    Init();
    WriteFile("people.csv", "login,name,super\namy,Amy,0\namy,Amy,0\nrory,Rory,1\nb\"c,Bo,0\n");
    const std::vector<std::string> command = {"user", "import", Path("people.csv"), "--result", Path("out.csv")};
    Use("de_DE.UTF-8");
    const ChildResult german = Run(command);
    EXPECT_EQ(german.exit, 7);
    EXPECT_THAT(german.err, HasSubstr(":3: der Anmeldename 'amy' steht schon in Zeile 2\n"));
    EXPECT_THAT(german.err, HasSubstr(":4: ändert super, was --allow-privileges erfordert\n"));
    EXPECT_THAT(german.err, HasSubstr(":5: mitten in einem Wert steht ein Anführungszeichen\n"));
    EXPECT_THAT(ReadFile("out.csv"), HasSubstr("3,amy,,failed,the login name 'amy' is in line 2 already\n"));
    Use("zh_CN.UTF-8");
    EXPECT_THAT(Run(command).err, HasSubstr(":3: 登录名 'amy' 已出现在第 2 行\n"));
    WriteFile("directory.ldif", "dn: cn=x\nchangetype: add\ncn: x\n");
    Use("de_DE.UTF-8");
    EXPECT_THAT(Run({"import", Path("directory.ldif")}).err,
                HasSubstr(":1: es ist ein Änderungssatz (changetype: add); importiert werden nur ganze Einträge"));
}

TEST_F(TranslationTest, HintsOnFileFormatsAreInTheLanguageOfTheLocale)
{
    Init();
    WriteFile("people.csv", "\x1F\x8B\x08 packed");
    Use("de_DE.UTF-8");
    EXPECT_THAT(Run({"user", "import", Path("people.csv")}).err,
                testing::AllOf(HasSubstr("people.csv ist mit gzip komprimiert; zu entpacken mit `gunzip -c "),
                               HasSubstr("people.csv.csv`; nichts wurde importiert\n")));
    Use("zh_CN.UTF-8");
    EXPECT_THAT(Run({"user", "import", Path("people.csv")}).err,
                HasSubstr("people.csv 是经 gzip 压缩的文件；请用 `gunzip"));
}

TEST_F(TranslationTest, FindingsAreInTheLanguageOfTheLocaleForPeopleAlone)
{
    Init();
    ASSERT_EQ(Run({"user", "create", "amy"}).exit, 0);
    Use("de_DE.UTF-8");
    EXPECT_THAT(Run({"db", "check"}).out,
                testing::AllOf(HasSubstr("Benutzer ohne Kennwort, die nicht gesperrt sind"),
                               HasSubstr("`qvadmin user password set` oder `qvadmin user lock`")));
    EXPECT_THAT(Run({"db", "check", "-o", "json"}).out, HasSubstr("\"users without a password who are not locked\""));
    EXPECT_THAT(Run({"db", "check", "-o", "csv"}).out, HasSubstr(",users without a password who are not locked,"));
    Use("zh_CN.UTF-8");
    EXPECT_THAT(Run({"db", "check"}).out, HasSubstr("没有密码且未锁定的用户"));
}

TEST_F(TranslationTest, TheShellSaysInTheLanguageOfTheLocaleHowManyMoreWordsThereAre)
{
    Init();
    std::string people = "login\n";
    for (int number = 100; number < 205; ++number) {
        people += "b" + std::to_string(number) + "\n";
    }
    WriteFile("people.csv", people);
    ASSERT_EQ(Run({"user", "import", Path("people.csv")}).exit, 0);
    Use("de_DE.UTF-8");
    m_options.environment["TERM"] = "vt100";
    m_options.terminal = true;
    ChildProcess shell(QVADMIN_PROGRAM, {"shell"}, m_options);
    shell.WaitForNextError("> ");
    shell.Type("user show b\t");
    shell.WaitForNextError("\r\nund 5 weitere\r\n");
    shell.Type("\x15\x04");
    EXPECT_EQ(shell.Finish().exit, 0);
}

TEST_F(TranslationTest, WhatProgramsReadIsTheSameInEveryLocale)
{
    Init();
    const std::vector<std::vector<std::string>> commands = {
        {"user", "show", "nobody", "-o", "json"},
        {"user", "show", "Admin", "-o", "json"},
        {"user", "lock", "Admin", "--dry-run", "-o", "jsonl"},
        {"user", "list", "-o", "plain"},
        {"commands", "-o", "json"},
        {"manual", "user"},
        {"completion", "bash"},
    };
    for (const std::vector<std::string>& command : commands) {
        Use("C");
        const ChildResult english = Run(command);
        Use("de_DE.UTF-8");
        const ChildResult german = Run(command);
        EXPECT_EQ(german.out, english.out);
        EXPECT_EQ(german.err, english.err);
        EXPECT_EQ(german.exit, english.exit);
    }
}

TEST_F(TranslationTest, WithoutALocaleOfUtf8OrACatalogueItIsEnglish)
{
    const std::string english = Run({"user", "--help"}).out;
    for (const char* locale : {"C", "POSIX", "de_DE.ISO-8859-1", "xx_XX.UTF-8", "en_GB.UTF-8"}) {
        Use(locale);
        EXPECT_EQ(Run({"user", "--help"}).out, english) << locale;
    }
}

TEST_F(TranslationTest, LanguageAndTheSmallerVariablesCount)
{
    const auto description = [this] { return Run({"--help"}).out.substr(0, 10); };
    m_options.environment["LANG"] = "de_DE.UTF-8";
    EXPECT_EQ(description(), "Verwaltung");
    m_options.environment["LC_MESSAGES"] = "C";
    EXPECT_EQ(description(), "Administra");
    Use("de_DE.UTF-8");
    EXPECT_EQ(description(), "Verwaltung");
    // Of a locale that has been used, the C library keeps what it found in the process.
    Use("en_GB.UTF-8");
    m_options.environment["LANGUAGE"] = "zh_CN:de";
    EXPECT_EQ(description().substr(0, 6), "管理");
}
