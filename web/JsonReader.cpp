#include "web/JsonReader.h"

#include "management/Errors.h"
#include "management/Text.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace web {

namespace {

using namespace management;

constexpr std::size_t kDeepest = 16;
constexpr std::size_t kMostValues = 10000;

/// Takes what the library reads, piece by piece: its own values would keep the last of members that are there twice.
class Builder : public nlohmann::json_sax<nlohmann::json> {
public:
    JsonValue root;
    Sentence trouble;

    bool null() override { return Add({}); }
    bool boolean(bool value) override { return Add({JsonValue::Type::boolean, value ? "1" : "0", {}, {}}); }
    bool number_integer(number_integer_t value) override
    {
        return Add({JsonValue::Type::number, std::to_string(value), {}, {}});
    }
    bool number_unsigned(number_unsigned_t value) override
    {
        return Add({JsonValue::Type::number, std::to_string(value), {}, {}});
    }
    bool number_float(number_float_t /*value*/, const string_t& text) override
    {
        return Refuse(FillPattern("the number {} is not whole", text));
    }
    bool string(string_t& value) override
    {
        if (value.find('\0') != std::string::npos) {
            return Refuse("a text holds a NUL");
        }
        return Add({JsonValue::Type::text, value, {}, {}});
    }
    bool binary(binary_t& /*value*/) override { return Refuse("it holds bytes"); }
    bool start_object(std::size_t /*count*/) override { return Open(JsonValue::Type::object); }
    bool key(string_t& value) override
    {
        std::vector<JsonMember>& members = m_open.back()->members;
        if (std::ranges::find(members, value, &JsonMember::name) != members.end()) {
            return Refuse(FillPattern("the member {} is there twice", Quoted(value)));
        }
        members.push_back({value, JsonValue()});
        return true;
    }
    bool end_object() override { return Close(); }
    bool start_array(std::size_t /*count*/) override { return Open(JsonValue::Type::array); }
    bool end_array() override { return Close(); }
    bool parse_error(std::size_t /*position*/, const std::string& /*last*/,
                     const nlohmann::json::exception& /*error*/) override
    {
        return Refuse("it is not JSON in UTF-8");
    }

private:
    JsonValue* Place()
    {
        if (m_open.empty()) {
            return &root;
        }
        JsonValue& open = *m_open.back();
        return open.type == JsonValue::Type::array ? &open.items.emplace_back() : &open.members.back().value;
    }
    bool Add(JsonValue value)
    {
        if (++m_count > kMostValues) {
            return Refuse("it holds more than 10,000 values");
        }
        *Place() = std::move(value);
        return true;
    }
    bool Open(JsonValue::Type type)
    {
        if (m_open.size() == kDeepest) {
            return Refuse("it has more than 16 levels");
        }
        if (++m_count > kMostValues) {
            return Refuse("it holds more than 10,000 values");
        }
        JsonValue* place = Place();
        place->type = type;
        m_open.push_back(place);
        return true;
    }
    bool Close()
    {
        m_open.pop_back();
        return true;
    }
    bool Refuse(const Sentence& why)
    {
        trouble = trouble.IsEmpty() ? why : trouble;
        return false;
    }

    std::vector<JsonValue*> m_open; ///< each a value of the one before it, which gets no other while it is open
    std::size_t m_count = 0;
};

} // namespace

const JsonValue* JsonValue::Find(std::string_view name) const
{
    const auto found = std::ranges::find(members, name, &JsonMember::name);
    return found == members.end() ? nullptr : &found->value;
}

std::string MemberText(const JsonValue& object, std::string_view name)
{
    const JsonValue* text = object.Find(name);
    if (text != nullptr && text->type != JsonValue::Type::text) {
        throw Error(ErrorCode::invalid, FillPattern("{} is not a text", name));
    }
    return text == nullptr ? "" : text->text;
}

bool MemberFlag(const JsonValue& object, std::string_view name)
{
    const JsonValue* flag = object.Find(name);
    if (flag != nullptr && flag->type != JsonValue::Type::boolean) {
        throw Error(ErrorCode::invalid, FillPattern("{} is neither true nor false", name));
    }
    return flag != nullptr && flag->text == "1";
}

JsonValue ReadJsonObject(const std::string& body)
{
    Builder builder;
    const bool isRead = nlohmann::json::sax_parse(body, &builder);
    if (!isRead || builder.root.type != JsonValue::Type::object) {
        throw Error(ErrorCode::invalid,
                    FillPattern("the body is not taken: {}",
                                isRead ? Sentence(Translatable("it is not an object")) : builder.trouble));
    }
    return std::move(builder.root);
}

} // namespace web
