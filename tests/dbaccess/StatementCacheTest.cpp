#include "dbaccess/drivers/common/StatementCache.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

using dbaccess::ShapeSyntax;
using dbaccess::StatementCache;

namespace {

/// An engine's statement: the shape that it was prepared from.
using Handle = std::unique_ptr<std::string>;
using Cache = StatementCache<Handle>;

class StatementCacheTest : public testing::Test {
protected:
    Cache::Lease Take(const std::string& statement)
    {
        return m_cache.Take(statement, [this](const std::string& shape, std::size_t values, Handle evicted) {
            m_prepared.push_back(shape + " " + std::to_string(values));
            if (evicted != nullptr) {
                m_evicted.push_back(*evicted);
            }
            return m_refuses ? nullptr : std::make_unique<std::string>(shape);
        });
    }
    /// What a lookup of table `t` with one value gives: its statement and the value, or nothing.
    std::string Lent(const std::string& table, int value = 7)
    {
        const Cache::Lease lease = Take(LookUp(table, value));
        return lease ? *lease.Statement() + "|" + std::string(lease.Values().at(0).text) : "";
    }
    static std::string LookUp(const std::string& table, int value = 7)
    {
        return "SELECT a FROM " + table + " WHERE b = " + std::to_string(value);
    }
    static std::string Shape(const std::string& table) { return "SELECT a FROM " + table + " WHERE b = ?"; }

    Cache m_cache{2, ShapeSyntax{}};
    std::vector<std::string> m_prepared;
    std::vector<std::string> m_evicted;
    bool m_refuses = false;
};

TEST_F(StatementCacheTest, PreparesAShapeWhenItIsMetTheSecondTimeAndOnce)
{
    EXPECT_EQ(Lent("t", 5), "");
    EXPECT_TRUE(m_prepared.empty());
    EXPECT_EQ(Lent("t", 6), Shape("t") + "|6");
    EXPECT_EQ(Lent("t", 70), Shape("t") + "|70");
    EXPECT_EQ(m_prepared, std::vector{Shape("t") + " 1"});
}

TEST_F(StatementCacheTest, LendsValuesWithANulBehindThem)
{
    const std::string statement = "UPDATE t SET a = 'O''Neil', b = -12,c = '', d = 5";
    Take(statement);
    const Cache::Lease lease = Take(statement);
    ASSERT_TRUE(lease);
    ASSERT_EQ(lease.Values().size(), 4U);
    const std::vector<std::string> expected = {"O'Neil", "-12", "", "5"};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        const dbaccess::ShapeValue& value = lease.Values()[i];
        EXPECT_EQ(value.isText, i % 2 == 0);
        EXPECT_EQ(value.text, expected[i]);
        EXPECT_EQ(*(value.text.data() + value.text.size()), '\0');
    }
    EXPECT_EQ(lease.Values()[1].number, -12);
}

TEST_F(StatementCacheTest, LendsAStatementToOneAtATime)
{
    Lent("t");
    {
        const Cache::Lease lease = Take(LookUp("t", 5));
        EXPECT_TRUE(lease);
        EXPECT_EQ(Lent("t"), "");
        EXPECT_EQ(lease.Values().at(0).text, "5");
    }
    EXPECT_EQ(Lent("t"), Shape("t") + "|7");
    EXPECT_EQ(m_prepared.size(), 1U);
}

TEST_F(StatementCacheTest, WipesTheValuesOfAStatementThatIsGivenBack)
{
    const std::string statement = "SELECT a FROM t WHERE b = '900150983cd24fb0d6963f7d28e17f72'";
    Take(statement);
    Cache::Lease lease = Take(statement);
    ASSERT_TRUE(lease);
    const std::string_view value = lease.Values().at(0).text;
    EXPECT_EQ(value, "900150983cd24fb0d6963f7d28e17f72");
    lease = Cache::Lease(); // the statement's memory is kept for the next text
    EXPECT_EQ(value, std::string(value.size(), '\0'));
}

TEST_F(StatementCacheTest, GivesUpWhatIsUsedLeast)
{
    for (const char* table : {"t", "t", "u", "u", "t", "v", "v"}) {
        Lent(table);
    }
    EXPECT_EQ(m_evicted, std::vector{Shape("u")});
    EXPECT_EQ(Lent("t"), Shape("t") + "|7");
    EXPECT_EQ(Lent("v"), Shape("v") + "|7");
    EXPECT_EQ(m_prepared.size(), 3U);
}

TEST_F(StatementCacheTest, GivesUpNoneThatIsLent)
{
    for (const char* table : {"t", "u", "v"}) {
        Lent(table);
    }
    const Cache::Lease first = Take(LookUp("t"));
    {
        const Cache::Lease second = Take(LookUp("u"));
        ASSERT_TRUE(first && second);
        EXPECT_EQ(Lent("v"), "");
    }
    EXPECT_EQ(Lent("v"), Shape("v") + "|7");
    EXPECT_EQ(m_evicted, std::vector{Shape("u")});
    EXPECT_EQ(*first.Statement(), Shape("t"));
}

TEST_F(StatementCacheTest, AsksOnceForAShapeThatTheEngineRefuses)
{
    m_refuses = true;
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(Lent("t"), "");
    }
    EXPECT_EQ(m_prepared.size(), 1U);
}

TEST_F(StatementCacheTest, PreparesAnewWhatWasForgottenOrCleared)
{
    Lent("t");
    {
        const Cache::Lease lease = Take(LookUp("t"));
        m_cache.Forget(lease);
        EXPECT_EQ(*lease.Statement(), Shape("t"));
    }
    EXPECT_EQ(Lent("t"), Shape("t") + "|7");
    EXPECT_EQ(m_prepared.size(), 2U);
    const Cache::Lease lease = Take(LookUp("t"));
    m_cache.Clear();
    EXPECT_EQ(Lent("t"), Shape("t") + "|7");
    EXPECT_EQ(m_prepared.size(), 3U);
    EXPECT_EQ(*lease.Statement(), Shape("t"));
    m_cache.Forget(lease); // the other one of the same shape stays
    EXPECT_EQ(Lent("t"), Shape("t") + "|7");
    EXPECT_EQ(m_prepared.size(), 3U);
}

TEST_F(StatementCacheTest, KeepsNothingOfAShapeWhosePreparingRaises)
{
    const auto raise = [](const std::string&, std::size_t, Handle) -> Handle { throw std::runtime_error("lost"); };
    Lent("t");
    EXPECT_THROW(m_cache.Take(LookUp("t"), raise), std::runtime_error);
    EXPECT_EQ(Lent("t"), Shape("t") + "|7");
}

TEST_F(StatementCacheTest, KeepsNothingWithoutRoom)
{
    m_cache = Cache(0, ShapeSyntax{});
    EXPECT_EQ(Lent("t"), "");
    EXPECT_EQ(Lent("t"), "");
    EXPECT_TRUE(m_prepared.empty());
}

TEST_F(StatementCacheTest, ForgetsAShapeThatWasMetOnceLongAgo)
{
    Lent("t");
    for (int i = 0; i < 200; ++i) {
        Lent("u" + std::to_string(i));
    }
    EXPECT_EQ(Lent("t"), "");
    EXPECT_TRUE(m_prepared.empty());
}

} // namespace
