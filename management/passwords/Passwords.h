#pragma once

#include "management/users/Users.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>

class CAConnect;

namespace management {

/// A text that nobody else is to read: wiped when it goes.
class Secret {
public:
    /// The most bytes that one may have.
    static constexpr std::size_t kLongest = 4096;

    Secret() : Secret(kLongest) {}
    /// @param room  how many bytes it takes at most.
    explicit Secret(std::size_t room) { m_text.reserve(room); }
    explicit Secret(std::string_view text) : Secret() { m_text = text; }
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;
    Secret(Secret&& from) noexcept { m_text.swap(from.m_text); }
    Secret& operator=(Secret&&) = delete;
    ~Secret();

    /// Adds a byte. @return false, nothing added, when it is as long as it may be: growing would leave a copy in
    /// memory.
    bool Append(char byte);
    void DropLast() { m_text.pop_back(); }
    [[nodiscard]] std::string_view View() const { return m_text; }

private:
    std::string m_text;
};

/// @param noun  what it is, for the sentence. @throws Error (invalid), never with the text, for a secret with a NUL
/// byte and one that is not UTF-8.
void CheckSecret(const Secret& secret, std::string_view noun);

/// A new password of 100 random bits, of small letters and digits that are not taken for one another.
Secret GeneratedPassword();

/// What can be told about a password.
struct PasswordStatus {
    bool isSet;
    int type;

    /// Whether the stored text is the password itself.
    [[nodiscard]] bool IsPlainText() const { return isSet && type != 1 && type != 2; }
};

/// The passwords of a directory's users. Nothing here begins a transaction.
///
/// All functions @throw DatabaseError, those with a password what CheckSecret throws too.
class Passwords {
public:
    /// @param directory  outlives this.
    explicit Passwords(Directory& directory) : m_directory(directory), m_conn(directory.Connection()) {}

    /// How new passwords are encoded: the setting PasswordEncoding of the genre Console, 2 where there is none.
    /// @throws Error (conflict) when that is none of 0, 1 and 2, or is there more than once.
    int EncodingType();
    PasswordStatus Status(const UserKey& user);
    /// @param user  as stored, here and below. @throws Error (conflict) when others have the same login name.
    bool Matches(const UserKey& user, const Secret& password);
    /// Stores the password and checks that it fits; to be called in a transaction. @param type  0, 1 or 2.
    /// @throws Error (conflict) when others have the same login name, (failed) when the password does not fit then.
    void Set(const UserKey& user, const Secret& password, int type);

private:
    void RequireOnlyOne(const UserKey& user);
    bool Fits(const UserKey& user, const Secret& password);

    Directory& m_directory;
    CAConnect& m_conn;
};

/// "plain text", "MD5" or "MD5 with login name".
std::string_view NameOfPasswordType(int type);

} // namespace management
