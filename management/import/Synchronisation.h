#pragma once

#include "management/RemovalLimit.h"
#include "management/import/Import.h"
#include "management/import/SeenLogins.h"
#include "management/users/Directory.h"

#include <cstdint>
#include <string>
#include <vector>

namespace management {

/// What becomes of people who have left.
enum class LeaverAction : std::uint8_t { list, lock, move, remove };

struct SynchronisationOptions {
    std::string scope; ///< a view or group: who is in it or below it, and not in the file, has left
    LeaverAction action = LeaverAction::list;
    std::string target = {};      ///< the group that they are moved to
    RemovalLimit limit = {};      ///< how many of the people in the scope may have left
    bool allowPrivileges = false; ///< super and system users may be dealt with
};

/// Takes over what is to become of leavers. @param text  list, lock, move:/VIEW/GROUP or delete.
/// @throws Error (invalid) for any other.
void ReadLeaverAction(const std::string& text, SynchronisationOptions& options);

/// What has become of them so far.
struct SynchronisationReport {
    std::size_t people = 0; ///< in the scope
    std::size_t leavers = 0;
    std::size_t done = 0;
    std::size_t failed = 0;
    std::size_t unreadable = 0; ///< rows of the file that may be about anybody; nothing is done then
};

/// Finds out, before an import, who of a part of the directory is not in the file, and deals with them after it.
class Synchronisation {
public:
    /// Reads the file for its login names. Users who are locked already have left before where leavers are to be
    /// locked, and Admin never does. @param source  the file; the import reads it once more.
    /// @throws Error (invalid, notFound, conflict) for the options and the header, (conflict) when more people have
    /// left than may. @throws DatabaseError. Nothing is changed.
    Synchronisation(Call& call, const ImportSource& source, const ColumnOptions& columns,
                    SynchronisationOptions options);

    /// Deals with those who still are in the scope, in one transaction; gives the front end a row for each, as an
    /// import does, but for the line, which they have not. The outcome is leaver, locked, moved, deleted or failed.
    /// @throws DatabaseError.
    void Apply(Call& call);

    [[nodiscard]] const SynchronisationReport& Report() const { return m_report; }
    /// Tells whether two synchronisations have found the same people.
    [[nodiscard]] std::string Digest() const;

private:
    struct Leaver {
        UserKey key;
        bool isPrivileged = false;
    };
    using DealtWith = std::pair<const Leaver*, Sentence>; ///< and what was in the way

    std::vector<Leaver> FindLeavers(CAConnect& conn);
    std::string ScopeCondition(CAConnect& conn) const;
    void RequireFew() const;
    std::vector<DealtWith> DealWithAll(Call& call);
    void Deal(Call& call, const Leaver& leaver);

    SynchronisationOptions m_options;
    SeenLogins m_logins;
    std::vector<Leaver> m_leavers;
    SynchronisationReport m_report;
};

/// Reads the login names of a file. @return how many rows have none that can be read. @throws Error (invalid) for a
/// header that cannot be used.
std::size_t ReadLogins(const ImportSource& source, const ColumnOptions& columns, SeenLogins& logins);

} // namespace management
