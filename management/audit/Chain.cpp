#include "management/audit/Chain.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/CARecordset.h"

#include <fmt/format.h>
#include <openssl/evp.h>

#include <array>
#include <memory>

namespace management::audit {

namespace {

/// Takes texts in so that no two lists of texts are the same bytes.
class Hash {
public:
    Hash() : m_context(EVP_MD_CTX_new(), &EVP_MD_CTX_free)
    {
        Require(m_context != nullptr && EVP_DigestInit_ex(m_context.get(), EVP_sha256(), nullptr) == 1);
    }

    void Add(std::string_view text)
    {
        const std::string length = fmt::format("{}:", text.size());
        Require(EVP_DigestUpdate(m_context.get(), length.data(), length.size()) == 1 &&
                EVP_DigestUpdate(m_context.get(), text.data(), text.size()) == 1);
    }
    void Add(const std::optional<std::string>& text)
    {
        Add(std::string_view(text ? "+" : "-"));
        Add(std::string_view(text ? *text : ""));
    }
    std::string Finish()
    {
        std::array<unsigned char, EVP_MAX_MD_SIZE> bytes{};
        unsigned int length = 0;
        Require(EVP_DigestFinal_ex(m_context.get(), bytes.data(), &length) == 1);
        std::string text;
        for (unsigned int i = 0; i < length; ++i) {
            text += fmt::format("{:02x}", bytes[i]);
        }
        return text;
    }

private:
    static void Require(bool worked)
    {
        if (!worked) {
            throw CAException("this system's cryptography does not give SHA-256, without which nothing is recorded");
        }
    }

    std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> m_context;
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
