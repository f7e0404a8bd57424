#include "console/Engine.h"

#include "basefun/QVBaseFun.h"
#include "console/Text.h"
#include "dbaccess/CAConnect.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <string_view>

namespace console {

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

/// The engine's own number without its details; 0 for an engine whose numbers are not known here.
int SqliteNumber(std::string_view code)
{
    constexpr std::string_view kEngine = "SQLite ";
    int number = 0;
    if (code.starts_with(kEngine)) {
        std::from_chars(code.data() + kEngine.size(), code.data() + code.size(), number);
    }
    return number & 0xFF;
}

bool IsLastingNumber(int number)
{
    // Busy, locked, no memory, read-only, interrupted, I/O error, damaged, full, cannot open, not a database.
    constexpr std::array kLasting = {5, 6, 7, 8, 9, 10, 11, 13, 14, 26};
    return std::ranges::find(kLasting, number) != kLasting.end();
}

std::string_view AdviceOn(int number)
{
    constexpr int kBusy = 5;
    constexpr int kFull = 13;
    return number == kBusy   ? "; another program is writing to it, try again when that is done"
           : number == kFull ? "; make room on the disk"
                             : "";
}

DatabaseError ErrorOf(const CAConnect& conn, const std::string& line, std::string_view code)
{
    if (!conn.IsOpen()) {
        return {line.empty() ? "the connection is lost" : line, true};
    }
    const int number = SqliteNumber(code);
    return {(line.empty() ? "no reason was given" : line) + std::string(AdviceOn(number)), IsLastingNumber(number)};
}

} // namespace

DatabaseError::DatabaseError(const std::string& engineLine, bool lasting)
    : Refusal(Exit::database, "the database refused: " + engineLine), m_engineLine(engineLine), m_lasting(lasting)
{
}

DatabaseError ErrorFrom(const CAConnect& conn, const CAException& e)
{
    const std::string code(e.GetErrorCode().View());
    const std::string line = Visible(e.GetErrorText().View());
    return ErrorOf(conn, code.empty() ? line : line + " [" + code + "]", code);
}

DatabaseError ModuleError(const CAConnect& conn)
{
    const EngineText text = WithoutStatement(CQVBaseFun::m_strLastError.View());
    return ErrorOf(conn, text.line, text.code);
}

Transaction::Transaction(CAConnect& conn) : m_conn(conn)
{
    Asking(conn, [&] { conn.BeginTrans(); });
}

Transaction::~Transaction() { Rollback(); }

void Transaction::Commit()
{
    Asking(m_conn, [&] { m_conn.CommitTrans(); });
    m_open = false;
}

void Transaction::Rollback() noexcept
{
    if (!m_open) {
        return;
    }
    m_open = false;
    try {
        m_conn.RollbackTrans();
    } catch (const CAException&) {
    }
}

} // namespace console
