#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace web {

struct JsonMember;

/// A JSON value that came in.
struct JsonValue {
    enum class Type : std::uint8_t { null, boolean, number, text, array, object };

    Type type = Type::null;
    std::string text;                ///< of a text or a whole number; "1" or "0" for a Boolean
    std::vector<JsonValue> items;    ///< of an array
    std::vector<JsonMember> members; ///< of an object

    /// The member of a name; null where there is none.
    [[nodiscard]] const JsonValue* Find(std::string_view name) const;
};

struct JsonMember {
    std::string name;
    JsonValue value;
};

/// The text that is a member of an object; empty without that member. @throws management::Error (invalid) for anything
/// but a text.
std::string MemberText(const JsonValue& object, std::string_view name);
/// The Boolean that is a member of an object; false without that member. @throws management::Error (invalid) for
/// anything else.
bool MemberFlag(const JsonValue& object, std::string_view name);

/// Reads a body that holds one object. @throws management::Error (invalid) for all else: texts that are not UTF-8 or
/// hold a NUL, members that are there twice, numbers that are not whole, more than 16 levels or 10,000 values.
JsonValue ReadJsonObject(const std::string& body);

} // namespace web
