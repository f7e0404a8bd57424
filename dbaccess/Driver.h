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

// What an engine's driver is to the library. A session and its cursors belong to one thread at a time. All texts are in
// the process's ANSI code page; a driver converts at its edge.

namespace dbaccess {

/// Parts of a date that is known to be real.
struct Date {
    int year;
    int month;
    int day;
    int hour;
    int minute;
    int second;
    bool hasTime;
};

/// One value of a cursor's current row. The bytes of a text are the cursor's and last until it moves.
struct Field {
    enum class Kind : std::uint8_t { null, integer, real, text };

    static Field Null() noexcept { return {Kind::null, {0}, 0}; }
    static Field Integer(std::int64_t value) noexcept { return {Kind::integer, {value}, 0}; }
    static Field Real(double value) noexcept
    {
        Field field{Kind::real, {0}, 0};
        field.value.real = value;
        return field;
    }
    /// A date value comes as text, "YYYY-MM-DD" or "YYYY-MM-DD HH:MM:SS".
    static Field Text(const char* bytes, std::size_t length) noexcept
    {
        Field field{Kind::text, {0}, length};
        field.value.bytes = bytes;
        return field;
    }

    [[nodiscard]] std::string_view View() const noexcept { return {value.bytes, length}; }

    Kind kind;
    union {
        std::int64_t integer;
        double real;
        const char* bytes;
    } value;
    std::size_t length;
};

/// The rows of one running query. Rows are fetched as they are stepped to; destroying the cursor ends the query, at a
/// cost that does not grow with the rows left, and leaves the session ready for the next statement.
class QV_API Cursor {
public:
    Cursor() = default;
    Cursor(const Cursor&) = delete;
    Cursor& operator=(const Cursor&) = delete;
    virtual ~Cursor();

    /// Moves to the next row, the first time to the first one. @return false behind the last row. @throws CAException.
    virtual bool Step() = 0;
    /// Runs the query again; the next Step goes to the first row. @throws CAException.
    virtual void Restart() = 0;
    [[nodiscard]] virtual int ColumnCount() const = 0;
    /// @param column  0 to ColumnCount()-1, here and in Read.
    [[nodiscard]] virtual std::string_view ColumnName(int column) const = 0;
    /// A value of the current row. Called only while there is one.
    virtual Field Read(int column) = 0;
};

/// An open connection to an engine.
class QV_API Session {
public:
    Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    virtual ~Session();

    /// The engine kind that CAConnect::m_nDBType shows.
    [[nodiscard]] virtual int DbType() const = 0;
    /// The engine's name and version, for people.
    [[nodiscard]] virtual std::string EngineName() const = 0;
    /// Whether the connection still stands, as far as is known without asking the engine.
    [[nodiscard]] virtual bool IsAlive() const = 0;
    /// Runs one statement; rows that it returns are dropped. @return rows changed, -1 where the engine does not say.
    /// @throws CAException, as does Query; a text with a second statement is refused before anything runs.
    virtual std::int64_t Execute(const char* sql) = 0;
    virtual std::unique_ptr<Cursor> Query(const char* sql) = 0;
    virtual void Begin() = 0;
    virtual void Commit() = 0;
    virtual void Rollback() = 0;
    /// The engine's literal for a date, quotes included.
    [[nodiscard]] virtual CString DateLiteral(const Date& date) const = 0;
    /// The text as it must stand between the quotes of a text literal.
    [[nodiscard]] virtual CString EscapeText(const CString& text) const = 0;
};

/// What stands in a connection URL behind the scheme: "LOCATION?name=value&name=value".
struct Location {
    std::string path;
    std::map<std::string, std::string, std::less<>> options;
};

/// Opens a session. @throws CAException with a sentence for people.
using SessionFactory = std::function<std::unique_ptr<Session>(std::string_view location)>;

/// Makes a driver known under its URL scheme; a second driver of the same scheme replaces the first.
/// Not to be called while another thread opens a connection.
QV_API void RegisterDriver(const std::string& scheme, SessionFactory factory);
/// Makes known that this build could have a driver, had the Debian package been there when it was made. A driver that
/// is there goes before. Not to be called while another thread opens a connection.
QV_API void RegisterLeftOutDriver(const std::string& scheme, const std::string& package);
/// The factory of a scheme. @throws CAException that names the schemes there are, or the package that is missing.
QV_API const SessionFactory& FindDriver(std::string_view scheme);

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
