#pragma once

#include "management/Sentence.h"
#include "management/users/Directory.h"
#include "management/users/Fields.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace management {

/// Stands in place of a password that was dropped. No digest looks so; an empty text would fit the empty password.
inline constexpr const char* kFitsNothing = "!";

/// What FindUser understands, for help texts.
inline constexpr std::string_view kUserHelp = "login name, or id:NUMBER, or login:TEXT";

// What an administrator does with users, made of the directory's operations. Nothing here begins a transaction: the
// functions that change something are to be called in one.

/// The user that an argument means: a login name, case not counting, or "id:17", or "login:TEXT" for a login name that
/// looks like an id. @throws Error (notFound), or (conflict) when several users differ only in case.
UserKey FindUser(Directory& directory, const std::string& argument);
/// The users that arguments mean, each once. @throws as FindUser, before anything is done, and names all that are not
/// found.
std::vector<UserKey> FindUsers(Directory& directory, const std::vector<std::string>& arguments);

/// @throws Error (invalid) for what no one should have to log in as: nothing, outer blanks, control characters.
void CheckLogin(const std::string& login);

/// @param except  a user who may have the login name. @throws Error (conflict) when another has it, and when the
/// engine takes another's for equal.
void RequireFreeLogin(Directory& directory, const std::string& login, std::optional<int> except);

/// Adds a user; a name that is not given is the login name, a birthday that is not given is none.
/// @return the new id. @throws Error as RequireFreeLogin does.
int CreateUser(Directory& directory, const std::string& login, const FieldValues& values);

/// Whether the values differ from what is stored.
bool Differs(const FieldValues& stored, const FieldValues& values);

/// Sets these columns of a user and leaves all others as they are stored.
/// @return whether anything was different before. @throws Error (notFound).
bool ChangeUser(Directory& directory, int id, const FieldValues& values);

/// What became of a password whose digest holds the login name.
enum class PasswordFate { kept, dropped };

/// Whether another login name would leave a user with a password that no longer fits.
/// @throws Error as RenameUser does for the name and the user.
bool WouldSpoilPassword(Directory& directory, const UserKey& user, const std::string& login);

/// Gives a user another login name. A password that would no longer fit is emptied when the caller allows it.
/// @throws Error (isProtected) for Admin, (conflict) when the name is another's or a password would no longer fit.
PasswordFate RenameUser(Directory& directory, const UserKey& user, const std::string& login, bool dropPassword);

/// The login name of the administrator that every directory has.
inline constexpr std::string_view kBuiltInLogin = "Admin";

/// Whether the module keeps this user from being deleted, whatever the engine.
bool IsBuiltIn(const UserKey& user);

/// Deletes a user and what other tables have about him. @throws Error (isProtected).
void DeleteUser(Directory& directory, const UserKey& user);

/// "LOGIN (id N)", for sentences.
Sentence Named(const UserKey& user);

} // namespace management
