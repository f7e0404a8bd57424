#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "tests/directory/StatementCase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace server_statements {

using statements::ExpectTable;
using statements::kAllKinds;
using statements::Read;
using statements::StatementCase;
using statements::Write;

namespace {

// Every text holds a quote and a backslash, so that what is doubled shows; no two arguments of a call are the same, so
// that an exchange shows.

constexpr const char* kName = R"(na'm\e)";
constexpr const char* kData = R"(a'b\)";
constexpr const char* kDesc = R"(de's\c)";
constexpr const char* kPackage = R"(pa'ck\age)";
constexpr const char* kBoard = R"(bo'a\rd)";

struct Outputs {
    int id = 0;
    int number = 0;
    bool flag = false;
    CString text;
    COleDateTime date;
    CUIntArray ids;
    CUIntArray numbers;
    CUIntArray flags;
    CUIntArray otherFlags;
    CStringArray names;
    CStringArray texts;
    CStringArray otherTexts;
    CStringArray times;
};

// ---- Messages ----------------------------------------------------------------------------------------------------

constexpr const char* kSweepAttachments = "DELETE FROM kel_Msg_AttachMent WHERE ( (SELECT COUNT(*) FROM kel_Msg WHERE "
                                          "kel_Msg_AttachMent.Col_MsgID = kel_Msg.Col_ID ) = 0 )";
constexpr const char* kSweepReceipts = "DELETE FROM kel_Msg_Rece WHERE ( (SELECT COUNT(*) FROM kel_Msg WHERE "
                                       "kel_Msg_Rece.Col_MsgID = kel_Msg.Col_ID) = 0 )";

std::vector<StatementCase> Messages()
{
    // The literal is the connection's own: the script's has the six parts between marks.
    const std::string byDate = "DELETE FROM kel_Msg WHERE kel_Msg.Col_SendDate <= ";
    return {
        {"ClearMsgData",
         kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::ClearMsgData(conn, "2013-05-07 09:03:00"); },
         {{}, {byDate + "<2013-5-7 9:3:0> ", kSweepAttachments, kSweepReceipts}}},
        {"DeleteMsgData", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteMsgData(conn, "2013-05-07"); },
         Write(byDate + "<2013-5-7 0:0:0> ")},
        {"DeleteAttachNoMsg", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteAttachNoMsg(conn); },
         Write(kSweepAttachments)},
        {"DeleteRecvNoMsg", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteRecvNoMsg(conn); },
         Write(kSweepReceipts)},
        {"GetMinDate, whose text does not count", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetMinDate(conn, kName, out.date);
         },
         Read("SELECT Col_SendDate FROM kel_Msg ORDER BY Col_SendDate ASC")},
        {"DeleteLoginLogItem", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteLoginLogItem(conn, 501); },
         Write("DELETE FROM kel_log WHERE Col_ID = 501")},
    };
}

// ---- Add-ins -----------------------------------------------------------------------------------------------------

std::vector<StatementCase> AddInWrites()
{
    const auto insertPublic = [](CAConnect& conn) {
        CQVBaseFun::InsertAddInInfo(conn, kName, kData, 501, true, kDesc, kPackage, 602);
    };
    const auto updateByName = [](CAConnect& conn) { CQVBaseFun::UpdateAddInInfo(conn, kName, 501, kData, kDesc); };
    const auto updateById = [](CAConnect& conn) { CQVBaseFun::UpdateAddInInfo(conn, 501, kData, kDesc); };
    return {
        {"InsertAddInInfo",
         {0, 1, 3},
         insertPublic,
         Write("INSERT INTO kel_AddIn ( Col_Name, Col_Data, Col_AddInType, Col_IsPublic, Col_Desc, Col_PackageName, "
               "Col_Index ) VALUES ( 'na'm\\e', 'a''b\\', 501, 1, 'de's\\c', 'pa'ck\\age', 602 )")},
        {"InsertAddInInfo",
         {6},
         insertPublic,
         Write("INSERT INTO kel_AddIn ( Col_Name, Col_Data, Col_AddInType, Col_IsPublic, Col_Desc, Col_PackageName, "
               "Col_Index ) VALUES ( 'na'm\\e', 'a''b\\\\', 501, 1, 'de's\\c', 'pa'ck\\age', 602 )")},
        {"InsertAddInInfo of one that is not public", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::InsertAddInInfo(conn, "n", "s", 501, false, "d", "p", 602); },
         Write("INSERT INTO kel_AddIn ( Col_Name, Col_Data, Col_AddInType, Col_IsPublic, Col_Desc, Col_PackageName, "
               "Col_Index ) VALUES ( 'n', 's', 501, 0, 'd', 'p', 602 )")},
        {"UpdateAddInInfo by name",
         {0, 1, 3},
         updateByName,
         Write("UPDATE kel_AddIn SET Col_Data = 'a''b\\', Col_Desc = 'de's\\c' WHERE Col_Name = 'na'm\\e' AND "
               "Col_AddInType = 501")},
        {"UpdateAddInInfo by name",
         {6},
         updateByName,
         Write("UPDATE kel_AddIn SET Col_Data = 'a''b\\\\', Col_Desc = 'de's\\c' WHERE Col_Name = 'na'm\\e' AND "
               "Col_AddInType = 501")},
        {"UpdateAddInInfo by id",
         {0, 1, 3},
         updateById,
         Write(R"(UPDATE kel_AddIn SET Col_Data = 'a''b\', Col_Desc = 'de's\c' WHERE Col_ID = 501)")},
        {"UpdateAddInInfo by id",
         {6},
         updateById,
         Write(R"(UPDATE kel_AddIn SET Col_Data = 'a''b\\', Col_Desc = 'de's\c' WHERE Col_ID = 501)")},
        {"EnableAddInItem with true, which switches off", kAllKinds,
         [](CAConnect& conn) {
             bool disabled = true;
             CQVBaseFun::EnableAddInItem(conn, 501, disabled);
         },
         Write("UPDATE kel_AddIn SET Col_Disabled = 1 WHERE Col_ID = 501")},
        {"EnableAddInItem with false, which switches on", kAllKinds,
         [](CAConnect& conn) {
             bool disabled = false;
             CQVBaseFun::EnableAddInItem(conn, 501, disabled);
         },
         Write("UPDATE kel_AddIn SET Col_Disabled = 0 WHERE Col_ID = 501")},
        {"DeleteAddInItem", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteAddInItem(conn, 501); },
         Write("DELETE FROM kel_AddIn WHERE Col_ID = 501")},
        {"DeleteAddIn", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteAddIn(conn, kPackage); },
         Write(R"(DELETE FROM kel_AddIn WHERE Col_PackageName = 'pa'ck\age')")},
        {"UpdateAddInItemIndex", kAllKinds, [](CAConnect& conn) { CQVBaseFun::UpdateAddInItemIndex(conn, 501, 602); },
         Write("UPDATE kel_AddIn SET Col_Index = 602 WHERE Col_ID = 501")},
    };
}

std::vector<StatementCase> AddInReads()
{
    return {
        {"ExistAddInInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistAddInInfo(conn, kName, 501, out.id);
         },
         Read(R"(SELECT Col_ID FROM kel_AddIn WHERE Col_AddInType = 501 AND Col_Name = 'na'm\e')")},
        {"ExistAddInItem", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistAddInItem(conn, 501, kName, kPackage, out.id);
         },
         Read("SELECT Col_ID FROM kel_AddIn WHERE Col_AddInType = 501 AND Col_Name = 'na'm\\e' AND Col_PackageName = "
              "'pa'ck\\age'")},
        {"GetAddInInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetAddInInfo(conn, kName, 501, out.text);
         },
         Read(R"(SELECT Col_Data FROM kel_AddIn WHERE Col_Name = 'na'm\e' AND Col_AddInType = 501)")},
        {"LoadKelAddIn", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadKelAddIn(conn, out.ids, out.numbers, out.names, out.flags, out.otherFlags, out.texts,
                                      out.otherTexts);
         },
         Read("SELECT Col_ID, Col_AddInType, Col_Name, Col_IsPublic, Col_Disabled, Col_Desc, Col_PackageName FROM "
              "kel_AddIn ORDER BY Col_Index DESC")},
        {"GetAddInItemMaxIndex", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetAddInItemMaxIndex(conn, out.number);
         },
         Read("SELECT MAX(Col_Index) FROM kel_AddIn")},
        {"GetAddInItemIndex", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetAddInItemIndex(conn, 501, out.number);
         },
         Read("SELECT Col_Index FROM kel_AddIn WHERE Col_ID = 501")},
    };
}

std::vector<StatementCase> Packages()
{
    return {
        {"LoadAddInPackageInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadAddInPackageInfo(conn, out.ids, out.names, out.texts, out.otherTexts, out.flags);
         },
         Read("SELECT Col_ID,Col_Name,Col_Ver,Col_Desc,Col_Disabled FROM kel_Package")},
        {"GetPackageInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetPackageInfo(conn, kPackage, out.id, out.number);
         },
         Read(R"(SELECT Col_ID, Col_Ver FROM Kel_Package WHERE Col_Name = 'pa'ck\age')")},
        {"UpdatePackageInfo", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdatePackageInfo(conn, R"(ti'm\e)", 501, kDesc, 602); },
         Write("UPDATE Kel_Package SET Col_Dt_Modify='ti'm\\e',Col_Ver=501,Col_Desc='de's\\c' WHERE Col_ID = 602")},
        {"InsertPackageInfo",
         kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::InsertPackageInfo(conn, kPackage, R"(ti'm\e)", 501, kDesc, out.id);
         },
         {{"SELECT MAX(Col_ID) AS PackID FROM Kel_Package"},
          {"INSERT INTO Kel_Package (Col_Name,Col_Dt_Modify,Col_Ver,Col_Desc,Col_Disabled) VALUES ( 'pa'ck\\age', "
           "'ti'm\\e', 501, 'de's\\c', 0 )"}}},
        {"DeletePackage", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeletePackage(conn, 501); },
         Write("DELETE FROM kel_Package WHERE Col_ID = 501")},
    };
}

// ---- Bulletin board ----------------------------------------------------------------------------------------------

std::vector<StatementCase> Board()
{
    return {
        {"LoadBulletinInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadBulletinInfo(conn, out.names, out.texts, out.otherTexts, out.times);
         },
         Read("SELECT Col_ID, Col_Creator_Name, Col_Subject, Col_Dt_Create FROM Kel_Board ORDER BY Col_Dt_Create "
              "DESC")},
        {"GetBulletinContent", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetBulletinContent(conn, kBoard, out.text);
         },
         Read(R"(SELECT Col_Content FROM Kel_Board WHERE Col_ID = 'bo'a\rd')")},
        {"LoadBulletinAttachments", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadBulletinAttachments(conn, kBoard, out.names);
         },
         Read(R"(SELECT Col_FileName FROM Kel_Board_Attach WHERE Col_BoardID = 'bo'a\rd')")},
        {"LoadBulletinReplyInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadBulletinReplyInfo(conn, kBoard, out.ids, out.names, out.times, out.texts);
         },
         Read("SELECT Col_ID, Col_Creator_Name, Col_Dt_Create, Col_Content FROM Kel_Board_Revert WHERE Col_BoardID = "
              "'bo'a\\rd' ORDER BY Col_Dt_Create")},
        {"LoadBulletinVisiterInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadBulletinVisiterInfo(conn, kBoard, out.ids, out.texts, out.names, out.times, out.flags);
         },
         Read("SELECT Col_ID, Col_QvItem, Col_QvItem_Name, Col_Dt_Readed, Col_Readed FROM Kel_Board_Visiter WHERE "
              "Col_BoardID = 'bo'a\\rd' ORDER BY Col_Dt_Readed")},
        {"DeleteBulletinItem", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteBulletinItem(conn, kBoard); },
         Write(R"(DELETE FROM Kel_Board WHERE Col_ID = 'bo'a\rd')")},
        {"DeleteBulletinAttach", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteBulletinAttach(conn, kBoard); },
         Write(R"(DELETE FROM Kel_Board_Attach WHERE Col_BoardID = 'bo'a\rd')")},
        {"DeleteBulletinReply", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteBulletinReply(conn, kBoard); },
         Write(R"(DELETE FROM Kel_Board_Revert WHERE Col_BoardID = 'bo'a\rd')")},
        {"DeleteBulletinVisiter", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteBulletinVisiter(conn, kBoard); },
         Write(R"(DELETE FROM Kel_Board_Visiter WHERE Col_BoardID = 'bo'a\rd')")},
    };
}

TEST(ServerStatements, OfMessagesAreSentByteForByte) { ExpectTable(Messages()); }

TEST(ServerStatements, OfAddInsAreSentByteForByte)
{
    ExpectTable(AddInWrites());
    ExpectTable(AddInReads());
}

TEST(ServerStatements, OfPackagesAreSentByteForByte) { ExpectTable(Packages()); }

TEST(ServerStatements, OfTheBoardAreSentByteForByte) { ExpectTable(Board()); }

} // namespace

} // namespace server_statements
