#pragma once

#include "console/Fields.h"
#include "console/Render.h"

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
    std::string login;
    std::map<const Field*, std::string> fields; ///< as written
    std::string match;
    std::optional<int> limit;
    bool onlyLocked = false;
    bool onlyActive = false;
    bool yes = false;
    bool dropPassword = false;
    std::string file;
    std::optional<std::string> result;
    bool dryRun = false;
    bool update = false;
    bool allowPrivileges = false;
    bool makeView = false;
    bool noNewGroups = false;
};

struct Command;

/// What the command line asks for.
struct Request {
    const Command* command = nullptr; ///< null: only the text is to be written
    std::string text;                 ///< help or version
    Arguments arguments;
};

/// Reads the command line, without the program's name. @throws Refusal (usage).
Request ParseCommandLine(const std::vector<std::string>& words);
/// The help of the program as a whole.
std::string ProgramHelp();

} // namespace console
