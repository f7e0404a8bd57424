#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "documents/DocFolderItem.h"
#include "documents/DocFolderLinkItem.h"
#include "documents/DocRootItem.h"
#include "documents/DocRootLinkItem.h"
#include "tests/directory/Engines.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

using engines::Copied;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

// Every operation on document roots and folders, on every engine.

namespace {

constexpr int kFolder = 105;

class DocumentsOnAnEngine : public engines::OnAnEngine {
protected:
    int AddRoot(const char* name, int type, const char* path = "p")
    {
        CDocRootItem item;
        item.m_strName = name;
        item.m_nType = type;
        item.m_strDataPath = path;
        item.m_dtCreate = COleDateTime(2013, 5, 7, 9, 3, 0);
        item.m_ulStyle = 0x80000001UL;
        EXPECT_TRUE(item.SaveData(m_conn));
        int id = 0;
        EXPECT_TRUE(CQVBaseFun::GetDocRootID(m_conn, name, type, id));
        return id;
    }

    int AddFolder(const char* name)
    {
        CDocFolderItem item;
        item.m_strName = name;
        item.m_dtCreate = COleDateTime(2013, 5, 7, 9, 3, 0);
        EXPECT_TRUE(item.SaveData(m_conn));
        int id = 0;
        EXPECT_TRUE(CQVBaseFun::GetMaxIDFromDocVFolder(m_conn, id));
        return id;
    }

    template <class Link>
    void Place(int parentID, int childID, int childClass = kFolder)
    {
        Link link;
        link.m_nPObjID = parentID;
        link.m_nSClassID = childClass;
        link.m_nSObjID = childID;
        EXPECT_TRUE(link.SaveData(m_conn));
    }
};

// ---- Roots -------------------------------------------------------------------------------------------------------

TEST_P(DocumentsOnAnEngine, ARootIsSavedLoadedAndUpdatedWithEveryMember)
{
    CDocRootItem saved;
    saved.m_strName = Given(R"(Main\ é Ю)");
    saved.m_strDesc = "d";
    saved.m_strDataPath = R"(C:\data)";
    saved.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
    saved.m_nMaxSize = 1;
    saved.m_nUsedSize = 2;
    saved.m_strDispName = "dn";
    saved.m_bHaveSubItem = true;
    saved.m_nType = 3;
    saved.m_ulStyle = 0xFFFFFFFFUL;
    saved.m_nOwnerID = 4;
    EXPECT_TRUE(saved.SaveData(m_conn));
    CDocRootItem item;
    EXPECT_TRUE(CQVBaseFun::GetDRItemIDByName(m_conn, saved.m_strName, 3, item.m_nID));
    EXPECT_TRUE(item.LoadData(m_conn));
    EXPECT_STREQ(item.m_strName, R"(Main\ é Ю)");
    EXPECT_STREQ(item.m_strDesc, "d");
    EXPECT_STREQ(item.m_strDataPath, R"(C:\data)");
    EXPECT_EQ(item.m_dtCreate, COleDateTime(1987, 6, 5, 4, 3, 2));
    EXPECT_EQ(item.m_nMaxSize, 1);
    EXPECT_EQ(item.m_nUsedSize, 2);
    EXPECT_STREQ(item.m_strDispName, "dn");
    EXPECT_TRUE(item.m_bHaveSubItem);
    EXPECT_EQ(item.m_nType, 3);
    EXPECT_EQ(item.m_ulStyle, 0xFFFFFFFFUL);
    EXPECT_EQ(item.m_nOwnerID, 4);

    item.m_strName = "n";
    item.m_strDesc = "e";
    item.m_strDataPath = "q";
    item.m_dtCreate = COleDateTime(2000, 1, 1, 0, 0, 0);
    item.m_nMaxSize = 11;
    item.m_nUsedSize = 12;
    item.m_strDispName = "en";
    item.m_bHaveSubItem = false;
    item.m_nType = 13;
    item.m_ulStyle = 14;
    item.m_nOwnerID = 15;
    EXPECT_TRUE(item.UpdateData(m_conn));
    EXPECT_THAT(Rows("SELECT Col_Name, Col_Desc, Col_DataPath, Col_Dt_Create, Col_MaxSize, Col_UsedSize, Col_DispName, "
                     "Col_HaveSubItem, Col_Type, Col_Style, Col_OwnerID FROM Tab_Doc_Root"),
                ElementsAre("n|e|q|1987-06-05 04:03:02|11|12|en|0|13|14|15"));
    ExpectNoError();
}

TEST_P(DocumentsOnAnEngine, RootsAreListedByTypeWithTheirDates)
{
    const auto first = static_cast<unsigned>(AddRoot("a", 1));
    const auto second = static_cast<unsigned>(AddRoot("b", 2));
    const auto third = static_cast<unsigned>(AddRoot("c", 3));
    CUIntArray ids;
    CStringArray names;
    CStringArray paths;
    CStringArray created;
    CUIntArray numbers;
    EXPECT_TRUE(CQVBaseFun::LoadDocRootInfo(m_conn, ids, names, paths, created, numbers));
    EXPECT_THAT(Copied(ids), UnorderedElementsAre(first, second, third));
    EXPECT_THAT(Copied(names), UnorderedElementsAre("a", "b", "c"));
    EXPECT_THAT(Copied(created), ElementsAre("2013-05-07", "2013-05-07", "2013-05-07"));
    EXPECT_THAT(Copied(numbers), UnorderedElementsAre(1U, 2U, 3U));
    EXPECT_TRUE(CQVBaseFun::LoadDocRootInfoEx(m_conn, ids, names, paths, created, numbers));
    EXPECT_THAT(Copied(numbers), UnorderedElementsAre(1U, 2U, 3U, 1U, 2U));
    EXPECT_THAT(Copied(paths), SizeIs(5));

    CUIntArray ofType;
    CStringArray times;
    CUIntArray styles;
    EXPECT_TRUE(CQVBaseFun::LoadDocRootInfo(m_conn, 2, ofType, names, paths, times, styles));
    EXPECT_THAT(Copied(ofType), ElementsAre(second));
    EXPECT_THAT(Copied(times), ElementsAre("2013-05-07 09:03:00"));
    EXPECT_THAT(Copied(styles), ElementsAre(0x80000001U));

    CUIntArray shortIds;
    CStringArray shortNames;
    CUIntArray types;
    EXPECT_TRUE(CQVBaseFun::LoadDocRootInfo(m_conn, shortIds, shortNames, types));
    EXPECT_THAT(Copied(types), UnorderedElementsAre(1U, 2U, 3U));
    EXPECT_TRUE(CQVBaseFun::LoadDocRootInfo(m_conn, shortIds, shortNames, 3));
    EXPECT_THAT(Copied(shortNames), UnorderedElementsAre("a", "b", "c", "c"));
    ExpectNoError();
}

TEST_P(DocumentsOnAnEngine, ARootIsFoundByNameAndTypeTogether)
{
    const int id = AddRoot("Main", 1, "here");
    bool exists = false;
    int found = 77;
    CString path;
    unsigned long style = 0;
    EXPECT_TRUE(CQVBaseFun::ExistDocRootItem(m_conn, "Main", 1, exists));
    EXPECT_TRUE(exists);
    EXPECT_TRUE(CQVBaseFun::GetDRItemIDByName(m_conn, "Main", 1, found));
    EXPECT_EQ(found, id);
    EXPECT_TRUE(CQVBaseFun::GetDocRootInfo(m_conn, "Main", 1, path, style));
    EXPECT_STREQ(path, "here");
    EXPECT_EQ(style, 0x80000001UL);
    EXPECT_TRUE(CQVBaseFun::ExistDocRootItem(m_conn, "Main", 2, exists));
    EXPECT_FALSE(exists);
    EXPECT_TRUE(CQVBaseFun::GetDocRootID(m_conn, "Main", 2, found));
    EXPECT_EQ(found, 0);
    EXPECT_TRUE(CQVBaseFun::GetDocRootInfo(m_conn, "Main", 2, path, style));
    EXPECT_STREQ(path, "");
    EXPECT_EQ(style, 0UL);
    ExpectNoError();
}

TEST_P(DocumentsOnAnEngine, TheCompanysRootIsOfTypeOne)
{
    bool result = true;
    EXPECT_TRUE(CQVBaseFun::HasNoDefCorpDocRoot(m_conn, result));
    EXPECT_FALSE(result);
    AddRoot("b", 2);
    EXPECT_TRUE(CQVBaseFun::HasNoDefCorpDocRoot(m_conn, result));
    EXPECT_FALSE(result);
    AddRoot("a", 1);
    EXPECT_TRUE(CQVBaseFun::HasNoDefCorpDocRoot(m_conn, result));
    EXPECT_TRUE(result);
}

TEST_P(DocumentsOnAnEngine, RootsAreChangedAndDeletedAloneAndLinksByTheirThreeIds)
{
    const int id = AddRoot("a", 1);
    const int second = AddRoot("b", 2);
    const int third = AddRoot("c", 3);
    Place<CDocRootLinkItem>(id, 7);
    Place<CDocRootLinkItem>(id, 8);
    EXPECT_TRUE(CQVBaseFun::UpdateDocRoot(m_conn, id, "n", R"(C:\new)", -1));
    EXPECT_THAT(Rows("SELECT Col_Name, Col_DataPath, Col_Style FROM Tab_Doc_Root WHERE Col_Type = 1"),
                ElementsAre(R"(n|C:\new|-1)"));
    EXPECT_TRUE(CQVBaseFun::DeleteDocRoot(m_conn, "b", 1)); // of another type
    EXPECT_TRUE(CQVBaseFun::DeleteDocRoot(m_conn, "b", 2));
    EXPECT_TRUE(CQVBaseFun::DeleteDRItem(m_conn, second));
    EXPECT_TRUE(CQVBaseFun::DeleteDRItem(m_conn, third));
    EXPECT_THAT(Rows("SELECT Col_Name FROM Tab_Doc_Root"), ElementsAre("n"));
    EXPECT_TRUE(CQVBaseFun::DeleteDocRoot(m_conn, id));
    EXPECT_THAT(Rows("SELECT Col_Name FROM Tab_Doc_Root"), IsEmpty());
    EXPECT_TRUE(CQVBaseFun::DeleteDocRootLink(m_conn, id, 104, 7));
    EXPECT_TRUE(CQVBaseFun::DeleteDocRootLink(m_conn, id, kFolder, 7));
    EXPECT_THAT(Rows("SELECT Col_S_ObjID FROM Tab_Doc_Root_Link"), ElementsAre("8"));
    ExpectNoError();
}

TEST_P(DocumentsOnAnEngine, LinksAreSavedWithEveryMember)
{
    const auto fill = [this](DocLink& link) {
        link.m_strDispName = Given(R"(dn\)");
        link.m_nStyle = 1;
        link.m_nHaveSubItem = 2;
        link.m_nPObjID = 3;
        link.m_nSClassID = 4;
        link.m_nSObjID = 5;
        link.m_bIsRef = true;
        link.m_nRelType = 6;
        link.m_nAce = 7;
        link.m_nCreatorID = 8;
        link.m_strCreatorName = "c";
        link.m_strNote = "n";
        link.m_nOrder = 9;
    };
    CDocRootLinkItem underRoot;
    fill(underRoot);
    EXPECT_TRUE(underRoot.SaveData(m_conn));
    CDocFolderLinkItem underFolder;
    fill(underFolder);
    EXPECT_TRUE(underFolder.SaveData(m_conn));
    for (const char* table : {"Tab_Doc_Root_Link", "Tab_Doc_VFolder_Link"}) {
        EXPECT_THAT(Rows(std::string("SELECT Col_DispName, Col_Style, Col_HaveSubItem, Col_P_ObjID, Col_S_ClassID, "
                                     "Col_S_ObjID, Col_IsRef, Col_RelType, Col_Ace, Col_Creator_ID, Col_Creator_Name, "
                                     "Col_Note, Col_Order FROM ") +
                         table),
                    ElementsAre(R"(dn\|1|2|3|4|5|1|6|7|8|c|n|9)"));
    }
    ExpectNoError();
}

// ---- Folders -----------------------------------------------------------------------------------------------------

TEST_P(DocumentsOnAnEngine, AFolderIsSavedWithEveryMember)
{
    CDocFolderItem item;
    item.m_strName = Given(R"(Letters\ é)");
    item.m_nStyle = -1;
    item.m_bHaveSubItem = true;
    item.m_nGClassID = 1;
    item.m_nGObjID = 2;
    item.m_nCreatorID = 3;
    item.m_strCreatorName = "c";
    item.m_dtCreate = COleDateTime(1987, 6, 5, 4, 3, 2);
    EXPECT_TRUE(item.SaveData(m_conn));
    EXPECT_EQ(item.m_nID, 0);
    EXPECT_THAT(Rows("SELECT Col_Name, Col_Style, Col_HaveSubItem, Col_G_ClassID, Col_G_ObjID, Col_Creator_ID, "
                     "Col_Creator_Name, Col_Dt_Create FROM Tab_Doc_VFolder"),
                ElementsAre(R"(Letters\ é|-1|1|1|2|3|c|1987-06-05 04:03:02)"));
    ExpectNoError();
}

TEST_P(DocumentsOnAnEngine, TheHighestFolderIsZeroWhenThereIsNone)
{
    int id = 77;
    EXPECT_TRUE(CQVBaseFun::GetMaxIDFromDocVFolder(m_conn, id));
    EXPECT_EQ(id, 0);
    const int first = AddFolder("a");
    EXPECT_GT(AddFolder("b"), first);
}

TEST_P(DocumentsOnAnEngine, FoldersAreListedAndFoundUnderTheirParents)
{
    const int root = AddRoot("Main", 1);
    const int letters = AddFolder("Letters");
    const int old = AddFolder("Old");
    const int gone = AddFolder("Gone");
    Place<CDocRootLinkItem>(root, letters);
    Place<CDocRootLinkItem>(root, gone);
    Place<CDocRootLinkItem>(root, old, 104); // an object of another class
    Place<CDocFolderLinkItem>(letters, old);
    EXPECT_TRUE(CQVBaseFun::DeleteDocVFolder(m_conn, gone));

    CStringArray names;
    CUIntArray ids;
    EXPECT_TRUE(CQVBaseFun::LoadDocRootFolder(m_conn, root, names, ids));
    EXPECT_THAT(Copied(names), ElementsAre("Letters"));
    EXPECT_THAT(Copied(ids), ElementsAre(static_cast<unsigned>(letters)));
    EXPECT_TRUE(CQVBaseFun::LoadFolderSubFolder(m_conn, letters, names, ids));
    EXPECT_THAT(Copied(names), ElementsAre("Letters", "Old"));
    EXPECT_TRUE(CQVBaseFun::LoadFolderSubFolder(m_conn, old, names, ids));
    EXPECT_THAT(Copied(ids), SizeIs(2));

    bool exists = false;
    EXPECT_TRUE(CQVBaseFun::ExistFolderInRootLink(m_conn, "Letters", root, exists));
    EXPECT_TRUE(exists);
    EXPECT_TRUE(CQVBaseFun::ExistFolderInRootLink(m_conn, "Old", root, exists));
    EXPECT_FALSE(exists);
    EXPECT_TRUE(CQVBaseFun::ExistFolderInVFolderLink(m_conn, "Old", letters, exists));
    EXPECT_TRUE(exists);
    EXPECT_TRUE(CQVBaseFun::ExistFolderInVFolderLink(m_conn, "Letters", letters, exists));
    EXPECT_FALSE(exists);
    ExpectNoError();
}

TEST_P(DocumentsOnAnEngine, AFolderIsDescribedRenamedStyledAndTakenFromItsParent)
{
    const int letters = AddFolder("Letters");
    const int old = AddFolder("Old");
    Place<CDocFolderLinkItem>(letters, old);
    CString name = "n";
    CString created = "c";
    EXPECT_TRUE(CQVBaseFun::GetFolerInfo(m_conn, letters, name, created));
    EXPECT_STREQ(name, "Letters");
    EXPECT_STREQ(created, "2013-05-07 09:03:00");
    EXPECT_TRUE(CQVBaseFun::GetFolerInfo(m_conn, 4711, name, created));
    EXPECT_STREQ(name, "");
    EXPECT_STREQ(created, "");
    EXPECT_TRUE(CQVBaseFun::UpdateFolderName(m_conn, letters, "Post"));
    EXPECT_TRUE(CQVBaseFun::UpdateFolderStyle(m_conn, letters, 0xFFFFFFFFUL));
    EXPECT_THAT(Rows("SELECT Col_Name, Col_Style FROM Tab_Doc_VFolder"), UnorderedElementsAre("Post|-1", "Old|0"));
    EXPECT_TRUE(CQVBaseFun::DeleteDocVFolderLink(m_conn, letters, 104, old));
    EXPECT_THAT(Rows("SELECT Col_S_ObjID FROM Tab_Doc_VFolder_Link"), SizeIs(1));
    EXPECT_TRUE(CQVBaseFun::DeleteDocVFolderLink(m_conn, letters, kFolder, old));
    EXPECT_THAT(Rows("SELECT Col_S_ObjID FROM Tab_Doc_VFolder_Link"), IsEmpty());
    ExpectNoError();
}

TEST_P(DocumentsOnAnEngine, AQuoteInANameIsRefusedAndChangesNothing)
{
    CDocRootItem root;
    root.m_strName = "o'n";
    EXPECT_FALSE(root.SaveData(m_conn));
    CDocFolderItem folder;
    folder.m_strName = "o'n";
    EXPECT_FALSE(folder.SaveData(m_conn));
    ExpectNoError(); // records drop the text
    bool exists = true;
    EXPECT_FALSE(CQVBaseFun::ExistDocRootItem(m_conn, "o'n", 1, exists));
    EXPECT_FALSE(CQVBaseFun::ExistFolderInRootLink(m_conn, "o'n", 1, exists));
    EXPECT_FALSE(CQVBaseFun::UpdateFolderName(m_conn, 1, "o'n"));
    EXPECT_THAT(m_watch.messages, SizeIs(3));
}

INSTANTIATE_TEST_SUITE_P(Engines, DocumentsOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);

} // namespace
