#include "console/ShellWords.h"

#include "management/Errors.h"

namespace console {

using management::Error;
using management::ErrorCode;

namespace {

/// Reads one word after the other.
class Words {
public:
    explicit Words(std::string_view line) : m_rest(line) {}

    /// @return false at the end of the line.
    bool Next(std::string& word)
    {
        const std::size_t begin = m_rest.find_first_not_of(" \t\r");
        if (begin == std::string_view::npos || m_rest[begin] == '#') {
            return false;
        }
        m_rest.remove_prefix(begin);
        word.clear();
        while (!m_rest.empty() && std::string_view(" \t\r").find(m_rest.front()) == std::string_view::npos) {
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
            ThrowNotClosed();
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
                ThrowNotClosed();
            }
            const bool isEscape = m_rest.starts_with("\\\"") || m_rest.starts_with("\\\\");
            word += m_rest[isEscape ? 1 : 0];
            m_rest.remove_prefix(isEscape ? 2 : 1);
        }
        m_rest.remove_prefix(1);
    }
    [[noreturn]] static void ThrowNotClosed() { throw Error(ErrorCode::invalid, "a quote in this line is not closed"); }

    std::string_view m_rest;
};

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

} // namespace console
