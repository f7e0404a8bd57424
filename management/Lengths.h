#pragma once

#include "management/Sentence.h"
#include "management/users/Fields.h"
#include "schema/ColumnLengths.h"

#include <initializer_list>
#include <string>
#include <string_view>

class CAConnect;

namespace management {

/// A text on its way into a column.
struct TextFor {
    std::string_view name; ///< for sentences
    std::string_view column;
    std::string_view text;
};

/// "note has 412 characters, this database takes 255" for a text that is too long; empty for one that fits.
Sentence TooLong(const schema::ColumnLengths& lengths, const TextFor& text);
/// What TooLong says of the first value of a user that does not fit; empty where all fit.
Sentence TooLong(const schema::ColumnLengths& lengths, const FieldValues& values);
/// How long the texts of a table may be. @throws DatabaseError.
schema::ColumnLengths LengthsOf(CAConnect& conn, const std::string& table);

/// @throws Error (invalid) for a text that is longer than its column.
void RequireFits(const schema::ColumnLengths& lengths, const TextFor& text);
/// @throws Error (invalid) for the first text that is longer than its column, DatabaseError.
void RequireFits(CAConnect& conn, const std::string& table, std::initializer_list<TextFor> texts);
/// @param login  empty: it stays as it is. @throws Error (invalid) for the first text of a user that is longer than its
/// column, DatabaseError.
void RequireUserFits(CAConnect& conn, const std::string& login, const FieldValues& values);

} // namespace management
