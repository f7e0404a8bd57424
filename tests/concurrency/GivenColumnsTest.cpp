#include "Consoles.h"
#include "schema/Dialect.h"
#include "schema/Tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <string>
#include <vector>

// A command that sets something writes the columns that it was given: what others write to the rest is not undone.

namespace {

using Words = std::vector<std::string>;

struct GivenCase {
    Words command;
    std::string table;
    std::vector<std::string> columns;
};

const std::vector<Words> kBefore = {{"user", "create", "amy"},
                                    {"view", "create", "V"},
                                    {"group", "create", "/V/A"},
                                    {"role", "create", "Editors"},
                                    {"plan", "create", "Nightly"},
                                    {"docroot", "create", "D", "--path", "/d", "--type", "1"},
                                    {"folder", "create", "/D/a"},
                                    {"addin", "create", "Chess", "--type", "1"},
                                    {"right", "grant", "role:Editors", "pages", "see", "1", "--unpower", "2"},
                                    {"right", "on", "grant", "role:Editors", "view:V", "pages", "see", "1"},
                                    {"objright", "grant", "role:Editors", "3", "17", "docs", "read", "1"},
                                    {"setting", "set", "Colour", "blue", "--genre", "G"}};

const std::vector<GivenCase>& GivenCases()
{
    static const std::vector<GivenCase> cases = {
        {{"user", "set", "amy", "--title", "Head"}, "qv_User", {"Col_o_JobTitle"}},
        {{"user", "rename", "amy", "AMY"}, "qv_User", {"Col_LoginName"}},
        {{"user", "lock", "amy"}, "qv_User", {"Col_Disabled"}},
        {{"user", "password", "set", "amy", "--password-file", "password"}, "qv_User", {"Col_PWord", "Col_EnType"}},
        {{"user", "import", "people.csv", "--update"}, "qv_User", {"Col_o_JobTitle"}},
        {{"group", "set", "/V/A", "--description", "x"}, "qv_Group", {"Col_Description"}},
        {{"group", "rename", "/V/A", "a"}, "qv_Group", {"Col_Name"}},
        {{"group", "style", "id:1", "3"}, "qv_Group", {"Col_Style"}},
        {{"view", "set", "V", "--sort-index", "3"}, "qv_View", {"Col_ItemIndex"}},
        {{"view", "rename", "view:1", "W"}, "qv_View", {"Col_Name"}},
        {{"role", "set", "Editors", "--description", "x"}, "qv_Role", {"Col_Description"}},
        {{"role", "set", "id:1", "--name", "Readers"}, "qv_Role", {"Col_Name"}},
        {{"plan", "set", "Nightly", "--description", "x"}, "Tab_Doc_Backup_Plan", {"Col_Desc"}},
        {{"docroot", "set", "D", "--path", "/e"}, "Tab_Doc_Root", {"Col_DataPath"}},
        {{"folder", "rename", "id:1", "b"}, "Tab_Doc_VFolder", {"Col_Name"}},
        {{"folder", "style", "id:1", "3"}, "Tab_Doc_VFolder", {"Col_Style"}},
        {{"addin", "set", "Chess", "--description", "x"}, "kel_AddIn", {"Col_Desc"}},
        {{"right", "set", "role:id:1", "pages", "see", "5"}, "qv_ItemAce", {"Col_Power"}},
        {{"right", "on", "set", "role:id:1", "view:id:1", "pages", "see", "5"}, "qv_BIIAce", {"Col_Power"}},
        {{"right", "on", "set", "role:id:1", "view:id:1", "pages", "see", "6", "--unpower", "7"},
         "qv_BIIAce",
         {"Col_Power", "Col_UnPower"}},
        {{"objright", "set", "1", "5"}, "Tab_BIOAce", {"Col_Power"}},
        {{"setting", "set", "Colour", "red", "--genre", "G"}, "Tab_Config", {"Col_Data"}},
    };
    return cases;
}

bool IsSameName(const std::string& a, const std::string& b)
{
    return std::ranges::equal(
        a, b, {}, [](char ch) { return std::tolower(ch); }, [](char ch) { return std::tolower(ch); });
}

/// Every column of the case's table that its command may not write.
std::vector<std::string> OthersOf(const GivenCase& wanted)
{
    const std::vector<schema::Table> tables = schema::TablesOf(schema::sqlite::TheDialect());
    const auto table =
        std::ranges::find_if(tables, [&](const schema::Table& each) { return IsSameName(each.name, wanted.table); });
    std::vector<std::string> names;
    for (const schema::Column& column : table->columns) {
        const auto isColumn = [&](const std::string& name) { return IsSameName(name, column.name); };
        if (!column.isComputed && std::ranges::none_of(wanted.columns, isColumn)) {
            names.push_back(column.name);
        }
    }
    return names;
}

TEST(GivenColumns, AreAllThatIsWritten)
{
    Consoles consoles(EngineCalled("sqlite"), QVADMIN_PROGRAM);
    consoles.Folder().WriteFile("people.csv", "login,title\namy,Boss\n");
    consoles.Folder().WriteFile("password", "secret\n");
    for (const Words& words : kBefore) {
        ASSERT_EQ(consoles.Run(words).exit, 0) << words.front();
    }
    for (const GivenCase& each : GivenCases()) {
        SCOPED_TRACE(testing::PrintToString(each.command));
        for (const std::string& name : OthersOf(each)) {
            const std::string statement = "CREATE TRIGGER t_" + name + " BEFORE UPDATE OF " + name + " ON " +
                                          each.table + " BEGIN SELECT RAISE(ABORT, 'writes " + name + "'); END";
            consoles.Connection().Execute(statement.c_str());
        }
        const std::string before = consoles.Dump();
        const ChildResult result = consoles.Run(each.command);
        EXPECT_EQ(result.exit, 0) << result.err;
        EXPECT_NE(consoles.Dump(), before);
        for (const std::string& name : OthersOf(each)) {
            consoles.Connection().Execute(("DROP TRIGGER t_" + name).c_str());
        }
    }
}

} // namespace
