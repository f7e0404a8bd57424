#pragma once

#include "management/organisation/Organisation.h"

#include <set>
#include <string>
#include <unordered_set>

class CAConnect;

namespace management {

/// What lies below a group or view: it, what is above and below, and the people directly in it and in what is below.
class DirectoryPart {
public:
    /// @throws Error as Organisation::FindHolder. @throws DatabaseError.
    DirectoryPart(CAConnect& conn, const std::string& argument);

    /// Roles belong to every part.
    [[nodiscard]] bool Has(ItemKey key) const;

private:
    std::set<ItemKey> m_items;
    std::unordered_set<int> m_users;
};

} // namespace management
