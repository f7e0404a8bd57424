#pragma once

#include "management/Level.h"

#include <string>
#include <vector>

class CAConnect;

namespace management::webconsole {

/// What the web console keeps of a user.
struct ConsoleAccount {
    Level level = Level::none;              ///< that was given to the user; super users need none
    std::string totp = {};                  ///< the secret of one-time codes, in Base32; empty: none is asked for
    int totpUsed = 0;                       ///< the step of 30 seconds whose code was taken last, counted from 1970 on
    std::vector<std::string> recovery = {}; ///< digests of the recovery codes that are left

    bool operator==(const ConsoleAccount&) const = default;
};

/// A user who may use the web console, or of whom it keeps something.
struct ListedAccount {
    int id = 0;
    std::string login;
    std::string name;
    bool isLocked = false;
    Level level = Level::none; ///< full for super users
    bool hasTotp = false;
    std::size_t recoveryCodes = 0; ///< that are left
};

/// The accounts of the web console. Nothing here begins a transaction. All functions @throw DatabaseError.
class ConsoleAccounts {
public:
    /// @param conn  open, and stays so.
    explicit ConsoleAccounts(CAConnect& conn) : m_conn(conn) {}

    /// What is kept of a user; nothing but defaults where nothing is.
    [[nodiscard]] ConsoleAccount Find(int user) const;
    /// Keeps this of a user, and nothing where all of it is as by default.
    void Save(int user, const ConsoleAccount& account) const;
    /// All of them, by id.
    [[nodiscard]] std::vector<ListedAccount> All() const;

private:
    CAConnect& m_conn;
};

} // namespace management::webconsole
