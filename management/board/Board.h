#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class CAConnect;

namespace management {

/// A notice as lists show it; dates are texts, empty where there is none.
struct Notice {
    std::string id; ///< any text
    std::string subject;
    std::string creator;
    std::string created;
};

struct NoticeReply {
    std::int64_t id;
    std::string creator;
    std::string created;
    std::string content;
};

/// A record of who read a notice.
struct NoticeReader {
    std::int64_t id;
    std::string item; ///< who it was, as the server writes it
    std::string name;
    std::string read; ///< when
    std::int64_t flag;
};

/// What belongs to a notice.
struct NoticeParts {
    std::vector<std::string> attachments;
    std::vector<NoticeReply> replies;
    std::vector<NoticeReader> readers;
};

/// The bulletin board. Any text goes in and comes out as it is, whatever the engine.
///
/// Nothing here begins a transaction. All functions @throw DatabaseError, and Error for an id with a NUL byte.
class Board {
public:
    /// @param conn  open, and stays so while this is used.
    explicit Board(CAConnect& conn) : m_conn(conn) {}

    /// The notices, the latest first.
    std::vector<Notice> List();
    std::string Content(const std::string& id);
    NoticeParts Parts(const std::string& id);
    /// Deletes a notice and all that belongs to it; to be called in a transaction.
    void Delete(const std::string& id);

private:
    CAConnect& m_conn;
};

/// The notices of these ids, each once. @throws Error (notFound) before anything else when one of them is not there.
std::vector<Notice> FindNotices(Board& board, const std::vector<std::string>& ids);

} // namespace management
