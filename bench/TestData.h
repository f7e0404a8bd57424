#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

class ByHand;

/// A folder of its own under the system's folder for temporary files, removed with what is in it.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;
    [[nodiscard]] std::string File(const char* name) const { return m_path + "/" + name; }

private:
    std::string m_path;
};

/// Makes a directory file with so many users, a tree over them, and messages.
void MakeDirectory(const std::string& path, int users, int messages);
/// Makes a directory file with so many users, whose ids begin with 1, and what is inserted beside them, in one
/// transaction.
void MakeDirectory(const std::string& path, int users, const std::function<void(ByHand&)>& insertOthers);

/// Login names of users in the file, one in `every`, in no order.
std::vector<std::string> SomeLoginNames(const std::string& path, int every);

} // namespace bench
