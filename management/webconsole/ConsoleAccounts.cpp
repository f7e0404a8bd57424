#include "management/webconsole/ConsoleAccounts.h"

#include "basefun/ItemTypes.h"
#include "management/Escape.h"
#include "management/Query.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <map>
#include <sstream>

namespace management::webconsole {

namespace {

std::string OfUser(int user)
{
    return fmt::format("WHERE Col_QvItemType = {} AND Col_QvItemID = {}", kItemTypeUser, user);
}

std::vector<std::string> WordsOf(const std::string& text)
{
    std::istringstream in(text);
    std::vector<std::string> words;
    for (std::string word; in >> word;) {
        words.push_back(std::move(word));
    }
    return words;
}

std::map<int, ConsoleAccount> Load(CAConnect& conn, const std::string& condition)
{
    std::map<int, ConsoleAccount> found;
    EachRow(conn,
            "SELECT Col_QvItemID, Col_Level, Col_Totp, Col_TotpUsed, Col_Recovery FROM qv_ConsoleAccount " + condition,
            [&found](CARecordset& row) {
                // A level that a later program may have written is none here.
                found[NumberIn(row, 1)] = {LevelOf(TextIn(row, 2)).value_or(Level::none), TextIn(row, 3),
                                           NumberIn(row, 4), WordsOf(TextIn(row, 5))};
            });
    return found;
}

} // namespace

ConsoleAccount ConsoleAccounts::Find(int user) const
{
    const std::map<int, ConsoleAccount> found = Load(m_conn, OfUser(user));
    return found.empty() ? ConsoleAccount() : found.begin()->second;
}

void ConsoleAccounts::Save(int user, const ConsoleAccount& account) const
{
    const std::string condition = OfUser(user);
    if (account == ConsoleAccount()) {
        Execute(m_conn, "DELETE FROM qv_ConsoleAccount " + condition);
        return;
    }
    const std::string level = Literal(m_conn, NameOf(account.level));
    const std::string totp = Literal(m_conn, account.totp);
    const std::string recovery = Literal(m_conn, fmt::format("{}", fmt::join(account.recovery, " ")));
    const bool isNew = Number(m_conn, "SELECT COUNT(*) FROM qv_ConsoleAccount " + condition) == 0;
    Execute(m_conn,
            isNew ? fmt::format("INSERT INTO qv_ConsoleAccount (Col_QvItemType, Col_QvItemID, Col_Level, Col_Totp, "
                                "Col_TotpUsed, Col_Recovery) VALUES ({}, {}, {}, {}, {}, {})",
                                kItemTypeUser, user, level, totp, account.totpUsed, recovery)
                  : fmt::format("UPDATE qv_ConsoleAccount SET Col_Level = {}, Col_Totp = {}, Col_TotpUsed = {}, "
                                "Col_Recovery = {} {}",
                                level, totp, account.totpUsed, recovery, condition));
}

std::vector<ListedAccount> ConsoleAccounts::All() const
{
    const std::map<int, ConsoleAccount> kept = Load(m_conn, fmt::format("WHERE Col_QvItemType = {}", kItemTypeUser));
    std::vector<ListedAccount> all;
    EachRow(m_conn,
            fmt::format("SELECT Col_ID, Col_LoginName, Col_Name, Col_Disabled, Col_IsSuper FROM qv_User WHERE "
                        "Col_IsSuper <> 0 OR Col_ID IN (SELECT Col_QvItemID FROM qv_ConsoleAccount WHERE "
                        "Col_QvItemType = {}) ORDER BY Col_ID",
                        kItemTypeUser),
            [&](CARecordset& row) {
                const int id = NumberIn(row, 1);
                const auto found = kept.find(id);
                const ConsoleAccount account = found == kept.end() ? ConsoleAccount() : found->second;
                all.push_back({id, TextIn(row, 2), TextIn(row, 3), NumberIn(row, 4) != 0,
                               NumberIn(row, 5) != 0 ? Level::full : account.level, !account.totp.empty(),
                               account.recovery.size()});
            });
    return all;
}

} // namespace management::webconsole
