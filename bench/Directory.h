#pragma once

#include "bench/ByHand.h"
#include "dbaccess/CAConnect.h"

#include <string>

namespace bench {

/// One file, opened by both sides.
struct Directory {
    explicit Directory(const std::string& path) : hand(path) { conn.Open(("sqlite:" + path).c_str()); }

    ByHand hand;
    CAConnect conn;
};

} // namespace bench
