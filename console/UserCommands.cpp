#include "console/UserCommands.h"

#include "console/Import.h"
#include "console/Opened.h"
#include "console/Url.h"
#include "console/Words.h"
#include "management/users/Users.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <utility>

namespace console::user {

namespace {

constexpr Field kDepartments{
    "departments", "", {}, Field::Use::given, "make each department a group below this view, and its people members"};

void DeclareDepartments(CLI::App& app, Arguments& arguments)
{
    const auto take = [&arguments](const std::string& view) { arguments.fields[&kDepartments] = view; };
    app.add_option_function<std::string>(OptionOf(kDepartments), take, std::string(kDepartments.help))
        ->type_name("VIEW");
    auto* makeView = app.add_flag("--make-view", arguments.makeView, "make that view when it is not there")
                         ->needs(OptionOf(kDepartments));
    app.add_flag("--no-new-groups", arguments.noNewGroups, "rows of departments that have no group yet fail")
        ->needs(OptionOf(kDepartments))
        ->excludes(makeView);
}

/// The names with commas between, in lines that fit a terminal.
std::string Wrapped(const std::vector<std::string_view>& names)
{
    constexpr std::size_t kWidest = 78;
    std::string text;
    std::string line = " ";
    for (const std::string_view name : names) {
        if (line.size() + name.size() + 2 > kWidest) {
            text += std::exchange(line, " ") + "\n";
        }
        line += fmt::format(" {}{}", name, name == names.back() ? "" : ",");
    }
    return text + line + "\n";
}

/// The files of a SQLite database, also those that are not there now.
std::vector<OutputFile::InUse> FilesOf(const std::string& url)
{
    std::vector<OutputFile::InUse> files;
    if (const std::optional<std::filesystem::path> file = SqliteFile(url)) {
        for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
            files.push_back({file->native() + suffix, "a file of the database in use"});
        }
    }
    return files;
}

} // namespace

// ---- Arguments and options ------------------------------------------------------------------------------------------

void DeclareOne(CLI::App& app, Arguments& arguments)
{
    app.add_option("USER", arguments.user, std::string(kUserHelp))->required()->type_name("");
}

void DeclareImport(CLI::App& app, Arguments& arguments)
{
    app.add_option("FILE", arguments.file, "comma-separated values in UTF-8 with a header row; - for standard input")
        ->required()
        ->type_name("");
    app.add_flag("--dry-run", arguments.dryRun, "check everything, change nothing");
    app.add_option("--result", arguments.result,
                   "where to write each row's outcome: FILE.result.csv if not given; - for standard output")
        ->type_name("FILE");
    app.add_flag("--update", arguments.update, "set the columns of users who are there; empty values leave theirs");
    DeclareDepartments(app, arguments);
    app.add_flag("--allow-privileges", arguments.allowPrivileges,
                 "rows may change super, system and locked, and concern Admin");
    app.footer("Columns (login is needed, all others may be left out):\n" + Wrapped(ImportColumns()) + "\n" +
               app.get_footer());
}

Exit Import(const Context& context)
{
    Opened opened(context.arguments);
    const Arguments& arguments = context.arguments;
    return ImportUsers(opened.Directory(),
                       {.file = arguments.file,
                        .result = arguments.result,
                        .dryRun = arguments.dryRun,
                        .update = arguments.update,
                        .allowPrivileges = arguments.allowPrivileges,
                        .departments = words::Given(arguments, kDepartments),
                        .makeView = arguments.makeView,
                        .makeGroups = !arguments.noNewGroups,
                        .inUse = FilesOf(ChooseUrl(arguments.db)),
                        .isReadOnly = IsReadOnly(ChooseUrl(arguments.db))},
                       context.terminal);
}

} // namespace console::user
