#pragma once

#include "management/Sentence.h"
#include "management/audit/Chain.h"

#include <cstdint>
#include <functional>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace management::audit {

/// An entry, with those that go on with it.
struct Entry {
    int id = 0;
    StoredEntry data = {};
    std::int64_t rows = 0; ///< with those of its further parts
    int undoneBy = 0;      ///< the entry that undid it and was not undone itself; 0 where there is none
};

/// Which entries are meant; what is empty says nothing.
struct EntryFilter {
    std::optional<std::string> since = {}; ///< in UTC, YYYY-MM-DD or YYYY-MM-DD HH:MM:SS, likewise below
    std::optional<std::string> before = {};
    std::string who = {};
    std::string noun = {}; ///< the first word of the command
    std::string item = {}; ///< as AuditedRow.h's ItemsOf has it
};

/// A row of an entry, with its own id.
struct NumberedRow {
    int id = 0;
    StoredRow row = {};
};

/// What a walk along the chain has found.
struct Verification {
    std::int64_t entries = 0; ///< that are as they were written
    int firstAltered = 0;     ///< the first entry that is not, or that does not follow the one before it; 0 for none
    std::string lastDigest = {};
};

/// The record of what was changed. Nothing here begins a transaction. All functions @throw DatabaseError.
class AuditLog {
public:
    /// @param conn  open, and stays so.
    explicit AuditLog(CAConnect& conn);

    /// Gives entries from the latest on, until `give` gives false.
    void Each(const EntryFilter& filter, const std::function<bool(const Entry&)>& give,
              int most = std::numeric_limits<int>::max());
    /// @throws Error (notFound).
    Entry Find(int id);
    /// The ids of the entries that make a change, from the last on.
    std::vector<int> Parts(const Entry& entry);
    /// Rows of one of them, from the last on. @param below  ids of rows to come are less.
    std::vector<NumberedRow> RowsBackwards(int part, int below, int most);
    /// Rows of an entry and its further parts, from the first on.
    std::vector<NumberedRow> Rows(const Entry& entry, int most);
    /// Rows of an entry and its further parts that are about an item.
    std::vector<NumberedRow> RowsAbout(const Entry& entry, const std::string& item);
    /// The latest entry after this one that changed the same row and was not undone; nothing where none did.
    std::optional<Entry> LaterChange(const Entry& entry, const StoredRow& row);
    /// Walks along the chain, with little memory. @param progress  takes how many entries were looked at.
    Verification Verify(const std::function<void(long done, long total)>& progress = {});
    /// The id below which entries are older than a time that EntryFilter takes; further parts of a change count as its
    /// first one.
    int FirstFrom(const std::string& time);
    /// How many changes have entries below an id.
    int CountBelow(int id);
    /// Deletes entries below an id.
    void DeleteBelow(int id);

private:
    void LoadUndone();
    /// Entries by their ids, from the first to the last.
    std::vector<Entry> EntriesBetween(int first, int last);
    /// Whether an entry is as it was written. @param before  what was found up to it.
    bool IsIntact(const Entry& entry, const Verification& before);
    std::vector<NumberedRow> ReadRows(const std::string& condition, int most = std::numeric_limits<int>::max());

    CAConnect& m_conn;
    std::map<int, int> m_undoneBy;
};

/// "17 (user lock amy; root, 2026-05-07T09:03:00Z)", for sentences.
Sentence Named(const Entry& entry);

} // namespace management::audit
