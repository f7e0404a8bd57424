#pragma once

#include "bench/Directory.h"
#include "bench/Report.h"
#include "bench/Tree.h"

#include <vector>

namespace bench {

/// The lines that set the relation lists beside the hand-written ones, in a directory of so many users.
std::vector<Pair> RelationPairs(int users);

/// The lines that tell how the module's relation lists grow with the directory.
std::vector<Growth> RelationGrowths(const std::vector<int>& users);

/// Registers the relation lists of a directory with a tree, by hand.
void RegisterRelationsByHand(Directory& directory, Tree tree);

/// The same by the module.
/// @param repetitions  for the longest of them, in which each call takes as long as all other cases together; 0 for the
///                     command line's.
void RegisterRelations(Directory& directory, Tree tree, int repetitions);

} // namespace bench
