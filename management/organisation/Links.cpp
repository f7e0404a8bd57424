#include "management/organisation/Links.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CARecordset.h"
#include "management/Query.h"

#include <fmt/format.h>

#include <algorithm>

namespace management {

std::map<int, std::vector<ItemKey>> HoldersOf(CAConnect& conn, int type, const std::vector<int>& ids)
{
    std::map<int, std::vector<ItemKey>> holders;
    if (ids.empty()) {
        return holders;
    }
    EachRow(
        conn,
        fmt::format("SELECT DISTINCT Col_DQvItemID, Col_QvItemType, Col_QvItemID FROM qv_Relation WHERE "
                    "Col_DQvItemID IN ({}) AND Col_DQvItemType = {} AND Col_QvItemType IN ({}, {}) AND Col_RelType "
                    "= {}",
                    fmt::join(ids, ", "), type, kItemTypeGroup, kItemTypeView, kMembership),
        [&holders](CARecordset& row) { holders[NumberIn(row, 1)].push_back({NumberIn(row, 2), NumberIn(row, 3)}); });
    for (auto& [member, sorted] : holders) {
        std::ranges::sort(sorted);
    }
    return holders;
}

std::map<int, std::vector<LinkedGroup>> GroupsIn(CAConnect& conn, int type, const std::vector<int>& ids)
{
    std::map<int, std::vector<LinkedGroup>> groups;
    if (ids.empty()) {
        return groups;
    }
    EachRow(conn,
            fmt::format("SELECT r.Col_QvItemID, g.Col_ID, g.Col_Name FROM qv_Relation r INNER JOIN qv_Group g ON "
                        "g.Col_ID = r.Col_DQvItemID WHERE r.Col_QvItemID IN ({}) AND r.Col_QvItemType = {} AND "
                        "r.Col_DQvItemType = {} AND r.Col_RelType = {} ORDER BY g.Col_ID",
                        fmt::join(ids, ", "), type, kItemTypeGroup, kMembership),
            [&groups](CARecordset& row) {
                const int holder = NumberIn(row, 1);
                LinkedGroup group;
                group.id = NumberIn(row, 2);
                std::vector<LinkedGroup>& found = groups[holder];
                if (found.empty() || found.back().id != group.id) {
                    group.name = TextIn(row, 3);
                    found.push_back(std::move(group));
                }
            });
    return groups;
}

} // namespace management
