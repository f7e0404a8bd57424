#include "bench/Tree.h"

#include "basefun/ItemTypes.h"
#include "bench/ByHand.h"
#include "bench/People.h"
#include "bench/TestData.h"

#include <sqlite3.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <stdexcept>

namespace bench {

namespace {

constexpr std::uint64_t kSeed = 20240301;
/// Has no divisor in common with the numbers of groups, so that its multiples reach them all.
constexpr std::size_t kStride = 7919;

/// The share of all groups, in thousandths, that sits at a depth or above it.
constexpr int kSharesByDepth[] = {5, 50, 450, 850, 1000};

struct Item {
    int id;
    int type;
};

class Links {
public:
    explicit Links(ByHand& db)
        : m_insert(db.PrepareFor("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, "
                                 "Col_DQvItemType, Col_RelType, Col_Ref, Col_ViewID) VALUES (?, ?, ?, ?, ?, 0, ?)"),
                   &sqlite3_finalize)
    {
    }

    void Add(Item holder, Item member)
    {
        int parameter = 0;
        for (const int value : {holder.id, holder.type, member.id, member.type, kMembership, Tree::kView}) {
            sqlite3_bind_int(m_insert.get(), ++parameter, value);
        }
        if (sqlite3_step(m_insert.get()) != SQLITE_DONE) {
            throw std::runtime_error("the test data cannot be written");
        }
        sqlite3_reset(m_insert.get());
    }

private:
    std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> m_insert;
};

int Between(People& random, int first, int last)
{
    return first + static_cast<int>(random.Below(static_cast<unsigned>(last - first + 1)));
}

// Every group below the first depth hangs under some group of the depth above.
void LinkGroups(Links& links, int groups, People& random)
{
    int firstAbove = 0;
    int lastAbove = 0;
    for (const int share : kSharesByDepth) {
        const int first = lastAbove + 1;
        const int last = std::max(first, static_cast<int>(std::int64_t{groups} * share / 1000));
        for (int id = first; id <= last; ++id) {
            const Item holder = lastAbove == 0 ? Item{Tree::kView, kItemTypeView}
                                               : Item{Between(random, firstAbove, lastAbove), kItemTypeGroup};
            links.Add(holder, {id, kItemTypeGroup});
        }
        firstAbove = first;
        lastAbove = last;
    }
}

} // namespace

double Tree::UsersOfSmallGroup() const
{
    return static_cast<double>(m_users - kLargeGroups * UsersOfLargeGroup()) / SmallGroups();
}

int Tree::SmallGroup(std::size_t call) const
{
    return 1 + static_cast<int>(call * kStride % static_cast<std::size_t>(SmallGroups()));
}

void Tree::Insert(ByHand& db) const
{
    db.Run("INSERT INTO qv_View (Col_ID, Col_Name) VALUES (1, 'Organisation')");
    db.Run(("WITH RECURSIVE ids(id) AS (SELECT 1 UNION ALL SELECT id + 1 FROM ids WHERE id < " +
            std::to_string(Groups()) + ") INSERT INTO qv_Group (Col_ID, Col_Name) SELECT id, 'Group ' || id FROM ids")
               .c_str());
    Links links(db);
    People random(kSeed);
    LinkGroups(links, Groups(), random);
    // In the order of the users, as they join an organisation: a group's links are all over the table.
    for (int id = 1; id <= m_users; ++id) {
        const int large = id % kLargeGroupIsOneIn;
        const int group = large < kLargeGroups ? LargeGroup() - large : Between(random, 1, SmallGroups());
        links.Add({group, kItemTypeGroup}, {id, kItemTypeUser});
    }
}

} // namespace bench
