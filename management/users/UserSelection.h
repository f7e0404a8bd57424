#pragma once

#include "management/Command.h"
#include "management/users/Directory.h"
#include "management/users/Fields.h"

#include <array>
#include <cstddef>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class CAConnect;

namespace management {

/// Which users a command is about, by what they are: the options of a selection, as given.
struct SelectionInput {
    std::optional<std::string> match;
    bool onlyLocked = false;
    bool onlyActive = false;
    std::optional<std::string> in;
    bool deep = false;
    std::optional<std::string> linkedRole;
    std::optional<std::string> title;
    bool noGroup = false;
    bool onlySuper = false;
    std::vector<std::string> where;

    /// Whether none of them was given.
    [[nodiscard]] bool IsEmpty() const;
    /// @throws Error (invalid) for what cannot be, whatever is in the directory.
    void Check() const;
};

/// The parameters of an input that is a SelectionInput, to be joined with those that it has beside it.
template <class In>
inline constexpr auto kSelectionParams = std::to_array<Param<In>>({
    {"match", &In::match, Kind::text, "only users with this text in what `user list` shows, case not counting"},
    {"locked", &In::onlyLocked, Kind::flag, "only locked users"},
    {"active", &In::onlyActive, Kind::flag, "only users who are not locked", {}, "locked"},
    {"in", &In::in, Kind::group, "only members of this group or view: /VIEW or /VIEW/GROUP, also with id:NUMBER"},
    {"deep", &In::deep, Kind::flag, "with --in: also members of the groups below it"},
    {"role", &In::linkedRole, Kind::role, "only users who are linked to this role"},
    {"title", &In::title, Kind::title, "only users who hold this title in some group"},
    {"no_group", &In::noGroup, Kind::flag, "only users who are in no group and in no view"},
    {"super", &In::onlySuper, Kind::flag, "only super users"},
    {"where", &In::where, Kind::text, "only users of whom FIELD=VALUE or FIELD~PART holds; may be given several times"},
});

/// The users of a directory who fulfil all conditions of a selection. The engine does most of the work: what it lets
/// through is looked at once more only where texts are compared, by the rules for names, in which case does not count
/// and all else does.
class UserSelection {
public:
    /// Everybody.
    UserSelection() = default;
    /// @param condition  as Condition gives it.
    explicit UserSelection(std::string condition) : m_condition(std::move(condition)) {}
    /// Looks up the group and the role. @throws Error (invalid) for conditions that cannot be, (notFound, conflict) for
    /// a group or role that means nothing or several, DatabaseError.
    UserSelection(CAConnect& conn, const SelectionInput& input);

    /// For a WHERE on qv_User, without that word; empty: all rows. May hold for more users than are selected.
    [[nodiscard]] const std::string& Condition() const { return m_condition; }
    /// The fields that Fits wants to see.
    [[nodiscard]] const std::vector<const Field*>& ComparedFields() const { return m_compared; }
    /// Whether a user for whom the condition holds is selected. @param valueOf  gives the value of a compared field.
    [[nodiscard]] bool Fits(const std::function<const Stored&(const Field&)>& valueOf) const;

private:
    /// A text that a field has to have, or to hold.
    struct TextCondition {
        std::vector<const Field*> fields; ///< one of them
        std::string key;                  ///< folded
        bool isPart;
    };

    void Add(const std::string& condition);
    void AddText(const CAConnect& conn, const std::vector<const Field*>& fields, const std::string& text, bool isPart);
    void AddMembership(CAConnect& conn, const SelectionInput& input);
    void AddRole(CAConnect& conn, const std::string& role);
    void AddTitle(CAConnect& conn, const std::string& title);
    void AddWhere(const CAConnect& conn, const std::string& where);

    std::string m_condition;
    std::vector<TextCondition> m_texts;
    std::vector<const Field*> m_compared;
};

/// What of selected users is wanted, and in which order.
struct UserPage {
    std::vector<const Field*> fields;
    const Field* sortedBy = nullptr; ///< null: the login name
    bool isDescending = false;
    std::size_t offset = 0; ///< users to leave out at the beginning
    std::size_t limit = std::numeric_limits<std::size_t>::max();
};

/// A user with the wanted fields, in their order.
struct UserRow {
    int id = 0;
    std::string login;
    std::vector<Stored> values;
};

/// The field of a name, the id among them. @throws Error (invalid) that lists the names when there is none, or when it
/// is shown to nobody.
const Field& RequireField(std::string_view name);

/// Gives selected users to `take` until it gives false; holds no more of them than it must. Users of equal sort values
/// are ordered by login name. @throws DatabaseError.
void ListUsers(CAConnect& conn, const UserSelection& selection, const UserPage& page,
               const std::function<bool(const UserRow&)>& take);
/// The selected users by login name. @throws DatabaseError.
std::vector<UserKey> SelectedUsers(CAConnect& conn, const UserSelection& selection);
/// @throws DatabaseError.
std::int64_t CountUsers(CAConnect& conn, const UserSelection& selection);

} // namespace management
