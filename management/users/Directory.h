#pragma once

#include "directory/HumanItem.h"
#include "management/References.h"
#include "management/users/Fields.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace management {

struct UserKey {
    int id;
    std::string login;

    bool operator==(const UserKey&) const = default;
};

struct NamedUser {
    int id;
    std::string name;
};

/// What a user may change of himself.
struct OwnData {
    std::string login;
    std::string name;
    std::string department;
    std::string title;
    std::string officePhone;
    std::string mobile;
    std::string officeFax;
    std::string email;
    std::string userData;
    std::string homePhone;
    int departmentId = 0;
};

/// The users of a directory. Any text goes in and comes out as it is, whatever the engine: here, and nowhere else in
/// the console, stands what each operation of the module escapes by itself.
///
/// Nothing here begins a transaction. All functions @throw DatabaseError, and Error for a text with a NUL byte.
class Directory {
public:
    /// @param conn  open, and stays so while the directory is used.
    explicit Directory(CAConnect& conn) : m_conn(conn) {}

    [[nodiscard]] CAConnect& Connection() const { return m_conn; }

    // ---- Look-ups ---------------------------------------------------------------------------------------------------

    /// The user of exactly this login name, as far as the engine tells case.
    std::optional<int> FindId(std::string_view login);
    /// Whether there is a user of this login name, as FindAll has it.
    bool Exists(std::string_view login);
    /// One of the users whose login name the engine takes for equal, case not counting.
    std::optional<int> FindIdIgnoringCase(std::string_view login);
    /// All users of this login name by id. Case does not count; all else does, whatever the engine takes for equal.
    std::vector<UserKey> FindAll(std::string_view login);
    /// A user of another login name that the engine takes for equal to this one. @param except  a user to pass over.
    std::optional<UserKey> FindConfusedLogin(std::string_view login, std::optional<int> except);
    bool IsSuperUser(std::string_view login);
    bool IsLocked(std::string_view login);
    /// The login name of a user of a display name; empty when there is none.
    std::string LoginOfName(std::string_view name);
    /// The display name of the user of a login name; empty when there is none.
    std::string NameOfLogin(std::string_view login);
    /// The display name of a user; empty when there is none.
    std::string NameOfId(int id);
    std::optional<NamedUser> FindNamed(std::string_view login);
    int Count();
    /// All columns of a user; nothing when there is no such user.
    std::optional<FieldValues> Load(int id);
    /// What names a user elsewhere; kinds of which there is nothing are left out.
    std::vector<Reference> References(int id);

    // ---- Writes -----------------------------------------------------------------------------------------------------

    /// Adds the record as a new user, all but its id and the far-server pair.
    void Save(CHumanItem& item);
    /// Sets columns of a user as they are to be stored, and no others.
    void Set(int id, const FieldValues& values);
    void Insert(std::string_view login, std::string_view name);
    void Insert(std::string_view login, std::string_view name, std::string_view password, int passwordType);
    void UpdateOwnData(int id, const OwnData& data);
    /// @param always  false: only where no department is set yet.
    void UpdateDepartment(int id, int departmentId, std::string_view department, bool always);
    void SetLocked(int id, bool locked);
    /// Deletes the user and what References counts. @return false, nothing deleted, for a user whom the module
    /// protects.
    bool Delete(int id);
    /// Writes a row as it is, to find out whether the database can be written at all.
    void TryToWrite();

private:
    [[nodiscard]] CString EscapeBackslashes(std::string_view text) const;
    [[nodiscard]] CString EscapeLiteral(std::string_view text) const;
    void Prepare(CHumanItem& item) const;
    bool Exists(int id);
    std::vector<UserKey> FindAllByEngine(std::string_view login);

    CAConnect& m_conn;
};

} // namespace management
