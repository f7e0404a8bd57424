#include "dbaccess/drivers/odbc/Driver.h"

#include "dbaccess/DateText.h"
#include "dbaccess/EngineKind.h"
#include "dbaccess/drivers/common/PasswordFile.h"
#include "dbaccess/drivers/odbc/Connection.h"
#include "dbaccess/drivers/odbc/ConnectionString.h"
#include "dbaccess/drivers/odbc/Cursor.h"
#include "dbaccess/drivers/odbc/Statement.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cerrno>
#include <fstream>
#include <string>
#include <system_error>
#include <utility>

namespace dbaccess::odbc {

namespace {

// Says nothing of the text itself: what is misread may be a piece of the password.
[[noreturn]] void ThrowMalformedUrl()
{
    throw CAException("odbc: wants odbc:KEYWORD=VALUE;KEYWORD=VALUE?option=value, with the options kind=N and "
                      "password-file=PATH; in the connection string write %3F for ? and %25 for a % before 3F or 25, "
                      "and put braces around a value with a ; in it: {a;b}");
}

[[noreturn]] void Refuse(const std::string& sentence) { throw CAException(platform::Utf8ToAnsi(sentence)); }

// ParseLocation names what it cannot read.
void ThrowIfPasswordCut(std::string_view location)
{
    std::string_view options = location.substr(std::min(location.find('?'), location.size()));
    options.remove_prefix(std::min<std::size_t>(options.size(), 1));
    while (!options.empty()) {
        const std::string_view option = options.substr(0, options.find('&'));
        options.remove_prefix(std::min(options.size(), option.size() + 1));
        if (!option.starts_with("kind=") && !option.starts_with("password-file=")) {
            ThrowMalformedUrl();
        }
    }
}

// The first line of a file that only its owner can read.
std::string PasswordIn(const std::string& path)
{
    std::ifstream file(path);
    if (!file) {
        Refuse("cannot read the password file " + path + ": " + std::generic_category().message(errno));
    }
    RequireClosedToOthers(path);
    std::string password;
    std::getline(file, password);
    if (password.ends_with('\r')) {
        password.pop_back();
    }
    if (password.empty()) {
        Refuse("the password file " + path + " has no password in its first line");
    }
    return password;
}

ConnectionString ReadString(const Location& location)
{
    ConnectionString string(platform::AnsiToUtf8(location.path));
    if (!string.IsWellFormed()) {
        ThrowMalformedUrl();
    }
    const auto file = location.options.find("password-file");
    if (file != location.options.end()) {
        if (string.Has("PWD") || string.Has("PASSWORD")) {
            throw CAException("odbc: the password is given twice, in the connection string and by password-file");
        }
        string.Add("PWD", PasswordIn(platform::AnsiToUtf8(file->second)));
    }
    return string;
}

// An engine whose name says nothing is what the caller takes it for.
Dialect DialectOf(EngineKind kind)
{
    return kind == EngineKind::access      ? Dialect::access
           : kind == EngineKind::sqlServer ? Dialect::sqlServer
           : kind == EngineKind::mysql     ? Dialect::mysql
                                           : Dialect::other;
}

EngineKind KindOf(Dialect dialect)
{
    return dialect == Dialect::access      ? EngineKind::access
           : dialect == Dialect::sqlServer ? EngineKind::sqlServer
           : dialect == Dialect::mysql     ? EngineKind::mysql
                                           : EngineKind::comparesInCapitals;
}

class OdbcSession final : public Session {
public:
    OdbcSession(std::shared_ptr<Connection> connection, int dbType)
        : m_connection(std::move(connection)), m_dbType(dbType)
    {
    }

    [[nodiscard]] int DbType() const override { return m_dbType; }

    [[nodiscard]] std::string EngineName() const override
    {
        return m_connection->Info(SQL_DBMS_NAME) + " " + m_connection->Info(SQL_DBMS_VER) + " through " +
               m_connection->Info(SQL_DRIVER_NAME) + " " + m_connection->Info(SQL_DRIVER_VER);
    }

    [[nodiscard]] bool IsAlive() const override { return m_connection->IsAlive(); }

    std::int64_t Execute(const char* sql) override { return m_connection->Execute(StatementIn(sql)); }

    std::unique_ptr<Cursor> Query(const char* sql) override
    {
        return std::make_unique<Rows>(m_connection, StatementIn(sql));
    }

    void Begin() override { m_connection->Begin(); }
    void Commit() override { m_connection->Commit(); }
    void Rollback() override { m_connection->Rollback(); }

    [[nodiscard]] CString DateLiteral(const Date& date) const override
    {
        CString literal = QuotedDate(date);
        if (m_connection->Engine() == Dialect::access) {
            literal.Replace("'", "#");
        }
        return literal;
    }

    // By characters of the ANSI code page: what is a character of its own there is one in UTF-8, where the engine looks
    // for quotes and backslashes. SQL Server leaves out a backslash at the end of a line, and the end of the line.
    [[nodiscard]] CString EscapeText(const CString& text) const override
    {
        CString escaped = text;
        if (m_connection->Engine() == Dialect::mysql) {
            escaped.Replace("\\", "\\\\");
        } else if (m_connection->Engine() == Dialect::sqlServer) {
            escaped.Replace("\\\r\n", "\\\\\r\n\r\n");
            escaped.Replace("\\\n", "\\\\\n\n");
        }
        escaped.Replace("'", "''");
        return escaped;
    }

private:
    [[nodiscard]] std::string StatementIn(const char* sql) const
    {
        const std::string text = platform::AnsiToUtf8(sql);
        return std::string(OneStatement(text, m_connection->Engine()));
    }

    std::shared_ptr<Connection> m_connection;
    int m_dbType;
};

} // namespace

std::unique_ptr<Session> OpenSession(std::string_view location)
{
    ThrowIfPasswordCut(location);
    const Location parsed = ParseLocation(location);
    const auto requested = static_cast<EngineKind>(DbTypeOption(parsed, NumberOf(EngineKind::comparesInCapitals)));
    auto connection = std::make_shared<Connection>(ReadString(parsed));
    if (connection->Engine() == Dialect::other) {
        connection->SetEngine(DialectOf(requested));
    }
    connection->Prepare();
    const int dbType = DbTypeOption(parsed, NumberOf(KindOf(connection->Engine())));
    return std::make_unique<OdbcSession>(std::move(connection), dbType);
}

} // namespace dbaccess::odbc
