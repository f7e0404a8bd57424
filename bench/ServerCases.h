#pragma once

#include "bench/Directory.h"
#include "bench/Report.h"

#include <string>
#include <vector>

namespace bench {

/// The lines that set folders, replies and the purge of so many messages beside the hand-written ones.
std::vector<Pair> ServerPairs(int purgedMessages);

/// The lines that tell how a purge grows with the messages, per row: one of five that hang together.
std::vector<Growth> PurgeGrowths(const std::vector<int>& messages);

/// Registers the lists of folders and replies on a file with shelves.
void RegisterShelves(Directory& shelves);

void RegisterPurgeByHand(Directory& mail);
/// @param repetitions  for this size; 0 for the command line's.
void RegisterPurge(Directory& mail, int messages, int repetitions);

} // namespace bench
