#include "management/Candidates.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CARecordset.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/documents/Documents.h"
#include "management/organisation/Organisation.h"

#include <algorithm>
#include <array>

namespace management {

namespace {

/// Keeps the names that begin as is asked for, until there are enough.
class Collector {
public:
    Collector(std::string_view beginning, std::size_t most) : m_key(NameKey(beginning)), m_most(most) {}

    [[nodiscard]] bool IsFull() const { return m_names.size() >= m_most; }
    void Add(std::string name)
    {
        if (!IsFull() && NameKey(name).starts_with(m_key)) {
            m_names.push_back(std::move(name));
        }
    }
    std::vector<std::string> Names()
    {
        std::ranges::sort(m_names);
        m_names.erase(std::unique(m_names.begin(), m_names.end()), m_names.end());
        return std::move(m_names);
    }

private:
    std::string m_key;
    std::size_t m_most;
    std::vector<std::string> m_names;
};

void AddColumn(CAConnect& conn, const char* sql, Collector& names)
{
    EachRow(conn, sql, [&names](CARecordset& row) {
        names.Add(TextIn(row, 1));
        return !names.IsFull();
    });
}

void AddHolders(CAConnect& conn, bool alsoGroups, Collector& names)
{
    const Organisation organisation(conn);
    for (const Node& place : organisation.Nodes()) {
        const bool isGroup = place.key.type == kItemTypeGroup;
        if (alsoGroups || !isGroup) {
            names.Add(alsoGroups ? organisation.PathOf(place.key) : place.name);
        }
    }
}

void AddFolders(CAConnect& conn, Collector& names)
{
    const FolderTree tree(conn);
    for (const DocNode& place : tree.Nodes()) {
        names.Add(tree.PathOf(place.key));
    }
}

struct Prefix {
    std::string_view text;
    Kind kind;
};
constexpr std::array<Prefix, 4> kItemPrefixes = {
    {{"user:", Kind::user}, {"group:", Kind::group}, {"role:", Kind::role}, {"view:", Kind::view}}};

/// "user:amy" and the like: the words before the colon, then the names after it.
std::vector<std::string> ItemsFor(CAConnect& conn, std::string_view beginning, std::size_t most)
{
    std::vector<std::string> names;
    for (const Prefix& prefix : kItemPrefixes) {
        if (beginning.starts_with(prefix.text)) {
            names = CandidatesFor(conn, prefix.kind, beginning.substr(prefix.text.size()), most);
            std::ranges::for_each(names, [&prefix](std::string& name) { name.insert(0, prefix.text); });
            return names;
        }
        if (prefix.text.starts_with(beginning)) {
            names.emplace_back(prefix.text);
        }
    }
    return names;
}

} // namespace

std::vector<std::string> CandidatesFor(CAConnect& conn, Kind kind, std::string_view beginning, std::size_t most)
{
    Collector names(beginning, most);
    switch (kind) {
    case Kind::user:
        AddColumn(conn, "SELECT Col_LoginName FROM qv_User ORDER BY Col_LoginName", names);
        break;
    case Kind::role:
        AddColumn(conn, "SELECT Col_Name FROM qv_Role WHERE Col_DomainID = 0", names);
        break;
    case Kind::title:
        AddColumn(conn, "SELECT DISTINCT Col_JobTitle FROM qv_JobTitle", names);
        break;
    case Kind::plan:
        AddColumn(conn, "SELECT Col_Name FROM Tab_Doc_Backup_Plan", names);
        break;
    case Kind::documentRoot:
        AddColumn(conn, "SELECT Col_Name FROM Tab_Doc_Root", names);
        break;
    case Kind::addIn:
        AddColumn(conn, "SELECT Col_Name FROM kel_AddIn", names);
        break;
    case Kind::package:
        AddColumn(conn, "SELECT Col_Name FROM kel_Package", names);
        break;
    case Kind::view:
        AddHolders(conn, false, names);
        break;
    case Kind::group:
        AddHolders(conn, true, names);
        break;
    case Kind::folder:
        AddFolders(conn, names);
        break;
    case Kind::holder:
    case Kind::item:
        return ItemsFor(conn, beginning, most);
    default:
        break;
    }
    return names.Names();
}

} // namespace management
