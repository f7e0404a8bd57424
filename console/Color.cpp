#include "console/Color.h"

#include "console/Terminal.h"
#include "console/TerminalBuffer.h"

#include <cstdlib>

namespace console {

namespace {

/// Writes what acts on a terminal, past the buffer that would show it.
void WriteSequence(std::ostream& out, std::string_view sequence)
{
    auto* const buffer = dynamic_cast<TerminalBuffer*>(out.rdbuf());
    if (buffer == nullptr) {
        out << sequence;
    } else {
        out.flush();
        buffer->PassThrough(sequence);
    }
}

/// The value of the last --color; empty where there is none.
std::string_view GivenColor(const std::vector<std::string>& words)
{
    constexpr std::string_view option = "--color";
    std::string_view given;
    for (std::size_t i = 0; i < words.size() && words[i] != "--"; ++i) {
        const std::string_view word = words[i];
        if (word == option && i + 1 < words.size()) {
            given = words[i + 1];
        } else if (word.starts_with("--color=")) {
            given = word.substr(option.size() + 1);
        }
    }
    return given;
}

bool IsColorless()
{
    const char* noColor = std::getenv("NO_COLOR");
    const char* term = std::getenv("TERM");
    return (noColor != nullptr && *noColor != '\0') || (term != nullptr && std::string_view(term) == "dumb");
}

} // namespace

void WriteStyled(std::ostream& out, std::string_view text, Style style, bool hasColor)
{
    if (!hasColor) {
        out << text;
        return;
    }
    WriteSequence(out, style == Style::error ? "\x1B[1;31m" : "\x1B[1m");
    out << text;
    WriteSequence(out, "\x1B[0m");
}

bool HasColorOption(const std::vector<std::string>& words) { return !GivenColor(words).empty(); }

void ChooseColors(Terminal& terminal, const std::vector<std::string>& words, std::string_view configured)
{
    const std::string_view written = GivenColor(words);
    const std::string_view given = written.empty() ? configured : written;
    const bool isAutomatic = given != "always" && given != "never" && !IsColorless();
    terminal.outHasColor = given == "always" || (isAutomatic && terminal.outIsTerminal);
    terminal.errHasColor = given == "always" || (isAutomatic && terminal.errIsTerminal);
}

} // namespace console
