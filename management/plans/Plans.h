#pragma once

#include "management/Sentence.h"
#include "management/organisation/Organisation.h"
#include "platform/CString.h"

#include <functional>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace management {

struct PlanKey {
    int id = 0;
    std::string name;

    bool operator==(const PlanKey&) const = default;
};

/// What a list shows of a backup plan.
struct ListedPlan {
    int id;
    std::string name;
    std::string description;
};

/// The columns of a backup plan.
struct PlanData {
    std::string name;
    std::string description;
    std::string data; ///< its settings, which the backup service alone understands

    bool operator==(const PlanData&) const = default;
};

/// What to change of a backup plan; what is not given stays as it is, also NULLs.
struct PlanChanges {
    std::optional<std::string> name;
    std::optional<std::string> description;
    std::optional<std::string> data;
};

/// Backup plans, and the users and groups that they are assigned to. Any text goes in and comes out as it is, whatever
/// the engine: the module puts the texts into its statements as they are, and here they are made ready for that.
///
/// Nothing here begins a transaction. All functions @throw DatabaseError, and Error for a text with a NUL byte.
class Plans {
public:
    /// @param conn  open, and stays so while this is used.
    explicit Plans(CAConnect& conn) : m_conn(conn) {}

    [[nodiscard]] CAConnect& Connection() const { return m_conn; }

    /// By name.
    std::vector<ListedPlan> List();
    /// Nothing when there is no such plan.
    std::optional<PlanData> Load(int id);
    /// The items that a plan is assigned to, also those that are gone.
    std::set<ItemKey> ItemsOf(int id);
    /// Rows that assign a plan; other programs may have written several for the same item.
    int CountAssignments(int id);
    /// The plans that are assigned to an item, each once, by name.
    std::vector<ListedPlan> OfItem(ItemKey item);

    /// Adds a plan; to be called in a transaction. @return the new id.
    int Create(const PlanData& plan);
    /// @param changes  something at least.
    void Change(int id, const PlanChanges& changes);
    /// Deletes a plan and its assignments.
    void Delete(int id);
    /// Assigns a plan; nothing keeps it from being assigned already.
    void Assign(int id, ItemKey item);
    void Unassign(int id, ItemKey item);

private:
    [[nodiscard]] CString EscapeLiteral(std::string_view text) const;

    CAConnect& m_conn;
};

/// The plan that an argument means: a name, case not counting unless plans differ in nothing else, or "id:17". @throws
/// Error (invalid, notFound), or (conflict) that lists what it may mean.
PlanKey FindPlan(Plans& plans, const std::string& argument);

/// @throws Error (invalid) for what no plan should be called: what CheckName refuses, and what begins as an id does.
void CheckPlanName(const std::string& name);

/// "NAME (plan N)", for sentences.
Sentence Named(const PlanKey& plan);

// ---- The document log -----------------------------------------------------------------------------------------------

struct LogEntry {
    int classId = 0;
    int objectId = 0;
    std::string type; ///< a word
    std::string content;
    int creatorId = 0;
    std::string creator;
    std::string genre; ///< written by the module
};

/// What entries to list; what is not given does not matter.
struct LogFilter {
    std::optional<int> classId;
    std::optional<int> objectId;
    std::optional<std::string> type;
    std::optional<int> limit;
};

/// The log of what happened to documents. Any text goes in and comes out as it is, whatever the engine. All functions
/// @throw DatabaseError, and Error for a text with a NUL byte.
class DocLog {
public:
    /// @param conn  open, and stays so while this is used.
    explicit DocLog(CAConnect& conn) : m_conn(conn) {}

    void Add(const LogEntry& entry);
    /// Gives the entries to `take`, until it gives false, in the order of the table: it has neither a date nor an id.
    void List(const LogFilter& filter, const std::function<bool(const LogEntry&)>& take);

private:
    CAConnect& m_conn;
};

} // namespace management
