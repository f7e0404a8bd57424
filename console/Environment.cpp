#include "console/Environment.h"

#include <cstdlib>

namespace console {

std::string_view Environment(const char* name)
{
    const char* value = std::getenv(name);
    return value == nullptr ? std::string_view{} : std::string_view(value);
}

std::optional<std::string> BaseDirectory(const char* variable, std::string_view belowHome)
{
    const std::string_view own = Environment(variable);
    if (own.starts_with('/')) {
        return std::string(own);
    }
    const std::string_view home = Environment("HOME");
    return home.starts_with('/') ? std::optional(std::string(home).append("/").append(belowHome)) : std::nullopt;
}

} // namespace console
