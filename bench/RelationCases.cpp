#include "bench/RelationCases.h"

#include "basefun/ItemTypes.h"
#include "bench/Cases.h"
#include "directory/HumanItem.h"

#include <algorithm>
#include <string>
#include <vector>

namespace bench {

namespace {

constexpr double kTarget = 1.10;
constexpr int kStampedId = 2;
/// What a run reads at least: enough to measure where a call takes microseconds.
constexpr double kRowsOfRun = 100'000;

struct Case {
    const char* name;
    const char* pairTitle; // for 10^5 users
    const char* growthTitle;
    double (*rows)(const Tree& tree); // of one call
};

const Case kGroupRecords = {"group_records", "large group of 5,000 users, as records", "large group, as records",
                            [](const Tree& tree) { return static_cast<double>(tree.UsersOfLargeGroup()); }};
const Case kGroupArrays = {"group_arrays", "large group of 5,000 users, 3 arrays", "large group, 3 arrays",
                           kGroupRecords.rows};
const Case kSmallGroup = {"group_small", "group of some 38 users, 3 arrays", "group of some 38 users, 3 arrays",
                          [](const Tree& tree) { return tree.UsersOfSmallGroup(); }};
const Case kMembers = {"members", "large group's 5,000 members, 2 arrays", "large group's members, 2 arrays",
                       kGroupRecords.rows};
const Case kOthers = {"not_in_group", "95,000 not in large group, 3 arrays", "users not in large group, 3 arrays",
                      [](const Tree& tree) { return static_cast<double>(tree.Users() - tree.UsersOfLargeGroup()); }};
const Case kStamp = {"stamp_view", "a view's id to its 10^5 user links", "a view's id to its user links",
                     [](const Tree& tree) { return static_cast<double>(tree.Users()); }};

const Case* const kCases[] = {&kGroupRecords, &kGroupArrays, &kSmallGroup, &kMembers, &kOthers, &kStamp};

std::string HandName(const Case& relation) { return relation.name + std::string("/hand"); }

std::string Name(const Case& relation, int users)
{
    return relation.name + std::string("/quorvel/") + std::to_string(users);
}

template <class Work>
benchmark::internal::Benchmark* RegisterCase(const std::string& name, const Case& relation, const Tree& tree, Work work)
{
    const double calls = std::max(1.0, kRowsOfRun / relation.rows(tree));
    return Register(name, work)->Iterations(static_cast<benchmark::IterationCount>(calls));
}

struct NamesByHand {
    std::vector<unsigned> ids;
    std::vector<std::string> loginNames, names;
};

struct Names {
    CUIntArray ids;
    CStringArray loginNames, names;
};

} // namespace

std::vector<Pair> RelationPairs(int users)
{
    std::vector<Pair> pairs;
    for (const Case* relation : kCases) {
        pairs.push_back({relation->pairTitle, HandName(*relation), Name(*relation, users), kTarget});
    }
    return pairs;
}

std::vector<Growth> RelationGrowths(const std::vector<int>& users)
{
    std::vector<Growth> growths;
    for (const Case* relation : kCases) {
        Growth growth{relation->growthTitle, {}};
        for (const int count : users) {
            growth.sizes.push_back({Name(*relation, count), relation->rows(Tree(count))});
        }
        growths.push_back(growth);
    }
    return growths;
}

void RegisterRelationsByHand(Directory& directory, Tree tree)
{
    ByHand& db = directory.hand;
    RegisterCase(HandName(kGroupRecords), kGroupRecords, tree, [&db, tree](std::size_t) {
        std::vector<Record*> users;
        db.LoadGroupUsers(tree.LargeGroup(), users);
        RequireCount(users.size(), tree.UsersOfLargeGroup());
        for (const Record* user : users) {
            delete user;
        }
    });
    RegisterCase(HandName(kGroupArrays), kGroupArrays, tree, [&db, tree](std::size_t) {
        NamesByHand users;
        db.ListGroupUsers(tree.LargeGroup(), users.ids, users.loginNames, users.names);
        RequireCount(users.names.size(), tree.UsersOfLargeGroup());
    });
    RegisterCase(HandName(kSmallGroup), kSmallGroup, tree, [&db, tree](std::size_t i) {
        NamesByHand users;
        db.ListGroupUsers(tree.SmallGroup(i), users.ids, users.loginNames, users.names);
        Require(!users.names.empty());
    });
    RegisterCase(HandName(kMembers), kMembers, tree, [&db, tree](std::size_t) {
        std::vector<unsigned> ids;
        std::vector<unsigned> types;
        db.ListMembers(tree.LargeGroup(), kItemTypeGroup, ids, types);
        RequireCount(types.size(), tree.UsersOfLargeGroup());
    });
    RegisterCase(HandName(kOthers), kOthers, tree, [&db, tree](std::size_t) {
        NamesByHand users;
        db.ListUsersNotIn(tree.LargeGroup(), users.ids, users.loginNames, users.names);
        RequireCount(users.names.size(), tree.Users() - tree.UsersOfLargeGroup());
    });
    RegisterCase(HandName(kStamp), kStamp, tree, [&db](std::size_t) {
        db.Run("BEGIN IMMEDIATE");
        db.StampView(Tree::kView, kItemTypeView, kStampedId);
        db.Run("ROLLBACK");
    });
}

void RegisterRelations(Directory& directory, Tree tree, int repetitions)
{
    CAConnect& conn = directory.conn;
    RegisterCase(Name(kGroupRecords, tree.Users()), kGroupRecords, tree, [&conn, tree](std::size_t) {
        CObList users;
        Require(CQVBaseFun::LoadGroupUser(conn, tree.LargeGroup(), users));
        RequireCount(users.GetCount(), tree.UsersOfLargeGroup());
        CQVBaseFun::DetachHumanList(users);
    });
    RegisterCase(Name(kGroupArrays, tree.Users()), kGroupArrays, tree, [&conn, tree](std::size_t) {
        Names users;
        Require(CQVBaseFun::LoadGroupUser(conn, tree.LargeGroup(), users.ids, users.loginNames, users.names));
        RequireCount(users.names.GetSize(), tree.UsersOfLargeGroup());
    });
    RegisterCase(Name(kSmallGroup, tree.Users()), kSmallGroup, tree, [&conn, tree](std::size_t i) {
        Names users;
        Require(CQVBaseFun::LoadGroupUser(conn, tree.SmallGroup(i), users.ids, users.loginNames, users.names));
        Require(users.names.GetSize() > 0);
    });
    RegisterCase(Name(kMembers, tree.Users()), kMembers, tree, [&conn, tree](std::size_t) {
        CUIntArray ids;
        CUIntArray types;
        Require(CQVBaseFun::LoadSubMember(conn, tree.LargeGroup(), kItemTypeGroup, ids, types));
        RequireCount(types.GetSize(), tree.UsersOfLargeGroup());
    });
    RegisterCase(Name(kOthers, tree.Users()), kOthers, tree, [&conn, tree](std::size_t) {
        Names users;
        Require(CQVBaseFun::LoadUserNotInGroup(conn, tree.LargeGroup(), users.ids, users.loginNames, users.names));
        RequireCount(users.names.GetSize(), tree.Users() - tree.UsersOfLargeGroup());
    });
    auto* stamp = RegisterCase(Name(kStamp, tree.Users()), kStamp, tree, [&conn](std::size_t) {
        conn.BeginTrans();
        Require(CQVBaseFun::UpdateRelationViewID(conn, Tree::kView, kItemTypeView, kStampedId));
        conn.RollbackTrans();
    });
    if (repetitions != 0) {
        stamp->Repetitions(repetitions);
    }
}

} // namespace bench
