#include "dbaccess/CAConnect.h"

#include "dbaccess/CAException.h"
#include "dbaccess/DateText.h"
#include "dbaccess/Driver.h"
#include "dbaccess/EngineKind.h"
#include "dbaccess/StatementObserver.h"

#include <algorithm>
#include <limits>
#include <string_view>
#include <utility>

CAConnect::CAConnect() = default;
CAConnect::~CAConnect() = default;

void CAConnect::Open(const CString& url)
{
    Close();
    const std::string_view text = url.View();
    if (text.find('\0') != std::string_view::npos) {
        throw CAException("a connection URL cannot hold a NUL byte");
    }
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos) {
        throw CAException("a connection URL begins with its scheme, such as sqlite:PATH");
    }
    Open(dbaccess::FindDriver(text.substr(0, colon))(text.substr(colon + 1)));
}

void CAConnect::Open(std::unique_ptr<dbaccess::Session> session)
{
    Close();
    m_nDBType = session->DbType();
    m_session = std::move(session);
}

void CAConnect::Close() noexcept
{
    m_session.reset();
    m_failure.reset();
    m_inTransaction = false;
}

bool CAConnect::IsOpen() const noexcept { return m_session != nullptr && m_session->IsAlive(); }

template <class Body>
auto CAConnect::RecordFailure(Body body) -> decltype(body())
{
    if (!m_inTransaction) {
        m_failure.reset();
    }
    try {
        return body();
    } catch (const CAException& e) {
        if (m_failure == nullptr) {
            m_failure = std::make_unique<CAException>(e);
        }
        throw;
    }
}

std::unique_ptr<dbaccess::Cursor> CAConnect::Query(const char* sql)
{
    return RecordFailure([&] { return m_session->Query(sql); });
}

dbaccess::Session& CAConnect::Required() const
{
    if (!IsOpen()) {
        throw CAException("the database connection is not open");
    }
    return *m_session;
}

const CAException* CAConnect::GetFailure() const noexcept { return m_failure.get(); }

int CAConnect::Execute(const char* sql)
{
    dbaccess::Session& session = Required();
    // What the observer does on this connection is not shown to it.
    dbaccess::StatementObserver* const observer = std::exchange(m_observer, nullptr);
    const auto restore = [&] { m_observer = observer; };
    try {
        if (observer != nullptr) {
            observer->BeforeExecute(*this, sql);
        }
        const std::int64_t changed = RecordFailure([&] { return session.Execute(sql); });
        const int rows = static_cast<int>(std::min<std::int64_t>(changed, std::numeric_limits<int>::max()));
        if (observer != nullptr) {
            observer->AfterExecute(*this, sql, rows);
        }
        restore();
        return rows;
    } catch (...) {
        restore();
        throw;
    }
}

dbaccess::StatementObserver* CAConnect::SetObserver(dbaccess::StatementObserver* observer) noexcept
{
    return std::exchange(m_observer, observer);
}

CString CAConnect::GetDateStrOnSQL(CString date)
{
    const dbaccess::Session& session = Required();
    const auto parsed = dbaccess::ParseExactDate(date.View());
    if (!parsed) {
        throw CAException("\"" + date + "\" is not a date: YYYY-MM-DD or YYYY-MM-DD HH:MM:SS");
    }
    return session.DateLiteral(*parsed);
}

void CAConnect::BeginTrans()
{
    dbaccess::Session& session = Required();
    RecordFailure([&] { session.Begin(); });
    m_inTransaction = true;
}

void CAConnect::CommitTrans()
{
    dbaccess::Session& session = Required();
    RecordFailure([&] { session.Commit(); });
    m_inTransaction = false;
}

void CAConnect::RollbackTrans()
{
    dbaccess::Session& session = Required();
    m_inTransaction = false;
    RecordFailure([&] { session.Rollback(); });
}

CString CAConnect::EscapeLiteral(const CString& text) const
{
    const dbaccess::Session& session = Required();
    if (text.View().find('\0') != std::string_view::npos) {
        throw CAException("a text with a NUL byte cannot be part of a statement");
    }
    return session.EscapeText(text);
}

CString CAConnect::EscapeBackslashes(const CString& text) const
{
    // By the engine and not by the kind that the connection acts on: what the engine takes for an escape decides.
    CString escaped = EscapeLiteral(text);
    escaped.Replace("''", "'");
    return escaped;
}

CString CAConnect::EscapeQuotes(const CString& text) const
{
    CString escaped = EscapeLiteral(text);
    if (dbaccess::EngineKindOf(*this) == dbaccess::EngineKind::mysql) { // operations double the backslashes
        escaped = text;
        escaped.Replace("'", "''");
    }
    return escaped;
}

CString CAConnect::GetEngineName() const { return CString(std::string_view(Required().EngineName())); }
