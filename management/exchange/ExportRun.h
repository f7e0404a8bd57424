#pragma once

#include "management/DatabaseError.h"
#include "management/exchange/Export.h"
#include "schema/Snapshot.h"

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

/// Runs the body where all reads see one moment. @throws DatabaseError, and what the body throws.
template <class Body>
bool AtOneMoment(CAConnect& conn, Body body)
{
    return WithDatabaseErrors(conn, [&] {
        const schema::Snapshot snapshot(conn);
        return body();
    });
}

} // namespace management
