// A location that is read, and written again from what was read, is read as the same.

#include "dbaccess/CAException.h"
#include "dbaccess/Driver.h"
#include "fuzz/Fuzz.h"

#include <string>

namespace {

std::string Written(const dbaccess::Location& location)
{
    std::string text;
    for (const char ch : location.path) {
        text += ch == '?' ? "%3F" : ch == '%' ? "%25" : std::string(1, ch);
    }
    for (const auto& [name, value] : location.options) {
        text += text.find('?') == std::string::npos ? '?' : '&';
        text += name;
        text += '=';
        text += value;
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text = fuzz::Text(data, size);
    try {
        const dbaccess::Location location = dbaccess::ParseLocation(text);
        const dbaccess::Location again = dbaccess::ParseLocation(Written(location));
        fuzz::Require(again.path == location.path, "the path is the same");
        fuzz::Require(again.options == location.options, "the options are the same");
        const int kind = dbaccess::DbTypeOption(location, 3);
        fuzz::Require(kind == 0 || kind == 1 || kind == 3 || kind == 6, "the kind is one that there is");
    } catch (const CAException&) {
        fuzz::Require(text.find('?') != std::string_view::npos, "what has no options is taken");
    }
    return 0;
}
