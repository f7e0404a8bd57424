#pragma once

#include "management/organisation/Organisation.h"

#include <cstddef>
#include <string>
#include <vector>

// A user's row names a department twice: by the id of a group, and by a path such as "Head office/Sales/North" that
// begins below a view, in which \/ stands for a slash and \\ for a backslash in a name, and case does not count. These
// functions keep both in step when groups or their members are changed. Each is to be called in the transaction of the
// change, after it; returns how many users' rows were changed; and @throws DatabaseError.

namespace management {

/// After a group was renamed, moved or deleted, or a view deleted: rewrites the department of everybody whose row
/// names, by id or text, that group or one that was below it. Where the group is gone, the department is emptied. A
/// text that still names some group and comes with no id of these groups stays.
/// @param before   how the groups hung together before the change. @param changed  a group or view of those.
std::size_t SyncDepartments(const Organisation& before, ItemKey changed);

/// After users became members of a group: gives those the group's id whose department names it by its text only.
std::size_t SyncJoined(const Organisation& organisation, ItemKey holder, const std::vector<int>& users);

/// After users left a group: empties their department where it is that group.
std::size_t SyncLeft(const Organisation& organisation, ItemKey holder, const std::vector<int>& users);

/// "the department of 412 people was changed with it".
Sentence DepartmentsChanged(std::size_t users);
/// "; the department of 412 people was changed with it", to end a sentence with; empty for nobody.
Sentence WithDepartments(std::size_t users);

} // namespace management
