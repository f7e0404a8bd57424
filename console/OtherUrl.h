#pragma once

#include <string>
#include <string_view>

namespace console {

/// @param source  names the URL in the sentence, such as "the target". @throws Error (invalid) as RequireScheme does,
/// and for a URL on the command line with a password in it, which others can read while the command runs.
void RequireOtherUrl(const std::string& url, std::string_view source);

} // namespace console
