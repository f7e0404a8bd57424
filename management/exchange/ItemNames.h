#pragma once

#include "management/exchange/Nouns.h"
#include "management/organisation/Organisation.h"

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class CAConnect;

namespace management {

/// What views, groups, roles, plans, document roots and folders are called in an exported directory, where no id is:
/// - a view, plan or root by its name, in which \/ stands for a slash and \\ for a backslash; a view of a single person
///   has \@ and the owner's login name after it
/// - a role likewise, with \@, its application, \@ and its domain after it unless it is of this system and domain 0
/// - a group or folder by the path of names that leads to it, such as /View/Group; one that is nowhere begins without a
///   slash
/// - of several that would be called the same, the second has \#2 after it, and so on, by id.
///
/// Holds all of them. All functions @throw DatabaseError.
class ItemNames {
public:
    /// Reads them. @param conn  open, and stays so.
    explicit ItemNames(CAConnect& conn);

    /// Null when there is none.
    [[nodiscard]] const std::string* NameOf(MemberKind kind, int id) const;
    /// The item of a name: spelled exactly so, else case not counting. @throws Error (conflict) for several of them.
    [[nodiscard]] std::optional<int> Find(MemberKind kind, const std::string& name) const;
    /// Of an item that was added meanwhile.
    void Add(MemberKind kind, int id, const std::string& name);
    /// Forgets one that was added and rolled back.
    void Remove(MemberKind kind, int id);

private:
    struct Names {
        std::unordered_map<int, std::string> names;
        std::unordered_map<std::string, int> ids;
        std::unordered_map<std::string, std::vector<int>> folded;
    };

    void AddNew(MemberKind kind, int id, const std::string& name);
    void LoadViews(CAConnect& conn);
    void LoadRoles(CAConnect& conn);
    void LoadNamed(CAConnect& conn, MemberKind kind, std::string_view table);
    void LoadGroups(CAConnect& conn);
    void LoadFolders(CAConnect& conn);

    std::map<MemberKind, Names> m_kinds;
};

/// The kind of members that name items of a type; none for users and for what is no type.
std::optional<MemberKind> KindOfType(int itemType);

/// What ItemNames calls an item, taken apart.
struct ItemName {
    std::optional<std::string> parent = {}; ///< of a group or folder: the name of what it is in, with / before a view
    std::string name;                       ///< as its column has it
    std::vector<std::string> scope = {};    ///< what comes after it, each with \@ before it
};

/// @throws Error (invalid) for what no item is called.
ItemName ParseItemName(MemberKind kind, const std::string& text);

} // namespace management
