#pragma once

#include "management/Sentence.h"

#include <cstdint>
#include <stdexcept>
#include <utility>
#include <vector>

namespace management {

/// Why something was not done, as far as programs tell reasons apart.
enum class ErrorCode : std::uint8_t {
    failed,               ///< by the system: a file, memory, a stream
    invalid,              ///< an argument that cannot be
    notFound,             ///< nothing has the name or the id
    conflict,             ///< taken, ambiguous, in the way, or changed meanwhile
    isProtected,          ///< never done by this program
    database,             ///< the database refuses, is gone, or is none that can be used
    confirmationRequired, ///< nobody has said yes
};

/// Why something was not done, in one sentence for people. All that is thrown here on purpose is one of these: one
/// type, so that callers who know more can add to the sentence and pass on the rest.
class Error : public std::runtime_error {
public:
    /// @param candidates  what an ambiguous name may mean, each so that it can be given instead.
    Error(ErrorCode code, Sentence sentence, std::vector<std::string> candidates = {})
        : std::runtime_error(sentence.English()),
          m_code(code),
          m_sentence(std::move(sentence)),
          m_candidates(std::move(candidates))
    {
    }

    /// What `what` says, for a front end that says it in another language.
    [[nodiscard]] const Sentence& Why() const noexcept { return m_sentence; }
    [[nodiscard]] ErrorCode Code() const noexcept { return m_code; }
    [[nodiscard]] const std::vector<std::string>& Candidates() const noexcept { return m_candidates; }

private:
    ErrorCode m_code;
    Sentence m_sentence;
    std::vector<std::string> m_candidates;
};

} // namespace management
