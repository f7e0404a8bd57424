#pragma once

#include "dbaccess/StatementObserver.h"
#include "management/audit/AuditedRow.h"
#include "management/audit/WriteStatement.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class CAConnect;

namespace management::audit {

struct StoredRow;

/// What is known of a change beside its rows.
struct EntryData {
    std::string who;
    std::string frontEnd;
    std::string command;
    std::string reason;
    int partOf = 0;          ///< the first entry of a change of several transactions; 0 in that one
    std::string undoes = {}; ///< ids of entries, with blanks between them
};

/// One row that changed, or equal rows without ids that came or went.
struct RowChange {
    const AuditedTable* table = nullptr;
    std::string key = {};                  ///< its Col_ID; empty where it has none
    std::int64_t count = 1;                ///< how many rows came, or, below 0, went; of a row that stayed 0
    std::optional<AuditedRow> before = {}; ///< of a row that stayed, only what changed; likewise below
    std::optional<AuditedRow> after = {};
    std::vector<std::string> items = {}; ///< as ItemsOf has them, of a row that stayed
};

/// Watches what is written to a directory and records it: rows before and after, whatever statement wrote them. Lives
/// for one transaction, on its thread.
class Recorder final : public dbaccess::StatementObserver {
public:
    /// Watches from now on. @param conn  outlives this.
    explicit Recorder(CAConnect& conn);
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;
    ~Recorder() override;

    void BeforeExecute(CAConnect& conn, const char* sql) override;
    void AfterExecute(CAConnect& conn, const char* sql, int rows) override;

    /// Writes an entry for all that was recorded since the last one, in the transaction that is open.
    /// @param isForced  also when no row changed.
    /// @return its id, 0 when there was nothing to write. @throws CAException.
    int Write(const EntryData& data, bool isForced = false);

private:
    using Key = std::pair<const AuditedTable*, std::string>;
    /// What is known of a row: values by the places of their columns in it.
    using KnownRow = std::vector<std::pair<std::size_t, std::string>>;

    /// A row without an id that an insert adds.
    struct AddedContent {
        std::optional<AuditedRow> row;       ///< where the insert says all of it
        std::vector<AuditedRow> equalBefore; ///< elsewhere, those that were like it before
    };

    /// The rows of a table that were added; their ids are found at the end.
    struct Inserted {
        std::int64_t greatestId = 0;                    ///< before the first one
        std::deque<KnownRow> rows;                      ///< what is known of them
        std::vector<bool> known;                        ///< which columns they are known by
        std::vector<std::string> given;                 ///< the columns that the latest insert names
        std::vector<std::optional<std::size_t>> places; ///< of those
        std::set<std::string> changed;                  ///< ids of those that were changed since
    };

    void NoteRowsBefore(const AuditedTable& table, const WriteStatement& statement);
    void NoteContentsBefore(const AuditedTable& table, const WriteStatement& statement);
    void NoteQueriedBefore(const AuditedTable& table, const WriteStatement& statement);
    [[nodiscard]] bool AddsUnknownContents(const AuditedTable& table, const WriteStatement& insert) const;
    void NoteInsertBefore(const AuditedTable& table, const WriteStatement& statement);
    void NoteInserted(const AuditedTable& table, const WriteStatement& statement);
    void NoteInsertedRow(const AuditedTable& table, Inserted& inserted, const Assignments& assignments);
    void NoteInsertedContent(const AuditedTable& table, const WriteStatement& statement);
    void NoteGreatestId(const AuditedTable& table);
    void TakeInserted(std::vector<StoredRow>& stored);
    void TakeInserted(const AuditedTable& table, Inserted inserted, std::vector<StoredRow>& stored);
    static void FindPlaces(Inserted& inserted, const AuditedTable& table, const WriteStatement& insert);
    static bool TakeKnown(std::deque<KnownRow>& pending, const AuditedRow& row);
    bool IsOfInserted(const AuditedTable& table, const WriteStatement& update);
    void Touch(const AuditedTable& table, const std::string& key, std::optional<AuditedRow> before);
    void AddContent(const AuditedTable& table, const AuditedRow& row, std::int64_t count);
    std::vector<AuditedRow> RowsLike(const AuditedTable& table, const Assignments& assignments);
    std::vector<StoredRow> TakeChanges();
    void TakeRowChanges(std::vector<StoredRow>& stored);
    void AppendValues(std::string& sql, int entry, const StoredRow& row) const;

    CAConnect& m_conn;
    dbaccess::StatementObserver* m_outer;
    bool m_backslashEscapes;
    InsertHead m_head;                         ///< of the latest insert
    std::optional<WriteStatement> m_statement; ///< that runs
    const AuditedTable* m_table = nullptr;     ///< which it writes; null where it is not recorded
    std::vector<AddedContent> m_added;         ///< by an insert that runs
    std::vector<Key> m_touched;                ///< in the order of their first change
    std::map<Key, std::optional<AuditedRow>> m_before;
    std::vector<Key> m_contents;
    std::map<Key, std::int64_t> m_counts; ///< by packed content; of tables that are only counted, the empty text
    std::map<Key, AuditedRow> m_rows;
    std::map<const AuditedTable*, Inserted> m_inserted;
};

} // namespace management::audit
