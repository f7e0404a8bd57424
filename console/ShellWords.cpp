#include "console/ShellWords.h"

#include "management/Errors.h"

#include <utility>

namespace console {

using management::Error;
using management::ErrorCode;

namespace {

constexpr std::string_view kBlanks = " \t\r";
/// May begin a command line that is written without it, so that lines can be pasted.
constexpr std::string_view kProgram = "qvadmin";

/// Reads one word after the other.
class Words {
public:
    /// @param isOpen  whether a quote may be open at the end of the line, as while it is being written.
    explicit Words(std::string_view line, bool isOpen = false) : m_rest(line), m_isOpen(isOpen) {}

    [[nodiscard]] std::string_view Rest() const { return m_rest; }

    /// @return false at the end of the line.
    bool Next(std::string& word)
    {
        const std::size_t begin = m_rest.find_first_not_of(kBlanks);
        if (begin == std::string_view::npos || m_rest[begin] == '#') {
            return false;
        }
        m_rest.remove_prefix(begin);
        word.clear();
        while (!m_rest.empty() && kBlanks.find(m_rest.front()) == std::string_view::npos) {
            TakePiece(word);
        }
        return true;
    }

private:
    void TakePiece(std::string& word)
    {
        const char c = m_rest.front();
        m_rest.remove_prefix(1);
        if (c == '\'') {
            word += TakeUpTo('\'');
        } else if (c == '"') {
            TakeQuoted(word);
        } else if (c == '\\' && !m_rest.empty()) {
            word += m_rest.front();
            m_rest.remove_prefix(1);
        } else {
            word += c;
        }
    }
    std::string_view TakeUpTo(char quote)
    {
        const std::size_t end = m_rest.find(quote);
        if (end == std::string_view::npos) {
            EndOpen();
            return std::exchange(m_rest, {});
        }
        const std::string_view text = m_rest.substr(0, end);
        m_rest.remove_prefix(end + 1);
        return text;
    }
    /// Between double quotes a backslash hides a quote or another backslash, and is itself otherwise.
    void TakeQuoted(std::string& word)
    {
        while (!m_rest.starts_with('"')) {
            if (m_rest.empty()) {
                EndOpen();
                return;
            }
            const bool isEscape = m_rest.starts_with("\\\"") || m_rest.starts_with("\\\\");
            word += m_rest[isEscape ? 1 : 0];
            m_rest.remove_prefix(isEscape ? 2 : 1);
        }
        m_rest.remove_prefix(1);
    }
    void EndOpen() const
    {
        if (!m_isOpen) {
            throw Error(ErrorCode::invalid, "a quote in this line is not closed");
        }
    }

    std::string_view m_rest;
    bool m_isOpen;
};

void DropProgram(std::vector<std::string>& words)
{
    if (!words.empty() && words.front() == kProgram) {
        words.erase(words.begin());
    }
}

} // namespace

std::vector<std::string> SplitShellWords(std::string_view line)
{
    std::vector<std::string> all;
    Words words(line);
    for (std::string word; words.Next(word);) {
        all.push_back(word);
    }
    return all;
}

std::vector<std::string> SplitCommandLine(std::string_view line)
{
    std::vector<std::string> words = SplitShellWords(line);
    DropProgram(words);
    return words;
}

UnfinishedLine SplitUnfinishedLine(std::string_view line)
{
    UnfinishedLine split;
    Words words(line, true);
    std::string_view before = line;
    for (std::string word; words.Next(word); before = words.Rest()) {
        if (words.Rest().empty()) {
            split.last = std::move(word);
            split.lastAsWritten = before.substr(before.find_first_not_of(kBlanks));
            break;
        }
        split.words.push_back(word);
    }
    DropProgram(split.words);
    return split;
}

} // namespace console
