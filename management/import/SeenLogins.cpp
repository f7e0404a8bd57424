#include "management/import/SeenLogins.h"

#include "management/Errors.h"

#include <fmt/format.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <string>

namespace management {

namespace {

constexpr std::int64_t kFirstSlots = 4096;

/// Before the bytes of a name.
struct NameHead {
    std::int64_t line = 0;
    std::uint64_t length = 0;
};

[[noreturn]] void ThrowFailed()
{
    throw Error(ErrorCode::failed, fmt::format("the login names of the file cannot be kept in a temporary file: {}",
                                               std::strerror(errno)));
}

/// Where a slot is in its file. @param at  any number; the table goes round.
std::int64_t PlaceOf(std::uint64_t at, std::int64_t slots, std::size_t size)
{
    return static_cast<std::int64_t>((at & static_cast<std::uint64_t>(slots - 1)) * size);
}

void MoveTo(std::FILE* file, std::int64_t place)
{
    if (std::fseek(file, place, SEEK_SET) != 0) {
        ThrowFailed();
    }
}

} // namespace

SeenLogins::SeenLogins(Hash hash)
    : m_hash(hash), m_slots(kFirstSlots), m_table(MakeTable(kFirstSlots)), m_names(MakeFile())
{
}

std::uint64_t SeenLogins::UsualHash(std::string_view key) { return std::hash<std::string_view>()(key); }

SeenLogins::File SeenLogins::MakeFile()
{
    File file(std::tmpfile());
    if (!file) {
        ThrowFailed();
    }
    // What is read and written lies here and there.
    std::setvbuf(file.get(), nullptr, _IONBF, 0);
    return file;
}

SeenLogins::File SeenLogins::MakeTable(std::int64_t slots)
{
    File table = MakeFile();
    const Slot last;
    Write(table.get(), (slots - 1) * static_cast<std::int64_t>(sizeof last), &last, sizeof last);
    return table;
}

void SeenLogins::Read(std::FILE* file, std::int64_t place, void* bytes, std::size_t count)
{
    MoveTo(file, place);
    if (std::fread(bytes, 1, count, file) != count) {
        ThrowFailed();
    }
}

void SeenLogins::Write(std::FILE* file, std::int64_t place, const void* bytes, std::size_t count)
{
    MoveTo(file, place);
    if (std::fwrite(bytes, 1, count, file) != count) {
        ThrowFailed();
    }
}

std::optional<long> SeenLogins::Add(std::string_view key, long line)
{
    const std::uint64_t hash = m_hash(key);
    Slot slot;
    for (std::uint64_t at = hash;; ++at) {
        const std::int64_t place = PlaceOf(at, m_slots, sizeof slot);
        Read(m_table.get(), place, &slot, sizeof slot);
        if (slot.name == 0) {
            slot = Append(hash, key, line);
            Write(m_table.get(), place, &slot, sizeof slot);
            break;
        }
        const std::optional<long> first = slot.hash == hash ? LineOf(slot, key) : std::nullopt;
        if (first) {
            return first;
        }
    }
    if (++m_count * 2 > m_slots) {
        Grow();
    }
    return std::nullopt;
}

std::optional<long> SeenLogins::LineOf(const Slot& slot, std::string_view key) const
{
    NameHead head;
    Read(m_names.get(), slot.name - 1, &head, sizeof head);
    if (head.length != key.size()) {
        return std::nullopt;
    }
    std::string name(key.size(), '\0');
    Read(m_names.get(), slot.name - 1 + static_cast<std::int64_t>(sizeof head), name.data(), name.size());
    return name == key ? std::optional(static_cast<long>(head.line)) : std::nullopt;
}

SeenLogins::Slot SeenLogins::Append(std::uint64_t hash, std::string_view key, long line)
{
    const NameHead head{line, key.size()};
    std::string bytes(sizeof head, '\0');
    std::memcpy(bytes.data(), &head, sizeof head);
    bytes += key;
    Write(m_names.get(), m_namesEnd, bytes.data(), bytes.size());
    const Slot slot{hash, m_namesEnd + 1};
    m_namesEnd += static_cast<std::int64_t>(bytes.size());
    return slot;
}

void SeenLogins::Grow()
{
    const std::int64_t slots = m_slots * 2;
    File table = MakeTable(slots);
    std::array<Slot, 1024> block;
    for (std::int64_t next = 0; next < m_slots; next += static_cast<std::int64_t>(block.size())) {
        Read(m_table.get(), next * static_cast<std::int64_t>(sizeof(Slot)), block.data(), sizeof block);
        for (const Slot& slot : block) {
            if (slot.name != 0) {
                Insert(table.get(), slots, slot);
            }
        }
    }
    m_table = std::move(table);
    m_slots = slots;
}

void SeenLogins::Insert(std::FILE* table, std::int64_t slots, const Slot& slot)
{
    Slot present;
    for (std::uint64_t at = slot.hash;; ++at) {
        const std::int64_t place = PlaceOf(at, slots, sizeof slot);
        Read(table, place, &present, sizeof present);
        if (present.name == 0) {
            Write(table, place, &slot, sizeof slot);
            return;
        }
    }
}

} // namespace management
