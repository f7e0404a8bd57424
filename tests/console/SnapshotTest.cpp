#include "ConsoleOnEngine.h"
#include "console/TerminalFrontEnd.h"
#include "dbaccess/Driver.h"
#include "management/Command.h"
#include "tests/support/CountingSession.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

using testing::AnyOf;

// Several statements of one command read the same state, even when somebody else writes between them.

namespace {

using Statements = std::vector<std::string>;

struct Read {
    std::array<std::string_view, 3> path;
    std::map<std::string, std::vector<std::string>, std::less<>> values;
    Statements change; ///< what somebody else does in one transaction
    Statements undo;   ///< takes that back
};

const Statements kOtherPower = {"UPDATE qv_ItemAce SET Col_Power = 6"};
const Statements kFirstPower = {"UPDATE qv_ItemAce SET Col_Power = 1"};

std::vector<Read> Reads()
{
    return {
        {{"right", "explain"},
         {{"USER", {"amy"}}, {"GENRE", {"mail"}}, {"FUNCTION", {"send"}}, {"bit", {"1"}}},
         kOtherPower,
         kFirstPower},
        {{"right", "who"},
         {{"GENRE", {"mail"}}, {"FUNCTION", {"send"}}},
         {"UPDATE qv_ItemAce SET Col_Power = 6", "UPDATE qv_User SET Col_Name = 'Other'"},
         {"UPDATE qv_ItemAce SET Col_Power = 1", "UPDATE qv_User SET Col_Name = Col_LoginName"}},
        {{"right", "diff"}, {{"USER", {"amy"}}, {"OTHER", {"rory"}}}, kOtherPower, kFirstPower},
        {{"role", "diff"}, {{"ROLE", {"Editors"}}, {"OTHER", {"Authors"}}}, kOtherPower, kFirstPower},
        {{"right", "matrix"}, {{"ROLE", {"Editors", "Authors"}}}, kOtherPower, kFirstPower},
        {{"right", "effective"}, {{"USER", {"amy"}}}, kOtherPower, kFirstPower},
        {{"right", "views"},
         {{"USER", {"amy"}}},
         {"UPDATE qv_BIIAce SET Col_FunName = 'look'", "UPDATE qv_View SET Col_Name = 'Other'"},
         {"UPDATE qv_BIIAce SET Col_FunName = 'see'", "UPDATE qv_View SET Col_Name = 'V'"}},
        {{"db", "check"},
         {},
         {"DELETE FROM qv_Relation WHERE Col_DQvItemID = 99",
          "INSERT INTO qv_ItemAce (Col_QvItemID, Col_QvItemType, Col_FunName) VALUES (77, 3, 'send')"},
         {"INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES (1, 2, 99, 1)",
          "DELETE FROM qv_ItemAce WHERE Col_QvItemID = 77"}},
        {{"audit", "verify"},
         {},
         {"UPDATE qv_AuditEntry SET Col_ID = Col_ID + 1000", "UPDATE qv_AuditRow SET Col_EntryID = Col_EntryID + 1000"},
         {"UPDATE qv_AuditEntry SET Col_ID = Col_ID - 1000",
          "UPDATE qv_AuditRow SET Col_EntryID = Col_EntryID - 1000"}},
        {{"group", "tree"},
         {},
         {"UPDATE qv_Group SET Col_ID = Col_ID + 1000",
          "UPDATE qv_Relation SET Col_DQvItemID = Col_DQvItemID + 1000 WHERE Col_DQvItemType = 2"},
         {"UPDATE qv_Group SET Col_ID = Col_ID - 1000",
          "UPDATE qv_Relation SET Col_DQvItemID = Col_DQvItemID - 1000 WHERE Col_DQvItemType = 2"}},
        {{"folder", "tree"},
         {},
         {"UPDATE Tab_Doc_VFolder SET Col_ID = Col_ID + 1000",
          "UPDATE Tab_Doc_Root_Link SET Col_S_ObjID = Col_S_ObjID + 1000"},
         {"UPDATE Tab_Doc_VFolder SET Col_ID = Col_ID - 1000",
          "UPDATE Tab_Doc_Root_Link SET Col_S_ObjID = Col_S_ObjID - 1000"}},
    };
}

class ReadsOn : public ConsoleOnEngine {
protected:
    /// Amy and rory have the same right by different roles.
    void SetUp() override
    {
        ConsoleOnEngine::SetUp();
        Done({"view", "create", "V"});
        Done({"group", "create", "/V/A"});
        Done({"docroot", "create", "D", "--path", "/d", "--type", "1"});
        Done({"folder", "create", "/D/a"});
        for (const char* user : {"amy", "rory"}) {
            Done({"user", "create", user});
        }
        for (const char* role : {"everyone", "Editors", "Authors"}) {
            Done({"role", "create", role});
        }
        Done({"role", "add", "Editors", "amy"});
        Done({"role", "add", "Authors", "rory"});
        for (const char* role : {"role:Editors", "role:Authors"}) {
            Done({"right", "grant", role, "mail", "send", "1"});
        }
        Done({"right", "on", "grant", "role:Editors", "view:V", "pages", "see"});
        Execute("INSERT INTO qv_Relation (Col_QvItemID, Col_QvItemType, Col_DQvItemID, Col_DQvItemType) VALUES "
                "(1, 2, 99, 1)");
        const std::string url = m_options.environment["QVADMIN_DB"];
        const std::size_t colon = url.find(':');
        m_reader.Open(std::make_unique<CountingSession>(
            dbaccess::FindDriver(url.substr(0, colon))(url.substr(colon + 1)), m_counts));
        m_writer.Open(url.c_str());
    }

    void ExecuteAll(const Statements& statements)
    {
        m_writer.BeginTrans();
        for (const std::string& statement : statements) {
            m_writer.Execute(statement.c_str());
        }
        m_writer.CommitTrans();
    }

    /// What a command gives, as JSON, while `change` is made before its query of this number.
    std::string AnswerTo(const Read& read, const Statements& change, std::optional<std::size_t> query)
    {
        m_queries = 0;
        m_counts.beforeQuery = [&, this] {
            if (m_queries++ == query) {
                ExecuteAll(change);
            }
        };
        std::istringstream in;
        std::ostringstream out;
        console::Terminal terminal{in, out, out, false, false};
        const management::Command& row =
            *std::ranges::find(management::Commands(), read.path, &management::Command::path);
        console::CommandLine given;
        given.values = read.values;
        console::TerminalFrontEnd frontEnd(row, given, console::Format::json, terminal);
        management::Call call([this]() -> CAConnect& { return m_reader; }, frontEnd, {});
        try {
            frontEnd.Finish(row.handler.run(call, given));
        } catch (const management::Error& e) {
            out << e.what();
        }
        m_counts.beforeQuery = {};
        return out.str();
    }

    SessionCounts m_counts;
    CAConnect m_reader;
    CAConnect m_writer;
    std::size_t m_queries = 0;
};

TEST_P(ReadsOn, OneMoment)
{
    for (const Read& read : Reads()) {
        SCOPED_TRACE(testing::PrintToString(read.path));
        const std::string before = AnswerTo(read, {}, {});
        const std::size_t queries = m_queries;
        EXPECT_GT(queries, 1);
        ExecuteAll(read.change);
        const std::string after = AnswerTo(read, {}, {});
        ExecuteAll(read.undo);
        for (std::size_t query = 0; query < queries; ++query) {
            EXPECT_THAT(AnswerTo(read, read.change, query), AnyOf(before, after)) << "query " << query;
            ExecuteAll(read.undo);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Engines, ReadsOn, Engines(), EngineName);

} // namespace
