#pragma once

#include "management/Value.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

// JSON as an exported directory has it: an object on each line, whose members are values, or objects of values.

namespace management {

/// A whole number, a text, a truth value, or null.
using JsonValue = std::variant<std::monostate, std::int64_t, bool, TextValue>;

/// A member of an object, or, where `part` is not empty, a member of that member's object. Texts may be any bytes.
struct JsonMember {
    std::string name;
    std::string part = {};
    JsonValue value = {};
};

/// Members of one inner object stand side by side.
using JsonObject = std::vector<JsonMember>;

/// Appends a text as JSON: a string, or, where it is not UTF-8, an array of its bytes as numbers.
void AppendJsonText(std::string& json, const std::string& text);

/// The object in one line, without a line's end; texts as AppendJsonText gives them.
std::string WriteJsonLine(const JsonObject& object);

/// Reads what WriteJsonLine writes, whatever the blanks. @throws Error (invalid) for anything else.
JsonObject ReadJsonLine(std::string_view text);

} // namespace management
