#pragma once

#include "management/exchange/Export.h"

// What all exports have in common.

namespace management {

/// Counts a line and tells the front end now and then. @return false when it is to stop.
inline bool GoesOn(const Call& call, ExportReport& report)
{
    constexpr long kLinesPerProgress = 1000;
    ++report.lines;
    if (report.lines % kLinesPerProgress == 0) {
        call.Front().ShowProgress(report.lines, std::nullopt);
    }
    return !call.Front().IsStopRequested();
}

} // namespace management
