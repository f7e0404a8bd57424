#include "dbaccess/drivers/odbc/Connection.h"

#include "dbaccess/CAException.h"
#include "dbaccess/drivers/odbc/Text.h"

#include <algorithm>
#include <array>
#include <new>
#include <utility>
#include <vector>

namespace dbaccess::odbc {

namespace {

constexpr SQLULEN kLoginTimeout = 10; // seconds

SQLPOINTER AsPointer(SQLULEN value)
{
    return reinterpret_cast<SQLPOINTER>(value); // NOLINT(performance-no-int-to-ptr): this is how ODBC takes numbers
}

// The call does not change the text, though it takes it so.
SQLCHAR* Bytes(std::string_view text)
{
    return reinterpret_cast<SQLCHAR*>(const_cast<char*>(text.data())); // NOLINT(cppcoreguidelines-pro-type-const-cast)
}

template <class Owner>
Owner NewHandle(SQLSMALLINT type, SQLHANDLE parent)
{
    SQLHANDLE handle = nullptr;
    if (!SQL_SUCCEEDED(SQLAllocHandle(type, parent, &handle))) {
        throw std::bad_alloc();
    }
    return Owner(handle);
}

Environment NewEnvironment()
{
    auto environment = NewHandle<Environment>(SQL_HANDLE_ENV, nullptr);
    SQLSetEnvAttr(environment.get(), SQL_ATTR_ODBC_VERSION, AsPointer(SQL_OV_ODBC3), 0);
    return environment;
}

void Hide(std::string& message, const std::string& secret)
{
    constexpr std::string_view kHidden = "***";
    for (std::size_t at = message.find(secret); at != std::string::npos;
         at = message.find(secret, at + kHidden.size())) {
        message.replace(at, secret.size(), kHidden);
    }
}

bool IsPasswordsName(std::string_view text) { return Mentions(text, "password") || Mentions(text, "pwd"); }

// Without the passwords of the connection string. A message is left out where they cannot be found for certain: within
// the value of another keyword, or so short that what is hidden would tell them.
std::string WithoutSecrets(std::string message, const ConnectionString& string)
{
    constexpr std::size_t kShort = 4;
    for (const auto& [keyword, value] : string.Attributes()) {
        const bool isPassword = IsPasswordsName(keyword);
        if (isPassword ? !value.empty() && value.size() < kShort : IsPasswordsName(value)) {
            return "the ODBC driver's message could show the password and is left out";
        }
        if (isPassword && !value.empty()) {
            Hide(message, value);
        }
    }
    return message;
}

bool GivesRows(SQLHSTMT statement)
{
    SQLSMALLINT columns = 0;
    return SQL_SUCCEEDED(SQLNumResultCols(statement, &columns)) && columns > 0;
}

// PostgreSQL's driver would wait for ever for rows that nobody sends or takes.
void ThrowIfCopy(std::string_view text, Dialect dialect)
{
    const bool isCopy = dialect == Dialect::postgresql && BeginsWithOneOf(text, dialect, {"copy"});
    if (isCopy && HasWord(text, dialect, {"stdin", "stdout"})) {
        throw CAException("COPY from and to the client is not supported");
    }
}

// So that statements mean what they say, whatever the server's presets are. SQL Server reads 2013-05-07 by its login's
// language otherwise. In a character set whose second bytes can be backslashes MySQL would find other quotes than were
// escaped.
std::vector<std::string_view> SettingsOf(Dialect dialect)
{
    switch (dialect) {
    case Dialect::postgresql:
        return {"SET client_encoding TO 'UTF8'", "SET standard_conforming_strings TO on",
                "SET extra_float_digits TO 3"};
    case Dialect::mysql:
        return {"SET SESSION sql_mode='STRICT_TRANS_TABLES,ERROR_FOR_DIVISION_BY_ZERO,NO_ENGINE_SUBSTITUTION'",
                "SET character_set_client=utf8mb4, character_set_connection=utf8mb4, character_set_results=utf8mb4"};
    case Dialect::sqlServer:
        return {"SET DATEFORMAT ymd"};
    default:
        return {};
    }
}

} // namespace

// A data source or a driver's own name may say nothing of which driver it is; the driver itself does.
Connection::Connection(const ConnectionString& string) : m_environment(NewEnvironment())
{
    ConnectionString requested = string;
    const bool isKnown = AddSettings(requested, requested.Value("Driver"));
    Connect(requested);
    if (!isKnown && AddSettings(requested, Info(SQL_DRIVER_NAME)) && requested.Text() != string.Text()) {
        SQLDisconnect(m_handle.get());
        m_connected = false;
        Connect(requested);
    }
    m_dialect = DialectOf(Info(SQL_DBMS_NAME));
}

Connection::~Connection()
{
    if (m_connected) {
        // A connection in a transaction cannot be closed.
        SQLEndTran(SQL_HANDLE_DBC, m_handle.get(), SQL_ROLLBACK);
        SQLDisconnect(m_handle.get());
    }
}

void Connection::Connect(const ConnectionString& string)
{
    m_handle = NewHandle<Handle>(SQL_HANDLE_DBC, m_environment.get());
    SQLSetConnectAttr(m_handle.get(), SQL_ATTR_LOGIN_TIMEOUT, AsPointer(kLoginTimeout), 0);
    if (!SQL_SUCCEEDED(SQLDriverConnect(m_handle.get(), nullptr, Bytes(string.Text()), SQL_NTS, nullptr, 0, nullptr,
                                        SQL_DRIVER_NOPROMPT))) {
        Failure failure = LastFailure(SQL_HANDLE_DBC, m_handle.get());
        failure.message = WithoutSecrets(std::move(failure.message), string);
        throw failure.Exception("cannot connect");
    }
    m_connected = true;
}

std::string Connection::Info(SQLUSMALLINT what) const
{
    std::array<char, 256> text{};
    SQLSMALLINT length = 0;
    SQLGetInfo(m_handle.get(), what, text.data(), static_cast<SQLSMALLINT>(text.size()), &length);
    return text.data();
}

void Connection::Prepare()
{
    try {
        for (const std::string_view setting : SettingsOf(m_dialect)) {
            Execute(setting);
        }
    } catch (const CAException& e) {
        throw CAException("cannot connect: " + e.GetErrorText(), e.GetErrorCode());
    }
}

std::int64_t Connection::Execute(std::string_view text)
{
    const Statement statement = Run(text);
    const bool givesRows = GivesRows(statement.get());
    SQLLEN rows = 0;
    if (BeginsWithOneOf(text, m_dialect, {"insert", "update", "delete", "merge", "replace"}) ||
        (!givesRows && BeginsWithOneOf(text, m_dialect, {"with"}))) {
        SQLRowCount(statement.get(), &rows);
    }
    if (givesRows) {
        while (Fetch(statement.get())) {
        }
    }
    OnResultDone(statement.get());
    return std::max<std::int64_t>(rows, -1);
}

Statement Connection::Open(std::string_view text, PendingResult& reader)
{
    Statement statement = Run(text);
    if (!GivesRows(statement.get())) {
        OnResultDone(statement.get());
        return nullptr;
    }
    m_arriving = &reader;
    return statement;
}

bool Connection::Fetch(SQLHSTMT statement)
{
    const SQLRETURN fetched = SQLFetch(statement);
    if (!SQL_SUCCEEDED(fetched) && fetched != SQL_NO_DATA) {
        Fail(statement);
    }
    return fetched != SQL_NO_DATA;
}

// What fails after the first result is reported when the next ones are asked for; callers see the first. Only where it
// can be: MariaDB's driver crashes when it is asked after a statement with semicolons in it, such as CREATE TRIGGER.
void Connection::OnResultDone(SQLHSTMT statement)
{
    m_arriving = nullptr;
    SQLRETURN more = SQL_NO_DATA;
    if (m_dialect == Dialect::sqlServer || m_dialect == Dialect::other) {
        do {
            more = SQLMoreResults(statement);
        } while (SQL_SUCCEEDED(more));
    }
    if (more != SQL_NO_DATA) {
        Fail(statement);
    }
    SQLFreeStmt(statement, SQL_CLOSE);
}

void Connection::Abandon(SQLHSTMT statement) noexcept
{
    m_arriving = nullptr;
    if (!SQL_SUCCEEDED(SQLFreeStmt(statement, SQL_CLOSE))) {
        NoteFailure(LastFailure(SQL_HANDLE_STMT, statement));
    }
}

void Connection::Begin()
{
    if (m_inTransaction) {
        throw CAException("a transaction is open already");
    }
    MakeReady();
    if (m_dialect == Dialect::sqlite) {
        Execute("BEGIN IMMEDIATE");
    } else {
        SetAutocommit(false);
    }
    m_inTransaction = true;
}

void Connection::Commit()
{
    if (!m_inTransaction) {
        throw CAException("there is no transaction to commit");
    }
    MakeReady();
    ThrowIfTransactionLost();
    EndTransaction(SQL_COMMIT);
}

void Connection::Rollback()
{
    if (m_inTransaction) {
        MakeReady();
        EndTransaction(SQL_ROLLBACK);
    }
}

void Connection::MakeReady()
{
    if (m_arriving != nullptr) {
        m_arriving->KeepRest();
    }
}

// What followed would be applied without what went before.
void Connection::ThrowIfTransactionLost() const
{
    if (m_inTransaction && m_transactionLost) {
        throw CAException("the transaction has ended or failed before; it can only be rolled back");
    }
}

// Managers and drivers refuse a statement to a connection that they know to be lost.
Statement Connection::NewStatement()
{
    SQLHANDLE handle = nullptr;
    if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_STMT, m_handle.get(), &handle))) {
        const Failure failure = LastFailure(SQL_HANDLE_DBC, m_handle.get());
        NoteFailure(failure);
        throw failure.Exception();
    }
    return Statement(handle);
}

Statement Connection::Run(std::string_view text)
{
    MakeReady();
    ThrowIfTransactionLost();
    ThrowIfCopy(text, m_dialect);
    Statement statement = NewStatement();
    // Braces are the text's own, and no escapes for the driver.
    SQLSetStmtAttr(statement.get(), SQL_ATTR_NOSCAN, AsPointer(SQL_NOSCAN_ON), 0);
    const SQLRETURN ran = SQLExecDirect(statement.get(), Bytes(text), static_cast<SQLINTEGER>(text.size()));
    // No data: a write that met no row.
    if (!SQL_SUCCEEDED(ran) && ran != SQL_NO_DATA) {
        Fail(statement.get());
    }
    m_transactionLost = m_transactionLost || (m_inTransaction && EndsTransaction(text, m_dialect));
    return statement;
}

// Drivers roll back on an error as they think fit, and say nothing of it.
void Connection::NoteFailure(const Failure& failure) noexcept
{
    m_transactionLost = m_inTransaction;
    SQLUINTEGER dead = SQL_CD_FALSE;
    const bool knows =
        SQL_SUCCEEDED(SQLGetConnectAttr(m_handle.get(), SQL_ATTR_CONNECTION_DEAD, &dead, SQL_IS_UINTEGER, nullptr));
    // An 08 alone proves nothing: a node of a cluster that takes no statements for now says so too.
    m_alive = m_alive && (knows ? dead != SQL_CD_TRUE : !failure.sqlState.starts_with("08"));
}

void Connection::Fail(SQLHSTMT statement)
{
    const Failure failure = LastFailure(SQL_HANDLE_STMT, statement);
    m_arriving = nullptr;
    NoteFailure(failure);
    SQLFreeStmt(statement, SQL_CLOSE);
    if (m_dialect == Dialect::postgresql && !m_inTransaction && m_alive) {
        // The driver leaves the transaction open that it read the rows in.
        const Statement rollback = NewStatement();
        SQLExecDirect(rollback.get(), Bytes("ROLLBACK"), SQL_NTS);
    }
    throw failure.Exception();
}

void Connection::SetAutocommit(bool on)
{
    const SQLULEN value = on ? SQL_AUTOCOMMIT_ON : SQL_AUTOCOMMIT_OFF;
    if (!SQL_SUCCEEDED(SQLSetConnectAttr(m_handle.get(), SQL_ATTR_AUTOCOMMIT, AsPointer(value), 0))) {
        const Failure failure = LastFailure(SQL_HANDLE_DBC, m_handle.get());
        NoteFailure(failure);
        throw failure.Exception();
    }
}

void Connection::EndTransaction(SQLSMALLINT how)
{
    if (m_dialect == Dialect::sqlite) {
        EndSqliteTransaction(how);
    } else {
        EndAnyTransaction(how);
    }
    m_inTransaction = false;
    m_transactionLost = false;
}

// In a transaction of its own making, SQLite's driver reads every result whole; and it makes one that does not lock
// when it begins, as the SQLite driver does.
void Connection::EndSqliteTransaction(SQLSMALLINT how)
{
    const bool mayBeOverAlready = m_transactionLost;
    m_transactionLost = false;
    try {
        Execute(how == SQL_COMMIT ? "COMMIT" : "ROLLBACK");
    } catch (const CAException& e) {
        if (!mayBeOverAlready || !Mentions(e.GetErrorText().GetString(), "no transaction is active")) {
            throw;
        }
    }
}

void Connection::EndAnyTransaction(SQLSMALLINT how)
{
    if (!SQL_SUCCEEDED(SQLEndTran(SQL_HANDLE_DBC, m_handle.get(), how))) {
        const Failure failure = LastFailure(SQL_HANDLE_DBC, m_handle.get());
        NoteFailure(failure);
        throw failure.Exception();
    }
    try {
        SetAutocommit(true);
    } catch (const CAException&) {
        m_alive = false; // the transaction has ended as was asked for, but what follows would not be kept
    }
}

} // namespace dbaccess::odbc
