#pragma once

#include "dbaccess/CAException.h"
#include "platform/Api.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

class CAConnect;

/// Carrying a directory from one database to another, of whatever engines.
namespace schema {

/// The progress of a copy.
struct CopyState {
    const std::string& table; ///< the one in hand
    std::int64_t tableRows;   ///< copied of it
    bool tableIsDone;         ///< whether that table is complete
    std::int64_t rows;        ///< copied of all tables
};

/// Called after each piece of a copy; false stops it. Runs on the thread that copies.
using CopyProgress = std::function<bool(const CopyState&)>;

/// What a copy has done.
struct Copied {
    std::int64_t rows = 0;           ///< copied
    int tables = 0;                  ///< copied to the end
    bool stopped = false;            ///< by the caller: the target is as it was
    std::vector<std::string> others; ///< tables of the source that are not part of a directory, and are not copied
};

/// The target cannot be copied to as it stands; no engine refused anything.
class QV_API CopyConflict : public CAException {
public:
    using CAException::CAException;
};

/// The target does not take a row as it is, which the message names.
class QV_API RowRefused : public CAException {
public:
    using CAException::CAException;
};

/// Whether two connections lead to one database, as far as engines tell. @throws CAException.
QV_API bool IsSameDatabase(CAConnect& a, CAConnect& b);

/// How many rows the tables of a directory have together; tables that are missing count as empty.
/// @throws CAException.
QV_API std::int64_t CountRows(CAConnect& conn);

/// Copies all rows of all tables with their ids, as they are at one moment. New ids continue after the highest id ever
/// assigned in the source or the target. All of it is written in one transaction; a copy that fails or is stopped
/// leaves the target without rows.
/// @param from, to  directories of this program's version; `to` without rows.
/// @throws CopyConflict when others fill the target meanwhile, and for a column that it lacks; RowRefused; CAException.
QV_API Copied Copy(CAConnect& from, CAConnect& to, const CopyProgress& progress);

/// Copies as Copy does, into a directory that has rows: they are deleted in the transaction that writes the copy.
/// @throws as Copy. The target is then as it was.
QV_API Copied Replace(CAConnect& from, CAConnect& to, const CopyProgress& progress);

} // namespace schema
