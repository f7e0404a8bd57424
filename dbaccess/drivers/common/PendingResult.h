#pragma once

namespace dbaccess {

/// A result whose rows are still on their way. The connection, or that of many a driver, can do nothing else until they
/// have been read.
class PendingResult {
public:
    PendingResult() = default;
    PendingResult(const PendingResult&) = delete;
    PendingResult& operator=(const PendingResult&) = delete;
    /// Reads all rows that are left into memory. A failure on the way is the result's own, to be raised when its reader
    /// comes to it.
    virtual void KeepRest() = 0;

protected:
    ~PendingResult() = default;
};

} // namespace dbaccess
