// Whatever text an administrator gives comes back byte for byte, in one row, and no other row has changed.

#include "console/ExitCode.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "directory/HumanItem.h"
#include "fuzz/Fuzz.h"
#include "management/users/Directory.h"
#include "schema/Schema.h"

#include <string>

namespace {

constexpr const char* kAllTexts =
    "SELECT Col_LoginName || '|' || Col_Name || '|' || Col_Mobile || '|' || Col_Note || '|' || Col_o_Fax || '|' || "
    "Col_UserData || '|' || Col_DeptInfo FROM qv_User WHERE Col_ID = %d";

class Database {
public:
    Database() : m_directory(m_conn)
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
        m_directory.Insert("witness", "never written again");
        m_witness = *m_directory.FindId("witness");
        m_before = Row(m_witness);
    }

    void Check(std::string_view text)
    {
        m_conn.BeginTrans();
        CheckSave(text);
        CheckInsert(text);
        m_conn.RollbackTrans();
    }

    /// After a refusal in the middle of a check.
    void Abandon()
    {
        m_conn.RollbackTrans();
        RequireOthers(1);
    }

private:
    void CheckSave(std::string_view text)
    {
        CHumanItem item;
        item.m_strLoginName = CString(text);
        item.m_strName = CString(text);
        item.m_strMobile = CString(text);
        item.m_strNote = CString(text);
        item.m_strOfficeFax = CString(text);
        item.m_strUserData = CString(text);
        item.m_strDeptInfo = CString(text);
        m_directory.Save(item);
        const int id = NewestId();
        std::string expected;
        for (int i = 0; i < 7; ++i) {
            expected += (i == 0 ? "" : "|") + std::string(text);
        }
        RequireRow(id, expected, "a saved user comes back byte for byte");
        fuzz::Require(m_directory.FindId(text).has_value(), "a saved user is found by login name");
        fuzz::Require(m_directory.Exists(text), "a saved login name is found");

        m_directory.Set(id, {{management::FindField("name"), "new"}});
        fuzz::Require(m_directory.NameOfId(id) == "new", "a name that was set is the new one");
        RequireOthers(2);
    }

    void CheckInsert(std::string_view text)
    {
        m_directory.Insert(text, text);
        const int id = NewestId();
        fuzz::Require(m_directory.NameOfId(id) == text, "an inserted name comes back");
        m_directory.UpdateDepartment(id, 7, text, true);
        console::OwnData data;
        data.login = "own";
        data.name = data.department = data.title = data.officePhone = data.mobile = text;
        data.officeFax = data.email = data.userData = data.homePhone = text;
        m_directory.UpdateOwnData(id, data);
        const std::string t{text};
        RequireRow(id, "own|" + t + "|" + t + "||" + t + "|" + t + "|" + t, "own data come back");
        RequireOthers(3);
    }

    std::string Row(int id)
    {
        CString sql;
        sql.Format(kAllTexts, id);
        CARecordset rs;
        fuzz::Require(rs.Open(sql, &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable), "the row is read");
        return std::string(rs.GetValueToStr(1, true).View());
    }

    int NewestId()
    {
        CARecordset rs;
        rs.Open("SELECT MAX(Col_ID) FROM qv_User", &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
        int id = 0;
        rs.GetValue(1, id);
        return id;
    }

    void RequireRow(int id, const std::string& expected, const char* property)
    {
        fuzz::Require(Row(id) == expected, property);
    }

    void RequireOthers(int users)
    {
        fuzz::Require(m_directory.Count() == users, "one row per user");
        fuzz::Require(Row(m_witness) == m_before, "no other row has changed");
    }

    CAConnect m_conn;
    console::Directory m_directory;
    int m_witness = 0;
    std::string m_before;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static Database database;
    const std::string_view text = fuzz::Text(data, size);
    if (text.find('\0') != std::string_view::npos) {
        try {
            database.Check(text);
        } catch (const console::Error&) {
            database.Abandon();
            return 0;
        }
        fuzz::Require(false, "a NUL byte is refused");
    }
    database.Check(text);
    return 0;
}
