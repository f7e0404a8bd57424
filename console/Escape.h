#pragma once

#include "platform/CString.h"

#include <string_view>

class CAConnect;

namespace console {

// Texts on their way into a statement. Which of the two a text needs depends on the operation that it is given to.

/// For operations that double quotes themselves: backslashes are doubled where the engine takes them for its own.
/// @throws Refusal for a text with a NUL byte, here and below.
CString SlashesDoubled(const CAConnect& conn, std::string_view text);

/// For operations that double backslashes themselves where the engine kind is 6, and no quotes.
CString QuotesDoubled(const CAConnect& conn, std::string_view text);

/// For operations that take a text as it is, and for statements of our own: the text as it stands between quotes on
/// this engine.
CString Escaped(const CAConnect& conn, std::string_view text);

/// Whether the engine takes backslashes in texts for its own, whatever kind it is taken for.
bool EscapesBackslashes(const CAConnect& conn);

} // namespace console
