#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace management {

/// What somebody may do in the web console; each level may do all that those before it may.
enum class Level : std::uint8_t {
    none,
    readOnly,
    helpDesk, ///< also lock and unlock users, and give them passwords, but for super users
    full
};

/// As it is stored and shown, by level.
inline constexpr std::array<std::string_view, 4> kLevelNames = {"", "read-only", "help-desk", "full"};

constexpr std::string_view NameOf(Level level) { return kLevelNames.at(static_cast<std::size_t>(level)); }

/// The level of a name; nothing for any other text.
constexpr std::optional<Level> LevelOf(std::string_view name)
{
    for (std::size_t i = 0; i < kLevelNames.size(); ++i) {
        if (kLevelNames.at(i) == name) {
            return static_cast<Level>(i);
        }
    }
    return std::nullopt;
}

} // namespace management
