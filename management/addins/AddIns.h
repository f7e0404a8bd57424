#pragma once

#include "management/Sentence.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace management {

/// What is known of an add-in beside its data.
struct AddIn {
    int id = 0;
    std::string name;
    int type = 0;
    bool isPublic = false;
    bool isDisabled = false;
    std::string description;
    std::string package;
    int index = 0; ///< the highest comes first
};

struct NewAddIn {
    std::string name;
    int type = 0;
    std::string data;
    bool isPublic = false;
    std::string description;
    std::string package;
    std::optional<int> index; ///< above all others if not given
};

/// What is to be different in an add-in.
struct AddInChanges {
    std::optional<std::string> name;
    std::optional<std::string> data;
    std::optional<bool> isPublic;
    std::optional<std::string> description;
    std::optional<std::string> package;
    std::optional<int> index;

    bool operator==(const AddInChanges&) const = default;
};

/// Which add-ins a list has; all where nothing is said.
struct AddInFilter {
    std::optional<std::string> package;
    std::optional<int> type;
};

/// The add-ins of a server. Any text goes in and comes out as it is, whatever the engine.
///
/// Nothing here begins a transaction. All functions @throw DatabaseError, and Error for a text with a NUL byte.
class AddIns {
public:
    /// @param conn  open, and stays so while this is used.
    explicit AddIns(CAConnect& conn) : m_conn(conn) {}

    [[nodiscard]] CAConnect& Connection() const { return m_conn; }

    /// By index, the highest first, and those of the same index by id.
    std::vector<AddIn> List(const AddInFilter& filter);
    /// Those of a name, by id: spelled exactly so or, where none is, case not counting.
    /// @param type  only of this one; of all if not given.
    std::vector<AddIn> FindAll(std::string_view name, std::optional<int> type);
    std::optional<AddIn> Load(int id);
    std::string Data(int id);
    /// 0 where there are no add-ins.
    int HighestIndex();

    /// Adds an add-in, switched on; to be called in a transaction. @param index  used whatever addIn has.
    /// @return the new id.
    int Create(const NewAddIn& addIn, int index);
    /// Writes what is given and nothing else. @param changes  at least one.
    void Change(int id, const AddInChanges& changes);
    void Enable(int id, bool enabled);
    void SetIndex(int id, int index);
    void Delete(int id);
    /// Deletes all of a package.
    void DeleteOfPackage(std::string_view package);

private:
    /// Those that name a package as it is spelled or, where none is installed under theirs, in another case.
    void KeepOfPackage(std::vector<AddIn>& addIns, std::string_view package);
    std::vector<AddIn> Select(const std::string& condition);
    [[nodiscard]] std::string Text(std::string_view text) const;

    CAConnect& m_conn;
};

struct Package {
    int id = 0;
    std::string name;
    int version = 0;
    std::string description;
    std::optional<std::string> modified; ///< as it is stored
    bool isDisabled = false;
};

/// The packages that add-ins come in. Any text goes in and comes out as it is, whatever the engine.
///
/// Nothing here begins a transaction. All functions @throw DatabaseError, and Error for a text with a NUL byte.
class Packages {
public:
    /// @param conn  open, and stays so while this is used.
    explicit Packages(CAConnect& conn) : m_conn(conn) {}

    /// By name.
    std::vector<Package> List();
    /// Those of a name, by id: spelled exactly so or, where none is, case not counting.
    /// @throws Error (conflict) when these are spelled in several ways.
    std::vector<Package> FindAll(std::string_view name);
    /// Adds a package, whatever its id and flag say; to be called in a transaction. @return the new id.
    int Insert(const Package& package);
    /// Writes version, description and date of the package of this id.
    void Update(const Package& package);
    void Delete(int id);

private:
    std::vector<Package> Select(const std::string& condition);

    CAConnect& m_conn;
};

// ---- What an administrator does with add-ins ----

/// The add-in that an argument means: a name, or "id:17". @param type  tells those of one name apart.
/// @throws Error (notFound), or (conflict) that lists what it may mean.
AddIn FindAddIn(AddIns& addIns, const std::string& argument, std::optional<int> type);
/// The add-ins that arguments mean, each once. @throws as FindAddIn, before anything is done, and names all that are
/// not found.
std::vector<AddIn> FindAddIns(AddIns& addIns, const std::vector<std::string>& arguments, std::optional<int> type);

/// Adds an add-in; to be called in a transaction. @return the new id. @throws Error (invalid) for what no add-in should
/// be called, (conflict) when the name is taken in its type.
int CreateAddIn(AddIns& addIns, const NewAddIn& addIn);
/// To be called in a transaction. @throws Error as CreateAddIn does.
void ChangeAddIn(AddIns& addIns, const AddIn& addIn, const AddInChanges& changes);

enum class Move { up, down, top };

/// Moves an add-in in the list of all, giving others new indexes as far as is needed; to be called in a transaction.
/// @return whether it was not there already.
bool MoveAddIn(AddIns& addIns, const AddIn& addIn, Move move);

/// The package of a name. @throws Error (notFound), or (conflict) when there are several.
Package FindPackage(Packages& packages, const std::string& name);

/// "NAME (add-in N)", for sentences.
Sentence Named(const AddIn& addIn);

} // namespace management
