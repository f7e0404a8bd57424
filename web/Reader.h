#pragma once

#include "web/Http.h"
#include "web/People.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

class CAConnect;

namespace web {

/// Gives an open connection to the directory. @throws management::Error.
using OpenDirectory = std::function<std::shared_ptr<CAConnect>()>;

/// Answers for lists of people and for the tree, from a snapshot that is read again after changes made here, and every
/// 30 seconds while somebody looks. Lives on one thread, but for NoteChange.
class Reader {
public:
    explicit Reader(OpenDirectory open) : m_open(std::move(open)) {}

    /// Says that the directory was changed, so that all is read again when somebody asks. Any thread may call it.
    void NoteChange() noexcept { ++m_changes; }
    /// Reads again people of whom only columns were changed.
    void NoteUsers(const std::vector<int>& ids) noexcept;
    /// Reads the snapshot again where it is old and was looked at lately.
    void Refresh() noexcept;
    /// The connection. @throws management::Error.
    CAConnect& Connection();

    // Each @throws management::Error.

    /// `q`, `in`, `deep`, `locked`, `sort` begin a result, a list that stays as it is; `result`, `offset` and `limit`
    /// give rows of it. @param session  to whom results belong.
    Response Users(const Request& request, const std::string& session);
    /// The children of `parent`: `offset`, `limit`.
    Response Tree(const Request& request);
    /// Groups with `q` in their names.
    Response FindInTree(const Request& request);
    Response Overview();

private:
    struct Result {
        std::string session;
        std::vector<int> ids;
    };

    People& Fresh();
    void Load();
    std::string Begin(const Request& request, const std::string& session, People& people);

    OpenDirectory m_open;
    std::shared_ptr<CAConnect> m_conn;
    std::optional<People> m_people;
    std::atomic<std::uint64_t> m_changes = 0;
    std::uint64_t m_seen = 0; ///< how many changes the picture has
    std::chrono::steady_clock::time_point m_read;
    std::chrono::steady_clock::time_point m_asked;
    std::string m_asOf;
    std::map<std::string, Result> m_results;
    std::deque<std::string> m_order; ///< of the results, the oldest first
};

} // namespace web
