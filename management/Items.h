#pragma once

#include "management/Sentence.h"
#include "management/organisation/Organisation.h"

#include <map>
#include <optional>
#include <string>

class CAConnect;

namespace management {

/// An item that holds rights, or on which others have them.
struct Item {
    ItemKey key;
    std::string name; ///< as shown: login name, path of a group, name of a role or view; empty when it is gone
};

/// What FindItem understands, for help texts.
inline constexpr const char* kItemHelp =
    "user:LOGIN, group:/VIEW/GROUP, role:NAME or view:NAME, each also with id:NUMBER after the colon; or /VIEW/GROUP";

/// The item that an argument means: user:LOGIN, group:/VIEW/GROUP, role:NAME (of this system, domain 0) or view:NAME,
/// each also with id:NUMBER after the colon, such as role:id:17; view:4 is a number too. A path alone, such as /VIEW
/// or /VIEW/GROUP, means what it leads to.
/// @throws Error (invalid, notFound), or (conflict) that lists what it may mean. @throws DatabaseError.
Item FindItem(CAConnect& conn, const std::string& argument);

/// Looks names up, each once, in the snapshot of the first look.
class NameCache {
public:
    /// @param conn  open, and stays so while this is used.
    explicit NameCache(CAConnect& conn) : m_conn(conn) {}

    /// The name of an item as Item has it, empty when it is gone or of no known type. @throws DatabaseError.
    const std::string& NameOf(ItemKey key);
    Item Find(ItemKey key) { return {key, NameOf(key)}; }

private:
    std::string Load(ItemKey key);

    CAConnect& m_conn;
    std::optional<Organisation> m_organisation; ///< read when the first group or view is asked for
    std::map<ItemKey, std::string> m_names;
};

/// The name of a single item; see NameCache.
std::string NameOf(CAConnect& conn, ItemKey key);

/// "user", "group", "role" or "view"; the number for any other type.
std::string TypeName(int type);

/// "user amy (id 17)", for sentences; "user (id 17)" for one that is gone.
Sentence Named(const Item& item);

} // namespace management
