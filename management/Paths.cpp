#include "management/Paths.h"

#include "management/Errors.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>

namespace management {

std::vector<std::string> SplitPath(const std::string& path)
{
    if (!path.starts_with('/')) {
        throw Error(ErrorCode::invalid,
                    FillPattern("{} is not a path; write /VIEW/GROUP, or id:17, or view:4", Quoted(path)));
    }
    std::vector<std::string> names;
    for (std::size_t i = 0; i < path.size(); ++i) {
        if (path[i] == '/') {
            names.emplace_back();
            continue;
        }
        if (path[i] == '\\' && (++i == path.size() || (path[i] != '/' && path[i] != '\\'))) {
            throw Error(ErrorCode::invalid,
                        FillPattern("in the path {} a backslash is followed by neither / nor \\; write "
                                    "\\\\ for a backslash in a name",
                                    Quoted(path)));
        }
        names.back() += path[i];
    }
    if (std::ranges::any_of(names, &std::string::empty)) {
        throw Error(ErrorCode::invalid, FillPattern("the path {} holds an empty name", Quoted(path)));
    }
    return names;
}

std::string PathEscaped(std::string_view name)
{
    std::string escaped;
    for (const char ch : name) {
        if (ch == '/' || ch == '\\') {
            escaped += '\\';
        }
        escaped += ch;
    }
    return escaped;
}

} // namespace management
