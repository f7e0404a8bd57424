#pragma once

#include "management/Value.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace management {

struct MessageCounts {
    std::int64_t messages = 0;
    std::int64_t attachments = 0;
    std::int64_t receipts = 0;

    bool operator==(const MessageCounts&) const = default;
};

/// What is left of messages that are gone.
struct OrphanCounts {
    std::int64_t attachments = 0;
    std::int64_t receipts = 0;

    bool operator==(const OrphanCounts&) const = default;
};

/// Messages from one id to another that are deleted together.
struct MessageSlice {
    std::int64_t first = 0;
    std::int64_t last = 0;
    std::size_t messages = 0;
};

/// The stored messages, with their attachments and receipts. Dates are texts as WholeDate makes them.
///
/// Nothing here begins a transaction. All functions @throw DatabaseError.
class Messages {
public:
    /// @param conn  open, and stays so while this is used.
    explicit Messages(CAConnect& conn) : m_conn(conn) {}

    [[nodiscard]] CAConnect& Connection() const { return m_conn; }

    MessageCounts Count();
    OrphanCounts CountOrphans();
    /// The earliest date; nothing when no message has one.
    std::optional<std::string> Oldest();
    /// The latest date; nothing when no message has one.
    std::optional<std::string> Newest();

    // ---- What was sent before a date, and not at it -----------------------------------------------------------------

    MessageCounts CountBefore(const std::string& date);
    /// All of them, by id. @param size  so many in a slice; there may be fewer in the last one.
    std::vector<MessageSlice> SlicesBefore(const std::string& date, std::size_t size);
    /// Deletes those of a slice with all that belongs to them; to be called in a transaction.
    /// @return how many went, as far as the engine says.
    MessageCounts DeleteBefore(const std::string& date, const MessageSlice& slice);

    // ---- Orphans ----------------------------------------------------------------------------------------------------

    void DeleteOrphans();

private:
    std::int64_t Number(const std::string& sql);
    std::int64_t Delete(const std::string& condition);
    std::optional<std::string> Date(const std::string& sql);
    std::string SentBefore(const std::string& date);

    CAConnect& m_conn;
};

/// The log of who logged in. Of its columns only the id is known here.
///
/// Nothing here begins a transaction. All functions @throw DatabaseError.
class LoginLog {
public:
    /// @param conn  open, and stays so while this is used.
    explicit LoginLog(CAConnect& conn) : m_conn(conn) {}

    /// Gives the names of all columns that there are to `begin`, and then the entries to `take`, those of the highest
    /// ids first, until it gives false. @param limit  so many at most.
    void Entries(std::size_t limit, const std::function<void(std::vector<std::string>)>& begin,
                 const std::function<bool(const std::vector<Value>&)>& take);
    bool Has(int id);
    void Delete(int id);

private:
    CAConnect& m_conn;
};

/// A date as a person writes it, YYYY-MM-DD or YYYY-MM-DD HH:MM:SS, in the longer form. @throws Error (invalid).
std::string WholeDate(const std::string& text);

/// What makes the files or tables smaller after much was deleted: a sentence for the engine of that name.
std::string RoomAdvice(std::string_view engineName);

} // namespace management
