#include "dbaccess/drivers/mysql/Driver.h"

#include "dbaccess/DateText.h"
#include "dbaccess/EngineKind.h"
#include "dbaccess/drivers/common/NumberText.h"
#include "dbaccess/drivers/common/PasswordFile.h"
#include "dbaccess/drivers/mysql/Connection.h"
#include "dbaccess/drivers/mysql/Cursor.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <fstream>
#include <system_error>
#include <utility>

namespace dbaccess::mysql {

namespace {

constexpr unsigned int kPort = 3306;
constexpr unsigned int kLastPort = 65535;
constexpr unsigned int kLongestTimeout = 86400;
constexpr unsigned int kAllSyncWaits = 15;

// Says nothing of the text itself: what is misread may be a piece of the password.
[[noreturn]] void ThrowMalformedUrl()
{
    throw CAException(
        "mysql: wants mysql://USER@HOST:PORT,HOST:PORT/DATABASE?option=value; in a user name, a password, "
        "a database name and an option's value, write %40 for @, %2F for /, %3A for :, %3F for ?, %26 "
        "for & and %25 for %");
}

[[noreturn]] void Refuse(const std::string& sentence) { throw CAException(platform::Utf8ToAnsi(sentence)); }

int HexDigit(char ch)
{
    int digit = -1;
    std::from_chars(&ch, &ch + 1, digit, 16);
    return digit;
}

std::string Decoded(std::string_view text)
{
    std::string decoded;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool isCode =
            text[i] == '%' && i + 2 < text.size() && HexDigit(text[i + 1]) >= 0 && HexDigit(text[i + 2]) >= 0;
        decoded += isCode ? static_cast<char>(HexDigit(text[i + 1]) * 16 + HexDigit(text[i + 2])) : text[i];
        i += isCode ? 2 : 0;
    }
    if (decoded.find('\0') != std::string::npos) {
        ThrowMalformedUrl();
    }
    return decoded;
}

std::optional<unsigned int> NumberIn(std::string_view text, unsigned int least, unsigned int most)
{
    const auto number = IntegerIn(text);
    return number && *number >= least && *number <= most ? std::optional(static_cast<unsigned int>(*number))
                                                         : std::nullopt;
}

// The client library would read other characters as a list or as settings.
bool IsHost(std::string_view host)
{
    const auto fits = [](unsigned char ch) {
        return (ch >= '0' && ch <= '9') || (ch >= 'a' && ch <= 'z') || (ch >= 'A' && ch <= 'Z') || ch == '.' ||
               ch == '-' || ch == '_' || ch == ':' || ch == '%';
    };
    return !host.empty() && std::ranges::all_of(host, fits);
}

// "HOST", "HOST:PORT", "[IPV6]" or "[IPV6]:PORT". A "localhost" without a port is this machine's socket, as with the
// engine's own programs.
Server ReadServer(std::string_view text)
{
    Server server;
    const std::size_t bracket = text.starts_with('[') ? text.find(']') : 0;
    const std::size_t colon = bracket == std::string_view::npos ? bracket : text.find(':', bracket);
    server.host = bracket == 0 ? text.substr(0, colon) : text.substr(1, bracket - 1);
    const bool goesOn = bracket != 0 && bracket + 1 != std::min(colon, text.size());
    if (!IsHost(server.host) || goesOn) {
        ThrowMalformedUrl();
    }
    if (colon == std::string_view::npos) {
        server.port = server.host == "localhost" ? 0 : kPort;
        return server;
    }
    const auto port = NumberIn(text.substr(colon + 1), 1, kLastPort);
    if (!port) {
        ThrowMalformedUrl();
    }
    server.port = *port;
    return server;
}

std::vector<Server> ReadServers(std::string_view text)
{
    std::vector<Server> servers;
    if (text.empty()) {
        servers.emplace_back();
        return servers;
    }
    for (bool more = true; more;) {
        const std::size_t comma = text.find(',');
        servers.push_back(ReadServer(text.substr(0, comma)));
        more = comma != std::string_view::npos;
        text.remove_prefix(more ? comma + 1 : text.size());
    }
    return servers;
}

void ReadAddress(std::string_view address, Settings& settings)
{
    const std::size_t slash = address.starts_with("//") ? address.find('/', 2) : std::string_view::npos;
    if (slash == std::string_view::npos) {
        ThrowMalformedUrl();
    }
    const std::string_view database = address.substr(slash + 1);
    if (database.empty() || database.find_first_of("/@") != std::string_view::npos) {
        ThrowMalformedUrl();
    }
    settings.database = Decoded(database);
    std::string_view servers = address.substr(2, slash - 2);
    const std::size_t at = servers.rfind('@');
    if (at != std::string_view::npos) {
        const std::string_view who = servers.substr(0, at);
        const std::size_t colon = who.find(':');
        settings.user = Decoded(who.substr(0, colon));
        if (colon != std::string_view::npos) {
            settings.password = Decoded(who.substr(colon + 1));
        }
        servers.remove_prefix(at + 1);
    }
    settings.servers = ReadServers(servers);
}

unsigned int ReadNumber(const std::string& name, const std::string& value, unsigned int least, unsigned int most)
{
    const auto number = NumberIn(value, least, most);
    if (!number) {
        Refuse("the connection option " + name + " must be a number from " + std::to_string(least) + " to " +
               std::to_string(most));
    }
    return *number;
}

void ReadSocket(const std::string& path, Settings& settings)
{
    const Server& server = settings.servers.front();
    const bool isHere = server.host.empty() || (server.host == "localhost" && server.port == 0);
    if (settings.servers.size() != 1 || !isHere) {
        Refuse("connection option socket= is for servers of this machine: it goes with no host, or with localhost");
    }
    settings.servers = {Server{{}, 0, path}};
}

bool SetsPassword(std::ifstream& defaults)
{
    for (std::string line; std::getline(defaults, line);) {
        const std::size_t begin = line.find_first_not_of(" \t");
        if (begin != std::string::npos && std::string_view(line).substr(begin).starts_with("password")) {
            return true;
        }
    }
    return false;
}

// A file of the whole machine may give settings to everybody; only a password makes it a secret.
void ReadDefaultsFile(const std::string& path, Settings& settings)
{
    std::ifstream file(path);
    // The client library passes over a file that it cannot read.
    if (!file) {
        Refuse("cannot read the defaults file " + path + ": " + std::generic_category().message(errno));
    }
    if (SetsPassword(file)) {
        RequireClosedToOthers(path);
    }
    settings.defaultsFile = path;
}

bool ReadSwitch(const std::string& name, const std::string& value)
{
    if (value != "on" && value != "off") {
        Refuse("the connection option " + name + " must be on or off");
    }
    return value == "on";
}

// Options come in the order of their names: ssl before all others, ssl-verify after them.
bool ReadTlsOption(const std::string& name, const std::string& value, Settings& settings)
{
    if (name == "ssl") {
        settings.tls = ReadSwitch(name, value);
        return true;
    }
    if (name == "ssl-verify") {
        settings.tlsVerify = ReadSwitch(name, value);
    } else if (name == "ssl-ca") {
        settings.tlsCa = value;
    } else if (name == "ssl-cert") {
        settings.tlsCert = value;
    } else if (name == "ssl-key") {
        settings.tlsKey = value;
    } else {
        return false;
    }
    if (settings.tls == false) {
        Refuse("the connection option " + name + " does not go with ssl=off");
    }
    settings.tls = true;
    settings.tlsVerify = settings.tlsVerify || name != "ssl-verify";
    return true;
}

void ReadOption(const std::string& name, const std::string& value, Settings& settings)
{
    if (name == "socket") {
        ReadSocket(value, settings);
    } else if (name == "defaults-file") {
        ReadDefaultsFile(value, settings);
    } else if (name == "connect_timeout") {
        settings.connectTimeout = ReadNumber(name, value, 1, kLongestTimeout);
    } else if (name == "read_timeout") {
        settings.readTimeout = ReadNumber(name, value, 1, kLongestTimeout);
    } else if (name == "write_timeout") {
        settings.writeTimeout = ReadNumber(name, value, 1, kLongestTimeout);
    } else if (name == "wsrep_sync_wait") {
        settings.syncWait = ReadNumber(name, value, 0, kAllSyncWaits);
    } else if (name == "cleartext-password") {
        settings.cleartextPassword = ReadSwitch(name, value);
    } else if (name != "kind" && name != kStatementCache && !ReadTlsOption(name, value, settings)) {
        Refuse(
            "mysql: unknown connection option; the options are socket, defaults-file, ssl, ssl-ca, ssl-cert, ssl-key, "
            "ssl-verify, cleartext-password, connect_timeout, read_timeout, write_timeout, wsrep_sync_wait, "
            "statement-cache and kind");
    }
}

// @return how many bytes a comment at the front of the text takes; 0 without one. A comment that begins with /*! or
// /*M! is a statement to the server.
std::size_t CommentLength(std::string_view text)
{
    const bool isLine =
        text.starts_with('#') || text == "--" || (text.starts_with("--") && static_cast<unsigned char>(text[2]) <= ' ');
    const bool isBlock = text.starts_with("/*") && !text.starts_with("/*!") && !text.starts_with("/*M!");
    if (!isLine && !isBlock) {
        return 0;
    }
    const std::string_view end = isLine ? "\n" : "*/";
    const std::size_t found = text.find(end, isLine ? 0 : 2);
    return found == std::string_view::npos ? text.size() : found + end.size();
}

// The server takes comments alone for a statement that does nothing.
void RequireStatement(std::string_view sql)
{
    for (;;) {
        sql.remove_prefix(std::min(sql.size(), sql.find_first_not_of(" \t\r\n\v\f;")));
        const std::size_t length = CommentLength(sql);
        if (length == 0) {
            break;
        }
        sql.remove_prefix(length);
    }
    if (sql.empty()) {
        throw CAException("there is no statement in the text");
    }
}

std::string Utf8Of(const char* sql)
{
    RequireStatement(sql);
    return platform::AnsiIsUtf8() ? std::string(sql) : platform::AnsiToUtf8(sql);
}

std::string NameOfEngine(MYSQL* handle)
{
    const std::string_view version = mysql_get_server_info(handle);
    const bool isMariaDb = mariadb_connection(handle) != 0;
    return std::string(isMariaDb ? "MariaDB " : "MySQL ")
        .append(version.substr(0, version.find_first_not_of("0123456789.")));
}

class MysqlSession final : public Session {
public:
    MysqlSession(const Settings& settings, int dbType)
        : m_connection(std::make_shared<Connection>(settings)), m_dbType(dbType)
    {
    }

    [[nodiscard]] int DbType() const override { return m_dbType; }
    [[nodiscard]] std::string EngineName() const override { return NameOfEngine(m_connection->Get()); }
    [[nodiscard]] bool IsAlive() const override { return m_connection->IsAlive(); }

    std::int64_t Execute(const char* sql) override { return m_connection->Execute(Utf8Of(sql)); }

    std::unique_ptr<Cursor> Query(const char* sql) override
    {
        return std::make_unique<Rows>(m_connection, Utf8Of(sql));
    }

    void Begin() override { m_connection->Begin(); }
    void Commit() override { m_connection->Commit(); }
    void Rollback() override { m_connection->Rollback(); }

    [[nodiscard]] CString DateLiteral(const Date& date) const override { return QuotedDate(date); }

    // By characters of the ANSI code page: what is a character of its own there is one in UTF-8, where the server looks
    // for quotes and backslashes.
    [[nodiscard]] CString EscapeText(const CString& text) const override
    {
        CString escaped = text;
        escaped.Replace("\\", "\\\\");
        escaped.Replace("'", "''");
        return escaped;
    }

private:
    std::shared_ptr<Connection> m_connection;
    int m_dbType;
};

} // namespace

std::unique_ptr<Session> OpenSession(std::string_view location)
{
    const std::size_t mark = std::min(location.find('?'), location.size());
    Settings settings;
    ReadAddress(platform::AnsiToUtf8(location.substr(0, mark)), settings);
    // One there is the end of a password with a ? in it.
    if (platform::AnsiToUtf8(location.substr(mark)).find('@') != std::string::npos) {
        ThrowMalformedUrl();
    }
    const Location parsed = ParseLocation(location.substr(mark));
    const int dbType = DbTypeOption(parsed, NumberOf(EngineKind::mysql));
    settings.keptStatements = StatementCacheOption(parsed);
    for (const auto& [name, value] : parsed.options) {
        ReadOption(platform::AnsiToUtf8(name), Decoded(platform::AnsiToUtf8(value)), settings);
    }
    return std::make_unique<MysqlSession>(settings, dbType);
}

} // namespace dbaccess::mysql
