#pragma once

#include "basefun/SourceLocation.h"
#include "dbaccess/CAConnect.h"
#include "testing/ScriptedDriver.h"

#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

// Tables of what operations send to the engine, byte for byte.

namespace statements {

/// The engine kinds that connections have.
inline const std::set<int> kAllKinds = {0, 1, 3, 6};

/// What one call sends: the texts of its reads and of its writes, each in order.
struct Sent {
    std::vector<std::string> reads;
    std::vector<std::string> writes;
};

inline Sent Read(std::string statement) { return {{std::move(statement)}, {}}; }
inline Sent Write(std::string statement) { return {{}, {std::move(statement)}}; }
inline Sent Nothing() { return {}; }

/// One row of a table: a call, and what it sends on these engine kinds.
struct StatementCase {
    StatementCase(std::string operation, std::set<int> dbTypes, std::function<void(CAConnect&)> theCall, Sent theSent,
                  SourceLocation where = SourceLocation::current())
        : name(std::move(operation)),
          kinds(std::move(dbTypes)),
          call(std::move(theCall)),
          sent(std::move(theSent)),
          at(where)
    {
    }

    std::string name; // of the operation and the overload; several rows of one name share the kinds out among them
    std::set<int> kinds;
    std::function<void(CAConnect&)> call;
    Sent sent;
    SourceLocation at;
};

/// Runs every row on each of its kinds, on an engine that answers with no rows.
inline void ExpectStatements(const std::vector<StatementCase>& table)
{
    for (const StatementCase& row : table) {
        for (const int kind : row.kinds) {
            const testing::ScopedTrace trace(row.at.file_name(), static_cast<int>(row.at.line()),
                                             row.name + " on kind " + std::to_string(kind));
            scripted::Database database;
            CAConnect conn;
            database.Connect(conn, kind);
            row.call(conn);
            EXPECT_EQ(database.queries, row.sent.reads);
            EXPECT_EQ(database.executions, row.sent.writes);
        }
    }
}

/// A kind that no row of a name is run on would go untested.
inline void ExpectEveryKindIsCovered(const std::vector<StatementCase>& table)
{
    std::map<std::string, std::set<int>> covered;
    for (const StatementCase& row : table) {
        covered[row.name].insert(row.kinds.begin(), row.kinds.end());
    }
    EXPECT_FALSE(covered.empty());
    for (const auto& [name, kinds] : covered) {
        EXPECT_EQ(kinds, kAllKinds) << name;
    }
}

inline void ExpectTable(const std::vector<StatementCase>& table)
{
    ExpectStatements(table);
    ExpectEveryKindIsCovered(table);
}

} // namespace statements
