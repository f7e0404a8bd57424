#pragma once

#include <istream>
#include <string>
#include <string_view>

namespace management {

/// What a file that is to hold comma-separated values in UTF-8 holds instead, as far as its first bytes tell: another
/// encoding or another kind of file. One sentence that names it and how to convert it; empty when it looks right.
/// @param beginning  the first bytes, some thousands where there are so many. @param name  of the file, for commands.
std::string OtherFormat(std::string_view beginning, const std::string& name);

/// The same for a whole file whose letters outside ASCII are those of a one-byte encoding: there are such bytes, and
/// none of them belongs to a UTF-8 character. Reads to the end, in little memory. @throws std::ios_base::failure.
std::string OtherEncoding(std::istream& in, const std::string& name);

} // namespace management
