#include "console/Import.h"
#include "console/LocalCommand.h"
#include "console/Session.h"
#include "console/Url.h"

#include <fmt/format.h>

#include <utility>

namespace console {

namespace {

struct ImportInput {
    std::string file;
    bool dryRun = false;
    std::optional<std::string> result;
    bool update = false;
    std::optional<std::string> departments;
    bool makeView = false;
    bool noNewGroups = false;
    bool allowPrivileges = false;
};

constexpr Param<ImportInput> kImportParams[] = {
    {"FILE", &ImportInput::file, Kind::file, "comma-separated values in UTF-8 with a header row; - for standard input"},
    {"dry_run", &ImportInput::dryRun, Kind::flag, "check everything, change nothing"},
    {"result", &ImportInput::result, Kind::file,
     "where to write each row's outcome: FILE.result.csv if not given; - for standard output"},
    {"update", &ImportInput::update, Kind::flag, "set the columns of users who are there; empty values leave theirs"},
    {"departments", &ImportInput::departments, Kind::view,
     "make each department a group below this view, and its people members"},
    {"make_view", &ImportInput::makeView, Kind::flag, "make that view when it is not there"},
    {"no_new_groups",
     &ImportInput::noNewGroups,
     Kind::flag,
     "rows of departments that have no group yet fail",
     {},
     "make_view"},
    {"allow_privileges", &ImportInput::allowPrivileges, Kind::flag,
     "rows may change super, system and locked, and concern Admin"},
};

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

std::string Notes() { return "Columns (login is needed, all others may be left out):\n" + Wrapped(ImportColumns()); }

void RequireDepartments(const ImportInput& in)
{
    if ((in.makeView || in.noNewGroups) && !in.departments) {
        throw Error(ErrorCode::invalid,
                    fmt::format("{} requires --departments", in.makeView ? "--make-view" : "--no-new-groups"));
    }
}

Exit ImportFile(const LocalCall& call)
{
    const auto in = binding::ReadInput<kImportParams>(call.given);
    RequireDepartments(in);
    Session opened(call.arguments);
    const std::string url = ChooseUrl(call.arguments.db);
    return ImportUsers(opened.Directory(),
                       {.file = in.file,
                        .result = in.result,
                        .dryRun = in.dryRun,
                        .update = in.update,
                        .allowPrivileges = in.allowPrivileges,
                        .departments = in.departments,
                        .makeView = in.makeView,
                        .makeGroups = !in.noNewGroups,
                        .inUse = FilesOf(url),
                        .isReadOnly = IsReadOnly(url)},
                       call.terminal);
}

constexpr LocalCommand kCommands[] = {
    {{.path = {"user", "import"},
      .summary = "add the users of a file, row by row",
      .examples = "  qvadmin user import people.csv --dry-run\n"
                  "  qvadmin user import people.csv\n"
                  "  qvadmin user import people.csv --update --result outcomes.csv\n"
                  "  qvadmin user import people.csv --departments Company --make-view --dry-run",
      .notes = &Notes,
      .effect = Effect::create,
      .duration = Duration::longRunning,
      .params = &InfosOf<kImportParams>},
     &ImportFile},
};

} // namespace

std::span<const LocalCommand> ImportCommands() { return kCommands; }

} // namespace console
