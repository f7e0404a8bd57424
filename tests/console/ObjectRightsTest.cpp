#include "management/rights/ObjectRights.h"

#include "ConsoleFixture.h"
#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "management/DatabaseError.h"
#include "management/rights/PermissionMask.h"
#include "schema/Schema.h"
#include "tests/support/HardText.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>

using namespace management;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

namespace {

class ObjectRightsTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    int Grant(const ObjectRightKey& key)
    {
        ObjectRight right;
        right.key = key;
        return m_rights.Grant(right);
    }

    CAConnect m_conn;
    ObjectRights m_rights{m_conn};
};

std::vector<int> IdsOf(const std::vector<ObjectRight>& rights)
{
    std::vector<int> ids;
    std::ranges::transform(rights, std::back_inserter(ids), &ObjectRight::id);
    return ids;
}

class ObjectRightConsoleTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
        Done({"user", "create", "amy", "--name", "Amy O'Holt\\"});
        Done({"role", "create", "Editors"});
        Done({"view", "create", "Company"});
        Done({"group", "create", "/Company/Sales"});
    }

    nlohmann::json Shown(const std::string& id)
    {
        return nlohmann::json::parse(Done({"objright", "show", id, "-o", "json"}));
    }
};

} // namespace

// ---- PermissionMask
// ---------------------------------------------------------------------------------------------------------

TEST(PowersTest, APowerIsANumberOf32BitsOrUnlimited)
{
    EXPECT_EQ(PowerFrom("0"), 0);
    EXPECT_EQ(PowerFrom("2147483647"), 2147483647);
    EXPECT_EQ(PowerFrom("-2147483648"), -2147483648);
    EXPECT_EQ(PowerFrom("0x1F"), 31);
    EXPECT_EQ(PowerFrom("0Xff"), 255);
    EXPECT_EQ(PowerFrom("0xFFFFFFFF"), -1);
    EXPECT_EQ(PowerFrom("unlimited"), kUnlimited);
    for (const char* text : {"", "2147483648", "-2147483649", "0x", "0x100000000", "-0x1", "0x-1", "+1", " 1", "1 ",
                             "1.5", "Unlimited", "many"}) {
        EXPECT_THROW(PowerFrom(text), Error) << text;
    }
}

TEST(PowersTest, BitsHaveNoSign)
{
    EXPECT_EQ(BitsFrom("4294967295"), 4294967295U);
    EXPECT_EQ(BitsFrom("0x80000000"), 2147483648U);
    for (const char* text : {"", "-1", "4294967296", "0x", "0x100000000", "unlimited"}) {
        EXPECT_THROW(BitsFrom(text), Error) << text;
    }
}

// ---- The facade -----------------------------------------------------------------------------------------------------

TEST_F(ObjectRightsTest, AnyTextGoesInAndComesOutAsItIs)
{
    ObjectRight right;
    right.key = {{kItemTypeView, 9}, {-3, 17}, kHard, "it's\\"};
    right.power = -1;
    right.unpower = 7;
    right.holderName = kHard;
    right.creatorId = 5;
    right.creator = "a'b\\c";
    const int id = m_rights.Grant(right);
    const std::optional<ObjectRight> stored = m_rights.Load(id);
    ASSERT_TRUE(stored.has_value());
    EXPECT_EQ(stored->key.holder, right.key.holder);
    EXPECT_EQ(stored->key.object.classId, -3);
    EXPECT_EQ(stored->key.object.id, 17);
    EXPECT_EQ(stored->key.genre, kHard);
    EXPECT_EQ(stored->key.function, "it's\\");
    EXPECT_EQ(stored->power, -1);
    EXPECT_EQ(stored->unpower, 7);
    EXPECT_EQ(stored->holderName, kHard);
    EXPECT_EQ(stored->creatorId, 5);
    EXPECT_EQ(stored->creator, "a'b\\c");
    EXPECT_THAT(stored->created.value(), MatchesRegex("....-..-.. ..:..:.."));
    EXPECT_EQ(m_rights.Find(right.key), id);
    EXPECT_THAT(IdsOf(m_rights.On({-3, 17}, "it's\\")), ElementsAre(id));
}

TEST_F(ObjectRightsTest, TextsComeBackAsTheyWereWhateverKindTheEngineIsTakenFor)
{
    for (const int kind : {0, 1, 3, 6}) {
        m_conn.m_nDBType = kind;
        ObjectRight right;
        right.key = {{kItemTypeUser, kind}, {1, 2}, "a\\b", "c\\d"};
        right.holderName = "O'e\\f''\\";
        const std::optional<ObjectRight> stored = m_rights.Load(m_rights.Grant(right));
        ASSERT_TRUE(stored.has_value());
        EXPECT_EQ(stored->key.genre, "a\\b");
        EXPECT_EQ(stored->key.function, "c\\d");
        EXPECT_EQ(stored->holderName, "O'e\\f''\\") << kind;
    }
}

TEST_F(ObjectRightsTest, ListsGoByHolderTypeAndTakeEveryGenre)
{
    const int view = Grant({{kItemTypeView, 1}, {1, 2}, "docs", "read"});
    const int role = Grant({{kItemTypeRole, 1}, {1, 2}, "docs", "write"});
    const int user = Grant({{kItemTypeUser, 1}, {1, 2}, "files", "read"});
    Grant({{kItemTypeUser, 1}, {1, 3}, "docs", "read"});
    Grant({{kItemTypeUser, 1}, {2, 2}, "docs", "read"});
    EXPECT_THAT(IdsOf(m_rights.On({1, 2})), ElementsAre(user, role, view));
    EXPECT_THAT(IdsOf(m_rights.On({1, 2}, "read")), ElementsAre(user, view));
    EXPECT_THAT(m_rights.On({1, 2}, "none"), IsEmpty());
    EXPECT_EQ(m_rights.Find({{kItemTypeUser, 1}, {1, 2}, "docs", "read"}), std::nullopt);
}

TEST_F(ObjectRightsTest, ARefusedWriteSaysWhy)
{
    Grant({{kItemTypeUser, 1}, {1, 2}, "docs", "read"});
    m_conn.Execute("PRAGMA query_only = 1");
    EXPECT_THROW(m_rights.Set(1, 2, 3), DatabaseError);
    EXPECT_THROW(m_rights.Revoke(1), DatabaseError);
    try {
        m_rights.Grant({});
        FAIL() << "written";
    } catch (const DatabaseError& e) {
        EXPECT_THAT(e.what(), HasSubstr("readonly"));
    }
}

// ---- The commands ---------------------------------------------------------------------------------------------------

TEST_F(ObjectRightConsoleTest, HelpOfEveryVerbHasExamples)
{
    for (const char* verb : {"list", "show", "grant", "set", "revoke", "check"}) {
        EXPECT_THAT(Done({"objright", verb, "--help"}), HasSubstr("Examples:\n  qvadmin objright")) << verb;
    }
    EXPECT_THAT(Done({"objright", "grant", "--help"}),
                HasSubstr("Usage: qvadmin objright grant [OPTIONS] ITEM CLASS OBJECT GENRE FUNCTION POWER\n"));
    EXPECT_THAT(Done({"objright", "revoke", "--help"}), HasSubstr("Usage: qvadmin objright revoke [OPTIONS] ID...\n"));
}

TEST_F(ObjectRightConsoleTest, AGrantedRightHoldsNamesAndMaker)
{
    EXPECT_EQ(
        Done({"objright", "grant", "user:amy", "3", "17", kHard, "re'ad\\", "0x1F", "--unpower", "-2", "--by", "AMY"}),
        "1\n");
    nlohmann::json right = Shown("1");
    EXPECT_THAT(right.at("created").get<std::string>(), MatchesRegex("....-..-.. ..:..:.."));
    right.erase("created");
    EXPECT_EQ(right, nlohmann::json({{"id", 1},
                                     {"class_id", 3},
                                     {"object_id", 17},
                                     {"holder_type", 1},
                                     {"holder_id", 1},
                                     {"holder", "Amy O'Holt\\"},
                                     {"genre", kHard},
                                     {"function", "re'ad\\"},
                                     {"power", 31},
                                     {"unpower", -2},
                                     {"creator_id", 1},
                                     {"creator", "Amy O'Holt\\"}}));
    EXPECT_EQ(Done({"objright", "check", "user:amy", "3", "17", kHard, "re'ad\\"}), "true\n");
}

TEST_F(ObjectRightConsoleTest, EveryKindOfItemCanHoldARight)
{
    const std::vector<std::pair<const char*, const char*>> items = {{"user:id:1", "Amy O'Holt\\"},
                                                                    {"/Company/Sales", "Sales"},
                                                                    {"role:editors", "Editors"},
                                                                    {"/Company", "Company"}};
    int id = 0;
    for (const auto& [item, name] : items) {
        Done({"objright", "grant", item, "3", "17", "docs", "read", "unlimited"});
        const nlohmann::json right = Shown(std::to_string(++id));
        EXPECT_EQ(right.at("holder"), name);
        EXPECT_EQ(right.at("holder_type"), id);
        EXPECT_EQ(right.at("power"), -1);
        EXPECT_EQ(right.at("unpower"), 0);
        EXPECT_EQ(right.at("creator_id"), 0);
        EXPECT_EQ(right.at("creator"), "");
    }
    EXPECT_THAT(Done({"objright", "list", "3", "17"}),
                AllOf(StartsWith("id  holder_type  holder_id  holder       genre  function  power  unpower  creator  "
                                 "created\n 1  user "),
                      HasSubstr("\n 2  group "), HasSubstr("\n 3  role "), HasSubstr("\n 4  view ")));
}

TEST_F(ObjectRightConsoleTest, ListsAreOfAnObjectOrOfOneOfItsFunctions)
{
    Done({"objright", "grant", "role:Editors", "3", "-17", "docs", "read", "1"});
    Done({"objright", "grant", "user:amy", "3", "-17", "docs", "write", "-2147483648"});
    Done({"objright", "grant", "user:amy", "3", "-17", "files", "read", "4"});
    EXPECT_THAT(Done({"objright", "list", "3", "-17", "-o", "plain"}),
                MatchesRegex("2\t1\t1\tAmy O'Holt[^\n]*\n3\t1\t1\tAmy[^\n]*\n1\t3\t1\tEditors\t[^\n]*\n"));
    EXPECT_THAT(Done({"objright", "list", "3", "-17", "read", "-o", "plain"}),
                MatchesRegex("3\t1\t1\tAmy[^\n]*\tfiles\tread\t4\t0\t[^\n]*\n1\t3\t[^\n]*\n"));
    EXPECT_THAT(Done({"objright", "list", "3", "-17", "write", "-o", "plain"}), HasSubstr("\twrite\t-2147483648\t0\t"));
    EXPECT_EQ(Done({"objright", "list", "3", "-17", "re'ad", "-o", "plain"}), "");
    EXPECT_EQ(Done({"objright", "list", "3", "17", "-o", "json"}), "[]\n");
}

TEST_F(ObjectRightConsoleTest, ARightIsNotGrantedTwice)
{
    Done({"objright", "grant", "user:amy", "3", "17", "d'o", "read", "1"});
    ExpectRefusal({"objright", "grant", "user:amy", "3", "17", "d'o", "read", "2"}, 4,
                  "the right 'd'o' 'read' of user amy (id 1) on object 17 of class 3 is there already; `qvadmin "
                  "objright set 1` changes its power");
    EXPECT_EQ(Shown("1").at("power"), 1);
    EXPECT_EQ(Done({"objright", "grant", "user:amy", "3", "17", "docs", "read", "2"}), "2\n");
}

TEST_F(ObjectRightConsoleTest, TheSecondPowerStaysUnlessItIsGiven)
{
    Done({"objright", "grant", "user:amy", "3", "17", "docs", "read", "1", "--unpower", "5"});
    EXPECT_EQ(Run({"objright", "set", "1", "-4"}).err,
              "right 1, the right 'docs' 'read' of user amy (id 1) on object 17 of class 3, has power -4 now\n");
    EXPECT_EQ(Shown("1").at("power"), -4);
    EXPECT_EQ(Shown("1").at("unpower"), 5);
    Done({"objright", "set", "1", "0xFFFFFFFF", "--unpower", "unlimited"});
    EXPECT_EQ(Shown("1").at("power"), -1);
    EXPECT_EQ(Shown("1").at("unpower"), -1);
}

TEST_F(ObjectRightConsoleTest, RevokingAsksAndTakesAllOrNothing)
{
    Done({"objright", "grant", "user:amy", "3", "17", "docs", "read", "1"});
    Done({"objright", "grant", "role:Editors", "3", "17", "docs", "read", "1"});
    ExpectRefusal({"objright", "revoke", "1", "9", "--yes"}, 3, "there is no right on an object with id 9");
    ExpectRefusal({"objright", "revoke", "1", "9", "8", "--yes"}, 3,
                  "there are no rights on objects with these ids: '9', '8';");
    const ChildResult asked = Run({"objright", "revoke", "1"});
    EXPECT_EQ(asked.exit, 9);
    EXPECT_THAT(asked.err,
                StartsWith("revoke right 1, the right 'docs' 'read' of user amy (id 1) on object 17 of class 3\n"));
    EXPECT_EQ(Shown("1").at("id"), 1);
    EXPECT_THAT(Run({"objright", "revoke", "1", "2", "1", "--yes"}).err, HasSubstr("revoked 2 rights\n"));
    ExpectRefusal({"objright", "show", "1"}, 3, "there is no right on an object with id 1");
    EXPECT_EQ(Done({"objright", "list", "3", "17", "-o", "plain"}), "");
}

TEST_F(ObjectRightConsoleTest, ACheckEndsAsItSays)
{
    Done({"objright", "grant", "role:Editors", "3", "17", "docs", "read", "0"});
    EXPECT_EQ(Done({"objright", "check", "role:Editors", "3", "17", "docs", "read"}), "true\n");
    for (const std::vector<std::string>& words :
         std::vector<std::vector<std::string>>{{"user:amy", "3", "17", "docs", "read"},
                                               {"role:Editors", "4", "17", "docs", "read"},
                                               {"role:Editors", "3", "18", "docs", "read"},
                                               {"role:Editors", "3", "17", "files", "read"},
                                               {"role:Editors", "3", "17", "docs", "write"}}) {
        std::vector<std::string> command = {"objright", "check"};
        command.insert(command.end(), words.begin(), words.end());
        const ChildResult result = Run(command);
        EXPECT_EQ(result.exit, 3);
        EXPECT_EQ(result.out, "false\n");
        EXPECT_EQ(result.err, "");
    }
}

TEST_F(ObjectRightConsoleTest, WhatCannotBeUnderstoodIsRefused)
{
    ExpectRefusal({"objright", "list", "3", "x"}, 2, "OBJECT 'x' is not a whole number\n");
    ExpectRefusal({"objright", "list", "4294967296", "1"}, 2,
                  "CLASS '4294967296' is not a whole number from -2147483648 to 2147483647");
    for (const char* verb : {"show", "revoke"}) {
        for (const std::string id : {"1x", "", "-1", "0", "2147483648"}) {
            ExpectRefusal({"objright", verb, id}, 2, "ID '" + id + "' is not a whole number from 1 to 2147483647");
        }
    }
    ExpectRefusal({"objright", "set", "1", "2"}, 3, "there is no right on an object with id 1");
    ExpectRefusal({"objright", "set", "1", "many"}, 2, "invalid power 'many'");
    ExpectRefusal({"objright", "grant", "user:amy", "3", "17", "docs", "read", "1", "--unpower", "x"}, 2,
                  "invalid power 'x'");
    ExpectRefusal({"objright", "grant", "user:amy", "3", "17", "docs", "", "1"}, 2, "function");
    ExpectRefusal({"objright", "grant", "user:nobody", "3", "17", "docs", "read", "1"}, 3, "nobody");
    ExpectRefusal({"objright", "grant", "user:amy", "3", "17", "docs", "read", "1", "--by", "nobody"}, 3,
                  "there is no user 'nobody'");
    ExpectRefusal({"objright", "check", "amy", "3", "17", "docs", "read"}, 2, "invalid item 'amy'");
}
