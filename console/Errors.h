#pragma once

#include <stdexcept>
#include <string>

namespace console {

/// What the program ends with.
enum class Exit : int {
    done = 0,
    failed = 1,
    usage = 2,
    notFound = 3,
    conflict = 4,
    isProtected = 5,
    database = 6,
    rowsFailed = 7,
    findings = 8,
    needsYes = 9,
};

/// Why a command is not carried out: one sentence for people, and what the program ends with.
class Refusal : public std::runtime_error {
public:
    Refusal(Exit code, const std::string& sentence) : std::runtime_error(sentence), m_code(code) {}

    [[nodiscard]] Exit Code() const noexcept { return m_code; }

private:
    Exit m_code;
};

} // namespace console
