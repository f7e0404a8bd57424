#pragma once

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace management {

/// The text by which names of users, groups, views, roles, titles, plans, document roots, folders, add-ins and packages
/// are compared, whatever the engine takes for equal: case does not count, all else does.
std::string NameKey(std::string_view name);

bool SameName(std::string_view a, std::string_view b);

/// Drops the things that have another name; where some are spelled exactly so, all others.
/// @param nameOf  a member or function that gives a thing's name.
template <class Thing, class NameOf>
void KeepNamed(std::vector<Thing>& things, std::string_view name, NameOf nameOf)
{
    const auto isExact = [&](const Thing& thing) { return std::invoke(nameOf, thing) == name; };
    if (std::ranges::any_of(things, isExact)) {
        std::erase_if(things, [&](const Thing& thing) { return !isExact(thing); });
        return;
    }
    const std::string key = NameKey(name);
    std::erase_if(things, [&](const Thing& thing) { return NameKey(std::invoke(nameOf, thing)) != key; });
}

struct RowName {
    int id = 0;
    std::string name;
};

/// A row of a table whose Col_Name the engine takes for equal to a name from which it differs by more than case; such
/// a name is not this row's, and cannot be given to another.
/// @param condition  which rows; empty: all. @throws DatabaseError.
std::optional<RowName> FindConfused(CAConnect& conn, std::string_view table, std::string_view name,
                                    std::string_view condition = {});

/// FindConfused of a table whose ids and names are in other columns. @throws DatabaseError.
std::optional<RowName> FindConfused(CAConnect& conn, std::string_view table, std::string_view idColumn,
                                    std::string_view nameColumn, std::string_view name, std::string_view condition);

/// @param noun  such as "login name". @throws Error (conflict), always.
[[noreturn]] void ThrowConfused(std::string_view noun, std::string_view name, const RowName& other);

/// How an argument begins that gives an id in place of a name.
inline constexpr std::string_view kIdPrefix = "id:";

/// The id of an argument such as id:17; nothing for one that begins otherwise.
/// @param item  for the sentence, such as "a user". @throws Error (invalid) for id: without a number.
std::optional<int> IdIn(std::string_view argument, std::string_view item);

/// @param noun  such as "group". @throws Error (invalid) for what nothing should be called: nothing, outer
/// blanks, control characters.
void CheckName(std::string_view noun, const std::string& name);

} // namespace management
