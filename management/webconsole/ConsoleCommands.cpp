#include "management/Command.h"
#include "management/Text.h"
#include "management/users/OneUser.h"
#include "management/users/Users.h"
#include "management/webconsole/ConsoleAccounts.h"

#include <fmt/format.h>

namespace management::webconsole {

namespace {

// ---- Parameters -----------------------------------------------------------------------------------------------------

struct LevelToSet : OneUser {
    std::string level;
};

constexpr Param<LevelToSet> kSetParams[] = {
    {"USER", &LevelToSet::user, Kind::user, kUserHelp},
    {"LEVEL", &LevelToSet::level, Kind::choice,
     "read-only; or help-desk, which may also lock and unlock users and give them passwords, but for super users",
     OneOf{{NameOf(Level::readOnly), NameOf(Level::helpDesk)}}},
};

constexpr Column kListColumns[] = {{"id", Kind::number},
                                   {"login"},
                                   {"name"},
                                   {"level"},
                                   {"locked", Kind::flag},
                                   {"totp", Kind::flag},
                                   {"recovery_codes", Kind::number}};

// ---- Reading --------------------------------------------------------------------------------------------------------

Result List(Call& call)
{
    for (const ListedAccount& account : ConsoleAccounts(call.Connection()).All()) {
        if (!call.Row(std::int64_t{account.id}, account.login, account.name, std::string(NameOf(account.level)),
                      account.isLocked, account.hasTotp, static_cast<std::int64_t>(account.recoveryCodes))) {
            break;
        }
    }
    return {};
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Outcome OutcomeOf(const UserKey& user, std::string_view outcome, Sentence sentence)
{
    return {"user", user.id, user.login, outcome, std::move(sentence)};
}

Result Set(Call& call, const LevelToSet& in)
{
    const UserKey user = FindUser(call.Directory(), in.user);
    if (call.Directory().IsSuperUser(user.login)) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} is a super user, who may do everything in the web console; nothing was changed",
                                Named(user)));
    }
    const ConsoleAccounts accounts(call.Connection());
    ConsoleAccount account = accounts.Find(user.id);
    const Level level = LevelOf(in.level).value_or(Level::none);
    if (account.level == level) {
        call.Report(OutcomeOf(user, "unchanged", FillPattern("{} already has the level {}", Named(user), in.level)));
        return Unchanged();
    }
    account.level = level;
    accounts.Save(user.id, account);
    call.Report(OutcomeOf(user, "changed", FillPattern("{} now has the level {}", Named(user), in.level)));
    return {};
}

Result Remove(Call& call, const OneUser& in)
{
    const UserKey user = FindUser(call.Directory(), in.user);
    const ConsoleAccounts accounts(call.Connection());
    ConsoleAccount account = accounts.Find(user.id);
    if (account.level == Level::none) {
        call.Report(OutcomeOf(user, "unchanged", FillPattern("{} has no level", Named(user))));
        return Unchanged();
    }
    account.level = Level::none;
    accounts.Save(user.id, account);
    call.Report(OutcomeOf(user, "changed", FillPattern("{} has no level any more", Named(user))));
    return {};
}

Result RemoveTotp(Call& call, const OneUser& in)
{
    const UserKey user = FindUser(call.Directory(), in.user);
    const ConsoleAccounts accounts(call.Connection());
    const ConsoleAccount account = accounts.Find(user.id);
    if (account.totp.empty()) {
        call.Report(OutcomeOf(user, "unchanged", FillPattern("{} signs in without one-time codes", Named(user))));
        return Unchanged();
    }
    accounts.Save(user.id, {.level = account.level});
    call.Report(OutcomeOf(user, "changed", FillPattern("{} signs in without one-time codes now", Named(user))));
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"console", "list"},
     .summary = "who may use the web console, and who signs in there with one-time codes",
     .examples = {"qvadmin console list"},
     .columns = kListColumns,
     .handler = ReadSnapshot<&List>()},
    {.path = {"console", "set"},
     .summary = "let a user who is not a super user use the web console",
     .examples = {"qvadmin console set amy help-desk", "qvadmin console set rory read-only"},
     .effect = Effect::change,
     .risk = Risk::stepUp,
     .handler = Write<&Set, kSetParams>()},
    {.path = {"console", "remove"},
     .summary = "let a user no longer use the web console",
     .examples = {"qvadmin console remove amy"},
     .effect = Effect::remove,
     .risk = Risk::stepUp,
     .handler = Write<&Remove, kOneUserParams>()},
    {.path = {"console", "totp"},
     .summary = "one-time codes, the second step of signing in",
     .examples = {"qvadmin console totp remove amy"}},
    {.path = {"console", "totp", "remove"},
     .summary = "let a user sign in without one-time codes, such as one who has lost the device and the recovery codes",
     .examples = {"qvadmin console totp remove amy"},
     .effect = Effect::remove,
     .risk = Risk::stepUp,
     .handler = Write<&RemoveTotp, kOneUserParams>()},
};

} // namespace

std::span<const Command> ConsoleCommands() { return kCommands; }

} // namespace management::webconsole
