// Any bytes are read to their end, and a text that is written as a value is read as it was.

#include "fuzz/Fuzz.h"
#include "management/import/CsvReader.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <sstream>
#include <string>

namespace {

using management::CsvReader;
using management::CsvRecord;

void CheckAsFile(std::string_view text)
{
    std::istringstream in{std::string(text)};
    CsvReader reader(in);
    long line = 0;
    while (const std::optional<CsvRecord> record = reader.Next()) {
        fuzz::Require(record->line > line, "records come in the order of their lines");
        fuzz::Require(record->problem.IsEmpty() || record->fields.empty() ||
                          record->problem.English().find("row") != std::string::npos,
                      "a record has a problem or values");
        line = record->line;
    }
    fuzz::Require(!reader.Failed(), "a text is read to its end");
    fuzz::Require(line <= std::ranges::count(text, '\n') + 1, "there are no more lines than breaks");
}

void CheckAsValue(std::string_view text)
{
    std::string quoted = "\"";
    for (const char ch : text) {
        quoted += ch == '"' ? "\"\"" : std::string(1, ch);
    }
    quoted += '"';
    std::istringstream in("first," + quoted + "\r\n" + quoted + ",last");
    CsvReader reader(in);
    const std::optional<CsvRecord> before = reader.Next();
    const std::optional<CsvRecord> after = reader.Next();
    fuzz::Require(before && after && !reader.Next(), "there are two records");
    const bool canBeRead = platform::IsValidUtf8(text) && text.find('\0') == std::string_view::npos;
    fuzz::Require(before->problem.IsEmpty() == canBeRead && after->problem.IsEmpty() == canBeRead,
                  "what is no text is a problem, and nothing else is");
    fuzz::Require(before->fields.size() == 2 && before->fields[1] == text, "the last value is the text");
    fuzz::Require(after->fields.size() == 2 && after->fields[0] == text, "the first value is the text");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    CheckAsFile(fuzz::Text(data, size));
    CheckAsValue(fuzz::Text(data, size));
    return 0;
}
