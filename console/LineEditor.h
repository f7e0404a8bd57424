#pragma once

#include <cstddef>
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

    /// Says how many more words there are than were listed.
    using SayMore = std::function<std::string(std::size_t count)>;

    LineEditor() = default;
    LineEditor(const LineEditor&) = delete;
    LineEditor& operator=(const LineEditor&) = delete;
    virtual ~LineEditor() = default;

    /// The next line without its end; empty after Ctrl-C, nothing after Ctrl-D or when the terminal is gone.
    virtual std::optional<std::string> Read() = 0;
    /// Lets a line be brought back.
    virtual void Remember(const std::string& line) = 0;
};

/// Loads the module that has the library for it. @param sayMore  called when there are. @param err  takes what a word
/// can be completed to; outlives the editor. @throws management::Error (failed).
std::unique_ptr<LineEditor> OpenLineEditor(const std::string& prompt, const LineEditor::Complete& complete,
                                           const LineEditor::SayMore& sayMore, std::ostream& err);

/// What the module exports, and under which names. The caller owns what it returns.
using OpenLineEditorFunction = LineEditor*(const std::string* prompt, const LineEditor::Complete* complete,
                                           const LineEditor::SayMore* sayMore, std::ostream* err);
inline constexpr const char* kLineEditorModule = "edit";
inline constexpr const char* kOpenLineEditorSymbol = "QvOpenLineEditor";

} // namespace console
