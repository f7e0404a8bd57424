#include "management/import/SeenLogins.h"

#include "management/Errors.h"

#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <utility>

namespace management {

namespace {

constexpr std::size_t kMostInMemory = std::size_t{256} * 1024;
constexpr std::size_t kGrowth = 4;

/// Before the bytes of a name.
struct NameHead {
    std::int64_t line = 0;
    std::uint64_t length = 0;
};

[[noreturn]] void ThrowFailed()
{
    throw Error(ErrorCode::failed, FillPattern("the login names of the file cannot be kept in a temporary file: {}",
                                               std::strerror(errno)));
}

void WriteAll(std::FILE* file, std::size_t place, const char* bytes, std::size_t count)
{
    while (count > 0) {
        const ssize_t written = ::pwrite(::fileno(file), bytes, count, static_cast<off_t>(place));
        if (written < 0 && errno != EINTR) {
            ThrowFailed();
        }
        const auto done = static_cast<std::size_t>(written < 0 ? 0 : written);
        bytes += done;
        place += done;
        count -= done;
    }
}

void ReadAll(std::FILE* file, std::size_t place, char* bytes, std::size_t count)
{
    while (count > 0) {
        const ssize_t read = ::pread(::fileno(file), bytes, count, static_cast<off_t>(place));
        if (read == 0) {
            errno = EIO;
        }
        if (read <= 0 && errno != EINTR) {
            ThrowFailed();
        }
        const auto done = static_cast<std::size_t>(read < 0 ? 0 : read);
        bytes += done;
        place += done;
        count -= done;
    }
}

} // namespace

// ---- Storage --------------------------------------------------------------------------------------------------------

SeenLogins::Storage::Storage(std::size_t size)
{
    if (size <= kMostInMemory) {
        m_memory.assign(size, '\0');
        return;
    }
    MoveToFile();
    if (::ftruncate(::fileno(m_file.get()), static_cast<off_t>(size)) != 0) {
        ThrowFailed();
    }
    m_inFile = size;
}

void SeenLogins::Storage::Read(std::size_t place, void* bytes, std::size_t count) const
{
    if (place >= m_inFile) {
        std::memcpy(bytes, m_memory.data() + (place - m_inFile), count);
    } else {
        ReadAll(m_file.get(), place, static_cast<char*>(bytes), count);
    }
}

void SeenLogins::Storage::Write(std::size_t place, const void* bytes, std::size_t count)
{
    if (place < m_inFile) {
        WriteAll(m_file.get(), place, static_cast<const char*>(bytes), count);
        return;
    }
    const std::size_t at = place - m_inFile;
    m_memory.replace(at, std::min(count, m_memory.size() - at), static_cast<const char*>(bytes), count);
    if (m_memory.size() > kMostInMemory) {
        MoveToFile();
    }
}

// What is in memory goes to the end of the file as a whole, so that nothing lies partly here and partly there.
void SeenLogins::Storage::MoveToFile()
{
    if (!m_file) {
        m_file.reset(std::tmpfile());
    }
    if (!m_file) {
        ThrowFailed();
    }
    WriteAll(m_file.get(), m_inFile, m_memory.data(), m_memory.size());
    m_inFile += m_memory.size();
    m_memory.clear();
}

// ---- Names ----------------------------------------------------------------------------------------------------------

std::uint64_t SeenLogins::UsualHash(std::string_view key) { return std::hash<std::string_view>()(key); }

std::optional<long> SeenLogins::Add(std::string_view key, long line)
{
    const std::uint64_t hash = m_hash(key);
    const auto [place, first] = Look(hash, key);
    if (first) {
        return first;
    }
    const Slot slot = Append(hash, key, line);
    m_table.Write(place, &slot, sizeof slot);
    if (++m_count * 2 > m_slots) {
        Grow();
    }
    return std::nullopt;
}

std::optional<long> SeenLogins::Find(std::string_view key) const { return Look(m_hash(key), key).second; }

std::pair<std::size_t, std::optional<long>> SeenLogins::Look(std::uint64_t hash, std::string_view key) const
{
    for (std::uint64_t at = hash;; ++at) {
        const std::size_t place = (at & (m_slots - 1)) * sizeof(Slot);
        Slot slot;
        m_table.Read(place, &slot, sizeof slot);
        const std::optional<long> line = slot.name != 0 && slot.hash == hash ? LineOf(slot, key) : std::nullopt;
        if (slot.name == 0 || line) {
            return {place, line};
        }
    }
}

std::optional<long> SeenLogins::LineOf(const Slot& slot, std::string_view key) const
{
    NameHead head;
    m_names.Read(slot.name - 1, &head, sizeof head);
    if (head.length != key.size()) {
        return std::nullopt;
    }
    std::string name(key.size(), '\0');
    m_names.Read(slot.name - 1 + sizeof head, name.data(), name.size());
    return name == key ? std::optional(static_cast<long>(head.line)) : std::nullopt;
}

SeenLogins::Slot SeenLogins::Append(std::uint64_t hash, std::string_view key, long line)
{
    const NameHead head{line, key.size()};
    std::string bytes(sizeof head, '\0');
    std::memcpy(bytes.data(), &head, sizeof head);
    bytes += key;
    m_names.Write(m_namesEnd, bytes.data(), bytes.size());
    const Slot slot{hash, m_namesEnd + 1};
    m_namesEnd += bytes.size();
    return slot;
}

void SeenLogins::Grow()
{
    const std::size_t slots = m_slots * kGrowth;
    Storage table(slots * sizeof(Slot));
    std::array<Slot, 1024> block;
    for (std::size_t next = 0; next < m_slots; next += block.size()) {
        m_table.Read(next * sizeof(Slot), block.data(), sizeof block);
        for (const Slot& slot : block) {
            Slot present{0, slot.name};
            for (std::uint64_t at = slot.hash; present.name != 0; ++at) {
                const std::size_t place = (at & (slots - 1)) * sizeof(Slot);
                table.Read(place, &present, sizeof present);
                if (present.name == 0) {
                    table.Write(place, &slot, sizeof slot);
                }
            }
        }
    }
    m_table = std::move(table);
    m_slots = slots;
}

} // namespace management
