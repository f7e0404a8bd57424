#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class CAConnect;
class CARecordset;

namespace management::audit {

/// What is kept of the rows of a table that change.
enum class Keeping : std::uint8_t {
    byId,      ///< each by its Col_ID
    byContent, ///< how many equal ones came or went: they have no id
    countOnly, ///< how many went; what a purge is to free is not kept
};

/// A table whose changes are recorded.
struct AuditedTable {
    std::string_view name;
    Keeping keeping;
    std::string_view noun;            ///< what sentences call its rows
    std::string_view nameColumn = {}; ///< what names a row for people; empty where nothing does
    bool hasOneOfEachName = false;    ///< whether the console gives a name to one row of a kind only
    int itemType = 0;                 ///< of its rows, where they are items
};

/// Whether two names of tables or columns, which are plain ASCII, are the same to an engine: case does not count.
bool SameIdentifier(std::string_view a, std::string_view b);

/// The table of a name, case not counting; null for one whose changes are not recorded.
const AuditedTable* FindAuditedTable(std::string_view name);
/// Its columns, as the schema spells them.
const std::vector<std::string>& ColumnsOf(const AuditedTable& table);
/// The columns in a statement, with commas between.
std::string ColumnList(const AuditedTable& table);

/// Columns with their values; nothing for NULL.
using AuditedRow = std::vector<std::pair<std::string, std::optional<std::string>>>;

/// A row of a table without any value, to be read into.
AuditedRow NullRow(const AuditedTable& table);
/// Reads the columns of a table from a row that begins with them. @param row  of this table, all of it.
/// @param first  the column of the first one. @throws CAException.
void ReadInto(AuditedRow& row, CARecordset& rows, long first = 1);
/// Reads the columns of a table into a new row. @param first  the column of the first one. @throws CAException.
AuditedRow ReadRow(CARecordset& rows, const AuditedTable& table, long first = 1);
/// Asks for the rows of a table that fulfil a condition, to be read by these. @param condition  see ReadRows.
/// @throws CAException.
void OpenRows(CARecordset& rows, CAConnect& conn, const AuditedTable& table, const std::string& condition);
/// The rows of a table that fulfil a condition. @param condition  from WHERE on; empty: all. @throws CAException.
std::vector<AuditedRow> ReadRows(CAConnect& conn, const AuditedTable& table, const std::string& condition);
/// The value of a column; nothing where the row lacks it or it is NULL.
std::optional<std::string> ValueIn(const AuditedRow& row, std::string_view column);

/// Whether a column of a row is never recorded: stored passwords, secrets of one-time codes, the encryption
/// key.
bool IsSecret(const AuditedTable& table, const AuditedRow& row, std::string_view column);
/// Whether the value of a setting is never recorded.
bool IsSecretSetting(std::string_view name);
/// Stands in recorded rows for a secret that is not empty.
inline constexpr std::string_view kSecretMark = "(not recorded)";

/// The items that a row is about, as "TYPE:ID": itself and those that it links.
std::vector<std::string> ItemsOf(const AuditedTable& table, const AuditedRow& row);

/// As it is stored: a JSON object, without the columns that hold the empty text.
std::string Packed(const AuditedRow& row);
/// As it is stored, with kSecretMark in place of each secret.
std::string PackedWithoutSecrets(const AuditedTable& table, const AuditedRow& row);
/// @throws Error (failed) for a text that is none of those.
AuditedRow Unpacked(std::string_view text);
/// The row with all columns of its table, in their order, those that it lacks being empty.
AuditedRow Completed(const AuditedTable& table, const AuditedRow& row);

} // namespace management::audit
