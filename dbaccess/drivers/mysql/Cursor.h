#pragma once

#include "dbaccess/CAException.h"
#include "dbaccess/Driver.h"
#include "dbaccess/drivers/common/RowTexts.h"
#include "dbaccess/drivers/mysql/Connection.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dbaccess::mysql {

/// Rows in memory, in the order in which they came.
class BufferedRows {
public:
    explicit BufferedRows(std::size_t columns) : m_values(columns), m_lengths(columns) {}

    void Add(MYSQL_ROW row, const unsigned long* lengths);
    /// Goes to the next row. @return false after the last one.
    bool Next();
    [[nodiscard]] MYSQL_ROW Values() { return m_values.data(); }
    [[nodiscard]] const unsigned long* Lengths() const { return m_lengths.data(); }

private:
    std::string m_bytes; // per value: its length, then its bytes
    std::size_t m_next = 0;
    std::vector<char*> m_values;
    std::vector<unsigned long> m_lengths;
};

/// The rows of a statement, read from the server as they are stepped to. When another statement is run on the
/// connection, the rows that are left are read into memory first. The bytes of a text last until then or until the next
/// step.
class Rows final : public Cursor, private PendingResult {
public:
    /// @param sql  UTF-8. @throws CAException.
    Rows(std::shared_ptr<Connection> connection, std::string sql);
    ~Rows() override;

    bool Step() override;
    void Restart() override;
    [[nodiscard]] int ColumnCount() const override;
    [[nodiscard]] std::string_view ColumnName(int column) const override;
    Field Read(int column) override;

private:
    void KeepRest() override;
    bool Fetch();
    bool StepKept();
    void Open();
    void End() noexcept;

    std::shared_ptr<Connection> m_connection;
    std::string m_sql;
    Result m_result;
    const MYSQL_FIELD* m_fields = nullptr;
    bool m_arriving = false;
    MYSQL_ROW m_row = nullptr;
    const unsigned long* m_lengths = nullptr;
    std::optional<BufferedRows> m_kept;
    std::optional<CAException> m_failure; // met while the rest was read into memory
    RowTexts m_texts;
};

} // namespace dbaccess::mysql
