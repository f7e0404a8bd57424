#pragma once

#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/Driver.h"

#include <memory>
#include <string>
#include <utility>

/// A session that ends before the statement of a given number, as that of a program which is killed there.
class StoppingSession : public dbaccess::Session {
public:
    /// @param statements  how many are let through, counting the begin and the end of a transaction.
    StoppingSession(std::unique_ptr<dbaccess::Session> session, int statements)
        : m_session(std::move(session)), m_left(statements)
    {
    }

    /// Opens a connection to a database with such a session.
    static void Open(CAConnect& conn, const std::string& url, int statements)
    {
        const std::size_t colon = url.find(':');
        conn.Open(std::make_unique<StoppingSession>(dbaccess::FindDriver(url.substr(0, colon))(url.substr(colon + 1)),
                                                    statements));
    }

    [[nodiscard]] int DbType() const override { return m_dbType; }
    [[nodiscard]] std::string EngineName() const override { return m_engineName; }
    [[nodiscard]] bool IsAlive() const override { return m_session != nullptr; }
    std::int64_t Execute(const char* sql) override { return Next().Execute(sql); }
    std::unique_ptr<dbaccess::Cursor> Query(const char* sql) override { return Next().Query(sql); }
    void Begin() override { Next().Begin(); }
    void Commit() override { Next().Commit(); }
    void Rollback() override { Next().Rollback(); }
    [[nodiscard]] CString DateLiteral(const dbaccess::Date& date) const override
    {
        return m_session->DateLiteral(date);
    }
    [[nodiscard]] CString EscapeText(const CString& text) const override { return m_session->EscapeText(text); }

private:
    dbaccess::Session& Next()
    {
        if (m_session == nullptr || m_left-- == 0) {
            m_session.reset();
            throw CAException("stopped");
        }
        return *m_session;
    }

    std::unique_ptr<dbaccess::Session> m_session;
    int m_left;
    int m_dbType = m_session->DbType();
    std::string m_engineName = m_session->EngineName();
};
