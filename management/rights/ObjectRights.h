#pragma once

#include "management/organisation/Organisation.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace management {

/// An object outside the directory, as rights on it name it.
struct ObjectKey {
    int classId = 0;
    int id = 0;
};

/// Who may do what with an object.
struct ObjectRightKey {
    ItemKey holder{};
    ObjectKey object;
    std::string genre;
    std::string function;
};

/// A right on an object, with all that is stored.
struct ObjectRight {
    int id = 0;
    ObjectRightKey key;
    int power = 0;
    int unpower = 0;
    std::string holderName; ///< as it was when the right was granted
    int creatorId = 0;
    std::string creator;                ///< as the name was when the right was granted
    std::optional<std::string> created; ///< written by the module: now
};

/// The rights of items on objects. Any text goes in and comes out as it is, whatever the engine.
///
/// Nothing here begins a transaction. All functions @throw DatabaseError, and Error for a text with a NUL byte.
class ObjectRights {
public:
    /// @param conn  open, and stays so while this is used.
    explicit ObjectRights(CAConnect& conn) : m_conn(conn) {}

    [[nodiscard]] CAConnect& Connection() const { return m_conn; }

    /// All rights on an object, by holder type and id of the right.
    std::vector<ObjectRight> On(ObjectKey object);
    /// Those on one function, of every genre, by holder type; to be called in a transaction.
    std::vector<ObjectRight> On(ObjectKey object, std::string_view function);
    std::optional<ObjectRight> Load(int id);
    /// The id of the right; nothing when there is none.
    std::optional<int> Find(const ObjectRightKey& key);

    /// Adds a right, whatever its id; to be called in a transaction. @return the new id.
    int Grant(const ObjectRight& right);
    /// @param unpower  nothing leaves it as it is.
    void Set(int id, int power, std::optional<int> unpower);
    void Revoke(int id);

private:
    [[nodiscard]] CString EscapeLiteral(std::string_view text) const;
    std::vector<ObjectRight> Read(const std::string& condition);
    void Save(const ObjectRight& right);

    CAConnect& m_conn;
};

} // namespace management
