// Prints what the table of commands has for people, as entries of a template for translations.

#include "console/CommandOption.h"
#include "console/LocalCommand.h"
#include "management/CommandData.h"

#include <fmt/format.h>

#include <algorithm>
#include <iostream>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

namespace {

using namespace management;

std::string Quoted(std::string_view text)
{
    std::string quoted = "\"";
    for (const char ch : text) {
        quoted += ch == '"' || ch == '\\' ? std::string("\\") + ch : ch == '\n' ? "\\n" : std::string(1, ch);
    }
    return quoted + "\"";
}

/// Prints a text once. @param where  for translators. An empty text is the header of a catalogue.
void Print(const std::string& where, std::string_view text, std::string_view context = {})
{
    static std::set<std::pair<std::string_view, std::string>> printed;
    if (text.empty() || !printed.emplace(context, text).second) {
        return;
    }
    std::cout << fmt::format("#. {}\n{}msgid {}\nmsgstr \"\"\n\n", where,
                             context.empty() ? "" : fmt::format("msgctxt {}\n", Quoted(context)), Quoted(text));
}

void PrintCommand(const Command& command)
{
    const std::string path = fmt::format("{}", fmt::join(console::PathOf(command), " "));
    Print("summary: " + path, command.summary);
    for (const ParamInfo& param : command.handler.params()) {
        if (!param.isSet) {
            Print(fmt::format("parameter: {} {}", path, param.name), param.help);
            continue;
        }
        for (const NamedText& text : std::get<ListNamedTexts>(param.check)()) {
            Print(fmt::format("parameter: {} {}", path, text.name), text.help);
        }
    }
    for (const Column& column : command.columns) {
        Print("column: " + path, column.name, "column");
    }
}

} // namespace

int main()
{
    for (const console::Noun& noun : console::Nouns()) {
        Print(fmt::format("noun: {}", noun.name), noun.summary);
    }
    std::ranges::for_each(console::AllCommands(), [](const Command* command) { PrintCommand(*command); });
    for (const std::string& name : NamesIn(Commands())) {
        Print("parameter", name, "column");
    }
    for (const char* help :
         {console::kYesHelp, console::kDryRunHelp, console::kReasonHelp, console::kFileHelp, console::kNullHelp}) {
        Print("option", help);
    }
    return 0;
}
