#include "management/Sentence.h"

#include <fmt/args.h>

#include <functional>
#include <utility>

namespace management {

namespace {

using ToText = std::function<std::string(const Sentence::Argument&)>;

/// @throws fmt::format_error for a pattern with other places than there are arguments.
std::string Fill(const std::string& pattern, const std::vector<Sentence::Argument>& arguments, const ToText& textOf)
{
    fmt::dynamic_format_arg_store<fmt::format_context> store;
    for (const Sentence::Argument& argument : arguments) {
        store.push_back(textOf(argument));
    }
    return fmt::vformat(pattern, store);
}

std::string EnglishOf(const Sentence::Origin& origin)
{
    const bool isPlural = !origin.plural.empty() && origin.count != 1;
    return Fill(isPlural ? origin.plural : origin.pattern, origin.arguments,
                [](const Sentence::Argument& argument) { return argument.text.English(); });
}

thread_local const Language* spoken = nullptr;

} // namespace

Sentence::Sentence(Origin origin)
    : m_english(EnglishOf(origin)), m_origin(std::make_shared<const Origin>(std::move(origin)))
{
}

Sentence operator+(const Sentence& first, const Sentence& second)
{
    return Sentence(Sentence::Origin{"{}{}", {}, 0, {{first, false}, {second, false}}});
}

Sentence Joined(const std::vector<Sentence>& sentences, std::string_view separator)
{
    Sentence::Origin origin;
    for (const Sentence& sentence : sentences) {
        origin.pattern += fmt::format("{}{{}}", origin.pattern.empty() ? "" : separator);
        origin.arguments.push_back({sentence, false});
    }
    return Sentence(std::move(origin));
}

std::string Translate(const Sentence& sentence, const Language& language)
{
    const Sentence::Origin* origin = sentence.MadeOf();
    if (origin == nullptr) {
        return language.Find(sentence.English());
    }
    const std::string pattern = origin->plural.empty()
                                    ? language.Find(origin->pattern)
                                    : language.FindPlural(origin->pattern, origin->plural, origin->count);
    try {
        return Fill(pattern, origin->arguments, [&language](const Sentence::Argument& argument) {
            return argument.isData ? argument.text.English() : Translate(argument.text, language);
        });
    } catch (const fmt::format_error&) {
        return sentence.English();
    }
}

std::string Language::FindName(std::string_view name) const
{
    const std::string key = "column\4" + std::string(name); // a context, and what catalogues have behind it
    const std::string found = Find(key);
    return found == key ? std::string(name) : found;
}

Speaking::Speaking(const Language* language) noexcept : m_before(std::exchange(spoken, language)) {}

Speaking::~Speaking() { spoken = m_before; }

const Language* Speaking::Present() noexcept { return spoken; }

std::string Said(const Sentence& sentence)
{
    return spoken == nullptr ? sentence.English() : Translate(sentence, *spoken);
}

} // namespace management
