#include "management/users/Directory.h"

#include "basefun/ItemTypes.h"
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "dbaccess/EngineKind.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "management/Names.h"
#include "management/Query.h"

#include <fmt/format.h>

#include <utility>

namespace management {

namespace {

// Texts of the record in which it doubles quotes itself.
constexpr CString CHumanItem::* kQuotedTexts[] = {
    &CHumanItem::m_strLoginName,    &CHumanItem::m_strName,          &CHumanItem::m_strCreatorName,
    &CHumanItem::m_strNote,         &CHumanItem::m_strEMail,         &CHumanItem::m_strDescription,
    &CHumanItem::m_strHomeProvince, &CHumanItem::m_strHomeCity,      &CHumanItem::m_strHomeAddress,
    &CHumanItem::m_strCompanyName,  &CHumanItem::m_strOfficeAddress, &CHumanItem::m_strJobTitle,
    &CHumanItem::m_strECard,        &CHumanItem::m_strDeptInfo,      &CHumanItem::m_strUserData};

// Texts of the record that enter its statements as they are.
constexpr CString CHumanItem::* kPlainTexts[] = {&CHumanItem::m_strPWord,          &CHumanItem::m_strFarServer,
                                                 &CHumanItem::m_strMobile,         &CHumanItem::m_strHomePostCode,
                                                 &CHumanItem::m_strHomePhone,      &CHumanItem::m_strHomeFax,
                                                 &CHumanItem::m_strOfficePostCode, &CHumanItem::m_strOfficePhone,
                                                 &CHumanItem::m_strOfficeFax,      &CHumanItem::m_strPicture};

std::string SelectAllColumns(int id)
{
    std::string columns;
    for (const Field& field : Fields()) {
        columns += columns.empty() ? "" : ", ";
        columns += field.column;
    }
    return fmt::format("SELECT {} FROM qv_User WHERE Col_ID = {}", columns, id);
}

FieldValues ReadAllColumns(CARecordset& row)
{
    FieldValues values;
    long column = 0;
    for (const Field& field : Fields()) {
        CString text;
        const bool isThere = row.GetValue(++column, text, true);
        values[&field] = isThere ? Stored(Text(text)) : Stored();
    }
    return values;
}

} // namespace

CString Directory::EscapeBackslashes(std::string_view text) const
{
    return management::EscapeBackslashes(m_conn, text);
}

CString Directory::EscapeLiteral(std::string_view text) const { return management::EscapeLiteral(m_conn, text); }

bool Directory::Exists(int id)
{
    return Number(m_conn, fmt::format("SELECT COUNT(*) FROM qv_User WHERE Col_ID = {}", id)) > 0;
}

// ---- Look-ups -------------------------------------------------------------------------------------------------------

std::optional<int> Directory::FindId(std::string_view login)
{
    int id = -1;
    Run(m_conn, [&] { return CQVBaseFun::GetHMIDByLoginName(m_conn, EscapeBackslashes(login), id); });
    return id == -1 ? std::nullopt : std::optional(id);
}

bool Directory::Exists(std::string_view login) { return !FindAll(login).empty(); }

std::optional<int> Directory::FindIdIgnoringCase(std::string_view login)
{
    int id = 0;
    Run(m_conn, [&] { return CQVBaseFun::ExistLoginNameEx(m_conn, EscapeBackslashes(login), id); });
    // Where the engine tells case, the capitals that it was asked for find capitals only.
    return id == 0 && dbaccess::EngineKindOf(m_conn) != dbaccess::EngineKind::comparesInCapitals
               ? FindId(login)
               : (id == 0 ? std::nullopt : std::optional(id));
}

std::vector<UserKey> Directory::FindAll(std::string_view login)
{
    std::vector<UserKey> users = FindAllByEngine(login);
    std::erase_if(users, [&](const UserKey& user) { return !SameName(user.login, login); });
    return users;
}

std::optional<UserKey> Directory::FindConfusedLogin(std::string_view login, std::optional<int> except)
{
    const std::vector<UserKey> users = FindAllByEngine(login);
    const auto isConfused = [&](const UserKey& user) { return user.id != except && !SameName(user.login, login); };
    const auto found = std::ranges::find_if(users, isConfused);
    return found == users.end() ? std::nullopt : std::optional(*found);
}

std::vector<UserKey> Directory::FindAllByEngine(std::string_view login)
{
    if (!FindIdIgnoringCase(login)) {
        return {};
    }
    CString capitals{login};
    capitals.MakeUpper();
    const bool inCapitals = dbaccess::EngineKindOf(m_conn) == dbaccess::EngineKind::comparesInCapitals;
    const std::string condition =
        inCapitals ? fmt::format("upper(Col_LoginName) = '{}'", EscapeLiteral(capitals.View()).View())
                   : fmt::format("Col_LoginName = '{}' OR Col_LoginName = '{}'", EscapeLiteral(login).View(),
                                 EscapeLiteral(capitals.View()).View());
    return ReadRecords(m_conn, "SELECT Col_ID, Col_LoginName FROM qv_User WHERE " + condition + " ORDER BY Col_ID",
                       &UserKey::id, &UserKey::login);
}

bool Directory::IsSuperUser(std::string_view login)
{
    bool isSuper = false;
    Run(m_conn, [&] { return CQVBaseFun::IsSuperUser(m_conn, EscapeLiteral(login), isSuper); });
    return isSuper;
}

bool Directory::IsLocked(std::string_view login)
{
    bool locked = false;
    Run(m_conn, [&] { return CQVBaseFun::IsUserLocked(m_conn, EscapeLiteral(login), locked); });
    return locked;
}

std::string Directory::LoginOfName(std::string_view name)
{
    CString login;
    Run(m_conn, [&] { return CQVBaseFun::GetHMLoginName(m_conn, EscapeBackslashes(name), login); });
    return Text(login);
}

std::string Directory::NameOfLogin(std::string_view login)
{
    CString name;
    Run(m_conn, [&] { return CQVBaseFun::GetHMUserName(m_conn, EscapeBackslashes(login), name); });
    return Text(name);
}

std::string Directory::NameOfId(int id)
{
    CString name;
    Run(m_conn, [&] { return CQVBaseFun::GetHMUserName(m_conn, id, name); });
    return Text(name);
}

std::optional<NamedUser> Directory::FindNamed(std::string_view login)
{
    int id = 0;
    CString name;
    Run(m_conn, [&] { return CQVBaseFun::LoadUserInfo(m_conn, EscapeLiteral(login), id, name); });
    return id == 0 ? std::nullopt : std::optional(NamedUser{id, Text(name)});
}

int Directory::Count()
{
    int count = 0;
    Run(m_conn, [&] { return CQVBaseFun::GetUserItemCount(m_conn, count); });
    return count;
}

std::optional<FieldValues> Directory::Load(int id)
{
    std::optional<FieldValues> values;
    EachRow(m_conn, SelectAllColumns(id), [&](CARecordset& row) { values = ReadAllColumns(row); });
    return values;
}

std::vector<Reference> Directory::References(int id) { return CountReferences(m_conn, kItemTypeUser, {id}); }

// ---- Writes ---------------------------------------------------------------------------------------------------------

void Directory::Prepare(CHumanItem& item) const
{
    for (const auto member : kQuotedTexts) {
        item.*member = EscapeBackslashes((item.*member).View());
    }
    for (const auto member : kPlainTexts) {
        item.*member = EscapeLiteral((item.*member).View());
    }
}

void Directory::Save(CHumanItem& item)
{
    CHumanItem prepared;
    prepared.CopyData(item);
    Prepare(prepared);
    Run(m_conn, [&] { return prepared.SaveData(m_conn) != 0; });
}

void Directory::Set(int id, const FieldValues& values)
{
    std::string assignments;
    for (const auto& [field, value] : values) {
        assignments += fmt::format("{}{} = ", assignments.empty() ? "" : ", ", field->column);
        assignments += value ? fmt::format("'{}'", EscapeLiteral(*value).View()) : "NULL";
    }
    if (!assignments.empty()) {
        Execute(m_conn, fmt::format("UPDATE qv_User SET {} WHERE Col_ID = {}", assignments, id));
    }
}

void Directory::Insert(std::string_view login, std::string_view name)
{
    Run(m_conn, [&] { return CQVBaseFun::InsertUser(m_conn, EscapeLiteral(login), EscapeLiteral(name)); });
}

void Directory::Insert(std::string_view login, std::string_view name, std::string_view password, int passwordType)
{
    Run(m_conn, [&] {
        return CQVBaseFun::InsertUser(m_conn, EscapeLiteral(login), EscapeLiteral(name), EscapeLiteral(password),
                                      passwordType);
    });
}

void Directory::UpdateOwnData(int id, const OwnData& data)
{
    Run(m_conn, [&] {
        return CQVBaseFun::UpdateHumanInfo(
            m_conn, id, EscapeBackslashes(data.login), EscapeBackslashes(data.name), EscapeBackslashes(data.department),
            EscapeBackslashes(data.title), EscapeBackslashes(data.officePhone), EscapeBackslashes(data.mobile),
            EscapeBackslashes(data.officeFax), EscapeBackslashes(data.email), EscapeBackslashes(data.userData),
            EscapeBackslashes(data.homePhone), data.departmentId);
    });
}

void Directory::UpdateDepartment(int id, int departmentId, std::string_view department, bool always)
{
    Run(m_conn,
        [&] { return CQVBaseFun::UpdateUserDeptInfo(m_conn, id, departmentId, EscapeLiteral(department), always); });
}

void Directory::SetLocked(int id, bool locked)
{
    Run(m_conn, [&] { return CQVBaseFun::SetUserLocked(m_conn, id, locked); });
}

bool Directory::Delete(int id)
{
    Run(m_conn, [&] { return CQVBaseFun::DeleteUserItemByID(m_conn, id); });
    // Which login names are spared depends on how the engine compares; only looking tells.
    if (Exists(id)) {
        return false;
    }
    DeleteReferences(m_conn, kItemTypeUser, {id});
    return true;
}

void Directory::TryToWrite()
{
    const int id = Number(m_conn, "SELECT MAX(Col_ID) FROM qv_User");
    Execute(m_conn, fmt::format("UPDATE qv_User SET Col_Level = Col_Level WHERE Col_ID = {}", id));
}

} // namespace management
