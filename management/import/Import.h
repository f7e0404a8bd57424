#pragma once

#include "management/Call.h"
#include "management/Sentence.h"
#include "management/import/CsvReader.h"
#include "management/organisation/Departments.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <istream>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace management {

class DatabaseError;

/// How the columns of a file are to be read.
struct ColumnOptions {
    std::map<std::string, std::string> names = {}; ///< of columns of the file, with the names that ImportColumns has
    bool ignoreUnknown = false;                    ///< columns of other names count for nothing
    std::string dateFormat = {};                   ///< such as DD.MM.YYYY; empty: YYYY-MM-DD
    bool clearEmpty = false; ///< an empty value of a text or date empties that of a user who is there
};

struct ImportOptions {
    bool update = false;                    ///< users who are there get the values of their row
    bool allowPrivileges = false;           ///< rows may change super, system and locked, and concern Admin
    std::optional<std::string> departments; ///< the view under which each department is a group
    bool makeView = false;                  ///< when it is not there
    bool makeGroups = true;                 ///< those of departments that are not there
    ColumnOptions columns = {};
    /// Takes the header and then each row that fails, as the file has them; none: nobody wants them.
    std::function<void(const CsvRecord&)> takeFailed = {};
    /// A transaction takes no further row after this time, so that other consoles get their turn.
    std::chrono::milliseconds longestBlock = std::chrono::milliseconds(500);
};

/// Comma-separated values in UTF-8 with a header row.
struct ImportSource {
    std::istream& in;
    std::string name;              ///< for sentences
    std::optional<long> rows = {}; ///< how many there are after the header, where that is known
    char delimiter = ',';          ///< between values
};

/// What becomes of a row.
enum class RowFate : std::uint8_t { created, updated, unchanged, exists, failed };
inline constexpr std::array<std::string_view, 5> kRowFates = {"created", "updated", "unchanged", "exists", "failed"};

/// What an import has done so far.
struct ImportReport {
    [[nodiscard]] long CountOf(RowFate fate) const { return counts.at(static_cast<std::size_t>(fate)); }
    /// How fast that was: "4.2 s, 300/s".
    [[nodiscard]] std::string Pace() const;
    /// Notes what may have been done, and @throws Error (database) that says that the import has stopped.
    [[noreturn]] void Stop(const DatabaseError& e);

    long rows = 0;
    std::array<long, kRowFates.size()> counts{}; ///< by RowFate
    long lastLine = 0;                           ///< all rows up to it are dealt with; 0 before the first
    long privileged = 0;                         ///< rows that change a privilege or Admin, or would
    std::vector<NewGroup> madeGroups;            ///< or those that would be made
    std::optional<std::string> madeView;         ///< its path
    bool mayHaveDoneMore = false;                ///< the connection was lost while rows after lastLine were committed
    Sentence cutShort; ///< why it ended before the file did: a request, or a failure to read; empty when it did not
    std::chrono::steady_clock::time_point begin = std::chrono::steady_clock::now();
};

/// The names of the columns that a file may have.
std::vector<std::string_view> ImportColumns();

/// Adds the users of a file row by row, in transactions of some hundred rows. A bad row stops nothing. The front end
/// takes the columns line, login, id, outcome and reason when the rows begin, each row once it is safely stored, and
/// the progress after those of a transaction. A request to stop is obeyed after the current row; a dry run changes
/// nothing.
/// @param report  up to date also when this throws. @throws Error for what stops the import as a whole.
void ImportUsers(Call& call, const ImportSource& source, const ImportOptions& options, ImportReport& report);

} // namespace management
