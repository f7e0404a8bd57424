#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "documents/DocFolderItem.h"
#include "documents/DocFolderLinkItem.h"
#include "documents/DocRootItem.h"
#include "documents/DocRootLinkItem.h"
#include "tests/directory/BehaviourCase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <type_traits>
#include <vector>

namespace document_behaviour {

using behaviour::Line;
using behaviour::Numbers;
using behaviour::ReadCase;
using behaviour::RecordCase;
using behaviour::Texts;
using behaviour::WriteCase;
using scripted::Rows;

namespace {

// ---- Roots -------------------------------------------------------------------------------------------------------

std::vector<ReadCase> RootLookUps()
{
    return {
        {"ExistDocRootItem",
         [](CAConnect& conn) {
             bool exists = true;
             const bool ran = CQVBaseFun::ExistDocRootItem(conn, "Main", 1, exists);
             return Line(ran, exists);
         },
         {{"41"}, {"42"}},
         "true true",
         "true false",
         "true true",
         "false false"},
        {"GetDRItemIDByName",
         [](CAConnect& conn) {
             int id = 77;
             const bool ran = CQVBaseFun::GetDRItemIDByName(conn, "Main", 1, id);
             return Line(ran, id);
         },
         {{"41"}, {"42"}},
         "true 41",
         "true 0",
         "true 0",
         "false 0"},
        {"GetDocRootID",
         [](CAConnect& conn) {
             int id = 77;
             const bool ran = CQVBaseFun::GetDocRootID(conn, "Main", 1, id);
             return Line(ran, id);
         },
         {{"41"}, {"42"}},
         "true 41",
         "true 0",
         "true 0",
         "false 0"},
        {"GetDocRootInfo",
         [](CAConnect& conn) {
             CString path = "before";
             unsigned long style = 77;
             const bool ran = CQVBaseFun::GetDocRootInfo(conn, "Main", 1, path, style);
             return Line(ran, path, style);
         },
         {{R"(C:\d)", "-2147483647"}, {"x", "1"}},
         R"(true "C:\d" 2147483649)",
         R"(true "" 0)",
         R"(true "" 0)",
         R"(false "" 0)"},
        {"HasNoDefCorpDocRoot",
         [](CAConnect& conn) {
             bool result = true;
             const bool ran = CQVBaseFun::HasNoDefCorpDocRoot(conn, result);
             return Line(ran, result);
         },
         {{"1"}, {"0"}},
         "true true",
         "true false",
         "true false",
         "false false"},
    };
}

std::vector<ReadCase> RootLists()
{
    const std::vector<std::vector<scripted::Value>> rows = {{"41", "n1", "p1", "2013-05-07 09:03:00", "1"},
                                                            {"42", "n2", "p2", "2014-11-30 23:59:59", "-1"}};
    return {
        {"LoadDocRootInfo into five arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             Texts paths;
             Texts created;
             Numbers types;
             const bool ran = CQVBaseFun::LoadDocRootInfo(conn, ids, names, paths, created, types);
             return Line(ran, ids, names, paths, created, types);
         },
         rows, "true [9,41,42] [old,n1,n2] [old,p1,p2] [old,2013-05-07,2014-11-30] [9,1,4294967295]",
         "true [9] [old] [old] [old] [9]", "true [9,0] [old,] [old,] [old,] [9,0]", "false [9] [old] [old] [old] [9]"},
        {"LoadDocRootInfo of a type into five arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             Texts paths;
             Texts created;
             Numbers styles;
             const bool ran = CQVBaseFun::LoadDocRootInfo(conn, 1, ids, names, paths, created, styles);
             return Line(ran, ids, names, paths, created, styles);
         },
         rows, "true [9,41,42] [old,n1,n2] [old,p1,p2] [old,2013-05-07 09:03:00,2014-11-30 23:59:59] [9,1,4294967295]",
         "true [9] [old] [old] [old] [9]", "true [9,0] [old,] [old,] [old,] [9,0]", "false [9] [old] [old] [old] [9]"},
        {"LoadDocRootInfoEx",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             Texts paths;
             Texts created;
             Numbers types;
             const bool ran = CQVBaseFun::LoadDocRootInfoEx(conn, ids, names, paths, created, types);
             return Line(ran, ids, names, paths, created, types);
         },
         rows, "true [9,41,42] [old,n1,n2] [old,p1,p2] [old,2013-05-07,2014-11-30] [9,1,4294967295]",
         "true [9] [old] [old] [old] [9]", "true [9,0] [old,] [old,] [old,] [9,0]", "false [9] [old] [old] [old] [9]"},
        {"LoadDocRootInfo into three arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             Numbers types;
             const bool ran = CQVBaseFun::LoadDocRootInfo(conn, ids, names, types);
             return Line(ran, ids, names, types);
         },
         {{"41", "n1", "1"}, {"42", "n2", "2"}},
         "true [9,41,42] [old,n1,n2] [9,1,2]",
         "true [9] [old] [9]",
         "true [9,0] [old,] [9,0]",
         "false [9] [old] [9]"},
        {"LoadDocRootInfo of a type into two arrays",
         [](CAConnect& conn) {
             Numbers ids;
             Texts names;
             const bool ran = CQVBaseFun::LoadDocRootInfo(conn, ids, names, 1);
             return Line(ran, ids, names);
         },
         {{"41", "n1"}, {"42", "n2"}},
         "true [9,41,42] [old,n1,n2]",
         "true [9] [old]",
         "true [9,0] [old,]",
         "false [9] [old]"},
    };
}

std::vector<WriteCase> RootWrites()
{
    return {
        {"UpdateDocRoot", [](CAConnect& conn) { return CQVBaseFun::UpdateDocRoot(conn, 41, "n", "p", 1); }},
        {"DeleteDRItem", [](CAConnect& conn) { return CQVBaseFun::DeleteDRItem(conn, 41); }},
        {"DeleteDocRoot by id", [](CAConnect& conn) { return CQVBaseFun::DeleteDocRoot(conn, 41); }},
        {"DeleteDocRoot by name", [](CAConnect& conn) { return CQVBaseFun::DeleteDocRoot(conn, "n", 1); }},
        {"DeleteDocRootLink", [](CAConnect& conn) { return CQVBaseFun::DeleteDocRootLink(conn, 41, 105, 7); }},
    };
}

class DocRootBehaviour : public behaviour::Script {
protected:
    DocRootBehaviour() : Script("documents/QVBaseFun_DocRoots.cpp") {}
};

TEST_F(DocRootBehaviour, ReadsGiveWhatTheRowsHoldOrTheirPresets)
{
    ExpectAnswersAreRead(RootLookUps());
    ExpectAnswersAreRead(RootLists());
}

TEST_F(DocRootBehaviour, LookUpsReadTheFirstRowOnly) { ExpectOnlyTheFirstRowIsRead(RootLookUps()); }

TEST_F(DocRootBehaviour, ReadsOfAClosedConnectionGiveFalseAndSayNothing)
{
    ExpectClosedReadsSayNothing(RootLookUps());
    ExpectClosedReadsSayNothing(RootLists());
}

TEST_F(DocRootBehaviour, WhatTheEngineRefusesIsReportedOnceWithALineOfItsOwn)
{
    ExpectRefusedReadsAreReported(RootLookUps());
    ExpectRefusedReadsAreReported(RootLists());
    ExpectRefusedWritesAreReported(RootWrites());
}

TEST_F(DocRootBehaviour, AListThatBreaksOffKeepsTheRowsReadSoFar) { ExpectBrokenListsKeepTheirRows(RootLists()); }

TEST_F(DocRootBehaviour, WritesGiveTrueWhateverTheEngineCounts) { ExpectWritesGiveTrueWhateverIsCounted(RootWrites()); }

TEST_F(DocRootBehaviour, WritesOnAClosedConnectionAreReportedAsErrors) { ExpectClosedWritesAreReported(RootWrites()); }

TEST_F(DocRootBehaviour, RootsAreCountedAsWideAsTheEngineKindMakesThem)
{
    for (const int kind : {0, 1, 3, 6}) {
        Connect(kind);
        m_database->Answer(Rows({{"4294967296"}})); // 2^32, of which an int sees 0
        bool result = false;
        EXPECT_TRUE(CQVBaseFun::HasNoDefCorpDocRoot(*m_conn, result));
        EXPECT_EQ(result, kind == 6) << kind;
    }
}

// ---- Folders -----------------------------------------------------------------------------------------------------

std::vector<ReadCase> FolderLookUps()
{
    return {
        {"GetMaxIDFromDocVFolder",
         [](CAConnect& conn) {
             int id = 77;
             const bool ran = CQVBaseFun::GetMaxIDFromDocVFolder(conn, id);
             return Line(ran, id);
         },
         {{"41"}},
         "true 41",
         "true 0",
         "true 0",
         "false 0"},
        {"ExistFolderInRootLink",
         [](CAConnect& conn) {
             bool exists = true;
             const bool ran = CQVBaseFun::ExistFolderInRootLink(conn, "n", 1, exists);
             return Line(ran, exists);
         },
         {{"41"}},
         "true true",
         "true false",
         "true true",
         "false false"},
        {"ExistFolderInVFolderLink",
         [](CAConnect& conn) {
             bool exists = true;
             const bool ran = CQVBaseFun::ExistFolderInVFolderLink(conn, "n", 1, exists);
             return Line(ran, exists);
         },
         {{"41"}},
         "true true",
         "true false",
         "true true",
         "false false"},
        {"GetFolerInfo",
         [](CAConnect& conn) {
             CString name = "n";
             CString created = "c";
             const bool ran = CQVBaseFun::GetFolerInfo(conn, 41, name, created);
             return Line(ran, name, created);
         },
         {{"Letters", "2013-05-07"}, {"x", "2014-01-01 00:00:00"}},
         R"(true "Letters" "2013-05-07 00:00:00")",
         R"(true "" "")",
         R"(true "" "")",
         R"(false "" "")"},
    };
}

std::vector<ReadCase> FolderLists()
{
    return {
        {"LoadDocRootFolder",
         [](CAConnect& conn) {
             Texts names;
             Numbers ids;
             const bool ran = CQVBaseFun::LoadDocRootFolder(conn, 1, names, ids);
             return Line(ran, names, ids);
         },
         {{"41", "n1"}, {"42", "n2"}},
         "true [old,n1,n2] [9,41,42]",
         "true [old] [9]",
         "true [old,] [9,0]",
         "false [old] [9]"},
        {"LoadFolderSubFolder",
         [](CAConnect& conn) {
             Texts names;
             Numbers ids;
             const bool ran = CQVBaseFun::LoadFolderSubFolder(conn, 1, names, ids);
             return Line(ran, names, ids);
         },
         {{"41", "n1"}, {"42", "n2"}},
         "true [old,n1,n2] [9,41,42]",
         "true [old] [9]",
         "true [old,] [9,0]",
         "false [old] [9]"},
    };
}

std::vector<WriteCase> FolderWrites()
{
    return {
        {"UpdateFolderStyle", [](CAConnect& conn) { return CQVBaseFun::UpdateFolderStyle(conn, 41, 1); }},
        {"UpdateFolderName", [](CAConnect& conn) { return CQVBaseFun::UpdateFolderName(conn, 41, "n"); }},
        {"DeleteDocVFolder", [](CAConnect& conn) { return CQVBaseFun::DeleteDocVFolder(conn, 41); }},
        {"DeleteDocVFolderLink", [](CAConnect& conn) { return CQVBaseFun::DeleteDocVFolderLink(conn, 41, 105, 7); }},
    };
}

class DocFolderBehaviour : public behaviour::Script {
protected:
    DocFolderBehaviour() : Script("documents/QVBaseFun_DocFolders.cpp") {}
};

TEST_F(DocFolderBehaviour, ReadsGiveWhatTheRowsHoldOrTheirPresets)
{
    ExpectAnswersAreRead(FolderLookUps());
    ExpectAnswersAreRead(FolderLists());
}

TEST_F(DocFolderBehaviour, LookUpsReadTheFirstRowOnly) { ExpectOnlyTheFirstRowIsRead(FolderLookUps()); }

TEST_F(DocFolderBehaviour, ReadsOfAClosedConnectionGiveFalseAndSayNothing)
{
    ExpectClosedReadsSayNothing(FolderLookUps());
    ExpectClosedReadsSayNothing(FolderLists());
}

TEST_F(DocFolderBehaviour, WhatTheEngineRefusesIsReportedOnceWithALineOfItsOwn)
{
    ExpectRefusedReadsAreReported(FolderLookUps());
    ExpectRefusedReadsAreReported(FolderLists());
    ExpectRefusedWritesAreReported(FolderWrites());
}

TEST_F(DocFolderBehaviour, AListThatBreaksOffKeepsTheRowsReadSoFar) { ExpectBrokenListsKeepTheirRows(FolderLists()); }

TEST_F(DocFolderBehaviour, WritesGiveTrueWhateverTheEngineCounts)
{
    ExpectWritesGiveTrueWhateverIsCounted(FolderWrites());
}

TEST_F(DocFolderBehaviour, WritesOnAClosedConnectionAreReportedAsErrors)
{
    ExpectClosedWritesAreReported(FolderWrites());
}

// ---- The records -------------------------------------------------------------------------------------------------

std::string Shown(const CDocRootItem& item)
{
    return Line(item.m_nID, item.m_strName, item.m_strDesc, item.m_strDataPath, item.m_nMaxSize, item.m_nUsedSize,
                item.m_strDispName, item.m_bHaveSubItem, item.m_nType, item.m_ulStyle, item.m_nOwnerID);
}

std::string Shown(const DocLink& link)
{
    return Line(link.m_nID, link.m_strDispName, link.m_nStyle, link.m_nHaveSubItem, link.m_nPObjID, link.m_nSClassID,
                link.m_nSObjID, link.m_bIsRef, link.m_nRelType, link.m_nAce, link.m_nCreatorID, link.m_strCreatorName,
                link.m_strNote, link.m_nOrder);
}

class DocRootItemOnAScript : public behaviour::Script {
protected:
    DocRootItemOnAScript() : Script("documents/DocRootItem.cpp") {}
};

TEST_F(DocRootItemOnAScript, BeginsEmptyAndNow)
{
    static_assert(std::is_base_of_v<CObject, CDocRootItem>);
    const COleDateTime before = COleDateTime::GetCurrentTime();
    const CDocRootItem item;
    const COleDateTime after = COleDateTime::GetCurrentTime();
    EXPECT_EQ(Shown(item), R"(0 "" "" "" 0 0 "" false 0 0 0)");
    EXPECT_TRUE(before <= item.m_dtCreate && item.m_dtCreate <= after);
}

TEST_F(DocRootItemOnAScript, ErrorsDropTheirText)
{
    const std::vector<RecordCase> methods = {
        {"SaveData", [](CAConnect& conn) { return Line(CDocRootItem().SaveData(conn)); }, "false", false, true},
        {"LoadData", [](CAConnect& conn) { return Line(CDocRootItem().LoadData(conn)); }, "false", false, false},
        {"UpdateData", [](CAConnect& conn) { return Line(CDocRootItem().UpdateData(conn)); }, "false", false, true},
    };
    ExpectRefusedRecordsKeepOrDropTheText(methods);
    ExpectClosedRecordsFail(methods);
}

TEST_F(DocRootItemOnAScript, KeepsTheBackslashesThatSavingDoubledOnKindSix)
{
    for (const int kind : {0, 1, 3, 6}) {
        CDocRootItem item;
        item.m_strName = R"(n\)";
        item.m_strDataPath = R"(C:\data\main)";
        Connect(kind);
        EXPECT_TRUE(item.SaveData(*m_conn));
        EXPECT_STREQ(item.m_strDataPath, kind == 6 ? R"(C:\\data\\main)" : R"(C:\data\main)");
        EXPECT_STREQ(item.m_strName, R"(n\)");
        EXPECT_TRUE(item.UpdateData(*m_conn));
        EXPECT_STREQ(item.m_strDataPath, kind == 6 ? R"(C:\\data\\main)" : R"(C:\data\main)");
    }
}

TEST_F(DocRootItemOnAScript, LoadsItsRowAndKeepsTheStatusOfItsDate)
{
    const auto row = Rows({{"n", "d", "p", "71", "72", "dn", "1", "73", "-1", "74", "2013-05-07 09:03:00"}});
    CDocRootItem item;
    item.m_nID = 41;
    item.m_dtCreate.SetStatus(COleDateTime::null);
    Connect();
    m_database->Answer(row);
    EXPECT_TRUE(item.LoadData(*m_conn));
    EXPECT_EQ(Shown(item), R"(41 "n" "d" "p" 71 72 "dn" true 73 4294967295 74)");
    EXPECT_EQ(item.m_dtCreate.GetStatus(), COleDateTime::null);
    item.m_dtCreate.SetStatus(COleDateTime::valid);
    EXPECT_STREQ(item.m_dtCreate.Format("%Y-%m-%d %H:%M:%S"), "2013-05-07 09:03:00");

    const std::string before = Shown(item);
    Connect();
    EXPECT_TRUE(item.LoadData(*m_conn)); // no row
    EXPECT_EQ(Shown(item), before);
    Connect();
    m_database->Answer(Rows({std::vector<scripted::Value>(11)}));
    EXPECT_TRUE(item.LoadData(*m_conn));
    EXPECT_EQ(Shown(item), before);
    EXPECT_STREQ(item.m_dtCreate.Format("%Y-%m-%d %H:%M:%S"), "2013-05-07 09:03:00");
    ExpectNoError();
}

class DocRecordsOnAScript : public behaviour::Script {
protected:
    DocRecordsOnAScript() : Script("") {}
};

TEST_F(DocRecordsOnAScript, BeginEmpty)
{
    static_assert(std::is_base_of_v<CObject, CDocFolderItem> && std::is_base_of_v<CObject, CDocRootLinkItem> &&
                  std::is_base_of_v<CObject, CDocFolderLinkItem>);
    EXPECT_EQ(Shown(CDocRootLinkItem()), R"(0 "" 0 0 0 0 0 false 0 0 0 "" "" 0)");
    EXPECT_EQ(Shown(CDocFolderLinkItem()), R"(0 "" 0 0 0 0 0 false 0 0 0 "" "" 0)");
    const COleDateTime before = COleDateTime::GetCurrentTime();
    const CDocFolderItem item;
    const COleDateTime after = COleDateTime::GetCurrentTime();
    EXPECT_EQ(Line(item.m_nID, item.m_strName, item.m_nStyle, item.m_bHaveSubItem, item.m_nGClassID, item.m_nGObjID,
                   item.m_nCreatorID, item.m_strCreatorName),
              R"(0 "" 0 false 0 0 0 "")");
    EXPECT_TRUE(before <= item.m_dtCreate && item.m_dtCreate <= after);
}

TEST_F(DocRecordsOnAScript, SayWhetherTheyWereTakenAndDropAnErrorsText)
{
    Connect();
    EXPECT_TRUE(CDocRootLinkItem().SaveData(*m_conn));
    EXPECT_TRUE(CDocFolderItem().SaveData(*m_conn));
    EXPECT_TRUE(CDocFolderLinkItem().SaveData(*m_conn));
    const std::vector<RecordCase> methods = {
        {"root link", [](CAConnect& conn) { return Line(CDocRootLinkItem().SaveData(conn)); }, "false", false, true},
        {"folder", [](CAConnect& conn) { return Line(CDocFolderItem().SaveData(conn)); }, "false", false, true},
        {"folder link", [](CAConnect& conn) { return Line(CDocFolderLinkItem().SaveData(conn)); }, "false", false,
         true},
    };
    ExpectRefusedRecordsKeepOrDropTheText(methods);
    ExpectClosedRecordsFail(methods);
}

} // namespace

} // namespace document_behaviour
