#pragma once

#include "management/Sentence.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace management {

/// A number that stands for a word: programs get the number, people the word.
struct Choice {
    std::int64_t number;
    std::string_view word;
};

/// The text of a value. Not a std::string itself: a std::variant of types that the standard library declares never to
/// leave it empty (std::string, std::vector, ...) destroys what was never constructed when memory runs out while it is
/// copied (libstdc++ 12).
struct TextValue : std::string {
    using std::string::string;
    TextValue(std::string text) noexcept : std::string(std::move(text)) {}
};

/// A sentence as a value: programs get the English, people their language.
struct SentenceValue : Sentence {
    SentenceValue(Sentence sentence) : Sentence(std::move(sentence)) {}
};

/// One value of a row; the first alternative is "absent".
using Value = std::variant<std::monostate, std::int64_t, bool, Choice, TextValue, SentenceValue>;

template <class T>
Value OrAbsent(const std::optional<T>& value)
{
    return value ? Value(*value) : Value();
}

struct Table {
    std::vector<std::string> columns;
    std::vector<std::vector<Value>> rows;
};

/// One thing with all its properties.
using Record = std::vector<std::pair<std::string, Value>>;

/// Rows that belong to one thing, under a name.
struct Part {
    std::string name;
    Table rows;
};

/// A row of these values. Unlike a braced list it makes no copies.
template <class... Values>
std::vector<Value> MakeRow(Values&&... values)
{
    std::vector<Value> row;
    row.reserve(sizeof...(values));
    (row.push_back(Value(std::forward<Values>(values))), ...);
    return row;
}

} // namespace management
