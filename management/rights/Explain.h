#pragma once

#include "management/organisation/Organisation.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace management {

/// What is asked about a function; the module has an operation for each.
struct Question {
    enum class Kind {
        all,   ///< the bits of all roles' powers together
        bit,   ///< whether a role's power has this bit
        mask,  ///< whether a role's power has one of these bits
        limit, ///< a number, or unlimited
        guest, ///< whether the first power has the bit for guests
    };

    Kind kind = Kind::all;
    std::uint32_t bits = 0; ///< of bit and mask
};

/// Why a verdict is as it is.
enum class Reason {
    rolesUnread,  ///< the roles could not be read; the verdict is what it was before
    noRow,        ///< no role has a row for the function
    noBit,        ///< there are rows, and none has the bit
    bit,          ///< a row has it
    together,     ///< the bits of all rows
    firstRow,     ///< what the first row says
    unlimitedRow, ///< a row grants unlimited
    largestRow,   ///< the largest of the rows
};

/// A row that took part, in its place.
struct ConsideredRow {
    int roleId = 0;
    std::string role; ///< empty when there is no such role
    bool isLinked = false;
    bool isDefault = false;
    std::optional<int> power;
    bool decides = false;
};

/// A row for the same function that took no part.
struct IgnoredRow {
    ItemKey holder{};
    std::optional<int> power;
};

struct Explanation {
    bool ran = false;         ///< what the module's operation returned
    std::int64_t verdict = 0; ///< what it found: 0 or 1, the bits, or the limit
    Reason reason = Reason::rolesUnread;
    std::vector<ConsideredRow> rows;      ///< in the engine's order
    std::optional<std::size_t> decidedBy; ///< the row that decided alone
    std::vector<IgnoredRow> ignored;      ///< of the user, of groups he is in, of roles of other applications
    bool lacksDefault = false;            ///< there is no default role; rows of role 0 take its place
    std::string trouble;                  ///< why the roles could not be read
};

/// Asks the module about a function, and finds out why it answers so. To be called in a transaction, so that both see
/// the same rows. @throws DatabaseError, and Error for a text with a NUL byte.
Explanation Explain(CAConnect& conn, int userId, std::string_view genre, std::string_view function,
                    const Question& question);

} // namespace management
