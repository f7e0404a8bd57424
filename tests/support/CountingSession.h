#pragma once

#include "dbaccess/Driver.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

/// A session that keeps the statements that change something, to see how many there were.
class CountingSession final : public dbaccess::Session {
public:
    CountingSession(std::unique_ptr<dbaccess::Session> session, std::vector<std::string>& executed)
        : m_session(std::move(session)), m_executed(executed)
    {
    }

    [[nodiscard]] int DbType() const override { return m_session->DbType(); }
    [[nodiscard]] std::string EngineName() const override { return m_session->EngineName(); }
    [[nodiscard]] bool IsAlive() const override { return m_session->IsAlive(); }
    std::int64_t Execute(const char* sql) override
    {
        m_executed.emplace_back(sql);
        return m_session->Execute(sql);
    }
    std::unique_ptr<dbaccess::Cursor> Query(const char* sql) override { return m_session->Query(sql); }
    void Begin() override { m_session->Begin(); }
    void Commit() override { m_session->Commit(); }
    void Rollback() override { m_session->Rollback(); }
    [[nodiscard]] CString DateLiteral(const dbaccess::Date& date) const override
    {
        return m_session->DateLiteral(date);
    }
    [[nodiscard]] CString EscapeText(const CString& text) const override { return m_session->EscapeText(text); }

private:
    std::unique_ptr<dbaccess::Session> m_session;
    std::vector<std::string>& m_executed;
};
