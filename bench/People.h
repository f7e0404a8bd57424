#pragma once

#include "bench/Record.h"
#include "directory/HumanItem.h"

#include <cstdint>
#include <string>

namespace bench {

/// Makes users that are the same in every run.
class People {
public:
    explicit People(std::uint64_t seed) : m_state(seed) {}
    /// A user with a login name of its own.
    Record Next();
    /// Below `limit`, which must not be 0.
    unsigned Below(unsigned limit);

private:
    std::string Word(unsigned length);
    std::string Digits(unsigned length);

    std::uint64_t m_state;
    unsigned m_count = 0;
};

/// The same user as the module's record.
void Fill(CHumanItem& item, const Record& record);

} // namespace bench
