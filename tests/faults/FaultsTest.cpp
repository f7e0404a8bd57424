#include "Faults.h"

#include "console/Render.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "management/import/CsvReader.h"
#include "schema/Schema.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <memory>
#include <new>
#include <sstream>
#include <string>
#include <vector>

using console::Table;
using console::Value;

namespace {

constexpr const char* kLong = "a text that is longer than a string holds by itself";

/// Runs the body with the n-th allocation failing, for each n that there is. @return how many.
template <class Body>
int FailEachAllocation(Body body)
{
    const auto seen = std::make_unique<faults::Seen>();
    for (int n = 1;; ++n) {
        bool failed = false;
        seen->counts = {};
        seen->struck = 0;
        faults::Plan plan;
        plan.action = faults::Action::fail;
        plan.at = static_cast<std::uint64_t>(n);
        faults::Arm(plan, *seen);
        try {
            body();
        } catch (const std::bad_alloc&) {
            failed = true;
        } catch (const CAException&) {
            failed = true;
        }
        faults::Disarm();
        if (!failed && seen->struck == 0) {
            return n - 1;
        }
    }
}

} // namespace

TEST(FaultsTest, AValueThatCannotBeCopiedLeavesNothingBehind)
{
    const Value text = std::string(kLong);
    EXPECT_EQ(FailEachAllocation([&] { static_cast<void>(Value(text)); }), 1);
    EXPECT_EQ(FailEachAllocation([&] {
                  Value copy = true;
                  copy = text;
              }),
              1);
}

TEST(FaultsTest, ARowIsAddedAsAWholeOrNotAtAll)
{
    const std::string text = kLong;
    EXPECT_EQ(FailEachAllocation([&] {
                  Table table;
                  try {
                      table.rows.push_back({std::int64_t{7}, text, text, console::Choice{1, "one"}, text, true});
                  } catch (const std::bad_alloc&) {
                      EXPECT_TRUE(table.rows.empty());
                      throw;
                  }
                  EXPECT_EQ(std::get<console::TextValue>(table.rows.at(0).at(4)), text);
              }),
              8);
}

TEST(FaultsTest, AFunctionOfOursThatRunsOutOfMemoryFailsItsStatementAlone)
{
    CAConnect conn;
    conn.Open("sqlite::memory:");
    conn.Execute("CREATE TABLE t (a TEXT)");
    const int failed = FailEachAllocation([&] {
        try {
            conn.Execute("INSERT INTO t SELECT upper('a text that is longer than a string holds by itself \xC3\xBC')");
        } catch (const CAException&) {
            faults::Disarm();
            conn.Execute("DELETE FROM t"); // the connection is as good as before
            throw;
        }
    });
    EXPECT_GT(failed, 5);
}

TEST(FaultsTest, AFieldThatCannotBeKeptFailsTheReadingOfItsRow)
{
    const std::string text = std::string("a,") + kLong + ",b\n";
    const int failed = FailEachAllocation([&] {
        std::istringstream in(text);
        management::CsvReader reader(in);
        const auto record = reader.Next();
        ASSERT_TRUE(record.has_value());
        EXPECT_EQ(record->fields.at(1), kLong);
    });
    EXPECT_GT(failed, 3);
}

TEST(FaultsTest, AnUpgradeThatRunsOutOfMemoryLeavesNoTransactionOpen)
{
    const std::vector<schema::Step> steps = {{"a table", {"CREATE TABLE t (a TEXT)"}}};
    const int failed = FailEachAllocation([&] {
        CAConnect conn;
        conn.Open("sqlite::memory:");
        try {
            schema::Upgrade(conn, steps, {});
        } catch (...) {
            faults::Disarm();
            conn.BeginTrans();
            throw;
        }
    });
    EXPECT_GT(failed, 100);
}
