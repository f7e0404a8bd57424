#pragma once

#include <string>

namespace dbaccess {

/// Refuses a file with a password in it that others than its owner can open. @param path  in UTF-8, of a file that
/// exists.
/// @throws CAException, also when the file's mode cannot be read.
void RequireClosedToOthers(const std::string& path);

} // namespace dbaccess
