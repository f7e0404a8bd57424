#pragma once

#include "management/Sentence.h"
#include "management/exchange/ItemNames.h"
#include "management/exchange/LineReader.h"
#include "management/import/UserBlock.h"
#include "management/users/Fields.h"

#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace management {

/// Columns with what they hold.
using ColumnValues = std::map<std::string_view, Stored>;

/// What a line says, with ids in place of names.
struct ResolvedLine {
    std::string name;           ///< of what it is about, for people
    ColumnValues values;        ///< of its row, with the types of items
    std::optional<int> id = {}; ///< of the view, group, role, plan, root or folder that is there already
    Sentence problem = {};      ///< why it cannot be used; empty where it can
};

/// All login names that lines name, each once.
std::vector<std::string> LoginsIn(std::span<const ExportedLine> lines);

/// Reads lines with the names that a directory has.
class LineResolver {
public:
    /// @param users  who have the names that LoginsIn gives. Both outlive this.
    LineResolver(const ItemNames& names, const UserBlock& users) : m_names(names), m_users(users) {}

    [[nodiscard]] ResolvedLine Resolve(const ExportedLine& line) const;

private:
    void Take(ResolvedLine& resolved, const Noun& noun, const JsonMember& given) const;
    void TakeReference(ResolvedLine& resolved, const LineMember& member, const JsonMember& given) const;
    [[nodiscard]] int FindUser(const std::string& login) const;
    [[nodiscard]] int FindItem(MemberKind kind, const std::string& name) const;

    const ItemNames& m_names;
    const UserBlock& m_users;
};

} // namespace management
