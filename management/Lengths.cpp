#include "management/Lengths.h"

#include "management/DatabaseError.h"

#include <fmt/format.h>

namespace management {

namespace {

void ThrowUnlessEmpty(const Sentence& sentence)
{
    if (!sentence.IsEmpty()) {
        throw Error(ErrorCode::invalid, sentence);
    }
}

} // namespace

Sentence TooLong(const schema::ColumnLengths& lengths, const TextFor& text)
{
    const auto excess = lengths.ExcessOf(text.column, text.text);
    return excess ? FillPattern("{} has {} characters, this database takes {}", Sentence(text.name), excess->length,
                                excess->most)
                  : "";
}

Sentence TooLong(const schema::ColumnLengths& lengths, const FieldValues& values)
{
    for (const auto& [field, value] : values) {
        if (field->IsText()) {
            Sentence sentence = TooLong(lengths, TextFor{field->name, field->column, value.value_or("")});
            if (!sentence.IsEmpty()) {
                return sentence;
            }
        }
    }
    return {};
}

schema::ColumnLengths LengthsOf(CAConnect& conn, const std::string& table)
{
    return WithDatabaseErrors(conn, [&] { return schema::ColumnLengths(conn, table); });
}

void RequireFits(const schema::ColumnLengths& lengths, const TextFor& text)
{
    ThrowUnlessEmpty(TooLong(lengths, text));
}

void RequireFits(CAConnect& conn, const std::string& table, std::initializer_list<TextFor> texts)
{
    const schema::ColumnLengths lengths = LengthsOf(conn, table);
    for (const TextFor& text : texts) {
        RequireFits(lengths, text);
    }
}

void RequireUserFits(CAConnect& conn, const std::string& login, const FieldValues& values)
{
    const schema::ColumnLengths lengths = LengthsOf(conn, "qv_User");
    FieldValues all = values;
    all[FindField("login")] = login;
    ThrowUnlessEmpty(TooLong(lengths, all));
}

} // namespace management
