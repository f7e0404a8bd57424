#include "bench/TemporaryFolder.h"

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <system_error>

namespace bench {

TemporaryFolder::TemporaryFolder() : m_path((std::filesystem::temp_directory_path() / "qvbench-XXXXXX").string())
{
    if (mkdtemp(m_path.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder for the test data");
    }
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_path, ignored);
}

} // namespace bench
