#pragma once

#include "schema/Dialect.h"

#include <optional>
#include <string>
#include <vector>

class CAConnect;

namespace schema::mysql {

/// The statements that give every text of a directory's tables the collation that suits names best: case does not
/// count, while accents, emoji and trailing blanks do. Empty when the tables have such a collation, and where the
/// server knows none. Each statement converts one table by itself, so what is cut short can be run again.
/// @throws CAException, also when ids of notices would become equal, with the ids; then nothing is changed.
std::vector<std::string> CollationStatements(CAConnect& conn);

/// What is wrong with the collation of the tables, or, where there are none yet, of the server.
std::optional<Shortcoming> FindCollationShortcoming(CAConnect& conn);

} // namespace schema::mysql
