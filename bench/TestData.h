#pragma once

#include "bench/Record.h"
#include "directory/HumanItem.h"

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

/// Makes users that are the same in every run.
class People {
public:
    explicit People(std::uint64_t seed) : m_state(seed) {}
    /// A user with a login name of its own.
    Record Next();
    /// Below `limit`, which must not be 0.
    unsigned Below(unsigned limit);

private:
    std::string Word(unsigned length);
    std::string Digits(unsigned length);

    std::uint64_t m_state;
    unsigned m_count = 0;
};

/// The same user as the module's record.
void Fill(CHumanItem& item, const Record& record);

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

/// Login names of users in the file, one in `every`, in no order.
std::vector<std::string> SomeLoginNames(const std::string& path, int every);

} // namespace bench
