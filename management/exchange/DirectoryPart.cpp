#include "management/exchange/DirectoryPart.h"

#include "basefun/ItemTypes.h"
#include "management/Query.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <optional>
#include <vector>

namespace management {

DirectoryPart::DirectoryPart(CAConnect& conn, const std::string& argument)
{
    const Organisation organisation(conn);
    const ItemKey top = organisation.FindHolder(argument);
    std::vector<ItemKey> inside = organisation.Below(top);
    inside.push_back(top);
    std::vector<int> groups;
    for (const ItemKey key : inside) {
        if (key.type == kItemTypeGroup) {
            groups.push_back(key.id);
        }
        std::optional<std::size_t> place = organisation.NumberOf(key);
        for (; place; place = organisation.Nodes()[*place].parent) {
            m_items.insert(organisation.Nodes()[*place].key);
        }
    }
    std::string where = fmt::format("Col_QvItemType = {} AND Col_QvItemID IN ({})", kItemTypeGroup,
                                    groups.empty() ? "0" : fmt::format("{}", fmt::join(groups, ", ")));
    if (top.type == kItemTypeView) {
        where = fmt::format("(({}) OR (Col_QvItemType = {} AND Col_QvItemID = {}))", where, kItemTypeView, top.id);
    }
    EachRow(conn,
            fmt::format("SELECT DISTINCT Col_DQvItemID FROM qv_Relation WHERE Col_DQvItemType = {} AND Col_RelType "
                        "= {} AND {}",
                        kItemTypeUser, kMembership, where),
            [this](CARecordset& row) { m_users.insert(NumberIn(row, 1)); });
}

bool DirectoryPart::Has(ItemKey key) const
{
    return key.type == kItemTypeUser ? m_users.contains(key.id) : key.type == kItemTypeRole || m_items.contains(key);
}

} // namespace management
