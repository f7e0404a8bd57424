#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace console {

/// The value of a variable; empty where there is none.
std::string_view Environment(const char* name);

/// One of the user's directories by the base directory rules, by which a relative path in the variable is ignored.
/// @param variable  such as XDG_DATA_HOME. @param belowHome  where it is without that, such as ".local/share".
/// @return nothing when there is no home directory.
std::optional<std::string> BaseDirectory(const char* variable, std::string_view belowHome);

} // namespace console
