#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

class ByHand;

/// Makes a directory file with so many users, a tree over them, and messages.
void MakeDirectory(const std::string& path, int users, int messages);
/// Makes a directory file with so many users, whose ids begin with 1, and what is inserted beside them, in one
/// transaction.
void MakeDirectory(const std::string& path, int users, const std::function<void(ByHand&)>& insertOthers);

/// Login names of users in the file, one in `every`, in no order.
std::vector<std::string> SomeLoginNames(const std::string& path, int every);

} // namespace bench
