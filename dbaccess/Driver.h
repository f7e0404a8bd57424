#pragma once

#include "dbaccess/CAException.h"
#include "platform/Api.h"
#include "platform/CString.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>

/// The interface of an engine's driver. A session and its cursors belong to one thread at a time. All texts are
/// in the process's ANSI code page; a driver converts at its edge.
namespace dbaccess {

/// Parts of a date that is known to be real.
struct Date {
    int year;     ///< with its century
    int month;    ///< from 1
    int day;      ///< from 1
    int hour;     ///< 0 where there is no time
    int minute;   ///< 0 where there is no time
    int second;   ///< 0 where there is no time
    bool hasTime; ///< whether a time of day was given
};

/// One value of a cursor's current row. The bytes of a text belong to the cursor and last until it moves.
struct Field {
    /// What a value is; real is a floating-point number.
    enum class Kind : std::uint8_t { null, integer, real, text };

    /// A NULL.
    static Field Null() noexcept { return {Kind::null, {0}, 0}; }
    /// A whole number.
    static Field Integer(std::int64_t value) noexcept { return {Kind::integer, {value}, 0}; }
    /// A floating-point number.
    static Field Real(double value) noexcept
    {
        Field field{Kind::real, {0}, 0};
        field.value.real = value;
        return field;
    }
    /// A text whose bytes the caller keeps; a date is a text, "YYYY-MM-DD" or "YYYY-MM-DD HH:MM:SS".
    static Field Text(const char* bytes, std::size_t length) noexcept
    {
        Field field{Kind::text, {0}, length};
        field.value.bytes = bytes;
        return field;
    }

    /// The bytes of a text; only for a value of that kind.
    [[nodiscard]] std::string_view View() const noexcept { return {value.bytes, length}; }

    Kind kind; ///< which member of `value` holds
    /// The value, by its kind; for NULL it means nothing.
    union {
        std::int64_t integer;
        double real;
        const char* bytes;
    } value;
    std::size_t length; ///< of a text, in bytes
};

/// The rows of one running query. Rows are fetched as they are stepped to; destroying the cursor ends the query, at a
/// cost that does not grow with the rows left, and leaves the session ready for the next statement.
class QV_API Cursor {
public:
    Cursor() = default;
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;
    virtual ~Cursor();

    /// Moves to the next row, the first time to the first one. @return false after the last row. @throws CAException.
    virtual bool Step() = 0;
    /// Runs the query again; the next Step goes to the first row. @throws CAException.
    virtual void Restart() = 0;
    /// The number of columns, also before the first row.
    [[nodiscard]] virtual int ColumnCount() const = 0;
    /// The name of a column as the engine gives it; valid as long as the cursor. @param column  0 to ColumnCount()-1.
    [[nodiscard]] virtual std::string_view ColumnName(int column) const = 0;
    /// A value of the current row. Called only while there is one. @param column  0 to ColumnCount()-1.
    /// @throws CAException.
    virtual Field Read(int column) = 0;
};

/// An open connection to an engine.
class QV_API Session {
public:
    Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    virtual ~Session();

    /// The number of the EngineKind that CAConnect::m_nDBType shows.
    [[nodiscard]] virtual int DbType() const = 0;
    /// The engine's name and version, for people.
    [[nodiscard]] virtual std::string EngineName() const = 0;
    /// Whether the connection is still alive, as far as is known without asking the engine.
    [[nodiscard]] virtual bool IsAlive() const = 0;
    /// Runs one statement; rows that it returns are dropped. @return rows changed, -1 where the engine does not say.
    /// @throws CAException; a text with a second statement is refused before anything runs.
    virtual std::int64_t Execute(const char* sql) = 0;
    /// Runs one statement whose rows are wanted. @return its rows, before the first one; the caller destroys the cursor
    /// before the session.
    /// @throws CAException; a text with a second statement is refused before anything runs.
    virtual std::unique_ptr<Cursor> Query(const char* sql) = 0;
    /// Begins a transaction that is meant for writing. @throws CAException, also when one is open.
    virtual void Begin() = 0;
    /// Commits the transaction. @throws CAException, also when there is none and when the engine has given it up.
    virtual void Commit() = 0;
    /// Rolls the transaction back; does nothing without one. @throws CAException.
    virtual void Rollback() = 0;
    /// The engine's literal for a date, quotes included.
    [[nodiscard]] virtual CString DateLiteral(const Date& date) const = 0;
    /// The text as it must be written between the quotes of a text literal. It holds no NUL byte.
    [[nodiscard]] virtual CString EscapeText(const CString& text) const = 0;
};

/// What follows the scheme in a connection URL: "LOCATION?name=value&name=value".
struct Location {
    std::string path;                                        ///< before the first "?"
    std::map<std::string, std::string, std::less<>> options; ///< by name
};

/// Opens a session. @throws CAException with a sentence for people.
using SessionFactory = std::function<std::unique_ptr<Session>(std::string_view location)>;

/// Makes a driver known under its URL scheme; a second driver of the same scheme replaces the first, for connections
/// that are opened from then on. May be called on any thread.
QV_API void RegisterDriver(const std::string& scheme, SessionFactory factory);
/// Makes known that this build could have a driver, had the Debian package been there when it was made. A driver that
/// is there takes precedence. May be called on any thread.
QV_API void RegisterLeftOutDriver(const std::string& scheme, const std::string& package);
/// Finds the factory of a scheme: one that was registered or is built in, else that of a module installed beside this
/// library, which is loaded then. May be called on any thread.
/// @throws CAException that names the schemes there are, or the package that is missing.
QV_API SessionFactory FindDriver(std::string_view scheme);

/// Cuts a location into path and options. In the path "%3F" stands for "?" and "%25" for "%"; any other "%" is itself.
/// @throws CAException for an option without "=" or given twice.
QV_API Location ParseLocation(std::string_view location);
/// The engine kind of an option "kind=0|1|3|6", or `preset` without one. @throws CAException for another value.
QV_API int DbTypeOption(const Location& location, int preset);
/// The option by which a URL says how many prepared statements a session keeps.
inline constexpr const char* kStatementCache = "statement-cache";
/// The number of the option "statement-cache=N", or the preset without it. @throws CAException for anything but 0 to
/// 1000.
QV_API std::size_t StatementCacheOption(const Location& location);

} // namespace dbaccess
