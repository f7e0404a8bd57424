#include "console/TerminalFrontEnd.h"
#include "dbaccess/CAConnect.h"
#include "management/import/CsvReader.h"
#include "management/import/Import.h"
#include "schema/Schema.h"
#include "tests/support/Memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <sstream>
#include <streambuf>
#include <string>

using namespace console;
using namespace management;

// What is read is not kept, whatever it is.

namespace {

/// A stream of lines that are made when they are read.
class Lines : public std::streambuf {
public:
    Lines(long count, std::function<std::string(long)> line) : m_count(count), m_line(std::move(line)) {}

    [[nodiscard]] std::size_t MostMemory() const { return m_most; }

protected:
    int_type underflow() override
    {
        m_most = std::max(m_most, MemoryInUse());
        if (m_next == m_count) {
            return traits_type::eof();
        }
        m_text.clear();
        while (m_next < m_count && m_text.size() < 65536) {
            m_text += m_line(m_next++);
        }
        setg(m_text.data(), m_text.data(), m_text.data() + m_text.size());
        return traits_type::to_int_type(m_text[0]);
    }

private:
    long m_count;
    std::function<std::string(long)> m_line;
    long m_next = 0;
    std::string m_text;
    std::size_t m_most = 0;
};

/// Lets the reader read all lines. @return how many records there were.
long ReadAll(long count, const std::function<std::string(long)>& line)
{
    Lines lines(count, line);
    std::istream in(&lines);
    CsvReader reader(in);
    const std::size_t before = MemoryInUse();
    std::size_t most = 0;
    long records = 0;
    while (const std::optional<CsvRecord> record = reader.Next()) {
        ++records;
        most = std::max({most, records % 1024 == 0 || records < 16 ? MemoryInUse() : 0, lines.MostMemory()});
    }
    EXPECT_LT(std::max(most, lines.MostMemory()), before + kFlatMemory);
    return records;
}

struct Discarding : std::streambuf {
    int_type overflow(int_type ch) override { return traits_type::not_eof(ch); }
    std::streamsize xsputn(const char* /*text*/, std::streamsize count) override { return count; }
};

/// Tries to import lines. @return the most memory that this took.
std::size_t MemoryOfImport(Lines& lines, ImportReport& report)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    schema::Upgrade(conn);
    std::istream in(&lines);
    Discarding nowhere;
    std::ostream out(&nowhere);
    Terminal terminal{in, out, out, false, false};
    const Command row;
    const CommandLine given;
    TerminalFrontEnd frontEnd(row, given, Format::csv, terminal);
    CallOptions options;
    options.dryRun = true;
    Call call([&]() -> CAConnect& { return conn; }, frontEnd, options);
    const std::size_t before = MemoryInUse();
    ImportUsers(call, {in, "in.csv"}, {}, report);
    return lines.MostMemory() - std::min(before, lines.MostMemory());
}

} // namespace

TEST(ImportMemory, AMillionRowsAreReadInTheMemoryOfAFew)
{
    EXPECT_EQ(ReadAll(1000000, [](long i) { return "user" + std::to_string(i) + ",\"a \"\"name\"\"\"\n"; }), 1000000);
}

TEST(ImportMemory, LongLinesOpenQuotesAndNulsAreNotKept)
{
    std::string longLine = std::string(3000000, 'x') + "\n";
    EXPECT_EQ(ReadAll(8, [&](long) { return longLine; }), 8);
    std::string commas = std::string(1000000, ',') + "\n";
    EXPECT_EQ(ReadAll(5, [&](long) { return commas; }), 5);
    // The lines after a quote that is never closed are read ahead, up to 1 MiB, and again as records of their own.
    EXPECT_EQ(ReadAll(1100000, [](long i) { return i == 0 ? std::string("\"open\n") : std::string("\n"); }), 1);
    EXPECT_EQ(ReadAll(100000, [](long) { return std::string("\0,\0\0\n", 5); }), 100000);
}

TEST(ImportMemory, AnImportHoldsAFewRowsAtATime)
{
    const std::string note(900000, 'x');
    Lines lines(24, [&](long i) { return i == 0 ? "login,note\n" : "amy," + note + "\n"; });
    ImportReport report;
    EXPECT_LT(MemoryOfImport(lines, report), kFlatMemory);
    EXPECT_EQ(report.CountOf(RowFate::failed), 22);
}

TEST(ImportMemory, TheLoginNamesOfAnImportAreNotHeld)
{
    const auto line = [](long i) { return i == 0 ? "login\n" : "user" + std::to_string(i) + "\n"; };
    Lines few(10001, line);
    Lines many(60001, line);
    ImportReport report;
    const std::size_t least = MemoryOfImport(few, report);
    EXPECT_LT(MemoryOfImport(many, report), least + 2'000'000);
    EXPECT_EQ(report.CountOf(RowFate::created), 70000);
}
