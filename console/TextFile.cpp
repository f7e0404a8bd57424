#include "console/TextFile.h"

#include "console/ExitCode.h"
#include "console/FileBuffer.h"
#include "console/SourceFile.h"
#include "management/Text.h"
#include "platform/CodePage.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <cerrno>
#include <cstring>
#include <ios>
#include <iterator>

namespace console {

namespace {

void RequireUtf8(const std::string& text, const std::string& name)
{
    if (!platform::IsValidUtf8(text)) {
        throw Error(ErrorCode::failed, fmt::format("{} is not UTF-8", name));
    }
}

} // namespace

std::string ReadTextFile(const std::string& path)
{
    const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    std::string text;
    int error = file < 0 ? errno : 0;
    if (file >= 0) {
        FileBuffer buffer(file);
        try {
            text.assign(std::istreambuf_iterator<char>(&buffer), {});
        } catch (const std::ios_base::failure& e) {
            error = e.code().value();
        }
    }
    if (error != 0) {
        throw Error(ErrorCode::failed, FillPattern("cannot read {}: {}", Visible(path), std::strerror(error)));
    }
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
