#pragma once

#include "management/users/Directory.h"
#include "management/users/Fields.h"

#include <string>

// What Users.h has, for who has looked already at what is there.

namespace management {

/// Adds a user whose login name has been checked. A name that is not given is the login name; a birthday that is not
/// given is the present day.
void AddUser(Directory& directory, const std::string& login, const FieldValues& values);

/// Sets these columns of a user and leaves all others as they are stored. @param stored  these columns, or more.
/// @return whether anything is different.
bool ChangeUser(Directory& directory, int id, const FieldValues& stored, const FieldValues& values);

} // namespace management
