#include "console/DatabasePassword.h"

#include "console/Secrets.h"
#include "console/Url.h"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

namespace console {

namespace {

constexpr const char* kVariable = "QVADMIN_PASSWORD";
constexpr std::string_view kSetting = "password_file";

/// The file of the credential that systemd gives a service; nothing where there is none.
std::optional<std::string> CredentialFile()
{
    const char* folder = std::getenv("CREDENTIALS_DIRECTORY");
    if (folder == nullptr || *folder == '\0') {
        return std::nullopt;
    }
    const std::string file = std::string(folder) + "/qvadmin-password";
    std::error_code error;
    return std::filesystem::exists(file, error) ? std::optional(file) : std::nullopt;
}

/// Empty where there is none.
std::string_view Variable()
{
    const char* value = std::getenv(kVariable);
    return value == nullptr ? std::string_view() : std::string_view(value);
}

/// Nothing when there is no password.
std::optional<Secret> Obtain(const Config& config, bool ask, Terminal& terminal)
{
    SecretQuestion question{"database password", "Password for the database", false,
                            "a file for it in the configuration"};
    if (ask) {
        return ObtainSecret({}, question, terminal);
    }
    if (!Variable().empty()) {
        return Secret(Variable());
    }
    std::optional<std::string> file = config.Find(kSetting);
    file = file ? file : CredentialFile();
    return file ? std::optional(ObtainSecret({.file = file}, question, terminal)) : std::nullopt;
}

} // namespace

std::string WithPassword(const std::string& url, const Config& config, bool ask, Terminal& terminal)
{
    if (!TakesPassword(url)) {
        return url;
    }
    const std::optional<Secret> password = Obtain(config, ask, terminal);
    return password ? WithPassword(url, password->View()) : url;
}

std::string PasswordOrigin(const Config& config)
{
    const std::optional<std::string> file = CredentialFile();
    return !Variable().empty() ? kVariable : config.Find(kSetting) ? config.At(kSetting).origin : file ? *file : "";
}

} // namespace console
