#pragma once

#include "management/users/Directory.h"
#include "management/users/Fields.h"

#include <string>

// What Users.h has, for who has looked already at what is there.

namespace management {

/// Sets these columns of a user and leaves all others as they are stored. @param stored  these columns, or more.
/// @return whether anything is different.
bool ChangeUser(Directory& directory, int id, const FieldValues& stored, const FieldValues& values);

} // namespace management
