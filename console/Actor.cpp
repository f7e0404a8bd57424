#include "console/Actor.h"

#include "management/CommandData.h"
#include "management/Text.h"

#include <fmt/format.h>
#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string_view>
#include <utility>

namespace console {

using management::ShellQuoted;
using management::Shortened;

namespace {

/// An option that is not part of what was done. @param value  whether the next word is its value.
struct RunOption {
    std::string_view name;
    bool hasValue;
};

constexpr std::array<RunOption, 14> kRunOptions = {{{"--db", true},
                                                    {"-o", true},
                                                    {"--output", true},
                                                    {"--reason", true},
                                                    {"--yes", false},
                                                    {"--dry-run", false},
                                                    {"-q", false},
                                                    {"--quiet", false},
                                                    {"--wide", false},
                                                    {"--color", true},
                                                    {"--log", true},
                                                    {"-p", true},
                                                    {"--profile", true},
                                                    {"--ask-db-password", false}}};

} // namespace

std::string ActorName()
{
    constexpr std::size_t longest = 16384;
    std::vector<char> buffer(longest);
    passwd entry{};
    passwd* found = nullptr;
    const uid_t uid = getuid();
    const bool isKnown = getpwuid_r(uid, &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr;
    std::string name = isKnown ? std::string(found->pw_name) : fmt::format("uid {}", uid);
    const char* sudo = uid == 0 ? std::getenv("SUDO_USER") : nullptr;
    if (sudo != nullptr && *sudo != '\0' && name != sudo) {
        name += fmt::format(" (sudo by {})", sudo);
    }
    return name;
}

std::string CommandText(const std::vector<std::string>& words)
{
    std::string text;
    bool optionsOver = false;
    for (std::size_t i = 0; i < words.size(); ++i) {
        const std::string& word = words[i];
        optionsOver = optionsOver || word == "--";
        const auto* const option = std::ranges::find_if(kRunOptions, [&word](const RunOption& known) {
            const bool isLong = known.name.starts_with("--");
            return word == known.name ||
                   (known.hasValue && word.starts_with(known.name) && (!isLong || word[known.name.size()] == '='));
        });
        if (!optionsOver && option != kRunOptions.end()) {
            i += option->hasValue && word == option->name ? 1 : 0;
            continue;
        }
        text += (text.empty() ? "" : " ") + ShellQuoted(word);
    }
    return Shortened(std::move(text));
}

} // namespace console
