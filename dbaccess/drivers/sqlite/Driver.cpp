#include "dbaccess/drivers/sqlite/Driver.h"

#include "dbaccess/DateText.h"
#include "dbaccess/EngineKind.h"
#include "dbaccess/drivers/common/NumberText.h"
#include "dbaccess/drivers/sqlite/Cursor.h"
#include "dbaccess/drivers/sqlite/Error.h"
#include "dbaccess/drivers/sqlite/ImmutableFile.h"
#include "dbaccess/drivers/sqlite/KeptStatement.h"
#include "dbaccess/drivers/sqlite/NewFile.h"
#include "platform/CodePage.h"

#include <sqlite3.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <new>
#include <string>

namespace dbaccess::sqlite {

namespace {

constexpr int kDefaultBusyTimeout = 5000;
constexpr int kRetryInterval = 20;
constexpr const char* kMemory = ":memory:";

// What the engine keeps to take back one statement of a transaction goes to a temporary file once it is longer than
// this, and stays there for the transaction: with the preset of 64 KiB, that took half of the time of adding users. The
// engine cannot write 128 KiB or more at once. It is a setting of the process, and has to be made before anybody uses
// the library; where it comes too late, the preset holds.
constexpr int kStatementJournalInMemory = 128 * 1024 - 1;
[[maybe_unused]] const int kJournalIsSet = sqlite3_config(SQLITE_CONFIG_STMTJRNL_SPILL, kStatementJournalInMemory);

struct CloseHandle {
    // The zombie-tolerant form: a result that is still being read keeps the handle until it is closed.
    void operator()(sqlite3* db) const noexcept { sqlite3_close_v2(db); }
};
using Handle = std::unique_ptr<sqlite3, CloseHandle>;

struct Options {
    int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    int busyTimeout = kDefaultBusyTimeout;
    int dbType = NumberOf(EngineKind::comparesInCapitals);
    std::size_t keptStatements = 0;
};

[[noreturn]] void Refuse(std::string_view a, std::string_view b, std::string_view c)
{
    CString text{a};
    text += b;
    text += c;
    throw CAException(text);
}

[[noreturn]] void ThrowUnknownOption()
{
    throw CAException("sqlite: unknown connection option or value; the options are mode=ro|rw|rwc, "
                      "busy_timeout=MILLISECONDS, statement-cache=NUMBER and kind=0|1|3|6");
}

// The URL of a server has two of these: what would be taken for the path may be a password, and is not repeated.
void ThrowIfServer(std::string_view location)
{
    if (location.starts_with("///") || location.starts_with('.')) {
        return;
    }
    const int slashes = location.starts_with("//") ? 1 : 0;
    const int at = location.find('@') != std::string_view::npos ? 1 : 0;
    const std::string_view begin = location.substr(0, location.find_first_of("/@", 2));
    const int colon = begin.find(':') != std::string_view::npos ? 1 : 0;
    if (slashes + at + colon > 1 && (slashes != 0 || !location.starts_with('/'))) {
        throw CAException("sqlite: takes the path of a file and no server; write sqlite:PATH");
    }
}

Options ReadOptions(const Location& location)
{
    Options options;
    options.dbType = DbTypeOption(location, options.dbType);
    options.keptStatements = StatementCacheOption(location);
    for (const auto& [name, value] : location.options) {
        if (name == "mode" && value == "ro") {
            options.flags = SQLITE_OPEN_READONLY;
        } else if (name == "mode" && value == "rw") {
            options.flags = SQLITE_OPEN_READWRITE;
        } else if (name == "busy_timeout") {
            const auto milliseconds = IntegerIn(value);
            if (!milliseconds || *milliseconds < 0 || *milliseconds > std::numeric_limits<int>::max()) {
                ThrowUnknownOption();
            }
            options.busyTimeout = static_cast<int>(*milliseconds);
        } else if (name != "kind" && name != kStatementCache && !(name == "mode" && value == "rwc")) {
            ThrowUnknownOption();
        }
    }
    return options;
}

void Upper(sqlite3_context* context, int /*count*/, sqlite3_value** arguments)
{
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(arguments[0]));
    if (text == nullptr) {
        return;
    }
    try { // nothing may be thrown through the engine
        const std::string upper =
            platform::UpperUtf8({text, static_cast<std::size_t>(sqlite3_value_bytes(arguments[0]))});
        sqlite3_result_text64(context, upper.data(), upper.size(), SQLITE_TRANSIENT, SQLITE_UTF8);
    } catch (const std::bad_alloc&) {
        sqlite3_result_error_nomem(context);
    }
}

bool OnlyBlanksIn(const char* text) { return text[std::strspn(text, " \t\r\n\f;")] == '\0'; }

// Comments after a statement are ignored; only the engine's own parser can tell them from a second statement.
bool NothingToRunIn(sqlite3* db, const char* text)
{
    while (!OnlyBlanksIn(text)) {
        sqlite3_stmt* raw = nullptr;
        const char* tail = nullptr;
        const int code = sqlite3_prepare_v2(db, text, -1, &raw, &tail);
        const Statement statement(raw);
        if (code != SQLITE_OK || statement != nullptr) {
            return false;
        }
        text = tail;
    }
    return true;
}

/// @param flags  of sqlite3_prepare_v3.
Statement PrepareUtf8(sqlite3* db, const char* sql, std::size_t length, unsigned int flags = 0)
{
    sqlite3_stmt* raw = nullptr;
    const char* tail = nullptr;
    const int code = sqlite3_prepare_v3(db, sql, static_cast<int>(length + 1), flags, &raw, &tail);
    Statement statement(raw);
    if (code != SQLITE_OK) {
        ThrowLastError(db);
    }
    if (statement == nullptr) {
        throw CAException("there is no statement in the text");
    }
    if (!NothingToRunIn(db, tail)) {
        throw CAException("there is more than one statement in the text");
    }
    return statement;
}

/// A statement's text in UTF-8, with a NUL at its end.
class Utf8Text {
public:
    explicit Utf8Text(const char* sql) : m_view(sql)
    {
        if (!platform::AnsiIsUtf8()) {
            m_converted = platform::AnsiToUtf8(m_view);
            m_view = m_converted;
        }
    }
    Utf8Text(const Utf8Text&) = delete;
    Utf8Text& operator=(const Utf8Text&) = delete;
    ~Utf8Text() = default;

    [[nodiscard]] std::string_view View() const noexcept { return m_view; }

private:
    std::string_view m_view;
    std::string m_converted;
};

Statement Prepare(sqlite3* db, const Utf8Text& text) { return PrepareUtf8(db, text.View().data(), text.View().size()); }

/// @return none for a shape that the engine refuses.
Statement PrepareShape(sqlite3* db, const std::string& shape, std::size_t values)
{
    try {
        Statement statement = PrepareUtf8(db, shape.data(), shape.size(), SQLITE_PREPARE_PERSISTENT);
        const bool isWhole = sqlite3_bind_parameter_count(statement.get()) == static_cast<int>(values);
        return isWhole ? std::move(statement) : nullptr;
    } catch (const CAException&) {
        return nullptr;
    }
}

int StepToEnd(sqlite3_stmt* statement)
{
    int code = SQLITE_ROW;
    while (code == SQLITE_ROW) {
        code = sqlite3_step(statement);
    }
    return code;
}

// A failure that may have to do with how the statement is written. The engine has undone what such a statement did.
bool MayLieInText(int code) { return (code & 0xFF) == SQLITE_ERROR || (code & 0xFF) == SQLITE_SCHEMA; }

void Run(sqlite3* db, const char* sql)
{
    const Statement statement = PrepareUtf8(db, sql, std::strlen(sql));
    if (StepToEnd(statement.get()) != SQLITE_DONE) {
        ThrowLastError(db);
    }
}

int Number(sqlite3* db, const char* sql)
{
    const Statement statement = PrepareUtf8(db, sql, std::strlen(sql));
    const int code = sqlite3_step(statement.get());
    if (code != SQLITE_ROW && code != SQLITE_DONE) {
        ThrowLastError(db);
    }
    return code == SQLITE_ROW ? sqlite3_column_int(statement.get(), 0) : 0;
}

// The engine does not wait for another writer when it changes the journal's kind, whatever the busy timeout.
void SwitchToWal(sqlite3* db, int busyTimeout)
{
    for (int waited = 0;; waited += sqlite3_sleep(kRetryInterval)) {
        try {
            Run(db, "PRAGMA journal_mode=WAL");
            return;
        } catch (const CAException&) {
            if ((sqlite3_errcode(db) & 0xFF) != SQLITE_BUSY || waited >= busyTimeout) {
                throw;
            }
        }
    }
}

// What keeps a file from being switched now, such as a reader, is not waited for: there will be another time.
void SwitchToWalIfPossible(sqlite3* db, int busyTimeout)
{
    sqlite3_busy_timeout(db, 0);
    try {
        Run(db, "PRAGMA journal_mode=WAL");
    } catch (const CAException&) { // the file is as good as before
    }
    sqlite3_busy_timeout(db, busyTimeout);
}

bool IsEmptyFile(sqlite3* db) { return Number(db, "PRAGMA page_count") == 0; }

bool HoldsUserTable(sqlite3* db)
{
    return Number(db, "SELECT count(*) FROM sqlite_master WHERE type='table' AND name='qv_User' COLLATE NOCASE") > 0;
}

// A file is taken when it is empty, marked as ours, or unmarked but with our table of users (made with other tools);
// nothing is ever written to any other. Who made it may have ended before it had its write-ahead log.
void TakeFile(sqlite3* db, const std::string& path, int busyTimeout)
{
    const bool writable = sqlite3_db_readonly(db, "main") == 0;
    if (IsEmptyFile(db)) {
        if (writable) {
            Run(db, ("PRAGMA application_id=" + std::to_string(kApplicationId)).c_str());
            SwitchToWal(db, busyTimeout);
        }
        return;
    }
    // Read only now: the mark is the first thing that another opener of an empty file writes.
    const int applicationId = Number(db, "PRAGMA application_id");
    if (applicationId != kApplicationId && (applicationId != 0 || !HoldsUserTable(db))) {
        Refuse("", path, " is an SQLite file of another application");
    }
    if (writable) {
        SwitchToWalIfPossible(db, busyTimeout);
    }
}

/// @param name  how the library is to find it: a path, or with SQLITE_OPEN_URI an address.
Handle OpenFile(const std::string& path, const std::string& name, const Options& options)
{
    sqlite3* raw = nullptr;
    const int flags = options.flags | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE;
    const int code = sqlite3_open_v2(name.c_str(), &raw, flags, nullptr);
    Handle db(raw);
    if (db == nullptr) {
        throw std::bad_alloc();
    }
    if (code != SQLITE_OK) {
        ThrowLastError(db.get(), "cannot open " + path);
    }
    sqlite3_busy_timeout(db.get(), options.busyTimeout);
    // Files come from anywhere: nothing in one's schema may call functions that act on the outside.
    sqlite3_db_config(db.get(), SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
    sqlite3_db_config(db.get(), SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    RegisterUpper(db.get());
    return db;
}

void TakeNamedFile(sqlite3* db, const std::string& path, int busyTimeout)
{
    try {
        TakeFile(db, path, busyTimeout);
    } catch (const CAException& e) {
        if (sqlite3_errcode(db) == SQLITE_NOTADB) {
            Refuse("", path, " is not an SQLite file");
        }
        if (e.GetErrorCode().IsEmpty()) {
            throw;
        }
        throw CAException(platform::Utf8ToAnsi("cannot open " + path + ": ") + e.GetErrorText(), e.GetErrorCode());
    }
}

bool IsInWritableFolder(const std::string& path)
{
    const std::string folder = std::filesystem::path(path).parent_path().string();
    return ::access(folder.empty() ? "." : folder.c_str(), W_OK) == 0;
}

/// An open file, and what else must live as long as its connection.
struct OpenedFile {
    std::shared_ptr<const ImmutableFile> immutable; // null unless it is read so
    Handle db;
};

OpenedFile OpenImmutable(const std::string& path, Options options)
{
    auto file = std::make_shared<ImmutableFile>(path);
    options.flags |= SQLITE_OPEN_URI;
    OpenedFile opened{file, OpenFile(path, file->Uri(), options)};
    TakeNamedFile(opened.db.get(), path, options.busyTimeout);
    file->RequireUnchanged();
    return opened;
}

OpenedFile Open(const std::string& path, const Options& options)
{
    if (path == kMemory) {
        return {nullptr, OpenFile(path, path, options)};
    }
    if ((options.flags & SQLITE_OPEN_CREATE) != 0) {
        MakeFile(path);
    }
    // A path that begins with file: would be read as an address.
    Handle db = OpenFile(path, path.starts_with("file:") ? "./" + path : path, options);
    try {
        TakeNamedFile(db.get(), path, options.busyTimeout);
    } catch (const CAException&) {
        const int code = sqlite3_errcode(db.get()) & 0xFF;
        // The log that such a file is read by cannot be made; by the latter, where the folder's mode is in the way.
        if ((code != SQLITE_CANTOPEN && code != SQLITE_READONLY) || IsInWritableFolder(path)) {
            throw;
        }
        if ((options.flags & SQLITE_OPEN_READONLY) == 0) {
            Refuse("cannot open ", path, ": its folder cannot be written; add ?mode=ro to the URL to read it");
        }
        return OpenImmutable(path, options);
    }
    return {nullptr, std::move(db)};
}

class SqliteSession final : public Session {
public:
    SqliteSession(OpenedFile file, const Options& options)
        : m_file(std::move(file.immutable)),
          m_db(std::move(file.db)),
          m_dbType(options.dbType),
          m_statements(options.keptStatements, ShapeSyntax{})
    {
    }

    [[nodiscard]] int DbType() const override { return m_dbType; }
    [[nodiscard]] std::string EngineName() const override { return std::string("SQLite ") + sqlite3_libversion(); }
    [[nodiscard]] bool IsAlive() const override { return !m_hasMoved; }

    std::int64_t Execute(const char* sql) override
    {
        ThrowIfTransactionLost();
        const Utf8Text text(sql);
        if (const RunningStatement kept = TakeKept(text)) {
            const std::int64_t before = sqlite3_total_changes64(m_db.get());
            const int code = StepToEnd(kept.Get());
            if (!MayLieInText(code)) {
                return ChangedSince(before, code);
            }
        }
        RequireFileInPlace();
        const Statement statement = Prepare(m_db.get(), text);
        const std::int64_t before = sqlite3_total_changes64(m_db.get());
        return ChangedSince(before, StepToEnd(statement.get()));
    }

    std::unique_ptr<Cursor> Query(const char* sql) override
    {
        ThrowIfTransactionLost();
        const Utf8Text text(sql);
        // The first step is made here: if it fails for the text's sake, the text says so itself, now and not later.
        if (RunningStatement kept = TakeKept(text)) {
            const int first = sqlite3_step(kept.Get());
            if (!MayLieInText(first)) {
                return std::make_unique<Rows>(std::move(kept), m_file, first);
            }
        }
        RequireFileInPlace();
        return std::make_unique<Rows>(RunningStatement(Prepare(m_db.get(), text)), m_file, SQLITE_OK);
    }

    // Taking the write lock at the start means waiting for another writer there, and never failing half-way through
    // because two transactions both began by reading.
    void Begin() override
    {
        ThrowIfTransactionLost();
        RequireFileInPlace();
        Run(m_db.get(), "BEGIN IMMEDIATE");
        m_inTransaction = true;
    }

    void Commit() override
    {
        ThrowIfTransactionLost();
        RequireFileInPlace();
        Run(m_db.get(), "COMMIT");
        m_inTransaction = false;
    }

    void Rollback() override
    {
        m_inTransaction = false;
        if (sqlite3_get_autocommit(m_db.get()) == 0) {
            Run(m_db.get(), "ROLLBACK");
        }
    }

    // Dates are kept as text and compare as text: without its time, a day would sort before its own midnight.
    [[nodiscard]] CString DateLiteral(const Date& date) const override { return QuotedDate(date); }

    [[nodiscard]] CString EscapeText(const CString& text) const override
    {
        CString escaped = text;
        escaped.Replace("'", "''");
        return escaped;
    }

private:
    RunningStatement TakeKept(const Utf8Text& text)
    {
        return RunningStatement(
            m_statements.Take(text.View(), [this](const std::string& shape, std::size_t values, Statement /*evicted*/) {
                return PrepareShape(m_db.get(), shape, values);
            }));
    }

    /// @param code  what the statement ended with.
    [[nodiscard]] std::int64_t ChangedSince(std::int64_t before, int code) const
    {
        if (code != SQLITE_DONE) {
            ThrowLastError(m_db.get());
        }
        return sqlite3_total_changes64(m_db.get()) == before ? 0 : sqlite3_changes64(m_db.get());
    }

    // Some failures, a full disk among them, make the engine roll back by itself; what follows would then be applied
    // alone, each statement for itself.
    void ThrowIfTransactionLost() const
    {
        if (m_inTransaction && sqlite3_get_autocommit(m_db.get()) != 0) {
            throw CAException("the engine has rolled the transaction back after an earlier error");
        }
    }

    // With a write-ahead log the engine does not check this, and keeps writing to a file that nobody will read again.
    // Checked where it costs little: at both ends of a transaction, and where a statement is prepared.
    void RequireFileInPlace()
    {
        int hasMoved = 0;
        m_hasMoved =
            m_hasMoved || (sqlite3_file_control(m_db.get(), nullptr, SQLITE_FCNTL_HAS_MOVED, &hasMoved) == SQLITE_OK &&
                           hasMoved != 0);
        if (m_hasMoved) {
            CString code;
            code.Format("SQLite %d", SQLITE_READONLY_DBMOVED);
            throw CAException(platform::Utf8ToAnsi(std::string("the file ") + sqlite3_db_filename(m_db.get(), nullptr) +
                                                   " has been moved, replaced or deleted"),
                              code);
        }
    }

    std::shared_ptr<const ImmutableFile> m_file;
    Handle m_db;
    int m_dbType;
    Statements m_statements;
    bool m_inTransaction = false;
    bool m_hasMoved = false;
};

} // namespace

void RegisterUpper(sqlite3* db)
{
    sqlite3_create_function_v2(db, "upper", 1, SQLITE_UTF8 | SQLITE_DETERMINISTIC | SQLITE_INNOCUOUS, nullptr, &Upper,
                               nullptr, nullptr, nullptr);
}

std::unique_ptr<Session> OpenSession(std::string_view location)
{
    ThrowIfServer(location);
    const Location parsed = ParseLocation(location);
    if (parsed.path.empty()) {
        throw CAException("sqlite: names no file; write sqlite:PATH or sqlite::memory:");
    }
    const Options options = ReadOptions(parsed);
    return std::make_unique<SqliteSession>(Open(platform::AnsiToUtf8(parsed.path), options), options);
}

} // namespace dbaccess::sqlite
