#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace dbaccess {

/// The numbers in texts that servers send and that people write in options. Nothing for a text that is not a number
/// from its first to its last character, or one that does not fit.
std::optional<std::int64_t> IntegerIn(std::string_view text);
/// Whatever the locale. As IntegerIn.
std::optional<double> RealIn(std::string_view text);

} // namespace dbaccess
