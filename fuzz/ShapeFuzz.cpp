// A statement's shape with its literals put back is the statement, nothing is cut inside of quotes, and to SQLite,
// which runs both here, the shape with its values is what the statement is.

#include "dbaccess/drivers/common/StatementShape.h"
#include "fuzz/Fuzz.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <string>
#include <vector>

namespace {

using dbaccess::CutLiteral;
using dbaccess::ShapeSyntax;
using dbaccess::StatementShape;

// Bytes from 0x80 stand for what statements are made of, so that many inputs are ones that an engine takes.
constexpr std::array<const char*, 64> kPieces = {"SELECT * FROM t WHERE ",
                                                 "SELECT a, b FROM t, u WHERE t.a = u.c AND ",
                                                 "UPDATE t SET ",
                                                 "DELETE FROM t WHERE ",
                                                 "INSERT INTO t VALUES (",
                                                 "INSERT INTO t (a, b) VALUES (",
                                                 "(SELECT c FROM u WHERE ",
                                                 "SELECT ",
                                                 " FROM t",
                                                 " WHERE ",
                                                 " SET ",
                                                 " AND ",
                                                 " OR ",
                                                 " NOT ",
                                                 " ORDER BY ",
                                                 " GROUP BY ",
                                                 " HAVING ",
                                                 " LIMIT ",
                                                 " UNION ",
                                                 " RETURNING ",
                                                 " IN (",
                                                 " LIKE ",
                                                 " BETWEEN ",
                                                 " COLLATE NOCASE",
                                                 " CASE WHEN ",
                                                 " THEN ",
                                                 " END",
                                                 " IS ",
                                                 " NULL",
                                                 "upper(",
                                                 "abs(",
                                                 "a",
                                                 "b",
                                                 "t.a",
                                                 "u.c",
                                                 "a = ",
                                                 "b = ",
                                                 "b <> ",
                                                 "a >= ",
                                                 "upper(b) = upper(",
                                                 "5",
                                                 "-5",
                                                 "0",
                                                 "1",
                                                 "007",
                                                 "1.5",
                                                 "999999999999999999",
                                                 "'x'",
                                                 "'5'",
                                                 "'O''Neil'",
                                                 "''",
                                                 "'",
                                                 "''''",
                                                 "(",
                                                 ")",
                                                 ", ",
                                                 ";",
                                                 "--",
                                                 "/*",
                                                 " = ",
                                                 " || ",
                                                 " + ",
                                                 "\xc3\xa9",
                                                 "\xff"};

std::string StatementOf(std::string_view input)
{
    std::string text;
    for (const char ch : input) {
        const auto byte = static_cast<unsigned char>(ch);
        if (byte < 0x80) {
            text += ch;
        } else {
            text += kPieces.at(byte % kPieces.size());
        }
    }
    return text;
}

void CheckShape(const std::string& statement, const StatementShape& shape)
{
    std::string rebuilt;
    std::string_view rest = shape.Text();
    std::size_t end = 0;
    for (const CutLiteral& literal : shape.Literals()) {
        fuzz::Require(literal.begin >= end && literal.begin + literal.length <= statement.size(),
                      "a literal is a part of its statement, after the one before");
        const std::size_t between = literal.begin - end;
        end = literal.begin + literal.length;
        fuzz::Require(rest.size() > between && rest[between] == '?', "a placeholder stands for each literal");
        rebuilt += rest.substr(0, between);
        rebuilt += statement.substr(literal.begin, literal.length);
        rest.remove_prefix(between + 1);
        const auto quotesBefore =
            std::count(statement.begin(), statement.begin() + static_cast<long>(literal.begin), '\'');
        fuzz::Require(quotesBefore % 2 == 0, "nothing is cut inside of quotes");
        fuzz::Require((statement[literal.begin] == '\'') == literal.isText, "only texts are in quotes");
    }
    fuzz::Require(rebuilt + std::string(rest) == statement, "the shape with its literals put back is the statement");
}

constexpr int kMostSteps = 1000;

int Stop(void* /*context*/) { return 1; }

sqlite3* Database()
{
    static sqlite3* const db = [] {
        sqlite3* opened = nullptr;
        sqlite3_open(":memory:", &opened);
        sqlite3_exec(
            opened,
            "CREATE TABLE t (a INTEGER, b TEXT); CREATE TABLE u (c TEXT PRIMARY KEY, d); INSERT INTO t VALUES (5, "
            "'x'), (1, '5'), (-5, 'O''Neil'), (NULL, ''); INSERT INTO u VALUES ('5', 5), ('x', '5'), (5.0, 007)",
            nullptr, nullptr, nullptr);
        sqlite3_progress_handler(opened, kMostSteps, &Stop, nullptr);
        return opened;
    }();
    return db;
}

/// What a prepared statement does, as a text; it is undone.
std::string Outcome(sqlite3_stmt* statement)
{
    sqlite3* const db = Database();
    sqlite3_exec(db, "SAVEPOINT s", nullptr, nullptr, nullptr);
    std::string outcome;
    for (int i = 0; i < sqlite3_column_count(statement); ++i) {
        outcome.append(sqlite3_column_name(statement, i)).append("|");
    }
    int code = sqlite3_step(statement);
    for (; code == SQLITE_ROW; code = sqlite3_step(statement)) {
        for (int i = 0; i < sqlite3_column_count(statement); ++i) {
            const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, i));
            outcome.append(std::to_string(sqlite3_column_type(statement, i)))
                .append(text == nullptr ? "" : text)
                .append("|");
        }
    }
    outcome += code == SQLITE_INTERRUPT ? "stopped" : sqlite3_errmsg(db);
    sqlite3_reset(statement);
    sqlite3_stmt* dump = nullptr;
    sqlite3_prepare_v2(db, "SELECT count(*), total(a), group_concat(quote(a) || quote(b)) FROM t", -1, &dump, nullptr);
    sqlite3_step(dump);
    outcome += reinterpret_cast<const char*>(sqlite3_column_text(dump, 2)) != nullptr
                   ? reinterpret_cast<const char*>(sqlite3_column_text(dump, 2))
                   : "empty";
    sqlite3_finalize(dump);
    sqlite3_exec(db, "ROLLBACK TO s; RELEASE s", nullptr, nullptr, nullptr);
    return outcome;
}

void CheckEngine(const std::string& statement, const StatementShape& shape)
{
    sqlite3_stmt* plain = nullptr;
    sqlite3_stmt* kept = nullptr;
    if (sqlite3_prepare_v2(Database(), statement.c_str(), -1, &plain, nullptr) == SQLITE_OK && plain != nullptr) {
        fuzz::Require(sqlite3_prepare_v2(Database(), shape.Text().c_str(), -1, &kept, nullptr) == SQLITE_OK,
                      "the engine takes the shape of what it takes");
        fuzz::Require(sqlite3_bind_parameter_count(kept) == static_cast<int>(shape.Literals().size()),
                      "the engine finds as many placeholders");
        std::string copy = statement;
        int place = 0;
        for (const CutLiteral& literal : shape.Literals()) {
            ++place;
            if (literal.isText) {
                const std::string_view value = shape.UnescapeInPlace(copy.data(), literal);
                sqlite3_bind_text(kept, place, value.data(), static_cast<int>(value.size()), SQLITE_STATIC);
            } else {
                sqlite3_bind_int64(kept, place, literal.number);
            }
        }
        const std::string expected = Outcome(plain);
        const std::string outcome = Outcome(kept);
        const bool stopped = (expected + outcome).find("stopped") != std::string::npos;
        fuzz::Require(stopped || outcome == expected, "the shape with its values does what the statement does");
    }
    sqlite3_finalize(plain);
    sqlite3_finalize(kept);
}

bool SameLiterals(const std::vector<CutLiteral>& a, const std::vector<CutLiteral>& b)
{
    return std::ranges::equal(a, b, [](const CutLiteral& x, const CutLiteral& y) {
        return x.begin == y.begin && x.length == y.length && x.isText == y.isText && x.hasEscapes == y.hasEscapes &&
               x.number == y.number;
    });
}

/// A shape that was used before, for a text that differs in one byte, gives what a new one does.
void CheckUsed(const std::string& statement, ShapeSyntax syntax)
{
    StatementShape used(syntax);
    StatementShape fresh(syntax);
    for (std::size_t at = 0; at < std::min<std::size_t>(statement.size(), 64); ++at) {
        for (const char byte : {'\'', '0', '7', '-', 'a', '\\'}) {
            std::string changed = statement;
            changed[at] = byte;
            used.Cut(statement);
            const bool isCut = used.Cut(changed);
            fuzz::Require(isCut == fresh.Cut(changed), "a used shape cuts what a new one cuts");
            fuzz::Require(!isCut || (used.Text() == fresh.Text() && SameLiterals(used.Literals(), fresh.Literals())),
                          "a used shape gives what a new one gives");
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string statement = StatementOf(fuzz::Text(data, size));
    if (statement.find('\0') != std::string::npos) { // no text of a statement holds one
        return 0;
    }
    StatementShape shape(ShapeSyntax{});
    if (shape.Cut(statement)) {
        CheckShape(statement, shape);
        CheckEngine(statement, shape);
    }
    CheckUsed(statement, ShapeSyntax{});
    for (const ShapeSyntax syntax : {ShapeSyntax{true, false}, ShapeSyntax{false, true}}) {
        CheckUsed(statement, syntax);
        StatementShape other(syntax);
        if (other.Cut(statement)) {
            std::string copy = statement;
            for (const CutLiteral& literal : other.Literals()) {
                const bool fits =
                    !literal.isText || other.UnescapeInPlace(copy.data(), literal).size() + 2 <= literal.length;
                fuzz::Require(fits, "a value is not longer than its literal");
            }
        }
    }
    return 0;
}
