#pragma once

#include "console/ShellWords.h"

#include <histedit.h>

#include <clocale>
#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace console {

/// Reads lines from the terminal that standard input and standard error are, which can be edited, brought back, and
/// completed with the tabulator key.
class LineEditor {
public:
    /// Gives what completes a word of a line. @param words  those before it.
    using Complete =
        std::function<std::vector<std::string>(const std::vector<std::string>& words, const std::string& beginning)>;

    /// @param err  takes what a word can be completed to; outlives this. @throws Error (failed).
    LineEditor(std::string prompt, Complete complete, std::ostream& err);
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;
    ~LineEditor();

    /// The next line without its end; empty after Ctrl-C, nothing after Ctrl-D or when the terminal is gone.
    std::optional<std::string> Read();
    /// Lets a line be brought back.
    void Remember(const std::string& line);

private:
    static LineEditor& Of(EditLine* edit);
    static char* PromptOf(EditLine* edit);
    static unsigned char Cancel(EditLine* edit, int key);
    static unsigned char TakeTab(EditLine* edit, int key);
    unsigned char CompleteWord();
    void Replace(const UnfinishedLine& line, const std::string& word, bool isWhole);
    void List(const std::vector<std::string>& words);

    std::string m_prompt;
    Complete m_complete;
    std::ostream& m_err;
    locale_t m_locale; ///< in which characters are those of UTF-8
    std::unique_ptr<EditLine, decltype(&el_end)> m_edit;
    std::unique_ptr<History, decltype(&history_end)> m_history;
    bool m_isCancelled = false;
};

} // namespace console
