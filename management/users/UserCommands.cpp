#include "management/Command.h"
#include "management/Lengths.h"
#include "management/Names.h"
#include "management/References.h"
#include "management/Text.h"
#include "management/passwords/Passwords.h"
#include "management/users/ChosenUsers.h"
#include "management/users/UserDepartment.h"
#include "management/users/UserSelection.h"
#include "management/users/Users.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <utility>

namespace management::users {

namespace {

const Field& Department() { return *FindField("department"); }

std::vector<NamedText> OptionsFrom(Field::Use narrowest)
{
    std::vector<NamedText> options;
    for (const Field& field : Fields()) {
        if (field.use >= narrowest) {
            options.push_back({field.name, field.help, field.IsFlag()});
        }
    }
    return options;
}

std::vector<NamedText> OptionsOfCreate() { return OptionsFrom(Field::Use::given); }
std::vector<NamedText> OptionsOfSet() { return OptionsFrom(Field::Use::changed); }

// ---- Parameters -----------------------------------------------------------------------------------------------------

struct ListInput : SelectionInput {
    std::optional<std::string> fields;
    std::optional<std::string> sort;
    std::optional<int> offset;
    std::optional<int> limit;

    void Check() const
    {
        SelectionInput::Check();
        (void)Page();
    }

    /// @throws Error (invalid) for fields that are none.
    [[nodiscard]] UserPage Page() const;
};

constexpr auto kListParams = Joined(
    kSelectionParams<ListInput>,
    std::to_array<Param<ListInput>>({
        {"fields", &ListInput::fields, Kind::text, "the columns to show, such as id,login,birthday"},
        {"sort", &ListInput::sort, Kind::text, "the column to sort by, login if not given; -FIELD turns it round"},
        {"offset", &ListInput::offset, Kind::number, "leave out so many at the beginning",
         Range{0, std::numeric_limits<int>::max()}},
        {"limit", &ListInput::limit, Kind::number, "at most so many", kLimit},
    }));

struct CountInput : SelectionInput {};

constexpr auto kCountParams = kSelectionParams<CountInput>;

constexpr auto kChosenParams = kUsersParams<UsersInput>;

struct SeveralUsers {
    std::vector<std::string> users;
};

constexpr Param<SeveralUsers> kSeveralParams[] = {{"USER", &SeveralUsers::users, Kind::user, kUserHelp}};

struct OneLogin {
    std::string login;
};

constexpr Param<OneLogin> kExistsParams[] = {{"LOGIN", &OneLogin::login, Kind::text, "login name, case not counting"}};

/// Columns of a user, as written.
struct ColumnsInput {
    NamedTexts columns;
    std::optional<std::string> departmentText;

    /// As they are stored. @throws Error (invalid).
    [[nodiscard]] FieldValues Values() const
    {
        FieldValues values;
        for (const auto& [name, text] : columns) {
            const Field& field = *FindField(name);
            values[&field] = ParseValue(field, text);
        }
        if (departmentText) {
            values[&Department()] = *departmentText;
        }
        return values;
    }
};

template <class In>
constexpr Param<In> kDepartmentTextParam{"department_text",
                                         &In::departmentText,
                                         Kind::text,
                                         "the text of the department alone; the user enters and leaves no group",
                                         {},
                                         "department"};

struct NewUser : ColumnsInput {
    std::string login;

    void Check() const
    {
        (void)Values();
        CheckLogin(login);
    }
};

constexpr Param<NewUser> kCreateParams[] = {
    {"LOGIN", &NewUser::login, Kind::text, "login name of the new user"},
    {"columns", &NewUser::columns, Kind::text, "columns of the user", &OptionsOfCreate},
    kDepartmentTextParam<NewUser>,
};

struct UsersToSet : ColumnsInput {
    std::vector<std::string> users;

    void Check() const
    {
        if (Values().empty()) {
            ThrowNothingToSet("user");
        }
    }
};

constexpr Param<UsersToSet> kSetParams[] = {
    {"USER", &UsersToSet::users, Kind::user, kUserHelp},
    {"columns", &UsersToSet::columns, Kind::text, "columns of the user", &OptionsOfSet},
    kDepartmentTextParam<UsersToSet>,
};

struct UserToRename {
    std::string user;
    std::string login;
    bool isPasswordGiven = false;
    bool generate = false;
    bool dropPassword = false;

    void Check() const { CheckLogin(login); }
};

constexpr Param<UserToRename> kRenameParams[] = {
    {"USER", &UserToRename::user, Kind::user, kUserHelp},
    {"NEWLOGIN", &UserToRename::login, Kind::text, "login name to have from now on"},
    {"password", &UserToRename::isPasswordGiven, Kind::secret, "the new password", {}, "drop_password"},
    {"generate", &UserToRename::generate, Kind::flag, "make up a password and print it", {}, "password"},
    {"drop_password",
     &UserToRename::dropPassword,
     Kind::flag,
     "drop a password that would no longer fit; nobody can log in until a new one is set",
     {},
     "generate"},
};

constexpr Column kListColumns[] = {{"id", Kind::number},  {"login"},  {"name"},
                                   {"sex", Kind::choice}, {"mobile"}, {"email"},
                                   {"department"},        {"title"},  {"locked", Kind::flag}};

// ---- Reading --------------------------------------------------------------------------------------------------------

std::vector<const Field*> FieldsOf(std::string_view names)
{
    std::vector<const Field*> fields;
    for (const std::string& name : SplitAtCommas(names)) {
        const Field& field = RequireField(name);
        if (std::ranges::find(fields, &field) != fields.end()) {
            throw Error(ErrorCode::invalid, FillPattern("the field {} is named twice", field.name));
        }
        fields.push_back(&field);
    }
    return fields;
}

UserPage ListInput::Page() const
{
    UserPage page;
    if (fields) {
        page.fields = FieldsOf(*fields);
    } else {
        std::ranges::transform(kListColumns, std::back_inserter(page.fields),
                               [](const Column& column) { return &RequireField(column.name); });
    }
    if (sort) {
        page.isDescending = sort->starts_with('-');
        page.sortedBy = &RequireField(std::string_view(*sort).substr(page.isDescending ? 1 : 0));
    }
    page.offset = static_cast<std::size_t>(offset.value_or(0));
    page.limit = limit ? static_cast<std::size_t>(*limit) : page.limit;
    return page;
}

/// A value in a list, where a text or number that is missing is like an empty one.
Value Listed(const Field& field, const Stored& value)
{
    return Shown(field, field.IsDate() || value ? value : Stored(field.IsText() ? "" : "0"));
}

Value ShownPasswordType(const Stored& stored)
{
    Value shown = Shown(*FindField("password_type"), stored);
    const auto* type = std::get_if<std::int64_t>(&shown);
    return type == nullptr ? shown : Choice{*type, NameOfPasswordType(static_cast<int>(*type))};
}

Record AsRecord(int id, const FieldValues& values)
{
    Record record = {{"id", std::int64_t{id}}};
    for (const auto& [field, value] : values) {
        if (field->use >= Field::Use::shown) {
            record.emplace_back(field->name, Shown(*field, value));
        }
    }
    const std::string password = values.at(FindField("password")).value_or("");
    record.emplace_back("password_set", !password.empty() && password != kFitsNothing);
    record.emplace_back("password_type", ShownPasswordType(values.at(FindField("password_type"))));
    return record;
}

Result List(Call& call, const ListInput& in)
{
    const UserPage page = in.Page();
    if (in.fields) {
        std::vector<std::string> names;
        std::ranges::transform(page.fields, std::back_inserter(names),
                               [](const Field* field) { return std::string(field->name); });
        call.Front().TakeColumns(std::move(names));
    }
    ListUsers(call.Connection(), UserSelection(call.Connection(), in), page, [&](const UserRow& user) {
        std::vector<Value> row;
        row.reserve(page.fields.size());
        for (std::size_t i = 0; i < page.fields.size(); ++i) {
            row.push_back(Listed(*page.fields[i], user.values[i]));
        }
        return call.Front().TakeRow(row);
    });
    return {};
}

Record Load(Call& call, const UserKey& user)
{
    const std::optional<FieldValues> values = call.Directory().Load(user.id);
    if (!values) {
        throw Error(ErrorCode::notFound, FillPattern("{} has just been deleted", Named(user)));
    }
    return AsRecord(user.id, *values);
}

Result Show(Call& call, const SeveralUsers& in)
{
    const std::vector<UserKey> users = FindUsers(call.Directory(), in.users);
    if (users.size() == 1) {
        return ResultOf(Load(call, users.front()));
    }
    bool isFirst = true;
    for (const UserKey& user : users) {
        const Record record = Load(call, user);
        std::vector<std::string> names;
        std::vector<Value> row;
        for (const auto& [name, value] : record) {
            names.push_back(name);
            row.push_back(value);
        }
        if (std::exchange(isFirst, false)) {
            call.Front().TakeColumns(std::move(names));
        }
        if (!call.Front().TakeRow(row)) {
            break;
        }
    }
    return {};
}

Result Count(Call& call, const CountInput& in)
{
    return ResultOf(Value(CountUsers(call.Connection(), UserSelection(call.Connection(), in))));
}

Result Exists(Call& call, const OneLogin& in) { return Verdict(call.Directory().Exists(in.login)); }

// ---- Changing -------------------------------------------------------------------------------------------------------

Outcome OutcomeOf(const UserKey& user, std::string_view outcome, Sentence sentence)
{
    return {"user", user.id, user.login, outcome, std::move(sentence)};
}

/// The department that --department gives; its columns replace the text in the values.
std::optional<UserDepartment> FindDepartment(CAConnect& conn, const ColumnsInput& in, FieldValues& values)
{
    const auto given = in.columns.find(Department().name);
    std::optional<UserDepartment> department;
    if (given != in.columns.end()) {
        department.emplace(conn, given->second);
        department->AddTo(values);
    }
    return department;
}

Result Create(Call& call, const NewUser& in)
{
    FieldValues values = in.Values();
    std::optional<UserDepartment> department = FindDepartment(call.Connection(), in, values);
    RequireUserFits(call.Connection(), in.login, values);
    const int id = CreateUser(call.Directory(), in.login, values);
    if (department) {
        department->Place(id, {});
    }
    return ResultOf(Value(std::int64_t{id}));
}

/// @return whether anything was changed.
bool SetOne(Call& call, const UserKey& user, const FieldValues& values, std::optional<UserDepartment>& department)
{
    const FieldValues before = department ? call.Directory().Load(user.id).value_or(FieldValues()) : FieldValues();
    const bool isChanged = ChangeUser(call.Directory(), user.id, values);
    const bool isMoved = department && department->Place(user.id, before);
    if (!isChanged && !isMoved) {
        call.Report(OutcomeOf(user, "unchanged", FillPattern("nothing to change in {}", Named(user))));
        return false;
    }
    call.Report(OutcomeOf(user, "changed", FillPattern("changed {}", Named(user))));
    return true;
}

Result Set(Call& call, const UsersToSet& in)
{
    FieldValues values = in.Values();
    const std::vector<UserKey> users = FindUsers(call.Directory(), in.users);
    std::optional<UserDepartment> department = FindDepartment(call.Connection(), in, values);
    RequireUserFits(call.Connection(), "", values);
    bool isChanged = false;
    for (const UserKey& user : users) {
        isChanged = SetOne(call, user, values, department) || isChanged;
    }
    return isChanged ? Result() : Unchanged();
}

struct Renaming : Plan {
    UserKey user;
    bool spoilsPassword = false;

    bool operator==(const Renaming&) const = default;
};

Renaming PlanRenaming(Call& call, const UserToRename& in)
{
    Renaming renaming;
    renaming.nothingDone = Translatable("nobody was renamed");
    renaming.user = FindUser(call.Directory(), in.user);
    renaming.spoilsPassword = WouldSpoilPassword(call.Directory(), renaming.user, in.login);
    return renaming;
}

/// The password to have under the new login name: the one made up or given or, where the present one would no longer
/// fit and there is somebody to ask, the one that is asked for. Nothing when the present one stays or is to be dropped.
std::optional<Secret> NewPassword(Call& call, const UserToRename& in, const Renaming& renaming)
{
    if (in.generate) {
        return GeneratedPassword();
    }
    if (!in.isPasswordGiven) {
        if (!renaming.spoilsPassword || in.dropPassword || !call.Front().CanAsk()) {
            return std::nullopt;
        }
        call.Front().Explain(FillPattern("The password of {} does not fit another login name.", Named(renaming.user)));
    }
    Secret password =
        call.Front().ObtainSecret({"password", FillPattern("New password of {}", Visible(in.login)), true, ""});
    if (password.View().empty()) {
        throw Error(ErrorCode::invalid, "the password is empty; nobody was renamed");
    }
    return password;
}

Sentence PasswordMessage(PasswordFate fate, bool isReplaced)
{
    return isReplaced ? Translatable("; the new password is set")
           : fate == PasswordFate::dropped
               ? Translatable("; the password is dropped, and nobody can log in until a new one is set")
               : "";
}

Result Rename(Call& call, const UserToRename& in, const Renaming& renaming, const std::optional<Secret>& password)
{
    const UserKey& user = renaming.user;
    RequireUserFits(call.Connection(), in.login, {});
    const PasswordFate fate = RenameUser(call.Directory(), user, in.login, in.dropPassword || password);
    if (password) {
        Passwords passwords(call.Directory());
        passwords.Set({user.id, in.login}, *password, passwords.EncodingType());
    }
    if (in.generate) {
        call.ShowSecret(*password);
    }
    const bool isChanged = user.login != in.login || password;
    call.Report(OutcomeOf(user, isChanged ? "renamed" : "unchanged",
                          FillPattern("renamed {} to {}{}", Named(user), Visible(in.login),
                                      PasswordMessage(fate, password.has_value()))));
    return isChanged ? Result() : Unchanged();
}

bool IsLocked(Directory& directory, const UserKey& user)
{
    const Field& locked = *FindField("locked");
    const std::optional<FieldValues> values = directory.Load(user.id);
    const Value shown = values ? Shown(locked, values->at(&locked)) : Value();
    const bool* isLocked = std::get_if<bool>(&shown);
    return isLocked != nullptr && *isLocked;
}

constexpr ChoiceMessages kLocking = {Translatable("Lock {}?"), Translatable("nobody was locked")};
constexpr ChoiceMessages kUnlocking = {Translatable("Unlock {}?"), Translatable("nobody was unlocked")};

ChosenUsers PlanLock(Call& call, const UsersInput& in) { return ChooseUsers(call, in, kLocking); }
ChosenUsers PlanUnlock(Call& call, const UsersInput& in) { return ChooseUsers(call, in, kUnlocking); }

Result SetLocked(Call& call, const ChosenUsers& chosen, bool isLocked)
{
    if (chosen.users.empty()) {
        return NobodySelected(call);
    }
    Result result = Unchanged();
    for (const UserKey& user : chosen.users) {
        const bool isChanged = IsLocked(call.Directory(), user) != isLocked;
        call.Directory().SetLocked(user.id, isLocked);
        const std::string_view done = isLocked ? "locked" : "unlocked";
        call.Report(
            OutcomeOf(user, isChanged ? done : "unchanged",
                      isLocked ? FillPattern("locked {}", Named(user)) : FillPattern("unlocked {}", Named(user))));
        result.isChanged = result.isChanged || isChanged;
    }
    return result;
}

Result Lock(Call& call, const UsersInput& /*in*/, const ChosenUsers& users) { return SetLocked(call, users, true); }
Result Unlock(Call& call, const UsersInput& /*in*/, const ChosenUsers& users) { return SetLocked(call, users, false); }

constexpr ChoiceMessages kDeleting = {Translatable("Delete {}?"), Translatable("nothing was deleted")};

/// Also of users who are named, since more goes than they.
ChosenUsers PlanDeletion(Call& call, const UsersInput& in)
{
    ChosenUsers deletion = ChooseUsers(call, in, kDeleting);
    if (deletion.users.empty()) {
        return deletion;
    }
    const auto builtIn = std::ranges::find_if(deletion.users, IsBuiltIn);
    if (builtIn != deletion.users.end()) {
        throw Error(ErrorCode::isProtected,
                    FillPattern("{} is the built-in administrator and cannot be deleted; nothing was deleted",
                                Named(*builtIn)));
    }
    deletion.lines.clear();
    deletion.removed = deletion.users.size();
    for (const UserKey& user : deletion.users) {
        const std::vector<Reference> references = call.Directory().References(user.id);
        deletion.removed += CountOf(references);
        deletion.lines.push_back(FillPattern("delete {}{}", Named(user), WithReferences(references)));
    }
    deletion.question = FillPattern(kDeleting.question, Counted(deletion.users.size(), "user"));
    return deletion;
}

Result Delete(Call& call, const UsersInput& /*in*/, const ChosenUsers& deletion)
{
    if (deletion.users.empty()) {
        return NobodySelected(call);
    }
    for (const UserKey& user : deletion.users) {
        DeleteUser(call.Directory(), user);
    }
    const UserKey named = deletion.users.size() == 1 ? deletion.users.front() : UserKey{};
    call.Report(OutcomeOf(named, "deleted", FillPattern("deleted {}", Counted(deletion.users.size(), "user"))));
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"user", "list"},
     .summary = "users by login name",
     .examples = {"qvadmin user list", "qvadmin user list --locked --match sales --limit 20",
                  "qvadmin user list --in /Company/Sales --deep --sort -birthday --fields login,name,birthday",
                  "qvadmin user list --role Editors --where department~north --where home_city=Leeds",
                  "qvadmin -o csv user list > users.csv"},
     .columns = kListColumns,
     .handler = Read<&List, kListParams>()},
    {.path = {"user", "show"},
     .summary = "everything about users",
     .examples = {"qvadmin user show amy", "qvadmin user show id:17 -o json", "qvadmin user show amy rory -o json"},
     .areRecords = true,
     .handler = Read<&Show, kSeveralParams>()},
    {.path = {"user", "create"},
     .summary = "add a user and print the new id",
     .examples = {"qvadmin user create amy --name 'Amy Porter' --sex female --birthday 1989-11-28"},
     .effect = Effect::create,
     .handler = Write<&Create, kCreateParams>()},
    {.path = {"user", "set"},
     .summary = "change what is given and leave all else",
     .examples = {"qvadmin user set amy --mobile '+44 7700 900001' --no-super",
                  "qvadmin user set amy rory --title Auditor", "qvadmin user set amy --birthday ''"},
     .effect = Effect::change,
     .handler = Write<&Set, kSetParams>()},
    {.path = {"user", "rename"},
     .summary = "give a user another login name",
     .examples = {"qvadmin user rename amy amy.holt", "qvadmin user rename amy amy.holt --generate"},
     .effect = Effect::change,
     .handler = WriteWithSecret<&PlanRenaming, &NewPassword, &Rename, kRenameParams>()},
    {.path = {"user", "lock"},
     .summary = "keep users from logging in",
     .examples = {"qvadmin user lock amy rory", "qvadmin user lock --in /Company/Sales --deep --where title=Trainee"},
     .effect = Effect::change,
     .asks = true,
     .level = Level::helpDesk,
     .handler = WritePlanned<&PlanLock, &Lock, kChosenParams>()},
    {.path = {"user", "unlock"},
     .summary = "let locked users log in again",
     .examples = {"qvadmin user unlock amy", "qvadmin user unlock --in /Company/Sales --yes"},
     .effect = Effect::change,
     .asks = true,
     .level = Level::helpDesk,
     .handler = WritePlanned<&PlanUnlock, &Unlock, kChosenParams>()},
    {.path = {"user", "delete"},
     .summary = "delete users and what is kept about them elsewhere; asks first",
     .examples = {"qvadmin user delete amy", "qvadmin user delete id:17 id:18 --yes",
                  "qvadmin user delete --in /Company/Left --locked"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanDeletion, &Delete, kChosenParams>()},
    {.path = {"user", "count"},
     .summary = "print how many users there are, or fit a selection",
     .examples = {"qvadmin user count", "qvadmin user count --in /Company --deep --active"},
     .handler = Read<&Count, kCountParams>()},
    {.path = {"user", "exists"},
     .summary = "print true or false; ends with 0 or 3",
     .examples = {"qvadmin user exists amy"},
     .handler = Read<&Exists, kExistsParams>()},
};

} // namespace

std::span<const Command> UserCommands() { return kCommands; }

} // namespace management::users
