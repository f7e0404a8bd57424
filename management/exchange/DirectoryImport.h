#pragma once

#include "management/Call.h"
#include "management/exchange/LineSource.h"
#include "management/import/Import.h"

#include <string>
#include <vector>

namespace management {

struct DirectoryImportOptions {
    bool update = false;          ///< what is there gets the values of its line
    bool allowPrivileges = false; ///< lines may change super, system and locked, and concern Admin
};

/// Brings what an exported directory has into this one: adds what is not there, by names and paths, and deletes
/// nothing. What a line does not say stays as it is. A bad line stops nothing. The front end takes the columns line,
/// noun, name, outcome and reason when the lines begin, each line once it is safely stored, and the progress. Works in
/// transactions of some hundred lines; all groups are one transaction, and so are all folders. A request to stop is
/// obeyed between them; a dry run does everything in one transaction and undoes it.
/// @param source  lines as ExportDirectory gives them, after kExportHead. @param report  up to date also when this
/// throws. @throws Error for what stops the import as a whole.
void ImportDirectory(Call& call, const ImportSource& source, const DirectoryImportOptions& options,
                     ImportReport& report);

/// Adds and changes what lines say within the Change that the caller has open. The front end takes the progress.
/// @param name  of their file. @throws Error (conflict) that says which line cannot be stored and why, (failed) when it
/// was stopped; DatabaseError.
void StoreLines(Call& call, LineSource& lines, const std::string& name, const DirectoryImportOptions& options);

/// Imports lines that do not come from a file, as ImportDirectory does. @param source  for its name and how many lines
/// there are.
void ImportLines(Call& call, LineSource& lines, const ImportSource& source, const DirectoryImportOptions& options,
                 ImportReport& report);

} // namespace management
