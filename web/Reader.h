#pragma once

#include "web/Http.h"
#include "web/People.h"
#include "web/Results.h"

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
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
    /// Tells the time.
    using Clock = std::function<std::chrono::steady_clock::time_point()>;

    /// @param results  outlives this.
    Reader(OpenDirectory open, Results& results, Clock clock = std::chrono::steady_clock::now)
        : m_open(std::move(open)), m_results(results), m_clock(std::move(clock))
    {
    }

    /// Says that the directory was changed, so that all is read again when somebody asks. Any thread may call it.
    void NoteChange() noexcept { ++m_changes; }
    /// Reads again people of whom only columns were changed.
    void NoteUsers(const std::vector<int>& ids) noexcept;
    /// Reads the snapshot again where it is old and was looked at lately.
    void Refresh() noexcept;
    /// The connection. @throws management::Error.
    CAConnect& Connection();

    // Each @throws management::Error.

    /// `q`, `in`, `deep`, `sort`, the traits of people and `among`, an earlier result, begin a result, a list that
    /// stays as it is; `result`, `offset` and `limit` give rows of it. @param session  to whom results belong.
    Response Users(const Request& request, const std::string& session);
    /// Who is meant by names, as a result; and the names that mean nobody, and several.
    Response FindNames(const std::vector<std::string>& names, const std::string& session);
    /// The children of `parent`: `offset`, `limit`.
    Response Tree(const Request& request);
    /// Groups with `q` in their names.
    Response FindInTree(const Request& request);
    Response Overview();

private:
    People& Fresh();
    void Load();
    /// Whether the directory may have become another since the snapshot was read, without a change made here.
    bool MayHaveChanged();
    /// What the engine counts the changes of other connections by; nothing where it does not.
    std::optional<int> Version();
    /// The snapshot, which is there, is as of now.
    void NoteRead();

    OpenDirectory m_open;
    Results& m_results;
    Clock m_clock;
    std::shared_ptr<CAConnect> m_conn;
    std::optional<People> m_people;
    std::atomic<std::uint64_t> m_changes = 0;
    std::uint64_t m_seen = 0;     ///< how many changes the snapshot has
    std::optional<int> m_version; ///< when it was begun to be read
    std::chrono::steady_clock::time_point m_read;
    std::chrono::steady_clock::duration m_readingTime{};
    std::chrono::steady_clock::time_point m_asked;
    std::string m_asOf;
};

} // namespace web
