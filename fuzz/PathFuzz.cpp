// A path that is read, and written again from its names, is the same text; and any name can be written in a path.

#include "console/ExitCode.h"
#include "fuzz/Fuzz.h"
#include "management/organisation/Organisation.h"

#include <string>

namespace {

std::string Written(const std::vector<std::string>& names)
{
    std::string path;
    for (const std::string& name : names) {
        path += "/" + console::PathEscaped(name);
    }
    return path;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(fuzz::Text(data, size));
    try {
        fuzz::Require(Written(console::SplitPath(text)) == text, "a path is written as it was read");
        const console::ParentAndName parts = console::SplitLast(text);
        fuzz::Require(parts.parent + "/" + console::PathEscaped(parts.name) == text, "parent and name are the path");
    } catch (const console::Error&) {
        fuzz::Require(text != "/view/group", "a plain path is taken");
    }
    if (!text.empty()) {
        const std::vector<std::string> names = {text, "between", text};
        fuzz::Require(console::SplitPath(Written(names)) == names, "any name can be written in a path");
    }
    return 0;
}
