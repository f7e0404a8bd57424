#pragma once

#include "management/Items.h"
#include "management/Sentence.h"
#include "management/audit/AuditLog.h"
#include "management/organisation/Organisation.h"

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

class CAConnect;

namespace management::audit {

/// Puts rows back as they were before entries of the record. To be used within one Change, the latest entry first.
class Undo {
public:
    /// Both outlive this.
    Undo(CAConnect& conn, AuditLog& log) : m_conn(conn), m_log(log), m_names(conn) {}

    /// Undoes an entry. @throws Error (conflict), naming what is in the way: a later change, something that cannot be
    /// put back. @throws DatabaseError.
    void Apply(const Entry& entry);
    /// Looks whether the directory holds together after all entries: no link of or to what is gone, no name twice, no
    /// cycle. @throws Error (conflict) that names what does not. @throws DatabaseError.
    void Check();
    /// What came back without a secret that it had.
    struct WithoutSecret {
        std::string what; ///< such as "user amy (id 17)"
        std::string_view secret;
    };
    [[nodiscard]] const std::vector<WithoutSecret>& AllWithoutSecret() const { return m_withoutSecret; }

private:
    void ApplyRows(const Entry& entry, const std::vector<NumberedRow>& rows);
    void ApplyRow(const Entry& entry, const StoredRow& row);
    std::size_t RemoveAdded(const Entry& entry, const std::vector<NumberedRow>& rows, std::size_t begin);
    void Restore(const Entry& entry, const AuditedTable& table, const StoredRow& row);
    void RestoreContent(const Entry& entry, const AuditedTable& table, const StoredRow& row);
    void ChangeBack(const Entry& entry, const AuditedTable& table, const StoredRow& row);
    [[noreturn]] void ThrowInTheWay(const Entry& entry, const StoredRow& row);
    void RequireRecorded(const Entry& entry, const AuditedTable& table, const StoredRow& row);
    [[nodiscard]] std::string ConditionOf(const AuditedRow& row) const;
    [[nodiscard]] std::string WithKey(const std::string& key) const;
    std::vector<AuditedRow> Rows(const AuditedTable& table, const std::string& condition);
    void Insert(const AuditedTable& table, const AuditedRow& row);
    void CheckItemsThere();
    void CheckNothingLeft();
    void CheckNames();
    void CheckGroups();
    void RequireUnused(int type, const std::vector<int>& ids);
    static void RequireNoCycle(const Organisation& organisation, ItemKey parent, ItemKey group);
    static void RequireOneOfItsName(const Organisation& organisation, ItemKey parent, ItemKey group);

    CAConnect& m_conn;
    AuditLog& m_log;
    NameCache m_names;                                             ///< for sentences, as they were before
    std::map<std::string, std::string> m_removedItems;             ///< as ItemsOf has them, with their names
    std::set<std::string> m_linkedItems;                           ///< as ItemsOf has them
    std::set<std::pair<std::string, std::string>> m_links;         ///< of memberships that came back: holder, member
    std::set<std::pair<const AuditedTable*, std::string>> m_named; ///< rows that came back or may have another name
    std::vector<WithoutSecret> m_withoutSecret;
};

/// The item that a row names as TYPE:ID.
ItemKey KeyOf(const std::string& item);

/// "user amy (id 17)", from what an entry has of a row.
Sentence Described(NameCache& names, const StoredRow& row);

} // namespace management::audit
