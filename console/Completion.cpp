#include "console/Completion.h"

#include "console/Color.h"
#include "console/CommandOption.h"
#include "console/LocalCommand.h"
#include "console/Render.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace console {

namespace {

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
            written.params = command->handler.params();
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

/// The words that a value must be one of; none where anything goes.
std::vector<std::string> ChoicesOf(const Written& written, std::string_view beginning)
{
    if (written.option == "-o" || written.option == "--output") {
        return {kFormatNames.begin(), kFormatNames.end()};
    }
    if (written.option == "--color") {
        return {kColorWords.begin(), kColorWords.end()};
    }
    const ParamInfo* param = ParamAt(written, beginning);
    const std::vector<std::string_view> words =
        param != nullptr ? WordsOf(param->check) : std::vector<std::string_view>();
    return {words.begin(), words.end()};
}

std::vector<std::string> CandidatesFor(const Written& written, const std::string& beginning, const FindNames& names)
{
    std::vector<std::string> candidates;
    const bool takesValue = written.option || (written.command != nullptr && !IsHead(*written.command));
    if (!written.optionsOver && !written.option && beginning.starts_with('-')) {
        AddOptions(written, candidates);
    } else if (takesValue) {
        candidates = ChoicesOf(written, beginning);
        const ParamInfo* param = ParamAt(written, beginning);
        if (candidates.empty() && param != nullptr) {
            return names(written.db, param->kind, beginning);
        }
    } else {
        AddNextWords(written, candidates);
    }
    std::erase_if(candidates, [&](const std::string& candidate) { return !candidate.starts_with(beginning); });
    std::ranges::sort(candidates);
    candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
    return candidates;
}

} // namespace

std::vector<std::string> Completions(const std::vector<std::string>& words, const std::string& beginning,
                                     const FindNames& names)
{
    Written written;
    for (const std::string& word : words) {
        TakeWord(written, word);
    }
    return CandidatesFor(written, beginning, names);
}

} // namespace console
