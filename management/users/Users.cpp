#include "management/users/Users.h"

#include "management/Errors.h"
#include "management/FindEach.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/Resolve.h"
#include "management/Text.h"
#include "management/users/UserRows.h"

#include <fmt/format.h>

#include <algorithm>

namespace management {

namespace {

constexpr std::string_view kLoginPrefix = "login:";

const Field& FieldOf(std::string_view name) { return *FindField(name); }

UserKey FindById(Directory& directory, int id)
{
    const std::optional<FieldValues> values = directory.Load(id);
    if (!values) {
        throw Error(ErrorCode::notFound, FillPattern("there is no user with id {}; `qvadmin user list` shows all", id));
    }
    return {id, values->at(&FieldOf("login")).value_or("")};
}

UserKey FindByLogin(Directory& directory, const std::string& login)
{
    const std::vector<UserKey> users = directory.FindAll(login);
    if (users.empty()) {
        throw Error(ErrorCode::notFound,
                    FillPattern("there is no user {}; `qvadmin user list` shows all", Quoted(login)));
    }
    const auto isExact = [&login](const UserKey& user) { return user.login == login; };
    if (users.size() > 1 && std::ranges::count_if(users, isExact) != 1) {
        std::vector<Candidate> candidates;
        candidates.reserve(users.size());
        for (const UserKey& user : users) {
            candidates.push_back({Named(user), fmt::format("id:{}", user.id)});
        }
        ThrowAmbiguous(login, candidates);
    }
    return users.size() == 1 ? users.front() : *std::ranges::find_if(users, isExact);
}

FieldValues DifferencesFrom(const FieldValues& present, const FieldValues& wanted)
{
    FieldValues differences;
    for (const auto& [field, value] : wanted) {
        if (present.at(field) != value) {
            differences.emplace(field, value);
        }
    }
    return differences;
}

FieldValues LoadUser(Directory& directory, int id)
{
    std::optional<FieldValues> stored = directory.Load(id);
    if (!stored) {
        throw Error(ErrorCode::notFound, FillPattern("there is no user with id {} any more", id));
    }
    return *stored;
}

bool HasLoginInDigest(const FieldValues& stored)
{
    const std::string password = stored.at(&FieldOf("password")).value_or("");
    return stored.at(&FieldOf("password_type")).value_or("") == "2" && !password.empty() && password != kFitsNothing;
}

} // namespace

void RequireFreeLogin(Directory& directory, const std::string& login, std::optional<int> except)
{
    for (const UserKey& other : directory.FindAll(login)) {
        if (other.id != except) {
            throw Error(ErrorCode::conflict,
                        FillPattern("the login name {} is taken by {}", Quoted(login), Named(other)));
        }
    }
    if (const std::optional<UserKey> other = directory.FindConfusedLogin(login, except)) {
        ThrowConfused(Translatable("login name"), login, {other->id, other->login});
    }
}

UserKey FindUser(Directory& directory, const std::string& argument)
{
    if (const std::optional<int> id = IdIn(argument, Translatable("a user"))) {
        return FindById(directory, *id);
    }
    return FindByLogin(directory, argument.starts_with(kLoginPrefix) ? argument.substr(kLoginPrefix.size()) : argument);
}

std::vector<UserKey> FindUsers(Directory& directory, const std::vector<std::string>& arguments)
{
    return FindEach(
        arguments, Translatable("users"), Translatable("`qvadmin user list` shows all"),
        [&directory](const std::string& argument) { return FindUser(directory, argument); }, &UserKey::id);
}

void CheckLogin(const std::string& login)
{
    if (login.empty()) {
        throw Error(ErrorCode::invalid, "the login name is empty");
    }
    if (HasOuterBlanks(login)) {
        throw Error(ErrorCode::invalid, FillPattern("the login name {} begins or ends with a blank", Quoted(login)));
    }
    if (HasControlCharacter(login)) {
        throw Error(ErrorCode::invalid, FillPattern("the login name {} holds a control character", Quoted(login)));
    }
}

namespace {

/// Adds a user. A name that is not given is the login name; a birthday that is not given is the present day.
void AddUser(Directory& directory, const std::string& login, const FieldValues& values)
{
    CHumanItem item;
    item.m_nID = 0;
    SetMember(item, FieldOf("login"), login);
    SetMember(item, FieldOf("name"), login);
    for (const auto& [field, value] : values) {
        SetMember(item, *field, value);
    }
    directory.Save(item);
}

} // namespace

int CreateUser(Directory& directory, const std::string& login, const FieldValues& values)
{
    CheckLogin(login);
    RequireFreeLogin(directory, login, std::nullopt);
    AddUser(directory, login, values);
    const int id = LastInsertedId(directory.Connection());
    // The record writes today for a birthday that nobody gave.
    const Field& birthday = FieldOf("birthday");
    const auto given = values.find(&birthday);
    if (given == values.end() || !given->second) {
        directory.Set(id, {{&birthday, std::nullopt}});
    }
    return id;
}

bool Differs(const FieldValues& stored, const FieldValues& values)
{
    const auto differs = [&stored](const auto& given) {
        return stored.at(given.first).value_or("") != given.second.value_or("");
    };
    return std::ranges::any_of(values, differs);
}

bool ChangeUser(Directory& directory, int id, const FieldValues& values)
{
    return ChangeUser(directory, id, LoadUser(directory, id), values);
}

bool ChangeUser(Directory& directory, int id, const FieldValues& stored, const FieldValues& values)
{
    if (!Differs(stored, values)) {
        return false;
    }
    directory.Set(id, DifferencesFrom(stored, values));
    return true;
}

bool WouldSpoilPassword(Directory& directory, const UserKey& user, const std::string& login)
{
    CheckLogin(login);
    if (IsBuiltIn(user)) {
        throw Error(ErrorCode::isProtected,
                    FillPattern("{} is the built-in administrator and keeps its name", Named(user)));
    }
    RequireFreeLogin(directory, login, user.id);
    return user.login != login && HasLoginInDigest(LoadUser(directory, user.id));
}

PasswordFate RenameUser(Directory& directory, const UserKey& user, const std::string& login, bool dropPassword)
{
    const bool spoilsPassword = WouldSpoilPassword(directory, user, login);
    if (spoilsPassword && !dropPassword) {
        throw Error(ErrorCode::conflict,
                    FillPattern("the password of {} would no longer fit, because its digest holds the login name; "
                                "give a new one with --password-stdin, --password-file or --generate, or drop it "
                                "with --drop-password",
                                Named(user)));
    }
    FieldValues wanted = {{&FieldOf("login"), login}};
    if (spoilsPassword) {
        wanted.emplace(&FieldOf("password"), kFitsNothing);
    }
    ChangeUser(directory, user.id, wanted);
    return spoilsPassword ? PasswordFate::dropped : PasswordFate::kept;
}

bool IsBuiltIn(const UserKey& user) { return user.login == kBuiltInLogin; }

void DeleteUser(Directory& directory, const UserKey& user)
{
    if (IsBuiltIn(user) || !directory.Delete(user.id)) {
        throw Error(ErrorCode::isProtected,
                    FillPattern("{} is the built-in administrator and cannot be deleted", Named(user)));
    }
}

Sentence Named(const UserKey& user) { return FillPattern("{} (id {})", Visible(user.login), user.id); }

} // namespace management
