#include "management/Command.h"

#include "management/Text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <iterator>

namespace management {

std::vector<ParamInfo> ListOf(std::span<const ParamInfo> params) { return {params.begin(), params.end()}; }

std::vector<std::string_view> WordsOf(const Check& check)
{
    if (const auto* list = std::get_if<ListWords>(&check)) {
        return (*list)();
    }
    std::vector<std::string_view> words;
    if (const auto* fixed = std::get_if<OneOf>(&check)) {
        std::ranges::copy_if(fixed->words, std::back_inserter(words), [](auto word) { return !word.empty(); });
    }
    return words;
}

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

void ThrowMissing(std::string_view name)
{
    throw Error(ErrorCode::invalid, FillPattern("{} is required", Shown(name)));
}

std::int64_t ReadNumber(std::string_view name, const std::string& text, const Check& check, Range widest)
{
    const Range* given = std::get_if<Range>(&check);
    const Range range = given != nullptr ? *given : widest;
    std::int64_t number = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    // The bounds of a type tell nobody what is wrong with a word.
    const bool isNumber = read.ec != std::errc::invalid_argument && read.ptr == end;
    if (!isNumber && range.least == kInt.least && range.most == kInt.most) {
        throw Error(ErrorCode::invalid, FillPattern("{} {} is not a whole number", Shown(name), Quoted(text)));
    }
    if (read.ec != std::errc() || read.ptr != end || number < range.least || number > range.most) {
        throw Error(ErrorCode::invalid, FillPattern("{} {} is not a whole number from {} to {}", Shown(name),
                                                    Quoted(text), range.least, range.most));
    }
    return number;
}

namespace {

/// What was given of these options.
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

/// @throws Error (invalid) for a word that the check does not know.
void RequireKnownWord(std::string_view name, const std::string& text, const Check& check)
{
    const std::vector<std::string_view> words = WordsOf(check);
    if (!words.empty() && std::ranges::find(words, text) == words.end()) {
        throw Error(ErrorCode::invalid, FillPattern("{} {} is not one of {}", Shown(name), Quoted(text),
                                                    fmt::format("{}", fmt::join(words, ", "))));
    }
}

/// Gives a member what was given for its parameter, at least one text. @throws Error (invalid).
template <class Member>
void Assign(const ParamInfo& param, const std::vector<std::string>& given, Member& member)
{
    if constexpr (std::is_same_v<Member, std::vector<std::string>> || std::is_same_v<Member, OptionalTexts>) {
        member = given;
    } else if constexpr (std::is_same_v<Member, bool> || std::is_same_v<Member, std::optional<bool>>) {
        member = given.front() == "1";
    } else if constexpr (std::is_same_v<Member, int> || std::is_same_v<Member, std::optional<int>>) {
        member = static_cast<int>(ReadNumber(param.name, given.front(), param.check, kInt));
    } else if constexpr (std::is_same_v<Member, std::optional<std::uint32_t>>) {
        member = static_cast<std::uint32_t>(ReadNumber(param.name, given.front(), param.check, kUnsigned));
    } else {
        RequireKnownWord(param.name, given.front(), param.check);
        member = given.front();
    }
}

} // namespace

template <class Member>
void ReadMember(const ParamInfo& param, const ArgumentSource& source, Member& member)
{
    if constexpr (std::is_same_v<Member, NamedTexts>) {
        member = GivenTexts(std::get<ListNamedTexts>(param.check)(), source);
    } else if (const std::vector<std::string> given = source.ValuesOf(param.name); !given.empty()) {
        Assign(param, given, member);
    } else if (param.isRequired) {
        ThrowMissing(param.name);
    }
}

template void ReadMember(const ParamInfo& param, const ArgumentSource& source, std::string& member);
template void ReadMember(const ParamInfo& param, const ArgumentSource& source, std::optional<std::string>& member);
template void ReadMember(const ParamInfo& param, const ArgumentSource& source, int& member);
template void ReadMember(const ParamInfo& param, const ArgumentSource& source, std::optional<int>& member);
template void ReadMember(const ParamInfo& param, const ArgumentSource& source, std::optional<std::uint32_t>& member);
template void ReadMember(const ParamInfo& param, const ArgumentSource& source, bool& member);
template void ReadMember(const ParamInfo& param, const ArgumentSource& source, std::optional<bool>& member);
template void ReadMember(const ParamInfo& param, const ArgumentSource& source, std::vector<std::string>& member);
template void ReadMember(const ParamInfo& param, const ArgumentSource& source, OptionalTexts& member);
template void ReadMember(const ParamInfo& param, const ArgumentSource& source, NamedTexts& member);

} // namespace binding

Level LeastLevel(const Command& command)
{
    const bool triesSecret = std::ranges::any_of(command.handler.params(),
                                                 [](const ParamInfo& param) { return param.kind == Kind::secret; });
    const bool isHarmless = command.effect == Effect::read && command.risk == Risk::normal && !triesSecret;
    return command.level.value_or(isHarmless ? Level::readOnly : Level::full);
}

namespace {

bool IsQuestion(const Command& command, const ArgumentSource& source)
{
    return command.handler.isQuestion != nullptr && command.handler.isQuestion(source);
}

} // namespace

Level LeastLevel(const Command& command, const ArgumentSource& source)
{
    return IsQuestion(command, source) ? Level::readOnly : LeastLevel(command);
}

bool IsReading(const Command& command, const ArgumentSource& source)
{
    return command.effect == Effect::read || IsQuestion(command, source);
}

} // namespace management
