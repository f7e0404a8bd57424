#pragma once

#include "management/Sentence.h"
#include "management/import/CsvReader.h"
#include "management/import/DateFormat.h"
#include "management/import/Import.h"
#include "management/users/Fields.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace management {

/// Fields that an import looks at by themselves.
const Field& LoginField();
const Field& DepartmentField();
const Field& DepartmentIdField();

/// A row of the file, read and checked by itself.
struct ImportRow {
    long line = 0;
    std::string login;
    std::string key; ///< by which the login name is compared
    FieldValues values;
    Sentence problem;                       ///< empty when the row is good so far
    std::vector<const Field*> emptied = {}; ///< of a user who is there
    CsvRecord record = {};                  ///< as the file has it, where failed rows are wanted
};

/// What the columns of the file are.
class ImportHeader {
public:
    /// @param options  outlive this. @throws Error (invalid) for a header that cannot be used.
    ImportHeader(const std::optional<CsvRecord>& record, const std::string& file, const ColumnOptions& options);

    /// The row of a record; what is wrong with it is in its problem.
    [[nodiscard]] ImportRow Read(const CsvRecord& record) const;
    [[nodiscard]] bool Has(const Field& field) const;
    /// The columns of users that rows are compared with: those of the file, and what tells of their departments.
    [[nodiscard]] std::vector<const Field*> Compared() const;

private:
    void Add(const std::string& name, const std::string& file);
    std::string Renamed(const std::string& name);
    void Take(ImportRow& row, const Field& field, const std::string& text) const;

    const ColumnOptions& m_options;
    DateFormat m_dates;
    std::set<std::string> m_mapped;      // folded names of columns that were renamed
    std::vector<const Field*> m_columns; // null for those that are ignored
};

} // namespace management
