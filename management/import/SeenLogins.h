#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace management {

/// The login names that a file has had so far, each with the line where it came first. They are kept in temporary files
/// without a name, so that memory does not grow with them.
///
/// All functions @throw Error (failed) when these files cannot be made, written or read.
class SeenLogins {
public:
    using Hash = std::uint64_t (*)(std::string_view key);

    /// @param hash  names of the same hash are told apart all the same.
    explicit SeenLogins(Hash hash = &UsualHash);

    /// @param key  the login name, as names are compared. @return the line of an earlier one; nothing for a new one,
    /// which is kept.
    std::optional<long> Add(std::string_view key, long line);

private:
    struct CloseFile {
        void operator()(std::FILE* file) const noexcept { std::fclose(file); }
    };
    using File = std::unique_ptr<std::FILE, CloseFile>;

    /// A place in the table of hashes, which is kept at most half full.
    struct Slot {
        std::uint64_t hash = 0;
        std::int64_t name = 0; ///< where its name is, counted from 1; 0 for a free slot
    };

    static std::uint64_t UsualHash(std::string_view key);
    static File MakeFile();
    static File MakeTable(std::int64_t slots);
    static void Read(std::FILE* file, std::int64_t place, void* bytes, std::size_t count);
    static void Write(std::FILE* file, std::int64_t place, const void* bytes, std::size_t count);
    static void Insert(std::FILE* table, std::int64_t slots, const Slot& slot);
    [[nodiscard]] std::optional<long> LineOf(const Slot& slot, std::string_view key) const;
    Slot Append(std::uint64_t hash, std::string_view key, long line);
    void Grow();

    Hash m_hash;
    std::int64_t m_slots; ///< a power of two
    std::int64_t m_count = 0;
    File m_table;
    File m_names;
    std::int64_t m_namesEnd = 0;
};

} // namespace management
