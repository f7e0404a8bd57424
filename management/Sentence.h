#pragma once

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

// Texts for people are written in English where they are made, and said in the language of the reader where they are
// shown: a sentence keeps its pattern and its arguments beside its English text.

namespace management {

/// Marks a text that is not an argument of FillPattern, FillPlural or Error for the tool that collects texts. @return
/// the text.
constexpr const char* Translatable(const char* text) { return text; }
/// Marks a noun that Counted counts, and that is not written where it does, for the tool that collects texts. @return
/// the noun.
constexpr const char* Countable(const char* noun) { return noun; }

namespace sentences {

/// The argument of the place that begins at a text. @param at  is left at the end of the place. @param next  the
/// argument of a place without a number.
consteval std::size_t PlaceAt(const char*& at, std::size_t& next)
{
    const bool isNumbered = at[1] >= '0' && at[1] <= '9';
    const std::size_t place = isNumbered ? static_cast<std::size_t>(at[1] - '0') : next++;
    at += isNumbered ? 2 : 1;
    if (*at != '}') {
        throw "a place is {} or {N}";
    }
    return place;
}

/// How many arguments a pattern takes.
consteval std::size_t CountArguments(const char* text)
{
    std::size_t next = 0;
    std::size_t count = 0;
    for (; *text != '\0'; ++text) {
        if ((*text == '{' || *text == '}') && text[1] == *text) {
            ++text;
        } else if (*text == '{') {
            count = std::max(count, PlaceAt(text, next) + 1);
        }
    }
    return count;
}

} // namespace sentences

/// The English of a sentence with its places, each written {} or, counted from 0, {1}; {{ and }} are braces. Does not
/// compile when a place has no argument, an argument no place, or a place says how it is to be formatted.
template <std::size_t Count>
class Pattern {
public:
    // NOLINTNEXTLINE(google-explicit-constructor): a literal is written in its place
    consteval Pattern(const char* text) : m_text(text)
    {
        if (sentences::CountArguments(text) != Count) {
            throw "as many places as arguments";
        }
    }

    [[nodiscard]] constexpr const char* Text() const { return m_text; }

private:
    const char* m_text;
};

/// A text for people in English, without a full stop and a line's end unless it says otherwise. Becomes a std::string
/// of that text by itself. Copies share what it was made of.
class Sentence {
public:
    /// What fills a place: a text of somebody's, or a sentence, which has translations of its own.
    struct Argument;
    /// What a sentence was made of.
    struct Origin;

    Sentence() = default;
    /// A sentence that is its own pattern, or is said as it is.
    // NOLINTNEXTLINE(google-explicit-constructor): most sentences have no arguments
    Sentence(std::string english) : m_english(std::move(english)) {}
    // NOLINTNEXTLINE(google-explicit-constructor): likewise
    Sentence(const char* english) : m_english(english) {}
    explicit Sentence(std::string_view english) : m_english(english) {}
    /// @param origin  makes this English.
    explicit Sentence(Origin origin);

    [[nodiscard]] const std::string& English() const noexcept { return m_english; }
    // NOLINTNEXTLINE(google-explicit-constructor): for programs, logs and the record it is a text
    operator const std::string&() const noexcept { return m_english; }
    [[nodiscard]] bool IsEmpty() const noexcept { return m_english.empty(); }
    /// Null where it is its own pattern.
    [[nodiscard]] const Origin* MadeOf() const noexcept { return m_origin.get(); }

    friend bool operator==(const Sentence& a, const Sentence& b) { return a.m_english == b.m_english; }

private:
    std::string m_english;
    std::shared_ptr<const Origin> m_origin;
};

struct Sentence::Argument {
    Sentence text;
    bool isData = true; ///< said as it is in every language
};

struct Sentence::Origin {
    std::string pattern;
    std::string plural = {}; ///< the pattern for other counts than 1; empty: there is but one
    std::uint64_t count = 0; ///< which chooses between them
    std::vector<Argument> arguments = {};
};

/// The sentences one after the other.
Sentence operator+(const Sentence& first, const Sentence& second);
/// Sentences with a separator between them, which is not translated.
Sentence Joined(const std::vector<Sentence>& sentences, std::string_view separator);

/// A language that sentences can be said in.
class Language {
public:
    Language() = default;
    Language(const Language&) = delete;
    Language& operator=(const Language&) = delete;
    virtual ~Language() = default;

    /// What the language has for an English text or pattern; the English where it has nothing.
    [[nodiscard]] virtual std::string Find(const std::string& english) const = 0;
    /// What the language has for an English pattern and a count; the English where it has nothing.
    [[nodiscard]] virtual std::string FindPlural(const std::string& one, const std::string& others,
                                                 std::uint64_t count) const = 0;
    /// What people read for the name of a column or parameter; the name where the language has nothing for it.
    [[nodiscard]] std::string FindName(std::string_view name) const;
};

/// A sentence in a language; in English where the language does not have it, or has something that cannot be filled.
std::string Translate(const Sentence& sentence, const Language& language);

/// Has its thread say sentences in a language until it is destroyed. Of several, the one made last counts.
class Speaking {
public:
    /// @param language  outlives this; null: English.
    explicit Speaking(const Language* language) noexcept;
    Speaking(const Speaking&) = delete;
    Speaking& operator=(const Speaking&) = delete;
    ~Speaking();

    /// The language of this thread; null: English.
    [[nodiscard]] static const Language* Present() noexcept;

private:
    const Language* m_before;
};

/// A sentence in the language of this thread.
std::string Said(const Sentence& sentence);

// ---- Making sentences -----------------------------------------------------------------------------------------------

namespace sentences {

template <class T>
Sentence::Argument ArgumentOf(const T& value)
{
    if constexpr (std::is_same_v<T, Sentence>) {
        return {value, false};
    } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
        return {Sentence(std::string(std::string_view(value))), true};
    } else {
        return {Sentence(fmt::format("{}", T(value))), true}; // views of lists are formatted as temporaries
    }
}

} // namespace sentences

/// Fills a pattern. Arguments that are sentences are translated with it, all others are said as they are.
template <class... Args>
Sentence FillPattern(Pattern<sizeof...(Args)> pattern, const Args&... args)
{
    return Sentence(Sentence::Origin{pattern.Text(), {}, 0, {sentences::ArgumentOf(args)...}});
}

/// Fills one of two patterns, as a count is 1 or not.
template <class... Args>
Sentence FillPlural(Pattern<sizeof...(Args)> one, Pattern<sizeof...(Args)> others, std::uint64_t count,
                    const Args&... args)
{
    return Sentence(Sentence::Origin{one.Text(), others.Text(), count, {sentences::ArgumentOf(args)...}});
}

} // namespace management
