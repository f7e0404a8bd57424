#include "management/import/ImportHeader.h"

#include "management/Names.h"
#include "management/Text.h"
#include "management/import/SeenLogins.h"
#include "management/import/Synchronisation.h"
#include "management/users/Users.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>

namespace management {

namespace {

constexpr std::string_view kByteBlanks = " \t";

std::string Trimmed(const std::string& text)
{
    const std::size_t begin = text.find_first_not_of(kByteBlanks);
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(kByteBlanks) - begin + 1);
}

bool IsImported(const Field& field) { return field.use == Field::Use::given || field.use == Field::Use::changed; }

} // namespace

const Field& LoginField()
{
    static const Field& field = *FindField("login");
    return field;
}
const Field& DepartmentField()
{
    static const Field& field = *FindField("department");
    return field;
}
const Field& DepartmentIdField()
{
    static const Field& field = *FindField("department_id");
    return field;
}

ImportHeader::ImportHeader(const std::optional<CsvRecord>& record, const std::string& file,
                           const ColumnOptions& options)
    : m_options(options), m_dates(options.dateFormat)
{
    if (!record) {
        throw Error(ErrorCode::invalid, FillPattern("{} has no header row to name its columns", file));
    }
    if (!record->problem.IsEmpty()) {
        throw Error(ErrorCode::invalid, FillPattern("the header of {} cannot be read: {}", file, record->problem));
    }
    for (const std::string& name : record->fields) {
        Add(Trimmed(name), file);
    }
    for (const auto& [name, column] : options.names) {
        if (!m_mapped.contains(NameKey(name))) {
            throw Error(ErrorCode::invalid,
                        FillPattern("{} has no column {} that --map could rename to {}", file, Quoted(name), column));
        }
    }
    if (!Has(LoginField())) {
        throw Error(ErrorCode::invalid, FillPattern("{} has no column login; known columns are {}", file,
                                                    fmt::join(ImportColumns(), ", ")));
    }
}

ImportRow ImportHeader::Read(const CsvRecord& record) const
{
    ImportRow row{record.line, {}, {}, {}, record.problem};
    if (!row.problem.IsEmpty()) {
        return row;
    }
    for (std::size_t i = 0; i < std::min(m_columns.size(), record.fields.size()); ++i) {
        if (m_columns[i] != nullptr) {
            Take(row, *m_columns[i], record.fields[i]);
        }
    }
    if (record.fields.size() != m_columns.size()) {
        row.problem =
            FillPattern("{} where the header has {}", Counted(record.fields.size(), "value"), m_columns.size());
    }
    return row;
}

bool ImportHeader::Has(const Field& field) const { return std::ranges::find(m_columns, &field) != m_columns.end(); }

std::vector<const Field*> ImportHeader::Compared() const
{
    std::vector<const Field*> fields = m_columns;
    std::erase(fields, &LoginField());
    std::erase(fields, nullptr);
    for (const Field* field : {&DepartmentField(), &DepartmentIdField()}) {
        if (!Has(*field)) {
            fields.push_back(field);
        }
    }
    return fields;
}

void ImportHeader::Add(const std::string& name, const std::string& file)
{
    const Field* field = FindField(Renamed(name));
    if (field == nullptr || (field != &LoginField() && !IsImported(*field))) {
        if (m_options.ignoreUnknown && !m_mapped.contains(NameKey(name))) {
            m_columns.push_back(nullptr);
            return;
        }
        const bool otherSeparator = name.find_first_of(";\t") != std::string::npos;
        throw Error(ErrorCode::invalid,
                    FillPattern("{} has an unknown column {}{}; known columns are {}", file, Quoted(Renamed(name)),
                                otherSeparator ? " (values must be separated by commas, or give --delimiter)" : "",
                                fmt::join(ImportColumns(), ", ")));
    }
    if (Has(*field)) {
        throw Error(ErrorCode::invalid, FillPattern("{} has the column {} twice", file, field->name));
    }
    m_columns.push_back(field);
}

/// The name of a column as ImportColumns may have it.
std::string ImportHeader::Renamed(const std::string& name)
{
    for (const auto& [from, to] : m_options.names) {
        if (SameName(from, name)) {
            m_mapped.insert(NameKey(name));
            return to;
        }
    }
    return name;
}

/// An empty value says nothing about its column, or empties it. The first problem of a row is the one to report.
void ImportHeader::Take(ImportRow& row, const Field& field, const std::string& text) const
{
    try {
        if (&field == &LoginField()) {
            row.login = text;
            row.key = NameKey(text);
            CheckLogin(text);
        } else if (!text.empty()) {
            row.values[&field] = ParseValue(field, field.IsDate() ? m_dates.Converted(field, text) : text);
        } else if (m_options.clearEmpty && &field != &DepartmentField() && (field.IsText() || field.IsDate())) {
            row.emptied.push_back(&field);
        }
    } catch (const Error& e) {
        row.problem = row.problem.IsEmpty() ? e.Why() : row.problem;
    }
}

std::vector<std::string_view> ImportColumns()
{
    std::vector<std::string_view> columns = {"login"};
    for (const Field& field : Fields()) {
        if (IsImported(field)) {
            columns.push_back(field.name);
        }
    }
    return columns;
}

std::size_t ReadLogins(const ImportSource& source, const ColumnOptions& columns, SeenLogins& logins)
{
    CsvReader reader(source.in, source.delimiter);
    const ImportHeader header(reader.Next(), source.name, columns);
    std::size_t unreadable = 0;
    while (const std::optional<CsvRecord> record = reader.Next()) {
        const ImportRow row = header.Read(*record);
        if (row.login.empty()) {
            ++unreadable;
        } else {
            logins.Add(row.key, row.line);
        }
    }
    if (reader.Failed()) {
        throw Error(ErrorCode::failed, FillPattern("{} cannot be read; nothing was imported", source.name));
    }
    return unreadable;
}

} // namespace management
