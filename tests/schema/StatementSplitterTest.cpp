#include "schema/StatementSplitter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using schema::SplitStatements;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

TEST(StatementSplitter, CutsAtLinesThatEndInASemicolon)
{
    EXPECT_THAT(
        SplitStatements("-- people\nCREATE TABLE a (\n  -- of what;\n  x INTEGER\n);\n\nCREATE INDEX i ON a (x);\n"),
        ElementsAre("CREATE TABLE a (\n  x INTEGER\n)", "CREATE INDEX i ON a (x)"));
}

TEST(StatementSplitter, KeepsATriggerWhole)
{
    EXPECT_THAT(
        SplitStatements("CREATE TRIGGER t BEFORE INSERT ON a\nBEGIN\n  SELECT 1;\n  SELECT 2;\nEND;\nDROP TABLE a;"),
        ElementsAre("CREATE TRIGGER t BEFORE INSERT ON a\nBEGIN\n  SELECT 1;\n  SELECT 2;\nEND", "DROP TABLE a"));
}

TEST(StatementSplitter, GivesNothingForAnEmptyFile) { EXPECT_THAT(SplitStatements("\n-- nothing\n"), IsEmpty()); }

} // namespace
