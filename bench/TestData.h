#pragma once

#include <string>
#include <vector>

namespace bench {

/// Makes a directory file with so many users, a tree over them, and messages.
void MakeDirectory(const std::string& path, int users, int messages);

/// Login names of users in the file, one in `every`, in no order.
std::vector<std::string> SomeLoginNames(const std::string& path, int every);

} // namespace bench
