#include "console/PasswordCommands.h"

#include "console/Confirm.h"
#include "console/Opened.h"
#include "console/Render.h"
#include "console/UserCommands.h"
#include "management/DatabaseError.h"
#include "management/Text.h"
#include "management/users/Users.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace console {

namespace {

constexpr std::string_view kPasswordAdvice = "--password-stdin, --password-file or --generate";
constexpr std::string_view kCheckAdvice = "--password-stdin or --password-file";

// ---- user password --------------------------------------------------------------------------------------------------

/// What these commands take beside the arguments that all commands share.
struct PasswordOptions {
    Exit (*run)(const Context&) = nullptr;
    SecretSource source;
    std::optional<int> type;
    bool allowEmpty = false;
};

/// Those of this run: one command line is read in each.
PasswordOptions& Options()
{
    static PasswordOptions options;
    return options;
}

Exit Set(const Context& context)
{
    const PasswordOptions& options = Options();
    Opened opened(context.arguments);
    Directory& directory = opened.Directory();
    // Asked for before the transaction: nobody is to wait for somebody's typing.
    const std::string shown = Named(FindUser(directory, context.arguments.user));
    const Secret password =
        ObtainSecret(options.source, {"password", "New password of " + shown, true, kPasswordAdvice}, context.terminal);
    if (password.View().empty() && !options.allowEmpty) {
        throw Error(ErrorCode::invalid, "the password is empty; add --allow-empty if that is meant");
    }
    Transaction transaction(directory.Connection());
    const UserKey user = FindUser(directory, context.arguments.user);
    ThrowIfChanged(shown, Named(user), "no password was set");
    Passwords passwords(directory);
    passwords.Set(user, password, options.type ? *options.type : passwords.EncodingType());
    if (options.source.generated) {
        PrintGenerated(password, context.terminal);
    }
    transaction.Commit();
    context.terminal.err << fmt::format("set the password of {}\n", Named(user));
    return Exit::done;
}

Exit Check(const Context& context)
{
    Opened opened(context.arguments);
    const UserKey user = FindUser(opened.Directory(), context.arguments.user);
    const Secret password = ObtainSecret(
        Options().source, {"password", "Password of " + Named(user), false, kCheckAdvice}, context.terminal);
    const bool matches = Passwords(opened.Directory()).Matches(user, password);
    context.terminal.out << (matches ? "true\n" : "false\n");
    return matches ? Exit::done : Exit::notFound;
}

Exit Status(const Context& context)
{
    Opened opened(context.arguments);
    const UserKey user = FindUser(opened.Directory(), context.arguments.user);
    const PasswordStatus status = Passwords(opened.Directory()).Status(user);
    const Record record = {{"id", std::int64_t{user.id}},
                           {"login", user.login},
                           {"set", status.isSet},
                           {"type", Choice{status.type, NameOfPasswordType(status.type)}},
                           {"plain_text", status.IsPlainText()}};
    Render(context.arguments.format, record, context.terminal.out);
    return Exit::done;
}

} // namespace

CLI::App* AddThirdWord(CLI::App& verb, const std::string& name, const std::string& summary,
                       Exit (*&chosen)(const Context&), Exit (*run)(const Context&))
{
    CLI::App* word = verb.add_subcommand(name, summary);
    word->group("Verbs")->fallthrough()->callback([&chosen, run] { chosen = run; });
    return word;
}

// ---- user password --------------------------------------------------------------------------------------------------

namespace user {

void DeclarePassword(CLI::App& app, Arguments& arguments)
{
    PasswordOptions& options = Options();
    options = {};
    app.require_subcommand(0, 1);
    CLI::App* set = AddThirdWord(app, "set", "give a user a password", options.run, &console::Set);
    DeclareOne(*set, arguments);
    DeclareSecretSource(*set, options.source, "password");
    DeclareGenerated(*set, options.source);
    set->add_option("--type", options.type, "0 plain text, 1 MD5, 2 MD5 with login name; else as the setting says")
        ->type_name("N")
        ->check(CLI::Range(0, 2, ""));
    set->add_flag("--allow-empty", options.allowEmpty, "take an empty password too");
    CLI::App* check = AddThirdWord(app, "check", "print true or false; ends with 0 or 3", options.run, &Check);
    DeclareOne(*check, arguments);
    DeclareSecretSource(*check, options.source, "password");
    DeclareOne(*AddThirdWord(app, "status", "whether there is one, and how it is stored", options.run, &Status),
               arguments);
}

Exit Password(const Context& context)
{
    if (Options().run == nullptr) {
        throw Error(ErrorCode::invalid,
                    "name what to do, such as `qvadmin user password set`; see `qvadmin user password "
                    "--help`");
    }
    return Options().run(context);
}

} // namespace user

} // namespace console
