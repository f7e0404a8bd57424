#include "management/rights/Rights.h"

#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/Lengths.h"
#include "management/Query.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>
#include <tuple>

namespace management {

namespace {

std::string IsHolder(ItemKey item)
{
    return fmt::format("(Col_QvItemID = {} AND Col_QvItemType = {})", item.id, item.type);
}

std::string IsDependent(ItemKey item)
{
    return fmt::format("(Col_DQvItemID = {} AND Col_DQvItemType = {})", item.id, item.type);
}

std::string IsOn(ItemKey item, Side side)
{
    switch (side) {
    case Side::holder:
        return IsHolder(item);
    case Side::dependent:
        return IsDependent(item);
    case Side::either:
        break;
    }
    return IsHolder(item) + " OR " + IsDependent(item);
}

} // namespace

CString Rights::EscapeLiteral(std::string_view text) const { return management::EscapeLiteral(m_conn, text); }

std::string Rights::IsFunction(const Function& function) const
{
    return fmt::format("Col_FunGenre = '{}' AND Col_FunName = '{}'", EscapeLiteral(function.genre).View(),
                       EscapeLiteral(function.name).View());
}

std::string Rights::IsOneOn(ItemKey holder, ItemKey on, const Function& function) const
{
    return IsHolder(holder) + " AND " + IsDependent(on) + " AND " + IsFunction(function);
}

// ---- Of items -------------------------------------------------------------------------------------------------------

std::vector<ItemRight> Rights::Select(const std::string& condition)
{
    std::vector<ItemRight> rights;
    EachRow(m_conn, "SELECT Col_FunGenre, Col_FunName, Col_Power, Col_UnPower FROM qv_ItemAce WHERE " + condition,
            [&rights](CARecordset& row) {
                ItemRight& right = rights.emplace_back();
                ReadColumns(row, right.function.genre, right.function.name, right.powers.power, right.powers.unpower);
            });
    std::ranges::sort(rights, {}, [](const ItemRight& right) {
        return std::tie(right.function, right.powers.power, right.powers.unpower);
    });
    return rights;
}

std::vector<ItemRight> Rights::Of(ItemKey holder, const std::optional<std::string>& genre)
{
    const std::string ofGenre = genre ? fmt::format(" AND Col_FunGenre = '{}'", EscapeLiteral(*genre).View()) : "";
    return Select(IsHolder(holder) + ofGenre);
}

std::vector<ItemRight> Rights::Find(ItemKey holder, const Function& function)
{
    return Select(IsHolder(holder) + " AND " + IsFunction(function));
}

bool Rights::Exists(ItemKey holder, const Function& function)
{
    bool exists = false;
    Run(m_conn, [&] {
        return CQVBaseFun::ExistItemAce(m_conn, holder.id, holder.type, EscapeLiteral(function.genre),
                                        EscapeLiteral(function.name), exists);
    });
    return exists;
}

void Rights::Grant(ItemKey holder, const Function& function, PermissionMask powers)
{
    RequireFits(m_conn, "qv_ItemAce",
                {{"the genre", "Col_FunGenre", function.genre}, {"the function", "Col_FunName", function.name}});
    Run(m_conn, [&] {
        return CQVBaseFun::InsertItemAce(m_conn, holder.id, holder.type, EscapeLiteral(function.genre),
                                         EscapeLiteral(function.name), powers.power, powers.unpower);
    });
}

void Rights::Set(ItemKey holder, const Function& function, int power)
{
    Run(m_conn, [&] {
        return CQVBaseFun::UpdateItemAce(m_conn, holder.id, holder.type, EscapeLiteral(function.genre),
                                         EscapeLiteral(function.name), power);
    });
}

void Rights::Revoke(ItemKey holder, const Function& function)
{
    Run(m_conn, [&] {
        return CQVBaseFun::DeleteItemAce(m_conn, holder.id, holder.type, EscapeLiteral(function.genre),
                                         EscapeLiteral(function.name));
    });
}

void Rights::RevokeAll(ItemKey holder)
{
    Run(m_conn, [&] { return CQVBaseFun::DeleteItemAce(m_conn, holder.id, holder.type); });
}

// ---- Of items on items ----------------------------------------------------------------------------------------------

std::vector<RightOn> Rights::SelectOn(const std::string& condition)
{
    std::vector<RightOn> rights;
    EachRow(m_conn,
            "SELECT Col_FunGenre, Col_FunName, Col_Power, Col_UnPower, Col_QvItemType, Col_QvItemID, Col_DQvItemType, "
            "Col_DQvItemID FROM qv_BIIAce WHERE " +
                condition,
            [&rights](CARecordset& row) {
                RightOn& right = rights.emplace_back();
                ReadColumns(row, right.function.genre, right.function.name, right.powers.power, right.powers.unpower,
                            right.holder.type, right.holder.id, right.on.type, right.on.id);
            });
    std::ranges::sort(rights, {}, [](const RightOn& right) {
        return std::tie(right.function, right.holder, right.on, right.powers.power, right.powers.unpower);
    });
    return rights;
}

std::vector<RightOn> Rights::Between(ItemKey item, Side side) { return SelectOn(IsOn(item, side)); }

std::vector<RightOn> Rights::FindOn(ItemKey holder, ItemKey on, const Function& function)
{
    return SelectOn(IsOneOn(holder, on, function));
}

std::vector<RightOn> Rights::HeldOn(ItemKey on, const Function& function)
{
    return SelectOn(IsDependent(on) + " AND " + IsFunction(function));
}

bool Rights::ExistsOn(ItemKey holder, ItemKey on, const Function& function)
{
    bool exists = false;
    Run(m_conn, [&] {
        return CQVBaseFun::ExistBIIAceInfo(m_conn, holder.id, holder.type, on.id, on.type,
                                           EscapeLiteral(function.genre), EscapeLiteral(function.name), exists);
    });
    return exists;
}

void Rights::GrantOn(const RightOn& right)
{
    RequireFits(
        m_conn, "qv_BIIAce",
        {{"the genre", "Col_FunGenre", right.function.genre}, {"the function", "Col_FunName", right.function.name}});
    Run(m_conn, [&] {
        return CQVBaseFun::InsertBIIAceInfo(m_conn, right.holder.id, right.holder.type, right.on.id, right.on.type,
                                            EscapeLiteral(right.function.genre), EscapeLiteral(right.function.name),
                                            right.powers.power, right.powers.unpower);
    });
}

// The module's own change writes both powers.
void Rights::SetOn(ItemKey holder, ItemKey on, const Function& function, int power, std::optional<int> unpower)
{
    Assignments assignments(m_conn, "qv_BIIAce");
    assignments.Number("Col_Power", power);
    assignments.Number("Col_UnPower", unpower);
    assignments.Apply(IsOneOn(holder, on, function));
}

void Rights::RevokeOn(ItemKey holder, ItemKey on, const Function& function)
{
    Run(m_conn, [&] {
        return CQVBaseFun::DeleteBIIAceInfo(m_conn, holder.id, holder.type, on.id, on.type,
                                            EscapeLiteral(function.genre), EscapeLiteral(function.name));
    });
}

void Rights::RevokeOnFromAll(ItemKey on, const Function& function)
{
    Run(m_conn, [&] {
        return CQVBaseFun::DeleteBIIAceInfo(m_conn, on.id, on.type, EscapeLiteral(function.genre),
                                            EscapeLiteral(function.name));
    });
}

// ---- Of users by their roles ----------------------------------------------------------------------------------------

std::string Rights::RoleFilter(int userId)
{
    CString filter;
    Run(m_conn, [&] { return CQVBaseFun::GetHMRoleQueryParam(m_conn, userId, filter); });
    return std::string(filter.View());
}

std::vector<Function> Rights::Functions(std::string_view table, const std::string& condition)
{
    // DISTINCT would compare as the engine does, and so drop names that differ only by case on some.
    std::set<Function> functions;
    EachRow(m_conn, fmt::format("SELECT Col_FunGenre, Col_FunName FROM {} WHERE {}", table, condition),
            [&functions](CARecordset& row) { functions.insert({TextIn(row, 1), TextIn(row, 2)}); });
    return {functions.begin(), functions.end()};
}

bool Rights::HasRole(int userId)
{
    CUIntArray ids;
    Run(m_conn, [&] { return CQVBaseFun::LoadHMRole(m_conn, userId, ids); });
    // A missing default role is 0 there.
    return std::any_of(ids.begin(), ids.end(), [](unsigned int id) { return id != 0; });
}

std::vector<Function> Rights::FunctionsOf(int userId)
{
    const std::string filter = RoleFilter(userId);
    return filter.empty() ? std::vector<Function>() : Functions("qv_ItemAce", filter);
}

EffectiveRight Rights::Effective(int userId, const Function& function)
{
    const CString genre = EscapeLiteral(function.genre);
    const CString name = EscapeLiteral(function.name);
    EffectiveRight right;
    unsigned long bits = 0;
    Run(m_conn, [&] { return CQVBaseFun::GetHMBaseACE(m_conn, userId, genre, name, bits); });
    Run(m_conn, [&] { return CQVBaseFun::GetAfficheACE(m_conn, userId, genre, name, right.publish); });
    Run(m_conn, [&] { return CQVBaseFun::GetACEGuestUser(m_conn, userId, genre, name, right.guest); });
    Run(m_conn, [&] { return CQVBaseFun::GetRateLimitACE(m_conn, userId, genre, name, right.limit); });
    right.bits = static_cast<std::uint32_t>(bits);
    return right;
}

std::vector<Function> Rights::ViewFunctionsOf(int userId)
{
    const std::string filter = RoleFilter(userId);
    return filter.empty()
               ? std::vector<Function>()
               : Functions("qv_BIIAce", fmt::format("Col_DQvItemType = {} AND ( {} )", kItemTypeView, filter));
}

std::vector<int> Rights::ViewsOf(int userId, const Function& function)
{
    CUIntArray ids;
    Run(m_conn, [&] {
        return CQVBaseFun::LoadHMRoleView(m_conn, userId, EscapeLiteral(function.genre), EscapeLiteral(function.name),
                                          ids);
    });
    std::vector<int> views;
    std::transform(ids.begin(), ids.end(), std::back_inserter(views),
                   [](unsigned int id) { return static_cast<int>(id); });
    std::ranges::sort(views);
    return views;
}

} // namespace management
