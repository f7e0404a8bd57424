#include "console/NameList.h"

#include "console/TextFile.h"
#include "management/Text.h"
#include "platform/CodePage.h"

#include <fmt/format.h>

#include <algorithm>
#include <sstream>
#include <utility>

namespace console {

namespace {

constexpr std::string_view kStandardInput = "-";

void AddNames(std::istream& in, bool endWithNul, std::vector<std::string>& names)
{
    bool isFirst = true;
    for (std::string name; std::getline(in, name, endWithNul ? '\0' : '\n');) {
        if (std::exchange(isFirst, false)) {
            name = WithoutByteOrderMark(name);
        }
        if (!endWithNul && name.ends_with('\r')) {
            name.pop_back();
        }
        if (!platform::IsValidUtf8(name)) {
            throw Error(ErrorCode::invalid, FillPattern("the name {} is not UTF-8; nothing was done", Quoted(name)));
        }
        if (!name.empty()) {
            names.push_back(name);
        }
    }
}

/// @param isGiven  whether names are to come from a file or a stream. @throws Error (invalid), always.
[[noreturn]] void ThrowNoName(bool isGiven, const std::string& file, std::string_view parameter)
{
    if (!isGiven) {
        binding::ThrowMissing(parameter);
    }
    const bool isStream = file.empty() || file == kStandardInput;
    throw Error(ErrorCode::invalid, FillPattern("{} contains no names", isStream ? "standard input" : Visible(file)));
}

/// Gives the last word of a list to the argument that comes after it, if there is one.
void TakeLast(std::vector<ParamInfo>::const_iterator list, std::vector<ParamInfo>::const_iterator end,
              CommandLine& given)
{
    const auto last = std::find_if(list + 1, end, [](const ParamInfo& param) { return param.isPositional; });
    const auto words = given.values.find(list->name);
    if (last == end || words == given.values.end()) {
        return;
    }
    given.values[std::string(last->name)] = {words->second.back()};
    words->second.pop_back();
    if (words->second.empty()) {
        given.values.erase(words);
    }
}

} // namespace

void ReadNames(const Command& command, CommandLine& given, Terminal& terminal)
{
    const std::vector<ParamInfo> params = command.handler.params();
    const auto list =
        std::ranges::find_if(params, [](const ParamInfo& param) { return param.isPositional && param.isList; });
    if (list == params.end()) {
        return;
    }
    TakeLast(list, params.end(), given);
    NameSource& source = given.names;
    std::vector<std::string> names;
    const bool isGiven = !given.ValuesOf(list->name).empty() || !source.file.empty();
    if (!isGiven && !list->isRequired) {
        return;
    }
    for (const std::string& word : given.ValuesOf(list->name)) {
        if (word == kStandardInput) {
            AddNames(terminal.in, source.endWithNul, names);
        } else {
            names.push_back(word);
        }
    }
    if (source.file == kStandardInput) {
        AddNames(terminal.in, source.endWithNul, names);
    } else if (!source.file.empty()) {
        std::istringstream file(ReadTextFile(source.file));
        AddNames(file, source.endWithNul, names);
    }
    if (names.empty()) {
        ThrowNoName(isGiven, source.file, list->name);
    }
    given.values[std::string(list->name)] = std::move(names);
}

} // namespace console
