#pragma once

#include "management/FrontEnd.h"

#include <optional>

namespace web {

struct Written;

/// What a long task tells its job, and asks of it. Every function is called between two transactions, so that
/// others may have their turn there.
class JobControl {
public:
    JobControl() = default;
    JobControl(const JobControl&) = delete;
    JobControl& operator=(const JobControl&) = delete;
    virtual ~JobControl() = default;

    /// Reports progress. The job can be stopped from the first call on.
    virtual void ShowProgress(long done, std::optional<long> total) = 0;
    /// Takes what became of one thing, once that is committed. @param hasFailed  whether the thing stays as it was.
    virtual void TakeOutcome(const management::Outcome& outcome, bool hasFailed) = 0;
    /// Takes what was written, once that is committed.
    virtual void TakeWritten(const Written& written) = 0;
    [[nodiscard]] virtual bool IsStopRequested() const noexcept = 0;
};

} // namespace web
