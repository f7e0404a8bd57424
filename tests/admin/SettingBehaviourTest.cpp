#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "tests/directory/BehaviourCase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace setting_behaviour {

using behaviour::Line;
using behaviour::ReadCase;
using behaviour::Texts;
using behaviour::WriteCase;
using scripted::Rows;

namespace {

template <class Number>
ReadCase NumberCase(const char* name, bool (*get)(CAConnect&, Number&))
{
    const auto call = [get](CAConnect& conn) {
        Number number = 77;
        const bool ran = get(conn, number);
        return Line(ran, number);
    };
    return {name, call, {{"2147483647"}, {"5"}}, "true 2147483647", "true 0", "true 0", "false 0"};
}

std::vector<ReadCase> Numbers()
{
    return {
        NumberCase("GetKelServerConfigInfo", &CQVBaseFun::GetKelServerConfigInfo),
        NumberCase("GetMaxThreadCount", &CQVBaseFun::GetMaxThreadCount),
        NumberCase("GetTaskThreadCount", &CQVBaseFun::GetTaskThreadCount),
        NumberCase("GetKelDocServerFlag", &CQVBaseFun::GetKelDocServerFlag),
    };
}

template <class Test>
ReadCase TestCase(const char* name, Test test)
{
    const auto call = [test](CAConnect& conn) {
        bool exists = true;
        const bool ran = test(conn, exists);
        return Line(ran, exists);
    };
    return {name, call, {{""}}, "true true", "true false", "true true", "false false"};
}

std::vector<ReadCase> Tests()
{
    return {
        TestCase("ExistThreadInfo",
                 [](CAConnect& conn, bool& exists) { return CQVBaseFun::ExistThreadInfo(conn, "n", exists); }),
        TestCase("ExistKelDocConfig",
                 [](CAConnect& conn, bool& exists) { return CQVBaseFun::ExistKelDocConfig(conn, "n", exists); }),
        TestCase("ExistKelDocServerFlag", &CQVBaseFun::ExistKelDocServerFlag),
        TestCase("ExistCorDisplayPic", &CQVBaseFun::ExistCorDisplayPic),
        TestCase("ExistTabConfigName",
                 [](CAConnect& conn, bool& exists) { return CQVBaseFun::ExistTabConfigName(conn, "n", "g", exists); }),
    };
}

std::vector<ReadCase> TextLookUps()
{
    return {
        {"GetKelDocConfig",
         [](CAConnect& conn) {
             CString value = "before";
             const bool ran = CQVBaseFun::GetKelDocConfig(conn, "n", value);
             return Line(ran, value);
         },
         {{"v1"}, {"v2"}},
         R"(true "v1")",
         R"(true "before")",
         R"(true "before")",
         R"(false "before")"},
        {"GetCorDisplayPic",
         [](CAConnect& conn) {
             CString picture = "before";
             const bool ran = CQVBaseFun::GetCorDisplayPic(conn, picture);
             return Line(ran, picture);
         },
         {{"p1"}, {"p2"}},
         R"(true "p1")",
         R"(true "")",
         R"(true "")",
         R"(false "")",
         R"(true "")"},
    };
}

std::vector<ReadCase> Lists()
{
    return {
        {"LoadTabConfigInfo",
         [](CAConnect& conn) {
             Texts names;
             Texts values;
             const bool ran = CQVBaseFun::LoadTabConfigInfo(conn, names, values, "g");
             return Line(ran, names, values);
         },
         {{"n1", "v1"}, {"n2", "v2"}},
         "true [old,n1,n2] [old,v1,v2]",
         "true [old] [old]",
         "true [old,] [old,]",
         "false [old] [old]"},
    };
}

std::vector<WriteCase> Writes()
{
    return {
        {"InsertThreadInfo", [](CAConnect& conn) { return CQVBaseFun::InsertThreadInfo(conn, "n", 5); }},
        {"UpdateThreadInfo", [](CAConnect& conn) { return CQVBaseFun::UpdateThreadInfo(conn, "n", 5); }},
        {"InsertKelDocConfig", [](CAConnect& conn) { return CQVBaseFun::InsertKelDocConfig(conn, "n", "v"); }},
        {"UpdateKelDocConfig", [](CAConnect& conn) { return CQVBaseFun::UpdateKelDocConfig(conn, "n", "v"); }},
        {"InsertKelDocServerFlag", [](CAConnect& conn) { return CQVBaseFun::InsertKelDocServerFlag(conn, 5); }},
        {"UpdateKelDocServerFlag", [](CAConnect& conn) { return CQVBaseFun::UpdateKelDocServerFlag(conn, 5); }},
        {"InsertCorDisplayPic", [](CAConnect& conn) { return CQVBaseFun::InsertCorDisplayPic(conn, "p"); }},
        {"UpdateCorDisplayPic", [](CAConnect& conn) { return CQVBaseFun::UpdateCorDisplayPic(conn, "p"); }},
        {"UpdateUserDisplayPic", [](CAConnect& conn) { return CQVBaseFun::UpdateUserDisplayPic(conn, "p"); }},
        {"InsertTabConfigValue", [](CAConnect& conn) { return CQVBaseFun::InsertTabConfigValue(conn, "n", "v", "g"); }},
        {"UpdateTabConfigValue", [](CAConnect& conn) { return CQVBaseFun::UpdateTabConfigValue(conn, "n", "v"); }},
        {"DeleteTabConfigValue", [](CAConnect& conn) { return CQVBaseFun::DeleteTabConfigValue(conn, "n", "g"); }},
    };
}

class SettingBehaviour : public behaviour::Script {
protected:
    SettingBehaviour() : Script("admin/QVBaseFun_Settings.cpp") {}
};

TEST_F(SettingBehaviour, ReadsGiveWhatTheRowsHoldOrTheirPresets)
{
    for (const auto& reads : {Numbers(), Tests(), TextLookUps(), Lists()}) {
        ExpectAnswersAreRead(reads);
    }
}

TEST_F(SettingBehaviour, LookUpsReadTheFirstRowOnly)
{
    for (const auto& reads : {Numbers(), Tests(), TextLookUps()}) {
        ExpectOnlyTheFirstRowIsRead(reads);
    }
}

TEST_F(SettingBehaviour, ReadsOfAClosedConnectionSayNothingAndOnlyThePictureIsGivenAllTheSame)
{
    for (const auto& reads : {Numbers(), Tests(), TextLookUps(), Lists()}) {
        ExpectClosedReadsSayNothing(reads);
    }
}

TEST_F(SettingBehaviour, WhatTheEngineRefusesIsReportedOnceWithALineOfItsOwn)
{
    for (const auto& reads : {Numbers(), Tests(), TextLookUps(), Lists()}) {
        ExpectRefusedReadsAreReported(reads);
    }
    ExpectRefusedWritesAreReported(Writes());
}

TEST_F(SettingBehaviour, AListThatBreaksOffKeepsTheRowsReadSoFar) { ExpectBrokenListsKeepTheirRows(Lists()); }

TEST_F(SettingBehaviour, WritesGiveTrueWhateverTheEngineCounts) { ExpectWritesGiveTrueWhateverIsCounted(Writes()); }

TEST_F(SettingBehaviour, WritesOnAClosedConnectionAreReportedAsErrors) { ExpectClosedWritesAreReported(Writes()); }

struct NumberText {
    const char* stored;
    const char* read;
};

TEST_F(SettingBehaviour, NumbersAreReadAsFarAsTheTextIsOne)
{
    const std::vector<NumberText> cases = {
        {"", "0"},       {"0", "0"},    {"12", "12"}, {"+12", "12"}, {" \t\n12", "12"}, {"12abc", "12"}, {"12.9", "12"},
        {"12 13", "12"}, {"0x10", "0"}, {"007", "7"}, {"abc", "0"},  {"a12", "0"},      {"- 1", "0"},    {" ", "0"},
    };
    for (const ReadCase& number : Numbers()) {
        for (const NumberText& text : cases) {
            Connect();
            m_database->Answer(Rows({{text.stored}}));
            EXPECT_EQ(number.call(*m_conn), std::string("true ") + text.read) << number.name << " of " << text.stored;
        }
    }
}

TEST_F(SettingBehaviour, NegativeNumbersKeepTheir32Bits)
{
    for (const ReadCase& number : Numbers()) {
        Connect();
        m_database->Answer(Rows({{"-1"}}));
        EXPECT_EQ(number.call(*m_conn), "true 4294967295") << number.name;
        Connect();
        m_database->Answer(Rows({{"-2147483648"}}));
        EXPECT_EQ(number.call(*m_conn), "true 2147483648") << number.name;
    }
}

TEST_F(SettingBehaviour, AListCalledTwiceHoldsEveryRowTwice)
{
    Connect();
    m_database->Answer(Rows({{"n1", "v1"}}));
    m_database->Answer(Rows({{"n1", "v1"}}));
    CStringArray names;
    CStringArray values;
    EXPECT_TRUE(CQVBaseFun::LoadTabConfigInfo(*m_conn, names, values, "g"));
    EXPECT_TRUE(CQVBaseFun::LoadTabConfigInfo(*m_conn, names, values, "g"));
    EXPECT_EQ(Line(names, values), "[n1,n1] [v1,v1]");
}

} // namespace

} // namespace setting_behaviour
