#include "console/PasswordCommands.h"

#include "console/Confirm.h"
#include "console/Engine.h"
#include "console/FileBuffer.h"
#include "console/Interrupt.h"
#include "console/Opened.h"
#include "console/Render.h"
#include "console/Text.h"
#include "console/UserCommands.h"
#include "console/Users.h"

#include <CLI/CLI.hpp>
#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace console {

namespace {

constexpr std::string_view kPasswordAdvice = "--password-stdin, --password-file or --generate";
constexpr std::string_view kCheckAdvice = "--password-stdin or --password-file";

/// While it lives, the terminal does not show what is typed. Signals that end the program are noted instead, so that
/// the terminal is never left like that.
class Unseen {
public:
    Unseen() : m_before()
    {
        m_known = ::tcgetattr(STDIN_FILENO, &m_before) == 0;
        if (m_known) {
            termios silent = m_before;
            silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            ::tcsetattr(STDIN_FILENO, TCSADRAIN, &silent);
        }
    }
    Unseen(const Unseen&) = delete;
    Unseen& operator=(const Unseen&) = delete;
    ~Unseen()
    {
        if (m_known) {
            ::tcsetattr(STDIN_FILENO, TCSADRAIN, &m_before);
        }
    }

private:
    Interrupt m_signals;
    termios m_before;
    bool m_known;
};

[[noreturn]] void RefuseUnread(std::string_view noun)
{
    throw Refusal(Exit::failed,
                  Interrupt::Requested() ? std::string("interrupted") : fmt::format("there is no {} to read", noun));
}

/// The next line, without its end. @throws Refusal (failed) when there is none, or one that is too long.
Secret ReadLine(std::istream& in, std::string_view noun)
{
    Secret line;
    int byte = in.get();
    const bool isThere = byte != std::istream::traits_type::eof();
    while (byte != std::istream::traits_type::eof() && byte != '\n') {
        if (!line.Append(static_cast<char>(byte))) {
            throw Refusal(Exit::usage, fmt::format("the {} is longer than {} bytes", noun, Secret::kLongest));
        }
        byte = in.get();
    }
    if (!isThere || in.bad()) {
        RefuseUnread(noun);
    }
    if (byte == '\n' && line.View().ends_with('\r')) {
        line.DropLast();
    }
    CheckSecret(line, noun);
    return line;
}

// A pipe, such as a shell makes of <(...), is nobody else's.
Secret ReadFile(const std::string& path, std::string_view noun)
{
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) {
        throw Refusal(Exit::failed, fmt::format("cannot read {}: {}", Visible(path), std::strerror(errno)));
    }
    FileBuffer buffer(file);
    struct stat status {};
    const bool isFile = ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    if (isFile && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        throw Refusal(Exit::failed,
                      fmt::format("the {} file {} is open to others than its owner; nothing was changed, chmod 600 "
                                  "closes it",
                                  noun, Visible(path)));
    }
    std::istream in(&buffer);
    return ReadLine(in, noun);
}

Secret Ask(const std::string& prompt, std::string_view noun, Terminal& terminal)
{
    const Unseen unseen;
    terminal.err << prompt << ": " << std::flush;
    try {
        Secret answer = ReadLine(terminal.in, noun);
        terminal.err << '\n';
        return answer;
    } catch (const Refusal&) {
        terminal.err << '\n';
        throw;
    }
}

Secret AskAsOftenAsNeeded(const SecretQuestion& question, Terminal& terminal)
{
    Secret answer = Ask(question.prompt, question.noun, terminal);
    if (question.repeated && Ask("Once more", question.noun, terminal).View() != answer.View()) {
        throw Refusal(Exit::failed, "the two answers differ; nothing was changed");
    }
    return answer;
}

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
        throw Refusal(Exit::usage, "the password is empty; add --allow-empty if that is meant");
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

// ---- Secrets --------------------------------------------------------------------------------------------------------

void DeclareSecretSource(CLI::App& app, SecretSource& source, const std::string& noun)
{
    auto* input = app.add_flag(fmt::format("--{}-stdin", noun), source.fromStandardInput,
                               fmt::format("the {} is the first line of standard input", noun));
    app.add_option(fmt::format("--{}-file", noun), source.file,
                   fmt::format("the {} is the first line of this file", noun))
        ->type_name("FILE")
        ->excludes(input);
    const auto refuse = [noun](const std::string&) {
        throw Refusal(Exit::usage, fmt::format("a {0} on the command line could be read by others; use --{0}-stdin or "
                                               "--{0}-file, or be asked for it",
                                               noun));
    };
    app.add_option_function<std::string>("--" + noun, refuse)->group("");
}

void DeclareGenerated(CLI::App& app, SecretSource& source)
{
    app.add_flag("--generate", source.generated, "make up a password and print it")
        ->excludes("--password-stdin")
        ->excludes("--password-file");
}

Secret ObtainSecret(const SecretSource& source, const SecretQuestion& question, Terminal& terminal)
{
    if (source.generated) {
        return GeneratedPassword();
    }
    if (source.file) {
        return ReadFile(*source.file, question.noun);
    }
    if (source.fromStandardInput) {
        const Unseen unseen;
        return ReadLine(terminal.in, question.noun);
    }
    if (!CanAsk(terminal)) {
        throw Refusal(Exit::usage,
                      fmt::format("there is no terminal to ask for the {} on; add {}", question.noun, question.advice));
    }
    return AskAsOftenAsNeeded(question, terminal);
}

void PrintGenerated(const Secret& password, Terminal& terminal)
{
    terminal.out << password.View() << std::endl;
    if (!terminal.out) {
        throw Refusal(Exit::failed, "the password that was made up cannot be printed; nothing was changed");
    }
}

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
        throw Refusal(Exit::usage, "name what to do, such as `qvadmin user password set`; see `qvadmin user password "
                                   "--help`");
    }
    return Options().run(context);
}

} // namespace user

} // namespace console
