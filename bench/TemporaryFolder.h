#pragma once

#include <string>

namespace bench {

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

} // namespace bench
