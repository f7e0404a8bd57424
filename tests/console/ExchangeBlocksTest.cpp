#include "CountedDirectory.h"
#include "management/exchange/DirectoryImport.h"
#include "management/exchange/Export.h"

#include <fmt/format.h>
#include <gmock/gmock.h>

#include <array>
#include <functional>
#include <memory>
#include <sstream>
#include <string>

using namespace console;
using namespace management;

// Some hundred lines are asked for and written at a time.

namespace {

constexpr int kPeopleOfAnExport = 2000;

class ExchangeBlocksTest : public CountedDirectory {
protected:
    void Import(const std::string& text)
    {
        m_report = {};
        std::istringstream in(text);
        RunCall({}, [&](Call& call, auto&) { ImportDirectory(call, {in, "in.jsonl"}, {}, m_report); });
    }

    std::string Export()
    {
        std::string text = std::string(kExportHead) + "\n";
        ExportReport report;
        RunCall({}, [&](Call& call, auto&) {
            ExportDirectory(call, {}, [&text](const std::string& line) { text += line + "\n"; }, report);
        });
        return text;
    }

    /// People in groups, each with a department, a membership and a right. @param isSparse  where lines leave values to
    /// the engine, as an export never does.
    static std::string Directory(bool isSparse = false)
    {
        std::string text = std::string(kExportHead) + "\n";
        for (int i = 0; i < kPeopleOfAnExport; ++i) {
            text += fmt::format("{{\"noun\":\"user\",\"login\":\"user{}\",\"name\":\"User {}\"}}\n", i, i);
        }
        text += "{\"noun\":\"view\",\"name\":\"Main\"}\n";
        for (int i = 0; i < 50; ++i) {
            text += fmt::format("{{\"noun\":\"group\",\"path\":\"/Main/Team {}\"}}\n", i);
        }
        for (int i = 0; i < kPeopleOfAnExport; ++i) {
            text +=
                fmt::format("{{\"noun\":\"department\",\"user\":\"user{}\",\"group\":\"/Main/Team {}\"}}\n", i, i % 50);
        }
        for (int i = 0; i < kPeopleOfAnExport; ++i) {
            text +=
                fmt::format("{{\"noun\":\"member\",\"member\":{{\"user\":\"user{}\"}},\"of\":{{\"group\":\"/Main/Team "
                            "{}\"}},\"relation\":1{}}}\n",
                            i, i % 50, isSparse ? "" : R"(,"reference":0,"view":null)");
        }
        for (int i = 0; i < kPeopleOfAnExport; ++i) {
            text += fmt::format(
                "{{\"noun\":\"right\",\"holder\":{{\"user\":\"user{}\"}},\"genre\":\"a\",\"function\":\"b\","
                "\"power\":1{}}}\n",
                i, isSparse ? "" : R"(,"unpower":0)");
        }
        return text;
    }

    [[nodiscard]] double StatementsPerLine() const
    {
        return static_cast<double>(m_counts.statements) / static_cast<double>(m_report.rows);
    }

    ImportReport m_report;
};

/// Gives two pieces of a text, and calls a function between them.
class TwoPieces final : public std::streambuf {
public:
    TwoPieces(std::string first, std::string second, std::function<void()> between)
        : m_pieces{std::move(first), std::move(second)}, m_between(std::move(between))
    {
    }

protected:
    int_type underflow() override
    {
        if (m_next == m_pieces.size()) {
            return traits_type::eof();
        }
        if (m_next == 1) {
            m_between();
        }
        std::string& piece = m_pieces.at(m_next++);
        setg(piece.data(), piece.data(), piece.data() + piece.size());
        return traits_type::to_int_type(piece.front());
    }

private:
    std::array<std::string, 2> m_pieces;
    std::size_t m_next = 0;
    std::function<void()> m_between;
};

} // namespace

TEST_F(ExchangeBlocksTest, WhatAnotherConsoleAddsMeanwhileIsFound)
{
    std::string people = std::string(kExportHead) + "\n";
    for (int i = 0; i < 300; ++i) {
        people += fmt::format("{{\"noun\":\"user\",\"login\":\"user{}\"}}\n", i);
    }
    const std::string rest = "{\"noun\":\"view\",\"name\":\"Main\"}\n"
                             "{\"noun\":\"group\",\"path\":\"/Main/Team\"}\n"
                             "{\"noun\":\"member\",\"member\":{\"user\":\"user7\"},\"of\":{\"group\":\"/Main/Team\"},"
                             "\"relation\":1}\n";
    TwoPieces pieces(people, rest, [this] { m_conn.Execute("INSERT INTO qv_View (Col_Name) VALUES ('Main')"); });
    std::istream in(&pieces);
    RunCall({}, [&](Call& call, auto&) { ImportDirectory(call, {in, "in.jsonl"}, {}, m_report); });
    EXPECT_EQ(m_report.CountOf(RowFate::created), 302);
    EXPECT_EQ(m_report.CountOf(RowFate::unchanged), 1);
    const std::string text = Export();
    EXPECT_EQ(text.find("Main\\\\#2"), std::string::npos);
    EXPECT_NE(text.find("\"path\":\"/Main/Team\""), std::string::npos);
}

TEST_F(ExchangeBlocksTest, ANewLineTakesAFifthOfAStatementAtMostAndOneThatIsSoAlreadyATenth)
{
    Import(Directory());
    EXPECT_EQ(m_report.CountOf(RowFate::created), 4 * kPeopleOfAnExport + 51);
    EXPECT_LE(StatementsPerLine(), 0.2);
    Import(Directory());
    EXPECT_EQ(m_report.CountOf(RowFate::unchanged), 4 * kPeopleOfAnExport + 51);
    EXPECT_LE(StatementsPerLine(), 0.1);
}

TEST_F(ExchangeBlocksTest, ItemsOfOneNameKeepTheirRows)
{
    std::string text = std::string(kExportHead) + "\n{\"noun\":\"view\",\"name\":\"Main\"}\n";
    for (int i = 0; i < 20; ++i) {
        text += fmt::format("{{\"noun\":\"group\",\"path\":\"/Main/Office {0}\",\"description\":\"old\"}}\n"
                            "{{\"noun\":\"group\",\"path\":\"/Main/Office {0}/Sales\",\"description\":\"{1}\"}}\n"
                            "{{\"noun\":\"group\",\"path\":\"/Main/Office {0}/Archive\",\"description\":\"old\"}}\n",
                            i, i % 4 == 0 ? "all" : std::to_string(i));
    }
    for (const char* scope : {"", R"(\\@mail\\@7)", R"(\\@mail\\@8)"}) {
        text += fmt::format(R"({{"noun":"role","name":"Editor{0}","description":"of{0}"}})", scope) + "\n";
    }
    Import(text);
    EXPECT_EQ(m_report.CountOf(RowFate::created), 64);
    // Which of them got which id could not be told if an engine gave ids in another order.
    const auto has = [](const char* description) {
        return [description](const std::string& sql) {
            return sql.starts_with("INSERT INTO qv_Group") && sql.find(description) != std::string::npos;
        };
    };
    EXPECT_TRUE(std::ranges::any_of(m_counts.executed, has("'13'")));
    EXPECT_FALSE(std::ranges::any_of(m_counts.executed,
                                     [&](const std::string& sql) { return has("'13'")(sql) && has("'14'")(sql); }));
    Import(text);
    EXPECT_EQ(m_report.CountOf(RowFate::unchanged), 64);
}

TEST_F(ExchangeBlocksTest, RowsThatCannotBeToldFromAnotherProgramsAreAddedOneByOne)
{
    const std::string text = std::string(kExportHead) +
                             "\n{\"noun\":\"view\",\"name\":\"Main\"}\n"
                             "{\"noun\":\"group\",\"path\":\"/Main/North\",\"description\":\"ours\"}\n"
                             "{\"noun\":\"group\",\"path\":\"/Main/South\",\"description\":\"ours\"}\n";
    // Theirs has the lesser id.
    m_conn.Execute("CREATE TRIGGER Other BEFORE INSERT ON qv_Group WHEN NEW.Col_Name = 'North' AND "
                   "NEW.Col_Description = 'ours' BEGIN INSERT INTO qv_Group (Col_Name, Col_Description) VALUES "
                   "('North', 'theirs'); END");
    Import(text);
    EXPECT_EQ(m_report.CountOf(RowFate::created), 3);
    const std::string exported = Export();
    EXPECT_NE(exported.find(R"("path":"/Main/North","description":"ours")"), std::string::npos);
    EXPECT_NE(exported.find(R"("path":"/Main/South","description":"ours")"), std::string::npos);
}

TEST_F(ExchangeBlocksTest, AnExportTakesAsManyStatementsWhateverItFinds)
{
    Export();
    const auto empty = m_counts.statements;
    Import(Directory(true));
    EXPECT_LE(StatementsPerLine(), 1.2);
    const std::string text = Export();
    EXPECT_EQ(m_counts.statements, empty);
    EXPECT_EQ(std::ranges::count(text, '\n'), 4 * kPeopleOfAnExport + 52);
}
