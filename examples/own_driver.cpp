// A driver of a program's own: "traced:URL" opens URL with the driver that it names, and prints every statement.
// own_driver traced:sqlite:/var/lib/quorvel/directory.db
#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CAException.h"
#include "dbaccess/Driver.h"

#include <cstdint>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

namespace {

// A session is what a driver has to bring; a driver of an engine also brings cursors. All texts are in the ANSI code
// page, and every failure is a CAException.
class TracedSession final : public dbaccess::Session {
public:
    explicit TracedSession(std::unique_ptr<dbaccess::Session> session) : m_session(std::move(session)) {}

    std::int64_t Execute(const char* sql) override { return m_session->Execute(Traced(sql)); }
    std::unique_ptr<dbaccess::Cursor> Query(const char* sql) override { return m_session->Query(Traced(sql)); }
    void Begin() override { m_session->Begin(); }
    void Commit() override { m_session->Commit(); }
    void Rollback() override { m_session->Rollback(); }

    int DbType() const override { return m_session->DbType(); }
    std::string EngineName() const override { return m_session->EngineName(); }
    bool IsAlive() const override { return m_session->IsAlive(); }
    CString DateLiteral(const dbaccess::Date& date) const override { return m_session->DateLiteral(date); }
    CString EscapeText(const CString& text) const override { return m_session->EscapeText(text); }

private:
    static const char* Traced(const char* sql)
    {
        std::cout << sql << '\n';
        return sql;
    }

    std::unique_ptr<dbaccess::Session> m_session;
};

// Opens what follows "traced:".
std::unique_ptr<dbaccess::Session> OpenTraced(std::string_view url)
{
    const std::size_t colon = url.find(':');
    if (colon == std::string_view::npos) {
        throw CAException("traced: is followed by the URL of a database");
    }
    const dbaccess::SessionFactory open = dbaccess::FindDriver(url.substr(0, colon));
    return std::make_unique<TracedSession>(open(url.substr(colon + 1)));
}

} // namespace

int main(int argc, char* argv[])
{
    if (argc != 2) {
        std::cerr << "usage: own_driver URL\n";
        return 2;
    }
    dbaccess::RegisterDriver("traced", &OpenTraced);
    CAConnect conn;
    try {
        conn.Open(argv[1]);
    } catch (const CAException& e) {
        std::cerr << e.GetErrorText().GetString() << '\n';
        return 1;
    }
    int count = 0;
    return CQVBaseFun::GetUserItemCount(conn, count) ? 0 : 1;
}
