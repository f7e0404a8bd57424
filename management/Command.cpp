#include "management/Command.h"

#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>

namespace management {

std::vector<ParamInfo> NoParams() { return {}; }

namespace binding {

namespace {

/// As it is written in a sentence: an option with its dashes.
std::string Shown(std::string_view name)
{
    if (IsPositional(name)) {
        return std::string(name);
    }
    std::string option = "--" + std::string(name);
    std::ranges::replace(option, '_', '-');
    return option;
}

} // namespace

bool IsPositional(std::string_view name) { return std::isupper(static_cast<unsigned char>(name.front())) != 0; }

void ThrowMissing(std::string_view name)
{
    throw Error(ErrorCode::invalid, fmt::format("{} is required", Shown(name)));
}

NamedTexts GivenTexts(const std::vector<NamedText>& options, const ArgumentSource& source)
{
    NamedTexts texts;
    for (const NamedText& option : options) {
        if (const std::vector<std::string> given = source.ValuesOf(option.name); !given.empty()) {
            texts[std::string(option.name)] = given.front();
        }
    }
    return texts;
}

std::int64_t ReadNumber(std::string_view name, const std::string& text, const Check& check, Range widest)
{
    const Range* given = std::get_if<Range>(&check);
    const Range range = given != nullptr ? *given : widest;
    std::int64_t number = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end || number < range.least || number > range.most) {
        throw Error(ErrorCode::invalid, fmt::format("{} {} is not a whole number from {} to {}", Shown(name),
                                                    Quoted(text), range.least, range.most));
    }
    return number;
}

void RequireKnownWord(std::string_view name, const std::string& text, const Check& check)
{
    const auto* known = std::get_if<OneOf>(&check);
    const bool isKnown =
        known != nullptr && !text.empty() && std::ranges::find(known->words, text) != known->words.end();
    if (known == nullptr || isKnown) {
        return;
    }
    std::string all;
    for (const std::string_view word : known->words) {
        all += word.empty() ? "" : (all.empty() ? "" : ", ") + std::string(word);
    }
    throw Error(ErrorCode::invalid, fmt::format("{} {} is not one of {}", Shown(name), Quoted(text), all));
}

} // namespace binding

Level LeastLevel(const Command& command)
{
    const bool triesSecret =
        std::ranges::any_of(command.params(), [](const ParamInfo& param) { return param.kind == Kind::secret; });
    const bool isHarmless = command.effect == Effect::read && command.risk == Risk::normal && !triesSecret;
    return command.level.value_or(isHarmless ? Level::readOnly : Level::full);
}

} // namespace management
