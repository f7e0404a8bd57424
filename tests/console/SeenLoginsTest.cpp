#include "management/import/SeenLogins.h"

#include <gtest/gtest.h>

#include <string>

using namespace management;

TEST(SeenLogins, TheLineOfTheFirstIsGivenHoweverManyThereAre)
{
    SeenLogins seen;
    for (long i = 0; i < 20000; ++i) {
        EXPECT_EQ(seen.Add("user" + std::to_string(i), i + 2), std::nullopt);
    }
    for (long i = 0; i < 20000; ++i) {
        EXPECT_EQ(seen.Add("user" + std::to_string(i), 7), i + 2);
    }
}

TEST(SeenLogins, NamesAreToldApartByAllOfTheirBytes)
{
    SeenLogins seen;
    const std::string longName(100000, 'x');
    EXPECT_EQ(seen.Add(longName, 2), std::nullopt);
    EXPECT_EQ(seen.Add(longName + "y", 3), std::nullopt);
    EXPECT_EQ(seen.Add(longName.substr(1), 4), std::nullopt);
    EXPECT_EQ(seen.Add("", 5), std::nullopt);
    EXPECT_EQ(seen.Add(longName, 6), 2);
    EXPECT_EQ(seen.Add("", 7), 5);
}

TEST(SeenLogins, NamesOfTheSameHashAreToldApart)
{
    SeenLogins seen([](std::string_view /*key*/) { return std::uint64_t{4095}; });
    for (long i = 0; i < 100; ++i) {
        EXPECT_EQ(seen.Add("user" + std::to_string(i), i + 2), std::nullopt);
    }
    EXPECT_EQ(seen.Add("user17", 200), 19);
    EXPECT_EQ(seen.Add("user1", 201), 3);
}
