// Texts that are escaped as docs/security.md says pass through every operation of every engine, and are stored as they
// were.

#include "schema/Dialect.h"
#include "schema/Tables.h"
#include "tests/directory/Engines.h"
#include "tests/escaping/TextCall.h"

#include <fmt/format.h>

#include <algorithm>
#include <set>

using testing::Contains;

namespace escaping {

namespace {

constexpr const char* kDate = "2013-05-07";

class EscapedTexts : public engines::OnAnEngine {
protected:
    /// Every text that the tables hold.
    std::set<std::string> StoredTexts()
    {
        std::set<std::string> texts;
        for (const schema::Table& table : schema::TablesOf(schema::DialectOf(m_conn))) {
            CARecordset rs;
            const std::string sql = "SELECT * FROM " + table.name;
            EXPECT_TRUE(rs.Open(sql.c_str(), &m_conn, adbcCursorStatic, adbcLockOptimistic, adbcCommandTable));
            for (rs.MoveFirst(); rs.IsEOF() == 0; rs.MoveNext()) {
                for (long column = 1; column <= rs.GetColumnCount(); ++column) {
                    texts.emplace(rs.GetValueToStr(column, true).View());
                }
            }
        }
        return texts;
    }

    /// A text for each text of an operation, with `middle` and a number in it.
    static std::vector<std::string> TextsFor(const ObservedCall& observed, const std::string& middle,
                                             std::size_t number)
    {
        std::vector<std::string> given;
        for (std::size_t i = 0; i < observed.texts.size(); ++i) {
            const std::string& name = observed.call.texts[i];
            const bool isDate = name == "modifyTime" || name == "date";
            given.push_back(isDate ? kDate : fmt::format("{}{}{}", i, middle, number));
        }
        return given;
    }

    void Run(const ObservedCall& observed, const std::vector<std::string>& given)
    {
        std::vector<CString> escaped;
        for (std::size_t i = 0; i < given.size(); ++i) {
            escaped.push_back(EscapeFor(observed.texts[i], m_conn, given[i].c_str()));
        }
        observed.call.run(m_conn, escaped, m_conn.m_nDBType == 0 ? 1 : m_conn.m_nDBType);
        ExpectNoError();
        m_watch.messages.clear();
        CQVBaseFun::m_strLastError = ErrorRecorder::kOlder;
    }

    /// Looks that the texts are there byte for byte.
    void ExpectStored(const ObservedCall& observed, const std::vector<std::string>& given)
    {
        const std::set<std::string> stored = StoredTexts();
        for (std::size_t i = 0; i < given.size(); ++i) {
            const bool isSent = observed.texts[i] != Treatments(kKinds.size(), Treatment::notUsed);
            if (isSent && given[i] != kDate) {
                EXPECT_THAT(stored, Contains(given[i])) << observed.call.texts[i];
            }
        }
    }

    /// Runs every operation, those that add a row first, with texts that hold `middle`, and looks that the engine
    /// takes them and that what was added is there.
    void RunAllWith(const std::string& middle)
    {
        std::vector<ObservedCall> all = ObserveAll();
        const auto adds = [](const ObservedCall& each) {
            return each.call.name.starts_with("Insert") || each.call.name.ends_with("::SaveData");
        };
        std::stable_partition(all.begin(), all.end(), adds);
        std::size_t added = 0;
        for (const ObservedCall& observed : all) {
            SCOPED_TRACE(observed.call.declaration);
            if (observed.call.name == "CAceItem::SaveData") { // its statement lacks a parenthesis
                continue;
            }
            const std::vector<std::string> given = TextsFor(observed, middle, added);
            Run(observed, given);
            if (adds(observed)) {
                ++added;
                ExpectStored(observed, given);
            }
        }
        EXPECT_GT(added, 15U);
    }
};

TEST_P(EscapedTexts, PassThroughEveryOperation) { RunAllWith(R"('\'\\''\"%_;--)"); }

TEST_P(EscapedTexts, PassWithABackslashAtTheirEnd)
{
    m_conn.Execute("DELETE FROM qv_User");
    CString login = m_conn.EscapeBackslashes("a\\");
    EXPECT_TRUE(CQVBaseFun::InsertUser(m_conn, m_conn.EscapeLiteral("a\\"), m_conn.EscapeLiteral("b'\\")));
    CString name;
    EXPECT_TRUE(CQVBaseFun::GetHMUserName(m_conn, login, name));
    EXPECT_STREQ(name, "b'\\");
    bool exists = false;
    EXPECT_TRUE(CQVBaseFun::ExistLoginName(m_conn, login, exists));
    EXPECT_TRUE(exists);
}

TEST_P(EscapedTexts, MayHoldCharactersWhoseSecondByteIsABackslash)
{
    const AnsiCodePageScope gbk(936);
    RunAllWith("\x95\x5c'\xd5\x5c\\");
}

TEST_P(EscapedTexts, MayHoldEveryByteButNul)
{
    std::string bytes;
    for (char c = 1; c < 0x7f; ++c) {
        bytes += c;
    }
    EXPECT_TRUE(CQVBaseFun::InsertDocLog(m_conn, 1, 1, m_conn.EscapeLiteral(bytes.c_str()), "t", 1, "c"));
    EXPECT_TRUE(CQVBaseFun::InsertTabConfigValue(m_conn, "n", m_conn.EscapeLiteral(bytes.c_str()), "g"));
    CStringArray names;
    CStringArray values;
    EXPECT_TRUE(CQVBaseFun::LoadTabConfigInfo(m_conn, names, values, "g"));
    EXPECT_THAT(engines::Copied(values), testing::ElementsAre(bytes));
    EXPECT_THAT(StoredTexts(), Contains(bytes));
    ExpectNoError();
}

INSTANTIATE_TEST_SUITE_P(Engines, EscapedTexts, testing::ValuesIn(engines::All()), engines::NameOf);

} // namespace

} // namespace escaping
