#include "management/Command.h"
#include "management/Text.h"
#include "management/passwords/Passwords.h"
#include "management/users/ChosenUsers.h"
#include "management/users/OneUser.h"
#include "management/users/Users.h"

#include <fmt/format.h>

namespace management::passwords {

namespace {

// ---- Parameters -----------------------------------------------------------------------------------------------------

struct PasswordToSet : UsersInput {
    bool isGiven = false;
    bool generate = false;
    std::optional<std::string> result;
    std::optional<int> type;
    bool allowEmpty = false;

    void Check() const
    {
        UsersInput::Check();
        if (result && !generate) {
            throw Error(ErrorCode::invalid, "--result takes passwords that are made up; add --generate");
        }
    }
};

constexpr auto kSetParams =
    Joined(kUsersParams<PasswordToSet>,
           std::to_array<Param<PasswordToSet>>({
               {"password", &PasswordToSet::isGiven, Kind::secret, "the new password"},
               {"generate",
                &PasswordToSet::generate,
                Kind::flag,
                "make up a password, for each user another, and print it",
                {},
                "password"},
               {"result", &PasswordToSet::result, Kind::file,
                "with --generate: write login names and passwords to this new file, as CSV, in place of printing"},
               {"type", &PasswordToSet::type, Kind::number,
                "0 plain text, 1 MD5, 2 MD5 with login name; else as the setting says", Range{0, 2}},
               {"allow_empty", &PasswordToSet::allowEmpty, Kind::flag, "take an empty password too"},
           }));

struct PasswordToCheck {
    std::string user;
    bool isGiven = false;
};

constexpr Param<PasswordToCheck> kCheckParams[] = {
    {"USER", &PasswordToCheck::user, Kind::user, kUserHelp},
    {"password", &PasswordToCheck::isGiven, Kind::secret, "the password"},
};

constexpr Column kStatusColumns[] = {
    {"id", Kind::number}, {"login"}, {"set", Kind::flag}, {"type", Kind::choice}, {"plain_text", Kind::flag}};

// ---- Reading --------------------------------------------------------------------------------------------------------

Result Check(Call& call, const PasswordToCheck& in)
{
    const UserKey user = FindUser(call.Directory(), in.user);
    const Secret password = call.Front().ObtainSecret(
        {"password", FillPattern("Password of {}", Named(user)), false, "--password-stdin or --password-file"});
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

constexpr ChoiceMessages kSetting = {Translatable("Set the passwords of {}?"), Translatable("no password was set")};

ChosenUsers PlanSetting(Call& call, const PasswordToSet& in)
{
    ChosenUsers owners = ChooseUsers(call, in, kSetting);
    if (in.generate && !in.result && owners.users.size() > 1 && !call.Front().CanShowSecrets()) {
        throw Error(ErrorCode::invalid,
                    FillPattern("the passwords of {} cannot be printed; no password was set, name a file for them with "
                                "--result",
                                Counted(owners.users.size(), "user")));
    }
    return owners;
}

/// One for all, or for each user his own.
struct NewPasswords {
    std::optional<Secret> common;
    std::vector<UserSecret> generated;
};

NewPasswords ObtainPasswords(Call& call, const PasswordToSet& in, const ChosenUsers& owners)
{
    NewPasswords passwords;
    if (in.generate) {
        for (const UserKey& user : owners.users) {
            passwords.generated.push_back({user.login, GeneratedPassword()});
        }
        return passwords;
    }
    if (owners.users.empty()) {
        return passwords;
    }
    const Sentence whose =
        owners.users.size() == 1 ? Named(owners.users.front()) : Counted(owners.users.size(), "user");
    passwords.common.emplace(call.Front().ObtainSecret({"password", FillPattern("New password of {}", whose), true,
                                                        "--password-stdin, --password-file or --generate"}));
    if (passwords.common->View().empty() && !in.allowEmpty) {
        throw Error(ErrorCode::invalid, "the password is empty; add --allow-empty if that is meant");
    }
    return passwords;
}

Result Set(Call& call, const PasswordToSet& in, const ChosenUsers& owners, const NewPasswords& secrets)
{
    if (owners.users.empty()) {
        return NobodySelected(call);
    }
    Passwords passwords(call.Directory());
    const int type = in.type ? *in.type : passwords.EncodingType();
    for (std::size_t i = 0; i < owners.users.size(); ++i) {
        const UserKey& user = owners.users[i];
        passwords.Set(user, secrets.common ? *secrets.common : secrets.generated[i].secret, type);
        call.Report({"user", user.id, user.login, "password_set", FillPattern("set the password of {}", Named(user))});
    }
    if (in.result || secrets.generated.size() > 1) {
        call.StoreSecrets(in.result.value_or(""), secrets.generated);
    } else if (in.generate) {
        call.ShowSecret(secrets.generated.front().secret);
    }
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"user", "password"},
     .summary = "set and check a user's password",
     .examples = {"qvadmin user password set amy", "qvadmin user password set amy --generate",
                  "qvadmin user password check amy --password-file secret.txt", "qvadmin user password status amy"}},
    {.path = {"user", "password", "set"},
     .summary = "give users a password",
     .examples = {"qvadmin user password set amy", "qvadmin user password set amy --generate",
                  "qvadmin user password set --in /Company/Sales --generate --result passwords.csv"},
     .effect = Effect::change,
     .asks = true,
     .risk = Risk::stepUp,
     .level = Level::helpDesk,
     .handler = WriteWithSecret<&PlanSetting, &ObtainPasswords, &Set, kSetParams>()},
    {.path = {"user", "password", "check"},
     .summary = "print true or false; ends with 0 or 3",
     .examples = {"qvadmin user password check amy --password-file secret.txt"},
     .handler = Read<&Check, kCheckParams>()},
    {.path = {"user", "password", "status"},
     .summary = "whether there is one, and how it is stored",
     .examples = {"qvadmin user password status amy"},
     .columns = kStatusColumns,
     .handler = Read<&Status, kOneUserParams>()},
};

} // namespace

std::span<const Command> PasswordCommands() { return kCommands; }

} // namespace management::passwords
