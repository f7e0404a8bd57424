#pragma once

#include "management/Command.h"

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace management {

/// The names in a directory that a value of a kind may begin with, such as the login names that begin with "am": for
/// completion on a command line and for pickers. Case does not count.
/// @param most  names at most. @return by name; empty for kinds that name nothing. @throws DatabaseError.
std::vector<std::string> CandidatesFor(CAConnect& conn, Kind kind, std::string_view beginning, std::size_t most);

} // namespace management
