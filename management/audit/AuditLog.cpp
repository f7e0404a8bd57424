#include "management/audit/AuditLog.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/Escape.h"
#include "management/Query.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <sstream>

namespace management::audit {

namespace {

constexpr std::string_view kEntryColumns =
    "Col_ID, Col_Time, Col_Who, Col_FrontEnd, Col_Command, Col_Reason, Col_PartOf, Col_Undoes, Col_Rows, Col_Previous, "
    "Col_Digest";
constexpr std::string_view kRowColumns =
    "Col_ID, Col_Table, Col_Key, Col_Count, Col_Item, Col_OtherItem, Col_Before, Col_After";

Entry EntryIn(CARecordset& row)
{
    Entry entry;
    entry.id = NumberIn(row, 1);
    entry.data = {.time = TextIn(row, 2),
                  .who = TextIn(row, 3),
                  .frontEnd = TextIn(row, 4),
                  .command = TextIn(row, 5),
                  .reason = TextIn(row, 6),
                  .partOf = NumberIn(row, 7),
                  .undoes = TextIn(row, 8),
                  .rows = NumberIn(row, 9),
                  .previous = TextIn(row, 10),
                  .digest = TextIn(row, 11)};
    entry.rows = entry.data.rows;
    return entry;
}

NumberedRow RowIn(CARecordset& row)
{
    __int64 count = 0;
    row.GetValue(4, count);
    return {NumberIn(row, 1),
            {TextIn(row, 2), TextIn(row, 3), count, TextIn(row, 5), TextIn(row, 6), OptionalTextIn(row, 7),
             OptionalTextIn(row, 8)}};
}

/// "2013-05-07 09:03:00" as entries have it. A day alone is its beginning.
std::string AsStored(std::string time)
{
    std::ranges::replace(time, ' ', 'T');
    return time;
}

bool HasEntry(CAConnect& conn, int id)
{
    return Number(conn, fmt::format("SELECT COUNT(*) FROM qv_AuditEntry WHERE Col_ID = {}", id)) != 0;
}

/// Entries of a change, of which several transactions make several.
std::string PartsOf(const Entry& entry)
{
    return fmt::format("Col_EntryID IN (SELECT Col_ID FROM qv_AuditEntry WHERE Col_ID = {0} OR Col_PartOf = {0})",
                       entry.id);
}

} // namespace

AuditLog::AuditLog(CAConnect& conn) : m_conn(conn) { LoadUndone(); }

// An entry that was undone undoes nothing any more, so the latest decides first.
void AuditLog::LoadUndone()
{
    EachRow(m_conn, "SELECT Col_ID, Col_Undoes FROM qv_AuditEntry WHERE Col_Undoes <> '' ORDER BY Col_ID DESC",
            [this](CARecordset& row) {
                const int id = NumberIn(row, 1);
                if (m_undoneBy.contains(id)) {
                    return;
                }
                std::istringstream ids(TextIn(row, 2));
                for (int undone = 0; ids >> undone;) {
                    m_undoneBy.emplace(undone, id);
                }
            });
}

void AuditLog::Each(const EntryFilter& filter, const std::function<bool(const Entry&)>& give, int most)
{
    std::string condition = "e.Col_PartOf = 0";
    if (filter.since) {
        condition += fmt::format(" AND e.Col_Time >= {}", Literal(m_conn, AsStored(*filter.since)));
    }
    if (filter.before) {
        condition += fmt::format(" AND e.Col_Time < {}", Literal(m_conn, AsStored(*filter.before)));
    }
    if (!filter.who.empty()) {
        condition += fmt::format(" AND e.Col_Who = {}", Literal(m_conn, filter.who));
    }
    if (!filter.item.empty()) {
        const std::string entries = fmt::format(
            "SELECT Col_EntryID FROM qv_AuditRow WHERE Col_Item = '{0}' OR Col_OtherItem = '{0}'", filter.item);
        condition += fmt::format(
            " AND (e.Col_ID IN ({0}) OR e.Col_ID IN (SELECT Col_PartOf FROM qv_AuditEntry WHERE Col_ID IN ({0})))",
            entries);
    }
    const std::string sql = fmt::format(
        "SELECT {}, (SELECT SUM(p.Col_Rows) FROM qv_AuditEntry p WHERE p.Col_PartOf = e.Col_ID) FROM qv_AuditEntry e "
        "WHERE {} ORDER BY Col_ID DESC",
        kEntryColumns, condition);
    int given = 0;
    EachRow(m_conn, sql, [&](CARecordset& row) {
        Entry entry = EntryIn(row);
        const std::string& command = entry.data.command;
        if (!filter.noun.empty() && command.substr(0, command.find(' ')) != filter.noun) {
            return true;
        }
        entry.rows += NumberIn(row, 12);
        const auto undone = m_undoneBy.find(entry.id);
        entry.undoneBy = undone == m_undoneBy.end() ? 0 : undone->second;
        return give(entry) && ++given < most;
    });
}

Entry AuditLog::Find(int id)
{
    std::optional<Entry> found;
    EachRow(m_conn, fmt::format("SELECT {} FROM qv_AuditEntry WHERE Col_ID = {}", kEntryColumns, id),
            [&found](CARecordset& row) { found = EntryIn(row); });
    if (!found) {
        throw Error(ErrorCode::notFound, FillPattern("there is no entry {} in the record", id));
    }
    if (found->data.partOf != 0 && HasEntry(m_conn, found->data.partOf)) {
        return Find(found->data.partOf);
    }
    found->rows += Number(m_conn, fmt::format("SELECT SUM(Col_Rows) FROM qv_AuditEntry WHERE Col_PartOf = {}", id));
    const auto undone = m_undoneBy.find(id);
    found->undoneBy = undone == m_undoneBy.end() ? 0 : undone->second;
    return *found;
}

std::vector<NumberedRow> AuditLog::ReadRows(const std::string& condition, int most)
{
    std::vector<NumberedRow> rows;
    EachRow(
        m_conn, fmt::format("SELECT {} FROM qv_AuditRow WHERE {}", kRowColumns, condition),
        [&rows](CARecordset& row) { rows.push_back(RowIn(row)); }, most);
    return rows;
}

std::vector<int> AuditLog::Parts(const Entry& entry)
{
    std::vector<int> parts;
    EachRow(m_conn,
            fmt::format("SELECT Col_ID FROM qv_AuditEntry WHERE Col_ID = {0} OR Col_PartOf = {0} ORDER BY Col_ID DESC",
                        entry.id),
            [&parts](CARecordset& row) { parts.push_back(NumberIn(row, 1)); });
    return parts;
}

std::vector<NumberedRow> AuditLog::RowsBackwards(int part, int below, int most)
{
    return ReadRows(fmt::format("Col_EntryID = {} AND Col_ID < {} ORDER BY Col_ID DESC", part, below), most);
}

std::vector<NumberedRow> AuditLog::Rows(const Entry& entry, int most)
{
    return ReadRows(fmt::format("{} ORDER BY Col_ID", PartsOf(entry)), most);
}

std::vector<NumberedRow> AuditLog::RowsAbout(const Entry& entry, const std::string& item)
{
    return ReadRows(
        fmt::format("{0} AND (Col_Item = '{1}' OR Col_OtherItem = '{1}') ORDER BY Col_ID", PartsOf(entry), item));
}

std::optional<Entry> AuditLog::LaterChange(const Entry& entry, const StoredRow& row)
{
    std::string condition = fmt::format("Col_Table = '{}' AND Col_Key = {}", row.table, Literal(m_conn, row.key));
    if (row.key.empty()) {
        condition += fmt::format(" AND Col_Item = '{}' AND Col_OtherItem = '{}'", row.item, row.otherItem);
    }
    std::set<int, std::greater<>> ids;
    EachRow(
        m_conn,
        fmt::format("SELECT DISTINCT Col_EntryID FROM qv_AuditRow WHERE {} AND Col_EntryID > {}", condition, entry.id),
        [&ids](CARecordset& found) { ids.insert(NumberIn(found, 1)); });
    for (const int id : ids) {
        Entry later = Find(id);
        if (later.id != entry.id && later.undoneBy == 0) {
            return later;
        }
    }
    return std::nullopt;
}

std::vector<Entry> AuditLog::EntriesBetween(int first, int last)
{
    std::vector<Entry> entries;
    EachRow(m_conn,
            fmt::format("SELECT {} FROM qv_AuditEntry WHERE Col_ID >= {} AND Col_ID <= {} ORDER BY Col_ID",
                        kEntryColumns, first, last),
            [&entries](CARecordset& row) { entries.push_back(EntryIn(row)); });
    return entries;
}

bool AuditLog::IsIntact(const Entry& entry, const Verification& before)
{
    std::vector<StoredRow> rows;
    for (NumberedRow& row : ReadRows(fmt::format("Col_EntryID = {} ORDER BY Col_ID", entry.id))) {
        rows.push_back(std::move(row.row));
    }
    const bool follows = before.entries == 0 || entry.data.previous == before.lastDigest;
    return follows && DigestOf(entry.data, rows) == entry.data.digest;
}

Verification AuditLog::Verify(const std::function<void(long done, long total)>& progress)
{
    constexpr int piece = 200;
    Verification result;
    const long total = Number(m_conn, "SELECT COUNT(*) FROM qv_AuditEntry");
    const int last = Number(m_conn, "SELECT MAX(Col_ID) FROM qv_AuditEntry");
    for (int at = Number(m_conn, "SELECT MIN(Col_ID) FROM qv_AuditEntry") - 1; at < last;) {
        if (progress) {
            progress(static_cast<long>(result.entries), total);
        }
        // There may be gaps, as wide as somebody wants who writes into the tables.
        const int next = Number(m_conn, fmt::format("SELECT MIN(Col_ID) FROM qv_AuditEntry WHERE Col_ID > {}", at));
        const int end = last - next >= piece ? next + piece - 1 : last;
        for (const Entry& entry : EntriesBetween(next, end)) {
            if (!IsIntact(entry, result)) {
                result.firstAltered = entry.id;
                return result;
            }
            ++result.entries;
            result.lastDigest = entry.data.digest;
        }
        at = end;
    }
    return result;
}

int AuditLog::FirstFrom(const std::string& time)
{
    const int first = Number(m_conn, fmt::format("SELECT MIN(Col_ID) FROM qv_AuditEntry WHERE Col_PartOf = 0 AND "
                                                 "Col_Time >= {}",
                                                 Literal(m_conn, AsStored(time))));
    return first != 0 ? first : Number(m_conn, "SELECT MAX(Col_ID) FROM qv_AuditEntry") + 1;
}

int AuditLog::CountBelow(int id)
{
    return Number(m_conn, fmt::format("SELECT COUNT(*) FROM qv_AuditEntry WHERE Col_PartOf = 0 AND Col_ID < {}", id));
}

void AuditLog::DeleteBelow(int id)
{
    Execute(m_conn, fmt::format("DELETE FROM qv_AuditRow WHERE Col_EntryID < {}", id));
    Execute(m_conn, fmt::format("DELETE FROM qv_AuditEntry WHERE Col_ID < {}", id));
}

Sentence Named(const Entry& entry)
{
    return FillPattern("{} ({}; {}, {})", entry.id, Visible(entry.data.command), Visible(entry.data.who),
                       entry.data.time);
}

} // namespace management::audit
