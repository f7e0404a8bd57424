#include "console/Config.h"

#include "console/Color.h"
#include "console/Environment.h"
#include "console/ExitCode.h"
#include "console/Render.h"
#include "console/TextFile.h"
#include "console/Url.h"
#include "management/Text.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <toml++/toml.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <filesystem>
#include <map>
#include <set>
#include <system_error>

namespace console {

namespace {

constexpr std::string_view kSystemFile = "/etc/qvadmin/config.toml";
constexpr std::string_view kProfiles = "profiles";
constexpr std::string_view kProfile = "profile";

const ConfigKey kKeys[] = {
    {"profile"},
    {"db"},
    {.name = "password_file", .isPath = true},
    {.name = "output", .words = kFormatNames},
    {.name = "color", .words = kColorWords},
    {.name = "quiet", .isFlag = true},
    {.name = "wide", .isFlag = true},
    {.name = "log", .isPath = true},
};

/// Values by the names of their settings.
using Values = std::map<std::string_view, ConfigValue>;

/// What one file says.
struct FileSettings {
    Values common;
    std::map<std::string, Values> profiles;
};

const ConfigKey* FindKey(std::string_view name)
{
    const auto* const key = std::ranges::find(kKeys, name, &ConfigKey::name);
    return key == std::end(kKeys) ? nullptr : key;
}

std::string VariableOf(std::string_view name)
{
    std::string variable = "QVADMIN_" + std::string(name);
    std::ranges::transform(variable, variable.begin(), [](unsigned char ch) { return std::toupper(ch); });
    return variable;
}

/// @throws Error (invalid) for a value that the setting cannot have. @param origin  begins the sentence.
void RequireValue(const ConfigKey& key, const std::string& value, std::string_view origin)
{
    if (!key.words.empty() && std::ranges::find(key.words, value) == key.words.end()) {
        throw Error(ErrorCode::invalid, FillPattern("{}: {} {} is not one of {}", origin, key.name, Quoted(value),
                                                    fmt::join(key.words, ", ")));
    }
    if (key.isFlag && value != "true" && value != "false") {
        throw Error(ErrorCode::invalid, FillPattern("{}: {} is true or false", origin, key.name));
    }
}

// ---- Files ----------------------------------------------------------------------------------------------------------

/// Reads one file.
class FileReader {
public:
    explicit FileReader(std::string file) : m_file(std::move(file)) {}

    FileSettings Read()
    {
        FileSettings settings;
        const toml::table table = Parse();
        for (const auto& [key, node] : table) {
            if (key.str() == kProfiles) {
                ReadProfiles(node, settings);
            } else {
                Add(key, node, settings.common);
            }
        }
        return settings;
    }

private:
    [[nodiscard]] toml::table Parse() const
    {
        try {
            return toml::parse(ReadTextFile(m_file), m_file);
        } catch (const toml::parse_error& e) {
            throw Error(ErrorCode::invalid,
                        FillPattern("{}:{}: {}", Visible(m_file), e.source().begin.line, Visible(e.description())));
        }
    }

    [[nodiscard]] std::string At(const toml::source_region& place) const
    {
        return fmt::format("{}:{}", Visible(m_file), place.begin.line);
    }

    void ReadProfiles(const toml::node& node, FileSettings& settings) const
    {
        const toml::table* profiles = node.as_table();
        if (profiles == nullptr) {
            throw Error(ErrorCode::invalid,
                        FillPattern("{}: profiles is a table, such as [profiles.production]", At(node.source())));
        }
        for (const auto& [name, profile] : *profiles) {
            const toml::table* table = profile.as_table();
            if (table == nullptr) {
                throw Error(ErrorCode::invalid, FillPattern("{}: a profile is a table, such as [profiles.{}]",
                                                            At(profile.source()), Visible(name.str())));
            }
            Values& values = settings.profiles[std::string(name.str())];
            for (const auto& [key, value] : *table) {
                Add(key, value, values);
                if (key.str() == kProfile) {
                    throw Error(ErrorCode::invalid, FillPattern("{}: a profile cannot name another", At(key.source())));
                }
            }
        }
    }

    void Add(const toml::key& name, const toml::node& node, Values& values) const
    {
        const std::string origin = At(name.source());
        const ConfigKey* key = FindKey(name.str());
        if (key == nullptr) {
            std::vector<std::string_view> names;
            std::ranges::transform(kKeys, std::back_inserter(names), &ConfigKey::name);
            throw Error(ErrorCode::invalid, FillPattern("{}: there is no setting {}; there are {} and {}", origin,
                                                        Quoted(name.str()), fmt::join(names, ", "), kProfiles));
        }
        values[key->name] = {std::string(key->name), TextOf(*key, node, origin), origin};
    }

    [[nodiscard]] std::string TextOf(const ConfigKey& key, const toml::node& node, const std::string& origin) const
    {
        const std::optional<bool> flag = node.value_exact<bool>();
        const std::optional<std::string> text = node.value_exact<std::string>();
        if (key.isFlag ? !flag : !text) {
            throw Error(ErrorCode::invalid,
                        FillPattern("{}: {} is {}", origin, key.name, key.isFlag ? "true or false" : "a text"));
        }
        std::string value = key.isFlag ? (*flag ? "true" : "false") : *text;
        RequireValue(key, value, origin);
        if (key.isPath && !value.starts_with('/')) {
            throw Error(ErrorCode::invalid, FillPattern("{}: {} is not an absolute path", origin, key.name));
        }
        if (key.name == "db") {
            RequireScheme(value, fmt::format("{}: db", origin));
        }
        if (key.name == "db" && HoldsPassword(value)) {
            RequireClosed(origin);
        }
        return value;
    }

    void RequireClosed(const std::string& origin) const
    {
        struct stat status{};
        if (::stat(m_file.c_str(), &status) != 0 || (status.st_mode & (S_IRWXG | S_IRWXO)) != 0) {
            throw Error(ErrorCode::failed,
                        FillPattern("{}: db holds a password, and the file is open to others than its owner; put the "
                                    "password into a file of its own and name that with password_file, or chmod 600 {}",
                                    origin, Visible(m_file)));
        }
    }

    std::string m_file;
};

void Apply(const Values& from, std::vector<ConfigValue>& to)
{
    for (const auto& [name, value] : from) {
        *std::ranges::find(to, name, &ConfigValue::name) = value;
    }
}

Values FromEnvironment()
{
    Values values;
    for (const ConfigKey& key : kKeys) {
        const std::string variable = VariableOf(key.name);
        const std::string value(Environment(variable.c_str()));
        if (!value.empty()) {
            RequireValue(key, value, variable);
            values[key.name] = {std::string(key.name), value, variable};
        }
    }
    return values;
}

/// Applies a profile of each file. @throws Error (invalid) when none has it.
void ApplyProfile(const std::vector<FileSettings>& files, const std::string& profile, std::vector<ConfigValue>& values)
{
    bool isThere = false;
    std::set<std::string> names;
    for (const FileSettings& file : files) {
        const auto found = file.profiles.find(profile);
        if (found != file.profiles.end()) {
            Apply(found->second, values);
            isThere = true;
        }
        std::ranges::transform(file.profiles, std::inserter(names, names.end()),
                               [](const auto& it) { return it.first; });
    }
    if (!isThere) {
        throw Error(ErrorCode::invalid,
                    FillPattern("there is no profile {}; {}", Quoted(profile),
                                names.empty()
                                    ? "no configuration file has any"
                                    : fmt::format("there are {}", Visible(fmt::format("{}", fmt::join(names, ", "))))));
    }
}

} // namespace

std::span<const ConfigKey> ConfigKeys() { return kKeys; }

std::vector<std::string> Config::Files()
{
    std::vector<std::string> files = {std::string(kSystemFile)};
    if (const std::optional<std::string> directory = BaseDirectory("XDG_CONFIG_HOME", ".config")) {
        files.push_back(*directory + "/qvadmin/config.toml");
    }
    return files;
}

Config::Config(const std::vector<std::string>& files, const std::optional<std::string>& profile)
{
    std::ranges::transform(kKeys, std::back_inserter(m_values),
                           [](const ConfigKey& key) { return ConfigValue{std::string(key.name), "", "default"}; });
    std::vector<FileSettings> read;
    for (const std::string& file : files) {
        std::error_code error;
        if (std::filesystem::exists(file, error) || error) {
            read.push_back(FileReader(file).Read());
            Apply(read.back().common, m_values);
        }
    }
    const auto environment = FromEnvironment();
    if (const auto named = environment.find(kProfile); named != environment.end()) {
        Override(kProfile, named->second.value, named->second.origin);
    }
    if (const std::optional<std::string> usual = Find(kProfile); usual && !profile) {
        ApplyProfile(read, *usual, m_values);
    }
    Apply(environment, m_values);
    if (profile) {
        ApplyProfile(read, *profile, m_values);
        Override(kProfile, *profile, "--profile");
    }
}

void Config::Override(std::string_view name, std::string value, std::string origin)
{
    ConfigValue& overridden = *std::ranges::find(m_values, name, &ConfigValue::name);
    overridden.value = std::move(value);
    overridden.origin = std::move(origin);
}

const ConfigValue& Config::At(std::string_view name) const
{
    return *std::ranges::find(m_values, name, &ConfigValue::name);
}

std::optional<std::string> Config::Find(std::string_view name) const
{
    const ConfigValue& value = At(name);
    return value.origin == "default" ? std::nullopt : std::optional(value.value);
}

} // namespace console
