#include "console/UserCommands.h"

#include "console/Confirm.h"
#include "console/Import.h"
#include "console/Opened.h"
#include "console/Render.h"
#include "console/Secrets.h"
#include "console/Url.h"
#include "console/Words.h"
#include "management/DatabaseError.h"
#include "management/Lengths.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/users/UserDepartment.h"
#include "management/users/Users.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace console::user {

namespace {

constexpr const char* kUserHelp = "login name, or id:NUMBER, or login:TEXT";

constexpr Field kDepartmentText{"department_text",
                                "",
                                {},
                                Field::Use::given,
                                "the text of the department alone; the user enters and leaves no group"};

const Field& Department() { return *FindField("department"); }

void DeclareFields(CLI::App& app, Arguments& arguments, Field::Use narrowest)
{
    for (const Field& field : Fields()) {
        const std::string option = OptionOf(field);
        const std::string help(field.help);
        if (field.use < narrowest) {
            continue;
        }
        if (field.IsFlag()) {
            const auto take = [&arguments, &field](std::int64_t count) {
                arguments.fields[&field] = count > 0 ? "1" : "0";
            };
            app.add_flag_function(option + ",!--no-" + option.substr(2), take, help);
        } else {
            const auto take = [&arguments, &field](const std::string& text) { arguments.fields[&field] = text; };
            app.add_option_function<std::string>(option, take, help)->type_name("TEXT");
        }
    }
    words::DeclareOption(app, arguments, kDepartmentText);
    app.get_option(OptionOf(kDepartmentText))->excludes(OptionOf(Department()));
}

constexpr Field kDepartments{
    "departments", "", {}, Field::Use::given, "make each department a group below this view, and its people members"};

void DeclareDepartments(CLI::App& app, Arguments& arguments)
{
    const auto take = [&arguments](const std::string& view) { arguments.fields[&kDepartments] = view; };
    app.add_option_function<std::string>(OptionOf(kDepartments), take, std::string(kDepartments.help))
        ->type_name("VIEW");
    auto* makeView = app.add_flag("--make-view", arguments.makeView, "make that view when it is not there")
                         ->needs(OptionOf(kDepartments));
    app.add_flag("--no-new-groups", arguments.noNewGroups, "rows of departments that have no group yet fail")
        ->needs(OptionOf(kDepartments))
        ->excludes(makeView);
}

/// The names with commas between, in lines that fit a terminal.
std::string Wrapped(const std::vector<std::string_view>& names)
{
    constexpr std::size_t kWidest = 78;
    std::string text;
    std::string line = " ";
    for (const std::string_view name : names) {
        if (line.size() + name.size() + 2 > kWidest) {
            text += std::exchange(line, " ") + "\n";
        }
        line += fmt::format(" {}{}", name, name == names.back() ? "" : ",");
    }
    return text + line + "\n";
}

FieldValues Parsed(const std::map<const Field*, std::string>& texts)
{
    FieldValues values;
    for (const auto& [field, text] : texts) {
        values[field == &kDepartmentText ? &Department() : field] = ParseValue(*field, text);
    }
    return values;
}

/// The department that --department gives; its columns replace the text in the values.
std::optional<UserDepartment> DepartmentGiven(CAConnect& conn, const Arguments& arguments, FieldValues& values)
{
    const std::optional<std::string> given = words::Given(arguments, Department());
    std::optional<UserDepartment> department;
    if (given) {
        department.emplace(conn, *given);
        department->AddTo(values);
    }
    return department;
}

bool IsMatch(const ListedUser& user, const std::string& foldedPart)
{
    const auto holds = [&foldedPart](const std::string& text) {
        return NameKey(text).find(foldedPart) != std::string::npos;
    };
    return holds(user.login) || holds(user.name) || holds(user.email) || holds(user.mobile) || holds(user.department) ||
           holds(user.title);
}

bool IsSelected(const ListedUser& user, const Arguments& arguments, const std::string& foldedPart)
{
    return !(arguments.onlyLocked && !user.locked) && !(arguments.onlyActive && user.locked) &&
           (foldedPart.empty() || IsMatch(user, foldedPart));
}

Value ShownPasswordType(const Stored& stored)
{
    Value shown = Shown(*FindField("password_type"), stored);
    const auto* type = std::get_if<std::int64_t>(&shown);
    if (type == nullptr) {
        return shown;
    }
    return Choice{*type, *type == 1 ? "MD5" : *type == 2 ? "MD5 with login name" : "plain text"};
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

Exit SetLocked(const Context& context, bool locked)
{
    Opened opened(context.arguments);
    Directory& directory = opened.Directory();
    Transaction transaction(directory.Connection());
    const std::vector<UserKey> users = FindUsers(directory, context.arguments.users);
    for (const UserKey& user : users) {
        directory.SetLocked(user.id, locked);
    }
    transaction.Commit();
    for (const UserKey& user : users) {
        context.terminal.err << fmt::format("{} {}\n", locked ? "locked" : "unlocked", Named(user));
    }
    return Exit::done;
}

void RefuseBuiltIn(const std::vector<UserKey>& users)
{
    const auto builtIn = std::ranges::find_if(users, IsBuiltIn);
    if (builtIn != users.end()) {
        throw Error(ErrorCode::isProtected,
                    fmt::format("{} is the built-in administrator and cannot be deleted; nothing was deleted",
                                Named(*builtIn)));
    }
}

struct Deletion {
    std::vector<UserKey> users;
    std::string shown;
    std::size_t removed = 0; ///< the users and what goes along
};

Deletion PlanDeletion(Directory& directory, const Arguments& arguments)
{
    Deletion deletion{FindUsers(directory, arguments.users), {}};
    RefuseBuiltIn(deletion.users);
    deletion.removed = deletion.users.size();
    for (const UserKey& user : deletion.users) {
        const std::vector<Reference> traces = directory.References(user.id);
        deletion.removed += CountOf(traces);
        deletion.shown += fmt::format("delete {}{}\n", Named(user), WithReferences(traces));
    }
    return deletion;
}

/// Where the password of a renamed user is to come from; one command line is read in each run.
SecretSource& RenameSource()
{
    static SecretSource source;
    return source;
}

/// The password to have under the new login name: the one given or, where the present one would no longer fit and
/// there is a terminal, the one that is asked for. Nothing when the present one stays or is to be dropped.
std::optional<Secret> PasswordForRename(const Context& context, Directory& directory, const UserKey& user)
{
    const SecretSource& source = RenameSource();
    const bool isNeeded =
        WouldSpoilPassword(directory, user, context.arguments.login) && !context.arguments.dropPassword;
    if (!source.IsGiven() && !(isNeeded && CanAsk(context.terminal))) {
        return std::nullopt;
    }
    if (!source.IsGiven()) {
        context.terminal.err << fmt::format("The password of {} does not fit another login name.\n", Named(user));
    }
    const std::string prompt = "New password of " + Visible(context.arguments.login);
    Secret password = ObtainSecret(source, {"password", prompt, true, ""}, context.terminal);
    if (password.View().empty()) {
        throw Error(ErrorCode::invalid, "the password is empty; nobody was renamed");
    }
    return password;
}

/// The files of a SQLite database, also those that are not there now.
std::vector<OutputFile::InUse> FilesOf(const std::string& url)
{
    std::vector<OutputFile::InUse> files;
    if (const std::optional<std::filesystem::path> file = SqliteFile(url)) {
        for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
            files.push_back({file->native() + suffix, "a file of the database in use"});
        }
    }
    return files;
}

std::string_view ToldOf(PasswordFate fate, bool isReplaced)
{
    return isReplaced                      ? "; the new password is set"
           : fate == PasswordFate::dropped ? "; the password is dropped, and nobody can log in until a new one is set"
                                           : "";
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareList(CLI::App& app, Arguments& arguments)
{
    app.add_option("--match", arguments.match, "only users with this text in what the list shows, case not counting")
        ->type_name("TEXT");
    auto* locked = app.add_flag("--locked", arguments.onlyLocked, "only locked users");
    app.add_flag("--active", arguments.onlyActive, "only users who are not locked")->excludes(locked);
    words::DeclareLimit(app, arguments);
}

void DeclareOne(CLI::App& app, Arguments& arguments)
{
    app.add_option("USER", arguments.user, kUserHelp)->required()->type_name("");
}

void DeclareSeveral(CLI::App& app, Arguments& arguments) { words::DeclareWords(app, arguments, "USER", kUserHelp); }

void DeclareCreate(CLI::App& app, Arguments& arguments)
{
    app.add_option("LOGIN", arguments.login, "login name of the new user")->required()->type_name("");
    DeclareFields(app, arguments, Field::Use::given);
}

void DeclareSet(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    DeclareFields(app, arguments, Field::Use::changed);
}

void DeclareRename(CLI::App& app, Arguments& arguments)
{
    DeclareOne(app, arguments);
    app.add_option("NEWLOGIN", arguments.login, "login name to have from now on")->required()->type_name("");
    RenameSource() = {};
    DeclareSecretSource(app, RenameSource(), "password");
    DeclareGenerated(app, RenameSource());
    app.add_flag("--drop-password", arguments.dropPassword,
                 "drop a password that would no longer fit; nobody can log in until a new one is set")
        ->excludes("--password-stdin")
        ->excludes("--password-file")
        ->excludes("--generate");
}

void DeclareDelete(CLI::App& app, Arguments& arguments)
{
    DeclareSeveral(app, arguments);
    words::DeclareYes(app, arguments);
}

void DeclareExists(CLI::App& app, Arguments& arguments)
{
    app.add_option("LOGIN", arguments.login, "login name, case not counting")->required()->type_name("");
}

void DeclareImport(CLI::App& app, Arguments& arguments)
{
    app.add_option("FILE", arguments.file, "comma-separated values in UTF-8 with a header row; - for standard input")
        ->required()
        ->type_name("");
    app.add_flag("--dry-run", arguments.dryRun, "check everything, change nothing");
    app.add_option("--result", arguments.result,
                   "where to write each row's outcome: FILE.result.csv if not given; - for standard output")
        ->type_name("FILE");
    app.add_flag("--update", arguments.update, "set the columns of users who are there; empty values leave theirs");
    DeclareDepartments(app, arguments);
    app.add_flag("--allow-privileges", arguments.allowPrivileges,
                 "rows may change super, system and locked, and concern Admin");
    app.footer("Columns (login is needed, all others may be left out):\n" + Wrapped(ImportColumns()) + "\n" +
               app.get_footer());
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Exit List(const Context& context)
{
    const Arguments& arguments = context.arguments;
    Opened opened(arguments);
    const std::string part = NameKey(arguments.match);
    TableWriter writer(arguments.format,
                       {"id", "login", "name", "sex", "mobile", "email", "department", "title", "locked"},
                       context.terminal.out);
    const auto write = [&writer](const ListedUser& user) {
        return writer.Write(MakeRow(std::int64_t{user.id}, user.login, user.name, ShownSex(user.sex), user.mobile,
                                    user.email, user.department, user.title, user.locked));
    };
    opened.Directory().List([&](const ListedUser& user) { return IsSelected(user, arguments, part); },
                            words::LimitOf(arguments), write);
    writer.Finish();
    return Exit::done;
}

Exit Show(const Context& context)
{
    Opened opened(context.arguments);
    const UserKey user = FindUser(opened.Directory(), context.arguments.user);
    const std::optional<FieldValues> values = opened.Directory().Load(user.id);
    if (!values) {
        throw Error(ErrorCode::notFound, fmt::format("{} has just been deleted", Named(user)));
    }
    Render(context.arguments.format, AsRecord(user.id, *values), context.terminal.out);
    return Exit::done;
}

Exit Count(const Context& context)
{
    Opened opened(context.arguments);
    context.terminal.out << opened.Directory().Count() << '\n';
    return Exit::done;
}

Exit Exists(const Context& context)
{
    Opened opened(context.arguments);
    const bool exists = opened.Directory().Exists(context.arguments.login);
    context.terminal.out << (exists ? "true\n" : "false\n");
    return exists ? Exit::done : Exit::notFound;
}

// ---- Changing -------------------------------------------------------------------------------------------------------

Exit Create(const Context& context)
{
    FieldValues values = Parsed(context.arguments.fields);
    CheckLogin(context.arguments.login);
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Transaction transaction(conn);
    std::optional<UserDepartment> department = DepartmentGiven(conn, context.arguments, values);
    RequireUserFits(conn, context.arguments.login, values);
    const int id = CreateUser(opened.Directory(), context.arguments.login, values);
    if (department) {
        department->Place(id, {});
    }
    transaction.Commit();
    context.terminal.out << id << '\n';
    return Exit::done;
}

Exit Set(const Context& context)
{
    FieldValues values = Parsed(context.arguments.fields);
    if (values.empty()) {
        throw Error(ErrorCode::invalid, "there is nothing to set; `qvadmin user set --help` lists what can be");
    }
    Opened opened(context.arguments);
    Directory& directory = opened.Directory();
    Transaction transaction(directory.Connection());
    const UserKey user = FindUser(directory, context.arguments.user);
    std::optional<UserDepartment> department = DepartmentGiven(directory.Connection(), context.arguments, values);
    RequireUserFits(directory.Connection(), "", values);
    const FieldValues before = department ? directory.Load(user.id).value_or(FieldValues()) : FieldValues();
    const bool changed = ChangeUser(directory, user.id, values);
    const bool moved = department && department->Place(user.id, before);
    transaction.Commit();
    context.terminal.err << fmt::format("{} {}\n", changed || moved ? "changed" : "nothing to change in", Named(user));
    return Exit::done;
}

Exit Rename(const Context& context)
{
    const std::string& login = context.arguments.login;
    CheckLogin(login);
    Opened opened(context.arguments);
    Directory& directory = opened.Directory();
    // Asked for before the transaction: nobody is to wait for somebody's typing.
    const UserKey shown = FindUser(directory, context.arguments.user);
    const std::optional<Secret> password = PasswordForRename(context, directory, shown);
    Transaction transaction(directory.Connection());
    const UserKey user = FindUser(directory, context.arguments.user);
    ThrowIfChanged(Named(shown), Named(user), "nobody was renamed");
    RequireUserFits(directory.Connection(), login, {});
    const PasswordFate fate = RenameUser(directory, user, login, context.arguments.dropPassword || password);
    if (password) {
        Passwords passwords(directory);
        passwords.Set({user.id, login}, *password, passwords.EncodingType());
    }
    if (RenameSource().generated) {
        PrintGenerated(*password, context.terminal);
    }
    transaction.Commit();
    context.terminal.err << fmt::format("renamed {} to {}{}\n", Named(user), Visible(login),
                                        ToldOf(fate, password.has_value()));
    return Exit::done;
}

Exit Lock(const Context& context) { return SetLocked(context, true); }

Exit Unlock(const Context& context) { return SetLocked(context, false); }

Exit Delete(const Context& context)
{
    Opened opened(context.arguments);
    Directory& directory = opened.Directory();
    const auto [users, shown, removed] = PlanDeletion(directory, context.arguments);
    context.terminal.err << shown;
    RequireConfirmation(context, fmt::format("Delete {}?", Counted(users.size(), "user")), removed);
    Transaction transaction(directory.Connection());
    ThrowIfChanged(shown, PlanDeletion(directory, context.arguments).shown);
    for (const UserKey& user : users) {
        DeleteUser(directory, user);
    }
    transaction.Commit();
    context.terminal.err << fmt::format("deleted {}\n", Counted(users.size(), "user"));
    return Exit::done;
}

Exit Import(const Context& context)
{
    Opened opened(context.arguments);
    const Arguments& arguments = context.arguments;
    return ImportUsers(opened.Directory(),
                       {.file = arguments.file,
                        .result = arguments.result,
                        .dryRun = arguments.dryRun,
                        .update = arguments.update,
                        .allowPrivileges = arguments.allowPrivileges,
                        .departments = words::Given(arguments, kDepartments),
                        .makeView = arguments.makeView,
                        .makeGroups = !arguments.noNewGroups,
                        .inUse = FilesOf(ChooseUrl(arguments.db)),
                        .isReadOnly = IsReadOnly(ChooseUrl(arguments.db))},
                       context.terminal);
}

} // namespace console::user
