// Any bytes after the first line of an exported directory are read to their end, and a line that is written is read as
// it was.

#include "fuzz/Fuzz.h"
#include "management/Errors.h"
#include "management/JsonLine.h"
#include "management/exchange/Export.h"
#include "management/exchange/LineReader.h"

#include <algorithm>
#include <optional>
#include <sstream>
#include <string>

namespace {

using namespace management;

bool AreSame(const JsonObject& a, const JsonObject& b)
{
    return std::ranges::equal(a, b, [](const JsonMember& left, const JsonMember& right) {
        return left.name == right.name && left.part == right.part && left.value == right.value;
    });
}

void CheckAsFile(std::string_view text)
{
    std::istringstream in(std::string(kExportHead) + "\n" + std::string(text));
    LineReader reader(in, "file");
    reader.RequireHead();
    long last = 1;
    while (const std::optional<ExportedLine> line = reader.Next()) {
        fuzz::Require(line->number > last, "lines come in their order");
        fuzz::Require(line->noun != nullptr || !line->problem.IsEmpty(), "a line has a noun or a problem");
        last = line->number;
    }
    fuzz::Require(!reader.Failed(), "a text is read to its end");
    fuzz::Require(last <= std::ranges::count(text, '\n') + 2, "there are no more lines than breaks");
}

void CheckAsLine(std::string_view text)
{
    JsonObject object;
    try {
        object = ReadJsonLine(text);
    } catch (const Error& e) {
        fuzz::Require(e.Code() == ErrorCode::invalid && *e.what() != '\0', "a line that cannot be used has a reason");
        return;
    }
    const std::string written = WriteJsonLine(object);
    fuzz::Require(written.find('\n') == std::string::npos, "an object is one line");
    fuzz::Require(AreSame(ReadJsonLine(written), object), "a line that was read is written and read as it was");
}

void CheckAsValue(std::string_view text)
{
    const TextValue value{std::string(text)};
    const JsonObject object = {{"plain", {}, value}, {"inner", "first", value}, {"inner", "last", value}};
    fuzz::Require(AreSame(ReadJsonLine(WriteJsonLine(object)), object), "any text is read as it was written");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    CheckAsFile(fuzz::Text(data, size));
    CheckAsLine(fuzz::Text(data, size));
    CheckAsValue(fuzz::Text(data, size));
    return 0;
}
