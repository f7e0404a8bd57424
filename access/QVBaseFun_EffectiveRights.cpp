#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "basefun/SourceLocation.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"

#include <cstdint>

using frame::Columns;

namespace {

constexpr int kUnlimited = -1;

// The bits of a row's power: 32, whatever long is. A NULL has none.
std::uint32_t PowerOf(CARecordset& row)
{
    int power = 0;
    row.GetValue(1, power);
    return static_cast<std::uint32_t>(power);
}

// The opening of all effective rights. @return false when there is no role to ask.
bool RolesOf(CAConnect& conn, int userID, CString& filter)
{
    return CQVBaseFun::GetHMRoleQueryParam(conn, userID, filter) && !filter.IsEmpty();
}

CString PowersOf(const CString& funGenre, const CString& funName, const CString& filter)
{
    return FormatSql("SELECT Col_Power FROM qv_ItemAce WHERE Col_FunGenre = '%s' AND Col_FunName = '%s' AND ( %s )",
                     funGenre, funName, filter);
}

// The body of all limits. The place is the caller's, so that an error names the limit that was asked for.
bool LimitOf(CAConnect& conn, int userID, const CString& funGenre, const CString& funName, int& limit,
             SourceLocation at = SourceLocation::current())
{
    limit = kUnlimited;
    CString filter;
    if (!RolesOf(conn, userID, filter)) {
        return false;
    }
    const CString sql = FormatSql("SELECT COUNT(*), MAX(Col_Power), MIN(Col_Power) FROM qv_ItemAce WHERE Col_FunGenre "
                                  "= '%s' AND Col_FunName = '%s' AND ( %s )",
                                  funGenre, funName, filter);
    const auto widest = [&](CARecordset& row) {
        int largest = 0;
        int smallest = 0;
        row.GetValue(2, largest);
        row.GetValue(3, smallest);
        const bool configured = frame::ReadCount(conn, row, 1) != 0;
        limit = configured && smallest != kUnlimited ? largest : kUnlimited;
    };
    return frame::ReadFirst(conn, sql, widest, frame::OnError::keep_and_notify, at);
}

} // namespace

// ---- Effective rights --------------------------------------------------------------------------------------------

bool CQVBaseFun::GetHMRoleQueryParam(CAConnect& conn, int userID, CString& filter)
{
    filter = "";
    CUIntArray roleIDs;
    if (!LoadHMRole(conn, userID, roleIDs)) {
        return false;
    }
    for (const unsigned int roleID : roleIDs) {
        if (!filter.IsEmpty()) {
            filter += " OR ";
        }
        filter += FormatSql("( Col_QvItemID = %d AND Col_QvItemType = %d )", roleID, kItemTypeRole);
    }
    return true;
}

bool CQVBaseFun::GetAfficheACE(CAConnect& conn, int userID, CString funGenre, CString funName, bool& allowed)
{
    constexpr std::uint32_t mayPublish = 1;
    allowed = false;
    CString filter;
    return RolesOf(conn, userID, filter) &&
           frame::ReadUntil(conn, PowersOf(funGenre, funName, filter), [&](CARecordset& row) {
               allowed = (PowerOf(row) & mayPublish) != 0;
               return allowed;
           });
}

bool CQVBaseFun::HaveBaseACE(CAConnect& conn, int userID, CString funGenre, CString funName, unsigned long mask,
                             int& has)
{
    has = 0;
    CString filter;
    return RolesOf(conn, userID, filter) &&
           frame::ReadUntil(conn, PowersOf(funGenre, funName, filter), [&](CARecordset& row) {
               has = (PowerOf(row) & mask) != 0 ? 1 : 0;
               return has == 1;
           });
}

bool CQVBaseFun::GetHMBaseACE(CAConnect& conn, int userID, CString funGenre, CString funName, unsigned long& rights)
{
    rights = 0;
    CString filter;
    return RolesOf(conn, userID, filter) && frame::ReadEach(conn, PowersOf(funGenre, funName, filter),
                                                            [&](CARecordset& row) { rights |= PowerOf(row); });
}

bool CQVBaseFun::GetACEGuestUser(CAConnect& conn, int userID, CString funGenre, CString funName, bool& allowed)
{
    constexpr std::uint32_t mayTakeGuests = 8;
    allowed = false;
    CString filter;
    return RolesOf(conn, userID, filter) &&
           frame::ReadFirst(conn, PowersOf(funGenre, funName, filter),
                            [&](CARecordset& row) { allowed = (PowerOf(row) & mayTakeGuests) != 0; });
}

bool CQVBaseFun::GetAttachmentSizeACE(CAConnect& conn, int userID, CString funGenre, CString funName, int& limit)
{
    return LimitOf(conn, userID, funGenre, funName, limit);
}

bool CQVBaseFun::GetMultiSendCountACE(CAConnect& conn, int userID, CString funGenre, CString funName, int& limit)
{
    return LimitOf(conn, userID, funGenre, funName, limit);
}

bool CQVBaseFun::GetRateLimitACE(CAConnect& conn, int userID, CString funGenre, CString funName, int& limit)
{
    return LimitOf(conn, userID, funGenre, funName, limit);
}

bool CQVBaseFun::LoadHMRoleView(CAConnect& conn, int userID, CString funGenre, CString funName, CUIntArray& viewIDs)
{
    CString filter;
    if (!RolesOf(conn, userID, filter)) {
        return false;
    }
    const CString sql = FormatSql("SELECT DISTINCT Col_DQvItemID FROM qv_BIIAce WHERE Col_DQvItemType = %d AND "
                                  "Col_FunName = '%s' AND Col_FunGenre = '%s' AND Col_Power = %d AND ( %s )",
                                  kItemTypeView, funName, funGenre, 1, filter);
    return frame::ReadEach(conn, sql, Columns(viewIDs));
}
