#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace console {

/// A setting of the program, and where its value comes from.
struct ConfigValue {
    std::string name;
    std::string value;  ///< empty: it has none
    std::string origin; ///< such as "/etc/qvadmin/config.toml:3", "QVADMIN_DB" or "--db"
};

/// What a setting is called, and how it is checked.
struct ConfigKey {
    std::string_view name; ///< in a file, and with QVADMIN_ and in capitals in the environment
    bool isFlag = false;
    bool isPath = false;                          ///< has to be absolute in a file
    std::span<const std::string_view> words = {}; ///< one of these; none: any text
};

/// All settings, in the order in which they are shown.
std::span<const ConfigKey> ConfigKeys();

/// The settings that files, the environment and the command line give. A later one of these overrides an earlier one:
/// the files, in their order; the profile that a file or QVADMIN_PROFILE names, in each of the files; the environment;
/// the profile that the command line names; the command line.
class Config {
public:
    /// The files that are read: those of the system and of the user.
    static std::vector<std::string> Files();

    /// @param files  those that are not there are left out. @param profile  the one that the command line names.
    /// @throws Error (invalid) that names file and line for what is not TOML, for unknown settings, for values that
    /// cannot be and for a profile that no file has; (failed) for a file that cannot be read, and for one with a
    /// password that others than its owner can open.
    Config(const std::vector<std::string>& files, const std::optional<std::string>& profile);

    /// Overrides what there is by an option of the command line.
    void Override(std::string_view name, std::string value, std::string origin);

    /// Nothing when it has no value.
    [[nodiscard]] std::optional<std::string> Find(std::string_view name) const;
    [[nodiscard]] bool IsOn(std::string_view name) const { return Find(name) == "true"; }
    [[nodiscard]] const ConfigValue& At(std::string_view name) const;
    [[nodiscard]] const std::vector<ConfigValue>& Values() const { return m_values; }

private:
    std::vector<ConfigValue> m_values; ///< of each of ConfigKeys
};

} // namespace console
