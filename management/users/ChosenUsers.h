#pragma once

#include "management/users/UserSelection.h"
#include "management/users/Users.h"

#include <string_view>
#include <vector>

namespace management {

/// The users that a command changes: by name, or by a selection.
struct UsersInput : SelectionInput {
    OptionalTexts users;

    /// @throws Error (invalid) unless there are either names or a selection.
    void Check() const;
};

/// The parameters of an input that is a UsersInput.
template <class In>
inline constexpr auto kUsersParams =
    Joined(std::to_array<Param<In>>({{"USER", &In::users, Kind::user,
                                      "login name, or id:NUMBER, or login:TEXT; or none, and "
                                      "options that select users"}}),
           kSelectionParams<In>);

/// Whom a command is about to change. It asks only about a selection: nobody has named these users.
struct ChosenUsers : Plan {
    std::vector<UserKey> users;

    bool operator==(const ChosenUsers&) const = default;
};

/// What is said of a command that changes users.
struct ChoiceMessages {
    Pattern<1> question;     ///< with {} for how many, such as "Lock {}?"
    const char* nothingDone; ///< such as "nobody was locked"
    bool removes = false;    ///< whether more than a few are confirmed by their number
};

/// @param messages  outlives what comes back. @throws Error as FindUsers and UserSelection do.
ChosenUsers ChooseUsers(Call& call, const UsersInput& input, const ChoiceMessages& messages);
/// Names what a plan is about to change, as far as people read that, and says how many there are.
void ListUsersIn(Plan& plan, const std::vector<UserKey>& users);

/// Reports that a selection fits nobody. @return what the command gives then.
Result NobodySelected(Call& call);

} // namespace management
