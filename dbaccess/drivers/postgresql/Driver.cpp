#include "dbaccess/drivers/postgresql/Driver.h"

#include "dbaccess/DateText.h"
#include "dbaccess/EngineKind.h"
#include "dbaccess/drivers/common/LocalHost.h"
#include "dbaccess/drivers/common/NumberText.h"
#include "dbaccess/drivers/common/PasswordFile.h"
#include "dbaccess/drivers/postgresql/ConnectGuarded.h"
#include "dbaccess/drivers/postgresql/Cursor.h"
#include "dbaccess/drivers/postgresql/Error.h"
#include "platform/CodePage.h"

#include <libpq-fe.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <iterator>
#include <new>
#include <sstream>
#include <string>
#include <utility>

namespace dbaccess::postgresql {

namespace {

constexpr const char* kConnectTimeout = "10";
constexpr const char* kCleartextPassword = "cleartext-password";

// What the driver relies on, whatever the server, the role or the database presets. Texts of floats that are exact
// need 3 on servers before 12, where any other number above 0 would do since.
constexpr std::string_view kSettings = " -c datestyle=ISO,YMD -c standard_conforming_strings=on -c extra_float_digits=3"
                                       " -c bytea_output=hex";

struct FreeOptions {
    void operator()(PQconninfoOption* options) const noexcept { PQconninfoFree(options); }
};
using ConnectOptions = std::unique_ptr<PQconninfoOption, FreeOptions>;

ConnectOptions ParsedUri(const std::string& uri) { return ConnectOptions(PQconninfoParse(uri.c_str(), nullptr)); }

[[noreturn]] void ThrowMalformedUrl()
{
    throw CAException("postgresql: cannot be read; write postgresql://USER@HOST:PORT/DATABASE?option=value, and in a "
                      "name or a password %40 for @, %3A for :, %2F for /, %3F for ?, %26 for & and %25 for %");
}

bool IsKnown(const std::string& name)
{
    // The first is the driver's business; with the second, the server would take no ordinary statements.
    if (name == "client_encoding" || name == "replication") {
        return false;
    }
    const ConnectOptions known = ParsedUri("postgresql://");
    const PQconninfoOption* option = known.get();
    while (option != nullptr && option->keyword != nullptr && name != option->keyword) {
        ++option;
    }
    return option != nullptr && option->keyword != nullptr;
}

// A password with a character that is a URL's own is cut in two there, and the second part would be taken for a host, a
// database or an option and be named in an error. So nothing of such a URL is repeated.
void ThrowIfPasswordCut(std::string_view location)
{
    const std::string_view path = location.substr(0, location.find('?'));
    const std::size_t at = path.rfind('@');
    if (!path.starts_with("//") || path.find('@') != at || (at != std::string_view::npos && at > path.find('/', 2))) {
        ThrowMalformedUrl();
    }
    std::string_view rest = location.substr(std::min(location.size(), path.size() + 1));
    if (at == std::string_view::npos && path.find(':') != std::string_view::npos &&
        rest.find('@') != std::string_view::npos) {
        ThrowMalformedUrl();
    }
    while (!rest.empty()) {
        const std::string_view option = rest.substr(0, rest.find('&'));
        if (option.find('=') == std::string_view::npos) {
            ThrowMalformedUrl();
        }
        rest.remove_prefix(std::min(rest.size(), option.size() + 1));
    }
}

// Without our own option, and with the "=" of values (options=-c a=b) as the client library wants it.
std::string UriOf(std::string_view location, const Location& parsed)
{
    std::string uri = "postgresql:" + std::string(location.substr(0, location.find('?')));
    char before = '?';
    for (const auto& [name, value] : parsed.options) {
        if (name == "kind" || name == kStatementCache || name == kCleartextPassword) {
            continue;
        }
        if (!IsKnown(name)) {
            throw CAException(
                "postgresql: unknown connection option; the options are kind, statement-cache, cleartext-password and "
                "those of libpq but for client_encoding and replication");
        }
        uri += before + name + '=';
        for (const char ch : value) {
            uri += ch == '=' ? std::string("%3D") : std::string(1, ch);
        }
        before = '&';
    }
    return platform::AnsiToUtf8(uri);
}

/// The names and values that a connection is asked for with.
class ConnectParams {
public:
    explicit ConnectParams(const PQconninfoOption* option)
    {
        for (; option->keyword != nullptr; ++option) {
            if (option->val != nullptr) {
                m_values.insert_or_assign(option->keyword, option->val);
            }
        }
    }

    [[nodiscard]] bool Has(const char* name) const { return m_values.contains(name); }
    void Set(const char* name, std::string value) { m_values.insert_or_assign(name, std::move(value)); }
    /// From here on, no server gets the password in clear text over a connection that is not encrypted.
    void Guard() { m_isGuarded = true; }
    [[nodiscard]] bool IsGuarded() const { return m_isGuarded; }
    /// The URL's value, else the environment's, else the preset.
    [[nodiscard]] std::string Get(const char* name, const char* variable, const char* preset) const
    {
        const auto found = m_values.find(name);
        if (found != m_values.end()) {
            return found->second;
        }
        const char* value = std::getenv(variable);
        return value != nullptr ? value : preset;
    }

    [[nodiscard]] Handle Connect() const
    {
        std::vector<const char*> names;
        std::vector<const char*> values;
        for (const auto& [name, value] : m_values) {
            names.push_back(name.c_str());
            values.push_back(value.c_str());
        }
        names.push_back(nullptr);
        values.push_back(nullptr);
        return m_isGuarded ? ConnectGuarded(names.data(), values.data(), Limit())
                           : Handle(PQconnectdbParams(names.data(), values.data(), 0));
    }

private:
    /// As the client library reads it: 1 means 2, anything but a number means no limit.
    [[nodiscard]] std::chrono::seconds Limit() const
    {
        const long limit =
            std::strtol(Get("connect_timeout", "PGCONNECT_TIMEOUT", kConnectTimeout).c_str(), nullptr, 10);
        return std::chrono::seconds(limit == 1 ? 2 : std::max(limit, 0L));
    }

    std::map<std::string, std::string> m_values;
    bool m_isGuarded = false;
};

// The entries of a list of hosts; an empty one is the server's usual socket.
std::vector<std::string> Entries(const std::string& list)
{
    std::vector<std::string> entries;
    std::istringstream text(list);
    for (std::string entry; std::getline(text, entry, ',');) {
        entries.push_back(entry);
    }
    return entries;
}

bool IsHere(const std::string& host)
{
    return host.empty() || host.starts_with('/') || host.starts_with('@') || IsLocalHost(host);
}

// Whether no host of the list can be anywhere else. An address goes before the host of the same place.
bool IsAllHere(const ConnectParams& params)
{
    std::vector<std::string> hosts = Entries(params.Get("host", "PGHOST", ""));
    const std::vector<std::string> addresses = Entries(params.Get("hostaddr", "PGHOSTADDR", ""));
    hosts.resize(std::max(hosts.size(), addresses.size()));
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        hosts[i] = addresses[i].empty() ? hosts[i] : addresses[i];
    }
    return std::ranges::all_of(hosts, IsHere);
}

bool MayPasswordBeCleartext(const Location& parsed)
{
    const auto option = parsed.options.find(kCleartextPassword);
    if (option != parsed.options.end() && option->second != "on" && option->second != "off") {
        throw CAException("the connection option cleartext-password must be on or off");
    }
    return option != parsed.options.end() && option->second == "on";
}

// A server chooses how the password is proved, and the client library cannot be told to refuse a request for the
// password itself. So it gets none for a server elsewhere that it may be connected to without encryption, and one on
// this machine, where a program of another user may listen in the server's place, is looked at while it is connected
// to.
void SetTls(ConnectParams& params, bool namesService, bool mayPasswordBeCleartext)
{
    if (namesService && !params.Has("sslmode")) {
        throw CAException("postgresql: the server of a service may be on another machine; add sslmode=require, or "
                          "sslmode=verify-full with sslrootcert=FILE, to the URL");
    }
    constexpr std::array<std::string_view, 3> kNotAlwaysEncrypted = {"disable", "allow", "prefer"};
    if (!namesService && IsAllHere(params)) {
        const std::string mode = params.Get("sslmode", "PGSSLMODE", "prefer");
        if (!mayPasswordBeCleartext && std::ranges::find(kNotAlwaysEncrypted, mode) != kNotAlwaysEncrypted.end()) {
            params.Guard();
        }
        return;
    }
    const std::string mode = params.Get("sslmode", "PGSSLMODE", "require");
    if (!mayPasswordBeCleartext && std::ranges::find(kNotAlwaysEncrypted, mode) != kNotAlwaysEncrypted.end()) {
        throw CAException(CString("postgresql: with sslmode=") + mode.c_str() +
                          " a server on another machine could read the password; write sslmode=require, or add "
                          "cleartext-password=on to connect all the same");
    }
    params.Set("sslmode", mode);
}

// A machine that is gone is noticed after two minutes, however long a statement may take.
void SetKeepalives(ConnectParams& params)
{
    constexpr std::array<std::pair<const char*, const char*>, 4> kLimits = {{{"keepalives_idle", "60"},
                                                                             {"keepalives_interval", "10"},
                                                                             {"keepalives_count", "6"},
                                                                             {"tcp_user_timeout", "120000"}}};
    for (const auto& [name, value] : kLimits) {
        if (!params.Has(name)) {
            params.Set(name, value);
        }
    }
}

ConnectParams ReadConnectParams(std::string_view location, const Location& parsed)
{
    const ConnectOptions options = ParsedUri(UriOf(location, parsed));
    if (options == nullptr) {
        ThrowMalformedUrl();
    }
    ConnectParams params(options.get());
    if (params.Get("port", "", "").find_first_not_of("0123456789,") != std::string::npos) {
        ThrowMalformedUrl();
    }
    const std::string passwordFile = params.Get("passfile", "", "");
    if (!passwordFile.empty()) {
        // The client library would pass over it, with a line of its own on standard error.
        RequireClosedToOthers(passwordFile);
    }
    const bool namesService = params.Has("service") || std::getenv("PGSERVICE") != nullptr;
    SetTls(params, namesService, MayPasswordBeCleartext(parsed));
    if (!namesService) {
        SetKeepalives(params);
    }
    params.Set("connect_timeout", params.Get("connect_timeout", "PGCONNECT_TIMEOUT", kConnectTimeout));
    params.Set("options", params.Get("options", "PGOPTIONS", "") + std::string(kSettings));
    params.Set("client_encoding", "UTF8");
    return params;
}

void DropNotice(void* /*context*/, const PGresult* /*notice*/) {}

/// One connection to ask for with each host: the guard, unlike the client library, knows one at a time.
std::vector<ConnectParams> ByHost(const ConnectParams& params)
{
    const std::vector<std::string> hosts = Entries(params.Get("host", "PGHOST", ""));
    const std::vector<std::string> addresses = Entries(params.Get("hostaddr", "PGHOSTADDR", ""));
    const std::vector<std::string> ports = Entries(params.Get("port", "PGPORT", ""));
    std::vector<ConnectParams> each(std::max({hosts.size(), addresses.size(), std::size_t{1}}), params);
    for (std::size_t i = 0; i < each.size(); ++i) {
        for (const auto& [name, list] : {std::pair{"host", &hosts}, {"hostaddr", &addresses}, {"port", &ports}}) {
            if (list->size() > 1 && i < list->size()) {
                each[i].Set(name, (*list)[i]);
            }
        }
    }
    return each;
}

/// In the order of the client library: a standby that is preferred is looked for on all hosts before another server is
/// taken.
std::vector<ConnectParams> InTurn(const ConnectParams& params)
{
    constexpr const char* kKind = "target_session_attrs";
    if (params.Get(kKind, "PGTARGETSESSIONATTRS", "") != "prefer-standby") {
        return ByHost(params);
    }
    std::vector<ConnectParams> each;
    for (const char* kind : {"standby", "any"}) {
        ConnectParams wanted = params;
        wanted.Set(kKind, kind);
        std::ranges::move(ByHost(wanted), std::back_inserter(each));
    }
    return each;
}

/// The first that can be connected to. @throws CAException with why none can.
Handle ConnectToAny(const std::vector<ConnectParams>& each)
{
    std::string failures;
    const auto note = [&failures](const std::string& failure) {
        failures += failures.find(failure) == std::string::npos ? failure : "";
    };
    for (const ConnectParams& params : each) {
        try {
            Handle db = params.Connect();
            if (db == nullptr) {
                throw std::bad_alloc();
            }
            if (PQstatus(db.get()) == CONNECTION_OK) {
                return db;
            }
            note(PQerrorMessage(db.get()));
        } catch (const ConnectTimeout& timeout) {
            note(timeout.GetErrorText().GetString());
        }
    }
    throw ConnectError(failures);
}

std::shared_ptr<Connection> Connect(const ConnectParams& params, std::size_t keptStatements)
{
    Handle db = ConnectToAny(params.IsGuarded() ? InTurn(params) : std::vector<ConnectParams>{params});
    PQsetNoticeReceiver(db.get(), &DropNotice, nullptr);
    return std::make_shared<Connection>(std::move(db), keptStatements);
}

// The client library hands the variable PGDATESTYLE to the server, where it goes before the options.
void SetDateStyle(Connection& connection)
{
    const char* style = PQparameterStatus(connection.Db(), "DateStyle");
    if (style == nullptr || std::string_view(style) != "ISO, YMD") {
        connection.Run("SET datestyle TO ISO, YMD");
    }
}

std::string Utf8Of(const char* sql) { return platform::AnsiIsUtf8() ? std::string(sql) : platform::AnsiToUtf8(sql); }

// The server counts the rows that a query gave, too.
std::int64_t ChangedRows(PGresult* result)
{
    constexpr std::array<std::string_view, 4> writes = {"INSERT", "UPDATE", "DELETE", "MERGE"};
    const std::string_view tag = PQcmdStatus(result);
    const bool isWrite = std::ranges::any_of(writes, [tag](std::string_view write) { return tag.starts_with(write); });
    return isWrite ? IntegerIn(PQcmdTuples(result)).value_or(0) : 0;
}

class PostgresqlSession final : public Session {
public:
    PostgresqlSession(std::shared_ptr<Connection> connection, int dbType)
        : m_connection(std::move(connection)), m_dbType(dbType)
    {
    }

    [[nodiscard]] int DbType() const override { return m_dbType; }

    [[nodiscard]] std::string EngineName() const override
    {
        const char* version = PQparameterStatus(m_connection->Db(), "server_version");
        const std::string_view text = version != nullptr ? version : "";
        return "PostgreSQL " + std::string(text.substr(0, text.find(' ')));
    }

    [[nodiscard]] bool IsAlive() const override { return m_connection->IsAlive(); }

    std::int64_t Execute(const char* sql) override
    {
        ThrowIfTransactionLost();
        return ChangedRows(m_connection->Run(Utf8Of(sql)).get());
    }

    std::unique_ptr<Cursor> Query(const char* sql) override
    {
        ThrowIfTransactionLost();
        auto rows = std::make_unique<Rows>(m_connection, Utf8Of(sql));
        rows->Restart();
        return rows;
    }

    // The server only warns of a transaction too many or one that is not there.
    void Begin() override
    {
        ThrowIfTransactionLost();
        if (!IsIdle()) {
            throw CAException("a transaction is already open");
        }
        m_connection->Run("BEGIN");
        m_inTransaction = true;
    }

    void Commit() override
    {
        ThrowIfTransactionLost();
        if (IsIdle()) {
            throw CAException("no transaction is open");
        }
        const Result result = m_connection->Run("COMMIT");
        // The answer to a COMMIT of what has failed before; it is no error to the server.
        if (std::string_view(PQcmdStatus(result.get())) == "ROLLBACK") {
            throw CAException(kRolledBack);
        }
        m_inTransaction = false;
    }

    void Rollback() override
    {
        m_inTransaction = false;
        if (!IsIdle()) {
            m_connection->Run("ROLLBACK");
        }
    }

    // A literal without a type takes that of the column beside it: a date drops the time, a text sorts by it.
    [[nodiscard]] CString DateLiteral(const Date& date) const override { return QuotedDate(date); }

    [[nodiscard]] CString EscapeText(const CString& text) const override
    {
        CString escaped = text;
        escaped.Replace("'", "''");
        return escaped;
    }

private:
    static constexpr const char* kRolledBack = "the engine has rolled the transaction back after an earlier error";

    /// Whether no transaction is open. A result that is still being read hides that, so its rest is read first.
    [[nodiscard]] bool IsIdle() const
    {
        m_connection->MakeReady();
        return PQtransactionStatus(m_connection->Db()) == PQTRANS_IDLE;
    }

    // A commit that fails ends the transaction on the server; what follows would be applied alone.
    void ThrowIfTransactionLost() const
    {
        if (m_inTransaction && PQtransactionStatus(m_connection->Db()) == PQTRANS_IDLE) {
            throw CAException(kRolledBack);
        }
    }

    std::shared_ptr<Connection> m_connection;
    int m_dbType;
    bool m_inTransaction = false;
};

} // namespace

std::unique_ptr<Session> OpenSession(std::string_view location)
{
    ThrowIfPasswordCut(location);
    const Location parsed = ParseLocation(location);
    const int dbType = DbTypeOption(parsed, NumberOf(EngineKind::comparesInCapitals));
    std::shared_ptr<Connection> connection = Connect(ReadConnectParams(location, parsed), StatementCacheOption(parsed));
    SetDateStyle(*connection);
    return std::make_unique<PostgresqlSession>(std::move(connection), dbType);
}

} // namespace dbaccess::postgresql
