#include "management/exchange/MatchedLine.h"

#include "management/Escape.h"
#include "management/Names.h"
#include "management/Query.h"
#include "platform/CodePage.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <map>
#include <set>
#include <span>

namespace management {

namespace {

using RowsByKey = std::multimap<std::string, PresentRow*>;

std::span<const LineMember> KeysOf(const Noun& noun) { return std::span(noun.members).first(noun.keys); }

bool SameKey(const Noun& noun, const ColumnValues& a, const ColumnValues& b)
{
    return std::ranges::all_of(KeysOf(noun), [&](const LineMember& member) {
        const auto left = a.find(member.column);
        const auto right = b.find(member.column);
        return left == a.end() || right == b.end() || left->second == right->second;
    });
}

std::string InCondition(std::string_view column, const std::set<std::string>& values)
{
    return fmt::format("{} IN ({})", column, fmt::join(values, ", "));
}

/// What the rows of items meet that lines may be about; empty for none.
std::string IdCondition(const std::vector<MatchedLine>& lines)
{
    std::set<std::string> ids;
    for (const MatchedLine& wanted : lines) {
        if (wanted.id) {
            ids.insert(std::to_string(*wanted.id));
        }
    }
    return ids.empty() ? "" : InCondition("Col_ID", ids);
}

/// The same of rows that refer to items.
std::string ReferenceCondition(const Noun& noun, const std::vector<MatchedLine>& lines)
{
    std::string condition;
    for (const LineMember& member : KeysOf(noun)) {
        std::set<std::string> ids;
        for (const MatchedLine& wanted : lines) {
            if (wanted.problem.IsEmpty() && IsReference(member.kind)) {
                ids.insert(*wanted.values.at(member.column));
            }
        }
        if (!ids.empty()) {
            condition += (condition.empty() ? "" : " AND ") + InCondition(member.column, ids);
        }
    }
    return condition;
}

/// The same of rows that a text names.
std::string TextCondition(CAConnect& conn, const Noun& noun, const std::vector<MatchedLine>& lines)
{
    std::set<std::string> literals;
    const std::string_view column = noun.members.front().column;
    for (const MatchedLine& wanted : lines) {
        if (wanted.problem.IsEmpty()) {
            const std::string text = wanted.values.at(column).value_or("");
            literals.insert(Literal(conn, text));
            literals.insert(Literal(conn, platform::UpperUtf8(text)));
        }
    }
    return literals.empty() ? ""
                            : fmt::format("({0} IN ({1}) OR upper({0}) IN ({1}))", column, fmt::join(literals, ", "));
}

std::string ConditionOn(CAConnect& conn, const Noun& noun, const std::vector<MatchedLine>& lines)
{
    if (noun.item != MemberKind::text) {
        return IdCondition(lines);
    }
    const std::string condition = ReferenceCondition(noun, lines);
    return condition.empty() && !IsReference(noun.members.front().kind) ? TextCondition(conn, noun, lines) : condition;
}

/// Gives lines that have no row yet the first unclaimed row of their key that fits.
template <class Fits>
void Claim(std::vector<MatchedLine>& lines, const RowsByKey& rows, Fits fits)
{
    for (MatchedLine& wanted : lines) {
        if (!wanted.problem.IsEmpty() || wanted.row != nullptr) {
            continue;
        }
        const auto [first, last] = rows.equal_range(wanted.key);
        const auto found = std::find_if(
            first, last, [&](const auto& row) { return !row.second->isClaimed && fits(wanted, *row.second); });
        if (found != last) {
            found->second->isClaimed = true;
            wanted.row = found->second;
        }
    }
}

void MatchById(std::vector<MatchedLine>& lines, std::deque<PresentRow>& rows)
{
    std::map<int, PresentRow*> byId;
    for (PresentRow& row : rows) {
        byId[row.id] = &row;
    }
    for (MatchedLine& wanted : lines) {
        wanted.row = wanted.id && byId.contains(*wanted.id) ? byId.at(*wanted.id) : nullptr;
    }
}

/// The rows of the users of a block.
std::deque<PresentRow> RowsOf(const UserBlock& users)
{
    std::deque<PresentRow> rows;
    users.ForEach([&](const UserBlock::User& user) {
        PresentRow& row = rows.emplace_back();
        row.id = user.key.id;
        for (const auto& [field, stored] : user.stored) {
            row.values[field->column] = stored;
        }
    });
    return rows;
}

/// The rows of another noun that the lines may be about.
std::deque<PresentRow> ReadRows(CAConnect& conn, const Noun& noun, const std::vector<MatchedLine>& lines)
{
    std::deque<PresentRow> rows;
    const std::string condition = ConditionOn(conn, noun, lines);
    if (condition.empty()) {
        return rows;
    }
    std::vector<std::string_view> columns;
    for (const LineMember& member : noun.members) {
        for (const std::string_view column : {member.typeColumn, member.column}) {
            if (!column.empty()) {
                columns.push_back(column);
            }
        }
    }
    EachRow(conn,
            fmt::format("SELECT {}{} FROM {} WHERE {}{}", noun.hasId ? "Col_ID, " : "", fmt::join(columns, ", "),
                        noun.table, condition, noun.hasId ? " ORDER BY Col_ID" : ""),
            [&](CARecordset& found) {
                PresentRow& row = rows.emplace_back();
                long at = 0;
                row.id = noun.hasId ? NumberIn(found, ++at) : 0;
                for (const std::string_view column : columns) {
                    row.values[column] = OptionalTextIn(found, ++at);
                }
            });
    return rows;
}

/// Gives each line its row, the most alike first. @param rows  outlive the lines.
void MatchRows(const Noun& noun, std::vector<MatchedLine>& lines, std::deque<PresentRow>& rows)
{
    if (noun.item != MemberKind::text) {
        MatchById(lines, rows);
        return;
    }
    RowsByKey byKey;
    for (PresentRow& row : rows) {
        byKey.emplace(FoldedKey(noun, row.values), &row);
    }
    const auto hasKey = [&noun](const MatchedLine& wanted, const PresentRow& row) {
        return SameKey(noun, row.values, wanted.values);
    };
    const auto hasValues = [&noun](const MatchedLine& wanted, const PresentRow& row) {
        return HasValues(noun, row.values, wanted.values);
    };
    Claim(lines, byKey,
          [&](const auto& wanted, const auto& row) { return hasKey(wanted, row) && hasValues(wanted, row); });
    Claim(lines, byKey, hasValues);
    Claim(lines, byKey, hasKey);
    Claim(lines, byKey, [](const auto&, const auto&) { return true; });
}

} // namespace

std::size_t DepthOf(const std::string& path)
{
    std::size_t depth = 0;
    for (std::size_t i = 0; i < path.size(); ++i) {
        depth += path[i] == '/' ? 1 : 0;
        i += path[i] == '\\' ? 1 : 0;
    }
    return depth;
}

std::size_t DepthOf(const ExportedLine& line)
{
    const auto path = std::ranges::find(line.object, line.noun->members.front().name, &JsonMember::name);
    const auto* text = path == line.object.end() ? nullptr : std::get_if<TextValue>(&path->value);
    return text == nullptr ? 0 : DepthOf(*text);
}

std::string FoldedKey(const Noun& noun, const ColumnValues& values)
{
    std::string key;
    for (std::size_t i = 0; i < noun.keys; ++i) {
        for (const std::string_view column : {noun.members[i].typeColumn, noun.members[i].column}) {
            const auto value = values.find(column);
            key += value == values.end() ? "" : NameKey(value->second.value_or("")) + '\0';
        }
    }
    return key;
}

bool HasValues(const Noun& noun, const ColumnValues& stored, const ColumnValues& wanted)
{
    return std::ranges::all_of(wanted, [&](const auto& value) {
        const auto found = stored.find(value.first);
        const bool isKey =
            std::ranges::any_of(KeysOf(noun), [&](const LineMember& member) { return member.column == value.first; });
        return isKey || (found != stored.end() && found->second == value.second);
    });
}

LineMatcher::LineMatcher(CAConnect& conn, std::span<const ExportedLine> lines, const ItemNames& names)
    : m_conn(conn), m_lines(lines), m_noun(*lines.front().noun), m_names(names)
{
    std::vector<const Field*> fields;
    if (m_noun.name == "user") {
        for (const LineMember& member : m_noun.members) {
            fields.push_back(FindField(member.name));
        }
    }
    m_users = UserBlock(conn, LoginsIn(lines), fields);
}

std::vector<MatchedLine> LineMatcher::Resolve() const
{
    const LineResolver resolver(m_names, m_users);
    std::vector<MatchedLine> lines;
    lines.reserve(m_lines.size());
    for (const ExportedLine& line : m_lines) {
        ResolvedLine resolved = resolver.Resolve(line);
        std::string key = FoldedKey(m_noun, resolved.values);
        lines.push_back({std::move(resolved), &line, std::move(key)});
    }
    return lines;
}

void LineMatcher::FindRows(std::vector<MatchedLine>& lines)
{
    m_rows = m_noun.name == "user" ? RowsOf(m_users) : ReadRows(m_conn, m_noun, lines);
    MatchRows(m_noun, lines, m_rows);
}

std::string LiteralFor(CAConnect& conn, const Noun& noun, std::string_view column, const Stored& value)
{
    const bool isNumber = std::ranges::any_of(noun.members, [&](const LineMember& member) {
        const bool isItself = noun.item != MemberKind::text && &member == &noun.members.front();
        return !isItself && ((member.column == column && (IsNumber(member.kind) || IsReference(member.kind))) ||
                             member.typeColumn == column);
    });
    return isNumber ? value.value_or("NULL") : LiteralOrNull(conn, value);
}

std::string ConditionOn(CAConnect& conn, const Noun& noun, const PresentRow& row)
{
    std::string text;
    for (const auto& [column, value] : row.values) {
        text += fmt::format("{}{} {}", text.empty() ? "" : " AND ", column,
                            value ? "= " + LiteralFor(conn, noun, column, value) : "IS NULL");
    }
    return text;
}

} // namespace management
