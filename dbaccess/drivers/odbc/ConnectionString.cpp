#include "dbaccess/drivers/odbc/ConnectionString.h"

#include <algorithm>
#include <array>
#include <utility>

namespace dbaccess::odbc {

namespace {

constexpr std::string_view kBlanks = " \t\r\n";

char Lower(char ch) { return ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch + ('a' - 'A')) : ch; }

bool EqualIgnoringCase(std::string_view a, std::string_view b) { return std::ranges::equal(a, b, {}, Lower, Lower); }

std::string_view WithoutBlanksAround(std::string_view text)
{
    text.remove_prefix(std::min(text.size(), text.find_first_not_of(kBlanks)));
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

// "{...}", in which "}}" stands for "}". @return what stands behind it.
std::string_view ReadBraces(std::string_view text, std::string& value)
{
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '}' && !text.substr(i + 1).starts_with('}')) {
            return text.substr(i + 1);
        }
        i += text[i] == '}' ? 1 : 0;
        value += text[i];
    }
    return {};
}

struct Setting {
    std::string_view keyword;
    std::string_view other; // another keyword for the same, or the same one again
    std::string_view value;
};

struct KnownDriver {
    std::string_view word; // in its registered name or its file
    std::array<Setting, 2> settings;
};

// Rows come all at once by the presets of the first two. MariaDB's counts the rows that an UPDATE finds only when it is
// told to, and cannot be told to give rows one by one.
constexpr std::array kKnownDrivers = {
    KnownDriver{"sqlite3", {{{"StepAPI", "StepAPI", "1"}, {}}}},
    KnownDriver{"psqlodbc", {{{"UseDeclareFetch", "B6", "1"}, {"Fetch", "A7", "1000"}}}},
    KnownDriver{"postgresql", {{{"UseDeclareFetch", "B6", "1"}, {"Fetch", "A7", "1000"}}}},
    KnownDriver{"maodbc", {{{"OPTION", "OPTIONS", "2"}, {"CHARSET", "CHARSET", "utf8mb4"}}}},
    KnownDriver{"mariadb", {{{"OPTION", "OPTIONS", "2"}, {"CHARSET", "CHARSET", "utf8mb4"}}}},
    KnownDriver{"tdsodbc", {{{"ClientCharset", "ClientCharset", "UTF-8"}, {}}}},
    KnownDriver{"freetds", {{{"ClientCharset", "ClientCharset", "UTF-8"}, {}}}},
};

} // namespace

ConnectionString::ConnectionString(std::string text) : m_text(std::move(text)) { Read(); }

void ConnectionString::Read()
{
    for (std::string_view rest = m_text; !WithoutBlanksAround(rest).empty();) {
        const std::size_t end = std::min(rest.find_first_of("=;"), rest.size());
        Attribute attribute{std::string(WithoutBlanksAround(rest.substr(0, end))), {}};
        const bool hasValue = rest.substr(end).starts_with('=');
        rest.remove_prefix(std::min(rest.size(), end + 1));
        const std::size_t begin = std::min(rest.find_first_not_of(kBlanks), rest.size());
        if (hasValue && rest.substr(begin).starts_with('{')) {
            rest = ReadBraces(rest.substr(begin), attribute.value);
        }
        if (hasValue) {
            const std::size_t next = std::min(rest.find(';'), rest.size());
            attribute.value += WithoutBlanksAround(rest.substr(0, next));
            rest.remove_prefix(std::min(rest.size(), next + 1));
        }
        m_wellFormed = m_wellFormed && hasValue == !attribute.keyword.empty();
        if (hasValue) {
            m_attributes.push_back(std::move(attribute));
        }
    }
    m_wellFormed = m_wellFormed && !m_attributes.empty();
}

std::string ConnectionString::Value(std::initializer_list<std::string_view> keywords) const
{
    const auto found = std::ranges::find_if(m_attributes, [keywords](const Attribute& attribute) {
        return std::ranges::any_of(
            keywords, [&](std::string_view keyword) { return EqualIgnoringCase(attribute.keyword, keyword); });
    });
    return found == m_attributes.end() ? std::string() : found->value;
}

bool ConnectionString::Has(std::string_view keyword) const
{
    return std::ranges::any_of(
        m_attributes, [keyword](const Attribute& attribute) { return EqualIgnoringCase(attribute.keyword, keyword); });
}

void ConnectionString::Add(std::string_view keyword, std::string_view value)
{
    std::string written(value);
    if (value.empty() || value.find_first_of("[]{}(),;?*=!@ \t") != std::string_view::npos) {
        written = "{";
        for (const char ch : value) {
            written += ch == '}' ? std::string("}}") : std::string(1, ch);
        }
        written += '}';
    }
    if (!WithoutBlanksAround(m_text).ends_with(';')) {
        m_text += ';';
    }
    m_text.append(keyword).append("=").append(written);
    m_attributes.push_back({std::string(keyword), std::string(value)});
}

bool AddSettings(ConnectionString& string, std::string_view driver)
{
    const auto* known =
        std::ranges::find_if(kKnownDrivers, [driver](const KnownDriver& one) { return Mentions(driver, one.word); });
    if (known == kKnownDrivers.end()) {
        return false;
    }
    for (const Setting& setting : known->settings) {
        if (!setting.keyword.empty() && !string.Has(setting.keyword) && !string.Has(setting.other)) {
            string.Add(setting.keyword, setting.value);
        }
    }
    return true;
}

bool Mentions(std::string_view text, std::string_view lowerWord)
{
    const auto sameLetter = [](char a, char b) { return Lower(a) == b; };
    return std::search(text.begin(), text.end(), lowerWord.begin(), lowerWord.end(), sameLetter) != text.end();
}

} // namespace dbaccess::odbc
