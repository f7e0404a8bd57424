#include "console/DatabaseFiles.h"

#include "console/Url.h"

namespace console {

std::vector<OutputFile::InUse> DatabaseFiles(const std::string& url)
{
    std::vector<OutputFile::InUse> files;
    if (const std::optional<std::filesystem::path> file = SqliteFile(url)) {
        for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
            files.push_back({file->native() + suffix, "a file of the database in use"});
        }
    }
    return files;
}

} // namespace console
