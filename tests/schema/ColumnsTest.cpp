#include "schema/Tables.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <optional>
#include <regex>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

// The tables of the five dialects, compared column by column.

namespace {

/// What a column is on an engine, as the step that makes it says.
struct Described {
    schema::Kind kind = schema::Kind::text;
    bool isComputed = false;
    bool isAutoIncrement = false;
    bool isKey = false;
    bool isNotNull = false;
    std::string standard; ///< the default; empty: NULL
    std::string length;   ///< of a text; empty where the engine has none or any length will do
};

using Columns = std::vector<std::pair<std::string, Described>>;
using Tables = std::vector<std::pair<std::string, Columns>>;

/// Made once: to make a pattern takes much longer than to look for it.
std::regex Pattern(const char* pattern) { return std::regex(pattern, std::regex::icase | std::regex::optimize); }

std::string FirstMatch(const std::string& text, const std::regex& pattern)
{
    std::smatch match;
    return std::regex_search(text, match, pattern) ? match[1].str() : "";
}

/// The line of the step on which a column stands, without its name.
std::string LineOf(const std::string& statement, const std::string& column)
{
    const std::size_t name = statement.find("\n  " + column + " ");
    if (name == std::string::npos) {
        return "";
    }
    const std::size_t begin = statement.find_first_not_of(' ', name + column.size() + 3);
    return statement.substr(begin, statement.find('\n', begin) - begin);
}

Described DescriptionOf(const schema::Column& column, const std::string& line)
{
    static const std::regex key = Pattern("(PRIMARY KEY)");
    static const std::regex notNull = Pattern("(NOT NULL)");
    static const std::regex standard = Pattern("DEFAULT ('[^']*'|[0-9]+)");
    static const std::regex length = Pattern(R"(^(?:VARCHAR|NVARCHAR|TEXT) ?\(([0-9]+)\))");
    Described described;
    described.kind = column.kind;
    described.isComputed = column.isComputed;
    described.isAutoIncrement = column.isAutoIncrement;
    described.isKey = !FirstMatch(line, key).empty();
    // A key holds no NULL.
    described.isNotNull = described.isKey || !FirstMatch(line, notNull).empty();
    described.standard = FirstMatch(line, standard);
    described.length = FirstMatch(line, length);
    return described;
}

std::vector<std::string> StatementsOf(const schema::Dialect& dialect)
{
    std::vector<std::string> statements;
    for (const schema::Step& step : dialect.steps) {
        statements.insert(statements.end(), step.statements.begin(), step.statements.end());
    }
    return statements;
}

Tables TablesIn(const schema::Dialect& dialect)
{
    static const std::regex head = Pattern("^CREATE TABLE (?:IF NOT EXISTS )?(\\w+)");
    std::map<std::string, std::string> statements;
    for (const std::string& statement : StatementsOf(dialect)) {
        statements[FirstMatch(statement, head)] = statement;
    }
    Tables tables;
    for (const schema::Table& table : schema::TablesOf(dialect)) {
        Columns& columns = tables.emplace_back(table.name, Columns()).second;
        for (const schema::Column& column : table.columns) {
            columns.emplace_back(column.name, DescriptionOf(column, LineOf(statements.at(table.name), column.name)));
        }
    }
    return tables;
}

const std::map<std::string, Tables>& AllTables()
{
    static const std::map<std::string, Tables> tables = {{"sqlite", TablesIn(schema::sqlite::TheDialect())},
                                                         {"postgresql", TablesIn(schema::postgresql::TheDialect())},
                                                         {"mysql", TablesIn(schema::mysql::TheDialect())},
                                                         {"sqlserver", TablesIn(schema::sqlserver::TheDialect())},
                                                         {"access", TablesIn(schema::access::TheDialect())}};
    return tables;
}

enum class Property { presence, computed, standard };

/// What an engine has otherwise than the others; "*" is any column.
struct Exception {
    const char* engine;
    const char* column; ///< "TABLE.COLUMN"
    Property property;
    const char* reason;
};

constexpr Exception kExceptions[] = {
    {"mysql", "*.Col_RowID", Property::presence, "replication finds a row by a key of its own"},
    {"access", "qv_User.Col_Password", Property::computed, "no computed columns; who writes Col_PWord writes both"},
    {"access", "qv_User.Col_Password", Property::standard, "as the computed column, NULL until it is written"},
    {"mysql", "*.LONGTEXT", Property::standard, "long texts can have no default there, and are NULL until written"},
};

bool MayDiffer(const std::string& engine, const std::string& table, const std::string& column, bool isLong,
               Property property)
{
    return std::ranges::any_of(kExceptions, [&](const Exception& exception) {
        const std::string name = exception.column;
        return engine == exception.engine && property == exception.property &&
               (name == table + "." + column || name == "*." + column || (isLong && name == "*.LONGTEXT"));
    });
}

/// The columns of a table that the engines are to agree on.
std::vector<std::string> SharedNames(const std::string& engine, const std::string& table, const Columns& columns)
{
    std::vector<std::string> names;
    for (const auto& [name, described] : columns) {
        if (!MayDiffer(engine, table, name, false, Property::presence)) {
            names.push_back(name);
        }
    }
    return names;
}

const Described* Find(const Columns& columns, const std::string& name)
{
    for (const auto& [column, described] : columns) {
        if (column == name) {
            return &described;
        }
    }
    return nullptr;
}

class ColumnsOf : public testing::TestWithParam<const char*> {
protected:
    /// Calls with each column of SQLite's tables and the same one of the engine's.
    template <class Call>
    void EachPair(Call call)
    {
        const Tables& ours = AllTables().at("sqlite");
        const Tables& theirs = AllTables().at(GetParam());
        std::size_t count = 0;
        ASSERT_EQ(theirs.size(), ours.size());
        for (std::size_t i = 0; i < ours.size(); ++i) {
            for (const auto& [name, described] : ours[i].second) {
                const Described* other = Find(theirs[i].second, name);
                ASSERT_NE(other, nullptr) << ours[i].first << "." << name;
                call(ours[i].first, name, described, *other);
                ++count;
            }
        }
        EXPECT_GT(count, 200U);
    }
};

TEST_P(ColumnsOf, HaveTheSameNamesInTheSameOrder)
{
    const Tables& ours = AllTables().at("sqlite");
    const Tables& theirs = AllTables().at(GetParam());
    ASSERT_EQ(theirs.size(), ours.size());
    for (std::size_t i = 0; i < ours.size(); ++i) {
        EXPECT_EQ(theirs[i].first, ours[i].first);
        EXPECT_EQ(SharedNames(GetParam(), theirs[i].first, theirs[i].second),
                  SharedNames("sqlite", ours[i].first, ours[i].second))
            << ours[i].first;
    }
}

TEST_P(ColumnsOf, AreOfTheSameKindAndCountedComputedKeysAndNullableAlike)
{
    EachPair([](const std::string& table, const std::string& name, const Described& ours, const Described& theirs) {
        const std::string column = table + "." + name;
        EXPECT_EQ(static_cast<int>(theirs.kind), static_cast<int>(ours.kind)) << column;
        EXPECT_EQ(theirs.isAutoIncrement, ours.isAutoIncrement) << column;
        EXPECT_EQ(theirs.isKey, ours.isKey) << column;
        EXPECT_EQ(theirs.isNotNull, ours.isNotNull) << column;
        if (!MayDiffer(GetParam(), table, name, false, Property::computed)) {
            EXPECT_EQ(theirs.isComputed, ours.isComputed) << column;
        }
    });
}

TEST_P(ColumnsOf, HaveTheSameDefaults)
{
    EachPair([](const std::string& table, const std::string& name, const Described& ours, const Described& theirs) {
        const bool isLong = ours.kind == schema::Kind::text && theirs.length.empty();
        if (!MayDiffer(GetParam(), table, name, isLong, Property::standard)) {
            EXPECT_EQ(theirs.standard, ours.standard) << table << "." << name;
        }
    });
}

// SQLite and PostgreSQL have texts of any length.
TEST_P(ColumnsOf, HaveTheSameLengthsWhereEnginesHaveThem)
{
    const bool hasLengths = GetParam() != std::string("postgresql");
    const Tables& mysql = AllTables().at("mysql");
    std::map<std::string, const Columns*> named;
    for (const auto& [table, columns] : mysql) {
        named[table] = &columns;
    }
    EachPair([&](const std::string& table, const std::string& name, const Described&, const Described& theirs) {
        if (!theirs.isComputed || !theirs.length.empty()) {
            EXPECT_EQ(theirs.length, hasLengths ? Find(*named.at(table), name)->length : "") << table << "." << name;
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Dialects, ColumnsOf, testing::Values("postgresql", "mysql", "sqlserver", "access"),
                         [](const testing::TestParamInfo<const char*>& engine) { return std::string(engine.param); });

// So that the comparison cannot pass by reading nothing.
TEST(Columns, AreRead)
{
    const Columns& user = AllTables().at("mysql").front().second;
    EXPECT_EQ(Find(user, "Col_LoginName")->length, "128");
    EXPECT_EQ(Find(user, "Col_LoginName")->standard, "''");
    EXPECT_EQ(Find(user, "Col_ItemIndex")->standard, "10000");
    EXPECT_TRUE(Find(user, "Col_ID")->isKey);
    EXPECT_TRUE(Find(user, "Col_Password")->isComputed);
    EXPECT_FALSE(Find(user, "Col_Birthday")->isNotNull);
    EXPECT_TRUE(Find(AllTables().at("sqlserver")[3].second, "Col_QvItemID")->isNotNull);
}

TEST(Steps, AreNumberedAlikeOnEveryEngine)
{
    const auto titlesOf = [](const schema::Dialect& dialect) {
        std::vector<std::string> titles;
        for (const schema::Step& step : dialect.steps) {
            titles.push_back(step.title);
        }
        return titles;
    };
    const std::vector<std::string> titles = titlesOf(schema::sqlite::TheDialect());
    for (const schema::Dialect* dialect : {&schema::postgresql::TheDialect(), &schema::mysql::TheDialect(),
                                           &schema::sqlserver::TheDialect(), &schema::access::TheDialect()}) {
        EXPECT_EQ(titlesOf(*dialect), titles);
    }
}

} // namespace
