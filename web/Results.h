#pragma once

#include "management/Sentence.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace web {

/// What is said of a list that is no longer kept.
inline constexpr const char* kResultGone = management::Translatable("this list is no longer kept; ask for it again");

/// Lists of ids of people that stay as they are while somebody looks through them. Any thread may use it.
class Results {
public:
    using Ids = std::shared_ptr<const std::vector<int>>;

    /// Keeps a list for a session, in place of the one that was longest not asked for where there are too many.
    /// @return by which it is found again.
    std::string Keep(const std::string& session, std::vector<int> ids);
    /// Null where the list is no longer kept, or is another session's.
    Ids Find(const std::string& name, const std::string& session);

private:
    struct Result {
        std::string session;
        Ids ids;
        std::uint64_t used = 0; ///< greater than of those that were asked for earlier
    };

    void DropOldest(const std::string* session, std::size_t most);

    std::mutex m_mutex;
    std::map<std::string, Result> m_results;
    std::uint64_t m_uses = 0;
};

} // namespace web
