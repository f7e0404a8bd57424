#pragma once

#include "management/audit/Recorder.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

class CAConnect;

// Entries and their rows as they are stored, and the chain of their digests.

namespace management::audit {

/// A row of qv_AuditRow, without its ids.
struct StoredRow {
    std::string table = {};
    std::string key = {};
    std::int64_t count = 0;
    std::string item = {};
    std::string otherItem = {};
    std::optional<std::string> before = {};
    std::optional<std::string> after = {};
};

/// A row of qv_AuditEntry, without its id.
struct StoredEntry {
    std::string time;
    std::string who;
    std::string frontEnd;
    std::string command;
    std::string reason;
    int partOf = 0;
    std::string undoes;
    int rows = 0;
    std::string previous; ///< the digest of the entry before it, empty for the first one
    std::string digest = {};
};

StoredRow Stored(const RowChange& change);
/// The digest of the entry that was written last; empty where there is none. @throws CAException.
std::string LastDigest(CAConnect& conn);
/// SHA-256 over all of an entry but its own digest, in hexadecimal.
std::string DigestOf(const StoredEntry& entry, const std::vector<StoredRow>& rows);

} // namespace management::audit
