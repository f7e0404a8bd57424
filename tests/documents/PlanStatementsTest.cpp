#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "tests/directory/StatementCase.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace plan_statements {

using scripted::Rows;
using statements::kAllKinds;
using statements::Read;
using statements::StatementCase;
using statements::Write;
using testing::ElementsAre;

namespace {

// Every text holds a quote and a backslash, so that what is doubled shows; no two arguments of a call are the same, so
// that an exchange shows.

constexpr const char* kName = R"(na'm\e)";
constexpr const char* kDesc = R"(de's\c)";
constexpr const char* kData = R"(da't\a)";

struct Outputs {
    int id = 0;
    bool flag = false;
    CString text;
    CUIntArray ids;
    CStringArray names;
    CStringArray descriptions;
};

std::vector<StatementCase> Plans()
{
    return {
        {"LoadFileBackPlan into three arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadFileBackPlan(conn, out.ids, out.names, out.descriptions);
         },
         Read("SELECT Col_ID, Col_Name, Col_Desc FROM Tab_Doc_Backup_Plan")},
        {"LoadFileBackPlan into two arrays", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadFileBackPlan(conn, out.ids, out.names);
         },
         Read("SELECT Col_ID, Col_Name FROM Tab_Doc_Backup_Plan")},
        {"GetFileBackPlanInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetFileBackPlanInfo(conn, 501, out.text);
         },
         Read("SELECT Col_Data FROM Tab_Doc_Backup_Plan WHERE Col_ID = 501")},
        {"GetBackupPlanID", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetBackupPlanID(conn, kName, out.id);
         },
         Read(R"(SELECT Col_ID FROM Tab_Doc_Backup_Plan WHERE Col_Name = 'na'm\e')")},
        {"ExistBackupPlan", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistBackupPlan(conn, kName, out.flag);
         },
         Read(R"(SELECT Col_ID FROM Tab_Doc_Backup_Plan WHERE Col_Name = 'na'm\e')")},
        {"InsertBackupPlanInfo, whose data come before the description", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::InsertBackupPlanInfo(conn, kName, kDesc, kData); },
         Write("INSERT INTO Tab_Doc_Backup_Plan ( Col_Name, Col_Data, Col_Desc ) VALUES ( 'na'm\\e', 'da't\\a', "
               "'de's\\c' ) ")},
        {"UpdateBackupPlanInfo", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateBackupPlanInfo(conn, 501, kName, kDesc, kData); },
         Write("UPDATE Tab_Doc_Backup_Plan SET Col_Name = 'na'm\\e', Col_Desc = 'de's\\c', Col_Data = 'da't\\a' WHERE "
               "Col_ID = 501")},
        {"DeleteBackupPlan", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteBackupPlan(conn, 501); },
         Write("DELETE FROM Tab_Doc_Backup_Plan WHERE Col_ID = 501")},
        {"DeleteBackupRel", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteBackupRel(conn, 501); },
         Write("DELETE FROM Tab_Doc_Backup_Rel WHERE Col_ID = 501")},
        {"LoadItemFileBackPlanInfo into two arrays, which joins by the row's own id", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadItemFileBackPlanInfo(conn, 501, 602, out.ids, out.names);
         },
         Read("SELECT Tab_Doc_Backup_Plan.Col_ID, Tab_Doc_Backup_Plan.Col_Name FROM Tab_Doc_Backup_Plan, "
              "Tab_Doc_Backup_Rel WHERE Tab_Doc_Backup_Plan.Col_ID = Tab_Doc_Backup_Rel.Col_ID AND "
              "Tab_Doc_Backup_Rel.Col_QvItem_Type = 602 AND Tab_Doc_Backup_Rel.Col_QvItem_ID = 501")},
        {"LoadItemFileBackPlanInfo into three arrays, which joins by the plan", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadItemFileBackPlanInfo(conn, 501, 602, out.ids, out.names, out.descriptions);
         },
         Read("SELECT Tab_Doc_Backup_Plan.Col_ID, Tab_Doc_Backup_Plan.Col_Name, Tab_Doc_Backup_Plan.Col_Desc FROM "
              "Tab_Doc_Backup_Plan, Tab_Doc_Backup_Rel WHERE Tab_Doc_Backup_Plan.Col_ID = "
              "Tab_Doc_Backup_Rel.Col_PlanID AND Tab_Doc_Backup_Rel.Col_QvItem_Type = 602 AND "
              "Tab_Doc_Backup_Rel.Col_QvItem_ID = 501")},
        {"ExistItemFileBackPlanRel", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistItemFileBackPlanRel(conn, 501, 602, 703, out.flag);
         },
         Read("SELECT Col_ID FROM Tab_Doc_Backup_Rel WHERE Col_QvItem_Type = 501 AND Col_QvItem_ID = 602 AND "
              "Col_PlanID = 703")},
        {"InsertFileBackPlan", kAllKinds, [](CAConnect& conn) { CQVBaseFun::InsertFileBackPlan(conn, 501, 602, 703); },
         Write("INSERT INTO Tab_Doc_Backup_Rel ( Col_QvItem_Type, Col_QvItem_ID, Col_PlanID ) VALUES ( 501,602,703 "
               ")")},
        {"DeleteFileBackPlan", kAllKinds, [](CAConnect& conn) { CQVBaseFun::DeleteFileBackPlan(conn, 501, 602, 703); },
         Write("DELETE FROM Tab_Doc_Backup_Rel WHERE Col_QvItem_Type = 501 AND Col_QvItem_ID = 602 AND Col_PlanID = "
               "703")},
        {"InsertGroupFileBackPlan of an empty group",
         kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::InsertGroupFileBackPlan(conn, 501, 602); },
         {{"SELECT Col_DQvItemID, Col_DQvItemType FROM qv_Relation WHERE Col_QvItemID = 501 AND Col_QvItemType = 2 AND "
           "Col_RelType = 1 "},
          {"INSERT INTO Tab_Doc_Backup_Rel ( Col_QvItem_Type, Col_QvItem_ID, Col_PlanID ) VALUES ( 2,501,602 )"}}},
        {"DeleteGroupFileBackPlan of an empty group",
         kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::DeleteGroupFileBackPlan(conn, 501, 602); },
         {{"SELECT Col_DQvItemID, Col_DQvItemType FROM qv_Relation WHERE Col_QvItemID = 501 AND Col_QvItemType = 2 AND "
           "Col_RelType = 1 "},
          {"DELETE FROM Tab_Doc_Backup_Rel WHERE Col_QvItem_Type = 2 AND Col_QvItem_ID = 501 AND Col_PlanID = "
           "602"}}},
        {"InsertDocLog", kAllKinds,
         [](CAConnect& conn) {
             CQVBaseFun::InsertDocLog(conn, 501, 602, R"(co'n\tent)", R"(ty'p\e)", 703, R"(cr'e\ator)");
         },
         Write("INSERT INTO Tab_Doc_Log (Col_Content, Col_Type, Col_R_ClassID, Col_R_ObjID, Col_Creator_ID, "
               "Col_Creator_Name, Col_Genre) VALUES ('co'n\\tent', 'ty'p\\e', 501, 602, 703, 'cr'e\\ator', "
               "'KelDoc')")},
    };
}

TEST(PlanStatements, AreSentByteForByte) { statements::ExpectTable(Plans()); }

TEST(PlanStatements, OfAGroupGoInDepthMemberByMember)
{
    scripted::Database database;
    CAConnect conn;
    database.Connect(conn, 3);
    database.Answer(Rows({})); // the group's own row
    database.Answer(Rows({{"11", "1"}, {"12", "2"}, {"13", "3"}, {"14", "4"}, {"15", "1"}}));
    database.Answer(Rows({}));            // user 11
    database.Answer(Rows({}));            // group 12
    database.Answer(Rows({{"16", "1"}})); // members of group 12
    EXPECT_TRUE(CQVBaseFun::InsertGroupFileBackPlan(conn, 10, 7));
    const auto row = [](int type, int id) {
        return "INSERT INTO Tab_Doc_Backup_Rel ( Col_QvItem_Type, Col_QvItem_ID, Col_PlanID ) VALUES ( " +
               std::to_string(type) + "," + std::to_string(id) + ",7 )";
    };
    EXPECT_THAT(database.executions, ElementsAre(row(2, 10), row(1, 11), row(2, 12), row(1, 16), row(1, 15)));
}

} // namespace

} // namespace plan_statements
