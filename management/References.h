#pragma once

#include "management/Sentence.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

// Rows elsewhere that name an item (a user, group, role or view) by its type and id: what its deletion takes along.

namespace management {

/// Columns by which a row names an item.
struct ItemColumns {
    std::string_view type;
    std::string_view id;
};

inline constexpr ItemColumns kHolderColumns = {"Col_QvItemType", "Col_QvItemID"};
inline constexpr ItemColumns kMemberColumns = {"Col_DQvItemType", "Col_DQvItemID"};
inline constexpr ItemColumns kPlanItemColumns = {"Col_QvItem_Type", "Col_QvItem_ID"};

/// A table whose rows name items.
struct ReferenceKind {
    std::string_view noun;  ///< of one, to be counted
    std::string_view nouns; ///< of several, as the record of changes calls them
    std::string_view table;
    std::vector<ItemColumns> sides;
};

/// All of them. May be called on any thread.
const std::vector<ReferenceKind>& ReferenceKinds();

/// How many rows of a kind there are.
struct Reference {
    std::string_view noun;
    int count;

    bool operator==(const Reference&) const = default;
};

/// Counts the rows that name items of one type, in sum; kinds of which there are none are left out. @throws
/// DatabaseError.
std::vector<Reference> CountReferences(CAConnect& conn, int type, const std::vector<int>& ids);
/// Deletes the rows that CountReferences counts. @throws DatabaseError.
void DeleteReferences(CAConnect& conn, int type, const std::vector<int>& ids);

/// ", with 2 relations, 1 right"; empty for no references.
Sentence WithReferences(const std::vector<Reference>& references);
/// How many rows the references are in sum.
std::size_t CountOf(const std::vector<Reference>& references);

} // namespace management
