#pragma once

#include "platform/Api.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

class CAConnect;

namespace schema {

/// How long the texts in the columns of one table may be, as the database at hand has them.
class QV_API ColumnLengths {
public:
    /// @param table  as the tables' steps spell it. @throws CAException.
    ColumnLengths(CAConnect& conn, const std::string& table);

    /// A text that is too long.
    struct Excess {
        std::size_t length; ///< of the text, in the engine's characters
        std::size_t most;   ///< that the column takes
    };
    /// By how much a text is too long. Nothing when it fits, and for a column without a limit.
    /// @param column  in any case. @param text  UTF-8.
    [[nodiscard]] std::optional<Excess> ExcessOf(std::string_view column, std::string_view text) const;

private:
    std::map<std::string, std::size_t> m_most; // by name in capitals
    bool m_countsUtf16 = false;
};

} // namespace schema
