#pragma once

#include <cstddef>
#include <istream>
#include <memory>
#include <ostream>

namespace console {

/// Where a command reads and writes: data to out, all else to err.
struct Terminal {
    std::istream& in;
    std::ostream& out;
    std::ostream& err;
    bool inIsTerminal;
    bool errIsTerminal;
    /// Whether whoever read out has closed it, as `head` does when it has enough.
    bool (*outIsClosed)() = [] { return false; };
    /// Where errors are said when err takes nothing; null: on err.
    std::ostream* errors = nullptr;
    /// Whether a command that gives rows is to end, as after Ctrl-C in a shell.
    bool (*isStopped)() noexcept = []() noexcept { return false; };
    bool outIsTerminal = false;
    /// Columns of the terminal that out is; 0: it is none, or its width is not known.
    std::size_t width = 0;
    bool outHasColor = false;
    bool errHasColor = false;
    /// Whether anything may have been committed, which copies share.
    std::shared_ptr<bool> mayHaveChanged = std::make_shared<bool>(false);
};

/// Where errors are said.
inline std::ostream& ErrorsOf(const Terminal& terminal)
{
    return terminal.errors == nullptr ? terminal.err : *terminal.errors;
}

/// Whether somebody sits there who can be asked.
inline bool CanAsk(const Terminal& terminal) { return terminal.inIsTerminal && terminal.errIsTerminal; }

} // namespace console
