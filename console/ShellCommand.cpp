#include "console/BatchCommand.h"
#include "console/Completion.h"
#include "console/Environment.h"
#include "console/Interrupt.h"
#include "console/LineEditor.h"
#include "console/LineHistory.h"
#include "console/LocalCommand.h"
#include "console/Session.h"
#include "console/ShellWords.h"
#include "console/Translation.h"
#include "console/Url.h"
#include "management/Candidates.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>
#include <optional>

// Command lines that somebody types, in one process and over one connection.

namespace console {

namespace {

/// What tells people which directory this is, such as directory.db or db1.example.org/directory.
std::string DirectoryName(const Arguments& arguments)
{
    const std::string url = ChooseUrl(arguments.db);
    if (const std::optional<std::filesystem::path> file = SqliteFile(url)) {
        return Visible(file->filename().native());
    }
    std::string name = ShownUrl(url);
    name.resize(std::min(name.size(), name.find('?')));
    const std::size_t scheme = name.find("://");
    return scheme == std::string::npos ? name : name.substr(std::max(name.rfind('@') + 1, scheme + 3));
}

/// Whether a line can be written to a file: what is in a URL may be a password.
bool CanBeKept(const std::vector<std::string>& words)
{
    return std::ranges::none_of(words, [](const std::string& word) {
        return HoldsPassword(word) || HoldsPassword(word.substr(std::min(word.size(), word.find('=') + 1)));
    });
}

/// A terminal on which Ctrl-C ends a command and not the program.
Terminal Interruptible(const Terminal& terminal)
{
    Terminal own = terminal;
    own.isStopped = &Interrupt::Requested;
    return own;
}

class Shell {
public:
    explicit Shell(const LocalCall& call)
        : m_terminal(Interruptible(call.terminal)),
          m_shared{.arguments = call.arguments, .isShell = true},
          m_editor(OpenLineEditor(
              DirectoryName(call.arguments) + "> ",
              [this](const std::vector<std::string>& words, const std::string& beginning) {
                  return Complete(words, beginning);
              },
              [](std::size_t count) { return Translated(FillPattern("and {} more", count)); }, m_terminal.err))
    {
        OpenHistory();
    }

    Exit Run()
    {
        while (const std::optional<std::string> line = ReadLine()) {
            if (!RunOne(*line)) {
                return Exit::done;
            }
        }
        m_terminal.err << "\n";
        return Exit::done;
    }

private:
    void OpenHistory()
    {
        const std::optional<std::string> folder = BaseDirectory("XDG_STATE_HOME", ".local/state");
        if (!folder) {
            return;
        }
        try {
            m_history.emplace(*folder + "/qvadmin/history");
            for (const std::string& line : m_history->Read()) {
                m_editor->Remember(line);
            }
        } catch (const Error& e) {
            Reported(Exit::failed, e.Why(), m_terminal);
        }
    }

    /// A Ctrl-C that comes as a command ends is not to end the shell.
    std::optional<std::string> ReadLine()
    {
        const Interrupt interrupt;
        return m_editor->Read();
    }

    /// @return false for the line that ends the shell.
    bool RunOne(const std::string& line)
    {
        std::vector<std::string> words;
        try {
            words = SplitCommandLine(line);
        } catch (const Error& e) {
            Keep(line);
            Reported(ExitFor(e.Code()), e.Why(), m_terminal);
            return true;
        }
        if (words.empty()) {
            return true;
        }
        if (EndsShell(words)) {
            return false;
        }
        if (CanBeKept(words)) {
            Keep(line);
        }
        const Interrupt interrupt;
        // A connection that is gone is made anew by the next line that needs one.
        if (RunLine(words, m_terminal, m_shared) == Exit::database) {
            m_shared.session.reset();
        }
        m_terminal.out.flush();
        // After Ctrl-D or Ctrl-C in an answer there are more lines to come.
        m_terminal.in.clear();
        return true;
    }

    void Keep(const std::string& line)
    {
        m_editor->Remember(line);
        if (m_history) {
            m_history->Add(line);
        }
    }

    std::vector<std::string> Complete(const std::vector<std::string>& words, const std::string& beginning)
    {
        return Completions(words, beginning,
                           [this](const std::optional<std::string>& db, Kind kind, const std::string& part) {
                               return FindNames(db, kind, part);
                           });
    }

    /// Those of the open directory; none where it cannot be read, since the line that needs it will say why.
    std::vector<std::string> FindNames(const std::optional<std::string>& db, Kind kind, const std::string& beginning)
    {
        try {
            if (db && db != m_shared.arguments.db) {
                return {};
            }
            return CandidatesFor(m_shared.Open(), kind, beginning, kMostNames);
        } catch (const Error&) {
            m_shared.session.reset();
            return {};
        }
    }

    Terminal m_terminal;
    SharedSession m_shared;
    std::unique_ptr<LineEditor> m_editor;
    std::optional<LineHistory> m_history;
};

Exit RunShell(const LocalCall& call) { return CanAsk(call.terminal) ? Shell(call).Run() : RunBatchOfInput(call); }

Sentence ShellNotes()
{
    return Translatable("Keys: Tab completes a word, the arrows bring lines back, Ctrl-R looks for one, Ctrl-C gives\n"
                        "up the line or ends the command that runs, Ctrl-D or `exit` ends the shell. What is typed is\n"
                        "kept in qvadmin/history in $XDG_STATE_HOME or ~/.local/state, but for lines with passwords.\n"
                        "Where standard input is not a terminal, its lines are run as `qvadmin batch -` runs them.\n");
}

constexpr LocalCommand kShellCommands[] = {
    {{.path = {"shell"},
      .summary = "run commands as they are typed, over one connection",
      .examples = {"qvadmin shell", "qvadmin -p test shell"},
      .notes = &ShellNotes,
      .effect = Effect::change},
     &RunShell},
};

} // namespace

std::span<const LocalCommand> ShellCommands() { return kShellCommands; }

} // namespace console
