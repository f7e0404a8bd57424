#pragma once

#include "management/users/Directory.h"

#include <cstddef>
#include <string>
#include <vector>

// What a deletion takes along elsewhere, for sentences and questions.

namespace management {

/// ", with 2 relations, 1 right"; empty for no references.
std::string WithReferences(const std::vector<Reference>& references);
/// How many rows the references are in sum.
std::size_t CountOf(const std::vector<Reference>& references);

} // namespace management
