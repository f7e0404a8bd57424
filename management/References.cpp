#include "management/References.h"

#include "management/Query.h"
#include "management/Text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

namespace management {

namespace {

std::string StatementOn(const ReferenceKind& kind, std::string_view verb, int type, const std::vector<int>& ids)
{
    std::vector<std::string> conditions;
    conditions.reserve(kind.sides.size());
    for (const ItemColumns& side : kind.sides) {
        conditions.push_back(fmt::format("({} IN ({}) AND {} = {})", side.id, fmt::join(ids, ","), side.type, type));
    }
    return fmt::format("{} FROM {} WHERE {}", verb, kind.table, fmt::join(conditions, " OR "));
}

} // namespace

const std::vector<ReferenceKind>& ReferenceKinds()
{
    static const std::vector<ReferenceKind> kinds = {
        {Countable("relation"), Translatable("links"), "qv_Relation", {kMemberColumns, kHolderColumns}},
        {Countable("job title"), Translatable("titles"), "qv_JobTitle", {kMemberColumns, kHolderColumns}},
        {Countable("right"), Translatable("rights"), "qv_ItemAce", {kHolderColumns}},
        {Countable("right between items"), Translatable("rights"), "qv_BIIAce", {kMemberColumns, kHolderColumns}},
        {Countable("right on documents"), Translatable("object rights"), "Tab_BIOAce", {kHolderColumns}},
        {Countable("backup plan link"), Translatable("plan assignments"), "Tab_Doc_Backup_Rel", {kPlanItemColumns}},
        {Countable("web console account"), Translatable("web console accounts"), "qv_ConsoleAccount", {kHolderColumns}},
    };
    return kinds;
}

std::vector<Reference> CountReferences(CAConnect& conn, int type, const std::vector<int>& ids)
{
    std::vector<Reference> references;
    for (const ReferenceKind& kind : ReferenceKinds()) {
        const int count = Number(conn, StatementOn(kind, "SELECT COUNT(*)", type, ids));
        if (count > 0) {
            references.push_back({kind.noun, count});
        }
    }
    return references;
}

void DeleteReferences(CAConnect& conn, int type, const std::vector<int>& ids)
{
    for (const ReferenceKind& kind : ReferenceKinds()) {
        Execute(conn, StatementOn(kind, "DELETE", type, ids));
    }
}

Sentence WithReferences(const std::vector<Reference>& references)
{
    std::vector<Sentence> list;
    list.reserve(references.size());
    for (const Reference& reference : references) {
        list.push_back(Counted(static_cast<std::size_t>(reference.count), reference.noun));
    }
    return list.empty() ? Sentence() : FillPattern(", with {}", Joined(list, ", "));
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
