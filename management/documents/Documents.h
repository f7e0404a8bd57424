#pragma once

#include "management/Hierarchy.h"
#include "management/Names.h"
#include "management/Paths.h"
#include "platform/CString.h"

#include <compare>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

class CAConnect;

namespace management {

/// The class number by which links name folders.
inline constexpr int kFolderClass = 105;

enum class DocKind { root, folder };

/// A document root or a folder.
struct DocKey {
    DocKind kind;
    int id;

    bool operator==(const DocKey&) const = default;
    std::strong_ordering operator<=>(const DocKey& other) const
    {
        return std::tie(kind, id) <=> std::tie(other.kind, other.id);
    }
};

/// The columns of a document root.
struct RootData {
    int id = 0;
    std::string name;
    std::string description;
    std::string path;
    std::optional<std::string> created; ///< written by the module: now
    std::int64_t maxSize = 0;           ///< of a new root: 32 bits, as the module writes it
    std::int64_t usedSize = 0;
    std::string displayName;
    bool hasSubItems = false;
    int type = 0;
    unsigned long style = 0; ///< 32 bits
    int ownerId = 0;

    bool operator==(const RootData&) const = default;
};

/// What to change of a document root; what is not given stays as it is, also NULLs.
struct RootChanges {
    std::optional<std::string> name;
    std::optional<std::string> description;
    std::optional<std::string> path;
    std::optional<std::string> displayName;
    std::optional<int> maxSize;
    std::optional<int> type;
    std::optional<unsigned long> style; ///< 32 bits
    std::optional<int> ownerId;
};

/// The columns of a folder that are shown.
struct FolderData {
    std::string name;
    unsigned long style = 0; ///< 32 bits
    int creatorId = 0;
    std::string creator;
    std::optional<std::string> created; ///< written by the module: now
    bool hasSubItems = false;
};

struct NewFolder {
    int id;
    int removedLinks; ///< links that pointed at this id before there was the folder
};

// ---- Where folders are ----------------------------------------------------------------------------------------------

/// A root or a folder.
struct DocNode : HierarchyNode {
    DocKey key{};
    std::string name;
    std::string nameKey;     ///< for comparing
    int others = 0;          ///< links to objects other than folders, directly under it
    bool sharesName = false; ///< a root whose name another root has as well

    static constexpr std::string_view kTop = Translatable("root");
    static constexpr std::string_view kInner = "folder";
    static constexpr std::string_view kPathHelp = "/ROOT/FOLDER, or id:17, or root:4";
    [[nodiscard]] static bool IsTop(DocKey key);
    [[nodiscard]] static DocKey KeyOf(bool isTop, int id);
    /// Whether it is a root whose name no other has.
    [[nodiscard]] bool BeginsPath() const;
};

/// A folder in one of its places.
struct Placement {
    DocKey parent;
    DocKey folder;

    bool operator==(const Placement&) const = default;
};

// Compiled once, in Documents.cpp.
extern template class Hierarchy<DocNode>;

/// The roots and folders of a directory, read at once in a few statements: roots first, then folders, each by name,
/// case not counting, and id.
///
/// An argument names a folder by a path, such as /Root/Folder/Folder, where \/ stands for a slash and \\ for a
/// backslash in a name, and case does not count unless names differ in nothing else. A path may also begin with id:17
/// (a folder) or root:4 instead of a root's name, and end there.
class FolderTree : public Hierarchy<DocNode> {
public:
    /// @param conn  open. @throws DatabaseError.
    explicit FolderTree(CAConnect& conn);

    /// All roots and folders that an argument may mean. @throws Error (invalid) for what is not a path.
    [[nodiscard]] std::vector<DocKey> FindAll(const std::string& argument) const;
    /// The one root or folder, or only folder, that an argument means. @throws Error (invalid, notFound), or (conflict)
    /// that lists what it may mean.
    [[nodiscard]] DocKey FindPlace(const std::string& argument) const;
    /// The one folder that an argument means. @throws as FindPlace.
    [[nodiscard]] DocKey FindFolder(const std::string& argument) const;
    /// The one root of a name, which is not a path. @throws as FindPlace.
    [[nodiscard]] DocKey FindRoot(const std::string& name) const;
    /// The folder and the place in which an argument names it. @param from  path of the place that is meant; without
    /// one, an id alone means the only place. @throws as FindPlace.
    [[nodiscard]] Placement FindPlacement(const std::string& argument, const std::optional<std::string>& from) const;
    /// The folders of this name directly under a place: those spelled exactly so, else case not counting.
    [[nodiscard]] std::vector<DocKey> ChildrenNamed(DocKey parent, std::string_view name) const;

    /// Rows that link one of these to a parent or an object to one of these.
    [[nodiscard]] std::size_t CountLinks(const std::vector<DocKey>& keys) const;
    /// Whether some root leads to the folder also without this place.
    [[nodiscard]] bool HangsWithout(const Placement& placement) const;
    /// The cycle that linking a folder to a parent would close, beginning and ending with the folder; else nothing.
    [[nodiscard]] std::vector<DocKey> CycleClosedBy(const Placement& placement) const
    {
        return Hierarchy::CycleClosedBy(placement.parent, placement.folder);
    }

private:
    /// A row of one of the tables of links, also when one of its ends is gone.
    struct LinkRow {
        DocKey parent;
        DocKey folder;
    };

    void LoadPlaces(CAConnect& conn);
    void LoadLinks(CAConnect& conn, DocKind parent);
    void LoadOthers(CAConnect& conn, DocKind parent);
    [[nodiscard]] std::vector<DocKey> NamedAmong(std::vector<std::size_t> places, std::string_view name) const;
    [[nodiscard]] std::vector<DocKey> RootsNamed(std::string_view name) const;
    [[nodiscard]] std::vector<Placement> PlacementsAt(const std::string& argument) const;
    [[nodiscard]] static std::vector<DocKey> FoldersOf(const std::vector<Placement>& placements);
    [[nodiscard]] DocKey RequireFolder(DocKey key) const;
    [[nodiscard]] std::string Listed(const std::vector<DocKey>& keys) const;

    std::vector<LinkRow> m_links;
};

/// @param noun  such as "folder". @throws Error (invalid) for what CheckName refuses, and for what begins as an id
/// does.
void CheckNewName(std::string_view noun, const std::string& name);

/// Takes the last name off a path of a folder. @throws Error (invalid) for a path of a root or of an id alone, and for
/// what is not a path.
ParentAndName SplitLastFolder(const std::string& path);

// ---- Reading and writing --------------------------------------------------------------------------------------------

/// Document roots, folders and links. Any text goes in and comes out as it is, whatever the engine: here stands what
/// each operation of the module escapes by itself.
///
/// Nothing here begins a transaction. All functions @throw DatabaseError, and Error for a text with a NUL byte.
class Documents {
public:
    /// @param conn  open, and stays so while this is used.
    explicit Documents(CAConnect& conn) : m_conn(conn) {}

    [[nodiscard]] CAConnect& Connection() const { return m_conn; }

    // ---- Roots ------------------------------------------------------------------------------------------------------

    /// The roots of a type, or all, by name and type.
    std::vector<RootData> Roots(std::optional<int> type);
    /// Nothing when there is no such root.
    std::optional<RootData> LoadRoot(int id);
    /// Whether there is a root of the company.
    bool HasCompanyRoot();
    /// What is linked directly under a root.
    int CountRootLinks(int id);

    /// Adds a root; to be called in a transaction. @return the new id.
    int CreateRoot(const RootData& root);
    /// @param changes  something at least.
    void ChangeRoot(int id, const RootChanges& changes);

    // ---- Folders ----------------------------------------------------------------------------------------------------

    /// Nothing when there is no such folder.
    std::optional<FolderData> LoadFolder(int id);
    /// A folder directly under a parent whose other name the engine takes for equal to this one.
    std::optional<RowName> FindConfusedFolder(DocKey parent, std::string_view name, std::optional<DocKey> except);

    /// Adds a folder under a parent, and nowhere else: links that a deleted folder of the new id has left behind are
    /// removed. To be called in a transaction. @throws Error (conflict) when another program adds one of that name at
    /// the same moment, so that the new one cannot be told from it, and (database) when the name was not kept as it is.
    NewFolder CreateFolder(DocKey parent, const FolderData& folder);
    /// Links a folder to a parent, whether or not it is there already.
    void AddLink(const Placement& placement, const FolderData& folder);
    void RemoveLink(const Placement& placement);
    /// Renames a folder, also where links show it under its old name.
    void RenameFolder(int id, std::string_view oldName, std::string_view newName);
    /// Sets a folder's style, also in links that have its old one.
    void SetFolderStyle(int id, unsigned long oldStyle, unsigned long newStyle);

    /// Deletes roots and folders, and the links from and to them.
    void Delete(const std::vector<DocKey>& keys);

private:
    [[nodiscard]] CString EscapeLiteral(std::string_view text) const;
    std::vector<RootData> ReadRoots(const std::string& condition);
    int RemoveLinksTo(int folderId);
    void UpdateLinks(int folderId, const std::string& assignment, const std::string& condition);
    void DeleteLinks(DocKind kind, const std::vector<int>& ids);
    template <class Write>
    void Save(std::string_view what, Write write);

    CAConnect& m_conn;
};

} // namespace management
