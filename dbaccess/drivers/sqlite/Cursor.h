#pragma once

#include "dbaccess/Driver.h"
#include "dbaccess/drivers/common/RowTexts.h"
#include "dbaccess/drivers/sqlite/ImmutableFile.h"
#include "dbaccess/drivers/sqlite/KeptStatement.h"

#include <memory>

namespace dbaccess::sqlite {

/// The rows of a prepared statement; the engine computes each one when it is stepped to.
class Rows final : public Cursor {
public:
    /// @param file  that is read as immutable; null for others.
    /// @param first  what the first step has given, when it has been made already; 0 when not.
    Rows(RunningStatement statement, std::shared_ptr<const ImmutableFile> file, int first);

    bool Step() override;
    void Restart() override;
    [[nodiscard]] int ColumnCount() const override;
    [[nodiscard]] std::string_view ColumnName(int column) const override;
    Field Read(int column) override;

private:
    std::shared_ptr<const ImmutableFile> m_file;
    RunningStatement m_statement;
    int m_first;
    RowTexts m_texts;
};

} // namespace dbaccess::sqlite
