#include "RunInProcess.h"

#include "console/Commands.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <map>
#include <optional>
#include <sstream>

namespace {

/// The folder and the variables that a command sees, while it lives.
class Surroundings {
public:
    explicit Surroundings(const ChildOptions& options) : m_folder(std::filesystem::current_path())
    {
        for (const char* name : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "CREDENTIALS_DIRECTORY", "QVADMIN_DB",
                                 "QVADMIN_PROFILE", "QVADMIN_OUTPUT", "QVADMIN_PASSWORD", "QVADMIN_PASSWORD_FILE",
                                 "LC_ALL", "LC_MESSAGES", "LANG", "LANGUAGE", "LOCPATH"}) {
            const char* value = std::getenv(name);
            m_old[name] = value != nullptr ? std::optional<std::string>(value) : std::nullopt;
            ::unsetenv(name);
        }
        for (const auto& [name, value] : options.environment) {
            ::setenv(name.c_str(), value.c_str(), 1);
        }
        std::filesystem::current_path(options.directory);
    }
    Surroundings(const Surroundings&) = delete;
    Surroundings& operator=(const Surroundings&) = delete;
    ~Surroundings()
    {
        for (const auto& [name, value] : m_old) {
            if (value) {
                ::setenv(name.c_str(), value->c_str(), 1);
            } else {
                ::unsetenv(name.c_str());
            }
        }
        std::error_code error;
        std::filesystem::current_path(m_folder, error);
    }

private:
    std::filesystem::path m_folder;
    std::map<std::string, std::optional<std::string>> m_old;
};

} // namespace

ChildResult RunInProcess(const std::vector<std::string>& arguments, const ChildOptions& options)
{
    const Surroundings surroundings(options);
    SetAnsiCodePage(CP_UTF8);
    std::vector<const char*> words = {"qvadmin"};
    std::ranges::transform(arguments, std::back_inserter(words), &std::string::c_str);
    std::istringstream in(options.input);
    std::ostringstream out;
    std::ostringstream err;
    console::Terminal terminal{in, out, err, false, false};
    ChildResult result;
    result.exit = console::RunProgram(static_cast<int>(words.size()), words.data(), terminal);
    result.out = out.str();
    result.err = err.str();
    return result;
}
