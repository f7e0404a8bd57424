#pragma once

#include "dbaccess/Driver.h"

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
    explicit Rows(Statement statement);

    bool Step() override;
    void Restart() override;
    [[nodiscard]] int ColumnCount() const override;
    [[nodiscard]] std::string_view ColumnName(int column) const override;
    Field Read(int column) override;

private:
    Statement m_statement;
    bool m_convert;
    std::vector<CString> m_converted; // the current row's texts in the ANSI code page, where that is not UTF-8
};

} // namespace dbaccess::sqlite
