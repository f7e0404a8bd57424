#pragma once

#include "management/organisation/Organisation.h"
#include "management/roles/Roles.h"

#include <map>
#include <vector>

class CAConnect;

// Memberships of some hundred items at a time. All functions @throw DatabaseError.

namespace management {

/// The groups and views that users or groups are direct members of, by the members' ids, as Roles::HoldersOf has them.
/// @param type  of all the members.
std::map<int, std::vector<ItemKey>> HoldersOf(CAConnect& conn, int type, const std::vector<int>& ids);

/// The groups directly in groups or views, by the ids of these; each once in each of them, by id.
/// @param type  of all that they are in.
std::map<int, std::vector<LinkedGroup>> GroupsIn(CAConnect& conn, int type, const std::vector<int>& ids);

} // namespace management
