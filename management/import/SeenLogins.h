#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace management {

/// The login names that a file has had so far, each with the line where it came first. Those of a large file are kept
/// in temporary files without a name, so that memory does not grow with them.
///
/// All functions @throw Error (failed) when these files cannot be made, written or read.
class SeenLogins {
public:
    using Hash = std::uint64_t (*)(std::string_view key);

    /// @param hash  names of the same hash are told apart all the same.
    explicit SeenLogins(Hash hash = &UsualHash) : m_hash(hash) {}

    /// @param key  the login name, as names are compared. @return the line of an earlier one; nothing for a new one,
    /// which is kept.
    std::optional<long> Add(std::string_view key, long line);
    /// The line of a login name; nothing for one that was not added.
    [[nodiscard]] std::optional<long> Find(std::string_view key) const;

private:
    /// Bytes that are written and read here and there: in memory as long as they are few, then in a file.
    class Storage {
    public:
        /// @param size  with so many bytes from the beginning, all of them 0.
        explicit Storage(std::size_t size = 0);

        void Read(std::size_t place, void* bytes, std::size_t count) const;
        /// Writes at the end or before it.
        void Write(std::size_t place, const void* bytes, std::size_t count);

    private:
        struct CloseFile {
            void operator()(std::FILE* file) const noexcept { std::fclose(file); }
        };

        void MoveToFile();

        std::string m_memory; ///< of a file: what comes at its end, not written yet
        std::size_t m_inFile = 0;
        std::unique_ptr<std::FILE, CloseFile> m_file; ///< none while there is room in memory
    };

    /// A place in the table of hashes, which is kept at most half full.
    struct Slot {
        std::uint64_t hash = 0;
        std::uint64_t name = 0; ///< where its name is, counted from 1; 0 for a free slot
    };

    static constexpr std::size_t kFirstSlots = 4096;

    static std::uint64_t UsualHash(std::string_view key);
    /// The slot of a login name, and its line when it is there.
    [[nodiscard]] std::pair<std::size_t, std::optional<long>> Look(std::uint64_t hash, std::string_view key) const;
    [[nodiscard]] std::optional<long> LineOf(const Slot& slot, std::string_view key) const;
    Slot Append(std::uint64_t hash, std::string_view key, long line);
    void Grow();

    Hash m_hash;
    std::size_t m_slots = kFirstSlots; ///< a power of two
    std::size_t m_count = 0;
    Storage m_table{kFirstSlots * sizeof(Slot)};
    Storage m_names;
    std::size_t m_namesEnd = 0;
};

} // namespace management
