#pragma once

#include "dbaccess/Driver.h"

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

/// A cursor that counts the rows that are read.
class CountingCursor final : public dbaccess::Cursor {
public:
    CountingCursor(std::unique_ptr<dbaccess::Cursor> cursor, std::size_t& rows)
        : m_cursor(std::move(cursor)), m_rows(rows)
    {
    }

    bool Step() override
    {
        const bool hasRow = m_cursor->Step();
        m_rows += hasRow ? 1 : 0;
        return hasRow;
    }
    void Restart() override { m_cursor->Restart(); }
    [[nodiscard]] int ColumnCount() const override { return m_cursor->ColumnCount(); }
    [[nodiscard]] std::string_view ColumnName(int column) const override { return m_cursor->ColumnName(column); }
    dbaccess::Field Read(int column) override { return m_cursor->Read(column); }

private:
    std::unique_ptr<dbaccess::Cursor> m_cursor;
    std::size_t& m_rows;
};

/// What was done on a session, and what it says of itself.
struct SessionCounts {
    std::vector<std::string> executed; ///< statements that change something
    std::size_t statements = 0;        ///< of all kinds, those of transactions among them
    std::size_t rows = 0;              ///< that were read
    std::string engineName;            ///< its own when empty
    std::function<void()> beforeQuery; ///< is called before each query, where there is one
};

/// A session that counts what is done on it.
class CountingSession final : public dbaccess::Session {
public:
    CountingSession(std::unique_ptr<dbaccess::Session> session, SessionCounts& counts)
        : m_session(std::move(session)), m_counts(counts)
    {
    }

    [[nodiscard]] int DbType() const override { return m_session->DbType(); }
    [[nodiscard]] std::string EngineName() const override
    {
        return m_counts.engineName.empty() ? m_session->EngineName() : m_counts.engineName;
    }
    [[nodiscard]] bool IsAlive() const override { return m_session->IsAlive(); }
    std::int64_t Execute(const char* sql) override
    {
        ++m_counts.statements;
        m_counts.executed.emplace_back(sql);
        return m_session->Execute(sql);
    }
    std::unique_ptr<dbaccess::Cursor> Query(const char* sql) override
    {
        ++m_counts.statements;
        if (m_counts.beforeQuery) {
            m_counts.beforeQuery();
        }
        return std::make_unique<CountingCursor>(m_session->Query(sql), m_counts.rows);
    }
    void Begin() override
    {
        ++m_counts.statements;
        m_session->Begin();
    }
    void Commit() override
    {
        ++m_counts.statements;
        m_session->Commit();
    }
    void Rollback() override { m_session->Rollback(); }
    [[nodiscard]] CString DateLiteral(const dbaccess::Date& date) const override
    {
        return m_session->DateLiteral(date);
    }
    [[nodiscard]] CString EscapeText(const CString& text) const override { return m_session->EscapeText(text); }

private:
    std::unique_ptr<dbaccess::Session> m_session;
    SessionCounts& m_counts;
};
