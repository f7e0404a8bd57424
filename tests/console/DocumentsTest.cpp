#include "management/documents/Documents.h"

#include "ConsoleFixture.h"
#include "RefusalOf.h"
#include "console/ExitCode.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "schema/Schema.h"
#include "tests/support/HardText.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>

using namespace console;
using namespace management;
using nlohmann::json;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace {

DocKey Root(int id) { return {DocKind::root, id}; }

DocKey Folder(int id) { return {DocKind::folder, id}; }

class DocumentsTest : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open("sqlite::memory:");
        schema::Upgrade(m_conn);
    }

    int MakeRoot(const std::string& name, int type = 0)
    {
        RootData root;
        root.name = name;
        root.path = "/" + name;
        root.type = type;
        return m_documents.CreateRoot(root);
    }

    int MakeFolder(DocKey parent, const std::string& name)
    {
        FolderData folder;
        folder.name = name;
        return m_documents.CreateFolder(parent, folder).id;
    }

    void Execute(const std::string& sql) { m_conn.Execute(sql.c_str()); }

    CAConnect m_conn;
    Documents m_documents{m_conn};
};

/// For the commands of both nouns.
class DocumentCommandsTest : public ConsoleFixture {
protected:
    void SetUp() override
    {
        ConsoleFixture::SetUp();
        Init();
    }

    void MakeRoot(const std::string& name) { Done({"docroot", "create", name, "--path", "/srv"}); }

    void MakeFolder(const std::string& path) { Done({"folder", "create", path, "--parents"}); }

    json ShownRoot(const std::string& root) { return json::parse(Done({"docroot", "show", root, "-o", "json"})); }

    json ShownFolder(const std::string& folder) { return json::parse(Done({"folder", "show", folder, "-o", "json"})); }

    std::string Tree(const std::vector<std::string>& more = {})
    {
        std::vector<std::string> words = {"folder", "tree"};
        words.insert(words.end(), more.begin(), more.end());
        return Done(words);
    }

    int Count(const std::string& fromWhere)
    {
        CAConnect conn;
        conn.Open(CString(std::string_view(DatabaseUrl())));
        CARecordset rows;
        rows.Open(("SELECT COUNT(*) FROM " + fromWhere).c_str(), &conn, adbcCursorStatic, adbcLockOptimistic,
                  adbcCommandTable);
        int count = -1;
        rows.GetValue(1, count);
        return count;
    }

    int CountLinks() { return Count("Tab_Doc_Root_Link") + Count("Tab_Doc_VFolder_Link"); }

    void LinkUnder(int parent, int folder)
    {
        Execute(fmt::format(
            "INSERT INTO Tab_Doc_VFolder_Link (Col_P_ObjID, Col_S_ClassID, Col_S_ObjID) VALUES ({}, 105, {})", parent,
            folder));
    }
};

using DocRootCommandsTest = DocumentCommandsTest;
using FolderCommandsTest = DocumentCommandsTest;

} // namespace

// ---- The facade -----------------------------------------------------------------------------------------------------

TEST_F(DocumentsTest, AnyTextGoesInAndComesOutAsItIs)
{
    RootData root;
    root.name = root.description = root.path = root.displayName = kHard;
    root.id = m_documents.CreateRoot(root);
    RootData read = m_documents.LoadRoot(root.id).value();
    EXPECT_TRUE(read.created.has_value());
    read.created.reset();
    EXPECT_EQ(read, root);
    root.path = "C:\\it's\\";
    RootChanges changes;
    changes.path = root.path;
    m_documents.ChangeRoot(root.id, changes);
    EXPECT_EQ(m_documents.LoadRoot(root.id).value().path, root.path);
    changes.name = changes.description = changes.displayName = "it's \\'";
    m_documents.ChangeRoot(root.id, changes);
    root.name = root.description = root.displayName = "it's \\'";
    read = m_documents.LoadRoot(root.id).value();
    read.created.reset();
    EXPECT_EQ(read, root);

    FolderData folder;
    folder.name = folder.creator = kHard;
    const int id = m_documents.CreateFolder(Root(root.id), folder).id;
    EXPECT_EQ(m_documents.LoadFolder(id).value().name, kHard);
    EXPECT_EQ(m_documents.LoadFolder(id).value().creator, kHard);
    m_documents.RenameFolder(id, kHard, "\\'");
    EXPECT_EQ(m_documents.LoadFolder(id).value().name, "\\'");
}

TEST_F(DocumentsTest, OnTheEngineThatEscapesByBackslashesTheModuleDoublesThoseOfANewPathAndNobodyElse)
{
    // This engine stores what that one would have read as single ones.
    m_conn.m_nDBType = 6;
    RootData root;
    root.name = "a\\b";
    root.path = "c\\'d";
    root.id = m_documents.CreateRoot(root);
    EXPECT_EQ(m_documents.LoadRoot(root.id).value().path, "c\\\\'d");
    EXPECT_EQ(m_documents.LoadRoot(root.id).value().name, "a\\b");
    RootChanges changes;
    changes.path = root.path;
    m_documents.ChangeRoot(root.id, changes);
    EXPECT_EQ(m_documents.LoadRoot(root.id).value().path, "c\\'d");
}

TEST_F(DocumentsTest, NumbersOf32BitsComeThrough)
{
    RootData root;
    root.name = root.path = "a";
    root.style = 4294967295UL;
    root.maxSize = -7;
    const int id = m_documents.CreateRoot(root);
    EXPECT_EQ(m_documents.LoadRoot(id).value().style, 4294967295UL);
    EXPECT_EQ(m_documents.LoadRoot(id).value().maxSize, -7);
    FolderData folder;
    folder.name = "f";
    folder.style = 4294967294UL;
    EXPECT_EQ(m_documents.LoadFolder(m_documents.CreateFolder(Root(id), folder).id).value().style, 4294967294UL);
}

TEST_F(DocumentsTest, ANewFolderIsNotMistakenForOneThatHangsNowhereOrElsewhere)
{
    const int root = MakeRoot("Main");
    Execute("INSERT INTO Tab_Doc_VFolder (Col_ID, Col_Name) VALUES (50, 'same')");
    EXPECT_EQ(MakeFolder(Root(root), "same"), 51);
    EXPECT_EQ(MakeFolder(Folder(51), "same"), 52);
    EXPECT_EQ(FolderTree(m_conn).PathOf(Folder(52)), "/Main/same/same");
    // What another program adds at the same moment.
    Execute("CREATE TRIGGER twice AFTER INSERT ON Tab_Doc_VFolder WHEN (SELECT COUNT(*) FROM Tab_Doc_VFolder) < 5 "
            "BEGIN INSERT INTO Tab_Doc_VFolder (Col_Name) VALUES (NEW.Col_Name); END");
    EXPECT_EQ(MakeFolder(Root(root), "both"), 53);
}

TEST_F(DocumentsTest, LinksOfADeletedFolderAreNotThoseOfANewOneOfItsId)
{
    const int root = MakeRoot("Main");
    const int a = MakeFolder(Root(root), "A");
    Execute("INSERT INTO Tab_Doc_Root_Link (Col_P_ObjID, Col_S_ClassID, Col_S_ObjID) VALUES (1, 105, 2), (9, 105, 2), "
            "(1, 7, 2), (1, 105, 3)");
    Execute("INSERT INTO Tab_Doc_VFolder_Link (Col_P_ObjID, Col_S_ClassID, Col_S_ObjID) VALUES (1, 105, 2), (1, 7, 2)");
    FolderData folder;
    folder.name = "B";
    const NewFolder made = m_documents.CreateFolder(Folder(a), folder);
    EXPECT_EQ(made.id, 2);
    EXPECT_EQ(made.removedLinks, 3);
    const FolderTree catalogue(m_conn);
    EXPECT_EQ(catalogue.PathOf(Folder(2)), "/Main/A/B");
    EXPECT_THAT(catalogue.Find(Folder(2))->parents, testing::SizeIs(1));
    EXPECT_EQ(catalogue.Find(Root(root))->others, 1);
    EXPECT_EQ(catalogue.Find(Folder(a))->others, 1);
    EXPECT_EQ(m_documents.CountRootLinks(root), 3);
    folder.name = "C";
    EXPECT_EQ(m_documents.CreateFolder(Folder(a), folder).removedLinks, 1);
    folder.name = "D";
    EXPECT_EQ(m_documents.CreateFolder(Folder(a), folder).removedLinks, 0);
}

TEST_F(DocumentsTest, AFolderWhoseNameIsNotKeptIsNotBlamedOnAnotherProgram)
{
    const int root = MakeRoot("Main");
    Execute("CREATE TRIGGER cut AFTER INSERT ON Tab_Doc_VFolder BEGIN UPDATE Tab_Doc_VFolder SET Col_Name = "
            "substr(Col_Name, 1, 3) WHERE Col_ID = NEW.Col_ID; END");
    EXPECT_EQ(CodeOf([&] { MakeFolder(Root(root), "longer"); }), Exit::database);
    EXPECT_EQ(MakeFolder(Root(root), "abc"), 2);
}

TEST_F(DocumentsTest, ALinkHasWhatIsShownOfTheFolder)
{
    const int root = MakeRoot("Main");
    FolderData folder;
    folder.name = "A";
    folder.style = 3;
    folder.creatorId = 7;
    folder.creator = "Amy";
    const int a = m_documents.CreateFolder(Root(root), folder).id;
    const int b = m_documents.CreateFolder(Folder(a), folder).id;
    for (const auto& [table, child] : {std::pair("Tab_Doc_Root_Link", a), std::pair("Tab_Doc_VFolder_Link", b)}) {
        CARecordset link;
        link.Open(fmt::format("SELECT COUNT(*) FROM {} WHERE Col_DispName = 'A' AND Col_Style = 3 AND Col_S_ClassID = "
                              "105 AND Col_S_ObjID = {} AND Col_Creator_ID = 7 AND Col_Creator_Name = 'Amy'",
                              table, child)
                      .c_str(),
                  &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable);
        int count = 0;
        link.GetValue(1, count);
        EXPECT_EQ(count, 1) << table;
    }
}

TEST_F(DocumentsTest, RenamingAndRestylingReachLinksThatShowTheOldOnesAndNoOthers)
{
    const int root = MakeRoot("Main");
    const int a = MakeFolder(Root(root), "A");
    Execute("INSERT INTO Tab_Doc_Root_Link (Col_DispName, Col_Style, Col_P_ObjID, Col_S_ClassID, Col_S_ObjID) VALUES "
            "('Own', 9, 2, 105, 1), ('A', 0, 2, 7, 1)");
    m_documents.RenameFolder(a, "A", "B");
    m_documents.SetFolderStyle(a, 0, 4294967295UL);
    std::string links;
    CARecordset rows;
    rows.Open("SELECT Col_DispName, Col_Style FROM Tab_Doc_Root_Link ORDER BY Col_ID", &m_conn, adbcCursorStatic,
              adbcLockOptimistic, adbcCommandTable);
    for (; rows.IsEOF() == 0; rows.MoveNext()) {
        int style = 0;
        rows.GetValue(2, style);
        links += fmt::format("{} {}, ", rows.GetValueToStr(1, true).View(), style);
    }
    EXPECT_EQ(links, "B -1, Own 9, A 0, ");
}

TEST_F(DocumentsTest, WhatIsGoneWithAFolderIsWhatHangsNowhereElse)
{
    const int root = MakeRoot("Main");
    const DocKey a = Folder(MakeFolder(Root(root), "A"));
    const DocKey b = Folder(MakeFolder(a, "B"));
    const DocKey c = Folder(MakeFolder(b, "C"));
    const DocKey shared = Folder(MakeFolder(b, "S"));
    const DocKey below = Folder(MakeFolder(shared, "T"));
    m_documents.AddLink({Root(root), shared}, {});
    const FolderTree catalogue(m_conn);
    EXPECT_THAT(catalogue.OrphanedBy(a), ElementsAre(a, b, c));
    EXPECT_THAT(catalogue.OrphanedBy(Root(root)), ElementsAre(Root(root), a, b, c, shared, below));
    EXPECT_EQ(catalogue.CountLinks(catalogue.OrphanedBy(a)), 4U);
    EXPECT_TRUE(catalogue.HangsWithout({b, shared}));
    EXPECT_FALSE(catalogue.HangsWithout({Root(root), a}));
    m_documents.Delete(catalogue.OrphanedBy(a));
    const FolderTree left(m_conn);
    EXPECT_EQ(left.PathOf(below), "/Main/S/T");
    EXPECT_EQ(left.Find(a), nullptr);
    EXPECT_EQ(left.Nodes().size(), 3U);
}

TEST_F(DocumentsTest, LinksWithoutAnEndAndCyclesDisturbNobody)
{
    const int root = MakeRoot("Main");
    const int a = MakeFolder(Root(root), "A");
    const int b = MakeFolder(Folder(a), "B");
    Execute(fmt::format("INSERT INTO Tab_Doc_VFolder_Link (Col_P_ObjID, Col_S_ClassID, Col_S_ObjID) VALUES ({1}, 105, "
                        "{0}), ({1}, 105, {0}), (99, 105, {0}), ({0}, 105, 98), ({0}, 3, {1})",
                        a, b));
    const FolderTree catalogue(m_conn);
    EXPECT_THAT(catalogue.Find(Folder(a))->children, testing::SizeIs(1));
    EXPECT_THAT(catalogue.Find(Folder(a))->parents, testing::SizeIs(2));
    EXPECT_EQ(catalogue.Find(Folder(a))->others, 1);
    EXPECT_EQ(catalogue.CycleText(catalogue.CycleClosedBy({Folder(b), Folder(a)})), "/Main/A -> /Main/A/B -> /Main/A");
    EXPECT_EQ(catalogue.CountLinks({Folder(a)}), 7U);
}

TEST_F(DocumentsTest, ARefusedWriteSaysWhy)
{
    const int root = MakeRoot("Main");
    const int a = MakeFolder(Root(root), "A");
    Execute("PRAGMA query_only = 1");
    EXPECT_EQ(CodeOf([&] { MakeRoot("Other"); }), Exit::database);
    RootChanges changes;
    changes.type = 1;
    EXPECT_EQ(CodeOf([&] { m_documents.ChangeRoot(root, changes); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_documents.RenameFolder(a, "A", "B"); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_documents.AddLink({Root(root), Folder(a)}, {}); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_documents.RemoveLink({Root(root), Folder(a)}); }), Exit::database);
    EXPECT_EQ(CodeOf([&] { m_documents.Delete({Folder(a)}); }), Exit::database);
    try {
        MakeFolder(Root(root), "B");
        FAIL() << "written";
    } catch (const Error& e) {
        EXPECT_THAT(e.what(), HasSubstr("readonly"));
    }
}

// ---- Document roots -------------------------------------------------------------------------------------------------

TEST_F(DocRootCommandsTest, HelpOfEveryVerbHasExamples)
{
    for (const char* verb : {"list", "show", "create", "set", "delete", "default"}) {
        EXPECT_THAT(Done({"docroot", verb, "--help"}), HasSubstr("Examples:\n  qvadmin docroot ")) << verb;
    }
    for (const char* verb : {"tree", "list", "show", "create", "rename", "style", "link", "move", "unlink", "delete"}) {
        EXPECT_THAT(Done({"folder", verb, "--help"}), HasSubstr("Examples:\n  qvadmin folder ")) << verb;
    }
}

TEST_F(DocRootCommandsTest, ARootIsShownWithWhatWasGiven)
{
    Done({"user", "create", "amy"});
    EXPECT_EQ(Done({"docroot", "create", kHard, "--path", "C:\\it's\\", "--type", "2", "--description", kHard,
                    "--display-name", "'\\", "--max-size", "700", "--owner", "AMY", "--style", "4294967295"}),
              "1\n");
    const json root = ShownRoot(kHard);
    EXPECT_EQ(root["id"], 1);
    EXPECT_EQ(root["name"], kHard);
    EXPECT_EQ(root["path"], "C:\\it's\\");
    EXPECT_EQ(root["type"], 2);
    EXPECT_EQ(root["description"], kHard);
    EXPECT_EQ(root["display_name"], "'\\");
    EXPECT_EQ(root["max_size"], 700);
    EXPECT_EQ(root["owner_id"], 1);
    EXPECT_EQ(root["owner"], "amy");
    EXPECT_EQ(root["style"], 4294967295);
    EXPECT_EQ(root["used_size"], 0);
    EXPECT_EQ(root["links"], 0);
    EXPECT_TRUE(root["created"].is_string());
}

TEST_F(DocRootCommandsTest, RootsAreListedByName)
{
    Done({"docroot", "create", "b", "--path", "/b", "--type", "1"});
    Done({"docroot", "create", "A", "--path", "/a"});
    EXPECT_THAT(Done({"docroot", "list", "-o", "csv"}),
                StartsWith("id,name,type,path,display_name,created\n2,A,0,/a,,20"));
    EXPECT_EQ(json::parse(Done({"docroot", "list", "--type", "1", "-o", "json"})).size(), 1U);
    EXPECT_EQ(Done({"docroot", "list", "--type", "7", "-o", "json"}), "[]\n");
}

TEST_F(DocRootCommandsTest, SetChangesWhatIsGivenAndNothingElse)
{
    Done({"docroot", "create", "Main", "--path", "a\\b", "--description", "d", "--max-size", "5", "--style", "6"});
    Execute("UPDATE Tab_Doc_Root SET Col_UsedSize = 77, Col_HaveSubItem = 1, Col_OwnerID = 99");
    json expected = ShownRoot("Main");
    EXPECT_EQ(Run({"docroot", "set", "Main", "--max-size", "8"}).err, "changed Main (root 1)\n");
    expected["max_size"] = 8;
    EXPECT_EQ(ShownRoot("Main"), expected);
    Done({"docroot", "set", "Main", "--name", kHard, "--path", "c\\'", "--new-type", "1", "--owner", ""});
    expected["name"] = kHard;
    expected["path"] = "c\\'";
    expected["type"] = 1;
    expected["owner_id"] = 0;
    EXPECT_EQ(ShownRoot(kHard), expected);
    EXPECT_EQ(Run({"docroot", "set", kHard, "--name", kHard}).err.substr(0, 17), "nothing to change");
    ExpectRefusal({"docroot", "set", kHard}, 2, "nothing to set");
    ExpectRefusal({"docroot", "set", kHard, "--path", ""}, 2, "the path is empty");
    ExpectRefusal({"docroot", "set", kHard, "--owner", "nobody"}, 3, "nobody");
    ExpectRefusal({"docroot", "set", kHard, "--style", "-1"}, 2, "--style");
    EXPECT_EQ(ShownRoot("id:1"), expected);
}

TEST_F(DocRootCommandsTest, SetLeavesLargeNumbersOddFlagsAndNullsAsTheyAre)
{
    MakeRoot("Main");
    Execute("UPDATE Tab_Doc_Root SET Col_MaxSize = 5000000000, Col_UsedSize = 9000000000000, Col_HaveSubItem = 2, "
            "Col_Desc = NULL, Col_DispName = NULL, Col_OwnerID = NULL, Col_Style = NULL");
    EXPECT_EQ(ShownRoot("Main")["max_size"], 5000000000);
    EXPECT_EQ(ShownRoot("Main")["used_size"], 9000000000000);
    EXPECT_EQ(ShownRoot("Main")["has_sub_items"], true);
    Done({"docroot", "set", "Main", "--path", "/new", "--name", "Other", "--new-type", "1"});
    EXPECT_EQ(Count("Tab_Doc_Root WHERE Col_Name = 'Other' AND Col_DataPath = '/new' AND Col_Type = 1 AND Col_MaxSize "
                    "= 5000000000 AND Col_UsedSize = 9000000000000 AND Col_HaveSubItem = 2 AND Col_Desc IS NULL AND "
                    "Col_DispName IS NULL AND Col_OwnerID IS NULL AND Col_Style IS NULL"),
              1);
    // The low 32 bits of what is stored.
    Done({"docroot", "set", "Other", "--max-size", "705032704", "--style", "4294967295", "--owner", ""});
    EXPECT_EQ(Count("Tab_Doc_Root WHERE Col_MaxSize = 705032704 AND Col_Style = -1 AND Col_OwnerID = 0 AND "
                    "Col_UsedSize = 9000000000000 AND Col_Desc IS NULL"),
              1);
}

TEST_F(DocRootCommandsTest, NamesThatBeginAsIdsDoAreRefused)
{
    MakeRoot("Main");
    for (const char* name : {"id:9", "id:", "root:9", "root:x"}) {
        ExpectRefusal({"docroot", "create", name, "--path", "/x"}, 2, "as only ids do");
        ExpectRefusal({"docroot", "set", "Main", "--name", name}, 2, "as only ids do");
    }
    // What another program has called so can still be changed.
    Execute("UPDATE Tab_Doc_Root SET Col_Name = 'id:9'");
    Done({"docroot", "set", "id:1", "--name", "id:9", "--path", "/y"});
    Done({"docroot", "set", "id:1", "--name", "Id:9"});
    EXPECT_EQ(ShownRoot("Id:9")["path"], "/y");
}

TEST_F(DocRootCommandsTest, ANameIsTakenInItsTypeAndFoundWithItsType)
{
    MakeRoot("Main");
    ExpectRefusal({"docroot", "create", "Main", "--path", "/x"}, 4, "the name 'Main' is taken");
    EXPECT_EQ(Done({"docroot", "create", "Main", "--path", "/x", "--type", "1"}), "2\n");
    ExpectRefusal({"docroot", "create", "main", "--path", "/y"}, 4, "the name 'main' is taken");
    EXPECT_EQ(Done({"docroot", "create", "Other", "--path", "/y"}), "3\n");
    for (const std::vector<std::string>& words : {std::vector<std::string>{"docroot", "show", "Main"},
                                                  {"docroot", "set", "Main", "--path", "/z"},
                                                  {"docroot", "delete", "Main", "--yes"},
                                                  {"folder", "create", "/Main/A"},
                                                  {"folder", "tree", "Main"}}) {
        ExpectRefusal(words, 4, "(root 1");
        ExpectRefusal(words, 4, "(root 2");
    }
    EXPECT_EQ(Count("Tab_Doc_Root WHERE Col_DataPath = '/z'"), 0);
    EXPECT_EQ(ShownRoot("id:2")["path"], "/x");
    EXPECT_EQ(json::parse(Done({"docroot", "show", "Main", "--type", "1", "-o", "json"}))["id"], 2);
    ExpectRefusal({"docroot", "set", "id:2", "--new-type", "0"}, 4, "is taken");
    ExpectRefusal({"docroot", "set", "Other", "--name", "main"}, 4, "is taken");
    Done({"docroot", "set", "id:1", "--name", "MAIN"});
    ExpectRefusal({"docroot", "show", "Nope"}, 3, "there is no document root 'Nope'");
    ExpectRefusal({"docroot", "show", "id:9"}, 3, "'id:9'");
    ExpectRefusal({"docroot", "show", "id:x"}, 2, "'id:x' is not the id of a document root");
    ExpectRefusal({"docroot", "create", "a\tb", "--path", "/x"}, 2, "control character");
    ExpectRefusal({"docroot", "create", "b", "--path", ""}, 2, "the path is empty");
    ExpectRefusal({"docroot", "create", "b"}, 2, "--path");
    EXPECT_EQ(Count("Tab_Doc_Root"), 3);
}

TEST_F(DocRootCommandsTest, DefaultTellsWhetherTheCompanyHasARoot)
{
    MakeRoot("Main");
    ChildResult result = Run({"docroot", "default"});
    EXPECT_EQ(result.exit, 3);
    EXPECT_EQ(result.out, "false\n");
    Done({"docroot", "set", "Main", "--new-type", "1"});
    EXPECT_EQ(Done({"docroot", "default"}), "true\n");
}

TEST_F(DocRootCommandsTest, DeletingARootLeavesItsFoldersUnlessToldOtherwise)
{
    MakeRoot("Main");
    MakeRoot("Other");
    MakeFolder("/Main/A/B");
    MakeFolder("/Main/S");
    Done({"folder", "link", "/Main/S", "/Other"});
    ChildResult result = Run({"docroot", "delete", "Main"});
    EXPECT_EQ(result.exit, 9);
    EXPECT_THAT(result.err, AllOf(StartsWith("delete Main (root 1), with 2 links\n2 folders will be in no document "
                                             "root; --recursive deletes these too\n"),
                                  HasSubstr("--yes")));
    EXPECT_EQ(Count("Tab_Doc_Root"), 2);
    result = Run({"docroot", "delete", "Main", "--yes"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_THAT(result.err, HasSubstr("\ndeleted Main (root 1)\n"));
    EXPECT_EQ(Tree(), "Other (root 2)\n"
                      "└── S (id 3)\n"
                      "In no document root:\n"
                      "└── A (id 1)\n"
                      "    └── B (id 2)\n");
}

TEST_F(DocRootCommandsTest, DeletingRecursivelyTakesTheFoldersThatHangNowhereElse)
{
    MakeRoot("Main");
    MakeRoot("Other");
    MakeFolder("/Main/A/B");
    MakeFolder("/Main/S");
    Done({"folder", "link", "/Main/S", "/Other"});
    const ChildResult result = Run({"docroot", "delete", "Main", "--recursive", "--yes"});
    EXPECT_EQ(result.err, "delete Main (root 1) and 2 folders, with 3 links\ndeleted Main (root 1) and 2 folders\n");
    EXPECT_EQ(Tree(), "Other (root 2)\n"
                      "└── S (id 3)\n");
    EXPECT_EQ(CountLinks(), 1);
}

TEST_F(DocRootCommandsTest, OnATerminalDeletingAsks)
{
    MakeRoot("Main");
    m_options.terminal = true;
    ChildResult result = RunWith("n\n", {"docroot", "delete", "Main"});
    EXPECT_EQ(result.exit, 9);
    EXPECT_THAT(result.err, HasSubstr("Delete Main (root 1)? [y/N]"));
    result = RunWith("y\n", {"docroot", "delete", "Main"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_EQ(Count("Tab_Doc_Root"), 0);
}

TEST_F(DocRootCommandsTest, ADeletionThatFailsLeavesAllAsItWas)
{
    MakeRoot("Main");
    MakeFolder("/Main/A/B");
    const std::string before = Tree();
    Execute("CREATE TRIGGER refuse BEFORE DELETE ON Tab_Doc_VFolder WHEN OLD.Col_ID = 2 BEGIN SELECT RAISE(ABORT, "
            "'not today'); END");
    const ChildResult result = Run({"docroot", "delete", "Main", "--recursive", "--yes"});
    EXPECT_EQ(result.exit, 6);
    EXPECT_THAT(result.err, HasSubstr("not today"));
    EXPECT_EQ(Tree(), before);
    EXPECT_EQ(CountLinks(), 2);
}

// ---- Folders --------------------------------------------------------------------------------------------------------

TEST_F(FolderCommandsTest, ANewFolderIsShownWithWhatWasGiven)
{
    Done({"user", "create", "amy", "--name", "Amy O'Neil\\"});
    MakeRoot("Main");
    EXPECT_EQ(Done({"folder", "create", "/Main/A", "--style", "4294967295", "--creator", "amy"}), "1\n");
    const json folder = ShownFolder("/Main/A");
    EXPECT_EQ(folder["id"], 1);
    EXPECT_EQ(folder["name"], "A");
    EXPECT_EQ(folder["path"], "/Main/A");
    EXPECT_EQ(folder["parents"], "/Main");
    EXPECT_EQ(folder["style"], 4294967295);
    EXPECT_EQ(folder["creator_id"], 1);
    EXPECT_EQ(folder["creator"], "Amy O'Neil\\");
    EXPECT_EQ(folder["folders"], 0);
    EXPECT_TRUE(folder["created"].is_string());
    ExpectRefusal({"folder", "create", "/Main/B", "--creator", "nobody"}, 3, "nobody");
    EXPECT_EQ(Count("Tab_Doc_VFolder"), 1);
}

TEST_F(FolderCommandsTest, NamesWithQuotesSlashesAndBackslashesComeThrough)
{
    Done({"docroot", "create", "R/'\\", "--path", "/x"});
    Done({"folder", "create", R"(/R\/'\\/O'Neil\\)"});
    Done({"folder", "create", R"(/R\/'\\/O'Neil\\/a\/b)"});
    EXPECT_EQ(ShownFolder("id:2")["name"], "a/b");
    EXPECT_EQ(ShownFolder("id:1")["name"], "O'Neil\\");
    const std::string path = ShownFolder("id:2")["path"];
    EXPECT_EQ(path, "/R\\/'\\\\/O'Neil\\\\/a\\/b");
    EXPECT_EQ(ShownFolder(path)["id"], 2);
    EXPECT_EQ(ShownFolder("id:1/a\\/b")["id"], 2);
    EXPECT_EQ(ShownFolder("root:1/O'Neil\\\\")["id"], 1);
    Done({"folder", "rename", path, kHard});
    EXPECT_EQ(ShownFolder("id:2")["name"], kHard);
    EXPECT_EQ(Count("Tab_Doc_VFolder_Link WHERE Col_DispName LIKE 'O''Brien%'"), 1);
    EXPECT_EQ(Done({"folder", "list", "root:1", "-o", "jsonl"}),
              "{\"id\":1,\"name\":\"O'Neil\\\\\",\"path\":\"/R\\\\/'\\\\\\\\/O'Neil\\\\\\\\\",\"folders\":1,"
              "\"other_objects\":0}\n");
}

TEST_F(FolderCommandsTest, ParentsAreAddedOnlyWhenAskedForAndAllOrNone)
{
    MakeRoot("Main");
    ExpectRefusal({"folder", "create", "/Main/A/B/C"}, 3, "'/Main/A/B'");
    EXPECT_EQ(Done({"folder", "create", "/Main/A/B/C", "--parents", "--style", "3"}), "3\n");
    EXPECT_EQ(Done({"folder", "create", "/Main/A/D", "--parents"}), "4\n");
    EXPECT_EQ(ShownFolder("/Main/A/B/C")["style"], 3);
    EXPECT_EQ(ShownFolder("/Main/A/B")["style"], 0);
    EXPECT_EQ(Tree(), "Main (root 1)\n"
                      "└── A (id 1)\n"
                      "    ├── B (id 2)\n"
                      "    │   └── C (id 3)\n"
                      "    └── D (id 4)\n");
    ExpectRefusal({"folder", "create", "/Nope/A/B", "--parents"}, 3, "'/Nope'");
    ExpectRefusal({"folder", "create", "/Main/X/ y/z", "--parents"}, 2, "blank");
    EXPECT_EQ(Count("Tab_Doc_VFolder"), 4);
}

TEST_F(FolderCommandsTest, ACreationThatFailsLeavesNothingBehind)
{
    MakeRoot("Main");
    Execute("CREATE TRIGGER refuse BEFORE INSERT ON Tab_Doc_VFolder_Link BEGIN SELECT RAISE(ABORT, 'not today'); END");
    const ChildResult result = Run({"folder", "create", "/Main/A/B", "--parents"});
    EXPECT_EQ(result.exit, 6);
    EXPECT_EQ(Count("Tab_Doc_VFolder"), 0);
    EXPECT_EQ(CountLinks(), 0);
}

TEST_F(FolderCommandsTest, LinksOfADeletedFolderOfTheNewIdAreRemovedAndTold)
{
    MakeRoot("Main");
    LinkUnder(7, 1);
    LinkUnder(8, 1);
    LinkUnder(7, 2);
    const ChildResult result = Run({"folder", "create", "/Main/A/B", "--parents"});
    EXPECT_EQ(result.exit, 0);
    EXPECT_EQ(result.out, "2\n");
    EXPECT_EQ(result.err, "removed 2 links to a folder deleted before, whose id 1 the new one has\n"
                          "removed 1 link to a folder deleted before, whose id 2 the new one has\n");
    EXPECT_EQ(Tree(), "Main (root 1)\n"
                      "└── A (id 1)\n"
                      "    └── B (id 2)\n");
    EXPECT_EQ(CountLinks(), 2);
    EXPECT_EQ(Run({"folder", "create", "/Main/C"}).err, "");
}

TEST_F(FolderCommandsTest, NamesThatBeginAsIdsDoAreRefused)
{
    MakeRoot("Main");
    MakeFolder("/Main/A");
    for (const char* name : {"id:9", "root:9"}) {
        ExpectRefusal({"folder", "create", std::string("/Main/") + name}, 2, "as only ids do");
        ExpectRefusal({"folder", "create", fmt::format("/Main/{}/x", name), "--parents"}, 2, "as only ids do");
        ExpectRefusal({"folder", "rename", "/Main/A", name}, 2, "as only ids do");
    }
    EXPECT_EQ(Count("Tab_Doc_VFolder"), 1);
}

TEST_F(FolderCommandsTest, NamesThatAreTakenOrNoneAreRefused)
{
    MakeRoot("Main");
    MakeFolder("/Main/A");
    ExpectRefusal({"folder", "create", "/Main/A"}, 4, "the name 'A' is taken by /Main/A (id 1)");
    ExpectRefusal({"folder", "create", "/Main/a"}, 4, "the name 'a' is taken by /Main/A (id 1)");
    EXPECT_EQ(Done({"folder", "create", "/Main/b"}), "2\n");
    ExpectRefusal({"folder", "rename", "/Main/b", "a"}, 4, "is taken by /Main/A");
    Done({"folder", "rename", "/Main/b", "B"});
    EXPECT_EQ(ShownFolder("/Main/B")["id"], 2);
    for (const char* name : {" x", "x ", "a\tb"}) {
        ExpectRefusal({"folder", "create", std::string("/Main/") + name}, 2, "the folder name");
        ExpectRefusal({"folder", "rename", "/Main/B", name}, 2, "the folder name");
    }
    ExpectRefusal({"folder", "rename", "/Main/B", ""}, 2, "is empty");
    for (const char* path : {"Main/x", "/Main", "/Main/", "/Main//x", "/Main/a\\b", "x", "id:1", "root:1", "id:x/a"}) {
        ExpectRefusal({"folder", "create", path}, 2, "'");
    }
    ExpectRefusal({"folder", "show", "/Main"}, 2, "is a document root");
    ExpectRefusal({"folder", "show", "/Main/x"}, 3, "there is no folder '/Main/x'");
    ExpectRefusal({"folder", "list", "id:9"}, 3, "'id:9'");
}

TEST_F(FolderCommandsTest, FoldersOfTheSameNameAreListedAndNothingIsChanged)
{
    MakeRoot("Main");
    MakeFolder("/Main/A");
    MakeFolder("/Main/B/C");
    // As other programs can write it.
    Execute("UPDATE Tab_Doc_VFolder SET Col_Name = 'A' WHERE Col_ID = 2");
    for (const std::vector<std::string>& words : {std::vector<std::string>{"folder", "show", "/Main/A"},
                                                  {"folder", "rename", "/Main/A", "X"},
                                                  {"folder", "style", "/Main/A", "2"},
                                                  {"folder", "create", "/Main/A/X"},
                                                  {"folder", "link", "/Main/A", "id:3"},
                                                  {"folder", "unlink", "/Main/A", "--yes"},
                                                  {"folder", "delete", "/Main/A", "--yes"}}) {
        ExpectRefusal(words, 4, "may be any of /Main/A (id 1), /Main/A (id 2); write id:1");
    }
    // One of them alone leads there.
    EXPECT_EQ(ShownFolder("/Main/A/C")["id"], 3);
    EXPECT_EQ(Count("Tab_Doc_VFolder WHERE Col_Name = 'A' AND Col_Style = 0"), 2);
    EXPECT_EQ(CountLinks(), 3);
}

TEST_F(FolderCommandsTest, StyleIsShownAndSet)
{
    MakeRoot("Main");
    MakeFolder("/Main/A");
    EXPECT_EQ(Done({"folder", "style", "/Main/A", "-o", "plain"}), "style\t0\n");
    EXPECT_EQ(Run({"folder", "style", "/Main/A", "4294967295"}).err, "changed /Main/A (id 1)\n");
    EXPECT_EQ(Done({"folder", "style", "/Main/A"}), "style  4294967295\n");
    ExpectRefusal({"folder", "style", "/Main/A", "many"}, 2, "N");
}

TEST_F(FolderCommandsTest, AFolderCanHangInSeveralPlaces)
{
    MakeRoot("Main");
    MakeRoot("Other");
    MakeFolder("/Main/A/B");
    EXPECT_EQ(Run({"folder", "link", "/Main/A", "/Other"}).err, "/Main/A (id 1) is now under /Other (root 2) too\n");
    MakeFolder("/Main/C");
    Done({"folder", "link", "id:2", "/Main/C"});
    EXPECT_EQ(ShownFolder("id:2")["parents"], "/Main/A, /Main/C");
    EXPECT_EQ(ShownFolder("/Other/A/B")["id"], 2);
    EXPECT_EQ(Tree(), "Main (root 1)\n"
                      "├── A (id 1)\n"
                      "│   └── B (id 2)\n"
                      "└── C (id 3)\n"
                      "    └── B (id 2)\n"
                      "Other (root 2)\n"
                      "└── A (id 1) [shown above]\n");
    ExpectRefusal({"folder", "link", "/Main/A", "/Other"}, 4, "is directly under /Other (root 2) already");
    MakeFolder("/Main/D/A");
    ExpectRefusal({"folder", "link", "/Main/D/A", "/Other"}, 4, "the name 'A' is taken by /Main/A (id 1)");
    ExpectRefusal({"folder", "link", "/Main/A", "/Nope"}, 3, "'/Nope'");
}

TEST_F(FolderCommandsTest, MovingLeavesOnePlaceForAnotherOrChangesNothing)
{
    MakeRoot("Main");
    MakeRoot("Other");
    MakeFolder("/Main/A/B");
    MakeFolder("/Other/C");
    EXPECT_EQ(Run({"folder", "move", "/Main/A", "/Other/C"}).err, "/Main/A (id 1) is now under /Other/C (id 3)\n");
    EXPECT_EQ(ShownFolder("id:1")["parents"], "/Other/C");
    EXPECT_EQ(ShownFolder("/Other/C/A/B")["id"], 2);
    ExpectRefusal({"folder", "move", "/Other/C", "/Other/C/A/B"}, 4, "it would be below itself");
    ExpectRefusal({"folder", "move", "/Other/C/A", "/Other/C"}, 4, "is directly under /Other/C (id 3) already");
    Done({"folder", "link", "id:1", "/Main"});
    ExpectRefusal({"folder", "move", "id:1", "/Other"}, 4, "--from");
    Done({"folder", "move", "id:1", "/Other", "--from", "/Main"});
    EXPECT_EQ(ShownFolder("id:1")["parents"], "/Other, /Other/C");
    // What is in no place has none to leave.
    Done({"folder", "unlink", "id:1", "--from", "/Other"});
    Done({"folder", "unlink", "id:1", "--from", "/Other/C", "--yes"});
    Done({"folder", "move", "id:1", "/Main"});
    EXPECT_EQ(ShownFolder("id:1")["parents"], "/Main");
}

TEST_F(FolderCommandsTest, ALinkThatMakesACycleNamesItAndChangesNothing)
{
    MakeRoot("Main");
    MakeFolder("/Main/A/B/C");
    const std::string before = Tree();
    ExpectRefusal({"folder", "link", "/Main/A", "/Main/A/B/C"}, 4,
                  "below itself: /Main/A -> /Main/A/B -> /Main/A/B/C -> /Main/A");
    ExpectRefusal({"folder", "link", "/Main/A", "/Main/A"}, 4, "/Main/A -> /Main/A");
    EXPECT_EQ(Tree(), before);
}

TEST_F(FolderCommandsTest, UnlinkingTakesAFolderOutOfOnePlaceAndAsksBeforeTheLast)
{
    MakeRoot("Main");
    MakeRoot("Other");
    MakeFolder("/Main/A");
    MakeFolder("/Main/B");
    Done({"folder", "link", "/Main/A", "/Other"});
    Done({"folder", "link", "/Main/A", "/Main/B"});
    ExpectRefusal({"folder", "unlink", "id:1"}, 4, "/Main (root 1), /Other (root 2), /Main/B (id 2)");
    ExpectRefusal({"folder", "unlink", "id:2", "--from", "/Other"}, 3, "is not directly under");
    EXPECT_EQ(Run({"folder", "unlink", "/Other/A"}).err, "/Main/A (id 1) is no longer under /Other (root 2)\n");
    EXPECT_EQ(Run({"folder", "unlink", "id:1", "--from", "/Main/B"}).exit, 0);
    ChildResult result = Run({"folder", "unlink", "/Main/A"});
    EXPECT_EQ(result.exit, 9);
    EXPECT_THAT(result.err, HasSubstr("would be in no document root; `qvadmin folder delete` deletes it\n"));
    EXPECT_EQ(ShownFolder("id:1")["parents"], "/Main");
    EXPECT_EQ(Run({"folder", "unlink", "id:1", "--yes"}).exit, 0);
    EXPECT_EQ(ShownFolder("id:1")["parents"], "");
    ExpectRefusal({"folder", "unlink", "id:1", "--yes"}, 4, "is in no place");
    EXPECT_EQ(Run({"folder", "link", "id:1", "/Main"}).exit, 0);
    EXPECT_EQ(ShownFolder("/Main/A")["id"], 1);
}

TEST_F(FolderCommandsTest, AnEmptyFolderIsDeletedWithAllItsLinks)
{
    MakeRoot("Main");
    MakeFolder("/Main/A");
    MakeFolder("/Main/B");
    Done({"folder", "link", "/Main/A", "/Main/B"});
    ChildResult result = Run({"folder", "delete", "/Main/A"});
    EXPECT_EQ(result.exit, 9);
    EXPECT_THAT(result.err, StartsWith("delete /Main/A (id 1), with 2 links\n"));
    EXPECT_EQ(CountLinks(), 3);
    result = Run({"folder", "delete", "id:1", "--yes"});
    EXPECT_THAT(result.err, HasSubstr("\ndeleted 1 folder\n"));
    EXPECT_EQ(CountLinks(), 1);
    ExpectRefusal({"folder", "delete", "id:1", "--yes"}, 3, "'id:1'");
}

TEST_F(FolderCommandsTest, AFolderThatHoldsSomethingIsDeletedOnlyRecursively)
{
    MakeRoot("Main");
    MakeFolder("/Main/A/B/C");
    MakeFolder("/Main/A/S/T");
    MakeFolder("/Main/D");
    Done({"folder", "link", "/Main/A/S", "/Main/D"});
    Execute("INSERT INTO Tab_Doc_VFolder_Link (Col_P_ObjID, Col_S_ClassID, Col_S_ObjID) VALUES (3, 7, 1), (6, 7, 3)");
    ExpectRefusal({"folder", "delete", "/Main/A", "--yes"}, 4, "/Main/A (id 1) holds 2 folders and 0 other objects");
    ExpectRefusal({"folder", "delete", "/Main/A/B/C", "--yes"}, 4, "holds 0 folders and 1 other object");
    const ChildResult result = Run({"folder", "delete", "/Main/A", "--recursive", "--yes"});
    EXPECT_EQ(result.err, "delete /Main/A (id 1) and 2 folders below, with 5 links\ndeleted 3 folders\n");
    EXPECT_EQ(Tree(), "Main (root 1)\n"
                      "└── D (id 6)\n"
                      "    └── S (id 4)\n"
                      "        └── T (id 5)\n");
    // An object of another kind with the number of a folder keeps its place.
    EXPECT_EQ(Count("Tab_Doc_VFolder_Link WHERE Col_S_ClassID = 7"), 1);
}

TEST_F(FolderCommandsTest, ADeletionThatFailsLeavesAllAsItWas)
{
    MakeRoot("Main");
    MakeFolder("/Main/A/B");
    const std::string before = Tree();
    Execute("CREATE TRIGGER refuse BEFORE DELETE ON Tab_Doc_VFolder WHEN OLD.Col_ID = 2 BEGIN SELECT RAISE(ABORT, "
            "'not today'); END");
    const ChildResult result = Run({"folder", "delete", "/Main/A", "--recursive", "--yes"});
    EXPECT_EQ(result.exit, 6);
    EXPECT_THAT(result.err, AllOf(HasSubstr("not today"), Not(HasSubstr("deleted 2"))));
    EXPECT_EQ(Tree(), before);
    EXPECT_EQ(CountLinks(), 2);
}

// ---- The tree -------------------------------------------------------------------------------------------------------

TEST_F(FolderCommandsTest, TheTreeBeginsAnywhereAndEndsAtADepth)
{
    MakeRoot("Main");
    MakeFolder("/Main/A/B");
    EXPECT_EQ(Tree({"Main", "--depth", "1"}), "Main (root 1)\n"
                                              "└── A (id 1)\n");
    EXPECT_EQ(Tree({"root:1", "--depth", "0"}), "Main (root 1)\n");
    EXPECT_EQ(Tree({"/Main/A"}), "A (id 1)\n"
                                 "└── B (id 2)\n");
    EXPECT_EQ(Tree({"id:2"}), "B (id 2)\n");
    ExpectRefusal({"folder", "tree", "--depth", "-1"}, 2, "--depth");
    ExpectRefusal({"folder", "tree", "Nope"}, 3, "'Nope'");
}

TEST_F(FolderCommandsTest, TheTreeMarksCyclesAndWhatItHasShownAndListsWhatHangsNowhere)
{
    MakeRoot("Main");
    MakeFolder("/Main/A/B");
    MakeFolder("/Main/C");
    LinkUnder(2, 1);
    LinkUnder(3, 2);
    Execute(
        "INSERT INTO Tab_Doc_VFolder (Col_ID, Col_Name) VALUES (10, 'Lost\x1B'), (11, 'L1'), (12, 'L2'), (13, 'U')");
    LinkUnder(10, 13);
    LinkUnder(11, 12);
    LinkUnder(12, 11);
    EXPECT_EQ(Tree(), "Main (root 1)\n"
                      "├── A (id 1)\n"
                      "│   └── B (id 2)\n"
                      "│       └── A (id 1) [cycle: leads back to itself]\n"
                      "└── C (id 3)\n"
                      "    └── B (id 2) [shown above]\n"
                      "In no document root:\n"
                      "├── L1 (id 11)\n"
                      "│   └── L2 (id 12)\n"
                      "│       └── L1 (id 11) [cycle: leads back to itself]\n"
                      "└── Lost\\x1B (id 10)\n"
                      "    └── U (id 13)\n");
    EXPECT_THAT(Tree({"-o", "csv"}), StartsWith("depth,type,id,name,parent,mark\n"
                                                "0,root,1,Main,,\n"
                                                "1,folder,1,A,1,\n"
                                                "2,folder,2,B,1,\n"
                                                "3,folder,1,A,2,cycle\n"));
    const json lines = json::parse(Tree({"-o", "json"}));
    ASSERT_EQ(lines.size(), 12U);
    EXPECT_EQ(lines[5]["mark"], "above");
    EXPECT_EQ(lines[6]["type"], "nowhere");
    EXPECT_EQ(ShownFolder("id:12")["path"], "id:11/L2");
}

TEST_F(FolderCommandsTest, TenThousandFoldersAreDrawn)
{
    MakeRoot("Main");
    Execute("INSERT INTO Tab_Doc_VFolder (Col_Name) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
            "WHERE i < 10000) SELECT 'Folder ' || i FROM n");
    Execute("INSERT INTO Tab_Doc_Root_Link (Col_P_ObjID, Col_S_ClassID, Col_S_ObjID) SELECT 1, 105, Col_ID FROM "
            "Tab_Doc_VFolder WHERE Col_ID <= 10");
    Execute("INSERT INTO Tab_Doc_VFolder_Link (Col_P_ObjID, Col_S_ClassID, Col_S_ObjID) SELECT Col_ID / 10, 105, "
            "Col_ID FROM Tab_Doc_VFolder WHERE Col_ID > 10");
    const std::string tree = Tree();
    EXPECT_EQ(std::ranges::count(tree, '\n'), 10001);
    EXPECT_THAT(tree, Not(HasSubstr("[")));
    EXPECT_EQ(json::parse(Tree({"-o", "json"})).size(), 10001U);
    EXPECT_EQ(ShownFolder("id:9999")["path"], "/Main/Folder 9/Folder 99/Folder 999/Folder 9999");
}

TEST_F(FolderCommandsTest, ALongChainIsDeletedAtOnce)
{
    MakeRoot("Main");
    Execute("INSERT INTO Tab_Doc_VFolder (Col_Name) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n "
            "WHERE i < 2000) SELECT 'F' FROM n");
    Execute("INSERT INTO Tab_Doc_VFolder_Link (Col_P_ObjID, Col_S_ClassID, Col_S_ObjID) SELECT Col_ID - 1, 105, Col_ID "
            "FROM Tab_Doc_VFolder WHERE Col_ID > 1");
    EXPECT_EQ(std::ranges::count(Tree({"id:1"}), '\n'), 2000);
    const ChildResult result = Run({"folder", "delete", "id:1", "--recursive", "--yes"});
    EXPECT_EQ(result.err, "delete F (id 1) and 1999 folders below, with 1999 links\ndeleted 2000 folders\n");
    EXPECT_EQ(Count("Tab_Doc_VFolder"), 0);
    EXPECT_EQ(CountLinks(), 0);
}
