#include "management/users/Directory.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "management/DatabaseError.h"
#include "management/Escape.h"
#include "schema/Schema.h"
#include "tests/servers/Servers.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <functional>
#include <random>

using namespace management;

namespace {

using Rows = std::map<int, FieldValues>;

/// Texts that a careless statement would break on, seeded, so that a failure can be had again.
class Texts {
public:
    explicit Texts(unsigned seed) : m_random(seed) {}

    std::string Next()
    {
        static const std::vector<std::string> kPieces = {
            "'",     "''",   "\\", "\\'",  "\"", "%",   "%s",   "%d", ";--",      "a", "Z",
            " ",     "O'Br", "\n", "\r\n", "\t", "\x1", "\x7F", "é",  "王",       "ß", "\xF0\x9F\x98\x80",
            "\xFF",  "\xC3", "/*", "*/",   "`",  "$1",  "?1",   ":x", "\xE2\x80", "0", "{}",
            "\\x00", "NULL", "#"};
        std::string text;
        for (std::size_t count = m_random() % 12; count > 0; --count) {
            text += kPieces[m_random() % kPieces.size()];
        }
        return text;
    }

    /// One that no other text of this object is equal to, whatever the case.
    std::string NextLogin() { return fmt::format("{}~{}", Next(), ++m_logins); }
    int Number() { return static_cast<int>(m_random()); }

private:
    std::mt19937 m_random;
    int m_logins = 0;
};

class DirectoryTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    Rows AllRows()
    {
        std::vector<int> ids;
        CARecordset rs;
        rs.Open("SELECT Col_ID FROM qv_User", &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
        for (; rs.IsEOF() == 0; rs.MoveNext()) {
            rs.GetValue(1, ids.emplace_back());
        }
        Rows rows;
        for (const int id : ids) {
            rows[id] = m_directory.Load(id).value();
        }
        return rows;
    }

    /// Fills every column that the record has, with texts that are hard to bring through.
    void Fill(CHumanItem& item)
    {
        item.m_nID = 0;
        for (const Field& field : Fields()) {
            if (field.name == "login") {
                SetMember(item, field, m_texts.NextLogin());
            } else if (field.IsText()) {
                SetMember(item, field, m_texts.Next());
            } else if (field.IsFlag()) {
                SetMember(item, field, std::to_string(m_texts.Number() & 1));
            } else if (!field.IsDate()) {
                SetMember(item, field, std::to_string(m_texts.Number()));
            }
        }
        item.m_dtBirthday = COleDateTime(1999, 12, 31, 0, 0, 0);
    }

    int NewestId()
    {
        const Rows rows = AllRows();
        return rows.empty() ? 0 : rows.rbegin()->first;
    }

    int Added()
    {
        CHumanItem item;
        Fill(item);
        m_directory.Save(item);
        return NewestId();
    }

    /// Runs a write many times among other rows. The write gives the row that it is to have touched and what must be
    /// there; all other columns of it, if it was there before, and all other rows must be as they were.
    using Write = std::function<std::pair<int, FieldValues>(int id)>;
    void ExpectChangesOneRow(const Write& write)
    {
        for (int round = 0; round < 60; ++round) {
            m_conn.Execute("DELETE FROM qv_User");
            Added();
            const int target = Added();
            Added();
            const Rows before = AllRows();
            const auto [id, written] = write(target);
            Rows expected = before;
            Rows after = AllRows();
            expected[id] = before.contains(id) ? before.at(id) : after[id];
            for (const auto& [field, value] : written) {
                expected[id][field] = value;
            }
            ASSERT_EQ(after, expected) << "round " << round;
        }
    }

    CAConnect m_conn;
    Directory m_directory{m_conn};
    Texts m_texts{20130507};
};

/// What the record says that the row must hold.
FieldValues WrittenValues(const CHumanItem& item, const std::function<bool(const Field&)>& isWritten)
{
    FieldValues values;
    for (const Field& field : Fields()) {
        if (field.member.index() != 0 && isWritten(field)) {
            values[&field] = WrittenBy(item, field);
        }
    }
    return values;
}

} // namespace

TEST_F(DirectoryTest, SaveBringsEveryTextThrough)
{
    ExpectChangesOneRow([this](int) {
        CHumanItem item;
        Fill(item);
        m_directory.Save(item);
        const auto isWritten = [](const Field& field) {
            return field.name != "far_user" && field.name != "far_server";
        };
        return std::pair(NewestId(), WrittenValues(item, isWritten));
    });
}

TEST_F(DirectoryTest, SetBringsEveryTextThrough)
{
    ExpectChangesOneRow([this](int id) {
        CHumanItem item;
        Fill(item);
        const FieldValues values = WrittenValues(item, [](const Field&) { return true; });
        m_directory.Set(id, values);
        return std::pair(id, values);
    });
    ExpectChangesOneRow([this](int id) {
        const FieldValues values = {{FindField("picture"), m_texts.Next()},
                                    {FindField("user_data"), m_texts.Next()},
                                    {FindField("birthday"), std::nullopt}};
        m_directory.Set(id, values);
        return std::pair(id, values);
    });
}

TEST_F(DirectoryTest, InsertBringsEveryTextThrough)
{
    ExpectChangesOneRow([this](int) {
        const FieldValues values = {{FindField("login"), m_texts.NextLogin()}, {FindField("name"), m_texts.Next()}};
        m_directory.Insert(*values.at(FindField("login")), *values.at(FindField("name")));
        return std::pair(NewestId(), values);
    });
    ExpectChangesOneRow([this](int) {
        const FieldValues values = {{FindField("login"), m_texts.NextLogin()},
                                    {FindField("name"), m_texts.Next()},
                                    {FindField("password"), m_texts.Next()},
                                    {FindField("password_type"), "2"}};
        m_directory.Insert(*values.at(FindField("login")), *values.at(FindField("name")),
                           *values.at(FindField("password")), 2);
        return std::pair(NewestId(), values);
    });
}

TEST_F(DirectoryTest, UpdateOwnDataBringsEveryTextThrough)
{
    ExpectChangesOneRow([this](int id) {
        OwnData data{m_texts.NextLogin(), m_texts.Next(), m_texts.Next(),  m_texts.Next(),
                     m_texts.Next(),      m_texts.Next(), m_texts.Next(),  m_texts.Next(),
                     m_texts.Next(),      m_texts.Next(), m_texts.Number()};
        m_directory.UpdateOwnData(id, data);
        return std::pair(id, FieldValues{{FindField("login"), data.login},
                                         {FindField("name"), data.name},
                                         {FindField("department"), data.department},
                                         {FindField("title"), data.title},
                                         {FindField("office_phone"), data.officePhone},
                                         {FindField("mobile"), data.mobile},
                                         {FindField("office_fax"), data.officeFax},
                                         {FindField("email"), data.email},
                                         {FindField("user_data"), data.userData},
                                         {FindField("home_phone"), data.homePhone},
                                         {FindField("department_id"), std::to_string(data.departmentId)}});
    });
}

TEST_F(DirectoryTest, UpdateDepartmentBringsTheTextThrough)
{
    ExpectChangesOneRow([this](int id) {
        const std::string department = m_texts.Next();
        m_directory.UpdateDepartment(id, 5, department, true);
        return std::pair(id, FieldValues{{FindField("department"), department}, {FindField("department_id"), "5"}});
    });
    ExpectChangesOneRow([this](int id) {
        m_directory.Set(id, {{FindField("department_id"), "7"}});
        m_directory.UpdateDepartment(id, 5, m_texts.Next(), false);
        return std::pair(id, FieldValues{{FindField("department_id"), "7"}});
    });
}

TEST_F(DirectoryTest, SetLockedTouchesOneColumn)
{
    ExpectChangesOneRow([this](int id) {
        m_directory.SetLocked(id, true);
        return std::pair(id, FieldValues{{FindField("locked"), "1"}});
    });
}

TEST_F(DirectoryTest, LookUpsFindEveryText)
{
    for (int round = 0; round < 200; ++round) {
        CHumanItem item;
        Fill(item);
        const std::string name = fmt::format("{}~{}", m_texts.Next(), round);
        SetMember(item, *FindField("name"), name);
        m_directory.Save(item);
        const int id = NewestId();
        const std::string login = WrittenBy(item, *FindField("login"));
        EXPECT_EQ(m_directory.FindId(login), id);
        EXPECT_TRUE(m_directory.Exists(login));
        EXPECT_EQ(m_directory.FindIdIgnoringCase(login), id);
        ASSERT_EQ(m_directory.FindAll(login).size(), 1U);
        EXPECT_EQ(m_directory.FindAll(login)[0].login, login);
        EXPECT_EQ(m_directory.IsSuperUser(login), item.m_bIsSuper);
        EXPECT_EQ(m_directory.IsLocked(login), item.m_bDisabled);
        EXPECT_EQ(m_directory.LoginOfName(name), login);
        EXPECT_EQ(m_directory.NameOfLogin(login), name);
        EXPECT_EQ(m_directory.NameOfId(id), name);
        ASSERT_TRUE(m_directory.FindNamed(login));
        EXPECT_EQ(m_directory.FindNamed(login)->name, name);
        EXPECT_EQ(m_directory.Count(), round + 1);
    }
}

TEST_F(DirectoryTest, WhatIsNotThereIsNotFound)
{
    m_directory.Insert("amy", "Amy");
    for (int round = 0; round < 100; ++round) {
        const std::string login = m_texts.NextLogin();
        EXPECT_EQ(m_directory.FindId(login), std::nullopt);
        EXPECT_FALSE(m_directory.Exists(login));
        EXPECT_EQ(m_directory.FindIdIgnoringCase(login), std::nullopt);
        EXPECT_TRUE(m_directory.FindAll(login).empty());
        EXPECT_FALSE(m_directory.FindNamed(login));
        EXPECT_EQ(m_directory.NameOfLogin(login), "");
    }
    EXPECT_EQ(m_directory.Load(99), std::nullopt);
}

TEST_F(DirectoryTest, LoginNamesAreFoundWhateverTheirCase)
{
    m_directory.Insert("Żółw", "");
    m_directory.Insert("żÓŁW", "");
    EXPECT_EQ(m_directory.FindId("ŻÓŁW"), std::nullopt);
    EXPECT_TRUE(m_directory.Exists("ŻÓŁW"));
    EXPECT_EQ(m_directory.FindAll("żółw").size(), 2U);
}

TEST_F(DirectoryTest, DeleteTakesAllTracesAlongAndNoOthers)
{
    const char* const kTraces[] = {
        "INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES ({0}, {1}, 50, "
        "2)",
        "INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES (50, 2, {0}, "
        "{1})",
        "INSERT INTO qv_JobTitle (Col_QvItemID, Col_DQvItemID, Col_DQvItemType) VALUES (50, {0}, {1})",
        "INSERT INTO qv_ItemAce (Col_QvItemID, Col_QvItemType) VALUES ({0}, {1})",
        "INSERT INTO qv_BIIAce (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES ({0}, {1}, 50, 2)",
        "INSERT INTO qv_BIIAce (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES (50, 2, {0}, {1})",
        "INSERT INTO Tab_BIOAce (Col_QvItemID, Col_QvItemType) VALUES ({0}, {1})",
        "INSERT INTO Tab_Doc_Backup_Rel (Col_QvItem_ID, Col_QvItem_Type) VALUES ({0}, {1})"};
    const int amy = Added();
    const int rory = Added();
    const int traces = static_cast<int>(std::size(kTraces));
    // The group of the same number (type 2) keeps what is its own.
    for (const char* trace : kTraces) {
        for (const auto& [id, type] : {std::pair(amy, 1), std::pair(amy, 2), std::pair(rory, 1)}) {
            m_conn.Execute(fmt::format(fmt::runtime(trace), id, type).c_str());
        }
    }
    const auto total = [this](int id) {
        int count = 0;
        for (const Reference& trace : m_directory.References(id)) {
            count += trace.count;
        }
        return count;
    };
    EXPECT_EQ(total(amy), traces);
    EXPECT_TRUE(m_directory.Delete(amy));
    EXPECT_EQ(total(amy), 0);
    EXPECT_EQ(total(rory), traces);
    EXPECT_EQ(m_directory.Load(amy), std::nullopt);
    EXPECT_TRUE(m_directory.Load(rory));
    int groups = 0;
    CARecordset rs;
    rs.Open("SELECT (SELECT COUNT(*) FROM qv_Relation WHERE 2 IN (Col_QvItemType) AND Col_DQvItemType = 2) + "
            "(SELECT COUNT(*) FROM qv_ItemAce WHERE Col_QvItemType = 2)",
            &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
    rs.GetValue(1, groups);
    EXPECT_EQ(groups, 3);
}

TEST_F(DirectoryTest, DeleteSparesWhomTheModuleProtects)
{
    m_directory.Insert("Admin", "Administrator");
    const int id = NewestId();
    m_conn.Execute(fmt::format("INSERT INTO qv_ItemAce (Col_QvItemID, Col_QvItemType) VALUES ({}, 1)", id).c_str());
    EXPECT_FALSE(m_directory.Delete(id));
    EXPECT_TRUE(m_directory.Load(id));
    EXPECT_EQ(m_directory.References(id).size(), 1U);
}

TEST_F(DirectoryTest, TextsWithNulAreRefused)
{
    const std::string text("a\0b", 3);
    const int id = Added();
    const Rows before = AllRows();
    EXPECT_THROW(m_directory.FindId(text), Error);
    EXPECT_THROW(m_directory.IsSuperUser(text), Error);
    EXPECT_THROW(m_directory.Insert("amy", text), Error);
    EXPECT_THROW(m_directory.Set(id, {{FindField("note"), text}}), Error);
    CHumanItem item;
    Fill(item);
    item.m_strNote = CString(text.data(), text.size());
    EXPECT_THROW(m_directory.Save(item), Error);
    EXPECT_EQ(AllRows(), before);
}

TEST_F(DirectoryTest, ErrorsCarryTheEnginesLineAndNoStatement)
{
    m_conn.Execute("ALTER TABLE qv_User RENAME TO qv_Gone");
    try {
        m_directory.FindId("amy");
        FAIL();
    } catch (const DatabaseError& e) {
        EXPECT_THAT(e.what(), testing::HasSubstr("no such table: qv_User [SQLite 1]"));
        EXPECT_THAT(e.what(), testing::Not(testing::HasSubstr("SELECT")));
        EXPECT_FALSE(e.IsLasting());
    }
}

TEST_F(DirectoryTest, AClosedConnectionIsALastingError)
{
    m_conn.Close();
    const auto isLasting = [](const std::function<void()>& call) {
        try {
            call();
        } catch (const DatabaseError& e) {
            return e.IsLasting();
        }
        return false;
    };
    CHumanItem item;
    EXPECT_TRUE(isLasting([&] { m_directory.Count(); }));
    EXPECT_TRUE(isLasting([&] { m_directory.Load(1); }));
    EXPECT_TRUE(isLasting([&] { m_directory.TryToWrite(); }));
    EXPECT_TRUE(isLasting([&] { m_directory.Save(item); }));
    EXPECT_TRUE(isLasting([&] { const Transaction transaction(m_conn); }));
}

TEST_F(DirectoryTest, AChangeThatIsRefusedTellsWhy)
{
    const int id = Added();
    m_conn.Execute("CREATE TRIGGER refuse BEFORE UPDATE ON qv_User BEGIN SELECT RAISE(ABORT, 'not today'); END");
    try {
        m_directory.Set(id, {{FindField("name"), "Amy"}});
        FAIL();
    } catch (const DatabaseError& e) {
        EXPECT_THAT(e.what(), testing::HasSubstr("not today"));
    }
}

TEST(EscapeTest, BackslashesAreDoubledWhereTheEngineTakesThemForItsOwnWhateverItsKind)
{
    CAConnect plain;
    plain.Open("sqlite::memory:");
    CAConnect escaping;
    escaping.Open(servers::UrlOf("mariadb", "mysql").c_str());
    EXPECT_FALSE(EscapesBackslashes(plain));
    EXPECT_TRUE(EscapesBackslashes(escaping));
    for (const int kind : {0, 1, 3, 6}) {
        plain.m_nDBType = kind;
        EXPECT_EQ(EscapeBackslashes(plain, "a\\b'c''\\"), "a\\b'c''\\") << kind;
        escaping.m_nDBType = kind;
        EXPECT_EQ(EscapeBackslashes(escaping, "a\\b'c''\\"), "a\\\\b'c''\\\\") << kind;
    }
}

TEST(EscapeTest, BackslashesAreLeftToOperationsThatDoubleThemOnKindSix)
{
    CAConnect escaping;
    escaping.Open(servers::UrlOf("mariadb", "mysql").c_str());
    EXPECT_EQ(EscapeQuotes(escaping, "a\\b'"), "a\\b''");
    escaping.m_nDBType = 3;
    EXPECT_EQ(EscapeQuotes(escaping, "a\\b'"), "a\\\\b''");
}

TEST(EscapeTest, PlainTextsAreEscapedAsTheEngineWantsIt)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    EXPECT_EQ(EscapeLiteral(conn, "O'Brien\\%"), "O''Brien\\%");
}
