// Any bytes are read to their end as entries and as lines of a directory, and a value and a name that are written are
// read as they were.

#include "fuzz/Fuzz.h"
#include "management/Errors.h"
#include "management/exchange/LdifReader.h"
#include "management/exchange/LdifSource.h"

#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace management;

void CheckAsEntries(const std::string& text)
{
    std::istringstream in(text);
    LdifReader reader(in);
    long last = 0;
    while (const std::optional<LdifEntry> entry = reader.Next()) {
        fuzz::Require(entry->line > last, "entries come in their order");
        last = entry->line;
    }
    fuzz::Require(!reader.Failed(), "a text is read to its end");
}

void CheckAsDirectory(const std::string& text, const LdifOptions& options)
{
    std::istringstream in;
    LdifSource source(
        [&]() -> std::istream& {
            in = std::istringstream(text);
            return in;
        },
        options);
    while (const std::optional<ExportedLine> line = source.Next()) {
        fuzz::Require(line->noun != nullptr || !line->problem.IsEmpty(), "a line has a noun or a problem");
    }
    fuzz::Require(!source.Failed(), "a text is read to its end");
}

void CheckAsValue(const std::string& text)
{
    std::istringstream in("dn: cn=a\n" + LdifLine("description", text));
    LdifReader reader(in);
    const std::optional<LdifEntry> entry = reader.Next();
    fuzz::Require(entry && entry->problem.IsEmpty() && !reader.Next(), "there is one entry");
    const std::string* value = entry->Find("description");
    fuzz::Require(value != nullptr && *value == text, "a value is read as it was written");
}

void CheckAsName(const std::string& text)
{
    if (!text.empty()) {
        const std::vector<RelativeName> parts = ParseDn("cn=" + DnEscaped(text) + ",dc=org");
        fuzz::Require(parts.size() == 2 && parts.front().value == text, "a name is read as it was written");
    }
    try {
        fuzz::Require(!ParseDn(text).empty() || text.empty(), "a distinguished name has parts");
    } catch (const Error& e) {
        fuzz::Require(e.Code() == ErrorCode::invalid && *e.what() != '\0', "what is not a name has a reason");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(fuzz::Text(data, size));
    CheckAsEntries(text);
    CheckAsDirectory(text, {});
    CheckAsDirectory(text, {"Company", true});
    CheckAsValue(text);
    CheckAsName(text);
    return 0;
}
