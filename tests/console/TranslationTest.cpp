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
