#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"
#include "directory/HumanItem.h"

using frame::Columns;
using frame::Found;

namespace {

struct Holder {
    int id;
    int type;
};

// All that a list of users shows, of a holder's members.
bool LoadMembers(CAConnect& conn, Holder holder, CObList& users, SourceLocation at = SourceLocation::current())
{
    const CString sql = FormatSql(
        "SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name, qv_User.Col_Sex, qv_User.Col_Mobile, "
        "qv_User.Col_EMail, qv_User.Col_DeptInfo, qv_User.Col_o_JobTitle, qv_User.Col_Disabled FROM "
        "qv_User,qv_Relation WHERE qv_Relation.Col_QvItemType = %d AND qv_Relation.Col_QvItemID = %d AND "
        "qv_Relation.Col_DQvItemType = %d AND qv_Relation.Col_DQvItemID = qv_User.Col_ID AND qv_Relation.Col_RelType = "
        "%d",
        holder.type, holder.id, kItemTypeUser, kMembership);
    return frame::ReadObjects<CHumanItem>(
        conn, sql, users,
        frame::Members(&CHumanItem::m_nID, &CHumanItem::m_strLoginName, &CHumanItem::m_strName, &CHumanItem::m_nSex,
                       &CHumanItem::m_strMobile, &CHumanItem::m_strEMail, &CHumanItem::m_strDeptInfo,
                       &CHumanItem::m_strJobTitle, &CHumanItem::m_bDisabled),
        frame::OnError::keep_and_notify, at);
}

// Ids and names of a holder's members.
CString NamesOfMembers(Holder holder)
{
    return FormatSql(
        "SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name FROM qv_User,qv_Relation WHERE "
        "qv_Relation.Col_QvItemType = %d AND qv_Relation.Col_QvItemID = %d AND qv_Relation.Col_DQvItemType = %d AND "
        "qv_Relation.Col_DQvItemID = qv_User.Col_ID AND qv_Relation.Col_RelType = %d",
        holder.type, holder.id, kItemTypeUser, kMembership);
}

// Ids and names of all users that are no members of a holder. The column's spelling is the caller's.
CString NamesOfOthers(Holder holder, const char* column)
{
    return FormatSql(
        "SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name FROM qv_User WHERE qv_User.Col_ID NOT IN "
        "(SELECT qv_Relation.%s FROM qv_Relation WHERE qv_Relation.Col_DQvItemType = %d AND qv_Relation.Col_QvItemID = "
        "%d AND qv_Relation.Col_QvItemType = %d AND qv_Relation.Col_RelType = %d)",
        column, kItemTypeUser, holder.id, holder.type, kMembership);
}

} // namespace

// ---- Relations: users of a holder --------------------------------------------------------------------------------

bool CQVBaseFun::LoadGroupUser(CAConnect& conn, int groupID, CObList& users)
{
    return LoadMembers(conn, {groupID, kItemTypeGroup}, users);
}

bool CQVBaseFun::LoadGroupUser(CAConnect& conn, int groupID, CUIntArray& ids, CStringArray& loginNames,
                               CStringArray& names)
{
    // This text ends in a blank, its twin for views does not.
    return frame::ReadEach(conn, NamesOfMembers({groupID, kItemTypeGroup}) + " ", Columns(ids, loginNames, names));
}

bool CQVBaseFun::LoadViewUser(CAConnect& conn, int viewID, CObList& users)
{
    return LoadMembers(conn, {viewID, kItemTypeView}, users);
}

bool CQVBaseFun::LoadViewUser(CAConnect& conn, int viewID, CUIntArray& ids, CStringArray& loginNames,
                              CStringArray& names)
{
    return frame::ReadEach(conn, NamesOfMembers({viewID, kItemTypeView}), Columns(ids, loginNames, names));
}

bool CQVBaseFun::LoadUserNotInGroup(CAConnect& conn, int groupID, CUIntArray& ids, CStringArray& loginNames,
                                    CStringArray& names)
{
    return frame::ReadEach(conn, NamesOfOthers({groupID, kItemTypeGroup}, "Col_DQvItemID"),
                           Columns(ids, loginNames, names));
}

bool CQVBaseFun::LoadUserNotInView(CAConnect& conn, int viewID, CUIntArray& ids, CStringArray& loginNames,
                                   CStringArray& names)
{
    return frame::ReadEach(conn, NamesOfOthers({viewID, kItemTypeView}, "Col_DqvItemID"),
                           Columns(ids, loginNames, names));
}

bool CQVBaseFun::LoadUserNotIn(CAConnect& conn, int holderID, int holderType, CUIntArray& ids, CStringArray& loginNames,
                               CStringArray& names)
{
    return frame::ReadEach(conn, NamesOfOthers({holderID, holderType}, "Col_DqvItemID"),
                           Columns(ids, loginNames, names));
}

// ---- Relations: links --------------------------------------------------------------------------------------------

bool CQVBaseFun::LoadSubMember(CAConnect& conn, int holderID, int holderType, CUIntArray& memberIDs,
                               CUIntArray& memberTypes)
{
    const CString sql = FormatSql("SELECT Col_DQvItemID, Col_DQvItemType FROM qv_Relation WHERE Col_QvItemID = %d AND "
                                  "Col_QvItemType = %d AND Col_RelType = %d ",
                                  holderID, holderType, kMembership);
    return frame::ReadEach(conn, sql, Columns(memberIDs, memberTypes));
}

bool CQVBaseFun::ExitMemberRelation(CAConnect& conn, int holderID, int holderType, int memberID, int memberType,
                                    bool& exists)
{
    exists = false;
    const CString sql =
        FormatSql("SELECT Col_QvItemID FROM qv_Relation WHERE Col_QvItemID = %d AND Col_QvItemType = %d AND "
                  "Col_DQvItemID = %d AND Col_DQvItemType = %d AND Col_RelType = %d ",
                  holderID, holderType, memberID, memberType, kMembership);
    return frame::ReadFirst(conn, sql, Found(exists));
}

bool CQVBaseFun::DeleteRelation(CAConnect& conn, int holderID, int holderType, int memberID, int memberType)
{
    const CString sql = FormatSql("DELETE FROM qv_Relation WHERE Col_QvItemID = %d AND Col_QvItemType = %d AND "
                                  "Col_DQvItemID = %d AND Col_DQvItemType = %d AND Col_RelType = %d",
                                  holderID, holderType, memberID, memberType, kMembership);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::DelRelation(CAConnect& conn, int holderID, int holderType, int memberID, int memberType)
{
    const CString sql = FormatSql("DELETE FROM qv_Relation WHERE Col_QvItemID = %d AND Col_QvItemType = %d AND "
                                  "Col_DQvItemID = %d AND Col_DQvItemType = %d",
                                  holderID, holderType, memberID, memberType);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::DelRelationByQvItem(CAConnect& conn, int itemID, int itemType)
{
    return frame::Execute(
        conn, FormatSql("DELETE FROM qv_Relation WHERE Col_QvItemID = %d AND Col_QvItemType = %d", itemID, itemType));
}

int CQVBaseFun::DelRelationByDQVItem(CAConnect& conn, int itemID, int itemType)
{
    return frame::ExecuteCounted(
        conn, FormatSql("DELETE FROM qv_Relation WHERE Col_DQvItemID = %d AND Col_DQvItemType = %d", itemID, itemType));
}

bool CQVBaseFun::UpdateRelationViewID(CAConnect& conn, int holderID, int holderType, int viewID)
{
    CUIntArray ids;
    CUIntArray types;
    // A read that fails leaves the list short, and the walk goes on with what there is.
    LoadSubMember(conn, holderID, holderType, ids, types);
    for (int i = 0; i < ids.GetSize(); ++i) {
        const int id = static_cast<int>(ids[i]);
        const int type = static_cast<int>(types[i]);
        if (type == kItemTypeGroup && !UpdateRelationViewID(conn, id, kItemTypeGroup, viewID)) {
            return false;
        }
        if (type == kItemTypeUser &&
            !frame::Execute(conn, FormatSql("UPDATE qv_Relation SET Col_ViewID = %d WHERE Col_QvItemID = %d AND "
                                            "Col_QvItemType = %d AND Col_DQvItemID = %d AND Col_DQvItemType = %d",
                                            viewID, holderID, holderType, id, kItemTypeUser))) {
            return false;
        }
    }
    return true;
}
