#pragma once

#include "console/CommandLine.h"
#include "console/Config.h"
#include "console/Render.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace console {

/// What every command takes: where to work, and how to write what it gives.
struct Arguments {
    std::optional<std::string> db;
    Format format = Format::table;
    bool quiet = false;             ///< nothing but errors on standard error
    bool wide = false;              ///< tables may be wider than the terminal
    std::optional<std::string> log; ///< file that gets a line for each command
    std::optional<std::string> profile;
    bool isFormatGiven = false;
    bool asksPassword = false;            ///< for the database
    std::shared_ptr<const Config> config; ///< once it is known what a command is to work with
};

/// What the command line asks for: a command, or a text to be written.
struct Request {
    const Command* command = nullptr; ///< null: only the text is to be written
    CommandLine given;                ///< to the command
    std::string text;                 ///< help or version
    Arguments arguments;
};

/// Reads the command line, without the program's name. @throws Error (invalid).
Request ParseCommandLine(const std::vector<std::string>& words);
/// The help of the program as a whole.
std::string ProgramHelp();

} // namespace console
