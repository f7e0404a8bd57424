#pragma once

#include "management/rights/Explain.h"
#include "management/users/Directory.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class CAConnect;

namespace management {

/// A role's row for a function, of those that count: roles of this system, and the default role or, where that is
/// missing, the rows of role 0.
struct RoleRow {
    int roleId = 0;
    std::string role; ///< empty when there is no such role
    std::optional<int> power;
    bool isDefault = false; ///< everybody's
};

/// A user, and what the rows of his roles say.
struct RightHolder {
    UserKey user;
    std::string name;
    std::int64_t verdict = 0; ///< as Explanation has it
    std::vector<const RoleRow*> rows;
};

/// Who has a right, by the rules of Explain, without asking for each user. Nothing here begins a transaction.
class RightHolders {
public:
    /// Reads the rows and who is linked to their roles. @param question  any but that of guests, whose answer lies in
    /// the order in which the engine gives the rows of each user. @throws DatabaseError, and Error for a text with a
    /// NUL byte.
    RightHolders(CAConnect& conn, std::string_view genre, std::string_view function, const Question& question);

    /// By role and power.
    [[nodiscard]] const std::vector<RoleRow>& Rows() const { return m_rows; }
    /// The users who are linked to a role of the rows.
    [[nodiscard]] std::int64_t CountLinked(int roleId) const;
    /// Gives everybody for whom `isWanted(verdict)` holds to `take`, by login name, until it gives false.
    /// @throws DatabaseError.
    void ListUsers(const std::function<bool(std::int64_t verdict)>& isWanted,
                   const std::function<bool(const RightHolder&)>& take) const;

private:
    void ReadRows(const std::string& function);
    void ReadLinks();
    [[nodiscard]] std::int64_t VerdictOf(const std::vector<const RoleRow*>& rows) const;
    [[nodiscard]] std::vector<const RoleRow*> RowsOf(int userId) const;

    CAConnect& m_conn;
    Question m_question;
    int m_defaultId = 0;
    std::vector<RoleRow> m_rows;
    std::vector<std::pair<int, int>> m_links; ///< user and role, sorted, each once
};

} // namespace management
