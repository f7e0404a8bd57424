#pragma once

#include <string_view>

struct sqlite3;

namespace dbaccess::sqlite {

/// Turns the engine's last failure on a handle into a CAException with its message and extended code.
/// @param what  when not empty: what was being done, put before the message.
[[noreturn]] void ThrowLastError(sqlite3* db, std::string_view what = {});

} // namespace dbaccess::sqlite
