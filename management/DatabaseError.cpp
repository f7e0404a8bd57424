#include "management/DatabaseError.h"

#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "management/Text.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <iterator>
#include <string_view>

namespace management {

namespace {

struct EngineText {
    std::string line;
    std::string code;
};

// The module's texts read "FILE(LINE): MESSAGE [CODE]: STATEMENT"; the statement tells an administrator nothing, and
// holds people's data.
EngineText WithoutStatement(std::string_view text)
{
    const std::size_t end = text.find("]: ");
    const std::size_t begin = text.substr(0, end).rfind('[');
    if (end == std::string_view::npos || begin == std::string_view::npos) {
        return {Visible(text), {}};
    }
    return {Visible(text.substr(0, end + 1)), std::string(text.substr(begin + 1, end - begin - 1))};
}

enum class Trouble : std::uint8_t {
    passing, ///< of the one statement
    lasting, ///< no memory, no permission, a damaged file, a node that is not ready: the next statement meets it too
    busy,    ///< another program's lock
    full,
};

struct KnownCode {
    std::string_view code;
    Trouble trouble;
};

// As the engines' own drivers write them, and SQL Server's by its maker. Of SQLite the number without its details.
constexpr KnownCode kKnownCodes[] = {
    {"SQLite 5", Trouble::busy},         {"SQLite 6", Trouble::lasting},         {"SQLite 7", Trouble::lasting},
    {"SQLite 8", Trouble::lasting},      {"SQLite 9", Trouble::lasting},         {"SQLite 10", Trouble::lasting},
    {"SQLite 11", Trouble::lasting},     {"SQLite 13", Trouble::full},           {"SQLite 14", Trouble::lasting},
    {"SQLite 26", Trouble::lasting},     {"PostgreSQL 25006", Trouble::lasting}, {"PostgreSQL 42501", Trouble::lasting},
    {"PostgreSQL 53100", Trouble::full}, {"PostgreSQL 53200", Trouble::lasting}, {"PostgreSQL 55P03", Trouble::busy},
    {"MySQL 1021", Trouble::full},       {"MySQL 1036", Trouble::lasting},       {"MySQL 1044", Trouble::lasting},
    {"MySQL 1047", Trouble::lasting},    {"MySQL 1114", Trouble::full},          {"MySQL 1142", Trouble::lasting},
    {"MySQL 1205", Trouble::busy},       {"MySQL 1290", Trouble::lasting},       {"Microsoft 229", Trouble::lasting},
    {"Microsoft 1105", Trouble::full},   {"Microsoft 1222", Trouble::busy},      {"Microsoft 3906", Trouble::lasting},
    {"Microsoft 9002", Trouble::full},
};

/// SQLite's numbers carry details above their lowest byte.
std::string WithoutDetails(std::string_view code)
{
    constexpr std::string_view kSqlite = "SQLite ";
    int number = 0;
    if (!code.starts_with(kSqlite) ||
        std::from_chars(code.data() + kSqlite.size(), code.data() + code.size(), number).ec != std::errc()) {
        return std::string(code);
    }
    return std::string(kSqlite) + std::to_string(number & 0xFF);
}

/// The code as the engine's own driver would write it: over ODBC it comes as "ODBC SQLSTATE NUMBER".
std::string NativeCode(const CAConnect& conn, std::string_view code)
{
    constexpr std::string_view kOdbc = "ODBC ";
    const std::size_t space = code.rfind(' ');
    if (!code.starts_with(kOdbc) || space < kOdbc.size()) {
        return std::string(code);
    }
    const CString engine = conn.GetEngineName();
    const std::string_view name = engine.View().substr(0, engine.View().find(' '));
    if (name == "PostgreSQL") {
        return "PostgreSQL " + std::string(code.substr(kOdbc.size(), space - kOdbc.size()));
    }
    return (name == "MariaDB" ? "MySQL" : std::string(name)) + std::string(code.substr(space));
}

Trouble TroubleOf(std::string_view code)
{
    const auto* const known = std::ranges::find(kKnownCodes, WithoutDetails(code), &KnownCode::code);
    return known == std::end(kKnownCodes) ? Trouble::passing : known->trouble;
}

const char* AdviceOn(Trouble trouble)
{
    return trouble == Trouble::busy   ? Translatable("; another program is writing to it, try again when that is done")
           : trouble == Trouble::full ? Translatable("; make room on the disk")
                                      : "";
}

DatabaseError ErrorOf(const CAConnect& conn, const std::string& line, std::string_view code)
{
    if (!conn.IsOpen()) {
        return {line.empty() ? "no reason was given" : line, true, true};
    }
    const Trouble trouble = TroubleOf(NativeCode(conn, code));
    return {line.empty() ? "no reason was given" : line, trouble != Trouble::passing, false, AdviceOn(trouble)};
}

} // namespace

DatabaseError::DatabaseError(const std::string& engineLine, bool lasting, bool lost, const char* advice)
    : Error(ErrorCode::database, lost ? FillPattern("the connection to the database was lost: {}", engineLine)
                                      : FillPattern("the database refused: {}{}", engineLine, Sentence(advice))),
      m_engineLine(engineLine + advice),
      m_lasting(lasting)
{
}

DatabaseError DatabaseError::AtCommit() const
{
    DatabaseError error(*this, FillPattern("{}; the change may have been made, so look before you try again", Why()));
    error.m_mayBeDone = true;
    return error;
}

DatabaseError ErrorFrom(const CAConnect& conn, const CAException& e)
{
    const CAException& reason = conn.GetFailure() != nullptr ? *conn.GetFailure() : e;
    const std::string code(reason.GetErrorCode().View());
    const std::string line = Visible(reason.GetErrorText().View());
    return ErrorOf(conn, code.empty() ? line : line + " [" + code + "]", code);
}

DatabaseError ModuleError(const CAConnect& conn)
{
    if (conn.GetFailure() != nullptr) {
        return ErrorFrom(conn, *conn.GetFailure());
    }
    const EngineText text = WithoutStatement(CQVBaseFun::m_strLastError.View());
    return ErrorOf(conn, text.line, text.code);
}

Transaction::Transaction(CAConnect& conn)
try : m_conn(conn), m_transaction(conn) {
} catch (const schema::LockTimeout& e) {
    throw DatabaseError(e.GetErrorText().GetString(), true);
} catch (const CAException& e) {
    throw ErrorFrom(conn, e);
}

void Transaction::Commit()
{
    try {
        m_transaction.Commit();
    } catch (const CAException& e) {
        const DatabaseError error = ErrorFrom(m_conn, e);
        throw m_conn.IsOpen() ? error : error.AtCommit();
    }
}

} // namespace management
