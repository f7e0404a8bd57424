#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
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

// Every operation on messages, add-ins, packages and the board, on every engine.

namespace {

// ---- Messages ----------------------------------------------------------------------------------------------------

class MessagesOnAnEngine : public engines::OnAnEngine {
protected:
    void Add(int id, const std::string& date)
    {
        Execute("INSERT INTO kel_Msg (Col_ID, Col_SendDate) VALUES (" + std::to_string(id) + ", '" + date + "')");
    }

    void AddParts(int messageID)
    {
        for (const char* table : {"kel_Msg_AttachMent", "kel_Msg_Rece", "kel_Msg_Rece"}) {
            Execute(std::string("INSERT INTO ") + table + " (Col_MsgID) VALUES (" + std::to_string(messageID) + ")");
        }
    }

    std::vector<std::string> MessageIDsIn(const char* table, const char* column)
    {
        return Rows(std::string("SELECT ") + column + " FROM " + table + " ORDER BY " + column);
    }
};

TEST_P(MessagesOnAnEngine, MessagesUpToADateGoWithTheirPartsAndWithOrphans)
{
    Add(1, "2013-05-07 09:02:59");
    Add(2, "2013-05-07 09:03:00");
    Add(3, "2013-05-07 09:03:01");
    for (const int id : {1, 2, 3, 99}) {
        AddParts(id);
    }
    EXPECT_TRUE(CQVBaseFun::ClearMsgData(m_conn, "2013-05-07 09:03:00"));
    EXPECT_THAT(MessageIDsIn("kel_Msg", "Col_ID"), ElementsAre("3"));
    EXPECT_THAT(MessageIDsIn("kel_Msg_AttachMent", "Col_MsgID"), ElementsAre("3"));
    EXPECT_THAT(MessageIDsIn("kel_Msg_Rece", "Col_MsgID"), ElementsAre("3", "3"));
    AddParts(98);
    EXPECT_TRUE(CQVBaseFun::ClearMsgData(m_conn, "1999-01-01")); // no message; the orphans go
    EXPECT_THAT(MessageIDsIn("kel_Msg_AttachMent", "Col_MsgID"), ElementsAre("3"));
    ExpectNoError();
}

TEST_P(MessagesOnAnEngine, ADayMeansItsFirstMomentAndTheSweepsAreStepsOfTheirOwn)
{
    Add(1, "2013-05-07 00:00:00");
    Add(2, "2013-05-07 00:00:01");
    AddParts(1);
    EXPECT_TRUE(CQVBaseFun::DeleteMsgData(m_conn, "2013-05-07"));
    EXPECT_THAT(MessageIDsIn("kel_Msg", "Col_ID"), ElementsAre("2"));
    EXPECT_THAT(MessageIDsIn("kel_Msg_AttachMent", "Col_MsgID"), SizeIs(1));
    EXPECT_TRUE(CQVBaseFun::DeleteAttachNoMsg(m_conn));
    EXPECT_THAT(MessageIDsIn("kel_Msg_AttachMent", "Col_MsgID"), IsEmpty());
    EXPECT_THAT(MessageIDsIn("kel_Msg_Rece", "Col_MsgID"), SizeIs(2));
    EXPECT_TRUE(CQVBaseFun::DeleteRecvNoMsg(m_conn));
    EXPECT_THAT(MessageIDsIn("kel_Msg_Rece", "Col_MsgID"), IsEmpty());
    ExpectNoError();
}

TEST_P(MessagesOnAnEngine, ATextThatIsNoDateDeletesNothing)
{
    Add(1, "2013-05-07 00:00:00");
    EXPECT_FALSE(CQVBaseFun::ClearMsgData(m_conn, "tomorrow"));
    EXPECT_THAT(MessageIDsIn("kel_Msg", "Col_ID"), SizeIs(1));
    EXPECT_THAT(m_watch.messages, SizeIs(1));
}

TEST_P(MessagesOnAnEngine, TheOldestDateIsFoundBelowTheCallersOwn)
{
    const COleDateTime now = COleDateTime::GetCurrentTime();
    COleDateTime date = now;
    EXPECT_TRUE(CQVBaseFun::GetMinDate(m_conn, "", date));
    EXPECT_EQ(date, now);
    Add(1, "2013-05-07 09:03:00");
    Add(2, "2012-02-29 23:59:59");
    EXPECT_TRUE(CQVBaseFun::GetMinDate(m_conn, "", date));
    EXPECT_EQ(date, COleDateTime(2012, 2, 29, 23, 59, 59));
    date = COleDateTime(2000, 1, 1, 0, 0, 0);
    EXPECT_TRUE(CQVBaseFun::GetMinDate(m_conn, "", date));
    EXPECT_EQ(date, COleDateTime(2000, 1, 1, 0, 0, 0));
    ExpectNoError();
}

TEST_P(MessagesOnAnEngine, AnEntryOfTheLoginLogGoesByItsId)
{
    Execute("INSERT INTO kel_log (Col_ID) VALUES (1)");
    Execute("INSERT INTO kel_log (Col_ID) VALUES (2)");
    EXPECT_TRUE(CQVBaseFun::DeleteLoginLogItem(m_conn, 1));
    EXPECT_TRUE(CQVBaseFun::DeleteLoginLogItem(m_conn, 4711));
    EXPECT_THAT(Rows("SELECT Col_ID FROM kel_log"), ElementsAre("2"));
    ExpectNoError();
}

// ---- Add-ins and packages ----------------------------------------------------------------------------------------

class AddInsOnAnEngine : public engines::OnAnEngine {
protected:
    int Add(const char* name, int type, const char* package, int index)
    {
        EXPECT_TRUE(CQVBaseFun::InsertAddInInfo(m_conn, name, "s", type, true, "d", package, index));
        int id = 0;
        EXPECT_TRUE(CQVBaseFun::ExistAddInItem(m_conn, type, name, package, id));
        return id;
    }

    std::vector<std::string> Names() { return Rows("SELECT Col_Name FROM kel_AddIn ORDER BY Col_ID"); }
};

TEST_P(AddInsOnAnEngine, AnAddInsDataComeBackAsTheyWere)
{
    const char* data = R"(<a b='c' d="\n">O'Neil\\ é Ю)";
    EXPECT_TRUE(CQVBaseFun::InsertAddInInfo(m_conn, "n", data, 1, false, "d", "p", 2));
    CString read;
    EXPECT_TRUE(CQVBaseFun::GetAddInInfo(m_conn, "n", 1, read));
    EXPECT_STREQ(read, data);
    int id = 0;
    EXPECT_TRUE(CQVBaseFun::ExistAddInInfo(m_conn, "n", 1, id));
    EXPECT_TRUE(CQVBaseFun::UpdateAddInInfo(m_conn, id, R"('\')", "e"));
    EXPECT_TRUE(CQVBaseFun::GetAddInInfo(m_conn, "n", 1, read));
    EXPECT_STREQ(read, R"('\')");
    EXPECT_TRUE(CQVBaseFun::UpdateAddInInfo(m_conn, "n", 1, R"(\')", "f"));
    EXPECT_THAT(Rows("SELECT Col_Name, Col_Data, Col_AddInType, Col_IsPublic, Col_Disabled, Col_Desc, Col_PackageName, "
                     "Col_Index FROM kel_AddIn"),
                ElementsAre(R"(n|\'|1|0|0|f|p|2)"));
    EXPECT_TRUE(CQVBaseFun::GetAddInInfo(m_conn, "n", 2, read));
    EXPECT_STREQ(read, R"('\')");
    ExpectNoError();
}

TEST_P(AddInsOnAnEngine, AnAddInIsFoundByNameAndTypeAndOnRequestByItsPackage)
{
    const int id = Add("n", 1, "p", 2);
    int found = 77;
    EXPECT_TRUE(CQVBaseFun::ExistAddInInfo(m_conn, "n", 1, found));
    EXPECT_EQ(found, id);
    EXPECT_TRUE(CQVBaseFun::ExistAddInInfo(m_conn, "n", 2, found));
    EXPECT_EQ(found, 0);
    EXPECT_TRUE(CQVBaseFun::ExistAddInItem(m_conn, 1, "n", "q", found));
    EXPECT_EQ(found, 0);
}

TEST_P(AddInsOnAnEngine, AddInsAreListedByIndexTheHighestFirst)
{
    const int low = Add("low", 1, "p", 2);
    Add("high", 2, "q", 9);
    bool disabled = true;
    EXPECT_TRUE(CQVBaseFun::EnableAddInItem(m_conn, low, disabled));
    CUIntArray ids;
    CUIntArray types;
    CStringArray names;
    CUIntArray off;
    CUIntArray isPublic;
    CStringArray descs;
    CStringArray packages;
    EXPECT_TRUE(CQVBaseFun::LoadKelAddIn(m_conn, ids, types, names, off, isPublic, descs, packages));
    EXPECT_THAT(Copied(names), ElementsAre("high", "low"));
    EXPECT_THAT(Copied(types), ElementsAre(2U, 1U));
    EXPECT_THAT(Copied(off), ElementsAre(0U, 1U));
    EXPECT_THAT(Copied(isPublic), ElementsAre(1U, 1U));
    EXPECT_THAT(Copied(descs), ElementsAre("d", "d"));
    EXPECT_THAT(Copied(packages), ElementsAre("q", "p"));

    int index = 77;
    EXPECT_TRUE(CQVBaseFun::GetAddInItemMaxIndex(m_conn, index));
    EXPECT_EQ(index, 9);
    EXPECT_TRUE(CQVBaseFun::UpdateAddInItemIndex(m_conn, low, 10));
    EXPECT_TRUE(CQVBaseFun::GetAddInItemIndex(m_conn, low, index));
    EXPECT_EQ(index, 10);
    EXPECT_TRUE(CQVBaseFun::GetAddInItemIndex(m_conn, 4711, index));
    EXPECT_EQ(index, 0);
    CStringArray again;
    EXPECT_TRUE(CQVBaseFun::LoadKelAddIn(m_conn, ids, types, again, off, isPublic, descs, packages));
    EXPECT_THAT(Copied(again), ElementsAre("low", "high"));
    ExpectNoError();
}

TEST_P(AddInsOnAnEngine, TheHighestIndexOfNoneIsZero)
{
    int index = 77;
    EXPECT_TRUE(CQVBaseFun::GetAddInItemMaxIndex(m_conn, index));
    EXPECT_EQ(index, 0);
}

TEST_P(AddInsOnAnEngine, AddInsGoByIdOrByPackage)
{
    const int first = Add("a", 1, "p", 1);
    Add("b", 1, "p", 2);
    Add("c", 1, "p", 3);
    Add("d", 1, "q", 4);
    EXPECT_TRUE(CQVBaseFun::DeleteAddInItem(m_conn, first));
    EXPECT_THAT(Names(), ElementsAre("b", "c", "d"));
    EXPECT_TRUE(CQVBaseFun::DeleteAddIn(m_conn, "p"));
    EXPECT_THAT(Names(), ElementsAre("d"));
}

TEST_P(AddInsOnAnEngine, APackageIsInstalledUpdatedListedAndRemovedAlone)
{
    int id = 77;
    EXPECT_TRUE(CQVBaseFun::InsertPackageInfo(m_conn, "p", "2013-05-07 09:03:00", 3, "d", id));
    EXPECT_EQ(id, 1);
    EXPECT_TRUE(CQVBaseFun::InsertPackageInfo(m_conn, "q", "2013-05-07 09:03:00", 4, "e", id));
    EXPECT_EQ(id, 2);
    Add("a", 1, "p", 1);
    int version = 77;
    EXPECT_TRUE(CQVBaseFun::GetPackageInfo(m_conn, "p", id, version));
    EXPECT_EQ(id, 1);
    EXPECT_EQ(version, 3);
    EXPECT_TRUE(CQVBaseFun::UpdatePackageInfo(m_conn, "2014-01-01 00:00:00", 5, "f", 1));
    EXPECT_THAT(Rows("SELECT Col_Name, Col_Ver, Col_Desc, Col_Dt_Modify, Col_Disabled FROM Kel_Package WHERE Col_ID = "
                     "1"),
                ElementsAre("p|5|f|2014-01-01 00:00:00|0"));
    CUIntArray ids;
    CStringArray names;
    CStringArray versions;
    CStringArray descs;
    CUIntArray disabled;
    EXPECT_TRUE(CQVBaseFun::LoadAddInPackageInfo(m_conn, ids, names, versions, descs, disabled));
    EXPECT_THAT(Copied(names), UnorderedElementsAre("p", "q"));
    EXPECT_THAT(Copied(versions), UnorderedElementsAre("5", "4"));
    EXPECT_TRUE(CQVBaseFun::DeletePackage(m_conn, 1));
    EXPECT_TRUE(CQVBaseFun::GetPackageInfo(m_conn, "p", id, version));
    EXPECT_EQ(id, 0);
    EXPECT_EQ(version, 0);
    EXPECT_THAT(Names(), ElementsAre("a"));
    ExpectNoError();
}

TEST_P(AddInsOnAnEngine, ARefusedPackageGivesTheHighestIdThatThereIs)
{
    int id = 77;
    EXPECT_TRUE(CQVBaseFun::InsertPackageInfo(m_conn, "p", "2013-05-07 09:03:00", 3, "d", id));
    EXPECT_TRUE(CQVBaseFun::InsertPackageInfo(m_conn, "o'p", "2013-05-07 09:03:00", 3, "d", id));
    EXPECT_EQ(id, 1);
    EXPECT_THAT(m_watch.messages, SizeIs(1));
}

// ---- Bulletin board ----------------------------------------------------------------------------------------------

class BoardOnAnEngine : public engines::OnAnEngine {
protected:
    BoardOnAnEngine()
    {
        for (const char* sql :
             {"INSERT INTO Kel_Board (Col_ID, Col_Creator_Name, Col_Subject, Col_Dt_Create, Col_Content) VALUES ('b1', "
              "'Amy', 'Lunch', '2013-05-07 09:03:00', 'At one')",
              "INSERT INTO Kel_Board (Col_ID, Col_Creator_Name, Col_Subject, Col_Dt_Create, Col_Content) VALUES ('b2', "
              "'Bob', 'Cake', '2013-05-08 09:03:00', 'At two')",
              "INSERT INTO Kel_Board_Attach (Col_BoardID, Col_FileName) VALUES ('b1', 'menu.txt')",
              "INSERT INTO Kel_Board_Attach (Col_BoardID, Col_FileName) VALUES ('b2', 'cake.png')",
              "INSERT INTO Kel_Board_Revert (Col_ID, Col_BoardID, Col_Creator_Name, Col_Dt_Create, Col_Content) VALUES "
              "(1, 'b1', 'Bob', '2013-05-07 10:00:00', 'later')",
              "INSERT INTO Kel_Board_Revert (Col_ID, Col_BoardID, Col_Creator_Name, Col_Dt_Create, Col_Content) VALUES "
              "(2, 'b1', 'Cid', '2013-05-07 09:30:00', 'yes')",
              "INSERT INTO Kel_Board_Visiter (Col_ID, Col_BoardID, Col_QvItem, Col_QvItem_Name, Col_Dt_Readed, "
              "Col_Readed) VALUES (1, 'b1', '1:5', 'Bob', '2013-05-07 09:50:00', 1)",
              "INSERT INTO Kel_Board_Visiter (Col_ID, Col_BoardID, Col_QvItem, Col_QvItem_Name, Col_Dt_Readed, "
              "Col_Readed) VALUES (2, 'b1', '1:6', 'Cid', '2013-05-07 09:20:00', 0)"}) {
            Execute(sql);
        }
    }

    int Count(const char* table)
    {
        return static_cast<int>(Rows(std::string("SELECT Col_BoardID FROM ") + table).size());
    }
};

TEST_P(BoardOnAnEngine, NoticesAreListedNewestFirst)
{
    CStringArray ids;
    CStringArray subjects;
    CStringArray creators;
    CStringArray times;
    EXPECT_TRUE(CQVBaseFun::LoadBulletinInfo(m_conn, ids, subjects, creators, times));
    EXPECT_THAT(Copied(ids), ElementsAre("b2", "b1"));
    EXPECT_THAT(Copied(subjects), ElementsAre("Cake", "Lunch"));
    EXPECT_THAT(Copied(creators), ElementsAre("Bob", "Amy"));
    EXPECT_THAT(Copied(times), ElementsAre("2013-05-08 09:03:00", "2013-05-07 09:03:00"));
    ExpectNoError();
}

TEST_P(BoardOnAnEngine, ANoticeIsReadWithItsFilesRepliesAndReadersOldestFirst)
{
    CString content = "before";
    EXPECT_TRUE(CQVBaseFun::GetBulletinContent(m_conn, "b1", content));
    EXPECT_STREQ(content, "At one");
    EXPECT_TRUE(CQVBaseFun::GetBulletinContent(m_conn, "b3", content));
    EXPECT_STREQ(content, "At one");
    CStringArray files;
    EXPECT_TRUE(CQVBaseFun::LoadBulletinAttachments(m_conn, "b1", files));
    EXPECT_THAT(Copied(files), ElementsAre("menu.txt"));
    CUIntArray ids;
    CStringArray creators;
    CStringArray times;
    CStringArray contents;
    EXPECT_TRUE(CQVBaseFun::LoadBulletinReplyInfo(m_conn, "b1", ids, creators, times, contents));
    EXPECT_THAT(Copied(ids), ElementsAre(2U, 1U));
    EXPECT_THAT(Copied(creators), ElementsAre("Cid", "Bob"));
    EXPECT_THAT(Copied(times), ElementsAre("2013-05-07 09:30:00", "2013-05-07 10:00:00"));
    EXPECT_THAT(Copied(contents), ElementsAre("yes", "later"));
    CUIntArray readers;
    CStringArray items;
    CStringArray names;
    CStringArray read;
    CUIntArray flags;
    EXPECT_TRUE(CQVBaseFun::LoadBulletinVisiterInfo(m_conn, "b1", readers, items, names, read, flags));
    EXPECT_THAT(Copied(readers), ElementsAre(2U, 1U));
    EXPECT_THAT(Copied(items), ElementsAre("1:6", "1:5"));
    EXPECT_THAT(Copied(names), ElementsAre("Cid", "Bob"));
    EXPECT_THAT(Copied(read), ElementsAre("2013-05-07 09:20:00", "2013-05-07 09:50:00"));
    EXPECT_THAT(Copied(flags), ElementsAre(0U, 1U));
    ExpectNoError();
}

TEST_P(BoardOnAnEngine, EachKindOfRowGoesByItself)
{
    EXPECT_TRUE(CQVBaseFun::DeleteBulletinItem(m_conn, "b1"));
    EXPECT_THAT(Rows("SELECT Col_ID FROM Kel_Board"), ElementsAre("b2"));
    EXPECT_EQ(Count("Kel_Board_Attach"), 2);
    EXPECT_TRUE(CQVBaseFun::DeleteBulletinAttach(m_conn, "b1"));
    EXPECT_EQ(Count("Kel_Board_Attach"), 1);
    EXPECT_EQ(Count("Kel_Board_Revert"), 2);
    EXPECT_TRUE(CQVBaseFun::DeleteBulletinReply(m_conn, "b1"));
    EXPECT_EQ(Count("Kel_Board_Revert"), 0);
    EXPECT_EQ(Count("Kel_Board_Visiter"), 2);
    EXPECT_TRUE(CQVBaseFun::DeleteBulletinVisiter(m_conn, "b1"));
    EXPECT_EQ(Count("Kel_Board_Visiter"), 0);
    EXPECT_FALSE(CQVBaseFun::DeleteBulletinItem(m_conn, "o'b"));
    EXPECT_THAT(m_watch.messages, SizeIs(1));
}

INSTANTIATE_TEST_SUITE_P(Engines, MessagesOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);
INSTANTIATE_TEST_SUITE_P(Engines, AddInsOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);
INSTANTIATE_TEST_SUITE_P(Engines, BoardOnAnEngine, testing::ValuesIn(engines::All()), engines::NameOf);

} // namespace
