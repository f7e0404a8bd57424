#pragma once

#include <string>

namespace console {

/// A whole file. @throws Error (failed) for one that cannot be read or is not UTF-8.
std::string ReadTextFile(const std::string& path);

} // namespace console
