#pragma once

#include "management/organisation/Organisation.h"
#include "platform/CString.h"

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

class CAConnect;

namespace management {

/// What a right is on. The two texts are chosen by the programs that ask for it.
struct Function {
    std::string genre;
    std::string name;

    bool operator==(const Function&) const = default;
    std::strong_ordering operator<=>(const Function& other) const
    {
        return std::tie(genre, name) <=> std::tie(other.genre, other.name);
    }
};

struct PermissionMask {
    int power = 0;
    int unpower = 0; ///< stored beside the power; no operation reads it

    bool operator==(const PermissionMask&) const = default;
};

/// A row of qv_ItemAce without its holder.
struct ItemRight {
    Function function;
    PermissionMask powers;

    bool operator==(const ItemRight&) const = default;
};

/// A row of qv_BIIAce: the right of one item on another.
struct RightOn {
    Function function;
    ItemKey holder{};
    ItemKey on{};
    PermissionMask powers;

    bool operator==(const RightOn&) const = default;
};

/// Which rights between items are meant.
enum class Side { either, holder, dependent };

/// What the roles of a user together say about a function, by each of the rules that programs apply.
struct EffectiveRight {
    std::uint32_t bits = 0; ///< of all roles together
    bool publish = false;   ///< bit 1 in some role
    bool guest = false;     ///< bit 8 in the row that the engine returns first
    int limit = 0;          ///< the widest of all roles; -1 for none

    bool operator==(const EffectiveRight&) const = default;
};

/// The rights of items, alone and with respect to other items. Any text goes in and comes out as it is, whatever the
/// engine: the module puts texts into its statements as they are, and here they are made ready for that. Rows of the
/// same right are each read, and written all together, for nothing keeps them apart.
///
/// Nothing here begins a transaction. All functions @throw DatabaseError, and Error for a text with a NUL byte.
class Rights {
public:
    /// @param conn  open, and stays so while this is used.
    explicit Rights(CAConnect& conn) : m_conn(conn) {}

    [[nodiscard]] CAConnect& Connection() const { return m_conn; }

    // ---- Of items ---------------------------------------------------------------------------------------------------

    /// The rights of an item by function and power. @param genre  nothing: of all genres.
    std::vector<ItemRight> Of(ItemKey holder, const std::optional<std::string>& genre = std::nullopt);
    /// The rows of one right, by power.
    std::vector<ItemRight> Find(ItemKey holder, const Function& function);
    bool Exists(ItemKey holder, const Function& function);
    /// Adds a row, also when there is one already.
    void Grant(ItemKey holder, const Function& function, PermissionMask powers);
    /// Sets the power of a right that is there and leaves the second one.
    void Set(ItemKey holder, const Function& function, int power);
    void Revoke(ItemKey holder, const Function& function);
    /// Ends all rights of the item but those on other items.
    void RevokeAll(ItemKey holder);

    // ---- Of items on items ------------------------------------------------------------------------------------------

    /// The rights that an item holds on others, or others on it, or both; by function, holder and item.
    std::vector<RightOn> Between(ItemKey item, Side side);
    /// The rows of one right, by power.
    std::vector<RightOn> FindOn(ItemKey holder, ItemKey on, const Function& function);
    /// The rights of all holders to one function on an item.
    std::vector<RightOn> HeldOn(ItemKey on, const Function& function);
    bool ExistsOn(ItemKey holder, ItemKey on, const Function& function);
    /// Adds a row, also when there is one already.
    void GrantOn(const RightOn& right);
    /// Sets the power of a right that is there, and the second one if it is given.
    void SetOn(ItemKey holder, ItemKey on, const Function& function, int power, std::optional<int> unpower);
    void RevokeOn(ItemKey holder, ItemKey on, const Function& function);
    /// Ends the right of every holder.
    void RevokeOnFromAll(ItemKey on, const Function& function);

    // ---- Of users by their roles ------------------------------------------------------------------------------------

    /// Whether rights of roles apply to a user at all: a role of this system is linked to him or is that of everyone.
    bool HasRole(int userId);
    /// The functions on which a role of the user has a right.
    std::vector<Function> FunctionsOf(int userId);
    /// To be asked only of a user who has a role.
    EffectiveRight Effective(int userId, const Function& function);
    /// The functions on which a role of the user has a right with respect to some view.
    std::vector<Function> ViewFunctionsOf(int userId);
    /// The views on which a role has the right with a power of exactly 1, by id; also those that are gone. To be asked
    /// only of a user who has a role.
    std::vector<int> ViewsOf(int userId, const Function& function);

private:
    [[nodiscard]] CString EscapeLiteral(std::string_view text) const;
    [[nodiscard]] std::string IsFunction(const Function& function) const;
    [[nodiscard]] std::string IsOneOn(ItemKey holder, ItemKey on, const Function& function) const;
    std::string RoleFilter(int userId);
    std::vector<RightOn> SelectOn(const std::string& condition);
    std::vector<ItemRight> Select(const std::string& condition);
    std::vector<Function> Functions(std::string_view table, const std::string& condition);

    CAConnect& m_conn;
};

} // namespace management
