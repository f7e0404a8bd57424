#include "management/References.h"

#include "management/Query.h"
#include "management/Text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace management {

namespace {

struct ReferenceKind {
    std::string_view noun;
    std::string_view table;
    std::string_view condition; ///< {0} the ids, {1} the type
};

constexpr std::string_view kEitherSide = "(Col_DQvItemID IN ({0}) AND Col_DQvItemType = {1}) OR "
                                         "(Col_QvItemID IN ({0}) AND Col_QvItemType = {1})";
constexpr std::string_view kHolderSide = "Col_QvItemID IN ({0}) AND Col_QvItemType = {1}";

constexpr ReferenceKind kReferenceKinds[] = {
    {"relation", "qv_Relation", kEitherSide},
    {"job title", "qv_JobTitle", kEitherSide},
    {"right", "qv_ItemAce", kHolderSide},
    {"right between items", "qv_BIIAce", kEitherSide},
    {"right on documents", "Tab_BIOAce", kHolderSide},
    {"backup plan link", "Tab_Doc_Backup_Rel", "Col_QvItem_ID IN ({0}) AND Col_QvItem_Type = {1}"},
};

std::string StatementOn(const ReferenceKind& kind, std::string_view verb, int type, const std::vector<int>& ids)
{
    const std::string condition = fmt::format(fmt::runtime(kind.condition), fmt::join(ids, ","), type);
    return fmt::format("{} FROM {} WHERE {}", verb, kind.table, condition);
}

} // namespace

std::vector<Reference> CountReferences(CAConnect& conn, int type, const std::vector<int>& ids)
{
    std::vector<Reference> references;
    for (const ReferenceKind& kind : kReferenceKinds) {
        const int count = Number(conn, StatementOn(kind, "SELECT COUNT(*)", type, ids));
        if (count > 0) {
            references.push_back({kind.noun, count});
        }
    }
    return references;
}

void DeleteReferences(CAConnect& conn, int type, const std::vector<int>& ids)
{
    for (const ReferenceKind& kind : kReferenceKinds) {
        Execute(conn, StatementOn(kind, "DELETE", type, ids));
    }
}

std::string WithReferences(const std::vector<Reference>& references)
{
    std::string list;
    for (const Reference& reference : references) {
        list += (list.empty() ? ", with " : ", ") + Counted(static_cast<std::size_t>(reference.count), reference.noun);
    }
    return list;
}

std::size_t CountOf(const std::vector<Reference>& references)
{
    std::size_t count = 0;
    for (const Reference& reference : references) {
        count += static_cast<std::size_t>(reference.count);
    }
    return count;
}

} // namespace management
