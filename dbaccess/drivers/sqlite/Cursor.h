#pragma once

#include "dbaccess/Driver.h"
#include "dbaccess/drivers/sqlite/ImmutableFile.h"

#include <memory>
#include <vector>

struct sqlite3_stmt;

namespace dbaccess::sqlite {

struct Finalize {
    void operator()(sqlite3_stmt* statement) const noexcept;
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;

/// The rows of a prepared statement; the engine computes each one when it is stepped to.
class Rows final : public Cursor {
public:
    /// @param file  that is read as immutable; null for others.
    Rows(Statement statement, std::shared_ptr<const ImmutableFile> file);

    bool Step() override;
    void Restart() override;
    [[nodiscard]] int ColumnCount() const override;
    [[nodiscard]] std::string_view ColumnName(int column) const override;
    Field Read(int column) override;

private:
    std::shared_ptr<const ImmutableFile> m_file;
    Statement m_statement;
    bool m_convert;
    std::vector<CString> m_converted; // the current row's texts in the ANSI code page, where that is not UTF-8
};

} // namespace dbaccess::sqlite
