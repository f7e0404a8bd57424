#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

// What a directory consists of, as an exported one has it: for each kind of line its table, and for each member of the
// line its columns.

namespace management {

/// What a member of a line means.
enum class MemberKind : std::uint8_t {
    text,
    number,
    moment,       ///< a text that is a date, and may have a time
    secret,       ///< a text that is exported only where secrets are
    secretNumber, ///< the same of a number
    setting,      ///< a text that is a secret in some rows
    user,         ///< the id of a user, by login name
    view,         ///< likewise, by what ItemNames calls them
    group,
    role,
    plan,
    root,
    folder,
    item,   ///< type and id of a user, group, role or view: an object with one member named by the type
    object, ///< class and id of an object: one with the member folder, or with class and id
};

struct LineMember {
    std::string_view name;
    std::string_view column;
    MemberKind kind = MemberKind::text;
    std::string_view typeColumn = {}; ///< of an item or object
};

/// A kind of line.
struct Noun {
    std::string_view name;   ///< of a line
    std::string_view plural; ///< of all of them
    std::string_view table;
    /// Whether rows are views, groups, roles, plans, roots or folders, whose first member is what ItemNames calls them;
    /// text for rows that are none of these.
    MemberKind item = MemberKind::text;
    /// The first members, by which a line finds its row.
    std::size_t keys = 1;
    std::vector<LineMember> members = {};
    /// The first members, without which there is no line; not fewer than the keys.
    std::size_t needed = 0;
    std::string_view order = {};     ///< the columns by which rows come; ids only, since texts are sorted differently
    std::string_view condition = {}; ///< which rows; empty: all
    bool isOfPeople = false;         ///< whether a part of a directory has such lines
    bool hasId = true;               ///< whether rows have a Col_ID that the engine gives
};

/// All of them, in the order in which lines can refer to those before.
const std::vector<Noun>& Nouns();
/// Null when there is none.
const Noun* FindNoun(std::string_view name);

/// What a tree of such items is made of: groups and folders, whose names are paths.
inline bool IsTree(MemberKind item) { return item == MemberKind::group || item == MemberKind::folder; }
/// Whether a line has a member in place of an id.
inline bool IsReference(MemberKind kind) { return kind >= MemberKind::user; }
/// Whether a member is the number of its column.
inline bool IsNumber(MemberKind kind) { return kind == MemberKind::number || kind == MemberKind::secretNumber; }

} // namespace management
