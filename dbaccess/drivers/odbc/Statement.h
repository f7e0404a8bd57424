#pragma once

#include <initializer_list>
#include <string_view>

namespace dbaccess::odbc {

/// Whose rules a statement's text follows.
enum class Dialect { access, sqlServer, postgresql, mysql, sqlite, other };

/// @param name  as the ODBC driver names the engine.
Dialect DialectOf(std::string_view name);

/// The one statement of a text, without blanks and comments in front, and without a semicolon that ends it and what
/// stands behind that.
/// @param text  UTF-8. @throws CAException when there is none or a second one.
std::string_view OneStatement(std::string_view text, Dialect dialect);

/// Whether the first word of a statement is one of these.
/// @param words  in lower case, here and in HasWord.
bool BeginsWithOneOf(std::string_view statement, Dialect dialect, std::initializer_list<std::string_view> words);

/// Whether one of these words occurs in a statement, outside quotes and comments.
bool HasWord(std::string_view statement, Dialect dialect, std::initializer_list<std::string_view> words);

/// Whether the statement ends the transaction that it is run in: because it says so, or because the engine commits
/// before it.
bool EndsTransaction(std::string_view statement, Dialect dialect);

} // namespace dbaccess::odbc
