#include "management/Text.h"

#include <fmt/format.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cctype>
#include <cstdint>

namespace management {

namespace {

/// Walks a text by characters; `take` gets each one's code, negative for bytes that are no UTF-8, and its bytes.
template <class Take>
void EachCharacter(std::string_view text, Take take)
{
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const std::size_t length = text.size();
    for (std::size_t next = 0; next < length;) {
        const std::size_t begin = next;
        UChar32 ch = 0;
        U8_NEXT(bytes, next, length, ch);
        take(ch, text.substr(begin, next - begin));
    }
}

bool IsControl(UChar32 ch) { return u_charType(ch) == U_CONTROL_CHAR; }

bool TurnsOrBreaksLine(UChar32 ch)
{
    return ch == 0x2028 || ch == 0x2029 || u_hasBinaryProperty(ch, UCHAR_BIDI_CONTROL) != 0;
}

void AppendBytes(std::string& out, std::string_view bytes)
{
    for (const char byte : bytes) {
        out += fmt::format("\\x{:02X}", static_cast<unsigned char>(byte));
    }
}

void AppendVisible(std::string& out, UChar32 ch, std::string_view bytes)
{
    if (ch == '\n') {
        out += "\\n";
    } else if (ch == '\t') {
        out += "\\t";
    } else if (ch < 0 || IsControl(ch)) {
        AppendBytes(out, bytes);
    } else if (TurnsOrBreaksLine(ch)) {
        out += fmt::format("\\u{:04X}", ch);
    } else {
        out += bytes;
    }
}

std::size_t WidthOf(UChar32 ch)
{
    const int type = u_charType(ch);
    const bool isVowelOrFinal = ch >= 0x1160 && ch <= 0x11FF; // Hangul parts that join the letter before them
    if (type == U_NON_SPACING_MARK || type == U_ENCLOSING_MARK || type == U_FORMAT_CHAR || isVowelOrFinal) {
        return 0;
    }
    const int eastAsian = u_getIntPropertyValue(ch, UCHAR_EAST_ASIAN_WIDTH);
    return eastAsian == U_EA_WIDE || eastAsian == U_EA_FULLWIDTH ? 2 : 1;
}

} // namespace

std::string Visible(std::string_view text)
{
    std::string visible;
    visible.reserve(text.size());
    EachCharacter(text, [&](UChar32 ch, std::string_view bytes) { AppendVisible(visible, ch, bytes); });
    return visible;
}

std::string Quoted(std::string_view text) { return "'" + Visible(text) + "'"; }

std::size_t DisplayWidth(std::string_view text)
{
    std::size_t width = 0;
    EachCharacter(text, [&](UChar32 ch, std::string_view) { width += WidthOf(ch); });
    return width;
}

std::string ShellQuoted(std::string_view word)
{
    const auto isPlain = [](unsigned char c) {
        return std::isalnum(c) != 0 || c >= 0x80 ||
               std::string_view("/.,:=@%+_-").find(static_cast<char>(c)) != std::string_view::npos;
    };
    if (!word.empty() && std::ranges::all_of(word, isPlain)) {
        return std::string(word);
    }
    std::string quoted = "'";
    for (const char c : word) {
        quoted += c == '\'' ? "'\\''" : std::string(1, c);
    }
    return quoted + "'";
}

bool IsPlainInJson(std::string_view text)
{
    unsigned special = 0; // all bytes are looked at, which the compiler does for many at a time
    for (const char c : text) {
        special |= static_cast<unsigned>(c < ' ') | static_cast<unsigned>(c > '~') | static_cast<unsigned>(c == '"') |
                   static_cast<unsigned>(c == '\\');
    }
    return special == 0;
}

std::vector<std::string> SplitAtCommas(std::string_view text)
{
    std::vector<std::string> parts;
    for (std::size_t begin = 0; begin <= text.size();) {
        const std::size_t end = std::min(text.find(',', begin), text.size());
        parts.emplace_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

std::string_view WithoutByteOrderMark(std::string_view text)
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    return text.starts_with(kMark) ? text.substr(kMark.size()) : text;
}

std::string InSmallLetters(std::string_view text)
{
    std::string small(text);
    std::ranges::transform(small, small.begin(),
                           [](char ch) { return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch - 'A' + 'a') : ch; });
    return small;
}

bool HasControlCharacter(std::string_view text)
{
    bool found = false;
    EachCharacter(text, [&](UChar32 ch, std::string_view) { found = found || (ch >= 0 && IsControl(ch)); });
    return found;
}

bool HasOuterBlanks(std::string_view text)
{
    bool isFirst = true;
    bool firstIsBlank = false;
    bool lastIsBlank = false;
    EachCharacter(text, [&](UChar32 ch, std::string_view) {
        lastIsBlank = ch >= 0 && u_isUWhiteSpace(ch);
        firstIsBlank = isFirst ? lastIsBlank : firstIsBlank;
        isFirst = false;
    });
    return firstIsBlank || lastIsBlank;
}

Sentence Counted(std::size_t count, std::string_view noun)
{
    // What comes after the word that is counted, as in "right between items", stays.
    const std::size_t end = std::min({noun.find(" between "), noun.find(" on "), noun.size()});
    std::string others(noun.substr(0, end));
    const bool isEntry = others.ends_with("entry");
    others.replace(others.size() - (isEntry ? 1 : 0), std::string::npos, isEntry ? "ies" : "s");
    return Sentence(Sentence::Origin{fmt::format("{{}} {}", noun),
                                     fmt::format("{{}} {}{}", others, noun.substr(end)),
                                     count,
                                     {sentences::ArgumentOf(count)}});
}

std::string PaceText(std::chrono::duration<double> elapsed, std::int64_t done)
{
    constexpr double kShortest = 0.001;
    const double seconds = std::max(elapsed.count(), kShortest);
    return fmt::format("{:.1f} s, {:.0f}/s", seconds, static_cast<double>(done) / seconds);
}

} // namespace management
