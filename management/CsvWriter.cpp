#include "management/CsvWriter.h"

#include "management/Overloaded.h"

#include <algorithm>
#include <iterator>
#include <string_view>
#include <utility>
#include <variant>

namespace management {

namespace {

void WriteCsvField(const std::string& field, std::ostream& out, char delimiter)
{
    if (field.find_first_of("\"\r\n") == std::string::npos && field.find(delimiter) == std::string::npos) {
        out << field;
        return;
    }
    out << '"';
    for (const char ch : field) {
        out << (ch == '"' ? "\"\"" : std::string_view(&ch, 1));
    }
    out << '"';
}

} // namespace

std::string TextForPrograms(const Value& value)
{
    return std::visit(Overloaded{[](std::monostate) { return std::string(); },
                                 [](std::int64_t number) { return std::to_string(number); },
                                 [](bool flag) { return std::string(flag ? "true" : "false"); },
                                 [](const Choice& choice) { return std::to_string(choice.number); },
                                 [](const std::string& text) { return text; }},
                      value);
}

std::vector<std::string> TextsForPrograms(const std::vector<Value>& row)
{
    std::vector<std::string> texts;
    std::ranges::transform(row, std::back_inserter(texts), TextForPrograms);
    return texts;
}

void WriteCsvRow(const std::vector<std::string>& fields, std::ostream& out, char delimiter)
{
    bool isFirst = true;
    for (const std::string& field : fields) {
        if (!std::exchange(isFirst, false)) {
            out << delimiter;
        }
        WriteCsvField(field, out, delimiter);
    }
    out << '\n';
}

} // namespace management
