#include "dbaccess/drivers/mysql/Connection.h"

#include "dbaccess/CAException.h"
#include "dbaccess/drivers/common/LocalHost.h"
#include "dbaccess/drivers/mysql/Error.h"
#include "platform/CodePage.h"

#include <errmsg.h>
#include <ma_pvio.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <new>
#include <utility>

namespace dbaccess::mysql {

namespace {

using Clock = std::chrono::steady_clock;

// Results that end soon are read to their end, which is cheaper than a second connection.
constexpr int kRowsReadToTheEnd = 256;
constexpr auto kTimeToReadToTheEnd = std::chrono::milliseconds(2);
// Nobody should wait long for what only saves time.
constexpr unsigned int kLongestWaitForInterrupt = 2;

// A peer that is silent for this long is asked whether it is still there, in this interval, this often: seconds.
constexpr int kKeepaliveIdle = 60;
constexpr int kKeepaliveInterval = 10;
constexpr int kKeepaliveCount = 6;
constexpr int kUserTimeout = 120'000; // what was sent and not acknowledged, in milliseconds

// Needs no table and changes nothing; a node that takes no statements refuses it, unlike SET and SELECT 1.
constexpr const char* kPing = "DO 0";

// The server's numbers for a prepared statement that it does not know, and for one that it cannot prepare again.
constexpr unsigned int kUnknownStatement = 1243;
constexpr unsigned int kNeedsPreparing = 1615;

constexpr std::size_t kLongestFirstWord = 6;

// In lower case; only as much of it as tells it from the words that matter.
std::string FirstWord(std::string_view sql)
{
    sql.remove_prefix(std::min(sql.size(), sql.find_first_not_of(" \t\r\n\f")));
    std::string word(sql.substr(0, kLongestFirstWord));
    for (char& ch : word) {
        ch = ch >= 'A' && ch <= 'Z' ? static_cast<char>(ch + ('a' - 'A')) : ch;
    }
    return word;
}

// USE and SET change what a statement means that was prepared before them.
bool MayChangeSession(std::string_view sql)
{
    constexpr std::array<std::string_view, 4> harmless = {"select", "insert", "update", "delete"};
    return std::ranges::find(harmless, FirstWord(sql)) == harmless.end();
}

// Every setting that changes what our statements mean or whether they last is set, whatever the server's presets are.
// Rows wait in the network while a caller looks at them, so the server must be patient.
std::string SettingStatement(const Settings& settings)
{
    std::string sql = "SET NAMES utf8mb4, SESSION autocommit=1, SESSION net_write_timeout=3600, "
                      "SESSION sql_mode='STRICT_TRANS_TABLES,ERROR_FOR_DIVISION_BY_ZERO,NO_ENGINE_SUBSTITUTION'";
    if (settings.syncWait) {
        sql += ", SESSION wsrep_sync_wait=" + std::to_string(*settings.syncWait);
    }
    return sql;
}

const char* TextOrNull(const std::string& text) { return text.empty() ? nullptr : text.c_str(); }

// A password given by nobody is an empty one; without a text of ours, the client library reads the defaults file's.
const char* PasswordOf(const Settings& settings)
{
    if (settings.password) {
        return settings.password->c_str();
    }
    if (!settings.defaultsFile.empty()) {
        return nullptr;
    }
    const char* variable = std::getenv("MYSQL_PWD");
    return variable == nullptr ? "" : variable;
}

bool IsSocket(const Server& server) { return server.port == 0; }

bool WantsTls(const Settings& settings, const Server& server)
{
    return settings.tls.value_or(!IsSocket(server) && !IsLocalHost(server.host));
}

void SetTls(MYSQL* handle, const Settings& settings)
{
    const my_bool on = 1;
    const my_bool verify = settings.tlsVerify ? 1 : 0;
    mysql_options(handle, MYSQL_OPT_SSL_ENFORCE, &on);
    mysql_options(handle, MYSQL_OPT_SSL_VERIFY_SERVER_CERT, &verify);
    mysql_options(handle, MYSQL_OPT_SSL_CA, TextOrNull(settings.tlsCa));
    mysql_options(handle, MYSQL_OPT_SSL_CERT, TextOrNull(settings.tlsCert));
    mysql_options(handle, MYSQL_OPT_SSL_KEY, TextOrNull(settings.tlsKey));
}

// Without a word, newer client libraries insist on a certificate, and so on encryption.
void AllowNoTls(MYSQL* handle)
{
    const my_bool verify = 0;
    mysql_options(handle, MYSQL_OPT_SSL_VERIFY_SERVER_CERT, &verify);
}

// The server chooses how the password is proved. Left out are the ways that hand it over as it is, and those that
// encrypt it with a key which the server itself has just named, unless it is known whose server that is.
void SetPasswordMethods(MYSQL* handle, const Settings& settings, const Server& server)
{
    const bool isKnown = IsSocket(server) || (WantsTls(settings, server) && settings.tlsVerify);
    if (!isKnown && !settings.cleartextPassword) {
        mysql_options(handle, MARIADB_OPT_RESTRICTED_AUTH, "mysql_native_password,client_ed25519,auth_gssapi_client");
    }
}

// The client library goes on without encryption where a server has none and its certificate is not looked at.
bool IsEncryptedAsWanted(MYSQL* handle, const Settings& settings, const Server& server)
{
    return !WantsTls(settings, server) || mysql_get_ssl_cipher(handle) != nullptr;
}

// Newer client libraries also take a certificate that no authority has signed, from a server on this machine or one
// that knows the account's password.
bool IsCertifiedAsWanted([[maybe_unused]] MYSQL* handle, [[maybe_unused]] const Settings& settings,
                         [[maybe_unused]] const Server& server)
{
#if MARIADB_PACKAGE_VERSION_ID >= 30402
    unsigned int status = MARIADB_TLS_VERIFY_OK;
    return !WantsTls(settings, server) || !settings.tlsVerify ||
           (mariadb_get_infov(handle, MARIADB_TLS_VERIFY_STATUS, &status) == 0 && status == MARIADB_TLS_VERIFY_OK);
#else
    return true; // else there would be no connection
#endif
}

// A statement may take its time; a server that is only being connected to may not.
void SetConnectTimeouts(MYSQL* handle, const Settings& settings)
{
    for (const mysql_option option : {MYSQL_OPT_CONNECT_TIMEOUT, MYSQL_OPT_READ_TIMEOUT, MYSQL_OPT_WRITE_TIMEOUT}) {
        mysql_options(handle, option, &settings.connectTimeout);
    }
}

// Once connected, options no longer change anything.
void SetStatementTimeouts(MYSQL* handle, const Settings& settings)
{
    MARIADB_PVIO* io = handle->net.pvio;
    if (io == nullptr) {
        return; // gone already, as the first statement will find
    }
    io->methods->set_timeout(io, PVIO_READ_TIMEOUT, static_cast<int>(settings.readTimeout));
    io->methods->set_timeout(io, PVIO_WRITE_TIMEOUT, static_cast<int>(settings.writeTimeout));
}

// So that a machine that is gone is noticed long before the limit of a statement is reached.
void WatchPeer(MYSQL* handle)
{
    constexpr std::array<std::pair<int, int>, 4> kLimits = {{{TCP_KEEPIDLE, kKeepaliveIdle},
                                                             {TCP_KEEPINTVL, kKeepaliveInterval},
                                                             {TCP_KEEPCNT, kKeepaliveCount},
                                                             {TCP_USER_TIMEOUT, kUserTimeout}}};
    const my_socket socket = mysql_get_socket(handle);
    const int on = 1;
    ::setsockopt(socket, SOL_SOCKET, SO_KEEPALIVE, &on, sizeof on);
    for (const auto& [option, value] : kLimits) {
        ::setsockopt(socket, IPPROTO_TCP, option, &value, sizeof value); // fails on a local socket, which needs none
    }
}

// A server could ask for any file of this machine in answer to any statement, and a connection that it restores by
// itself would have lost its settings and its transaction.
void ForbidFilesAndReconnecting(MYSQL* handle)
{
    const unsigned int off = 0;
    const my_bool no = 0;
    mysql_options(handle, MYSQL_OPT_LOCAL_INFILE, &off);
    mysql_options(handle, MYSQL_OPT_RECONNECT, &no);
}

// A defaults file is read while connecting and may have set anything.
bool UndoDefaultsFile(MYSQL* handle, const Settings& settings)
{
    if (settings.defaultsFile.empty()) {
        return true;
    }
    ForbidFilesAndReconnecting(handle);
    return mysql_set_server_option(handle, MYSQL_OPTION_MULTI_STATEMENTS_OFF) == 0;
}

bool Run(MYSQL* handle, std::string_view sql) { return mysql_real_query(handle, sql.data(), sql.size()) == 0; }

// Counting the rows that are found, not those that differ afterwards, is what the other engines do.
bool Login(MYSQL* handle, const Settings& settings, const Server& server)
{
    if (!IsSocket(server)) {
        const unsigned int protocol = MYSQL_PROTOCOL_TCP;
        mysql_options(handle, MYSQL_OPT_PROTOCOL, &protocol);
    }
    return mysql_real_connect(handle, server.host.empty() ? "localhost" : server.host.c_str(),
                              TextOrNull(settings.user), PasswordOf(settings), settings.database.c_str(), server.port,
                              TextOrNull(server.socket), CLIENT_FOUND_ROWS) != nullptr;
}

// @return whether the server took us in and is ready; if not, the handle has the failure.
bool Connect(MYSQL* handle, const Settings& settings, const Server& server)
{
    mysql_options(handle, MYSQL_SET_CHARSET_NAME, "utf8mb4");
    if (!settings.defaultsFile.empty()) {
        mysql_options(handle, MYSQL_READ_DEFAULT_FILE, settings.defaultsFile.c_str());
    }
    if (WantsTls(settings, server)) {
        SetTls(handle, settings);
    } else {
        AllowNoTls(handle);
    }
    SetPasswordMethods(handle, settings, server);
    SetConnectTimeouts(handle, settings);
    ForbidFilesAndReconnecting(handle);
    return Login(handle, settings, server) && IsEncryptedAsWanted(handle, settings, server) &&
           IsCertifiedAsWanted(handle, settings, server) && UndoDefaultsFile(handle, settings) &&
           Run(handle, SettingStatement(settings)) && Run(handle, kPing);
}

Handle NewHandle()
{
    static std::once_flag once;
    std::call_once(once, [] { mysql_library_init(0, nullptr, nullptr); });
    Handle handle(mysql_init(nullptr));
    if (handle == nullptr) {
        throw std::bad_alloc();
    }
    return handle;
}

// What distinguishes servers that share an address. Empty when it cannot be had.
std::string IdentityOf(MYSQL* handle)
{
    if (!Run(handle, "SELECT CONCAT_WS(' ', @@hostname, @@port, @@server_id, @@datadir)")) {
        return {};
    }
    const Result rows(mysql_store_result(handle));
    const char* const* row = rows == nullptr ? nullptr : mysql_fetch_row(rows.get());
    return row == nullptr || row[0] == nullptr ? std::string() : row[0];
}

std::string NameOf(const Server& server)
{
    if (!server.socket.empty()) {
        return server.socket;
    }
    const bool isIpv6 = server.host.find(':') != std::string::npos;
    const std::string host = isIpv6 ? "[" + server.host + "]" : server.host.empty() ? "localhost" : server.host;
    return server.port == 0 ? host : host + ":" + std::to_string(server.port);
}

struct Failure {
    unsigned int number;
    std::string message;
};

Failure FailureToConnect(MYSQL* handle)
{
    switch (mysql_errno(handle)) {
    case 0:
        return {CR_SSL_CONNECTION_ERROR, mysql_get_ssl_cipher(handle) == nullptr
                                             ? "the server does not encrypt; ssl=off connects all the same"
                                             : "no authority that is known here has signed the server's certificate; "
                                               "ssl-ca=FILE names another"};
    case CR_PLUGIN_NOT_ALLOWED:
        return {CR_PLUGIN_NOT_ALLOWED,
                "the server asks for the password itself, over a connection that is not encrypted or to a server whose "
                "certificate was not checked; the password was not sent; ssl-verify=on or ssl-ca=FILE checks it, "
                "cleartext-password=on sends the password all the same"};
    default:
        return {mysql_errno(handle), mysql_error(handle)};
    }
}

// @return whether that was the end.
bool ReadToTheEnd(MYSQL_RES* rows)
{
    if (mysql_fetch_row(rows) == nullptr) { // as after a look-up
        return true;
    }
    const auto deadline = Clock::now() + kTimeToReadToTheEnd;
    for (int i = 1; i < kRowsReadToTheEnd && Clock::now() < deadline; ++i) {
        if (mysql_fetch_row(rows) == nullptr) {
            return true;
        }
    }
    return false;
}

} // namespace

Connection::Connection(Settings settings)
    : m_settings(std::move(settings)), m_statements(m_settings.keptStatements, ShapeSyntax{false, true})
{
    std::string refusals;
    unsigned int number = 0;
    for (const Server& server : m_settings.servers) {
        Handle handle = NewHandle();
        if (Connect(handle.get(), m_settings, server)) {
            m_server = server;
            m_handle = std::move(handle);
            m_identity = IdentityOf(Get());
            SetStatementTimeouts(Get(), m_settings);
            WatchPeer(Get());
            return;
        }
        const Failure failure = FailureToConnect(handle.get());
        number = failure.number;
        refusals += refusals.empty() ? "" : "; ";
        refusals += NameOf(server) + ": " + failure.message;
        if (!IsForAnotherServer(number)) {
            break;
        }
    }
    throw CAException(platform::Utf8ToAnsi("cannot connect to " + refusals), ErrorCode(number));
}

std::int64_t Connection::Execute(std::string_view sql)
{
    MakeReady();
    ThrowIfTransactionLost();
    if (const Statements::Lease kept = TakeKept(sql)) {
        if (RunKept(kept)) {
            return static_cast<std::int64_t>(mysql_stmt_affected_rows(kept.Statement().get()));
        }
        m_statements.Forget(kept);
    }
    Send(sql);
    const bool givesRows = mysql_field_count(Get()) != 0;
    const auto changed = static_cast<std::int64_t>(mysql_affected_rows(Get()));
    if (givesRows) {
        const Result rows(mysql_use_result(Get()));
        while (rows != nullptr && mysql_fetch_row(rows.get()) != nullptr) {
        }
    }
    OnResultDone();
    return givesRows ? 0 : changed;
}

Result Connection::Open(std::string_view sql, PendingResult& reader)
{
    MakeReady();
    if (MayChangeSession(sql)) {
        m_statements.Clear();
    }
    Send(sql);
    if (mysql_field_count(Get()) == 0) {
        OnResultDone();
        return nullptr;
    }
    Result rows(mysql_use_result(Get()));
    if (rows == nullptr) {
        Fail();
    }
    m_arriving = &reader;
    return rows;
}

void Connection::OnResultDone()
{
    m_arriving = nullptr;
    if (mysql_errno(Get()) != 0) {
        Fail();
    }
    SkipResults();
}

void Connection::Abandon(MYSQL_RES* rows) noexcept
{
    m_arriving = nullptr;
    const bool interrupted = !ReadToTheEnd(rows) && Interrupt();
    while (mysql_fetch_row(rows) != nullptr) {
    }
    try {
        OnResultDone();
    } catch (...) {
        // Nobody asked for these rows, nor for what became of them; whether the connection lives has been noted.
    }
    // The interruption may have come too late for its statement; then it meets this one, and never the next.
    if (interrupted && m_alive && !Run(Get(), kPing)) {
        NoteFailure();
    }
}

void Connection::Begin()
{
    if (m_inTransaction) {
        throw CAException("a transaction is open already");
    }
    Send("START TRANSACTION");
    m_inTransaction = true;
}

void Connection::Commit()
{
    if (!m_inTransaction) {
        throw CAException("there is no transaction to commit");
    }
    Send("COMMIT");
    m_inTransaction = false;
}

void Connection::Rollback()
{
    if (!m_inTransaction) {
        return;
    }
    MakeReady();
    if (!Run(Get(), "ROLLBACK")) {
        Fail();
    }
    m_inTransaction = false;
    m_transactionLost = false;
}

void Connection::MakeReady()
{
    if (m_arriving != nullptr) {
        m_arriving->KeepRest();
    }
}

bool Connection::IsTransactionLost() const noexcept
{
    return m_inTransaction && (m_transactionLost || (m_handle->server_status & SERVER_STATUS_IN_TRANS) == 0);
}

// What followed would be applied alone, each statement for itself.
void Connection::ThrowIfTransactionLost() const
{
    if (IsTransactionLost()) {
        throw CAException("the engine has ended the transaction by itself");
    }
}

void Connection::Send(std::string_view sql)
{
    MakeReady();
    ThrowIfTransactionLost();
    if (!Run(Get(), sql)) {
        Fail();
    }
}

// Writes only: a query's rows would have to be fetched through buffers of their own, which costs what it saves.
Connection::Statements::Lease Connection::TakeKept(std::string_view sql)
{
    if (MayChangeSession(sql)) {
        m_statements.Clear();
    }
    const bool readsBackslashes = (m_handle->server_status & SERVER_STATUS_NO_BACKSLASH_ESCAPES) == 0;
    if (FirstWord(sql) == "select" || !readsBackslashes || !platform::IsValidUtf8(sql)) {
        return {};
    }
    return m_statements.Take(sql, [this](const std::string& shape, std::size_t values, const Statement& /*evicted*/) {
        return Prepare(shape, values);
    });
}

// The text says itself what the server does not like about it; a transaction, or a connection, that has ended here
// is nothing that it could say. The server may also have enough prepared statements: then texts do.
Statement Connection::Prepare(const std::string& shape, std::size_t values)
{
    Statement statement(mysql_stmt_init(Get()));
    if (statement == nullptr) {
        throw std::bad_alloc();
    }
    if (mysql_stmt_prepare(statement.get(), shape.data(), shape.size()) == 0) {
        return mysql_stmt_param_count(statement.get()) == values ? std::move(statement) : nullptr;
    }
    const CAException error = LastError(Get());
    NoteFailure();
    if (!m_alive || IsTransactionLost()) {
        throw error;
    }
    return nullptr;
}

// @return false when the server has done nothing, for it does not know the statement any more.
bool Connection::RunKept(const Statements::Lease& kept)
{
    MYSQL_STMT* const statement = kept.Statement().get();
    std::vector<MYSQL_BIND> places(kept.Values().size());
    for (std::size_t i = 0; i < places.size(); ++i) {
        const ShapeValue& value = kept.Values()[i];
        places[i].buffer_type = value.isText ? MYSQL_TYPE_STRING : MYSQL_TYPE_LONGLONG;
        // The library only reads what is bound to a placeholder.
        places[i].buffer = value.isText ? static_cast<void*>(const_cast<char*>(value.text.data()))
                                        : static_cast<void*>(const_cast<std::int64_t*>(&value.number));
        places[i].buffer_length = value.text.size();
    }
    if (mysql_stmt_bind_param(statement, places.data()) == 0 && mysql_stmt_execute(statement) == 0) {
        return true;
    }
    const unsigned int number = mysql_errno(Get());
    if (number != kUnknownStatement && number != kNeedsPreparing) {
        Fail();
    }
    return false;
}

// A procedure gives several results; callers see the first.
void Connection::SkipResults()
{
    while (mysql_more_results(Get())) {
        if (mysql_next_result(Get()) > 0) {
            Fail();
        }
        const Result rows(mysql_use_result(Get()));
        while (rows != nullptr && mysql_fetch_row(rows.get()) != nullptr) {
        }
        if (mysql_errno(Get()) != 0) {
            Fail();
        }
    }
}

// A failure's answer does not say whether a transaction outlived it; the next answer does.
void Connection::NoteFailure() noexcept
{
    if (!IsLost(Get()) && m_inTransaction) {
        m_transactionLost = m_transactionLost || !Run(Get(), kPing);
    }
    m_alive = m_alive && !IsLost(Get());
}

void Connection::Fail()
{
    const CAException error = LastError(Get());
    NoteFailure();
    throw error;
}

// @return whether the server was told to end what it is running for us.
bool Connection::Interrupt() noexcept
{
    try {
        Settings settings = m_settings;
        settings.connectTimeout = std::min({settings.connectTimeout, settings.readTimeout, kLongestWaitForInterrupt});
        const Handle second = NewHandle();
        // Behind one address there may be several servers, and our number is somebody else's on another.
        if (!Connect(second.get(), settings, m_server) || m_identity.empty() ||
            IdentityOf(second.get()) != m_identity) {
            return false;
        }
        const bool done = Run(second.get(), "KILL QUERY " + std::to_string(mysql_thread_id(Get())));
        // Sent, and not heard of again: nobody knows which statement it would meet.
        m_alive = m_alive && (done || !IsLost(second.get()));
        return done;
    } catch (...) {
        return false;
    }
}

} // namespace dbaccess::mysql
