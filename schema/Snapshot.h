#pragma once

#include "platform/Api.h"

class CAConnect;

namespace schema {

/// A transaction in which all reads of a connection see one moment, and which keeps nobody from writing, except on SQL
/// Server to what has been read. Access has none: there reads see what others write meanwhile. Rolled back in the end.
/// One at a time on a connection, which has to outlive it.
class QV_API Snapshot {
public:
    /// @throws CAException.
    explicit Snapshot(CAConnect& conn);
    Snapshot(const Snapshot&) = delete;
    Snapshot& operator=(const Snapshot&) = delete;
    ~Snapshot();

private:
    CAConnect& m_conn;
    bool m_isOpen = false;
};

} // namespace schema
