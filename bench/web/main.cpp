#include "basefun/ItemTypes.h"
#include "bench/ByHand.h"
#include "bench/TestData.h"

#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <span>
#include <string>

// qvbench_web_data FILE USERS: makes a directory of so many users and 31,210 groups in three shapes, each below a view
// of its own: ten groups in each of ten, four levels deep; a hundred in each of a hundred; and 10,000 beside one
// another. Each user is in a group of the lowest level of the first shape, one in ten in one of the others too.

namespace {

constexpr int kLowest = 10'000;

/// Groups that hang under a view, each level with so many groups below each of the one above.
struct Shape {
    int view;
    const char* name;
    int width;
    int groups;
    int firstId; ///< of its groups, whose numbers in the shape begin with 1
    int members; ///< one user in so many is in it
};

constexpr Shape kShapes[] = {
    {1, "Company", 10, 10 + 100 + 1'000 + kLowest, 1, 1},
    {2, "Hundred", 100, 100 + kLowest, 11'111, 10},
    {3, "Flat", kLowest, kLowest, 21'211, 10},
};

std::string Numbers(int last)
{
    return fmt::format("WITH RECURSIVE n(n) AS (SELECT 1 UNION ALL SELECT n + 1 FROM n WHERE n < {}) ", last);
}

void Insert(bench::ByHand& db, const Shape& shape, int users)
{
    constexpr const char* kIntoRelations =
        "INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType, Col_RelType, Col_Ref, "
        "Col_ViewID)";
    const int before = shape.firstId - 1;
    db.Run(fmt::format("INSERT INTO qv_View (Col_ID, Col_Name) VALUES ({}, '{}')", shape.view, shape.name).c_str());
    db.Run(fmt::format("{}INSERT INTO qv_Group (Col_ID, Col_Name) SELECT n + {}, '{} Team ' || n FROM n",
                       Numbers(shape.groups), before, shape.name)
               .c_str());
    // A group's number tells the one above it: those below N are N * width + 1 and the next ones.
    db.Run(
        fmt::format("{0}{1} SELECT CASE WHEN n <= {2} THEN {3} ELSE (n - 1) / {2} + {4} END, CASE WHEN n <= {2} THEN "
                    "{5} ELSE {6} END, n + {4}, {6}, {7}, 0, {3} FROM n",
                    Numbers(shape.groups), kIntoRelations, shape.width, shape.view, before, kItemTypeView,
                    kItemTypeGroup, kMembership)
            .c_str());
    db.Run(fmt::format("{0}{1} SELECT {2} + (n * 7919) % {3}, {4}, n, {5}, {6}, 0, {7} FROM n WHERE n % {8} = 0",
                       Numbers(users), kIntoRelations, before + shape.groups - kLowest + 1, kLowest, kItemTypeGroup,
                       kItemTypeUser, kMembership, shape.view, shape.members)
               .c_str());
}

} // namespace

int main(int argc, char** argv)
{
    const std::span words(argv, static_cast<std::size_t>(argc));
    if (words.size() != 3) {
        std::fputs("usage: qvbench_web_data FILE USERS\n", stderr);
        return EXIT_FAILURE;
    }
    try {
        const int users = std::stoi(words[2]);
        bench::MakeDirectory(words[1], users, [users](bench::ByHand& db) {
            for (const Shape& shape : kShapes) {
                Insert(db, shape, users);
            }
        });
    } catch (const std::exception& e) {
        std::fprintf(stderr, "qvbench_web_data: %s\n", e.what());
        return EXIT_FAILURE;
    }
    return EXIT_SUCCESS;
}
