#pragma once

#include <istream>
#include <string>

namespace console {

/// A whole file. @throws Error (failed) for one that cannot be read or is not UTF-8.
std::string ReadTextFile(const std::string& path);
/// A whole file, or, for -, what standard input still has. @throws as ReadTextFile of a file.
std::string ReadTextFile(const std::string& path, std::istream& standardInput);

} // namespace console
