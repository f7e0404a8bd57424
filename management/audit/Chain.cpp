#include "management/audit/Chain.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/Sha256.h"

#include <string_view>

namespace management::audit {

namespace {

/// Takes texts in so that no two lists of texts are the same bytes.
class TextsDigest {
public:
    void Add(std::string_view text)
    {
        m_digest.Add(std::to_string(text.size()));
        m_digest.Add(":");
        m_digest.Add(text);
    }
    void Add(const std::optional<std::string>& text)
    {
        Add(std::string_view(text ? "+" : "-"));
        Add(std::string_view(text ? *text : ""));
    }
    std::string Finish() { return m_digest.Finish(); }

private:
    Sha256 m_digest;
};

} // namespace

StoredRow Stored(const RowChange& change)
{
    StoredRow row{std::string(change.table->name), change.key, change.count};
    const auto pack = [&change](const std::optional<AuditedRow>& content) {
        return content ? std::optional(PackedWithoutSecrets(*change.table, *content)) : std::nullopt;
    };
    row.before = pack(change.before);
    row.after = pack(change.after);
    const std::optional<AuditedRow>& content = change.after ? change.after : change.before;
    std::vector<std::string> all = change.items;
    if (change.count != 0 && content) {
        all = ItemsOf(*change.table, *content);
    }
    row.item = all.empty() ? "" : all[0];
    row.otherItem = all.size() < 2 ? "" : all[1];
    return row;
}

std::string LastDigest(CAConnect& conn)
{
    CARecordset rows;
    rows.Open("SELECT Col_Digest FROM qv_AuditEntry WHERE Col_ID = (SELECT MAX(Col_ID) FROM qv_AuditEntry)", &conn,
              adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    return rows.IsEOF() != 0 ? "" : std::string(rows.GetValueToStr(1, true).View());
}

std::string DigestOf(const StoredEntry& entry, const std::vector<StoredRow>& rows)
{
    TextsDigest digest;
    for (const std::string& text :
         {entry.previous, entry.time, entry.who, entry.frontEnd, entry.command, entry.reason,
          std::to_string(entry.partOf != 0 ? 1 : 0), entry.undoes, std::to_string(entry.rows)}) {
        digest.Add(std::string_view(text));
    }
    for (const StoredRow& row : rows) {
        const std::string count = std::to_string(row.count);
        for (const std::string_view text :
             {std::string_view(row.table), std::string_view(row.key), std::string_view(count),
              std::string_view(row.item), std::string_view(row.otherItem)}) {
            digest.Add(text);
        }
        digest.Add(row.before);
        digest.Add(row.after);
    }
    return digest.Finish();
}

} // namespace management::audit
