#pragma once

#include "console/OutputFile.h"

#include <string>
#include <vector>

namespace console {

/// The files of a SQLite database, also those that are not there now, as no command may write them; none for another
/// engine.
std::vector<OutputFile::InUse> DatabaseFiles(const std::string& url);

} // namespace console
