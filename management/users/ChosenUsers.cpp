#include "management/users/ChosenUsers.h"

#include "management/Text.h"

#include <fmt/format.h>

namespace management {

namespace {

/// More than these are shown as a number.
constexpr std::size_t kLongestList = 20;

} // namespace

void UsersInput::Check() const
{
    if (users && !IsEmpty()) {
        throw Error(ErrorCode::invalid, "users are named and selected at once; do one of both");
    }
    if (!users && IsEmpty()) {
        throw Error(ErrorCode::invalid, "USER is required, or options that select users, such as --in GROUP");
    }
    SelectionInput::Check();
}

void ListUsersIn(Plan& plan, const std::vector<UserKey>& users)
{
    if (users.size() <= kLongestList) {
        for (const UserKey& user : users) {
            plan.lines.push_back(Named(user));
        }
    }
    plan.lines.push_back(Counted(users.size(), "user"));
}

ChosenUsers ChooseUsers(Call& call, const UsersInput& input, const ChoiceMessages& messages)
{
    ChosenUsers chosen;
    chosen.nothingDone = messages.nothingDone;
    if (input.users) {
        chosen.users = FindUsers(call.Directory(), *input.users);
        return chosen;
    }
    chosen.users = SelectedUsers(call.Connection(), UserSelection(call.Connection(), input));
    if (!chosen.users.empty()) {
        ListUsersIn(chosen, chosen.users);
        chosen.question = FillPattern(messages.question, chosen.lines.back());
        chosen.removed = messages.removes ? chosen.users.size() : 0;
    }
    return chosen;
}

Result NobodySelected(Call& call)
{
    call.Report({"user", 0, "", "unchanged", Translatable("nobody fits the selection; nothing was changed")});
    return Unchanged();
}

} // namespace management
