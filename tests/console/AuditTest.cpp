#include "ConsoleOnEngine.h"
#include "management/audit/AuditedRow.h"
#include "management/audit/Recorder.h"
#include "schema/Schema.h"

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using nlohmann::json;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

// The record of changes, and undoing them.

namespace {

class AuditOn : public ConsoleOnEngine {
protected:
    /// Amy is in a group with a title, and has a role, a right and a password.
    void SetUp() override
    {
        ConsoleOnEngine::SetUp();
        Done({"view", "create", "Main"});
        Done({"group", "create", "/Main/Sales"});
        Done({"group", "create", "/Main/Sales/North"});
        Done({"user", "create", "amy", "--name", "Amy O'Porter", "--note", R"(a\b 'c' 100% 😀)", "--birthday",
              "1989-11-28"});
        Done({"member", "add", "/Main/Sales/North", "amy"});
        Done({"title", "give", "/Main/Sales/North", "amy", "Lead"});
        Done({"role", "create", "Editors"});
        Done({"role", "add", "Editors", "amy"});
        Done({"right", "grant", "user:amy", "mail", "send", "1"});
    }

    void ExpectRefusal(const std::vector<std::string>& words, const std::string& sentence)
    {
        const std::string before = Dump();
        const ChildResult result = Run(words);
        EXPECT_EQ(result.exit, 4) << testing::PrintToString(words) << "\n" << result.out << result.err;
        EXPECT_THAT(result.err, HasSubstr(sentence));
        EXPECT_EQ(Dump(), before);
    }

    /// The number of the latest entry.
    std::string Latest() { return LatestEntry().at("id").dump(); }

    /// Everything that the record holds.
    std::string Record()
    {
        CAConnect conn;
        conn.Open(m_options.environment["QVADMIN_DB"].c_str());
        std::string text;
        for (const char* table : {"qv_AuditEntry", "qv_AuditRow"}) {
            CARecordset rows;
            for (rows.Open((std::string("SELECT * FROM ") + table).c_str(), &conn, adbcCursorStatic, adbcLockOptimistic,
                           adbcCommandTable);
                 rows.IsEOF() == 0; rows.MoveNext()) {
                for (long column = 1; column <= rows.GetColumnCount(); ++column) {
                    text += std::string(rows.GetValueToStr(column, true).View()) + "|";
                }
            }
        }
        return text;
    }
};

TEST_P(AuditOn, TellsWhoDidWhatWhenAndWhyWithEveryValueBeforeAndAfter)
{
    Done({"user", "set", "amy", "--note", "it's new", "--reason", "she asked for it"});
    const json entry = LatestEntry();
    EXPECT_EQ(entry.at("command"), "user set amy --note 'it'\\''s new'");
    EXPECT_EQ(entry.at("reason"), "she asked for it");
    EXPECT_EQ(entry.at("front_end"), "qvadmin");
    EXPECT_NE(entry.at("who"), "");
    EXPECT_EQ(entry.at("rows"), 1);
    EXPECT_EQ(entry.at("time").get<std::string>().size(), std::string("2026-05-07T09:03:00Z").size());
    const json shown = json::parse(Done({"audit", "show", entry.at("id").dump(), "-o", "json"}));
    ASSERT_EQ(shown.at("changes").size(), 1U);
    const json& change = shown.at("changes").front();
    EXPECT_EQ(change.at("change"), "changed");
    EXPECT_EQ(change.at("column"), "Col_Note");
    EXPECT_EQ(change.at("before"), R"(a\b 'c' 100% 😀)");
    EXPECT_EQ(change.at("after"), "it's new");
}

TEST_P(AuditOn, AnUndoIsAnEntryThatCanBeUndone)
{
    const std::string before = Dump();
    Done({"user", "set", "amy", "--note", "", "--mobile", "1", "--birthday", ""});
    const std::string changed = Dump();
    const std::string first = Latest();
    Done({"audit", "undo", first, "--yes", "--reason", "wrong person"});
    EXPECT_EQ(Dump(), before);
    const json undo = LatestEntry();
    EXPECT_EQ(undo.at("undoes"), first);
    EXPECT_EQ(undo.at("reason"), "wrong person");
    ExpectRefusal({"audit", "undo", first, "--yes"}, "was undone already, by " + undo.at("id").dump());
    const ChildResult word = Run({"audit", "undo", "x", first, "--yes"});
    EXPECT_EQ(word.exit, 2);
    EXPECT_EQ(word.err, "qvadmin: ID 'x' is not a whole number from 1 to 2147483647\n");
    Done({"audit", "undo", undo.at("id").dump(), "--yes"});
    EXPECT_EQ(Dump(), changed);
    Done({"audit", "undo", first, "--yes"});
    EXPECT_EQ(Dump(), before);
    EXPECT_EQ(Run({"audit", "verify"}).exit, 0);
}

TEST_P(AuditOn, WhoWasDeletedComesBackWithIdAndAllLinks)
{
    const std::string before = Dump();
    Done({"user", "delete", "amy", "--yes"});
    Done({"user", "create", "clara"});
    Done({"user", "delete", "clara", "--yes"});
    const json entries = json::parse(Done({"audit", "list", "--noun", "user", "-o", "json"}));
    Done({"audit", "undo", entries.at(2).at("id").dump(), "--yes"});
    EXPECT_EQ(Dump(), before);
}

TEST_P(AuditOn, ANounThatNoCommandOfTheRecordBeginsWithIsRefused)
{
    for (const char* none : {"usr", "export", "users", ""}) {
        const ChildResult result = Run({"audit", "list", "--noun", none});
        EXPECT_EQ(result.exit, 2);
        EXPECT_THAT(result.err, AllOf(HasSubstr(std::string("--noun '") + none + "' is not one of user, group, view, "),
                                      HasSubstr(", import\n")));
    }
    for (const char* noun : {"import", "audit", "db", "console"}) {
        EXPECT_EQ(Run({"audit", "list", "--noun", noun}).exit, 0);
    }
}

TEST_P(AuditOn, SeveralEntriesAreUndoneFromTheLatestOnOrNotAtAll)
{
    const std::string before = Dump();
    Done({"user", "set", "amy", "--note", "1"});
    const std::string first = Latest();
    Done({"user", "set", "amy", "--note", "2"});
    const std::string second = Latest();
    Done({"audit", "undo", first, second, "--yes"});
    EXPECT_EQ(Dump(), before);
    EXPECT_EQ(LatestEntry().at("undoes"), second + " " + first);
}

TEST_P(AuditOn, ALaterChangeStandsInTheWayAndIsNamed)
{
    Done({"user", "set", "amy", "--note", "1", "--mobile", "5"});
    const std::string first = Latest();
    Done({"user", "set", "amy", "--note", "2"});
    ExpectRefusal({"audit", "undo", first, "--yes"}, first + " cannot be undone: user amy (id 1) was changed");
    ExpectRefusal({"audit", "undo", first, "--yes"}, "was changed later, by " + Latest() + " (user set amy --note 2;");
    Done({"audit", "undo", Latest(), "--yes"});
    Done({"audit", "undo", first, "--yes"});
    Execute("UPDATE qv_User SET Col_Mobile = '7' WHERE Col_LoginName = 'amy'");
    ExpectRefusal({"audit", "undo", Latest(), "--yes"}, "was changed later, by another program");
}

TEST_P(AuditOn, AnotherColumnOfTheRowDoesNotStandInTheWay)
{
    Done({"user", "lock", "amy"});
    const std::string lock = Latest();
    Done({"user", "set", "amy", "--note", "kept"});
    Done({"audit", "undo", lock, "--yes"});
    EXPECT_THAT(Done({"user", "show", "amy", "-o", "json"}), AllOf(HasSubstr(R"("locked": false)"), HasSubstr("kept")));
}

TEST_P(AuditOn, WhatOthersReferToIsNotTakenAway)
{
    Done({"user", "create", "rory"});
    const std::string created = Latest();
    Done({"member", "add", "/Main/Sales", "rory"});
    ExpectRefusal({"audit", "undo", created, "--yes"}, "user rory (id 2) is in use by now, with 1 relation; nothing");
    Done({"role", "create", "Authors"});
    const std::string role = Latest();
    Done({"role", "add", "Authors", "rory"});
    ExpectRefusal({"audit", "undo", role, "--yes"}, "role Authors (id 2) is in use by now, with 1 relation");
}

TEST_P(AuditOn, WhatIsGoneMeanwhileIsNotReferredTo)
{
    Done({"member", "remove", "/Main/Sales/North", "amy"});
    const std::string removed = Latest();
    Done({"group", "delete", "/Main/Sales/North", "--yes"});
    ExpectRefusal({"audit", "undo", removed, "--yes"}, "which is gone; undo its deletion first. Nothing was undone");
}

TEST_P(AuditOn, ANameIsNotGivenTwice)
{
    Done({"user", "delete", "amy", "--yes"});
    const std::string deleted = Latest();
    Done({"user", "create", "AMY"});
    ExpectRefusal({"audit", "undo", deleted, "--yes"}, "there is another user amy by now");
    Done({"group", "rename", "/Main/Sales/North", "South"});
    const std::string renamed = Latest();
    Done({"group", "create", "/Main/Sales/north"});
    ExpectRefusal({"audit", "undo", renamed, "--yes"}, "there would be two groups /Main/Sales/");
}

TEST_P(AuditOn, GroupsDoNotBecomeACycle)
{
    Done({"group", "create", "/Main/Other"});
    Done({"group", "move", "/Main/Sales/North", "/Main/Other"});
    const std::string moved = Latest();
    Done({"group", "move", "/Main/Sales", "/Main/Other/North"});
    ExpectRefusal({"audit", "undo", moved, "--yes"}, "the groups would form a cycle: ");
}

TEST_P(AuditOn, SecretsAreNeverRecorded)
{
    WriteSecretFile("password", "s3cret pass");
    WriteSecretFile("key", "k3y-of-all");
    Done({"user", "password", "set", "amy", "--password-file", Path("password")});
    const std::string password = Latest();
    EXPECT_THAT(Done({"audit", "show", password}), AllOf(HasSubstr("Col_PWord"), HasSubstr("(not recorded)")));
    ExpectRefusal({"audit", "undo", password, "--yes"},
                  "it changed the password of user amy (id 1), which is never recorded");
    CAConnect conn;
    conn.Open(m_options.environment["QVADMIN_DB"].c_str());
    CARecordset stored;
    stored.Open("SELECT Col_PWord FROM qv_User WHERE Col_LoginName = 'amy'", &conn, adbcCursorStatic,
                adbcLockOptimistic, adbcCommandTable);
    const std::string digest(stored.GetValueToStr(1, true).View());
    stored.Close();
    ASSERT_GT(digest.size(), 10U);
    Done({"setting", "encryption-key", "set", "--key-file", Path("key")});
    Done({"user", "delete", "amy", "--yes"});
    const std::string deleted = Latest();
    const ChildResult undone = Run({"audit", "undo", deleted, "--yes"});
    EXPECT_EQ(undone.exit, 0) << undone.err;
    EXPECT_THAT(undone.err, HasSubstr("user amy (id 1) has no password now"));
    EXPECT_THAT(Record(), AllOf(Not(HasSubstr("s3cret")), Not(HasSubstr(digest)), Not(HasSubstr("k3y-of-all"))));
}

TEST_P(AuditOn, ATextThatReadsLikeTheMarkOfASecretIsNone)
{
    const std::string before = Dump();
    Done({"user", "set", "amy", "--note", "(not recorded)"});
    Done({"audit", "undo", Latest(), "--yes"});
    EXPECT_EQ(Dump(), before);
}

TEST_P(AuditOn, WhatChangesNothingLeavesNoEntry)
{
    const std::string before = Latest();
    Done({"user", "unlock", "amy"});
    EXPECT_EQ(Run({"user", "lock", "amy", "--dry-run"}).exit, 8);
    EXPECT_EQ(Run({"user", "create", "amy"}).exit, 4);
    EXPECT_EQ(Run({"user", "delete", "nobody", "--yes"}).exit, 3);
    EXPECT_EQ(Latest(), before);
}

TEST_P(AuditOn, OneThingHasItsHistory)
{
    Done({"user", "lock", "amy", "--reason", "left"});
    const std::string history = Done({"user", "history", "amy", "-o", "csv"});
    EXPECT_THAT(history, AllOf(HasSubstr("Col_Disabled,0,1"), HasSubstr("left"),
                               HasSubstr("added,link of group /Main/Sales/North (id 2) and user amy (id 1)"),
                               HasSubstr("added,title Lead of "), HasSubstr("added,user amy (id 1)")));
    EXPECT_THAT(Done({"group", "history", "/Main/Sales/North"}), HasSubstr("Lead"));
    EXPECT_THAT(Done({"role", "history", "Editors"}), HasSubstr("role add Editors amy"));
    Done({"console", "set", "amy", "help-desk"});
    Done({"console", "set", "amy", "read-only"});
    Done({"objright", "grant", "user:amy", "3", "17", "docs", "read", "1"});
    Done({"objright", "set", "1", "5"});
    Done({"console", "remove", "amy"});
    EXPECT_THAT(Done({"user", "history", "amy", "-o", "csv"}),
                AllOf(HasSubstr("removed,web console account (id 1) of user amy (id 1)"),
                      HasSubstr("changed,web console account (id 1),Col_Level,help-desk,read-only"),
                      HasSubstr("added,web console account (id 1) of user amy (id 1)"),
                      HasSubstr("changed,object right (id 1),Col_Power,1,5")));
    Done({"user", "delete", "amy", "--yes"});
    EXPECT_THAT(Done({"audit", "list", "--item", "user:id:1"}), HasSubstr("user delete amy"));
    EXPECT_THAT(Done({"audit", "list", "--item", "role:Editors"}), Not(HasSubstr("user lock amy")));
}

TEST_P(AuditOn, AFilterLeavesTheRestOut)
{
    EXPECT_EQ(json::parse(Done({"audit", "list", "--noun", "group", "-o", "json"})).size(), 2U);
    EXPECT_EQ(json::parse(Done({"audit", "list", "--limit", "3", "-o", "json"})).size(), 3U);
    EXPECT_EQ(json::parse(Done({"audit", "list", "--since", "2999-01-01", "-o", "json"})).size(), 0U);
    EXPECT_EQ(json::parse(Done({"audit", "list", "--before", "2020-01-01 00:00:00", "-o", "json"})).size(), 0U);
    EXPECT_EQ(json::parse(Done({"audit", "list", "--who", "nobody at all", "-o", "json"})).size(), 0U);
    EXPECT_EQ(Run({"audit", "list", "--since", "soon"}).exit, 2);
    EXPECT_EQ(Run({"audit", "show", "999999"}).exit, 3);
}

TEST_P(AuditOn, AnAlteredRecordIsFound)
{
    const json sound = json::parse(Done({"audit", "verify", "-o", "json"}));
    EXPECT_EQ(sound.at("entries"), 9);
    EXPECT_EQ(sound.at("first_altered"), nullptr);
    Execute("UPDATE qv_AuditRow SET Col_After = '{}' WHERE Col_EntryID = 4");
    const ChildResult altered = Run({"audit", "verify"});
    EXPECT_EQ(altered.exit, 4);
    EXPECT_THAT(altered.err, HasSubstr("the record was altered: entry 4 is not as it was written"));
}

TEST_P(AuditOn, AnEntryTakenOutIsFound)
{
    Execute("DELETE FROM qv_AuditEntry WHERE Col_ID = 4");
    EXPECT_THAT(Run({"audit", "verify"}).err, HasSubstr("the record was altered: entry 5"));
}

TEST_P(AuditOn, AWideGapBetweenEntriesIsWalkedOver)
{
    Execute("UPDATE qv_AuditRow SET Col_EntryID = 2147483647 WHERE Col_EntryID = 9");
    Execute("UPDATE qv_AuditEntry SET Col_ID = 2147483647 WHERE Col_ID = 9");
    EXPECT_EQ(json::parse(Done({"audit", "verify", "-o", "json"})).at("entries"), 9);
    Execute("UPDATE qv_AuditRow SET Col_After = '{}' WHERE Col_EntryID = 2147483647");
    EXPECT_THAT(Run({"audit", "verify"}).err, HasSubstr("the record was altered: entry 2147483647"));
}

TEST_P(AuditOn, OldEntriesCanBeDeletedWhichIsRecordedAndLeavesTheRestSound)
{
    EXPECT_EQ(Run({"audit", "prune", "2000-01-01", "--yes"}).exit, 0);
    EXPECT_EQ(json::parse(Done({"audit", "list", "-o", "json"})).size(), 9U);
    Done({"audit", "prune", "2999-01-01", "--yes", "--reason", "ten years are over"});
    const json left = json::parse(Done({"audit", "list", "-o", "json"}));
    ASSERT_EQ(left.size(), 1U);
    EXPECT_EQ(left.front().at("command"), "audit prune 2999-01-01");
    EXPECT_EQ(Run({"audit", "verify"}).exit, 0);
    const ChildResult undo = Run({"audit", "undo", left.front().at("id").dump(), "--yes"});
    EXPECT_EQ(undo.exit, 4);
    EXPECT_THAT(undo.err, HasSubstr("cannot be undone: the record has no row that it changed; nothing was undone"));
    Done({"user", "lock", "amy"});
    EXPECT_EQ(Run({"audit", "verify"}).exit, 0);
}

TEST_P(AuditOn, ARowThatIsAddedAndChangedInOneTransactionIsRecordedAsItIsAtItsEnd)
{
    const std::string before = Dump();
    CAConnect conn;
    conn.Open(m_options.environment["QVADMIN_DB"].c_str());
    conn.BeginTrans();
    management::audit::Recorder recorder(conn);
    std::vector<std::string> ids;
    for (const char* login : {"kept", "named", "gone"}) {
        conn.Execute(
            fmt::format("INSERT INTO qv_User (Col_LoginName, Col_Sex, Col_Note) VALUES ('{}', 1, 'first')", login)
                .c_str());
        ids.push_back(std::to_string(schema::LastInsertedId(conn)));
    }
    conn.Execute(("UPDATE qv_User SET Col_Birthday = NULL, Col_Note = 'second' WHERE Col_ID IN (" + ids[0] + ", " +
                  ids[1] + ", " + ids[2] + ")")
                     .c_str());
    conn.Execute(("UPDATE qv_User SET Col_EMail = 'both' WHERE Col_ID IN (" + ids[0] + ", 1)").c_str());
    conn.Execute(("UPDATE qv_User SET Col_LoginName = 'renamed', Col_Sex = 2 WHERE Col_ID = " + ids[1]).c_str());
    conn.Execute(("DELETE FROM qv_User WHERE Col_ID = " + ids[2]).c_str());
    ASSERT_GT(recorder.Write({"who", "test", "command", ""}), 0);
    conn.CommitTrans();

    const std::string entry = Done({"audit", "show", Latest(), "-o", "json"});
    EXPECT_THAT(entry, AllOf(HasSubstr("kept"), HasSubstr("second"), HasSubstr("renamed"), HasSubstr("both")));
    EXPECT_THAT(entry, AllOf(Not(HasSubstr("first")), Not(HasSubstr("gone")), Not(HasSubstr("\"named\""))));
    EXPECT_EQ(LatestEntry().at("rows"), 3); // amy's among them
    Done({"audit", "undo", Latest(), "--yes"});
    EXPECT_EQ(Dump(), before);
    EXPECT_EQ(Run({"audit", "verify"}).exit, 0);
}

TEST_P(AuditOn, ARowOfAnotherProgramThatIsChangedUnseenIsRefused)
{
    CAConnect conn;
    conn.Open(m_options.environment["QVADMIN_DB"].c_str());
    conn.BeginTrans();
    management::audit::Recorder recorder(conn);
    conn.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('ours')");
    dbaccess::StatementObserver* const observer = conn.SetObserver(nullptr);
    conn.Execute("INSERT INTO qv_User (Col_LoginName) VALUES ('theirs')");
    const std::string theirs = std::to_string(schema::LastInsertedId(conn));
    conn.SetObserver(observer);
    conn.Execute(("UPDATE qv_User SET Col_Note = 'changed' WHERE Col_ID = " + theirs).c_str());
    EXPECT_ANY_THROW(recorder.Write({"who", "test", "command", ""}));
    conn.RollbackTrans();
}

INSTANTIATE_TEST_SUITE_P(Engines, AuditOn, Engines(), EngineName);

TEST(AuditedTables, AreAllThatADirectoryHas)
{
    for (const schema::TableColumns& table : schema::Tables()) {
        const bool isOwn = table.name.starts_with("qv_Audit");
        EXPECT_EQ(management::audit::FindAuditedTable(table.name) == nullptr, isOwn) << table.name;
    }
}

TEST(AuditedRows, ArePackedAndUnpackedByteForByte)
{
    using management::audit::AuditedRow;
    const AuditedRow row = {
        {"Col_ID", "7"}, {"Col_Name", "it's \"\\\n😀"}, {"Col_Note", std::nullopt}, {"Col_x", "\xFF\x80"}};
    EXPECT_EQ(management::audit::Unpacked(management::audit::Packed(row)), row);
    EXPECT_THAT(management::audit::Packed(row), testing::StartsWith(R"({"Col_ID":"7","Col_Name":"it's \"\\\n😀",)"));
    EXPECT_EQ(management::audit::Packed({{"Col_Name", ""}}), "{}");
    EXPECT_ANY_THROW(management::audit::Unpacked("{"));
}

} // namespace
