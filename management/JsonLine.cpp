#include "management/JsonLine.h"

#include "management/Errors.h"
#include "management/Overloaded.h"
#include "management/Text.h"
#include "platform/CodePage.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <nlohmann/json.hpp>

#include <limits>

namespace management {

namespace {

/// As AppendJsonText has it.
std::string JsonText(const std::string& text)
{
    if (platform::IsValidUtf8(text)) {
        return nlohmann::json(text).dump();
    }
    // JSON has no bytes.
    const auto* const begin = reinterpret_cast<const unsigned char*>(text.data());
    return fmt::format("[{}]", fmt::join(std::vector<unsigned int>(begin, begin + text.size()), ","));
}

std::string Written(const JsonValue& value)
{
    return std::visit(Overloaded{[](std::monostate) { return std::string("null"); },
                                 [](std::int64_t number) { return std::to_string(number); },
                                 [](bool flag) { return std::string(flag ? "true" : "false"); },
                                 [](const TextValue& text) { return JsonText(text); }},
                      value);
}

/// Takes the members of an object, and says why it cannot.
class ObjectReader final : public nlohmann::json::json_sax_t {
public:
    JsonObject TakeObject() { return std::move(m_object); }
    [[nodiscard]] const std::string& Problem() const { return m_problem; }

    bool null() override { return Add(JsonValue()); }
    bool boolean(bool value) override { return Add(JsonValue(value)); }
    bool number_integer(number_integer_t value) override { return Add(JsonValue(std::int64_t{value})); }
    bool number_unsigned(number_unsigned_t value) override
    {
        constexpr number_unsigned_t kGreatestByte = 255;
        if (m_isInBytes) {
            auto* text = std::get_if<TextValue>(&m_object.back().value);
            return value <= kGreatestByte ? (text->push_back(static_cast<char>(value)), true)
                                          : Refuse("an array holds what is not a byte");
        }
        return value <= static_cast<number_unsigned_t>(std::numeric_limits<std::int64_t>::max())
                   ? Add(JsonValue(static_cast<std::int64_t>(value)))
                   : Refuse("a number is too great");
    }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override
    {
        return Refuse("a number is not whole");
    }
    bool string(string_t& value) override { return Add(TextValue(std::move(value))); }
    bool binary(binary_t& /*value*/) override { return false; }
    bool start_object(std::size_t /*elements*/) override
    {
        ++m_depth;
        return m_depth == 1 || (m_depth == 2 && !m_isInBytes) ? true : Refuse("objects are nested too deeply");
    }
    bool key(string_t& value) override
    {
        if (m_depth == 1) {
            m_name = std::move(value);
            m_part.clear();
        } else {
            m_part = std::move(value);
        }
        if (m_depth > 1 && m_part.empty()) {
            return Refuse(FillPattern("a member in {} has no name", Quoted(m_name)));
        }
        for (const JsonMember& member : m_object) {
            if (member.name == m_name && (m_part.empty() || member.part == m_part)) {
                return Refuse(FillPattern("the member {} comes twice", Quoted(m_name)));
            }
        }
        return true;
    }
    bool end_object() override
    {
        --m_depth;
        m_part.clear();
        return true;
    }
    bool start_array(std::size_t /*elements*/) override
    {
        if (m_depth == 0 || m_isInBytes || !Add(TextValue())) {
            return Refuse("the line is not an object of values");
        }
        m_isInBytes = true;
        return true;
    }
    bool end_array() override
    {
        m_isInBytes = false;
        return true;
    }
    bool parse_error(std::size_t position, const std::string& /*token*/,
                     const nlohmann::json::exception& /*error*/) override
    {
        return Refuse(FillPattern("the line is not JSON from its byte {} on", position));
    }

private:
    bool Add(JsonValue value)
    {
        if (m_depth == 0 || m_isInBytes) {
            return Refuse("the line is not an object of values");
        }
        m_object.push_back({m_name, m_part, std::move(value)});
        return true;
    }
    bool Refuse(std::string problem)
    {
        m_problem = std::move(problem);
        return false;
    }

    JsonObject m_object;
    std::string m_problem;
    std::string m_name;
    std::string m_part;
    int m_depth = 0;
    bool m_isInBytes = false;
};

/// What stands before a value. @param goesOn  whether it is in the same inner object as the value before it.
std::string HeadOf(const JsonMember& member, bool goesOn)
{
    const std::string part = member.part.empty() ? "" : JsonText(member.part) + ":";
    return goesOn ? part : JsonText(member.name) + (member.part.empty() ? ":" : ":{") + part;
}

} // namespace

void AppendJsonText(std::string& json, const std::string& text)
{
    if (IsPlainInJson(text)) {
        json += '"';
        json += text;
        json += '"';
    } else {
        json += JsonText(text);
    }
}

// Written and read piece by piece: to destroy the library's objects and arrays takes memory, and ends the program when
// there is none.
std::string WriteJsonLine(const JsonObject& object)
{
    std::string text = "{";
    const std::string* inner = nullptr; // the member whose object is open
    for (const JsonMember& member : object) {
        const bool goesOn = inner != nullptr && !member.part.empty() && *inner == member.name;
        if (inner != nullptr && !goesOn) {
            text += '}';
        }
        text += text.size() == 1 ? "" : ",";
        text += HeadOf(member, goesOn) + Written(member.value);
        inner = member.part.empty() ? nullptr : &member.name;
    }
    return text + (inner != nullptr ? "}}" : "}");
}

JsonObject ReadJsonLine(std::string_view text)
{
    ObjectReader reader;
    if (!nlohmann::json::sax_parse(text, &reader)) {
        throw Error(ErrorCode::invalid, reader.Problem());
    }
    return reader.TakeObject();
}

} // namespace management
