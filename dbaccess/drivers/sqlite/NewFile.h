#pragma once

#include <string>

namespace dbaccess::sqlite {

/// Makes an empty file for its owner alone, whatever the umask; the library gives the files beside it the same mode. A
/// file that is there is left alone, and a link is followed. @throws CAException.
void MakeFile(const std::string& path);

} // namespace dbaccess::sqlite
