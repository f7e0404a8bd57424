#include "console/Secrets.h"

#include "console/CommandOption.h"
#include "console/FileBuffer.h"
#include "console/Interrupt.h"
#include "console/Translation.h"
#include "management/Text.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace console {

namespace {

/// While it lives, the terminal does not show what is typed. Signals that end the program are noted instead, so that
/// the terminal is never left like that.
class EchoOff {
public:
    EchoOff() : m_before()
    {
        m_known = ::tcgetattr(STDIN_FILENO, &m_before) == 0;
        if (m_known) {
            termios silent = m_before;
            silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            ::tcsetattr(STDIN_FILENO, TCSADRAIN, &silent);
        }
    }
    EchoOff(const EchoOff&) = delete;
    EchoOff& operator=(const EchoOff&) = delete;
    ~EchoOff()
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

[[noreturn]] void ThrowUnread(std::string_view noun)
{
    throw Error(ErrorCode::failed,
                Interrupt::Requested() ? Translatable("interrupted") : FillPattern("there is no {} to read", noun));
}

/// The next line, without its end. @throws Error (failed) when there is none, or one that is too long.
Secret ReadLine(std::istream& in, std::string_view noun)
{
    Secret line;
    int byte = in.get();
    const bool isThere = byte != std::istream::traits_type::eof();
    while (byte != std::istream::traits_type::eof() && byte != '\n') {
        if (!line.Append(static_cast<char>(byte))) {
            throw Error(ErrorCode::invalid, FillPattern("the {} is longer than {} bytes", noun, Secret::kLongest));
        }
        byte = in.get();
    }
    if (!isThere || in.bad()) {
        ThrowUnread(noun);
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
    const int file = OpenForReading(path);
    FileBuffer buffer(file);
    struct stat status{};
    const bool isFile = ::fstat(file, &status) == 0 && S_ISREG(status.st_mode);
    if (isFile && (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
        throw Error(ErrorCode::failed,
                    FillPattern("the {} file {} is open to others than its owner; nothing was changed, chmod 600 "
                                "closes it",
                                noun, Visible(path)));
    }
    std::istream in(&buffer);
    return ReadLine(in, noun);
}

Secret Ask(const Sentence& prompt, std::string_view noun, Terminal& terminal)
{
    const EchoOff unseen;
    terminal.err << Translated(FillPattern("{}: ", prompt)) << std::flush;
    try {
        Secret answer = ReadLine(terminal.in, noun);
        terminal.err << '\n';
        return answer;
    } catch (const Error&) {
        terminal.err << '\n';
        throw;
    }
}

Secret AskAsOftenAsNeeded(const SecretQuestion& question, Terminal& terminal)
{
    Secret answer = Ask(question.prompt, question.name, terminal);
    if (question.isRepeated && Ask(Translatable("Once more"), question.name, terminal).View() != answer.View()) {
        throw Error(ErrorCode::failed, "the two answers differ; nothing was changed");
    }
    return answer;
}

} // namespace

void DeclareSecretSource(CLI::App& app, SecretSource& source, const std::string& noun)
{
    auto* input = app.add_flag(fmt::format("--{}-stdin", noun), source.fromStandardInput,
                               Translated(FillPattern(kSecretInputHelp, noun)));
    app.add_option(fmt::format("--{}-file", noun), source.file, Translated(FillPattern(kSecretFileHelp, noun)))
        ->type_name("FILE")
        ->excludes(input);
    const auto refuse = [noun](const std::string&) {
        throw Error(ErrorCode::invalid,
                    FillPattern("a {0} on the command line could be read by others; use --{0}-stdin or "
                                "--{0}-file, or be asked for it",
                                noun));
    };
    app.add_option_function<std::string>("--" + noun, refuse)->group("");
}

Secret ObtainSecret(const SecretSource& source, const SecretQuestion& question, Terminal& terminal)
{
    if (source.file) {
        return ReadFile(*source.file, question.name);
    }
    if (source.fromStandardInput) {
        const EchoOff unseen;
        return ReadLine(terminal.in, question.name);
    }
    if (!CanAsk(terminal)) {
        throw Error(ErrorCode::invalid,
                    FillPattern("there is no terminal to ask for the {} on; add {}", question.name, question.advice));
    }
    return AskAsOftenAsNeeded(question, terminal);
}

} // namespace console
