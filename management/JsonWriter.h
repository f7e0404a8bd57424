#pragma once

#include "management/Value.h"

#include <cstdint>
#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace management {

/// Writes JSON piece by piece. The library's values are not for objects and arrays: to destroy one takes memory, and
/// ends the program when there is none.
class JsonWriter {
public:
    enum class Layout : std::uint8_t { line, indented };

    JsonWriter(std::ostream& out, Layout layout);

    void BeginObject() { Begin('{', '}'); }
    void BeginArray() { Begin('[', ']'); }
    /// Ends the object or array that was begun last.
    void End();
    /// Writes the name of a member; its value comes next.
    void WriteName(std::string_view name);
    /// Bytes that are not UTF-8 are replaced. Sentences are said in the language of the thread (Speaking).
    void Write(const Value& value);

    void WriteMember(std::string_view name, const Value& value);
    /// Writes the record's properties as members of the object that was begun last.
    void WriteMembers(const Record& record);
    /// Writes a row as an object.
    void WriteRow(const std::vector<std::string>& columns, const std::vector<Value>& row);

private:
    struct Level {
        char end;
        bool isEmpty;
    };

    void Begin(char begin, char end);
    void Separate();
    void BreakLine();

    std::ostream& m_out;
    Layout m_layout;
    std::vector<Level> m_levels;
    bool m_isAfterName = false;
};

} // namespace management
