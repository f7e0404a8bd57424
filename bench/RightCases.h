#pragma once

#include "bench/Directory.h"
#include "bench/Report.h"
#include "bench/RoleRights.h"

#include <vector>

namespace bench {

/// The lines that set the effective rights of a user beside the hand-written ones.
std::vector<Pair> RightPairs();

/// Registers them on a directory with roles and rights.
void RegisterRights(Directory& directory, RoleRights rights);

} // namespace bench
