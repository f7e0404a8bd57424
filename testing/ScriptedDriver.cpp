#include "testing/ScriptedDriver.h"

#include <cstdlib>
#include <fstream>
#include <utility>

namespace scripted {

namespace {

// For tests of the texts by other means than a test program's: see tests/house/tsql_grammar.sh.
void Note(int dbType, const char* sql)
{
    if (const char* file = std::getenv("QV_NOTE_STATEMENTS")) {
        std::ofstream(file, std::ios::app | std::ios::binary) << dbType << '\t' << sql << '\0';
    }
}

class ScriptedCursor final : public dbaccess::Cursor {
public:
    explicit ScriptedCursor(Reply reply) : m_reply(std::move(reply))
    {
        const std::size_t width = m_reply.noColumns ? 0 : m_reply.rows.empty() ? 1 : m_reply.rows.front().size();
        for (std::size_t i = m_reply.columns.size(); i < width; ++i) {
            m_reply.columns.push_back("c" + std::to_string(i + 1));
        }
    }

    bool Step() override
    {
        if (m_reply.raiseAtRow == m_next) {
            throw CAException("row refused", "Script 2");
        }
        return m_next++ < m_reply.rows.size();
    }
    void Restart() override { m_next = 0; }
    [[nodiscard]] int ColumnCount() const override { return static_cast<int>(m_reply.columns.size()); }
    [[nodiscard]] std::string_view ColumnName(int column) const override
    {
        return m_reply.columns.at(static_cast<std::size_t>(column));
    }
    dbaccess::Field Read(int column) override
    {
        const Value& value = m_reply.rows.at(m_next - 1).at(static_cast<std::size_t>(column));
        return value ? dbaccess::Field::Text(value->data(), value->size()) : dbaccess::Field::Null();
    }

private:
    Reply m_reply;
    std::size_t m_next = 0;
};

} // namespace

class ScriptedSession final : public dbaccess::Session {
public:
    ScriptedSession(Database& database, int dbType) : m_database(database), m_dbType(dbType) {}

    [[nodiscard]] int DbType() const override { return m_dbType; }
    [[nodiscard]] std::string EngineName() const override { return m_database.engineName; }
    [[nodiscard]] bool IsAlive() const override { return m_database.m_alive; }
    std::int64_t Execute(const char* sql) override
    {
        Note(m_dbType, sql);
        m_database.executions.emplace_back(sql);
        return static_cast<std::int64_t>(Checked(m_database.Next()).rows.size());
    }
    std::unique_ptr<dbaccess::Cursor> Query(const char* sql) override
    {
        Note(m_dbType, sql);
        m_database.queries.emplace_back(sql);
        return std::make_unique<ScriptedCursor>(Checked(m_database.Next()));
    }
    void Begin() override { m_database.transactions += " begin"; }
    void Commit() override
    {
        m_database.transactions += " commit";
        if (m_database.refusesCommit) {
            throw CAException("no commit", "Script 1");
        }
    }
    void Rollback() override { m_database.transactions += " rollback"; }
    [[nodiscard]] CString DateLiteral(const dbaccess::Date& date) const override
    {
        CString literal;
        literal.Format("<%d-%d-%d %d:%d:%d>", date.year, date.month, date.day, date.hour, date.minute, date.second);
        return literal;
    }
    [[nodiscard]] CString EscapeText(const CString& text) const override { return text; }

private:
    static Reply Checked(Reply reply)
    {
        if (reply.raise) {
            throw CAException(CString(std::string_view(*reply.raise)), "Script 1");
        }
        return reply;
    }

    Database& m_database;
    int m_dbType;
};

Reply Rows(std::vector<std::vector<Value>> rows)
{
    Reply reply;
    reply.rows = std::move(rows);
    return reply;
}

Reply Raise(std::string message)
{
    Reply reply;
    reply.raise = std::move(message);
    return reply;
}

void Database::Connect(CAConnect& conn, int dbType) { conn.Open(std::make_unique<ScriptedSession>(*this, dbType)); }

Reply Database::Next()
{
    if (m_replies.empty()) {
        return {};
    }
    Reply reply = std::move(m_replies.front());
    m_replies.pop_front();
    return reply;
}

} // namespace scripted
