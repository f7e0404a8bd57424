#include "bench/ByHand.h"

#include "basefun/ItemTypes.h"
#include "platform/CodePage.h"

#include <sqlite3.h>
#include <strings.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace bench {

namespace {

constexpr int kBusyTimeout = 5000;

void Upper(sqlite3_context* context, int /*count*/, sqlite3_value** arguments)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(arguments[0]));
    if (text == nullptr) {
        return;
    }
    const std::string upper = platform::UpperUtf8({text, static_cast<std::size_t>(sqlite3_value_bytes(arguments[0]))});
    sqlite3_result_text64(context, upper.data(), upper.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
}

const char* TextAt(sqlite3_stmt* row, int column)
{
    return reinterpret_cast<const char*>(sqlite3_column_text(row, column));
}

std::size_t LengthAt(sqlite3_stmt* row, int column)
{
    return static_cast<std::size_t>(sqlite3_column_bytes(row, column));
}

void AppendText(std::vector<std::string>& texts, sqlite3_stmt* row, int column)
{
    if (const char* text = TextAt(row, column)) {
        texts.emplace_back(text, LengthAt(row, column));
    } else {
        texts.emplace_back();
    }
}

void AppendNumber(std::vector<unsigned>& numbers, sqlite3_stmt* row, int column)
{
    numbers.push_back(static_cast<unsigned>(sqlite3_column_int(row, column)));
}

void TakeText(std::string& out, sqlite3_stmt* row, int column)
{
    if (const char* text = TextAt(row, column)) {
        out.assign(text, LengthAt(row, column));
    }
}

int ColumnNamed(sqlite3_stmt* statement, const char* name)
{
    const int count = sqlite3_column_count(statement);
    for (int i = 0; i < count; ++i) {
        if (strcasecmp(sqlite3_column_name(statement, i), name) == 0) {
            return i;
        }
    }
    throw std::runtime_error(std::string("no column ") + name);
}

} // namespace

void RegisterUpper(sqlite3* db)
{
    sqlite3_create_function_v2(db, "upper", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS, nullptr, &Upper,
                               nullptr, nullptr, nullptr);
}

void ByHand::CloseFile::operator()(sqlite3* db) const noexcept { sqlite3_close_v2(db); }

void ByHand::Finalize::operator()(sqlite3_stmt* statement) const noexcept { sqlite3_finalize(statement); }

ByHand::ByHand(const std::string& path)
{
    sqlite3* raw = nullptr;
    const int code = sqlite3_open_v2(
        path.c_str(), &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE,
        nullptr);
    m_db.reset(raw);
    if (code != SQLITE_OK) {
        throw std::runtime_error("cannot open " + path);
    }
    sqlite3_busy_timeout(raw, kBusyTimeout);
    sqlite3_db_config(raw, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(raw, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    RegisterUpper(raw);
}

ByHand::Statement ByHand::Prepare(const char* sql, std::size_t length)
{
    sqlite3_stmt* raw = nullptr;
    const int code = sqlite3_prepare_v2(m_db.get(), sql, static_cast<int>(length + 1), &raw, nullptr);
    Statement statement(raw);
    if (code != SQLITE_OK) {
        throw std::runtime_error(sqlite3_errmsg(m_db.get()));
    }
    return statement;
}

bool ByHand::Step(sqlite3_stmt* statement)
{
    const int code = sqlite3_step(statement);
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        throw std::runtime_error(sqlite3_errmsg(m_db.get()));
    }
    return code == SQLITE_ROW;
}

sqlite3_stmt* ByHand::PrepareFor(const char* sql) { return Prepare(sql, std::strlen(sql)).release(); }

void ByHand::Run(const char* sql)
{
    const Statement statement = Prepare(sql, std::strlen(sql));
    while (Step(statement.get())) {
    }
}

int ByHand::FindUser(const std::string& loginName)
{
    std::array<char, 512> sql;
    const int length = std::snprintf(sql.data(), sql.size(), "SELECT Col_ID FROM qv_User WHERE Col_LoginName = '%s'",
                                     DoubledQuotes(loginName).c_str());
    const Statement statement = Prepare(sql.data(), static_cast<std::size_t>(length));
    return Step(statement.get()) ? sqlite3_column_int(statement.get(), 0) : -1;
}

int ByHand::FindUserKept(const std::string& loginName)
{
    if (m_findUser == nullptr) {
        constexpr std::string_view sql = "SELECT Col_ID FROM qv_User WHERE Col_LoginName = ?";
        m_findUser = Prepare(sql.data(), sql.size());
    }
    sqlite3_stmt* const statement = m_findUser.get();
    sqlite3_bind_text(statement, 1, loginName.data(), static_cast<int>(loginName.size()), SQLITE_STATIC);
    const int id = Step(statement) ? sqlite3_column_int(statement, 0) : -1;
    sqlite3_reset(statement);
    return id;
}

bool ByHand::UserExists(const std::string& loginName)
{
    std::array<char, 512> sql;
    const int length =
        std::snprintf(sql.data(), sql.size(), "SELECT Col_LoginName FROM qv_User WHERE upper(Col_LoginName) = '%s'",
                      DoubledQuotes(Capitals(loginName)).c_str());
    const Statement statement = Prepare(sql.data(), static_cast<std::size_t>(length));
    return Step(statement.get());
}

void ByHand::ListUsers(std::vector<unsigned>& ids, std::vector<std::string>& loginNames,
                       std::vector<std::string>& names)
{
    constexpr const char* sql = "SELECT Col_ID, Col_LoginName, Col_Name FROM qv_User";
    ListNames(Prepare(sql, std::strlen(sql)), ids, loginNames, names);
}

void ByHand::ListNames(const Statement& statement, std::vector<unsigned>& ids, std::vector<std::string>& loginNames,
                       std::vector<std::string>& names)
{
    while (Step(statement.get())) {
        AppendNumber(ids, statement.get(), 0);
        AppendText(loginNames, statement.get(), 1);
        AppendText(names, statement.get(), 2);
    }
}

void ByHand::ListUsers(std::vector<unsigned>& ids, std::vector<std::string>& loginNames,
                       std::vector<std::string>& names, std::vector<unsigned>& sexes, std::vector<std::string>& mobiles,
                       std::vector<std::string>& eMails, std::vector<std::string>& deptInfos,
                       std::vector<std::string>& jobTitles, std::vector<unsigned>& disabled)
{
    constexpr const char* sql =
        "SELECT Col_ID,Col_LoginName,Col_Name,Col_Sex, Col_Mobile,Col_EMail,Col_DeptInfo,Col_o_JobTitle, Col_Disabled "
        "FROM qv_User";
    const Statement statement = Prepare(sql, std::strlen(sql));
    while (Step(statement.get())) {
        AppendNumber(ids, statement.get(), 0);
        AppendText(loginNames, statement.get(), 1);
        AppendText(names, statement.get(), 2);
        AppendNumber(sexes, statement.get(), 3);
        AppendText(mobiles, statement.get(), 4);
        AppendText(eMails, statement.get(), 5);
        AppendText(deptInfos, statement.get(), 6);
        AppendText(jobTitles, statement.get(), 7);
        AppendNumber(disabled, statement.get(), 8);
    }
}

void ByHand::LoadUsers(std::vector<Record*>& users)
{
    constexpr const char* sql = "SELECT * FROM qv_User ORDER BY Col_Level";
    const Statement statement = Prepare(sql, std::strlen(sql));
    const int id = ColumnNamed(statement.get(), "Col_ID");
    const int loginName = ColumnNamed(statement.get(), "Col_LoginName");
    const int name = ColumnNamed(statement.get(), "Col_Name");
    const int password = ColumnNamed(statement.get(), "Col_Password");
    const int isSuper = ColumnNamed(statement.get(), "Col_IsSuper");
    while (Step(statement.get())) {
        auto user = std::make_unique<Record>();
        user->id = sqlite3_column_int(statement.get(), id);
        TakeText(user->loginName, statement.get(), loginName);
        TakeText(user->name, statement.get(), name);
        TakeText(user->password, statement.get(), password);
        user->isSuper = sqlite3_column_int(statement.get(), isSuper) != 0;
        users.push_back(user.get());
        user.release(); // NOLINT(bugprone-unused-return-value): the list owns it now
    }
}

void ByHand::SaveUser(const Record& user)
{
    const std::string sql = InsertStatement(user);
    const Statement statement = Prepare(sql.c_str(), sql.size());
    Step(statement.get());
}

std::string ByHand::OldestMessage()
{
    constexpr const char* sql = "SELECT Col_SendDate FROM kel_Msg ORDER BY Col_SendDate";
    const Statement statement = Prepare(sql, std::strlen(sql));
    std::string date;
    if (Step(statement.get())) {
        TakeText(date, statement.get(), 0);
    }
    return date;
}

void ByHand::LoadGroupUsers(int group, std::vector<Record*>& users)
{
    std::array<char, 1024> sql;
    const int length = std::snprintf(
        sql.data(), sql.size(),
        "SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name, qv_User.Col_Sex, qv_User.Col_Mobile, "
        "qv_User.Col_EMail, qv_User.Col_DeptInfo, qv_User.Col_o_JobTitle, qv_User.Col_Disabled FROM "
        "qv_User,qv_Relation WHERE qv_Relation.Col_QvItemType = %d AND qv_Relation.Col_QvItemID = %d AND "
        "qv_Relation.Col_DQvItemType = %d AND qv_Relation.Col_DQvItemID = qv_User.Col_ID AND qv_Relation.Col_RelType = "
        "%d",
        kItemTypeGroup, group, kItemTypeUser, kMembership);
    const Statement statement = Prepare(sql.data(), static_cast<std::size_t>(length));
    while (Step(statement.get())) {
        auto user = std::make_unique<Record>();
        user->id = sqlite3_column_int(statement.get(), 0);
        TakeText(user->loginName, statement.get(), 1);
        TakeText(user->name, statement.get(), 2);
        user->sex = sqlite3_column_int(statement.get(), 3);
        TakeText(user->mobile, statement.get(), 4);
        TakeText(user->eMail, statement.get(), 5);
        TakeText(user->deptInfo, statement.get(), 6);
        TakeText(user->jobTitle, statement.get(), 7);
        user->disabled = sqlite3_column_int(statement.get(), 8) != 0;
        users.push_back(user.get());
        user.release(); // NOLINT(bugprone-unused-return-value): the list owns it now
    }
}

void ByHand::ListGroupUsers(int group, std::vector<unsigned>& ids, std::vector<std::string>& loginNames,
                            std::vector<std::string>& names)
{
    std::array<char, 512> sql;
    const int length = std::snprintf(
        sql.data(), sql.size(),
        "SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name FROM qv_User,qv_Relation WHERE "
        "qv_Relation.Col_QvItemType = %d AND qv_Relation.Col_QvItemID = %d AND qv_Relation.Col_DQvItemType = %d AND "
        "qv_Relation.Col_DQvItemID = qv_User.Col_ID AND qv_Relation.Col_RelType = %d ",
        kItemTypeGroup, group, kItemTypeUser, kMembership);
    ListNames(Prepare(sql.data(), static_cast<std::size_t>(length)), ids, loginNames, names);
}

void ByHand::ListUsersNotIn(int group, std::vector<unsigned>& ids, std::vector<std::string>& loginNames,
                            std::vector<std::string>& names)
{
    std::array<char, 512> sql;
    const int length = std::snprintf(
        sql.data(), sql.size(),
        "SELECT qv_User.Col_ID, qv_User.Col_LoginName, qv_User.Col_Name FROM qv_User WHERE qv_User.Col_ID NOT IN "
        "(SELECT qv_Relation.Col_DQvItemID FROM qv_Relation WHERE qv_Relation.Col_DQvItemType = %d AND "
        "qv_Relation.Col_QvItemID = %d AND qv_Relation.Col_QvItemType = %d AND qv_Relation.Col_RelType = %d)",
        kItemTypeUser, group, kItemTypeGroup, kMembership);
    ListNames(Prepare(sql.data(), static_cast<std::size_t>(length)), ids, loginNames, names);
}

void ByHand::ListMembers(int holder, int holderType, std::vector<unsigned>& ids, std::vector<unsigned>& types)
{
    std::array<char, 512> sql;
    const int length = std::snprintf(sql.data(), sql.size(),
                                     "SELECT Col_DQvItemID, Col_DQvItemType FROM qv_Relation WHERE Col_QvItemID = %d "
                                     "AND Col_QvItemType = %d AND Col_RelType = %d ",
                                     holder, holderType, kMembership);
    const Statement statement = Prepare(sql.data(), static_cast<std::size_t>(length));
    while (Step(statement.get())) {
        AppendNumber(ids, statement.get(), 0);
        AppendNumber(types, statement.get(), 1);
    }
}

void ByHand::StampView(int holder, int holderType, int view)
{
    std::vector<unsigned> ids;
    std::vector<unsigned> types;
    ListMembers(holder, holderType, ids, types);
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const int id = static_cast<int>(ids[i]);
        if (types[i] == kItemTypeGroup) {
            StampView(id, kItemTypeGroup, view);
        } else if (types[i] == kItemTypeUser) {
            std::array<char, 512> sql;
            const int length = std::snprintf(sql.data(), sql.size(),
                                             "UPDATE qv_Relation SET Col_ViewID = %d WHERE Col_QvItemID = %d AND "
                                             "Col_QvItemType = %d AND Col_DQvItemID = %d AND Col_DQvItemType = %d",
                                             view, holder, holderType, id, kItemTypeUser);
            Step(Prepare(sql.data(), static_cast<std::size_t>(length)).get());
        }
    }
}

// ---- Folders, replies, messages ----------------------------------------------------------------------------------

void ByHand::ListSubFolders(int parent, std::vector<std::string>& names, std::vector<unsigned>& ids)
{
    std::array<char, 512> sql;
    const int length = std::snprintf(
        sql.data(), sql.size(),
        "SELECT Tab_Doc_VFolder.Col_ID, Tab_Doc_VFolder.Col_Name FROM Tab_Doc_VFolder, Tab_Doc_VFolder_Link WHERE "
        "Tab_Doc_VFolder_Link.Col_P_ObjID = %d AND Tab_Doc_VFolder_Link.Col_S_ClassID = %d AND "
        "Tab_Doc_VFolder_Link.Col_S_ObjID = Tab_Doc_VFolder.Col_ID",
        parent, 105);
    const Statement statement = Prepare(sql.data(), static_cast<std::size_t>(length));
    while (Step(statement.get())) {
        AppendNumber(ids, statement.get(), 0);
        AppendText(names, statement.get(), 1);
    }
}

void ByHand::ListReplies(const std::string& notice, std::vector<unsigned>& ids, std::vector<std::string>& creators,
                         std::vector<std::string>& times, std::vector<std::string>& contents)
{
    std::array<char, 512> sql;
    const int length =
        std::snprintf(sql.data(), sql.size(),
                      "SELECT Col_ID, Col_Creator_Name, Col_Dt_Create, Col_Content FROM Kel_Board_Revert "
                      "WHERE Col_BoardID = '%s' ORDER BY Col_Dt_Create",
                      notice.c_str());
    const Statement statement = Prepare(sql.data(), static_cast<std::size_t>(length));
    while (Step(statement.get())) {
        AppendNumber(ids, statement.get(), 0);
        AppendText(creators, statement.get(), 1);
        AppendText(times, statement.get(), 2);
        AppendText(contents, statement.get(), 3);
    }
}

void ByHand::Purge(const char* date)
{
    std::array<char, 512> sql;
    std::snprintf(sql.data(), sql.size(), "DELETE FROM kel_Msg WHERE kel_Msg.Col_SendDate <= '%s' ", date);
    Run(sql.data());
    Run("DELETE FROM kel_Msg_AttachMent WHERE ( (SELECT COUNT(*) FROM kel_Msg WHERE kel_Msg_AttachMent.Col_MsgID = "
        "kel_Msg.Col_ID ) = 0 )");
    Run("DELETE FROM kel_Msg_Rece WHERE ( (SELECT COUNT(*) FROM kel_Msg WHERE kel_Msg_Rece.Col_MsgID = kel_Msg.Col_ID) "
        "= 0 )");
}

// ---- Effective rights --------------------------------------------------------------------------------------------

std::string ByHand::RoleFilter(int user)
{
    std::array<char, 512> sql;
    const int length = std::snprintf(
        sql.data(), sql.size(),
        "SELECT qv_Role.Col_ID, qv_Role.Col_Name, qv_Role.Col_Description FROM qv_Role,qv_Relation WHERE "
        "qv_Role.Col_ID = qv_Relation.Col_QvItemID AND qv_Relation.Col_QvItemType = %d AND qv_Relation.Col_DQvItemID = "
        "%d AND qv_Relation.Col_DQvItemType = %d AND qv_Role.Col_AppName = 'Tolvan'",
        kItemTypeRole, user, kItemTypeUser);
    std::string filter;
    const auto append = [&filter](int role) {
        std::array<char, 64> term;
        const int size = std::snprintf(term.data(), term.size(), "%s( Col_QvItemID = %d AND Col_QvItemType = %d )",
                                       filter.empty() ? "" : " OR ", role, kItemTypeRole);
        filter.append(term.data(), static_cast<std::size_t>(size));
    };
    const Statement linked = Prepare(sql.data(), static_cast<std::size_t>(length));
    while (Step(linked.get())) {
        append(sqlite3_column_int(linked.get(), 0));
    }
    constexpr std::string_view ofEveryUser =
        "SELECT Col_ID FROM qv_Role WHERE Col_Name = 'everyone' AND Col_AppName = 'Tolvan' ";
    const Statement everyone = Prepare(ofEveryUser.data(), ofEveryUser.size());
    append(Step(everyone.get()) ? sqlite3_column_int(everyone.get(), 0) : 0);
    return filter;
}

ByHand::Statement ByHand::PreparePowers(int user, const char* genre, const std::string& function)
{
    const std::string filter = RoleFilter(user);
    std::array<char, 1024> sql;
    const int length =
        std::snprintf(sql.data(), sql.size(),
                      "SELECT Col_Power FROM qv_ItemAce WHERE Col_FunGenre = '%s' AND Col_FunName = '%s' AND ( %s )",
                      genre, function.c_str(), filter.c_str());
    return Prepare(sql.data(), static_cast<std::size_t>(length));
}

bool ByHand::HasBit(int user, const char* genre, const std::string& function, unsigned bit)
{
    const Statement statement = PreparePowers(user, genre, function);
    while (Step(statement.get())) {
        if ((static_cast<unsigned>(sqlite3_column_int(statement.get(), 0)) & bit) != 0) {
            return true;
        }
    }
    return false;
}

bool ByHand::FirstHasBit(int user, const char* genre, const std::string& function, unsigned bit)
{
    const Statement statement = PreparePowers(user, genre, function);
    return Step(statement.get()) && (static_cast<unsigned>(sqlite3_column_int(statement.get(), 0)) & bit) != 0;
}

unsigned ByHand::BitsOf(int user, const char* genre, const std::string& function)
{
    const Statement statement = PreparePowers(user, genre, function);
    unsigned bits = 0;
    while (Step(statement.get())) {
        bits |= static_cast<unsigned>(sqlite3_column_int(statement.get(), 0));
    }
    return bits;
}

int ByHand::LimitOf(int user, const char* genre, const std::string& function)
{
    const std::string filter = RoleFilter(user);
    std::array<char, 1024> sql;
    const int length = std::snprintf(sql.data(), sql.size(),
                                     "SELECT COUNT(*), MAX(Col_Power), MIN(Col_Power) FROM qv_ItemAce WHERE "
                                     "Col_FunGenre = '%s' AND Col_FunName = '%s' AND ( %s )",
                                     genre, function.c_str(), filter.c_str());
    const Statement statement = Prepare(sql.data(), static_cast<std::size_t>(length));
    const bool found = Step(statement.get()) && sqlite3_column_int(statement.get(), 0) != 0;
    return found && sqlite3_column_int(statement.get(), 2) != -1 ? sqlite3_column_int(statement.get(), 1) : -1;
}

void ByHand::ListViewsOf(int user, const char* genre, const char* function, std::vector<unsigned>& views)
{
    const std::string filter = RoleFilter(user);
    std::array<char, 1024> sql;
    const int length = std::snprintf(sql.data(), sql.size(),
                                     "SELECT DISTINCT Col_DQvItemID FROM qv_BIIAce WHERE Col_DQvItemType = %d AND "
                                     "Col_FunName = '%s' AND Col_FunGenre = '%s' AND Col_Power = %d AND ( %s )",
                                     kItemTypeView, function, genre, 1, filter.c_str());
    const Statement statement = Prepare(sql.data(), static_cast<std::size_t>(length));
    while (Step(statement.get())) {
        AppendNumber(views, statement.get(), 0);
    }
}

} // namespace bench
