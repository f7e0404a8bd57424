#include "management/Command.h"
#include "management/Text.h"
#include "management/passwords/Passwords.h"
#include "management/users/Users.h"

#include <fmt/format.h>

namespace management::passwords {

namespace {

// ---- Parameters -----------------------------------------------------------------------------------------------------

struct PasswordToSet {
    std::string user;
    bool isGiven = false;
    bool generate = false;
    std::optional<int> type;
    bool allowEmpty = false;
};

constexpr Param<PasswordToSet> kSetParams[] = {
    {"USER", &PasswordToSet::user, Kind::user, kUserHelp},
    {"password", &PasswordToSet::isGiven, Kind::secret, "the new password"},
    {"generate", &PasswordToSet::generate, Kind::flag, "make up a password and print it", {}, "password"},
    {"type", &PasswordToSet::type, Kind::number, "0 plain text, 1 MD5, 2 MD5 with login name; else as the setting says",
     Range{0, 2}},
    {"allow_empty", &PasswordToSet::allowEmpty, Kind::flag, "take an empty password too"},
};

struct PasswordToCheck {
    std::string user;
    bool isGiven = false;
};

constexpr Param<PasswordToCheck> kCheckParams[] = {
    {"USER", &PasswordToCheck::user, Kind::user, kUserHelp},
    {"password", &PasswordToCheck::isGiven, Kind::secret, "the password"},
};

struct OneUser {
    std::string user;
};

constexpr Param<OneUser> kStatusParams[] = {{"USER", &OneUser::user, Kind::user, kUserHelp}};

constexpr Column kStatusColumns[] = {
    {"id", Kind::number}, {"login"}, {"set", Kind::flag}, {"type", Kind::choice}, {"plain_text", Kind::flag}};

// ---- Reading --------------------------------------------------------------------------------------------------------

Result Check(Call& call, const PasswordToCheck& in)
{
    const UserKey user = FindUser(call.Directory(), in.user);
    const Secret password = call.Front().ObtainSecret(
        {"password", "Password of " + Named(user), false, "--password-stdin or --password-file"});
    return Verdict(Passwords(call.Directory()).Matches(user, password));
}

Result Status(Call& call, const OneUser& in)
{
    const UserKey user = FindUser(call.Directory(), in.user);
    const PasswordStatus status = Passwords(call.Directory()).Status(user);
    return ResultOf(Record{{"id", std::int64_t{user.id}},
                           {"login", user.login},
                           {"set", status.isSet},
                           {"type", Choice{status.type, NameOfPasswordType(status.type)}},
                           {"plain_text", status.IsPlainText()}});
}

// ---- Changing -------------------------------------------------------------------------------------------------------

/// Whose password is set.
struct Owner : Plan {
    UserKey user;

    bool operator==(const Owner&) const = default;
};

Owner FindOwner(Call& call, const PasswordToSet& in)
{
    Owner owner;
    owner.user = FindUser(call.Directory(), in.user);
    owner.nothingDone = "no password was set";
    return owner;
}

Secret NewPassword(Call& call, const PasswordToSet& in, const Owner& owner)
{
    if (in.generate) {
        return GeneratedPassword();
    }
    Secret password = call.Front().ObtainSecret(
        {"password", "New password of " + Named(owner.user), true, "--password-stdin, --password-file or --generate"});
    if (password.View().empty() && !in.allowEmpty) {
        throw Error(ErrorCode::invalid, "the password is empty; add --allow-empty if that is meant");
    }
    return password;
}

Result Set(Call& call, const PasswordToSet& in, const Owner& owner, const Secret& password)
{
    const UserKey& user = owner.user;
    Passwords passwords(call.Directory());
    passwords.Set(user, password, in.type ? *in.type : passwords.EncodingType());
    if (in.generate) {
        call.ShowSecret(password);
    }
    call.Report({"user", user.id, user.login, "password_set", fmt::format("set the password of {}", Named(user))});
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"user", "password"},
     .summary = "set and check a user's password",
     .examples = "  qvadmin user password set amy\n"
                 "  qvadmin user password set amy --generate\n"
                 "  qvadmin user password check amy --password-file secret.txt\n"
                 "  qvadmin user password status amy"},
    {.path = {"user", "password", "set"},
     .summary = "give a user a password",
     .examples = "  qvadmin user password set amy\n"
                 "  qvadmin user password set amy --generate",
     .effect = Effect::change,
     .risk = Risk::stepUp,
     .params = &InfosOf<kSetParams>,
     .run = &WriteWithSecret<&FindOwner, &NewPassword, &Set, kSetParams>},
    {.path = {"user", "password", "check"},
     .summary = "print true or false; ends with 0 or 3",
     .examples = "  qvadmin user password check amy --password-file secret.txt",
     .effect = Effect::read,
     .params = &InfosOf<kCheckParams>,
     .run = &Read<&Check, kCheckParams>},
    {.path = {"user", "password", "status"},
     .summary = "whether there is one, and how it is stored",
     .examples = "  qvadmin user password status amy",
     .effect = Effect::read,
     .params = &InfosOf<kStatusParams>,
     .columns = kStatusColumns,
     .run = &Read<&Status, kStatusParams>},
};

} // namespace

std::span<const Command> PasswordCommands() { return kCommands; }

} // namespace management::passwords
