#include "management/users/Users.h"

#include "RefusalOf.h"
#include "console/ExitCode.h"
#include "dbaccess/CAConnect.h"
#include "schema/Schema.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

using namespace console;
using namespace management;

namespace {

class UsersTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    Stored Column(int id, std::string_view name) { return m_directory.Load(id).value().at(FindField(name)); }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    CAConnect m_conn;
    Directory m_directory{m_conn};
};

} // namespace

TEST_F(UsersTest, ANewUserHasTheLoginAsNameAndNoBirthday)
{
    const int id = CreateUser(m_directory, "O'Brien\\", {});
    EXPECT_EQ(Column(id, "login"), "O'Brien\\");
    EXPECT_EQ(Column(id, "name"), "O'Brien\\");
    EXPECT_EQ(Column(id, "birthday"), std::nullopt);
    EXPECT_EQ(Column(id, "sort_index"), "10000");
}

TEST_F(UsersTest, ANewUserHasWhatIsGiven)
{
    FieldValues values;
    for (const Field& field : Fields()) {
        if (field.use == Field::Use::given) {
            values[&field] = field.IsDate() ? "1989-11-28" : field.IsText() ? "'\\" + std::string(field.name) : "1";
        }
    }
    const int id = CreateUser(m_directory, "amy", values);
    for (const auto& [field, value] : values) {
        EXPECT_EQ(Column(id, field->name), value) << field->name;
    }
}

TEST_F(UsersTest, ALoginNameIsTakenWhateverItsCase)
{
    CreateUser(m_directory, "Żółw", {});
    EXPECT_EQ(CodeOf([&] { CreateUser(m_directory, "żÓŁW", {}); }), Exit::conflict);
    EXPECT_EQ(m_directory.Count(), 1);
}

TEST_F(UsersTest, LoginNamesThatNobodyCouldTypeAreRefused)
{
    for (const char* login : {"", " amy", "amy\xC2\xA0", "a\tb", "a\x1B", "\n"}) {
        EXPECT_EQ(CodeOf([&] { CheckLogin(login); }), Exit::usage) << login;
    }
    EXPECT_NO_THROW(CheckLogin("Amy Holt"));
}

TEST_F(UsersTest, AChangeLeavesAllElseAsItIsStored)
{
    // Everything that loading and writing back a record would reset or reword.
    Execute("INSERT INTO qv_User (Col_ID, Col_LoginName, Col_Name, Col_PWord, Col_EnType, Col_IsSystem, Col_IsFarUser, "
            "Col_FarServer, "
            "Col_DomainID, Col_Creator_Name, Col_DeptID, Col_Picture, Col_UserData, Col_Level, Col_Note, Col_ECard, "
            "Col_IsSuper, "
            "Col_Disabled, Col_Birthday, Col_Sex) VALUES (7, 'amy', 'Amy', 'digest', 2, 1, 1, 'far', 3, 'root', 4, "
            "'pic''ture\\', "
            "'da''ta', 9, NULL, NULL, 5, NULL, NULL, NULL)");
    FieldValues expected = m_directory.Load(7).value();
    EXPECT_TRUE(ChangeUser(m_directory, 7, {{FindField("mobile"), "+44'1"}}));
    expected[FindField("mobile")] = "+44'1";
    EXPECT_EQ(m_directory.Load(7), expected);
}

TEST_F(UsersTest, ADateInAnotherFormStaysAsItIs)
{
    for (const char* date : {"1989-11-28 10:00:00", "28.11.1989", "0012-01-01", ""}) {
        Execute(fmt::format("INSERT INTO qv_User (Col_LoginName, Col_Birthday) VALUES ('x', '{}')", date));
        const int id = m_directory.FindId("x").value();
        EXPECT_TRUE(ChangeUser(m_directory, id, {{FindField("name"), "X"}}));
        EXPECT_EQ(Column(id, "birthday"), date);
        m_directory.Delete(id);
    }
}

TEST_F(UsersTest, PictureUserDataAndBirthdayCanBeSetAndCleared)
{
    const int id = CreateUser(m_directory, "amy", {});
    EXPECT_TRUE(ChangeUser(
        m_directory, id,
        {{FindField("picture"), "p'"}, {FindField("user_data"), "d\\"}, {FindField("birthday"), "1989-11-28"}}));
    EXPECT_EQ(Column(id, "picture"), "p'");
    EXPECT_EQ(Column(id, "user_data"), "d\\");
    EXPECT_EQ(Column(id, "birthday"), "1989-11-28");
    EXPECT_TRUE(ChangeUser(m_directory, id, {{FindField("picture"), ""}, {FindField("birthday"), std::nullopt}}));
    EXPECT_EQ(Column(id, "picture"), "");
    EXPECT_EQ(Column(id, "birthday"), std::nullopt);
    EXPECT_EQ(Column(id, "user_data"), "d\\");
}

TEST_F(UsersTest, WhatIsTheSameAlreadyIsNoChange)
{
    const int id = CreateUser(m_directory, "amy", {{FindField("sex"), "2"}});
    EXPECT_FALSE(ChangeUser(m_directory, id,
                            {{FindField("sex"), "2"}, {FindField("birthday"), std::nullopt}, {FindField("note"), ""}}));
}

TEST_F(UsersTest, AUserIsFoundIgnoringCaseOrById)
{
    const int id = CreateUser(m_directory, "Amy", {});
    const int odd = CreateUser(m_directory, "id:1", {});
    EXPECT_EQ(FindUser(m_directory, "aMY").id, id);
    EXPECT_EQ(FindUser(m_directory, fmt::format("id:{}", id)).login, "Amy");
    EXPECT_EQ(FindUser(m_directory, "login:ID:1").id, odd);
    EXPECT_EQ(CodeOf([&] { FindUser(m_directory, "rory"); }), Exit::notFound);
    EXPECT_EQ(CodeOf([&] { FindUser(m_directory, "id:99"); }), Exit::notFound);
    EXPECT_EQ(CodeOf([&] { FindUser(m_directory, "id:x"); }), Exit::usage);
    EXPECT_EQ(FindUsers(m_directory, {"amy", "AMY", "login:id:1"}).size(), 2U);
}

TEST_F(UsersTest, AmongSeveralTheExactCaseIsMeant)
{
    m_directory.Insert("Amy", "1");
    m_directory.Insert("AMY", "2");
    EXPECT_EQ(FindUser(m_directory, "AMY").id, m_directory.FindId("AMY"));
    EXPECT_EQ(CodeOf([&] { FindUser(m_directory, "amy"); }), Exit::conflict);
    m_directory.Insert("Amy", "3");
    EXPECT_EQ(CodeOf([&] { FindUser(m_directory, "Amy"); }), Exit::conflict);
}

TEST_F(UsersTest, RenameMayChangeTheCaseButTakesNobodyElsesName)
{
    CreateUser(m_directory, "amy", {});
    CreateUser(m_directory, "rory", {});
    EXPECT_EQ(CodeOf([&] { RenameUser(m_directory, FindUser(m_directory, "amy"), "RORY", false); }), Exit::conflict);
    EXPECT_EQ(CodeOf([&] { RenameUser(m_directory, FindUser(m_directory, "amy"), " x", false); }), Exit::usage);
    RenameUser(m_directory, FindUser(m_directory, "amy"), "Amy", false);
    EXPECT_EQ(FindUser(m_directory, "amy").login, "Amy");
}

TEST_F(UsersTest, RenameRefusesToSpoilAPasswordUnlessItMayDropIt)
{
    m_directory.Insert("amy", "Amy", "digest", 2);
    const UserKey amy = FindUser(m_directory, "amy");
    EXPECT_EQ(CodeOf([&] { RenameUser(m_directory, amy, "AMY", false); }), Exit::conflict);
    EXPECT_EQ(FindUser(m_directory, "amy").login, "amy");
    EXPECT_EQ(RenameUser(m_directory, amy, "AMY", true), PasswordFate::dropped);
    EXPECT_EQ(Column(amy.id, "password"), kFitsNothing);
    EXPECT_EQ(Column(amy.id, "password_type"), "2");
    EXPECT_EQ(RenameUser(m_directory, FindUser(m_directory, "amy"), "amy", false), PasswordFate::kept);
}

TEST_F(UsersTest, RenameKeepsAPasswordThatStillFits)
{
    m_directory.Insert("amy", "Amy", "plain", 0);
    EXPECT_EQ(RenameUser(m_directory, FindUser(m_directory, "amy"), "pond", true), PasswordFate::kept);
    EXPECT_EQ(Column(FindUser(m_directory, "pond").id, "password"), "plain");
}

TEST_F(UsersTest, TheBuiltInAdministratorStays)
{
    CreateUser(m_directory, "Admin", {});
    const UserKey admin = FindUser(m_directory, "admin");
    EXPECT_EQ(CodeOf([&] { RenameUser(m_directory, admin, "root", false); }), Exit::isProtected);
    EXPECT_EQ(CodeOf([&] { DeleteUser(m_directory, admin); }), Exit::isProtected);
    EXPECT_EQ(m_directory.Count(), 1);
}

TEST(FieldsTest, ValuesAreReadAsPeopleWriteThem)
{
    EXPECT_EQ(ParseValue(*FindField("sex"), "Female"), "2");
    EXPECT_EQ(ParseValue(*FindField("sex"), "0"), "0");
    EXPECT_EQ(ParseValue(*FindField("super"), "YES"), "1");
    EXPECT_EQ(ParseValue(*FindField("super"), "0"), "0");
    EXPECT_EQ(ParseValue(*FindField("sort_index"), "-12"), "-12");
    EXPECT_EQ(ParseValue(*FindField("birthday"), "2024-02-29"), "2024-02-29");
    EXPECT_EQ(ParseValue(*FindField("birthday"), ""), std::nullopt);
    EXPECT_EQ(ParseValue(*FindField("note"), " x "), " x ");
}

TEST(FieldsTest, ValuesThatAreNoneAreRefused)
{
    const std::pair<const char*, const char*> kBad[] = {{"sex", "3"},
                                                        {"sex", ""},
                                                        {"super", "2"},
                                                        {"super", ""},
                                                        {"sort_index", "1.5"},
                                                        {"sort_index", ""},
                                                        {"sort_index", "2147483648"},
                                                        {"domain_id", "1 "},
                                                        {"birthday", "2023-02-29"},
                                                        {"birthday", "2023-2-9"},
                                                        {"birthday", "0999-01-01"},
                                                        {"birthday", "2023-01-01 10:00"},
                                                        {"birthday", "2023-1 -01"},
                                                        {"birthday", "today"}};
    for (const auto& [name, text] : kBad) {
        EXPECT_EQ(CodeOf([field = FindField(name), value = text] { (void)ParseValue(*field, value); }), Exit::usage)
            << name << " " << text;
    }
}
