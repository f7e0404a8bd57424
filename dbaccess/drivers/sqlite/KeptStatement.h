#pragma once

#include "dbaccess/drivers/common/StatementCache.h"

#include <memory>

struct sqlite3_stmt;

namespace dbaccess::sqlite {

struct Finalize {
    void operator()(sqlite3_stmt* statement) const noexcept;
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalize>;
using Statements = StatementCache<Statement>;

/// A prepared statement while it is run: one of its own, which ends with this object, or a kept one with the values of
/// a text, which is given back then.
class RunningStatement {
public:
    explicit RunningStatement(Statement own) noexcept : m_own(std::move(own)) {}
    /// Binds the values. @param kept  none makes an object without a statement. @throws CAException.
    explicit RunningStatement(Statements::Lease kept);
    RunningStatement(RunningStatement&& other) noexcept = default;
    RunningStatement& operator=(RunningStatement&& other) = delete;
    ~RunningStatement();

    explicit operator bool() const noexcept { return Get() != nullptr; }
    [[nodiscard]] sqlite3_stmt* Get() const noexcept { return m_kept ? m_kept.Statement().get() : m_own.get(); }

private:
    Statement m_own;
    Statements::Lease m_kept;
};

} // namespace dbaccess::sqlite
