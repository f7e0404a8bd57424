#include "management/exchange/LdifReader.h"

#include "management/Errors.h"
#include "management/Text.h"
#include "platform/CodePage.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdint>

namespace management {

namespace {

constexpr std::size_t kLongestEntry = std::size_t{16} * 1024 * 1024;
constexpr std::size_t kWidth = 76;
constexpr std::string_view kBase64 = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// Nothing for what is not base64.
std::optional<std::string> FromBase64(std::string_view text)
{
    std::string bytes;
    std::uint32_t bits = 0;
    int count = 0;
    while (text.ends_with('=')) {
        text.remove_suffix(1);
    }
    for (const char ch : text) {
        const std::size_t value = kBase64.find(ch);
        if (value == std::string_view::npos) {
            return std::nullopt;
        }
        bits = (bits << 6U) | static_cast<std::uint32_t>(value);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>((bits >> static_cast<unsigned>(count)) & 0xFFU);
        }
    }
    return bytes;
}

std::string ToBase64(std::string_view bytes)
{
    std::string text;
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        std::uint32_t bits = 0;
        const std::size_t count = std::min<std::size_t>(3, bytes.size() - i);
        for (std::size_t j = 0; j < 3; ++j) {
            bits = (bits << 8U) | (j < count ? static_cast<unsigned char>(bytes[i + j]) : 0U);
        }
        for (std::size_t j = 0; j < 4; ++j) {
            text += j <= count ? kBase64[(bits >> (18U - 6U * static_cast<unsigned>(j))) & 0x3FU] : '=';
        }
    }
    return text;
}

std::string_view WithoutBlanks(std::string_view text)
{
    const std::size_t begin = text.find_first_not_of(' ');
    return begin == std::string_view::npos ? "" : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

int HexDigit(char ch)
{
    const auto digit =
        std::string_view("0123456789abcdef").find(static_cast<char>(std::tolower(static_cast<unsigned char>(ch))));
    return digit == std::string_view::npos ? -1 : static_cast<int>(digit);
}

bool IsSummary(const LdifEntry& entry)
{
    return entry.dn.empty() && (entry.Find("version") != nullptr || entry.Find("search") != nullptr);
}

class DnParser {
public:
    explicit DnParser(std::string_view dn) : m_dn(dn) {}

    std::vector<RelativeName> Parse()
    {
        std::vector<RelativeName> names;
        for (; m_at < m_dn.size(); ++m_at) {
            names.push_back(ReadName());
        }
        return names;
    }

private:
    [[noreturn]] void Fail() const
    {
        throw Error(ErrorCode::invalid, FillPattern("{} is not a distinguished name", Quoted(m_dn)));
    }

    RelativeName ReadName()
    {
        const std::size_t equals = m_dn.find('=', m_at);
        if (equals == std::string_view::npos) {
            Fail();
        }
        RelativeName name{InSmallLetters(WithoutBlanks(m_dn.substr(m_at, equals - m_at))), {}};
        m_at = equals + 1;
        name.value = ReadValue();
        if (name.attribute.empty() || name.value.empty()) {
            Fail();
        }
        return name;
    }

    /// Up to the next part, without the blanks around it, and without the attributes that follow a +.
    std::string ReadValue()
    {
        std::string value;
        std::size_t kept = 0; // bytes other than blanks at the end
        bool isFurther = false;
        for (; m_at < m_dn.size() && m_dn[m_at] != ',' && m_dn[m_at] != ';'; ++m_at) {
            isFurther = isFurther || m_dn[m_at] == '+';
            const bool isEscaped = m_dn[m_at] == '\\';
            const char ch = isEscaped ? ReadEscaped() : m_dn[m_at];
            const bool isPadding = ch == ' ' && !isEscaped;
            if (!isFurther && !(isPadding && value.empty())) {
                value += ch;
                kept = isPadding ? kept : value.size();
            }
        }
        value.resize(kept);
        return value;
    }

    /// What follows a backslash: a byte by its two digits, or a character. Leaves off at the last one of it.
    char ReadEscaped()
    {
        if (++m_at == m_dn.size()) {
            Fail();
        }
        const int high = HexDigit(m_dn[m_at]);
        const int low = m_at + 1 < m_dn.size() ? HexDigit(m_dn[m_at + 1]) : -1;
        if (high < 0 || low < 0) {
            return m_dn[m_at];
        }
        ++m_at;
        return static_cast<char>(high * 16 + low);
    }

    std::string_view m_dn;
    std::size_t m_at = 0;
};

} // namespace

const std::string* LdifEntry::Find(std::string_view name) const
{
    const auto found = std::ranges::find(attributes, name, &std::pair<std::string, std::string>::first);
    return found == attributes.end() ? nullptr : &found->second;
}

std::optional<LdifEntry> LdifReader::Next()
{
    for (bool isLast = false; !isLast;) {
        LdifEntry entry = ReadEntry(isLast);
        if (m_failed) {
            return std::nullopt;
        }
        if (entry.line == 0 || IsSummary(entry)) {
            continue;
        }
        if (entry.dn.empty() && entry.problem.IsEmpty()) {
            entry.problem = Translatable("the entry has no dn");
        }
        return entry;
    }
    return std::nullopt;
}

/// The lines up to the next empty one; an entry of no line where there are none. @param isLast  whether the file ends
/// with them.
LdifEntry LdifReader::ReadEntry(bool& isLast)
{
    LdifEntry entry;
    std::size_t bytes = 0;
    std::optional<Line> line;
    while ((line = ReadLine()) && !line->text.empty()) {
        if (line->text.front() == '#') {
            continue;
        }
        entry.line = entry.line == 0 ? line->number : entry.line;
        bytes += line->text.size();
        if (bytes > kLongestEntry) {
            entry.problem = Translatable("the entry is longer than 16 MiB");
        } else if (entry.problem.IsEmpty()) {
            Take(entry, line->text);
        }
    }
    isLast = !line;
    return entry;
}

// The buffer is asked directly: what it throws when reading fails is not lost in a state bit.
std::optional<LdifReader::Line> LdifReader::ReadPhysical()
{
    constexpr int kEnd = std::char_traits<char>::eof();
    Line line{0, {}};
    try {
        int byte = m_in.rdbuf()->sbumpc();
        if (byte == kEnd) {
            return std::nullopt;
        }
        for (; byte != kEnd && byte != '\n'; byte = m_in.rdbuf()->sbumpc()) {
            if (line.text.size() <= kLongestEntry) {
                line.text += static_cast<char>(byte);
            }
        }
    } catch (const std::ios_base::failure&) {
        m_failed = true;
        return std::nullopt;
    }
    line.number = ++m_lines;
    if (m_lines == 1) {
        line.text = WithoutByteOrderMark(line.text);
    }
    if (line.text.ends_with('\r')) {
        line.text.pop_back();
    }
    return line;
}

/// A line with those that continue it.
std::optional<LdifReader::Line> LdifReader::ReadLine()
{
    std::optional<Line> line = m_ahead ? std::exchange(m_ahead, std::nullopt) : ReadPhysical();
    while (line && (m_ahead = ReadPhysical()) && m_ahead->text.starts_with(' ')) {
        if (line->text.size() <= kLongestEntry) {
            line->text += m_ahead->text.substr(1);
        }
    }
    return line;
}

void LdifReader::Take(LdifEntry& entry, const std::string& line)
{
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos || colon == 0) {
        entry.problem = FillPattern("{} is not an attribute with a value", Quoted(line.substr(0, kWidth)));
        return;
    }
    const std::string name = InSmallLetters(std::string_view(line).substr(0, colon));
    std::string_view rest = std::string_view(line).substr(colon + 1);
    std::string value;
    if (rest.starts_with('<')) {
        entry.elsewhere.push_back(name);
        return;
    }
    if (rest.starts_with(':')) {
        const std::optional<std::string> bytes = FromBase64(WithoutBlanks(rest.substr(1)));
        if (!bytes) {
            entry.problem = FillPattern("the value of {} is not base64", Visible(name));
            return;
        }
        value = *bytes;
    } else {
        value = WithoutBlanks(rest);
    }
    if (name == "dn") {
        entry.dn = value;
    } else if (name == "changetype") {
        entry.problem =
            FillPattern("it is a record of changes (changetype: {}), and only whole entries are imported, as a "
                        "search gives them",
                        Visible(value));
    } else if (name.find(';') == std::string::npos) {
        entry.attributes.emplace_back(name, std::move(value));
    }
}

std::vector<RelativeName> ParseDn(std::string_view dn) { return DnParser(dn).Parse(); }

std::string DnEscaped(std::string_view value)
{
    std::string escaped;
    for (std::size_t i = 0; i < value.size(); ++i) {
        const char ch = value[i];
        const bool isOuter = i == 0 || i + 1 == value.size();
        if (static_cast<unsigned char>(ch) < ' ') {
            escaped += fmt::format("\\{:02X}", static_cast<unsigned char>(ch));
        } else if (std::string_view(",+\"\\<>;=").find(ch) != std::string_view::npos || (ch == ' ' && isOuter) ||
                   (ch == '#' && i == 0)) {
            escaped += '\\';
            escaped += ch;
        } else {
            escaped += ch;
        }
    }
    return escaped;
}

std::string LdifLine(std::string_view attribute, std::string_view value)
{
    const bool isPlain = std::ranges::all_of(value, [](char ch) { return ch >= ' ' && ch <= '~'; }) &&
                         value.find_first_of(" :<") != 0 && !value.ends_with(' ');
    const std::string line =
        isPlain ? fmt::format("{}: {}", attribute, value) : fmt::format("{}:: {}", attribute, ToBase64(value));
    std::string folded = line.substr(0, kWidth);
    for (std::size_t i = kWidth; i < line.size(); i += kWidth - 1) {
        folded += "\n " + line.substr(i, kWidth - 1);
    }
    return folded + "\n";
}

} // namespace management
