#include "console/TextFile.h"

#include "console/ExitCode.h"
#include "console/FileBuffer.h"
#include "console/SourceFile.h"
#include "management/Text.h"
#include "platform/CodePage.h"

#include <iterator>

namespace console {

namespace {

void RequireUtf8(const std::string& text, const std::string& name)
{
    if (!platform::IsValidUtf8(text)) {
        throw Error(ErrorCode::failed, FillPattern("{} is not UTF-8", name));
    }
}

} // namespace

std::string ReadTextFile(const std::string& path)
{
    const std::string text =
        ReadFile(path, [](FileBuffer& buffer) { return std::string(std::istreambuf_iterator<char>(&buffer), {}); });
    RequireUtf8(text, Visible(path));
    return text;
}

std::string ReadTextFile(const std::string& path, std::istream& standardInput)
{
    if (path != kStandardStream) {
        return ReadTextFile(path);
    }
    std::string text{std::istreambuf_iterator<char>(standardInput), {}};
    RequireUtf8(text, "standard input");
    return text;
}

} // namespace console
