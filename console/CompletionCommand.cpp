#include "console/Completion.h"
#include "console/LocalCommand.h"
#include "console/Session.h"
#include "management/Candidates.h"

#include <ostream>
#include <utility>

// Completion for shells: a script that asks this program what can come next, and the answer, from the table of commands
// and from the directory.

namespace console {

namespace {

constexpr std::string_view kBash = R"sh(# Completion for bash: source <(qvadmin completion bash)
_qvadmin() {
    local cur words cword names
    _get_comp_words_by_ref -n := cur words cword
    mapfile -t names < <("${words[0]}" complete -- "${words[@]:1:cword}" 2>/dev/null)
    COMPREPLY=()
    local name
    for name in "${names[@]}"; do
        COMPREPLY+=("$(printf %q "$name")")
    done
    __ltrim_colon_completions "$cur"
}
complete -o default -F _qvadmin qvadmin
)sh";

constexpr std::string_view kZsh = R"sh(#compdef qvadmin
# Completion for zsh: source <(qvadmin completion zsh)
_qvadmin() {
    local -a names
    names=("${(@f)$("${words[1]}" complete -- "${(@)words[2,CURRENT]}" 2>/dev/null)}")
    if [[ -n "${names[*]}" ]]; then
        compadd -a names
    else
        _files
    fi
}
compdef _qvadmin qvadmin
)sh";

constexpr std::string_view kFish = R"sh(# Completion for fish: qvadmin completion fish | source
function __qvadmin_complete
    set -l words (commandline -opc)
    $words[1] complete -- $words[2..-1] (commandline -ct) 2>/dev/null
end
complete -c qvadmin -a '(__qvadmin_complete)'
)sh";

struct ShellInput {
    std::string shell;
};

constexpr Param<ShellInput> kShellParams[] = {
    {"SHELL", &ShellInput::shell, Kind::choice, "bash, zsh or fish", OneOf{{"bash", "zsh", "fish"}}}};

struct WordsInput {
    std::vector<std::string> words;
};

constexpr Param<WordsInput> kWordsParams[] = {
    {"WORD", &WordsInput::words, Kind::text, "the words after the program's name, up to the one to complete"}};

/// Names in the directory; none when there is none that can be read: what a completion says is written into somebody's
/// command line.
std::vector<std::string> NamesIn(const std::optional<std::string>& db, Kind kind, const std::string& beginning)
{
    try {
        Arguments arguments;
        arguments.db = db ? db : Config(Config::Files(), std::nullopt).Find("db");
        Session opened(arguments, Session::Indexes::leftAlone);
        return CandidatesFor(opened.Directory().Connection(), kind, beginning, kMostNames);
    } catch (const Error&) {
        return {};
    }
}

Exit PrintScript(const LocalCall& call)
{
    const auto in = binding::ReadInput<kShellParams>(call.given);
    call.terminal.out << (in.shell == "bash" ? kBash : in.shell == "zsh" ? kZsh : kFish);
    return Exit::done;
}

/// Writes what completes the last word, one to a line.
Exit Complete(const LocalCall& call)
{
    std::vector<std::string> words = binding::ReadInput<kWordsParams>(call.given).words;
    std::string beginning;
    if (!words.empty()) {
        beginning = std::move(words.back());
        words.pop_back();
    }
    for (const std::string& candidate : Completions(words, beginning, &NamesIn)) {
        call.terminal.out << candidate << '\n';
    }
    return Exit::done;
}

constexpr LocalCommand kCompletionCommands[] = {
    {{.path = {"completion"},
      .summary = "print the completion script of a shell",
      .examples = {"source <(qvadmin completion bash)", "qvadmin completion fish | source"},
      .handler = {&InfosOf<kShellParams>}},
     &PrintScript},
    {{.path = {"complete"}, .summary = "", .handler = {&InfosOf<kWordsParams>}}, &Complete},
};

} // namespace

std::span<const LocalCommand> CompletionCommands() { return kCompletionCommands; }

} // namespace console
