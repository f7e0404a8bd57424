#pragma once

#include "management/Value.h"

#include <ostream>
#include <string>
#include <vector>

namespace management {

/// A value as programs read it.
std::string TextForPrograms(const Value& value);
std::vector<std::string> TextsForPrograms(const std::vector<Value>& row);

/// Writes one row of comma-separated values. @param delimiter  between values.
void WriteCsvRow(const std::vector<std::string>& fields, std::ostream& out, char delimiter = ',');

} // namespace management
