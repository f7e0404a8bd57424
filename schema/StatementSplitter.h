#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace schema {

/// Cuts one of our schema files into its statements, without closing semicolons and without comment lines, which not
/// every ODBC driver passes on unharmed.
///
/// A statement ends with a line that ends in ";", a trigger with the line "END;". Comments are on lines of their own.
std::vector<std::string> SplitStatements(std::string_view file);

} // namespace schema
