#include "dbaccess/CAConnect.h"
#include "dbaccess/CATransaction.h"
#include "testing/ScriptedDriver.h"
#include "tests/support/Raised.h"

#include <gtest/gtest.h>

#include <optional>

namespace {

class Transaction : public testing::Test {
protected:
    void SetUp() override { m_database.Connect(m_conn); }

    scripted::Database m_database;
    CAConnect m_conn;
};

TEST_F(Transaction, IsCommittedOnce)
{
    {
        CATransaction transaction(m_conn);
        EXPECT_EQ(m_database.transactions, " begin");
        transaction.Commit();
        transaction.Rollback();
    }
    EXPECT_EQ(m_database.transactions, " begin commit");
}

TEST_F(Transaction, IsRolledBackAtTheEndOfItsScope)
{
    {
        const CATransaction transaction(m_conn);
    }
    EXPECT_EQ(m_database.transactions, " begin rollback");
}

TEST_F(Transaction, IsRolledBackOnce)
{
    {
        CATransaction transaction(m_conn);
        transaction.Rollback();
        transaction.Rollback();
        EXPECT_EQ(m_database.transactions, " begin rollback");
    }
    EXPECT_EQ(m_database.transactions, " begin rollback");
}

TEST_F(Transaction, IsRolledBackWhenItCannotBeCommitted)
{
    m_database.refusesCommit = true;
    {
        CATransaction transaction(m_conn);
        EXPECT_EQ(Raised([&] { transaction.Commit(); }), "no commit");
        EXPECT_EQ(m_database.transactions, " begin commit");
    }
    EXPECT_EQ(m_database.transactions, " begin commit rollback");
}

TEST_F(Transaction, SaysThatTheConnectionIsClosed)
{
    std::optional<CATransaction> transaction(m_conn);
    m_database.GoAway();
    EXPECT_EQ(Raised([&] { transaction->Commit(); }), "the database connection is not open");
    EXPECT_EQ(Raised([&] { transaction->Rollback(); }), "the database connection is not open");
    transaction.reset();
    EXPECT_EQ(Raised([&] { transaction.emplace(m_conn); }), "the database connection is not open");
    EXPECT_EQ(m_database.transactions, " begin");
}

TEST_F(Transaction, DiesInSilenceWithoutItsConnection)
{
    {
        const CATransaction transaction(m_conn);
        m_database.GoAway();
    }
    EXPECT_EQ(m_database.transactions, " begin");
}

} // namespace
