#pragma once

#include "management/FrontEnd.h"
#include "web/Sessions.h"

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

class CAConnect;

namespace web {

// Who may use the console: users of the directory who are super users or have a level, are not locked, and have a
// password that is not stored as plain text. All functions @throw management::DatabaseError.

/// The user of an id, if he may use the console.
std::optional<Account> FindAccount(CAConnect& conn, int id);

/// What somebody gives to sign in.
struct Credentials {
    std::string login;
    management::Secret password;
    std::string code; ///< a one-time code or a recovery code; empty: none
};

struct SignIn {
    enum class Outcome : std::uint8_t {
        letIn,
        wrong,       ///< the login name or the password
        codeMissing, ///< all else is right
        codeWrong,
        refused ///< for the reason, although the password is right
    };

    Outcome outcome = Outcome::wrong;
    std::optional<Account> account = {}; ///< of who is let in
    management::Sentence reason = {};
    bool hasUsedRecoveryCode = false;
};

/// Checks a password and, where the user has a second factor, uses a code up. To be called on the thread that uses the
/// module's operations. @param now  wall-clock time.
SignIn CheckSignIn(CAConnect& conn, const Credentials& given, std::time_t now);

/// Has a user sign in with one-time codes from now on, in one transaction.
/// @param secret  see NewTotpSecret. @param code  of it, by which the user shows that the app has it; is used up.
/// @return recovery codes, to be shown once. @throws management::Error (invalid) for a wrong code, (conflict) when
/// there are one-time codes already.
std::vector<std::string> AddTotp(CAConnect& conn, const Account& account, const std::string& secret,
                                 const std::string& code, std::time_t now);
/// Has a user sign in without one-time codes from now on, in one transaction.
void RemoveTotp(CAConnect& conn, const Account& account);
/// How many recovery codes a user has left.
std::size_t RecoveryCodesLeft(CAConnect& conn, const Account& account);

/// Whether nobody may use the console since no super user has a password.
bool NeedsSetup(CAConnect& conn);
/// Makes the user Admin a super user who is not locked, with a password, in one transaction. @throws
/// management::Error (isProtected) when somebody may use the console already, (invalid) for a bad password.
void SetUp(CAConnect& conn, const management::Secret& password);

} // namespace web
