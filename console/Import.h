#pragma once

#include "console/ExitCode.h"
#include "console/OutputFile.h"
#include "console/Terminal.h"
#include "management/users/Directory.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace console {

struct ImportOptions {
    std::string file;                  ///< - for standard input
    std::optional<std::string> result; ///< - for standard output; where none is given, next to the file
    bool dryRun = false;
    bool update = false;                    ///< users who are there get the values of their row
    bool allowPrivileges = false;           ///< rows may change super, system and locked, and concern Admin
    std::optional<std::string> departments; ///< the view under which each department is a group
    bool makeView = false;                  ///< when it is not there
    bool makeGroups = true;                 ///< those of departments that are not there
    std::vector<OutputFile::InUse> inUse;   ///< files that the result must not be written to
    bool isReadOnly = false;                ///< the database is a file that cannot be written
};

/// The names of the columns that a file may have.
std::vector<std::string_view> ImportColumns();

/// Adds the users of a file of comma-separated values, row by row. A bad row stops nothing; each row's outcome goes to
/// the result file once it is safely stored. A signal to stop is obeyed behind the current row.
/// @throws Error for what stops the import as a whole.
Exit ImportUsers(Directory& directory, const ImportOptions& options, Terminal& terminal);

} // namespace console
