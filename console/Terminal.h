#pragma once

#include <istream>
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
};

} // namespace console
