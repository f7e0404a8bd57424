#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "tests/directory/StatementCase.h"

#include <gtest/gtest.h>

#include <vector>

namespace setting_statements {

using statements::ExpectTable;
using statements::kAllKinds;
using statements::Read;
using statements::StatementCase;
using statements::Write;

namespace {

// Every text holds a quote and a backslash, so that what is doubled shows; no two arguments of a call are the same, so
// that an exchange shows.

struct Outputs {
    unsigned int number = 0;
    unsigned long wide = 0;
    bool flag = false;
    CString text;
    CStringArray names;
    CStringArray values;
};

std::vector<StatementCase> NumbersRead()
{
    return {
        {"GetKelServerConfigInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetKelServerConfigInfo(conn, out.wide);
         },
         Read("SELECT Col_Data FROM Tab_Config WHERE Col_Name = 'KelServerFlag' AND Col_Genre = 'KelServerConfig'")},
        {"GetMaxThreadCount", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetMaxThreadCount(conn, out.number);
         },
         Read("SELECT Col_Data FROM Tab_Config WHERE Col_Name = 'maxThreads' AND Col_GENRE = 'KelServerConfig'")},
        {"GetTaskThreadCount", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetTaskThreadCount(conn, out.number);
         },
         Read("SELECT Col_Data FROM Tab_Config WHERE Col_Name = 'MastTaskThreads' AND Col_GENRE = 'KelServerConfig'")},
        {"GetKelDocServerFlag", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetKelDocServerFlag(conn, out.wide);
         },
         Read("SELECT Col_Data FROM Tab_Config WHERE Col_Name = 'KelDocServerFlag' AND Col_Genre = 'KelDocConfig' ")},
    };
}

std::vector<StatementCase> Tests()
{
    return {
        {"ExistThreadInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistThreadInfo(conn, R"(na'm\e)", out.flag);
         },
         Read("SELECT Col_Data FROM Tab_Config WHERE Col_Name = 'na'm\\e' AND Col_Genre = 'KelServerConfig' ")},
        {"ExistKelDocConfig", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistKelDocConfig(conn, R"(na'm\e)", out.flag);
         },
         Read(R"(SELECT Col_Name FROM Tab_Config WHERE Col_Name = 'na'm\e' AND Col_Genre = 'KelDocConfig' )")},
        {"ExistKelDocServerFlag", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistKelDocServerFlag(conn, out.flag);
         },
         Read("SELECT Col_Data FROM Tab_Config WHERE Col_Name = 'KelDocServerFlag' AND Col_Genre = 'KelDocConfig' ")},
        {"ExistCorDisplayPic", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistCorDisplayPic(conn, out.flag);
         },
         Read("SELECT Col_Data FROM Tab_Config WHERE Col_Name = 'CorDisplayPic' AND Col_Genre = 'KelServerConfig'")},
        {"ExistTabConfigName", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::ExistTabConfigName(conn, R"(na'm\e)", R"(ge'n\re)", out.flag);
         },
         Read(R"(SELECT Col_Name FROM Tab_Config WHERE Col_Name = 'na'm\e' AND Col_Genre = 'ge'n\re' )")},
    };
}

std::vector<StatementCase> TextsRead()
{
    return {
        {"GetKelDocConfig", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetKelDocConfig(conn, R"(na'm\e)", out.text);
         },
         Read(R"(SELECT Col_Data FROM Tab_Config WHERE Col_Name = 'na'm\e' AND Col_Genre = 'KelDocConfig' )")},
        {"GetCorDisplayPic", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::GetCorDisplayPic(conn, out.text);
         },
         Read("SELECT Col_Data FROM Tab_Config WHERE Col_Name = 'CorDisplayPic' AND Col_Genre = 'KelServerConfig'")},
        {"LoadTabConfigInfo", kAllKinds,
         [](CAConnect& conn) {
             Outputs out;
             CQVBaseFun::LoadTabConfigInfo(conn, out.names, out.values, R"(ge'n\re)");
         },
         Read(R"(SELECT Col_Name, Col_Data FROM Tab_Config WHERE Col_Genre = 'ge'n\re')")},
    };
}

std::vector<StatementCase> Writes()
{
    return {
        {"InsertThreadInfo", kAllKinds, [](CAConnect& conn) { CQVBaseFun::InsertThreadInfo(conn, R"(na'm\e)", 501); },
         Write("INSERT INTO Tab_Config (Col_Name, Col_Data, Col_Genre) VALUES ('na'm\\e','501', 'KelServerConfig') ")},
        {"InsertThreadInfo of a number of 32 bits", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::InsertThreadInfo(conn, R"(na'm\e)", 4294967295U); },
         Write("INSERT INTO Tab_Config (Col_Name, Col_Data, Col_Genre) VALUES ('na'm\\e','-1', 'KelServerConfig') ")},
        {"UpdateThreadInfo", kAllKinds, [](CAConnect& conn) { CQVBaseFun::UpdateThreadInfo(conn, R"(na'm\e)", 501); },
         Write("UPDATE Tab_Config SET Col_Data = '501' WHERE Col_Name = 'na'm\\e' AND Col_Genre = 'KelServerConfig' ")},
        {"UpdateThreadInfo of a number of 32 bits", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateThreadInfo(conn, R"(na'm\e)", 2147483648U); },
         Write("UPDATE Tab_Config SET Col_Data = '-2147483648' WHERE Col_Name = 'na'm\\e' AND Col_Genre = "
               "'KelServerConfig' ")},
        {"InsertKelDocConfig", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::InsertKelDocConfig(conn, R"(na'm\e)", R"(va'l\ue)"); },
         Write("INSERT INTO Tab_Config (Col_Name, Col_Data, Col_Genre) VALUES ('na'm\\e','va'l\\ue','KelDocConfig')")},
        {"UpdateKelDocConfig", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateKelDocConfig(conn, R"(na'm\e)", R"(va'l\ue)"); },
         Write(
             "UPDATE Tab_Config SET Col_Data = 'va'l\\ue' WHERE Col_Name = 'na'm\\e' AND Col_Genre = 'KelDocConfig'")},
        {"InsertKelDocServerFlag", kAllKinds, [](CAConnect& conn) { CQVBaseFun::InsertKelDocServerFlag(conn, 501); },
         Write("INSERT INTO Tab_Config ( Col_Name, Col_Data, Col_Genre ) VALUES ( 'KelDocServerFlag', 501, "
               "'KelDocConfig' )")},
        {"InsertKelDocServerFlag of a number of 32 bits", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::InsertKelDocServerFlag(conn, 4294967295UL); },
         Write("INSERT INTO Tab_Config ( Col_Name, Col_Data, Col_Genre ) VALUES ( 'KelDocServerFlag', -1, "
               "'KelDocConfig' )")},
        {"UpdateKelDocServerFlag", kAllKinds, [](CAConnect& conn) { CQVBaseFun::UpdateKelDocServerFlag(conn, 501); },
         Write("UPDATE Tab_Config SET Col_Data = '501' WHERE Col_Name = 'KelDocServerFlag' AND Col_Genre = "
               "'KelDocConfig' ")},
        {"UpdateKelDocServerFlag of a number of 32 bits", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateKelDocServerFlag(conn, 2147483648UL); },
         Write("UPDATE Tab_Config SET Col_Data = '-2147483648' WHERE Col_Name = 'KelDocServerFlag' AND Col_Genre = "
               "'KelDocConfig' ")},
        {"InsertTabConfigValue", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::InsertTabConfigValue(conn, R"(na'm\e)", R"(va'l\ue)", R"(ge'n\re)"); },
         Write(R"(INSERT INTO Tab_Config (Col_Name,Col_Data,Col_Genre) VALUES ('na'm\e','va'l\ue', 'ge'n\re'))")},
        {"UpdateTabConfigValue", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::UpdateTabConfigValue(conn, R"(na'm\e)", R"(va'l\ue)"); },
         Write(R"(UPDATE Tab_Config SET Col_Data = 'va'l\ue' WHERE Col_Name = 'na'm\e')")},
        {"DeleteTabConfigValue", kAllKinds,
         [](CAConnect& conn) { CQVBaseFun::DeleteTabConfigValue(conn, R"(na'm\e)", R"(ge'n\re)"); },
         Write(R"(DELETE FROM Tab_Config WHERE Col_Name = 'na'm\e' AND Col_Genre = 'ge'n\re' )")},
    };
}

// Backslashes are doubled on one kind only, quotes on none.
std::vector<StatementCase> Pictures()
{
    return {
        {"InsertCorDisplayPic",
         {0, 1, 3},
         [](CAConnect& conn) { CQVBaseFun::InsertCorDisplayPic(conn, R"(pi'c\ture)"); },
         Write("INSERT INTO Tab_Config (Col_Name, Col_Data, Col_Genre) VALUES ('CorDisplayPic', 'pi'c\\ture', "
               "'KelServerConfig')")},
        {"UpdateCorDisplayPic",
         {0, 1, 3},
         [](CAConnect& conn) { CQVBaseFun::UpdateCorDisplayPic(conn, R"(pi'c\ture)"); },
         Write("UPDATE Tab_Config SET Col_Data = 'pi'c\\ture' WHERE Col_Name = 'CorDisplayPic' AND Col_Genre = "
               "'KelServerConfig'")},
        {"UpdateUserDisplayPic",
         {0, 1, 3},
         [](CAConnect& conn) { CQVBaseFun::UpdateUserDisplayPic(conn, R"(pi'c\ture)"); },
         Write(R"(UPDATE qv_User SET Col_Picture = 'pi'c\ture')")},
        {"InsertCorDisplayPic",
         {6},
         [](CAConnect& conn) { CQVBaseFun::InsertCorDisplayPic(conn, R"(pi'c\ture)"); },
         Write("INSERT INTO Tab_Config (Col_Name, Col_Data, Col_Genre) VALUES ('CorDisplayPic', 'pi'c\\\\ture', "
               "'KelServerConfig')")},
        {"UpdateCorDisplayPic",
         {6},
         [](CAConnect& conn) { CQVBaseFun::UpdateCorDisplayPic(conn, R"(pi'c\ture)"); },
         Write("UPDATE Tab_Config SET Col_Data = 'pi'c\\\\ture' WHERE Col_Name = 'CorDisplayPic' AND Col_Genre = "
               "'KelServerConfig'")},
        {"UpdateUserDisplayPic",
         {6},
         [](CAConnect& conn) { CQVBaseFun::UpdateUserDisplayPic(conn, R"(pi'c\ture)"); },
         Write(R"(UPDATE qv_User SET Col_Picture = 'pi'c\\ture')")},
    };
}

TEST(SettingStatements, NumbersAreReadByteForByte) { ExpectTable(NumbersRead()); }

TEST(SettingStatements, TestsAreSentByteForByte) { ExpectTable(Tests()); }

TEST(SettingStatements, TextsAreReadByteForByte) { ExpectTable(TextsRead()); }

TEST(SettingStatements, WritesAreSentByteForByte) { ExpectTable(Writes()); }

TEST(SettingStatements, PicturesAreSentByteForByte) { ExpectTable(Pictures()); }

} // namespace

} // namespace setting_statements
