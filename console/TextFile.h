#pragma once

#include <istream>
#include <string>

namespace console {

/// A whole file. @throws Error (failed) for one that cannot be read or is not UTF-8.
std::string ReadTextFile(const std::string& path);
/// The same, or, for -, what standard input still has.
std::string ReadTextFile(const std::string& path, std::istream& standardInput);

} // namespace console
