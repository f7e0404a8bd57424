#include "console/CommandOption.h"
#include "console/LocalCommand.h"
#include "console/Session.h"
#include "management/Candidates.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <ostream>

// Completion for shells: a script that asks this program what can come next, and the answer, from the table of commands
// and from the directory.

namespace console {

namespace {

constexpr std::size_t kMostNames = 500;

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

/// What was written before the word to complete, read as far as it can be.
struct Written {
    std::vector<std::string> path;
    const Command* command = nullptr;
    std::vector<ParamInfo> params;
    std::size_t positional = 0;        ///< how many positional values there are
    std::optional<std::string> option; ///< whose value comes next, without its dashes
    std::optional<std::string> db;
    bool optionsOver = false;
};

const ParamInfo* FindOption(const Written& written, std::string_view option)
{
    const auto found = std::ranges::find_if(written.params, [option](const ParamInfo& param) {
        return !param.isPositional && OptionName(param.name) == option;
    });
    return found == written.params.end() ? nullptr : &*found;
}

bool TakesValue(const Written& written, const std::string& option)
{
    static constexpr std::array<std::string_view, 7> kCommon = {"--db",  "-o", "--output", "--color",
                                                                "--log", "-p", "--profile"};
    if (std::ranges::find(kCommon, option) != kCommon.end()) {
        return true;
    }
    if (written.command == nullptr) {
        return false;
    }
    const std::vector<CommandOption> options = OptionsOf(*written.command);
    const auto found = std::ranges::find(options, option, &CommandOption::name);
    return found != options.end() && !found->placeholder.empty();
}

void TakeOption(Written& written, const std::string& word)
{
    constexpr std::string_view kDatabase = "--db=";
    if (word.starts_with(kDatabase)) {
        written.db = word.substr(kDatabase.size());
    }
    if (word.find('=') == std::string::npos && TakesValue(written, word)) {
        written.option = word;
    }
}

void TakeValue(Written& written, const std::string& word)
{
    if (*written.option == "--db") {
        written.db = word;
    }
    written.option.reset();
}

void TakePathWord(Written& written, const std::string& word)
{
    written.path.push_back(word);
    for (const Command* command : AllCommands()) {
        if (PathOf(*command) == written.path) {
            written.command = command;
            written.params = command->params();
        }
    }
}

void TakeWord(Written& written, const std::string& word)
{
    if (written.option) {
        TakeValue(written, word);
    } else if (!written.optionsOver && word == "--") {
        written.optionsOver = true;
    } else if (!written.optionsOver && word.starts_with('-')) {
        TakeOption(written, word);
    } else if (written.command != nullptr && !IsHead(*written.command)) {
        ++written.positional;
    } else {
        TakePathWord(written, word);
    }
}

void AddOptions(const Written& written, std::vector<std::string>& candidates)
{
    candidates.insert(candidates.end(), {"--help", "--db", "--output", "--quiet", "--wide", "--color", "--log",
                                         "--profile", "--ask-db-password"});
    if (written.command == nullptr) {
        return;
    }
    for (const CommandOption& option : OptionsOf(*written.command)) {
        candidates.push_back(option.name);
        if (option.isNegatable) {
            candidates.push_back(NegativeOf(option.name));
        }
    }
}

/// The words that can follow those of the path.
void AddNextWords(const Written& written, std::vector<std::string>& candidates)
{
    for (const Command* command : AllCommands()) {
        const std::vector<std::string> path = PathOf(*command);
        if (path.size() > written.path.size() && !command->summary.empty() &&
            std::equal(written.path.begin(), written.path.end(), path.begin())) {
            candidates.push_back(path[written.path.size()]);
        }
    }
}

/// The parameter whose value is to be completed; null when none takes one.
const ParamInfo* ParamAt(const Written& written, std::string_view beginning)
{
    if (written.option) {
        return FindOption(written, *written.option);
    }
    const ParamInfo* last = nullptr;
    const ParamInfo* list = nullptr;
    std::size_t count = 0;
    for (const ParamInfo& param : written.params) {
        if (param.isPositional) {
            last = &param;
            list = param.isList ? last : list;
            if (count++ == written.positional && list == nullptr) {
                return last;
            }
        }
    }
    // A path after names is that of the argument that comes after the list.
    return list != last && beginning.starts_with('/') ? last : list;
}

/// Names in the directory, compared without case; nothing when there is none that can be read: what a completion says
/// is written into somebody's command line.
std::vector<std::string> NamesIn(const Written& written, Kind kind, const std::string& beginning)
{
    try {
        Arguments arguments;
        arguments.db = written.db ? written.db : Config(Config::Files(), std::nullopt).Find("db");
        Session opened(arguments, Session::Indexes::leftAlone);
        return CandidatesFor(opened.Directory().Connection(), kind, beginning, kMostNames);
    } catch (const Error&) {
        return {};
    }
}

/// The words that a value must be one of; none where anything goes.
std::vector<std::string> ChoicesOf(const Written& written, std::string_view beginning)
{
    if (written.option == "-o" || written.option == "--output") {
        return {"table", "csv", "json", "jsonl", "plain"};
    }
    if (written.option == "--color") {
        return {"auto", "always", "never"};
    }
    std::vector<std::string> choices;
    const ParamInfo* param = ParamAt(written, beginning);
    const OneOf* words = param != nullptr ? std::get_if<OneOf>(&param->check) : nullptr;
    if (words != nullptr) {
        for (const std::string_view word : words->words) {
            if (!word.empty()) {
                choices.emplace_back(word);
            }
        }
    }
    return choices;
}

std::vector<std::string> CandidatesFor(const Written& written, const std::string& beginning)
{
    std::vector<std::string> candidates;
    const bool takesValue = written.option || (written.command != nullptr && !IsHead(*written.command));
    if (!written.optionsOver && !written.option && beginning.starts_with('-')) {
        AddOptions(written, candidates);
    } else if (takesValue) {
        candidates = ChoicesOf(written, beginning);
        const ParamInfo* param = ParamAt(written, beginning);
        if (candidates.empty() && param != nullptr) {
            return NamesIn(written, param->kind, beginning);
        }
    } else {
        AddNextWords(written, candidates);
    }
    std::erase_if(candidates, [&](const std::string& candidate) { return !candidate.starts_with(beginning); });
    std::ranges::sort(candidates);
    candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
    return candidates;
}

Exit PrintScript(const LocalCall& call)
{
    const auto in = binding::ReadInput<kShellParams>(call.given);
    call.terminal.out << (in.shell == "bash" ? kBash : in.shell == "zsh" ? kZsh : kFish);
    return Exit::done;
}

/// Writes what may stand in the place of the last word, one to a line.
Exit Complete(const LocalCall& call)
{
    std::vector<std::string> words = binding::ReadInput<kWordsParams>(call.given).words;
    if (words.empty()) {
        words.emplace_back();
    }
    Written written;
    std::for_each(words.begin(), words.end() - 1, [&written](const std::string& word) { TakeWord(written, word); });
    for (const std::string& candidate : CandidatesFor(written, words.back())) {
        call.terminal.out << candidate << '\n';
    }
    return Exit::done;
}

constexpr LocalCommand kCommands[] = {
    {{.path = {"completion"},
      .summary = "print the completion script of a shell",
      .examples = "  source <(qvadmin completion bash)\n"
                  "  qvadmin completion fish | source",
      .params = &InfosOf<kShellParams>},
     &PrintScript},
    {{.path = {"complete"}, .summary = "", .params = &InfosOf<kWordsParams>}, &Complete},
};

} // namespace

std::span<const LocalCommand> CompletionCommands() { return kCommands; }

} // namespace console
