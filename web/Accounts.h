#pragma once

#include "management/FrontEnd.h"
#include "web/Sessions.h"

#include <optional>
#include <string>

class CAConnect;

namespace web {

// Who may use the console: users of the directory who are super users or have a level, are not locked, and have a
// password that is not stored as plain text. All functions @throw management::DatabaseError.

/// The user of an id, if he may use the console.
std::optional<Account> FindAccount(CAConnect& conn, int id);

struct SignIn {
    std::optional<Account> account; ///< nothing: not let in
    std::string reason;             ///< for him who gave the right password and is not let in all the same
};

/// Checks a password. To be called on the thread that uses the module's operations.
SignIn CheckSignIn(CAConnect& conn, const std::string& login, const management::Secret& password);

/// Whether nobody may use the console since no super user has a password.
bool NeedsSetup(CAConnect& conn);
/// Makes the user Admin a super user who is not locked, with a password, in one transaction. @throws
/// management::Error (isProtected) when somebody may use the console already, (invalid) for a bad password.
void SetUp(CAConnect& conn, const management::Secret& password);

} // namespace web
