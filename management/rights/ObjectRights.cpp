#include "management/rights/ObjectRights.h"

#include "access/TabBIOAceItem.h"
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/Lengths.h"
#include "management/Query.h"

#include <fmt/format.h>

#include <map>
#include <utility>

namespace management {

namespace {

constexpr std::string_view kColumns =
    "Col_ID, Col_QvItemType, Col_QvItemID, Col_QvItemName, Col_ClassID, Col_ObjID, Col_FunGenre, Col_FunName, "
    "Col_Power, Col_UnPower, Col_Creator_ID, Col_Creator_Name, Col_Dt_Create";

ObjectRight ReadRight(CARecordset& row)
{
    ObjectRight right;
    ObjectRightKey& key = right.key;
    ReadColumns(row, right.id, key.holder.type, key.holder.id, right.holderName, key.object.classId, key.object.id,
                key.genre, key.function, right.power, right.unpower, right.creatorId, right.creator, right.created);
    return right;
}

std::string OnObject(ObjectKey object)
{
    return fmt::format("Col_ClassID = {} AND Col_ObjID = {}", object.classId, object.id);
}

} // namespace

CString ObjectRights::EscapeLiteral(std::string_view text) const { return management::EscapeLiteral(m_conn, text); }

std::vector<ObjectRight> ObjectRights::Read(const std::string& condition)
{
    std::vector<ObjectRight> rights;
    EachRow(m_conn,
            fmt::format("SELECT {} FROM Tab_BIOAce WHERE {} ORDER BY Col_QvItemType, Col_ID", kColumns, condition),
            [&rights](CARecordset& row) { rights.push_back(ReadRight(row)); });
    return rights;
}

std::vector<ObjectRight> ObjectRights::On(ObjectKey object) { return Read(OnObject(object)); }

std::vector<ObjectRight> ObjectRights::On(ObjectKey object, std::string_view function)
{
    CUIntArray ids;
    CUIntArray types;
    CUIntArray holders;
    CStringArray names;
    CUIntArray powers;
    Run(m_conn, [&] {
        return CQVBaseFun::LoadTabBIOAceInfo(m_conn, object.classId, object.id, EscapeLiteral(function), ids, types,
                                             holders, names, powers);
    });
    // The module's list has no genres and nothing about who granted a right.
    std::map<int, ObjectRight> all;
    for (ObjectRight& right : On(object)) {
        all.emplace(right.id, std::move(right));
    }
    std::vector<ObjectRight> listed;
    for (const unsigned int id : ids) {
        // One that has been taken in the meantime is in the first list alone.
        if (const auto right = all.find(static_cast<int>(id)); right != all.end()) {
            listed.push_back(std::move(right->second));
        }
    }
    return listed;
}

std::optional<ObjectRight> ObjectRights::Load(int id)
{
    const std::vector<ObjectRight> found = Read(fmt::format("Col_ID = {}", id));
    return found.empty() ? std::nullopt : std::optional(found.front());
}

std::optional<int> ObjectRights::Find(const ObjectRightKey& key)
{
    int id = 0;
    Run(m_conn, [&] {
        return CQVBaseFun::ExistTabBIOAceItem(m_conn, key.object.classId, key.object.id, key.holder.id, key.holder.type,
                                              EscapeLiteral(key.function), EscapeLiteral(key.genre), id);
    });
    return id == 0 ? std::nullopt : std::optional(id);
}

void ObjectRights::Save(const ObjectRight& right)
{
    CTabBIOAceItem item;
    item.m_nQvItemID = right.key.holder.id;
    item.m_nQvItemType = right.key.holder.type;
    item.m_nClassID = right.key.object.classId;
    item.m_nObjID = right.key.object.id;
    item.m_strFunName = EscapeLiteral(right.key.function);
    item.m_strFunGenre = EscapeLiteral(right.key.genre);
    item.m_nPower = right.power;
    item.m_nUnPower = right.unpower;
    // The record doubles the quotes of these two.
    item.m_strQvItemName = EscapeBackslashes(m_conn, right.holderName);
    item.m_strCreatorName = EscapeBackslashes(m_conn, right.creator);
    item.m_nCreatorID = right.creatorId;
    if (!item.SaveData(m_conn)) {
        ThrowWriteError(m_conn, "the new right on an object");
    }
}

int ObjectRights::Grant(const ObjectRight& right)
{
    RequireFits(m_conn, "Tab_BIOAce",
                {{"the genre", "Col_FunGenre", right.key.genre}, {"the function", "Col_FunName", right.key.function}});
    Save(right);
    return LastInsertedId(m_conn);
}

// The module's own change writes both powers.
void ObjectRights::Set(int id, int power, std::optional<int> unpower)
{
    Assignments assignments(m_conn, "Tab_BIOAce");
    assignments.Number("Col_Power", power);
    assignments.Number("Col_UnPower", unpower);
    assignments.Apply(id);
}

void ObjectRights::Revoke(int id)
{
    Run(m_conn, [&] { return CQVBaseFun::DeleteTabBIOAceItem(m_conn, id); });
}

} // namespace management
