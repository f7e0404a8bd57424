#pragma once

#include "dbaccess/CAException.h"
#include "dbaccess/Driver.h"
#include "dbaccess/drivers/odbc/Connection.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dbaccess::odbc {

/// A column's value in a row.
struct Value {
    Field::Kind kind = Field::Kind::null;
    std::int64_t integer = 0;
    double real = 0;
    CString text; // in the ANSI code page
};

/// Rows in memory, in the order in which they came.
class BufferedRows {
public:
    void Add(const std::vector<Value>& row);
    /// Goes to the next row. @return false after the last one.
    bool Next(std::vector<Value>& row);

private:
    std::string m_bytes; // per value: its kind, then its number, or its length and its bytes
    std::size_t m_next = 0;
};

/// How a column is read.
enum class Shape : std::uint8_t { text, number, bit, bits, real, day, moment, bytes };

/// The rows of a statement, read as they are stepped to, and the columns of a row as they are asked for: each once, and
/// from the left, which is all that every ODBC driver can. When another statement is run on the connection, the rows
/// that are left are read into memory first.
class Rows final : public Cursor, private PendingResult {
public:
    /// @param sql  UTF-8. @throws CAException.
    Rows(std::shared_ptr<Connection> connection, std::string sql);
    ~Rows() override;

    bool Step() override;
    void Restart() override;
    [[nodiscard]] int ColumnCount() const override { return static_cast<int>(m_columns.size()); }
    [[nodiscard]] std::string_view ColumnName(int column) const override;
    Field Read(int column) override;

private:
    struct Column {
        CString name;
        Shape shape;
    };

    void KeepRest() override;
    void Open();
    void End() noexcept;
    void Describe();
    [[nodiscard]] Shape ShapeAt(SQLUSMALLINT number, SQLSMALLINT type) const;
    bool Fetch();
    void FetchColumnsUpTo(std::size_t count);
    [[nodiscard]] Value FetchValue(std::size_t column);
    [[nodiscard]] Value FetchBit(std::size_t column);
    [[nodiscard]] Value FetchReal(std::size_t column);
    [[nodiscard]] Value FetchMoment(std::size_t column, bool hasTime);
    [[noreturn]] void Fail();
    template <class Fixed>
    bool FetchFixed(std::size_t column, SQLSMALLINT type, Fixed& fixed);
    bool FetchPieces(std::size_t column, bool asText);

    std::shared_ptr<Connection> m_connection;
    std::string m_sql;
    Statement m_statement;
    std::vector<Column> m_columns;
    std::vector<Value> m_row;
    std::size_t m_fetched = 0; // columns of the current row
    bool m_arriving = false;
    bool m_hasRow = false;
    std::string m_pieces;       // of the value that is being read
    std::vector<char> m_buffer; // for one piece
    std::optional<BufferedRows> m_kept;
    std::optional<CAException> m_failure; // met at m_fetched of the current row, or after the last of the kept ones
};

} // namespace dbaccess::odbc
