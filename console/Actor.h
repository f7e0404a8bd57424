#pragma once

#include <string>
#include <vector>

namespace console {

/// The login name of the account that runs the program, such as "amy", or "root (sudo by amy)" when sudo was used; the
/// number of an account without a name.
std::string ActorName();

/// The command as the record keeps it and as it may be typed again: without the options that say where it runs, how it
/// answers, and why. A very long one is cut.
std::string CommandText(const std::vector<std::string>& words);

} // namespace console
