#include "management/audit/Chain.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"

#include <fmt/format.h>
#include <nettle/sha2.h>

#include <array>
#include <string_view>

namespace management::audit {

namespace {

/// Takes texts in so that no two lists of texts are the same bytes.
class Hash {
public:
    Hash() { sha256_init(&m_state); }

    void Add(std::string_view text)
    {
        Update(fmt::format("{}:", text.size()));
        Update(text);
    }
    void Add(const std::optional<std::string>& text)
    {
        Add(std::string_view(text ? "+" : "-"));
        Add(std::string_view(text ? *text : ""));
    }
    std::string Finish()
    {
        std::array<std::uint8_t, SHA256_DIGEST_SIZE> bytes{};
        sha256_digest(&m_state, bytes.size(), bytes.data());
        std::string text;
        for (const std::uint8_t byte : bytes) {
            text += fmt::format("{:02x}", byte);
        }
        return text;
    }

private:
    void Update(std::string_view text)
    {
        sha256_update(&m_state, text.size(), reinterpret_cast<const std::uint8_t*>(text.data()));
    }

    sha256_ctx m_state{};
};

} // namespace

StoredRow Stored(const RowChange& change)
{
    StoredRow row{std::string(change.table->name), change.key, change.count};
    const auto pack = [&change](const std::optional<AuditedRow>& content) {
        return content ? std::optional(Packed(WithoutSecrets(*change.table, *content))) : std::nullopt;
    };
    row.before = pack(change.before);
    row.after = pack(change.after);
    AuditedRow items = change.after ? *change.after : change.before.value_or(AuditedRow());
    if (!change.key.empty() && !ValueIn(items, "Col_ID")) {
        items.emplace_back("Col_ID", change.key);
    }
    const std::vector<std::string> all =
        change.after || change.before ? ItemsOf(*change.table, items) : std::vector<std::string>();
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
    Hash hash;
    for (const std::string& text :
         {entry.previous, entry.time, entry.who, entry.frontEnd, entry.command, entry.reason,
          std::to_string(entry.partOf != 0 ? 1 : 0), entry.undoes, std::to_string(entry.rows)}) {
        hash.Add(std::string_view(text));
    }
    for (const StoredRow& row : rows) {
        for (const std::string& text : {row.table, row.key, std::to_string(row.count), row.item, row.otherItem}) {
            hash.Add(std::string_view(text));
        }
        hash.Add(row.before);
        hash.Add(row.after);
    }
    return hash.Finish();
}

} // namespace management::audit
