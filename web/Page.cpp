#include "web/Page.h"

#include "web/PageFiles.h"
#include "web/Tokens.h"

#include <fmt/format.h>

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

constexpr std::string_view kSignedIn = "signed_in";
constexpr std::array<File, 5> kFiles = {{{"/", "text/html; charset=utf-8", page::k_index},
                                         {kSignedIn, "text/html; charset=utf-8", page::k_signed_in},
                                         {"/app.js", "text/javascript; charset=utf-8", page::k_app},
                                         {"/style.css", "text/css; charset=utf-8", page::k_style},
                                         {"/icon.svg", "image/svg+xml", page::k_icon}}};

std::array<std::string, kFiles.size()> Tags()
{
    std::array<std::string, kFiles.size()> tags;
    std::ranges::transform(kFiles, tags.begin(), [](const File& file) { return "\"" + Digest(file.text) + "\""; });
    return tags;
}

/// What stands in the page of who is signed in between the tags of its own script.
constexpr std::string_view EarlyScript()
{
    constexpr std::string_view tag = "<script>";
    constexpr std::string_view page = page::k_signed_in;
    constexpr std::size_t begin = page.find(tag) + tag.size();
    return page.substr(begin, page.find("</script>", begin) - begin);
}

} // namespace

const std::string& EarlyScriptSource()
{
    static const std::string source = fmt::format("'sha256-{}'", Base64Digest(EarlyScript()));
    return source;
}

Response PageAt(const Request& request, bool isSignedIn)
{
    // A place of the page, such as /directory, has no dot in it.
    const bool isPlace = request.path.find('.') == std::string::npos;
    const std::string_view place = isSignedIn ? kSignedIn : "/";
    const auto* const file = std::ranges::find(kFiles, isPlace ? place : request.path, &File::path);
    if (file == kFiles.end()) {
        return {404, "text/plain; charset=utf-8", "There is no such page.\n"};
    }
    static const std::array<std::string, kFiles.size()> tags = Tags();
    const std::string& tag = tags[static_cast<std::size_t>(file - kFiles.begin())];
    NamedValues headers = {{"ETag", tag}, {"Cache-Control", "no-cache"}};
    if (isPlace) {
        headers.emplace_back("Vary", "Cookie");
    }
    if (request.Header("If-None-Match") == tag) {
        return {304, "", "", std::move(headers)};
    }
    return {200, std::string(file->type), std::string(file->text), std::move(headers)};
}

} // namespace web
