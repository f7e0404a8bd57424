#pragma once

#include "platform/CString.h"

#include <optional>
#include <string>
#include <string_view>

class CAConnect;

namespace management {

// What CAConnect offers under the same names, for the console's texts and with its errors. Which of them a text needs
// is said where the operation that takes it is declared.

/// For statements of our own, and for operations that put a text in as it is.
/// @throws Error for a text with a NUL byte. @throws DatabaseError when the connection is not open.
CString EscapeLiteral(const CAConnect& conn, std::string_view text);

/// A whole literal, its quotes included. @throws as EscapeLiteral.
std::string Literal(const CAConnect& conn, std::string_view text);
/// A whole literal, its quotes included, or NULL for nothing. @throws as EscapeLiteral.
std::string LiteralOrNull(const CAConnect& conn, const std::optional<std::string>& text);

/// For operations that double quotes themselves. @throws as EscapeLiteral.
CString EscapeBackslashes(const CAConnect& conn, std::string_view text);

/// For operations that double backslashes themselves where the engine kind is 6, and no quotes.
/// @throws as EscapeLiteral.
CString EscapeQuotes(const CAConnect& conn, std::string_view text);

/// Whether a backslash is an escape in the engine's text literals, whatever kind the connection acts on.
bool EscapesBackslashes(const CAConnect& conn);

} // namespace management
