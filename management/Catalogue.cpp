#include "management/Catalogue.h"

#include "management/Errors.h"
#include "management/Text.h"

#include <array>
#include <cstring>
#include <fstream>
#include <iterator>
#include <span>

namespace management {

namespace {

/// The begin of a file, as a number; then come the version, how many texts there are, and where the two lists are of
/// lengths and places of the English texts and of those in the language.
constexpr std::uint32_t kMagic = 0x950412de;
constexpr std::size_t kCountAt = 8;
constexpr std::size_t kEnglishAt = 12;
constexpr std::size_t kTranslatedAt = 16;
constexpr std::size_t kEntry = 8;
constexpr std::string_view kRuleBegin = "plural=";

/// The bytes of a catalogue. Its functions @throw Error for what would be behind the end.
class CatalogueBytes {
public:
    explicit CatalogueBytes(const std::filesystem::path& file) : m_file(file)
    {
        std::ifstream in(file, std::ios::binary);
        m_bytes.assign(std::istreambuf_iterator<char>(in), {});
        if (!in || NumberAt(0) != kMagic) {
            Refuse();
        }
    }

    [[nodiscard]] std::size_t Count() const { return NumberAt(kCountAt); }
    [[nodiscard]] std::string_view English(std::size_t i) const { return TextAt(NumberAt(kEnglishAt) + i * kEntry); }
    [[nodiscard]] std::string_view Translated(std::size_t i) const
    {
        return TextAt(NumberAt(kTranslatedAt) + i * kEntry);
    }

private:
    [[noreturn]] void Refuse() const
    {
        throw Error(ErrorCode::failed, FillPattern("{} is no catalogue of texts", Quoted(m_file.string())));
    }
    [[nodiscard]] std::uint32_t NumberAt(std::size_t place) const
    {
        std::uint32_t number = 0;
        if (place + sizeof number > m_bytes.size()) {
            Refuse();
        }
        std::memcpy(&number, m_bytes.data() + place, sizeof number);
        return number;
    }
    [[nodiscard]] std::string_view TextAt(std::size_t entry) const
    {
        const std::size_t length = NumberAt(entry);
        const std::size_t place = NumberAt(entry + sizeof(std::uint32_t));
        if (place + length > m_bytes.size()) {
            Refuse();
        }
        return std::string_view(m_bytes).substr(place, length);
    }

    std::filesystem::path m_file;
    std::string m_bytes;
};

/// Reads a rule from its begin to its end, and works it out on the way.
class PluralRule {
public:
    PluralRule(std::string_view rule, std::uint64_t n) : m_rest(rule), m_n(n) {}

    std::uint64_t Result()
    {
        const std::uint64_t result = Choice();
        Skip();
        return m_isWrong || !m_rest.empty() ? 0 : result;
    }

private:
    struct Operator {
        std::string_view sign;
        int level; ///< those of a higher one come first
        std::uint64_t (*apply)(std::uint64_t, std::uint64_t);
    };
    static constexpr std::array<Operator, 13> kOperators = {{
        {"||", 0, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a != 0 || b != 0 ? 1 : 0; }},
        {"&&", 1, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a != 0 && b != 0 ? 1 : 0; }},
        {"==", 2, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a == b ? 1 : 0; }},
        {"!=", 2, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a != b ? 1 : 0; }},
        {"<=", 3, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a <= b ? 1 : 0; }},
        {">=", 3, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a >= b ? 1 : 0; }},
        {"<", 3, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a < b ? 1 : 0; }},
        {">", 3, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a > b ? 1 : 0; }},
        {"+", 4, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a + b; }},
        {"-", 4, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a - b; }},
        {"*", 5, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return a * b; }},
        {"/", 5, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return b == 0 ? 0 : a / b; }},
        {"%", 5, [](std::uint64_t a, std::uint64_t b) -> std::uint64_t { return b == 0 ? 0 : a % b; }},
    }};

    std::uint64_t Choice()
    {
        const std::uint64_t condition = Combination(0);
        if (!Take("?")) {
            return condition;
        }
        const std::uint64_t yes = Choice();
        Require(":");
        const std::uint64_t no = Choice();
        return condition != 0 ? yes : no;
    }
    std::uint64_t Combination(int level)
    {
        std::uint64_t value = Primary();
        while (const Operator* next = TakeOperator(level)) {
            value = next->apply(value, Combination(next->level + 1));
        }
        return value;
    }
    std::uint64_t Primary()
    {
        if (Take("!")) {
            return Primary() == 0 ? 1 : 0;
        }
        if (Take("(")) {
            const std::uint64_t value = Choice();
            Require(")");
            return value;
        }
        if (Take("n")) {
            return m_n;
        }
        std::uint64_t value = 0;
        m_isWrong = m_isWrong || !IsDigit();
        for (; IsDigit(); m_rest.remove_prefix(1)) {
            value = value * 10 + static_cast<std::uint64_t>(m_rest.front() - '0');
        }
        return value;
    }

    void Skip() { m_rest.remove_prefix(std::min(m_rest.find_first_not_of(' '), m_rest.size())); }
    [[nodiscard]] bool IsDigit() const { return !m_rest.empty() && m_rest.front() >= '0' && m_rest.front() <= '9'; }
    bool Take(std::string_view sign)
    {
        Skip();
        const bool isThere = m_rest.starts_with(sign);
        m_rest.remove_prefix(isThere ? sign.size() : 0);
        return isThere;
    }
    void Require(std::string_view sign) { m_isWrong = !Take(sign) || m_isWrong; }
    const Operator* TakeOperator(int level)
    {
        Skip();
        for (const Operator& each : kOperators) {
            if (m_rest.starts_with(each.sign)) {
                return each.level >= level && Take(each.sign) ? &each : nullptr;
            }
        }
        return nullptr;
    }

    std::string_view m_rest;
    std::uint64_t m_n;
    bool m_isWrong = false;
};

/// The rule in the header of a catalogue.
std::string PluralRuleIn(std::string_view header)
{
    const std::size_t begin = header.find(kRuleBegin);
    if (begin == std::string_view::npos) {
        return "0";
    }
    const std::string_view rule = header.substr(begin + kRuleBegin.size());
    return std::string(rule.substr(0, rule.find_first_of(";\n")));
}

} // namespace

Catalogue::Catalogue(const std::filesystem::path& file)
{
    const CatalogueBytes bytes(file);
    for (std::size_t i = 0; i < bytes.Count(); ++i) {
        // A NUL stands between singular and plural, and between the forms of the translation.
        const std::string_view english = bytes.English(i);
        std::vector<std::string> forms;
        std::string_view rest = bytes.Translated(i);
        for (;;) {
            const std::size_t end = rest.find('\0');
            forms.emplace_back(rest.substr(0, end));
            if (end == std::string_view::npos) {
                break;
            }
            rest.remove_prefix(end + 1);
        }
        m_texts.emplace(english.substr(0, english.find('\0')), std::move(forms));
    }
    // The empty text stands for the header.
    const auto header = m_texts.find(std::string_view());
    m_pluralRule = header == m_texts.end() ? "0" : PluralRuleIn(header->second.front());
    if (header != m_texts.end()) {
        m_texts.erase(header);
    }
}

std::string Catalogue::Find(const std::string& english) const
{
    const auto found = m_texts.find(english);
    return found == m_texts.end() ? english : found->second.front();
}

std::string Catalogue::FindPlural(const std::string& one, const std::string& others, std::uint64_t count) const
{
    const auto found = m_texts.find(one);
    const std::uint64_t form = FindPluralForm(m_pluralRule, count);
    if (found == m_texts.end() || form >= found->second.size()) {
        return count == 1 ? one : others;
    }
    return found->second[form];
}

std::uint64_t FindPluralForm(std::string_view rule, std::uint64_t n) { return PluralRule(rule, n).Result(); }

} // namespace management
