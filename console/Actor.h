#pragma once

#include <string>
#include <vector>

namespace console {

/// The login name of whoever runs the program, such as "amy"; "root (sudo by amy)" where somebody took on another
/// account to run it; the number of an account without a name.
std::string ActorName();

/// The command as the record keeps it and as it may be typed again: without the options that say where it runs, how it
/// answers, and why. A very long one is cut.
std::string CommandText(const std::vector<std::string>& words);

} // namespace console
