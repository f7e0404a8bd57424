#include "management/exchange/ItemNames.h"

#include "basefun/ItemTypes.h"
#include "management/Errors.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/Text.h"
#include "management/documents/Documents.h"
#include "management/roles/Roles.h"

#include <fmt/format.h>

#include <algorithm>

namespace management {

namespace {

constexpr std::string_view kScopeMark = "\\@";
constexpr std::string_view kCountMark = "\\#";

[[noreturn]] void ThrowNoName(const std::string& text)
{
    throw Error(ErrorCode::invalid,
                FillPattern("{} is not a name as an export has them: a backslash precedes /, \\, @ or #, and no name "
                            "is empty",
                            Quoted(text)));
}

/// Gives each place of a picture its path, parents first. @param rootOf  what paths of a place without a parent begin
/// with; nothing where the place is not to be added.
template <class Places, class RootOf, class Add>
void AddPaths(const Places& places, RootOf rootOf, Add add)
{
    std::vector<std::string> paths(places.size());
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < places.size(); ++i) {
        // The way up to what has a path already.
        std::vector<std::size_t> way;
        for (std::optional<std::size_t> at = i; at && paths[*at].empty(); at = places[*at].parent) {
            way.push_back(*at);
        }
        order.insert(order.end(), way.rbegin(), way.rend());
        for (const std::size_t at : way) {
            paths[at] = "?";
        }
    }
    // Of equal names the least id comes first, whatever the order of the places, so that an import counts alike.
    std::ranges::stable_sort(order, {}, [&](std::size_t at) {
        std::size_t depth = 0;
        for (std::optional<std::size_t> up = places[at].parent; up; up = places[*up].parent) {
            ++depth;
        }
        return std::pair(depth, places[at].key.id);
    });
    for (const std::size_t at : order) {
        const auto& place = places[at];
        const std::optional<std::string> root = rootOf(place);
        if (root) {
            paths[at] = *root;
        } else {
            const std::string path =
                (place.parent ? paths[*place.parent] + "/" : std::string()) + PathEscaped(place.name);
            paths[at] = add(place.key, path);
        }
    }
}

/// Takes what ItemNames calls an item apart.
class ItemNameParser {
public:
    ItemNameParser(MemberKind kind, const std::string& text) : m_kind(kind), m_text(text) {}

    ItemName Parse()
    {
        for (std::size_t i = 0; i < m_text.size(); ++i) {
            if (m_text[i] == '/') {
                BeginLevel(i);
            } else if (m_text[i] == '\\') {
                ++i;
                TakeEscaped(i < m_text.size() ? m_text[i] : '\0');
            } else if (!m_isCount) {
                *m_part += m_text[i];
            }
        }
        if (m_parsed.name.empty() || (IsTree(m_kind) && m_text.starts_with('/') && !m_parsed.parent)) {
            ThrowNoName(m_text);
        }
        return m_parsed;
    }

private:
    void BeginLevel(std::size_t slash)
    {
        if (!IsTree(m_kind) || (slash > 0 && m_parsed.name.empty())) {
            ThrowNoName(m_text);
        }
        if (slash > 0) {
            m_parsed.parent = m_text.substr(0, slash);
        }
        m_parsed.name.clear();
        m_parsed.scope.clear();
        m_part = &m_parsed.name;
        m_isCount = false;
    }

    void TakeEscaped(char ch)
    {
        switch (ch) {
        case '/':
        case '\\':
            *m_part += ch;
            break;
        case '@':
            m_part = &m_parsed.scope.emplace_back();
            break;
        case '#':
            m_isCount = true;
            break;
        default:
            ThrowNoName(m_text);
        }
    }

    MemberKind m_kind;
    const std::string& m_text;
    ItemName m_parsed;
    std::string* m_part = &m_parsed.name;
    bool m_isCount = false; ///< which counts items of one name
};

} // namespace

ItemNames::ItemNames(CAConnect& conn)
{
    LoadViews(conn);
    LoadRoles(conn);
    LoadNamed(conn, MemberKind::plan, "Tab_Doc_Backup_Plan");
    LoadNamed(conn, MemberKind::root, "Tab_Doc_Root");
    LoadGroups(conn);
    LoadFolders(conn);
}

void ItemNames::LoadViews(CAConnect& conn)
{
    EachRow(conn,
            "SELECT v.Col_ID, v.Col_Name, v.Col_Type, u.Col_LoginName FROM qv_View v LEFT JOIN qv_User u ON u.Col_ID = "
            "v.Col_OwnerID ORDER BY v.Col_ID",
            [this](CARecordset& row) {
                std::string name = PathEscaped(TextIn(row, 2));
                if (NumberIn(row, 3) != kSystemView) {
                    name += std::string(kScopeMark) + PathEscaped(TextIn(row, 4));
                }
                AddNew(MemberKind::view, NumberIn(row, 1), name);
            });
}

void ItemNames::LoadRoles(CAConnect& conn)
{
    EachRow(conn, "SELECT Col_ID, Col_Name, Col_AppName, Col_DomainID FROM qv_Role ORDER BY Col_ID",
            [this](CARecordset& row) {
                std::string name = PathEscaped(TextIn(row, 2));
                const std::string application = TextIn(row, 3);
                const int domain = NumberIn(row, 4);
                if (application != kOwnApplication || domain != 0) {
                    name += fmt::format("{0}{1}{0}{2}", kScopeMark, PathEscaped(application), domain);
                }
                AddNew(MemberKind::role, NumberIn(row, 1), name);
            });
}

void ItemNames::LoadNamed(CAConnect& conn, MemberKind kind, std::string_view table)
{
    EachRow(conn, fmt::format("SELECT Col_ID, Col_Name FROM {} ORDER BY Col_ID", table),
            [&](CARecordset& row) { AddNew(kind, NumberIn(row, 1), PathEscaped(TextIn(row, 2))); });
}

void ItemNames::LoadGroups(CAConnect& conn)
{
    const Organisation organisation(conn);
    const auto rootOf = [this](const Node& place) {
        return place.key.type == kItemTypeView ? std::optional("/" + *NameOf(MemberKind::view, place.key.id))
                                               : std::nullopt;
    };
    AddPaths(organisation.Nodes(), rootOf, [this](ItemKey key, const std::string& path) {
        AddNew(MemberKind::group, key.id, path);
        return *NameOf(MemberKind::group, key.id);
    });
}

void ItemNames::LoadFolders(CAConnect& conn)
{
    const FolderTree folders(conn);
    const auto rootOf = [this](const DocNode& place) {
        return place.key.kind == DocKind::root ? std::optional("/" + *NameOf(MemberKind::root, place.key.id))
                                               : std::nullopt;
    };
    AddPaths(folders.Nodes(), rootOf, [this](DocKey key, const std::string& path) {
        AddNew(MemberKind::folder, key.id, path);
        return *NameOf(MemberKind::folder, key.id);
    });
}

/// The same with a count after it where the name is another's already.
void ItemNames::AddNew(MemberKind kind, int id, const std::string& name)
{
    std::string counted = name;
    for (int count = 2; m_kinds[kind].ids.contains(counted); ++count) {
        counted = fmt::format("{}{}{}", name, kCountMark, count);
    }
    Add(kind, id, counted);
}

void ItemNames::Add(MemberKind kind, int id, const std::string& name)
{
    Names& names = m_kinds[kind];
    names.names[id] = name;
    names.ids[name] = id;
    names.folded[NameKey(name)].push_back(id);
}

void ItemNames::Remove(MemberKind kind, int id)
{
    Names& names = m_kinds[kind];
    const auto found = names.names.find(id);
    if (found != names.names.end()) {
        std::erase(names.folded[NameKey(found->second)], id);
        names.ids.erase(found->second);
        names.names.erase(found);
    }
}

const std::string* ItemNames::NameOf(MemberKind kind, int id) const
{
    const auto names = m_kinds.find(kind);
    if (names == m_kinds.end()) {
        return nullptr;
    }
    const auto found = names->second.names.find(id);
    return found == names->second.names.end() ? nullptr : &found->second;
}

std::optional<int> ItemNames::Find(MemberKind kind, const std::string& name) const
{
    const auto names = m_kinds.find(kind);
    if (names == m_kinds.end()) {
        return std::nullopt;
    }
    if (const auto exact = names->second.ids.find(name); exact != names->second.ids.end()) {
        return exact->second;
    }
    const auto folded = names->second.folded.find(NameKey(name));
    if (folded == names->second.folded.end() || folded->second.empty()) {
        return std::nullopt;
    }
    if (folded->second.size() > 1) {
        throw Error(ErrorCode::conflict,
                    FillPattern("{} may be {} or {}, which differ in case only", Quoted(name),
                                Quoted(*NameOf(kind, folded->second[0])), Quoted(*NameOf(kind, folded->second[1]))));
    }
    return folded->second.front();
}

std::optional<MemberKind> KindOfType(int itemType)
{
    return itemType == kItemTypeGroup  ? std::optional(MemberKind::group)
           : itemType == kItemTypeRole ? std::optional(MemberKind::role)
           : itemType == kItemTypeView ? std::optional(MemberKind::view)
                                       : std::nullopt;
}

ItemName ParseItemName(MemberKind kind, const std::string& text) { return ItemNameParser(kind, text).Parse(); }

} // namespace management
