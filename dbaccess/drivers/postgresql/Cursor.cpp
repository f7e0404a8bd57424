#include "dbaccess/drivers/postgresql/Cursor.h"

#include "dbaccess/drivers/common/NumberText.h"
#include "dbaccess/drivers/postgresql/Error.h"

#include <libpq-fe.h>

#include <algorithm>
#include <array>
#include <new>
#include <random>
#include <utility>

namespace dbaccess::postgresql {

namespace {

// The types' numbers are the same on every server.
enum TypeId : Oid {
    kBool = 16,
    kInt8 = 20,
    kInt2 = 21,
    kInt4 = 23,
    kOid = 26,
    kFloat4 = 700,
    kFloat8 = 701,
    kNumeric = 1700,
};

constexpr int kTextFormat = 0;

// What is read of an abandoned result before the server is asked to stop, in pieces of the client library's buffer:
// reading that much is cheaper than asking.
constexpr int kReadsBeforeCancel = 4;

bool SameLetter(char a, char b)
{
    const char lower = a >= 'A' && a <= 'Z' ? static_cast<char>(a + ('a' - 'A')) : a;
    return lower == b;
}

bool BeginsWith(std::string_view text, std::string_view lowerWord)
{
    return text.size() >= lowerWord.size() && std::equal(lowerWord.begin(), lowerWord.end(), text.begin(),
                                                         [](char b, char a) { return SameLetter(a, b); });
}

bool Contains(std::string_view text, std::string_view lowerWord)
{
    return std::search(text.begin(), text.end(), lowerWord.begin(), lowerWord.end(), &SameLetter) != text.end();
}

// Whether the statement is a query that writes nothing itself: a cancel takes back all that a statement did, and the
// rows that INSERT ... RETURNING gives are no reason to lose what it wrote. In doubt, false.
bool OnlyReads(std::string_view sql)
{
    sql.remove_prefix(std::min(sql.size(), sql.find_first_not_of(" \t\r\n\f")));
    if (BeginsWith(sql, "with")) {
        constexpr std::array writes = {"insert", "update", "delete", "merge"};
        return std::ranges::none_of(writes, [sql](const char* word) { return Contains(sql, word); });
    }
    return BeginsWith(sql, "select") || BeginsWith(sql, "values") || BeginsWith(sql, "table");
}

// A statement without a semicolon is one at most.
bool MayHoldSeveral(const std::string& sql) { return sql.find(';') != std::string::npos; }

std::string NewPrefix()
{
    std::random_device random;
    return "qv_" + std::to_string(random()) + "_" + std::to_string(random()) + "_";
}

// A SELECT could do this too, by a function; the server then says so when a name is used.
bool MayDropNames(std::string_view sql)
{
    sql.remove_prefix(std::min(sql.size(), sql.find_first_not_of(" \t\r\n\f")));
    return BeginsWith(sql, "discard") || BeginsWith(sql, "deallocate");
}

// A session can be told to take them for escapes.
bool ReadsBackslashesPlainly(pg_conn* db, const std::string& sql)
{
    if (sql.find('\\') == std::string::npos) {
        return true;
    }
    const char* value = PQparameterStatus(db, "standard_conforming_strings");
    return value != nullptr && std::string_view(value) == "on";
}

// A kept statement whose result has other columns since a table was changed, or whose name is not known any more, as it
// happens behind a pooler.
bool IsOutdated(const CAException& error)
{
    return error.GetErrorCode() == "PostgreSQL 0A000" || error.GetErrorCode() == "PostgreSQL 26000";
}

Field RealField(std::string_view text)
{
    const auto real = RealIn(text);
    return real ? Field::Real(*real) : Field::Text(text.data(), text.size());
}

Field NumberField(std::string_view text)
{
    const auto integer = IntegerIn(text);
    return integer ? Field::Integer(*integer) : RealField(text);
}

} // namespace

void FinishConnection::operator()(pg_conn* db) const noexcept { PQfinish(db); }
void FreeCancel::operator()(pg_cancel* cancel) const noexcept { PQfreeCancel(cancel); }
void ClearResult::operator()(pg_result* result) const noexcept { PQclear(result); }

// ---- Connection

Connection::Connection(Handle db, std::size_t keptStatements)
    : m_db(std::move(db)),
      m_cancel(PQgetCancel(m_db.get())),
      m_statements(keptStatements, ShapeSyntax{true, false}),
      m_namePrefix(NewPrefix())
{
    if (m_cancel == nullptr) {
        throw std::bad_alloc();
    }
}

bool Connection::IsAlive() const noexcept { return PQstatus(m_db.get()) == CONNECTION_OK; }

void Connection::MakeReady()
{
    if (m_reader != nullptr) {
        m_reader->KeepRest();
    }
}

Result Connection::Run(const std::string& sql)
{
    MakeReady();
    m_inSavepoint = false;
    Result result = Begin(sql, nullptr);
    while (PQresultStatus(result.get()) == PGRES_SINGLE_TUPLE) {
        result = Next();
    }
    return result;
}

Result Connection::Start(const std::string& sql, Rows& reader)
{
    MakeReady();
    const bool inTransaction = PQtransactionStatus(m_db.get()) == PQTRANS_INTRANS;
    m_inSavepoint = inTransaction && OnlyReads(sql) && !MayHoldSeveral(sql);
    m_cancellable = m_inSavepoint || (!inTransaction && OnlyReads(sql));
    return Begin(sql, &reader);
}

Result Connection::Begin(const std::string& sql, Rows* reader)
{
    if (const Statements::Lease kept = TakeKept(sql)) {
        SendKept(kept);
        m_reader = reader;
        try {
            return Next();
        } catch (const CAException& e) {
            if (!IsOutdated(e)) {
                throw;
            }
            m_statements.Forget(kept);
            if (PQtransactionStatus(m_db.get()) != PQTRANS_IDLE) {
                throw;
            }
        }
    }
    if (m_inSavepoint) {
        SendGuarded(sql);
    } else {
        Send(sql);
    }
    m_reader = reader;
    return Next();
}

Result Connection::Next() { return CheckResult(Result(PQgetResult(m_db.get()))); }

Connection::Statements::Lease Connection::TakeKept(const std::string& sql)
{
    if (MayDropNames(sql)) {
        m_statements.Clear();
    }
    // With a guarded query three statements go at once, as texts. EXECUTE as one of them would not do: the server
    // computes all of its rows before it sends the first.
    if (m_inSavepoint || PQtransactionStatus(m_db.get()) == PQTRANS_INERROR || !platform::IsValidUtf8(sql) ||
        !ReadsBackslashesPlainly(m_db.get(), sql)) {
        return {};
    }
    return m_statements.Take(sql, [this](const std::string& shape, std::size_t /*values*/,
                                         const PreparedName& evicted) { return Prepare(shape, evicted); });
}

// What the server refuses here would end a transaction; a savepoint keeps it. The names themselves are in no
// transaction.
PreparedName Connection::Prepare(const std::string& shape, const PreparedName& evicted)
{
    const bool inTransaction = PQtransactionStatus(m_db.get()) == PQTRANS_INTRANS;
    if (inTransaction && !RunCommand("SAVEPOINT qv_prepare")) {
        return {};
    }
    PreparedName name(m_namePrefix + std::to_string(++m_prepared));
    const Result prepared(PQprepare(m_db.get(), name.Get().c_str(), shape.c_str(), 0, nullptr));
    const bool isPrepared = PQresultStatus(prepared.get()) == PGRES_COMMAND_OK;
    const bool isFree = !isPrepared || !evicted || RunCommand(("DEALLOCATE " + evicted.Get()).c_str());
    if (inTransaction) {
        RunCommand(isPrepared && isFree ? "RELEASE SAVEPOINT qv_prepare"
                                        : "ROLLBACK TO SAVEPOINT qv_prepare;RELEASE SAVEPOINT qv_prepare");
    }
    return isPrepared ? name : PreparedName();
}

/// Runs a statement of the driver's own. @return whether the server has done it.
bool Connection::RunCommand(const char* sql) noexcept
{
    const Result result(PQexec(m_db.get(), sql));
    return PQresultStatus(result.get()) == PGRES_COMMAND_OK;
}

void Connection::SendKept(const Statements::Lease& kept)
{
    const std::string& name = kept.Statement().Get();
    std::vector<const char*> values;
    for (const ShapeValue& value : kept.Values()) {
        values.push_back(value.text.data());
    }
    if (PQsendQueryPrepared(m_db.get(), name.c_str(), static_cast<int>(values.size()), values.data(), nullptr, nullptr,
                            kTextFormat) == 0) {
        throw LostError(m_db.get());
    }
    PQsetSingleRowMode(m_db.get());
}

// The simple protocol is the quicker one, but would run a second statement; in the other the server refuses one.
void Connection::Send(const std::string& sql)
{
    const int sent = MayHoldSeveral(sql) ? PQsendQueryParams(m_db.get(), sql.c_str(), 0, nullptr, nullptr, nullptr,
                                                             nullptr, kTextFormat)
                                         : PQsendQuery(m_db.get(), sql.c_str());
    if (sent == 0) {
        throw LostError(m_db.get());
    }
    PQsetSingleRowMode(m_db.get());
}

// In a transaction a cancelled query would take all that was done before with it; a savepoint keeps that. All three go
// to the server at once, and it parses all before it runs any.
void Connection::SendGuarded(const std::string& sql)
{
    if (PQsendQuery(m_db.get(), ("SAVEPOINT qv_query;" + sql + "\n;RELEASE SAVEPOINT qv_query").c_str()) == 0) {
        throw LostError(m_db.get());
    }
    PQsetSingleRowMode(m_db.get());
    Result savepoint(PQgetResult(m_db.get()));
    if (PQresultStatus(savepoint.get()) != PGRES_COMMAND_OK) {
        CheckResult(std::move(savepoint));
    }
}

Result Connection::CheckResult(Result result)
{
    switch (PQresultStatus(result.get())) {
    case PGRES_SINGLE_TUPLE:
        return result;
    case PGRES_COMMAND_OK:
    case PGRES_TUPLES_OK:
        ReadToEnd();
        return result;
    case PGRES_EMPTY_QUERY:
        ReadToEnd();
        throw CAException("there is no statement in the text");
    case PGRES_COPY_IN:
        ThrowCopyUnsupported(true);
    case PGRES_COPY_OUT:
        ThrowCopyUnsupported(false);
    default:
        break;
    }
    const CAException error = result != nullptr ? StatementError(result.get()) : LostError(m_db.get());
    DropToEnd();
    throw error;
}

// A statement can still fail after the end of its result, when it is committed.
void Connection::ReadToEnd()
{
    while (const Result result{PQgetResult(m_db.get())}) {
        if (PQresultStatus(result.get()) == PGRES_FATAL_ERROR) {
            const CAException error = StatementError(result.get());
            DropToEnd();
            throw error;
        }
    }
    m_reader = nullptr;
}

void Connection::DropToEnd() noexcept
{
    while (const Result result{PQgetResult(m_db.get())}) {
    }
    m_reader = nullptr;
}

void Connection::ThrowCopyUnsupported(bool in)
{
    if (in) {
        PQputCopyEnd(m_db.get(), "there are no rows to copy");
    } else {
        RequestCancel();
        for (char* row = nullptr; PQgetCopyData(m_db.get(), &row, 0) > 0;) {
            PQfreemem(row);
        }
    }
    DropToEnd();
    throw CAException("COPY from and to the client is not supported");
}

// A cancel that comes too late must not hit the next statement, and does not: the call returns when the server has
// closed the cancel's own connection, which it does after it has signalled the process that serves ours. From then on
// the signal is taken by that process before it reads anything more of us, and while it waits for a statement it drops
// the signal. The next statement is sent only afterwards.
void Connection::RequestCancel() noexcept
{
    std::array<char, 256> reason{};
    PQcancel(m_cancel.get(), reason.data(), static_cast<int>(reason.size()));
}

// Never waits, and reads no more than a few buffers full. @return whether that was the end of the query.
bool Connection::DropWhatHasArrived() noexcept
{
    for (int reads = 0;; ++reads) {
        while (PQisBusy(m_db.get()) == 0) {
            if (Result(PQgetResult(m_db.get())) == nullptr) {
                return true;
            }
        }
        if (reads == kReadsBeforeCancel || PQconsumeInput(m_db.get()) == 0 || PQisBusy(m_db.get()) != 0) {
            return false;
        }
    }
}

void Connection::Abandon() noexcept
{
    m_reader = nullptr;
    if (!DropWhatHasArrived()) {
        if (m_cancellable) {
            RequestCancel();
        }
        DropToEnd();
    }
    // Also where the query failed by itself in a row that nobody read.
    if (m_inSavepoint && PQtransactionStatus(m_db.get()) == PQTRANS_INERROR) {
        RunCommand("ROLLBACK TO SAVEPOINT qv_query;RELEASE SAVEPOINT qv_query");
    }
}

// ---- Rows

Rows::Rows(std::shared_ptr<Connection> connection, std::string sql)
    : m_connection(std::move(connection)), m_sql(std::move(sql))
{
}

Rows::~Rows() { End(); }

void Rows::End() noexcept
{
    if (m_connection->IsReadBy(this)) {
        m_connection->Abandon();
    }
}

bool Rows::Step()
{
    while (m_row + 1 >= PQntuples(m_result.get())) {
        if (m_kept != nullptr) {
            m_result = std::move(m_kept);
        } else if (m_connection->IsReadBy(this)) {
            m_result = m_connection->Next();
        } else if (m_failure) {
            throw CAException(*m_failure);
        } else {
            return false;
        }
        m_row = -1;
    }
    ++m_row;
    return true;
}

void Rows::Restart()
{
    End();
    m_kept.reset();
    m_failure.reset();
    m_result = m_connection->Start(m_sql, *this);
    m_row = -1;
    m_texts.SetColumns(ColumnCount(), [this](int column) { return PQfname(m_result.get(), column); });
}

void Rows::KeepRest()
{
    m_kept.reset(PQcopyResult(m_result.get(), PG_COPYRES_ATTRS));
    try {
        while (m_connection->IsReadBy(this)) {
            Append(m_connection->Next().get());
        }
    } catch (const CAException& e) {
        m_failure = e;
    } catch (const std::bad_alloc&) {
        End();
        m_failure = CAException("there is not enough memory for the rows left of a result");
    }
}

void Rows::Append(const pg_result* result)
{
    if (m_kept == nullptr) {
        throw std::bad_alloc();
    }
    const int columns = PQnfields(result);
    const int to = PQntuples(m_kept.get());
    for (int row = 0; row < PQntuples(result); ++row) {
        for (int i = 0; i < columns; ++i) {
            const bool isNull = PQgetisnull(result, row, i) != 0;
            const int length = isNull ? -1 : PQgetlength(result, row, i);
            if (PQsetvalue(m_kept.get(), to + row, i, PQgetvalue(result, row, i), length) == 0) {
                throw std::bad_alloc();
            }
        }
    }
}

int Rows::ColumnCount() const { return PQnfields(m_result.get()); }

std::string_view Rows::ColumnName(int column) const
{
    if (m_texts.Converts()) {
        return m_texts.Name(column);
    }
    const char* name = PQfname(m_result.get(), column);
    return name != nullptr ? name : "";
}

Field Rows::Read(int column)
{
    const pg_result* result = m_result.get();
    const char* bytes = PQgetvalue(result, m_row, column);
    const auto length = static_cast<std::size_t>(PQgetlength(result, m_row, column));
    if (length == 0 && PQgetisnull(result, m_row, column) != 0) {
        return Field::Null();
    }
    switch (PQftype(result, column)) {
    case kBool:
        return Field::Integer(*bytes == 't' ? 1 : 0);
    case kInt2:
    case kInt4:
    case kInt8:
    case kOid:
    case kNumeric:
        return NumberField({bytes, length});
    case kFloat4:
    case kFloat8:
        return RealField({bytes, length});
    default:
        break;
    }
    return m_texts.Text(column, bytes, length);
}

} // namespace dbaccess::postgresql
