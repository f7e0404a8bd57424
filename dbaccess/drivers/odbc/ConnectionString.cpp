#include "dbaccess/drivers/odbc/ConnectionString.h"

#include "dbaccess/drivers/odbc/Text.h"

#include <algorithm>
#include <array>
#include <utility>

namespace dbaccess::odbc {

namespace {

// Passes over "{...}", in which "}}" stands for "}". @return whether it is closed.
bool ReadBraces(std::string_view& text, std::string& value)
{
    for (std::size_t i = 1; i < text.size(); ++i) {
        if (text[i] == '}' && !text.substr(i + 1).starts_with('}')) {
            text.remove_prefix(i + 1);
            return true;
        }
        i += text[i] == '}' ? 1 : 0;
        value += text[i];
    }
    text = {};
    return false;
}

// FreeTDS takes "}}" for two; it needs no braces but for these.
std::string WrittenForFreetds(std::string_view value)
{
    const bool isPlain = value.find(';') == std::string_view::npos && !value.starts_with('{') &&
                         WithoutBlanksAround(value).size() == value.size();
    return isPlain ? std::string(value) : "{" + std::string(value) + "}";
}

// PostgreSQL's driver takes + and % for codes outside of braces.
std::string Written(std::string_view value)
{
    if (!value.empty() && value.find_first_of("[]{}(),;?*=!@+% \t") == std::string_view::npos) {
        return std::string(value);
    }
    std::string written = "{";
    for (const char ch : value) {
        written += ch == '}' ? std::string("}}") : std::string(1, ch);
    }
    return written + "}";
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
            rest.remove_prefix(begin);
            m_wellFormed = ReadBraces(rest, attribute.value) && m_wellFormed;
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

const ConnectionString::Attribute* ConnectionString::Find(std::string_view keyword) const
{
    const auto found = std::ranges::find_if(
        m_attributes, [keyword](const Attribute& attribute) { return EqualIgnoringCase(attribute.keyword, keyword); });
    return found == m_attributes.end() ? nullptr : &*found;
}

std::string ConnectionString::Value(std::string_view keyword) const
{
    const Attribute* attribute = Find(keyword);
    return attribute == nullptr ? std::string() : attribute->value;
}

bool ConnectionString::Has(std::string_view keyword) const { return Find(keyword) != nullptr; }

void ConnectionString::Add(std::string_view keyword, std::string_view value)
{
    const std::string driver = Value("Driver");
    const bool isFreetds = Mentions(driver, "freetds") || Mentions(driver, "tdsodbc");
    if (!WithoutBlanksAround(m_text).ends_with(';')) {
        m_text += ';';
    }
    m_text.append(keyword).append("=").append(isFreetds ? WrittenForFreetds(value) : Written(value));
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

} // namespace dbaccess::odbc
