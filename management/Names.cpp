#include "management/Names.h"

#include "dbaccess/CARecordset.h"
#include "management/Errors.h"
#include "management/Escape.h"
#include "management/Query.h"
#include "management/Text.h"
#include "platform/CodePage.h"

#include <fmt/format.h>

#include <charconv>

namespace management {

std::string NameKey(std::string_view name) { return platform::FoldUtf8(name); }

bool SameName(std::string_view a, std::string_view b) { return NameKey(a) == NameKey(b); }

std::optional<RowName> FindConfused(CAConnect& conn, std::string_view table, std::string_view name,
                                    std::string_view condition)
{
    return FindConfused(conn, table, "Col_ID", "Col_Name", name, condition);
}

std::optional<RowName> FindConfused(CAConnect& conn, std::string_view table, std::string_view idColumn,
                                    std::string_view nameColumn, std::string_view name, std::string_view condition)
{
    std::optional<RowName> found;
    EachRow(conn,
            fmt::format("SELECT {}, {} FROM {} WHERE {} = '{}'{}{} ORDER BY {}", idColumn, nameColumn, table,
                        nameColumn, EscapeLiteral(conn, name).View(), condition.empty() ? "" : " AND ", condition,
                        idColumn),
            [&](CARecordset& row) {
                RowName other;
                ReadColumns(row, other.id, other.name);
                if (!found && !SameName(other.name, name)) {
                    found = other;
                }
            });
    return found;
}

void ThrowConfused(std::string_view noun, std::string_view name, const RowName& other)
{
    throw Error(ErrorCode::conflict,
                FillPattern("the {} {} is taken: this database takes it for equal to {} (id {}); choose another, or "
                            "see what `qvadmin db status` says",
                            Sentence(noun), Quoted(name), Quoted(other.name), other.id));
}

std::optional<int> IdIn(std::string_view argument, std::string_view item)
{
    if (!argument.starts_with(kIdPrefix)) {
        return std::nullopt;
    }
    int id = 0;
    const char* const end = argument.data() + argument.size();
    const auto read = std::from_chars(argument.data() + kIdPrefix.size(), end, id);
    if (read.ec != std::errc() || read.ptr != end) {
        throw Error(ErrorCode::invalid,
                    FillPattern("{} is not the id of {}; write id: and a number", Quoted(argument), Sentence(item)));
    }
    return id;
}

void CheckName(std::string_view noun, const std::string& name)
{
    if (name.empty()) {
        throw Error(ErrorCode::invalid, FillPattern("the name of the {} is empty", Sentence(noun)));
    }
    if (HasOuterBlanks(name)) {
        throw Error(ErrorCode::invalid,
                    FillPattern("the {} name {} begins or ends with a blank", Sentence(noun), Quoted(name)));
    }
    if (HasControlCharacter(name)) {
        throw Error(ErrorCode::invalid,
                    FillPattern("the {} name {} holds a control character", Sentence(noun), Quoted(name)));
    }
}

} // namespace management
