#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Schema.h"
#include "tests/directory/Engines.h"

#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <vector>

// What the module answers about made-up organisations equals what the rules say, worked out in memory.

namespace {

struct Role {
    int id;
    std::string name;
    std::string application;
};

struct Link {
    int holderId;
    int holderType;
    int memberId;
    int memberType;
    int relation;
};

struct Right {
    int itemId;
    int itemType;
    int function;
    int power;
};

struct ViewRight {
    int itemId;
    int itemType;
    int viewId;
    int viewType;
    int function;
    int power;
};

constexpr int kUsers = 20;
constexpr int kFunctions = 5;

std::string Genre(int function) { return "genre" + std::to_string(function % 2); }
std::string Name(int function) { return "name" + std::to_string(function / 2); }

/// An organisation with what makes rights go wrong: ids that several kinds of items share, doubled links and rights,
/// roles of other applications, default roles missing or there twice, powers of either sign.
struct World {
    std::vector<Role> roles;
    std::vector<Link> links;
    std::vector<Right> rights;
    std::vector<ViewRight> viewRights;
};

class WorldMaker {
public:
    explicit WorldMaker(unsigned seed) : m_random(seed) {}

    World Make()
    {
        World world;
        for (int id = 1; id <= Pick(8); ++id) {
            const bool isDefault = Pick(4) == 1;
            world.roles.push_back(
                {id, isDefault ? "everyone" : "role" + std::to_string(id), Pick(5) == 1 ? "Elsewhere" : "Tolvan"});
        }
        for (int i = Pick(60); i > 0; --i) {
            world.links.push_back({Pick(10), Pick(6) == 1 ? kItemTypeGroup : kItemTypeRole, Pick(kUsers),
                                   Pick(8) == 1 ? kItemTypeGroup : kItemTypeUser, Pick(2)});
        }
        for (int i = Pick(40); i > 0; --i) {
            world.rights.push_back({Pick(10) - 1, ItemType(), Pick(kFunctions), Power()});
        }
        for (int i = Pick(40); i > 0; --i) {
            world.viewRights.push_back({Pick(10) - 1, ItemType(), Pick(6),
                                        Pick(5) == 1 ? kItemTypeGroup : kItemTypeView, Pick(kFunctions),
                                        Pick(3) == 1 ? Power() : 1});
        }
        return world;
    }

    unsigned long Mask() { return 1UL << static_cast<unsigned>(Pick(34) - 1); }

private:
    int Pick(int most) { return std::uniform_int_distribution(1, most)(m_random); }

    int ItemType() { return Pick(6) == 1 ? kItemTypeUser : kItemTypeRole; }

    int Power()
    {
        constexpr int powers[] = {-1, -2, INT32_MIN, 0, 1, 2, 4, 7, 8, 9, 50, INT32_MAX};
        return powers[Pick(static_cast<int>(std::size(powers))) - 1];
    }

    std::mt19937 m_random;
};

// ---- The rules ---------------------------------------------------------------------------------------------------

/// The roles whose rights a user has: the linked ones of this system, and the default role, which 0 stands in for.
std::set<int> RolesOf(const World& world, int user)
{
    std::set<int> ids;
    int defaultId = 0;
    for (const Role& role : world.roles) {
        if (role.application != "Tolvan") {
            continue;
        }
        if (role.name == "everyone" && defaultId == 0) {
            defaultId = role.id;
        }
        for (const Link& link : world.links) {
            if (link.holderId == role.id && link.holderType == kItemTypeRole && link.memberId == user &&
                link.memberType == kItemTypeUser) {
                ids.insert(role.id);
            }
        }
    }
    ids.insert(defaultId);
    return ids;
}

std::vector<int> PowersOf(const World& world, const std::set<int>& roles, int function)
{
    std::vector<int> powers;
    for (const Right& right : world.rights) {
        if (right.itemType == kItemTypeRole && roles.contains(right.itemId) && right.function == function) {
            powers.push_back(right.power);
        }
    }
    return powers;
}

std::set<unsigned> ViewsOf(const World& world, const std::set<int>& roles, int function)
{
    std::set<unsigned> views;
    for (const ViewRight& right : world.viewRights) {
        if (right.itemType == kItemTypeRole && right.viewType == kItemTypeView && roles.contains(right.itemId) &&
            right.function == function && right.power == 1) {
            views.insert(static_cast<unsigned>(right.viewId));
        }
    }
    return views;
}

std::uint32_t Together(const std::vector<int>& powers)
{
    std::uint32_t bits = 0;
    for (const int power : powers) {
        bits |= static_cast<std::uint32_t>(power);
    }
    return bits;
}

int LimitOf(const std::vector<int>& powers)
{
    if (powers.empty()) {
        return -1;
    }
    const auto [smallest, largest] = std::minmax_element(powers.begin(), powers.end());
    return *smallest == -1 ? -1 : *largest;
}

// ---- The engine --------------------------------------------------------------------------------------------------

class EffectiveRightProperty : public testing::Test {
protected:
    EffectiveRightProperty()
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    void Build(const World& world)
    {
        m_conn.BeginTrans();
        for (const char* table : {"qv_Role", "qv_Relation", "qv_ItemAce", "qv_BIIAce"}) {
            Execute(std::string("DELETE FROM ") + table);
        }
        for (const Role& role : world.roles) {
            Execute(fmt::format("INSERT INTO qv_Role (Col_ID, Col_Name, Col_AppName) VALUES ({}, '{}', '{}')", role.id,
                                role.name, role.application));
        }
        for (const Link& link : world.links) {
            Execute(fmt::format("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, "
                                "Col_DQvItemType, Col_RelType) VALUES ({}, {}, {}, {}, {})",
                                link.holderId, link.holderType, link.memberId, link.memberType, link.relation));
        }
        for (const Right& right : world.rights) {
            EXPECT_TRUE(CQVBaseFun::InsertItemAce(m_conn, right.itemId, right.itemType, Genre(right.function).c_str(),
                                                  Name(right.function).c_str(), right.power, 0));
        }
        for (const ViewRight& right : world.viewRights) {
            EXPECT_TRUE(CQVBaseFun::InsertBIIAceInfo(m_conn, right.itemId, right.itemType, right.viewId, right.viewType,
                                                     Genre(right.function).c_str(), Name(right.function).c_str(),
                                                     right.power, 0));
        }
        m_conn.CommitTrans();
    }

    // The order of rows is the engine's, so it is asked which of them comes first.
    bool FirstRowHasTheGuestBit(int user, const CString& genre, const CString& name)
    {
        CString filter;
        EXPECT_TRUE(CQVBaseFun::GetHMRoleQueryParam(m_conn, user, filter));
        const std::string sql =
            fmt::format("SELECT Col_Power FROM qv_ItemAce WHERE Col_FunGenre = '{}' AND Col_FunName = '{}' AND ( {} )",
                        genre.GetString(), name.GetString(), filter.GetString());
        CARecordset rs;
        EXPECT_TRUE(rs.Open(sql.c_str(), &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable));
        int power = 0;
        rs.GetValue(1, power);
        return (static_cast<unsigned>(power) & 8U) != 0;
    }

    void ExpectTheRules(const World& world, int user, int function, unsigned long mask)
    {
        const std::set<int> roles = RolesOf(world, user);
        const std::vector<int> powers = PowersOf(world, roles, function);
        const std::uint32_t bits = Together(powers);
        const CString genre = Genre(function).c_str();
        const CString name = Name(function).c_str();

        bool allowed = false;
        EXPECT_TRUE(CQVBaseFun::GetAfficheACE(m_conn, user, genre, name, allowed));
        EXPECT_EQ(allowed, (bits & 1U) != 0);
        int has = 77;
        EXPECT_TRUE(CQVBaseFun::HaveBaseACE(m_conn, user, genre, name, mask, has));
        EXPECT_EQ(has, (bits & mask) != 0 ? 1 : 0);
        unsigned long rights = 77;
        EXPECT_TRUE(CQVBaseFun::GetHMBaseACE(m_conn, user, genre, name, rights));
        EXPECT_EQ(rights, bits);
        EXPECT_TRUE(CQVBaseFun::GetACEGuestUser(m_conn, user, genre, name, allowed));
        EXPECT_EQ(allowed, FirstRowHasTheGuestBit(user, genre, name));
        for (const auto limitOf :
             {&CQVBaseFun::GetAttachmentSizeACE, &CQVBaseFun::GetMultiSendCountACE, &CQVBaseFun::GetRateLimitACE}) {
            int limit = 77;
            EXPECT_TRUE(limitOf(m_conn, user, genre, name, limit));
            EXPECT_EQ(limit, LimitOf(powers));
        }
        CUIntArray viewIDs;
        EXPECT_TRUE(CQVBaseFun::LoadHMRoleView(m_conn, user, genre, name, viewIDs));
        std::vector<unsigned> views = engines::Copied(viewIDs);
        std::sort(views.begin(), views.end());
        EXPECT_THAT(views, testing::ElementsAreArray(ViewsOf(world, roles, function)));
    }

    CAConnect m_conn;
};

TEST_F(EffectiveRightProperty, TenThousandQuestionsAreAnsweredByTheRules)
{
    constexpr unsigned seed = 20261121;
    constexpr int worlds = 100;
    WorldMaker maker(seed);
    for (int i = 0; i < worlds && !HasFailure(); ++i) {
        const World world = maker.Make();
        Build(world);
        for (int user = 1; user <= kUsers; ++user) {
            for (int function = 1; function <= kFunctions; ++function) {
                SCOPED_TRACE(fmt::format("world {} user {} function {}", i, user, function));
                ExpectTheRules(world, user, function, maker.Mask());
            }
        }
    }
}

} // namespace
