#pragma once

#include "directory/HumanItem.h"
#include "management/Value.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>

namespace management {

/// One column of qv_User, as the console names it and as the record holds it.
struct Field {
    /// From the narrowest to the widest.
    enum class Use {
        kept,    ///< by nothing but the list of all columns
        shown,   ///< by `user show`
        changed, ///< also an option of `user set` and a column of a file to import
        given,   ///< also an option of `user create`
    };
    using Member = std::variant<std::monostate, CString CHumanItem::*, int CHumanItem::*, bool CHumanItem::*,
                                COleDateTime CHumanItem::*>;

    [[nodiscard]] bool IsText() const { return std::holds_alternative<CString CHumanItem::*>(member); }
    [[nodiscard]] bool IsFlag() const { return std::holds_alternative<bool CHumanItem::*>(member); }
    [[nodiscard]] bool IsDate() const { return std::holds_alternative<COleDateTime CHumanItem::*>(member); }

    std::string_view name; ///< column of a file and key in outputs; with - for _ the name of an option
    std::string_view column;
    Member member; ///< none for a column that the record does not have
    Use use;
    std::string_view help;
};

/// All columns, in the order in which they are shown.
std::span<const Field> Fields();
/// Whether a text begins with a day that there is, as YYYY-MM-DD.
bool BeginsWithDate(std::string_view text);
/// The field of that name, case not counting; null when there is none.
const Field* FindField(std::string_view name);
/// The option of a field, such as --home-city.
std::string OptionOf(const Field& field);

/// A value as its column stores it; nothing is NULL.
using Stored = std::optional<std::string>;
/// Values for some fields, each as its column stores it.
using FieldValues = std::map<const Field*, Stored>;

/// What a person wrote, as the column stores it: flags as 0 or 1, an empty date as NULL.
/// @throws Error (invalid) for what is no value of the field.
Stored ParseValue(const Field& field, const std::string& text);

/// Puts a stored value into the record. A date that cannot be read leaves the record's as it was.
void SetMember(CHumanItem& item, const Field& field, const Stored& value);
/// The value as the record's statements write it.
std::string WrittenBy(const CHumanItem& item, const Field& field);

/// A stored value for output.
Value Shown(const Field& field, const Stored& value);
/// The sex of that number for output.
Value ShownSex(int number);

} // namespace management
