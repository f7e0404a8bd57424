#pragma once

#include <cstdint>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace console {

enum class Format { table, csv, json, jsonl, plain };

/// The format of that name.
std::optional<Format> FindFormat(std::string_view name);

/// A number that stands for a word: programs get the number, people the word.
struct Choice {
    std::int64_t number;
    std::string_view word;
};

/// One value of a row; the first alternative is "absent".
using Value = std::variant<std::monostate, std::int64_t, bool, Choice, std::string>;

struct Table {
    std::vector<std::string> columns;
    std::vector<std::vector<Value>> rows;
};

/// One thing with all its properties.
using Record = std::vector<std::pair<std::string, Value>>;

/// Writes rows. A table is aligned by what a terminal shows, and nothing in it is cut; csv follows RFC 4180 with LF;
/// json is an array of objects and jsonl one object per line; plain has a tab between values and no header.
void Render(Format format, const Table& table, std::ostream& out);
/// Writes one record: a line per property (table, plain), a header and a row (csv) or an object.
void Render(Format format, const Record& record, std::ostream& out);

/// Writes one row of csv.
void WriteCsvRow(const std::vector<std::string>& fields, std::ostream& out);

} // namespace console
