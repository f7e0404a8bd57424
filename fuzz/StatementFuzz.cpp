// What the ODBC driver passes as one statement is one for the engine too: SQLite, which reads a text itself here, finds
// nothing to run after it.

#include "dbaccess/CAException.h"
#include "dbaccess/drivers/odbc/Statement.h"
#include "fuzz/Fuzz.h"

#include <sqlite3.h>

#include <array>
#include <string>

namespace {

using dbaccess::odbc::Dialect;

// Bytes stand for what statements are made of, so that many inputs are ones that an engine takes.
constexpr std::array<const char*, 32> kPieces = {"SELECT 1",
                                                 "SELECT ",
                                                 "1",
                                                 ";",
                                                 "'",
                                                 "''",
                                                 "\"",
                                                 "`",
                                                 "[",
                                                 "]",
                                                 "(",
                                                 ")",
                                                 "--",
                                                 "/*",
                                                 "*/",
                                                 "\n",
                                                 " ",
                                                 "\\",
                                                 "$$",
                                                 "E'",
                                                 "#",
                                                 "/*!",
                                                 "CREATE ",
                                                 "TEMP ",
                                                 "TRIGGER ",
                                                 "t ",
                                                 "BEGIN ",
                                                 "END",
                                                 "INSERT ON a ",
                                                 "DELETE FROM a",
                                                 "AFTER ",
                                                 ", "};

std::string StatementOf(std::string_view input)
{
    std::string text;
    for (const char ch : input) {
        const auto byte = static_cast<unsigned char>(ch);
        if (byte < kPieces.size()) {
            text += kPieces.at(byte);
        } else {
            text += ch;
        }
    }
    return text;
}

sqlite3* Database()
{
    static sqlite3* const db = [] {
        sqlite3* opened = nullptr;
        sqlite3_open(":memory:", &opened);
        sqlite3_exec(opened, "CREATE TABLE a (x)", nullptr, nullptr, nullptr);
        return opened;
    }();
    return db;
}

/// Whether SQLite takes a statement from the front of the text, and what is left then.
bool TakesOne(std::string_view& text)
{
    sqlite3_stmt* statement = nullptr;
    const char* rest = nullptr;
    const int code = sqlite3_prepare_v2(Database(), text.data(), static_cast<int>(text.size()), &statement, &rest);
    const bool isOne = code == SQLITE_OK && statement != nullptr;
    sqlite3_finalize(statement);
    text.remove_prefix(rest == nullptr ? text.size() : static_cast<std::size_t>(rest - text.data()));
    return isOne;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text = StatementOf(fuzz::Text(data, size));
    if (text.find('\0') != std::string::npos) { // no text of a statement holds one
        return 0;
    }
    for (const Dialect dialect :
         {Dialect::access, Dialect::sqlServer, Dialect::postgresql, Dialect::mysql, Dialect::sqlite, Dialect::other}) {
        try {
            const std::string_view one = dbaccess::odbc::OneStatement(text, dialect);
            fuzz::Require(one.data() >= text.data() && one.data() + one.size() <= text.data() + text.size(),
                          "a statement is a part of its text");
            fuzz::Require(dbaccess::odbc::OneStatement(one, dialect) == one, "one statement stays one");
            std::string_view rest = one;
            if (dialect == Dialect::sqlite && TakesOne(rest)) {
                fuzz::Require(!TakesOne(rest), "the engine finds one statement, too");
            }
        } catch (const CAException&) {
            fuzz::Require(text != "SELECT 1", "a plain statement passes");
        }
    }
    return 0;
}
