#pragma once

#include "platform/Api.h"

class CAConnect;

namespace dbaccess {

/// Is shown the statements that CAConnect::Execute runs, on the thread that runs them. It may use the connection; what
/// it executes there is not shown to it.
class QV_API StatementObserver {
public:
    StatementObserver() = default;
    StatementObserver(const StatementObserver&) = delete;
    StatementObserver& operator=(const StatementObserver&) = delete;
    virtual ~StatementObserver();

    /// Called before a statement runs. What it throws comes out of Execute, and the statement does not run.
    /// @throws CAException.
    virtual void BeforeExecute(CAConnect& conn, const char* sql) = 0;
    /// Called after a statement that succeeded. What it throws comes out of Execute.
    /// @param rows  what Execute is going to return. @throws CAException.
    virtual void AfterExecute(CAConnect& conn, const char* sql, int rows) = 0;
};

} // namespace dbaccess
