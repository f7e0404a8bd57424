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
};

} // namespace console
