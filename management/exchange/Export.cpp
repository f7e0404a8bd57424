#include "management/exchange/Export.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "management/DatabaseError.h"
#include "management/JsonLine.h"
#include "management/Query.h"
#include "management/Text.h"
#include "management/audit/AuditedRow.h"
#include "management/documents/Documents.h"
#include "management/exchange/DirectoryPart.h"
#include "management/exchange/ExportRun.h"
#include "management/exchange/ItemNames.h"
#include "management/exchange/Nouns.h"
#include "management/import/Import.h"
#include "management/users/Fields.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace management {

namespace {

JsonValue NumberOrText(const std::optional<std::string>& stored)
{
    if (!stored) {
        return {};
    }
    std::int64_t number = 0;
    const char* end = stored->data() + stored->size();
    const auto read = std::from_chars(stored->data(), end, number);
    return read.ec == std::errc() && read.ptr == end ? JsonValue(number) : JsonValue(TextValue(*stored));
}

const JsonMember* FindMember(const JsonObject& line, std::string_view name)
{
    const auto found = std::ranges::find(line, name, &JsonMember::name);
    return found == line.end() ? nullptr : &*found;
}

/// Whether a line of a member tells no more than the path of a group does.
bool IsSaidByPath(const JsonObject& line)
{
    const JsonMember& member = *FindMember(line, "member");
    const JsonMember& of = *FindMember(line, "of");
    if (member.part != "group" || FindMember(line, "relation")->value != JsonValue(std::int64_t{kMembership}) ||
        FindMember(line, "reference")->value != JsonValue(std::int64_t{0}) ||
        FindMember(line, "view")->value != JsonValue()) {
        return false;
    }
    const std::string& holder = std::get<TextValue>(of.value);
    return ParseItemName(MemberKind::group, std::get<TextValue>(member.value)).parent ==
           (of.part == "view" ? "/" + holder : holder);
}

/// Puts lines in the order of their texts. @param once  whether of equal ones the first is kept alone.
void SortByText(std::vector<JsonObject>& lines, bool once)
{
    std::vector<std::pair<std::string, JsonObject>> sorted;
    sorted.reserve(lines.size());
    for (JsonObject& line : lines) {
        std::string text = WriteJsonLine(line);
        sorted.emplace_back(std::move(text), std::move(line));
    }
    const auto textOf = &std::pair<std::string, JsonObject>::first;
    std::ranges::sort(sorted, {}, textOf);
    if (once) {
        const auto repeated = std::ranges::unique(sorted, {}, textOf);
        sorted.erase(repeated.begin(), repeated.end());
    }
    lines.clear();
    for (auto& [text, line] : sorted) {
        lines.push_back(std::move(line));
    }
}

/// Reads the rows of a noun and makes lines of them.
class NounReader {
public:
    NounReader(CAConnect& conn, const Noun& noun, const ItemNames& names, const DirectoryPart* part, bool withPasswords)
        : m_conn(conn), m_noun(noun), m_names(names), m_part(part), m_withPasswords(withPasswords)
    {
    }

    /// Gives each line to `take` until that gives false. @return whether it never did.
    bool Run(const std::function<bool(JsonObject)>& take, ExportReport& report)
    {
        std::vector<JsonObject> lines; // of rows that the order does not tell apart
        std::string place;
        bool goesOn = true;
        const auto flush = [&] {
            if (lines.size() > 1) {
                SortByText(lines, !m_noun.hasId);
            }
            goesOn = goesOn && std::ranges::all_of(lines, [&take](JsonObject& line) { return take(std::move(line)); });
            lines.clear();
        };
        EachRow(m_conn, Query(), [&](CARecordset& row) {
            std::string here;
            for (long column = 1; column <= m_orderColumns; ++column) {
                here += TextIn(row, column) + " ";
            }
            if (here != place) {
                flush();
                place = std::move(here);
            }
            if (std::optional<JsonObject> line = LineOf(row, report)) {
                lines.push_back(std::move(*line));
            }
            return goesOn;
        });
        flush();
        return goesOn;
    }

private:
    /// What a line says of an item.
    struct Reference {
        JsonObject members; ///< none where there is no such item
        std::optional<ItemKey> item;
    };

    [[nodiscard]] std::string Query()
    {
        std::vector<std::string> columns = OrderColumns();
        m_orderColumns = static_cast<long>(columns.size());
        const std::string order = columns.empty() ? "" : fmt::format(" ORDER BY {}", fmt::join(columns, ", "));
        std::string joins;
        for (const LineMember& member : m_noun.members) {
            joins += AddColumns(columns, member);
        }
        return fmt::format("SELECT {} FROM {} t{}{}{}", fmt::join(columns, ", "), m_noun.table, joins,
                           m_noun.condition.empty() ? "" : fmt::format(" WHERE {}", m_noun.condition), order);
    }

    [[nodiscard]] std::vector<std::string> OrderColumns() const
    {
        std::vector<std::string> columns;
        for (std::string_view rest = m_noun.order; !rest.empty();) {
            const std::size_t end = std::min(rest.find(", "), rest.size());
            columns.push_back(fmt::format("t.{}", rest.substr(0, end)));
            rest.remove_prefix(std::min(end + 2, rest.size()));
        }
        return columns;
    }

    /// Adds the columns of a member. @return the join that they need.
    [[nodiscard]] std::string AddColumns(std::vector<std::string>& columns, const LineMember& member) const
    {
        if (!member.typeColumn.empty()) {
            columns.push_back(fmt::format("t.{}", member.typeColumn));
        }
        const bool isItself = m_noun.item != MemberKind::text && &member == &m_noun.members.front();
        columns.push_back(fmt::format("t.{}", isItself ? "Col_ID" : member.column));
        if (member.kind != MemberKind::user && member.kind != MemberKind::item) {
            return "";
        }
        const std::string alias = fmt::format("u_{}", member.name);
        columns.push_back(alias + ".Col_LoginName");
        const std::string join = fmt::format(" LEFT JOIN qv_User {0} ON {0}.Col_ID = t.{1}", alias, member.column);
        return member.kind == MemberKind::item ? join + fmt::format(" AND t.{} = {}", member.typeColumn, kItemTypeUser)
                                               : join;
    }

    std::optional<JsonObject> LineOf(CARecordset& row, ExportReport& report)
    {
        JsonObject line = {{"noun", {}, TextValue(std::string(m_noun.name))}};
        long column = m_orderColumns;
        bool isInPart = false;
        std::string settingName;
        for (std::size_t i = 0; i < m_noun.members.size(); ++i) {
            const LineMember& member = m_noun.members[i];
            const int type = member.typeColumn.empty() ? 0 : NumberIn(row, ++column);
            ++column;
            if (!IsReference(member.kind)) {
                if (!AddValue(line, member, OptionalTextIn(row, column), settingName)) {
                    return std::nullopt;
                }
                continue;
            }
            const Reference reference = ReferenceOf(member, type, row, column);
            const bool isNeeded = i < std::max(m_noun.keys, m_noun.needed);
            if (isNeeded && reference.members.empty()) {
                ++report.leftOut;
                return std::nullopt;
            }
            if (isNeeded && !MayBeInPart(reference.item, isInPart)) {
                return std::nullopt;
            }
            AddReference(line, member, reference);
        }
        return IsLeftOut(line, row, isInPart) ? std::nullopt : std::optional(std::move(line));
    }

    /// Whether the part that is exported has an item, if it is one. @param isInPart  set where the item is enough for
    /// its line to be of the part.
    [[nodiscard]] bool MayBeInPart(const std::optional<ItemKey>& item, bool& isInPart) const
    {
        if (m_part == nullptr || !item) {
            return true;
        }
        isInPart =
            isInPart || item->type == kItemTypeUser || item->type == kItemTypeGroup || m_noun.item != MemberKind::text;
        return m_part->Has(*item);
    }

    [[nodiscard]] bool IsLeftOut(const JsonObject& line, CARecordset& row, bool isInPart) const
    {
        if (m_part != nullptr && m_noun.name == "user") {
            isInPart = m_part->Has({kItemTypeUser, NumberIn(row, 1)});
        }
        return (m_part != nullptr && !isInPart) || (m_noun.name == "member" && IsSaidByPath(line));
    }

    /// @return false when there is to be no line without the value.
    bool AddValue(JsonObject& line, const LineMember& member, const std::optional<std::string>& stored,
                  std::string& settingName) const
    {
        const bool isSecret = member.kind == MemberKind::secret || member.kind == MemberKind::secretNumber ||
                              (member.kind == MemberKind::setting && audit::IsSecretSetting(settingName));
        if (isSecret && !m_withPasswords) {
            return member.kind != MemberKind::setting;
        }
        if (member.column == "Col_Name") {
            settingName = stored.value_or("");
        }
        line.push_back({std::string(member.name),
                        {},
                        IsNumber(member.kind) ? NumberOrText(stored)
                        : stored              ? JsonValue(TextValue(*stored))
                                              : JsonValue()});
        return true;
    }

    static void AddReference(JsonObject& line, const LineMember& member, const Reference& reference)
    {
        if (reference.members.empty()) {
            line.push_back({std::string(member.name)});
        } else {
            std::ranges::copy(reference.members, std::back_inserter(line));
        }
    }

    /// @param column  of the id; after it comes the login name of a user.
    [[nodiscard]] Reference ReferenceOf(const LineMember& member, int type, CARecordset& row, long& column) const
    {
        const int id = NumberIn(row, column);
        const std::string name(member.name);
        const bool mayBeUser = member.kind == MemberKind::user || member.kind == MemberKind::item;
        if (const std::optional<std::string> login = mayBeUser ? OptionalTextIn(row, ++column) : std::nullopt) {
            return {{{name, member.kind == MemberKind::item ? "user" : "", TextValue(*login)}},
                    ItemKey{kItemTypeUser, id}};
        }
        if (member.kind == MemberKind::user) {
            return {};
        }
        if (member.kind == MemberKind::object && type != kFolderClass) {
            return {{{name, "class", std::int64_t{type}}, {name, "id", std::int64_t{id}}}, std::nullopt};
        }
        return ReferenceByName(member, type, id);
    }

    [[nodiscard]] Reference ReferenceByName(const LineMember& member, int type, int id) const
    {
        const std::optional<MemberKind> kind = member.kind == MemberKind::item     ? KindOfType(type)
                                               : member.kind == MemberKind::object ? std::optional(MemberKind::folder)
                                                                                   : std::optional(member.kind);
        const std::string* text = kind ? m_names.NameOf(*kind, id) : nullptr;
        if (text == nullptr) {
            return {};
        }
        const bool hasWord = member.kind == MemberKind::item || member.kind == MemberKind::object;
        return {{{std::string(member.name), hasWord ? std::string(WordOf(*kind)) : "", TextValue(*text)}},
                ItemOf(*kind, id)};
    }

    static std::optional<ItemKey> ItemOf(MemberKind kind, int id)
    {
        return kind == MemberKind::group  ? std::optional(ItemKey{kItemTypeGroup, id})
               : kind == MemberKind::view ? std::optional(ItemKey{kItemTypeView, id})
               : kind == MemberKind::role ? std::optional(ItemKey{kItemTypeRole, id})
                                          : std::nullopt;
    }

    static std::string_view WordOf(MemberKind kind)
    {
        return kind == MemberKind::group  ? "group"
               : kind == MemberKind::role ? "role"
               : kind == MemberKind::view ? "view"
                                          : "folder";
    }

    CAConnect& m_conn;
    const Noun& m_noun;
    const ItemNames& m_names;
    const DirectoryPart* m_part;
    bool m_withPasswords;
    long m_orderColumns = 0;
};

void RequireNouns(const std::vector<std::string>& nouns)
{
    for (const std::string& noun : nouns) {
        if (std::ranges::find(Nouns(), noun, &Noun::plural) == Nouns().end()) {
            std::vector<std::string_view> known;
            std::ranges::transform(Nouns(), std::back_inserter(known), &Noun::plural);
            throw Error(ErrorCode::invalid, FillPattern("{} is nothing that can be exported; there are {}",
                                                        Quoted(noun), fmt::join(known, ", ")));
        }
    }
}

bool IsWanted(const Noun& noun, const ExportOptions& options)
{
    const bool isNamed = options.nouns.empty() || std::ranges::find(options.nouns, noun.plural) != options.nouns.end();
    return isNamed && (noun.isOfPeople || !options.in);
}

template <class Body>
bool InTransaction(CAConnect& conn, const ExportOptions& options, Body body)
{
    return options.atOneMoment ? AtOneMoment(conn, body) : body();
}

} // namespace

std::string ExportHead(CAConnect& conn, const ExportOptions& options)
{
    RequireNouns(options.nouns);
    JsonObject head = ReadJsonLine(kExportHead);
    if (options.in) {
        const ItemKey top = Organisation(conn).FindHolder(*options.in);
        const bool isView = top.type == kItemTypeView;
        const ItemNames names(conn);
        const std::string* name = names.NameOf(isView ? MemberKind::view : MemberKind::group, top.id);
        head.push_back({"in", {}, TextValue((isView ? "/" : "") + *name)});
    }
    if (!options.nouns.empty()) {
        head.push_back({"nouns", {}, TextValue(fmt::format("{}", fmt::join(options.nouns, ",")))});
    }
    return WriteJsonLine(head);
}

bool ExportLines(Call& call, const ExportOptions& options, const std::function<void(const Noun&, JsonObject)>& take,
                 ExportReport& report)
{
    RequireNouns(options.nouns);
    CAConnect& conn = call.Connection();
    return InTransaction(conn, options, [&] {
        const ItemNames names(conn);
        const std::optional<DirectoryPart> part =
            options.in ? std::optional<DirectoryPart>(std::in_place, conn, *options.in) : std::nullopt;
        call.Front().ShowProgress(0, std::nullopt);
        for (const Noun& noun : Nouns()) {
            if (!IsWanted(noun, options)) {
                continue;
            }
            NounReader reader(conn, noun, names, part ? &*part : nullptr, options.withPasswords);
            const bool isDone = reader.Run(
                [&](JsonObject line) {
                    take(noun, std::move(line));
                    return GoesOn(call, report);
                },
                report);
            if (!isDone) {
                return false;
            }
        }
        return true;
    });
}

bool ExportDirectory(Call& call, const ExportOptions& options, const std::function<void(const std::string&)>& take,
                     ExportReport& report)
{
    return ExportLines(
        call, options, [&take](const Noun& /*noun*/, const JsonObject& line) { take(WriteJsonLine(line)); }, report);
}

bool ExportPeople(Call& call, const ExportOptions& options, ExportReport& report)
{
    CAConnect& conn = call.Connection();
    std::vector<const Field*> fields;
    std::vector<std::string> names;
    std::string columns;
    for (const std::string_view name : ImportColumns()) {
        fields.push_back(FindField(name));
        names.emplace_back(name);
        columns += fmt::format(", {}", fields.back()->column);
    }
    return AtOneMoment(conn, [&] {
        const std::optional<DirectoryPart> part =
            options.in ? std::optional<DirectoryPart>(std::in_place, conn, *options.in) : std::nullopt;
        call.Front().TakeColumns(names);
        call.Front().ShowProgress(0, std::nullopt);
        bool goesOn = true;
        EachRow(conn, fmt::format("SELECT Col_ID{} FROM qv_User ORDER BY Col_ID", columns), [&](CARecordset& row) {
            if (part && !part->Has({kItemTypeUser, NumberIn(row, 1)})) {
                return true;
            }
            std::vector<Value> values;
            values.reserve(fields.size());
            long column = 1;
            for (const Field* field : fields) {
                values.push_back(Shown(*field, OptionalTextIn(row, ++column)));
            }
            call.Front().TakeRow(values);
            goesOn = GoesOn(call, report);
            return goesOn;
        });
        return goesOn;
    });
}

} // namespace management
