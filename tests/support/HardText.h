#pragma once

/// A text that a statement, a pattern, a format or a code page could trip over.
inline constexpr const char* kHard = "O'Brien\\ \"%s\" 'x\\'; -- Żółw {}";
