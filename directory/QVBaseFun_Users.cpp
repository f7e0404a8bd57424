#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "basefun/SqlText.h"
#include "basefun/StatementFrame.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/EngineKind.h"
#include "directory/HumanItem.h"

#include <array>
#include <memory>

using frame::Columns;

namespace {

constexpr const char* kNamesOfAll = "SELECT Col_ID, Col_LoginName, Col_Name FROM qv_User";

// Elsewhere the engine's own comparison is relied on.
bool ComparesInCapitals(const CAConnect& conn)
{
    return dbaccess::EngineKindOf(conn) == dbaccess::EngineKind::comparesInCapitals;
}

CString Capitals(CString text)
{
    text.MakeUpper();
    return text;
}

} // namespace

// ---- Users: look-ups ---------------------------------------------------------------------------------------------

bool CQVBaseFun::GetHMIDByLoginName(CAConnect& conn, CString loginName, int& id)
{
    id = -1;
    const CString sql = FormatSql("SELECT Col_ID FROM qv_User WHERE Col_LoginName = '%s'", DoubleQuotes(loginName));
    return frame::ReadFirst(conn, sql, Columns(id));
}

bool CQVBaseFun::ExistLoginName(CAConnect& conn, CString loginName, bool& exists)
{
    exists = true;
    const CString name = DoubleQuotes(Capitals(loginName));
    const CString sql = ComparesInCapitals(conn)
                            ? FormatSql("SELECT Col_LoginName FROM qv_User WHERE upper(Col_LoginName) = '%s'", name)
                            : FormatSql("SELECT Col_LoginName FROM qv_User WHERE Col_LoginName = '%s'", name);
    return frame::TestExists(conn, sql, exists);
}

bool CQVBaseFun::ExistLoginNameEx(CAConnect& conn, CString loginName, int& id)
{
    id = 0;
    const CString name = DoubleQuotes(Capitals(loginName));
    const CString sql = ComparesInCapitals(conn)
                            ? FormatSql("SELECT Col_ID FROM qv_User WHERE upper(Col_LoginName) = '%s'", name)
                            : FormatSql("SELECT Col_ID FROM qv_User WHERE Col_LoginName = '%s'", name);
    return frame::ReadFirst(conn, sql, Columns(id));
}

bool CQVBaseFun::IsSuperUser(CAConnect& conn, CString loginName, bool& isSuper)
{
    isSuper = false;
    const CString sql = FormatSql("SELECT Col_IsSuper FROM qv_User WHERE Col_LoginName = '%s'", loginName);
    return frame::ReadFirst(conn, sql, Columns(isSuper));
}

bool CQVBaseFun::IsUserLocked(CAConnect& conn, CString loginName, bool& locked)
{
    locked = false;
    const CString sql = FormatSql("SELECT Col_Disabled FROM qv_User WHERE Col_LoginName = '%s'", loginName);
    return frame::ReadFirst(conn, sql, Columns(locked));
}

bool CQVBaseFun::GetHMLoginName(CAConnect& conn, int id, CString& loginName)
{
    loginName = "";
    const CString sql = FormatSql("SELECT Col_LoginName FROM qv_User WHERE Col_ID = %d", id);
    return frame::ReadFirst(conn, sql, Columns(loginName));
}

bool CQVBaseFun::GetHMLoginName(CAConnect& conn, CString name, CString& loginName)
{
    loginName = "";
    const CString sql = FormatSql("SELECT Col_LoginName FROM qv_User WHERE Col_Name = '%s'", DoubleQuotes(name));
    return frame::ReadFirst(conn, sql, Columns(loginName));
}

bool CQVBaseFun::GetHMUserName(CAConnect& conn, CString loginName, CString& name)
{
    name = "";
    const CString sql = FormatSql("SELECT Col_Name FROM qv_User WHERE Col_LoginName = '%s'", DoubleQuotes(loginName));
    return frame::ReadFirst(conn, sql, Columns(name));
}

bool CQVBaseFun::GetHMUserName(CAConnect& conn, int id, CString& name)
{
    name = "";
    const CString sql = FormatSql("SELECT Col_Name FROM qv_User WHERE Col_ID = %d", id);
    return frame::ReadFirst(conn, sql, Columns(name));
}

bool CQVBaseFun::LoadUserInfo(CAConnect& conn, CString loginName, int& id, CString& name)
{
    id = 0;
    name = "";
    const CString sql = FormatSql("SELECT Col_ID, Col_Name FROM qv_User WHERE Col_LoginName = '%s'", loginName);
    return frame::ReadFirst(conn, sql, Columns(id, name));
}

bool CQVBaseFun::GetUserInfo(CAConnect& conn, int id, CString& loginName, CString& name, int& itemIndex, int& sex,
                             CString& mobile, CString& eMail, CString& jobTitle)
{
    const CString sql = FormatSql("SELECT Col_LoginName, Col_Name, Col_ItemIndex, Col_Sex, Col_Mobile, Col_EMail, "
                                  "Col_o_JobTitle FROM qv_User WHERE Col_ID = %d",
                                  id);
    return frame::ReadFirst(conn, sql, Columns(loginName, name, itemIndex, sex, mobile, eMail, jobTitle));
}

bool CQVBaseFun::GetUserItemCount(CAConnect& conn, int& count)
{
    count = 0;
    return frame::ReadFirst(conn, "SELECT COUNT(*) FROM qv_User", Columns(count));
}

bool CQVBaseFun::GetUserItemCount(CAConnect& conn, __int64& count)
{
    count = 0;
    return frame::ReadFirst(conn, "SELECT COUNT(*) FROM qv_User", Columns(count));
}

// ---- Users: lists ------------------------------------------------------------------------------------------------

bool CQVBaseFun::LoadHumanInfo(CAConnect& conn, CObList& users)
{
    // Col_Password here, Col_PWord everywhere else: the schema serves both.
    static constexpr std::array<frame::NamedMember<CHumanItem>, 5> members = {{
        {"Col_ID", &CHumanItem::m_nID},
        {"Col_LoginName", &CHumanItem::m_strLoginName},
        {"Col_Name", &CHumanItem::m_strName},
        {"Col_Password", &CHumanItem::m_strPWord},
        {"Col_IsSuper", &CHumanItem::m_bIsSuper},
    }};
    return frame::ReadObjects<CHumanItem>(conn, "SELECT * FROM qv_User ORDER BY Col_Level", users,
                                          frame::MembersByName(members));
}

bool CQVBaseFun::LoadHumanInfo(CAConnect& conn, CUIntArray& ids, CStringArray& loginNames, CStringArray& names)
{
    return frame::ReadEach(conn, kNamesOfAll, Columns(ids, loginNames, names));
}

bool CQVBaseFun::LoadUserInfo(CAConnect& conn, CUIntArray& ids, CStringArray& loginNames, CStringArray& names)
{
    return frame::ReadEach(conn, kNamesOfAll, Columns(ids, loginNames, names));
}

bool CQVBaseFun::LoadHumanInfo(CAConnect& conn, CUIntArray& ids, CStringArray& loginNames, CStringArray& names,
                               CUIntArray& sexes, CStringArray& mobiles, CStringArray& eMails, CStringArray& deptInfos,
                               CStringArray& jobTitles, CUIntArray& disabled)
{
    return frame::ReadEach(
        conn,
        "SELECT Col_ID,Col_LoginName,Col_Name,Col_Sex, Col_Mobile,Col_EMail,Col_DeptInfo,Col_o_JobTitle, Col_Disabled "
        "FROM qv_User",
        Columns(ids, loginNames, names, sexes, mobiles, eMails, deptInfos, jobTitles, disabled));
}

bool CQVBaseFun::LoadHumanInfo(CAConnect& conn, int holderId, int holderType, CUIntArray& ids, CStringArray& loginNames,
                               CStringArray& names, CUIntArray& sexes, CStringArray& mobiles, CStringArray& eMails,
                               CStringArray& deptInfos, CStringArray& jobTitles)
{
    const CString sql = FormatSql(
        "SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name, qv_User.Col_Sex, qv_User.Col_Mobile, "
        "qv_User.Col_EMail, qv_User.Col_DeptInfo, qv_User.Col_o_JobTitle FROM qv_User, qv_Relation WHERE "
        "qv_Relation.Col_QvItemID = %d AND qv_Relation.Col_QvItemType = %d AND qv_Relation.Col_DQvItemID = "
        "qv_User.Col_ID AND qv_Relation.Col_DQvItemType = %d",
        holderId, holderType, kItemTypeUser);
    return frame::ReadEach(conn, sql, Columns(ids, loginNames, names, sexes, mobiles, eMails, deptInfos, jobTitles));
}

bool CQVBaseFun::LoadUsers(CAConnect& conn, int holderId, int holderType, CUIntArray& ids, CStringArray& names)
{
    const CString sql = FormatSql(
        "SELECT qv_User.Col_ID, qv_User.Col_Name FROM qv_User where col_id in(select Col_DQvItemid from qv_Relation "
        "where qv_Relation.Col_QvItemType = %d AND qv_Relation.Col_QvItemID = %d AND qv_Relation.Col_DQvItemType = %d "
        "AND qv_Relation.Col_DQvItemID = qv_User.Col_ID AND qv_Relation.Col_RelType = %d)",
        holderType, holderId, kItemTypeUser, kMembership);
    return frame::ReadEach(conn, sql, Columns(ids, names));
}

bool CQVBaseFun::LoadUsers(CAConnect& conn, int holderId, int holderType, CUIntArray& ids, CStringArray& loginNames,
                           CStringArray& names, CStringArray& jobTitles)
{
    const CString sql = FormatSql(
        "SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name, qv_User.Col_o_JobTitle FROM "
        "qv_User,qv_Relation WHERE qv_Relation.Col_QvItemType = %d AND qv_Relation.Col_QvItemID = %d AND "
        "qv_Relation.Col_DQvItemType = %d AND qv_Relation.Col_DQvItemID = qv_User.Col_ID AND qv_Relation.Col_RelType = "
        "%d",
        holderType, holderId, kItemTypeUser, kMembership);
    return frame::ReadEach(conn, sql, Columns(ids, loginNames, names, jobTitles));
}

// ---- Users: writes -----------------------------------------------------------------------------------------------

bool CQVBaseFun::DeleteUserItemByID(CAConnect& conn, int id)
{
    return frame::Execute(conn,
                          FormatSql("DELETE FROM qv_User WHERE Col_ID = %d AND Col_LoginName <> '%s'", id, "Admin"));
}

bool CQVBaseFun::SetUserLocked(CAConnect& conn, int id, bool locked)
{
    return frame::Execute(conn, FormatSql("UPDATE qv_User SET Col_Disabled = %d WHERE Col_ID = %d", locked, id));
}

bool CQVBaseFun::UpdateUserDeptInfo(CAConnect& conn, int id, int deptId, CString deptInfo, bool always)
{
    const CString sql =
        always
            ? FormatSql("UPDATE qv_User SET Col_DeptID = %d, Col_DeptInfo = '%s' WHERE Col_ID = %d", deptId, deptInfo,
                        id)
            : FormatSql("UPDATE qv_User SET Col_DeptID = %d, Col_DeptInfo = '%s' WHERE Col_ID = %d AND Col_DeptID = 0",
                        deptId, deptInfo, id);
    return frame::Execute(conn, sql);
}

bool CQVBaseFun::InsertUser(CAConnect& conn, CString loginName, CString name)
{
    return frame::Execute(
        conn, FormatSql("INSERT INTO qv_User ( Col_LoginName, Col_Name ) VALUES ('%s','%s')", loginName, name));
}

bool CQVBaseFun::InsertUser(CAConnect& conn, CString loginName, CString name, CString password, int enType)
{
    return frame::Execute(
        conn,
        FormatSql("INSERT INTO qv_User ( Col_LoginName, Col_Name, Col_PWord, Col_EnType ) VALUES ('%s','%s','%s', %d)",
                  loginName, name, password, enType));
}

bool CQVBaseFun::UpdateHumanInfo(CAConnect& conn, int id, CString loginName, CString name, CString deptInfo,
                                 CString jobTitle, CString officePhone, CString mobile, CString officeFax,
                                 CString eMail, CString userData, CString homePhone, int deptId)
{
    const CString sql = FormatSql(
        "UPDATE qv_User Set Col_LoginName = '%s', Col_Name = '%s', Col_DeptInfo = '%s', Col_o_JobTitle = '%s', "
        "Col_o_Phone = '%s', Col_Mobile = '%s', Col_o_Fax = '%s', Col_EMail = '%s', Col_UserData = '%s', "
        "Col_h_Phone = '%s', Col_DeptID = %d WHERE Col_ID = %d",
        DoubleQuotes(loginName), DoubleQuotes(name), DoubleQuotes(deptInfo), DoubleQuotes(jobTitle),
        DoubleQuotes(officePhone), DoubleQuotes(mobile), DoubleQuotes(officeFax), DoubleQuotes(eMail),
        DoubleQuotes(userData), DoubleQuotes(homePhone), deptId, id);
    return frame::Execute(conn, sql);
}

// ---- Record lists ------------------------------------------------------------------------------------------------

void CQVBaseFun::DetachHumanList(CObList& list)
{
    for (POSITION position = list.GetHeadPosition(); position != nullptr;) {
        const std::unique_ptr<CObject> record(list.GetNext(position));
    }
    list.RemoveAll();
}
