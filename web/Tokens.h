#pragma once

#include <string>
#include <string_view>

namespace web {

/// 256 random bits, in letters that a cookie, a header and a URL can have. @throws management::Error (failed).
std::string NewToken();
/// SHA-256 in hexadecimal.
std::string Digest(std::string_view text);
/// Whether two texts are equal, in a time that does not tell where they differ.
bool IsSame(std::string_view a, std::string_view b);

} // namespace web
