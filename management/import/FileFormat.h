#pragma once

#include "management/Sentence.h"

#include <istream>
#include <string>
#include <string_view>

namespace management {

/// What a file that is to hold comma-separated values in UTF-8 seems to be instead.
struct OtherFile {
    std::string encoding = {}; ///< as DecodingBuffer takes it; empty where the file is to be read as it is
    Sentence problem = {};     ///< one sentence that names another kind of file and how to convert it; empty for none
};

/// Whether what a file begins with is LDIF: an entry or the version, which comments may come before.
bool IsLdif(std::string_view beginning);

/// By the first bytes. @param beginning  some thousands, where there are so many. @param name  of the file, for
/// commands.
OtherFile GuessFormat(std::string_view beginning, const std::string& name);

/// By all bytes, whether letters outside ASCII are those of a one-byte encoding: there are such bytes, and none of them
/// belongs to a UTF-8 character. Reads to the end, in little memory. @throws
/// std::ios_base::failure.
OtherFile GuessEncoding(std::istream& in, const std::string& name);

} // namespace management
