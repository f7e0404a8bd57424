#pragma once

#include "console/TerminalFrontEnd.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/Driver.h"
#include "schema/Schema.h"
#include "tests/support/CountingSession.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>

/// An empty directory in memory, with the counts of what a call has done on it.
class CountedDirectory : public testing::Test {
protected:
    void SetUp() override
    {
        m_conn.Open(std::make_unique<CountingSession>(dbaccess::FindDriver("sqlite")(":memory:"), m_counts));
        schema::Upgrade(m_conn);
    }

    /// Runs `body(call, frontEnd)` with a call of a console, and counts what it does. @return standard output, as CSV.
    template <class Body>
    std::string RunCall(const management::CallOptions& options, Body body)
    {
        std::istringstream in;
        std::ostringstream out;
        std::ostringstream err;
        console::Terminal terminal{in, out, err, false, false};
        const management::Command row;
        const console::CommandLine given;
        console::TerminalFrontEnd frontEnd(row, given, console::Format::csv, terminal);
        management::Call call([this]() -> CAConnect& { return m_conn; }, frontEnd, options);
        m_counts = {};
        body(call, frontEnd);
        return out.str();
    }

    SessionCounts m_counts;
    CAConnect m_conn;
};
