#include "web/Page.h"

#include "web/PageFiles.h"
#include "web/Tokens.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace web {

namespace {

struct File {
    std::string_view path;
    std::string_view type;
    std::string_view text;
};

constexpr std::array<File, 4> kFiles = {{{"/", "text/html; charset=utf-8", page::k_index},
                                         {"/app.js", "text/javascript; charset=utf-8", page::k_app},
                                         {"/style.css", "text/css; charset=utf-8", page::k_style},
                                         {"/icon.svg", "image/svg+xml", page::k_icon}}};

} // namespace

Response PageAt(const Request& request)
{
    // A place of the page, such as /directory, has no dot in it.
    const bool isPlace = request.path.find('.') == std::string::npos;
    const auto* const file = std::ranges::find(kFiles, isPlace ? std::string_view("/") : request.path, &File::path);
    if (file == kFiles.end()) {
        return {404, "text/plain; charset=utf-8", "There is no such page.\n"};
    }
    const std::string tag = "\"" + Digest(file->text) + "\"";
    NamedValues headers = {{"ETag", tag}, {"Cache-Control", "no-cache"}};
    if (request.Header("If-None-Match") == tag) {
        return {304, "", "", std::move(headers)};
    }
    return {200, std::string(file->type), std::string(file->text), std::move(headers)};
}

} // namespace web
