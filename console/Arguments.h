#pragma once

#include "console/CommandLine.h"
#include "console/Render.h"
#include "management/users/Fields.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace console {

/// What was written on the command line; each command looks at what it has declared.
struct Arguments {
    std::optional<std::string> db;
    Format format = Format::table;

    std::vector<std::string> users;
    std::string user;
    std::map<const Field*, std::string> fields; ///< as written
    std::optional<int> limit;
    bool yes = false;
    std::string file;
    std::optional<std::string> result;
    bool dryRun = false;
    bool update = false;
    bool allowPrivileges = false;
    bool makeView = false;
    bool noNewGroups = false;
};

struct Command;

/// What the command line asks for: a command, one of the table, or a text to be written.
struct Request {
    const Command* command = nullptr;
    const management::Command* tableCommand = nullptr;
    CommandLine given; ///< to the command of the table
    std::string text;  ///< help or version
    Arguments arguments;
};

/// Reads the command line, without the program's name. @throws Error (invalid).
Request ParseCommandLine(const std::vector<std::string>& words);
/// The help of the program as a whole.
std::string ProgramHelp();

} // namespace console
