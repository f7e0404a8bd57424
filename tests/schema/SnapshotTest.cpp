#include "schema/Snapshot.h"

#include "dbaccess/CAConnect.h"
#include "testing/ScriptedDriver.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// What a snapshot sends to an engine.
std::vector<std::string> SentTo(const std::string& engineName)
{
    scripted::Database database;
    database.engineName = engineName;
    CAConnect conn;
    database.Connect(conn);
    {
        const schema::Snapshot snapshot(conn);
    }
    return database.executions;
}

TEST(Snapshot, LeavesTheConnectionsNextTransactionsAsTheyWere)
{
    EXPECT_THAT(SentTo("Microsoft SQL Server 16.0"),
                ElementsAre("SET TRANSACTION ISOLATION LEVEL SERIALIZABLE", "BEGIN TRANSACTION", "ROLLBACK",
                            "SET TRANSACTION ISOLATION LEVEL READ COMMITTED"));
    EXPECT_THAT(SentTo("PostgreSQL 15.1"), ElementsAre("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY", "ROLLBACK"));
    EXPECT_THAT(SentTo("SQLite 3.40.1"), ElementsAre("BEGIN", "ROLLBACK"));
}

TEST(Snapshot, IsNothingToAccess) { EXPECT_THAT(SentTo("ACCESS 4.0"), IsEmpty()); }

} // namespace
