#include "management/users/UserSelection.h"

#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "dbaccess/CARecordset.h"
#include "dbaccess/EngineKind.h"
#include "management/Escape.h"
#include "management/Names.h"
#include "management/Query.h"
#include "management/Text.h"
#include "management/organisation/Organisation.h"
#include "management/roles/Roles.h"
#include "management/users/LoginOrder.h"
#include "platform/CodePage.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <utility>

namespace management {

namespace {

constexpr Field kId{"id", "Col_ID", std::monostate(), Field::Use::shown, ""};

/// What --match looks into.
constexpr std::array<std::string_view, 6> kMatchedFields = {"login", "name", "email", "mobile", "department", "title"};

std::vector<std::string_view> FieldNames()
{
    std::vector<std::string_view> names = {kId.name};
    for (const Field& field : Fields()) {
        if (field.use >= Field::Use::shown) {
            names.push_back(field.name);
        }
    }
    return names;
}

// ---- Conditions -----------------------------------------------------------------------------------------------------

/// One of the conditions FIELD=VALUE and FIELD~PART.
struct Where {
    const Field* field;
    std::string text;
    bool isPart;
};

Where ParseWhere(const std::string& where)
{
    const std::size_t sign = where.find_first_of("=~");
    if (sign == std::string::npos || sign == 0) {
        throw Error(ErrorCode::invalid,
                    FillPattern("--where {} is not a condition; write FIELD=VALUE or FIELD~PART", Quoted(where)));
    }
    Where parsed{&RequireField(where.substr(0, sign)), where.substr(sign + 1), where[sign] == '~'};
    if (parsed.isPart && !parsed.field->IsText()) {
        throw Error(ErrorCode::invalid, FillPattern("--where {}: {} is not a text to look into; write {}=VALUE",
                                                    Quoted(where), parsed.field->name, parsed.field->name));
    }
    return parsed;
}

/// A value as its column stores it, of a field that is not a text. @throws Error (invalid).
Stored ParseOther(const Field& field, const std::string& text)
{
    if (!std::holds_alternative<std::monostate>(field.member)) {
        return ParseValue(field, text);
    }
    int number = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end) {
        throw Error(ErrorCode::invalid, FillPattern("{} {} is not a whole number", field.name, Quoted(text)));
    }
    return std::to_string(number);
}

std::string OtherCondition(const CAConnect& conn, const Field& field, const Stored& value)
{
    const std::string column(field.column);
    if (field.IsDate()) {
        return value ? fmt::format("{} = {}", column, Literal(conn, *value)) : column + " IS NULL";
    }
    if (*value == "0") {
        return fmt::format("({0} = 0 OR {0} IS NULL)", column);
    }
    return field.IsFlag() ? column + " <> 0" : fmt::format("{} = {}", column, *value);
}

std::string LikePattern(const std::string& part)
{
    std::string pattern = "%";
    for (const char ch : platform::UpperUtf8(part)) {
        pattern += std::string_view("%_![").find(ch) == std::string_view::npos ? "" : "!";
        pattern += ch;
    }
    return pattern + "%";
}

/// What holds for every row whose column is, or holds, the text, case not counting, and perhaps for more; empty where
/// the engine cannot be asked.
std::string TextCondition(const CAConnect& conn, const Field& field, const std::string& text, bool isPart)
{
    const std::string column(field.column);
    if (text.empty()) {
        return isPart ? "" : fmt::format("({0} = '' OR {0} IS NULL)", column);
    }
    if (dbaccess::EngineKindOf(conn) == dbaccess::EngineKind::access) {
        return "";
    }
    const std::string capitals = platform::UpperUtf8(text);
    if (isPart) {
        return fmt::format("upper({}) LIKE {} ESCAPE '!'", column, Literal(conn, LikePattern(text)));
    }
    // Elsewhere, the index is one of the column as it is, and the engine takes no case for a difference.
    return dbaccess::EngineKindOf(conn) == dbaccess::EngineKind::comparesInCapitals || field.name != "login"
               ? fmt::format("upper({}) = {}", column, Literal(conn, capitals))
               : fmt::format("({0} = {1} OR {0} = {2})", column, Literal(conn, text), Literal(conn, capitals));
}

// ---- Rows -----------------------------------------------------------------------------------------------------------

/// The fields that a list reads: those that are wanted, then those that it only looks at.
class ReadFields {
public:
    explicit ReadFields(std::vector<const Field*> wanted) : m_fields(std::move(wanted)) {}

    void Add(const Field* field)
    {
        if (std::ranges::find(m_fields, field) == m_fields.end()) {
            m_fields.push_back(field);
        }
    }
    [[nodiscard]] std::size_t IndexOf(const Field* field) const
    {
        return static_cast<std::size_t>(std::ranges::find(m_fields, field) - m_fields.begin());
    }
    [[nodiscard]] std::string Columns() const
    {
        std::string columns = "Col_ID, Col_LoginName";
        for (const Field* field : m_fields) {
            columns += fmt::format(", {}", field->column);
        }
        return columns;
    }
    [[nodiscard]] UserRow Read(CARecordset& row) const
    {
        UserRow user;
        ReadColumns(row, user.id, user.login);
        user.values.reserve(m_fields.size());
        for (std::size_t i = 0; i < m_fields.size(); ++i) {
            user.values.push_back(OptionalTextIn(row, static_cast<long>(i) + 3));
        }
        return user;
    }

private:
    std::vector<const Field*> m_fields;
};

/// Gives the rows that the selection means to `use` until it gives false, in the order that is given or in none.
void EachSelected(CAConnect& conn, const UserSelection& selection, const ReadFields& fields, const std::string& order,
                  const std::function<bool(UserRow)>& use)
{
    const std::string where = selection.Condition().empty() ? "" : " WHERE " + selection.Condition();
    EachRow(conn, fmt::format("SELECT {} FROM qv_User{}{}", fields.Columns(), where, order), [&](CARecordset& row) {
        UserRow user = fields.Read(row);
        const bool isSelected =
            selection.Fits([&](const Field& field) -> const Stored& { return user.values[fields.IndexOf(&field)]; });
        return !isSelected || use(std::move(user));
    });
}

/// A text that sorts as the value of a field does.
std::string SortKeyOf(const Field& field, const Stored& value)
{
    if (field.IsText() || field.IsDate()) {
        return platform::UpperUtf8(value.value_or(""));
    }
    constexpr std::int64_t kAboveAllNegative = std::int64_t{1} << 32;
    std::int64_t number = 0;
    const std::string text = value.value_or("");
    std::from_chars(text.data(), text.data() + text.size(), number);
    return value ? fmt::format("{:012}", number + kAboveAllNegative) : "";
}

} // namespace

// ---- What is given --------------------------------------------------------------------------------------------------

bool SelectionInput::IsEmpty() const
{
    return !match && !onlyLocked && !onlyActive && !in && !deep && !linkedRole && !title && !noGroup && !onlySuper &&
           where.empty();
}

void SelectionInput::Check() const
{
    if (deep && !in) {
        throw Error(ErrorCode::invalid, "--deep says more of --in; name a group with --in GROUP");
    }
    if (noGroup && in) {
        throw Error(ErrorCode::invalid, "nobody is in no group and in one; take one of --in and --no-group away");
    }
    for (const std::string& condition : where) {
        const Where parsed = ParseWhere(condition);
        if (!parsed.field->IsText()) {
            (void)ParseOther(*parsed.field, parsed.text);
        }
    }
}

const Field& RequireField(std::string_view name)
{
    const Field* field = SameName(name, kId.name) ? &kId : FindField(name);
    if (field == nullptr || field->use < Field::Use::shown) {
        throw Error(ErrorCode::invalid,
                    FillPattern("there is no field {}; there are {}", Quoted(name), fmt::join(FieldNames(), ", ")));
    }
    return *field;
}

// ---- The selection --------------------------------------------------------------------------------------------------

UserSelection::UserSelection(CAConnect& conn, const SelectionInput& input)
{
    input.Check();
    if (input.match && !input.match->empty()) {
        std::vector<const Field*> fields;
        std::ranges::transform(kMatchedFields, std::back_inserter(fields), FindField);
        AddText(conn, fields, *input.match, true);
    }
    if (input.onlyLocked || input.onlyActive) {
        Add(OtherCondition(conn, *FindField("locked"), input.onlyLocked ? "1" : "0"));
    }
    if (input.onlySuper) {
        Add(OtherCondition(conn, *FindField("super"), "1"));
    }
    AddMembership(conn, input);
    if (input.linkedRole) {
        AddRole(conn, *input.linkedRole);
    }
    if (input.title) {
        AddTitle(conn, *input.title);
    }
    for (const std::string& where : input.where) {
        AddWhere(conn, where);
    }
}

bool UserSelection::Fits(const std::function<const Stored&(const Field&)>& valueOf) const
{
    return std::ranges::all_of(m_texts, [&](const TextCondition& condition) {
        return std::ranges::any_of(condition.fields, [&](const Field* field) {
            const std::string key = NameKey(valueOf(*field).value_or(""));
            return condition.isPart ? key.find(condition.key) != std::string::npos : key == condition.key;
        });
    });
}

void UserSelection::Add(const std::string& condition)
{
    m_condition += (m_condition.empty() ? "" : " AND ") + condition;
}

void UserSelection::AddText(const CAConnect& conn, const std::vector<const Field*>& fields, const std::string& text,
                            bool isPart)
{
    m_texts.push_back({fields, NameKey(text), isPart});
    std::vector<std::string> conditions;
    for (const Field* field : fields) {
        m_compared.push_back(field);
        if (std::string condition = management::TextCondition(conn, *field, text, isPart); !condition.empty()) {
            conditions.push_back(std::move(condition));
        }
    }
    if (!conditions.empty()) {
        Add(fmt::format("({})", fmt::join(conditions, " OR ")));
    }
}

void UserSelection::AddMembership(CAConnect& conn, const SelectionInput& input)
{
    if (input.noGroup) {
        Add(fmt::format("NOT EXISTS (SELECT 1 FROM qv_Relation WHERE Col_DQvItemID = qv_User.Col_ID AND "
                        "Col_DQvItemType = {} AND Col_QvItemType IN ({}, {}) AND Col_RelType = {})",
                        kItemTypeUser, kItemTypeGroup, kItemTypeView, kMembership));
    }
    if (!input.in) {
        return;
    }
    const Organisation organisation(conn);
    const ItemKey holder = organisation.FindHolder(*input.in);
    std::string holders = fmt::format("Col_QvItemType = {} AND Col_QvItemID = {}", holder.type, holder.id);
    if (const std::vector<ItemKey> below = input.deep ? organisation.Below(holder) : std::vector<ItemKey>();
        !below.empty()) {
        std::vector<int> groups;
        std::ranges::transform(below, std::back_inserter(groups), &ItemKey::id);
        holders = fmt::format("(({}) OR (Col_QvItemType = {} AND Col_QvItemID IN ({})))", holders, kItemTypeGroup,
                              fmt::join(groups, ","));
    }
    Add(fmt::format("Col_ID IN (SELECT Col_DQvItemID FROM qv_Relation WHERE {} AND Col_DQvItemType = {} AND "
                    "Col_RelType = {})",
                    holders, kItemTypeUser, kMembership));
}

void UserSelection::AddRole(CAConnect& conn, const std::string& role)
{
    Roles roles(conn);
    Add(fmt::format("Col_ID IN (SELECT Col_DQvItemID FROM qv_Relation WHERE Col_QvItemType = {} AND Col_QvItemID = {} "
                    "AND Col_DQvItemType = {})",
                    kItemTypeRole, FindRole(roles, role, {}).id, kItemTypeUser));
}

void UserSelection::AddTitle(CAConnect& conn, const std::string& title)
{
    const bool knowsCapitals = dbaccess::EngineKindOf(conn) != dbaccess::EngineKind::access;
    const std::string held =
        fmt::format("Col_QvItemType = {} AND Col_DQvItemType = {}{}", kItemTypeGroup, kItemTypeUser,
                    knowsCapitals ? " AND upper(Col_JobTitle) = " + Literal(conn, platform::UpperUtf8(title)) : "");
    std::vector<int> holders;
    bool isExact = true;
    EachRow(conn, "SELECT Col_DQvItemID, Col_JobTitle FROM qv_JobTitle WHERE " + held, [&](CARecordset& row) {
        if (SameName(TextIn(row, 2), title)) {
            holders.push_back(NumberIn(row, 1));
        } else {
            isExact = false;
        }
    });
    if (holders.empty()) {
        Add("1 = 0");
    } else {
        // Where the engine takes other titles for equal, only a list says who is meant.
        Add(isExact ? fmt::format("Col_ID IN (SELECT Col_DQvItemID FROM qv_JobTitle WHERE {})", held)
                    : fmt::format("Col_ID IN ({})", fmt::join(holders, ",")));
    }
}

void UserSelection::AddWhere(const CAConnect& conn, const std::string& where)
{
    const Where parsed = ParseWhere(where);
    if (parsed.field->IsText()) {
        AddText(conn, {parsed.field}, parsed.text, parsed.isPart);
    } else {
        Add(OtherCondition(conn, *parsed.field, ParseOther(*parsed.field, parsed.text)));
    }
}

// ---- Lists ----------------------------------------------------------------------------------------------------------

void ListUsers(CAConnect& conn, const UserSelection& selection, const UserPage& page,
               const std::function<bool(const UserRow&)>& take)
{
    const Field* sortedBy = page.sortedBy == nullptr ? FindField("login") : page.sortedBy;
    ReadFields fields(page.fields);
    std::ranges::for_each(selection.ComparedFields(), [&fields](const Field* field) { fields.Add(field); });
    const std::string order = OrderBy(conn, *sortedBy, page.isDescending);
    if (order.empty()) {
        fields.Add(sortedBy);
    }
    std::size_t passed = 0;
    const auto takeFromOffset = [&](const UserRow& user) { return ++passed <= page.offset || take(user); };
    const std::size_t most = page.limit > std::numeric_limits<std::size_t>::max() - page.offset
                                 ? std::numeric_limits<std::size_t>::max()
                                 : page.offset + page.limit;
    LoginOrder<UserRow> users(!order.empty(), most, takeFromOffset);
    if (sortedBy != FindField("login") || page.isDescending) {
        users.SetSortKey([&, index = fields.IndexOf(sortedBy)](
                             const UserRow& user) { return SortKeyOf(*sortedBy, user.values[index]); },
                         page.isDescending);
    }
    EachSelected(conn, selection, fields, order, [&](UserRow user) { return users.Add(std::move(user)); });
    users.Finish();
}

std::vector<UserKey> SelectedUsers(CAConnect& conn, const UserSelection& selection)
{
    std::vector<UserKey> users;
    ListUsers(conn, selection, {}, [&users](const UserRow& user) {
        users.push_back({user.id, user.login});
        return true;
    });
    return users;
}

std::int64_t CountUsers(CAConnect& conn, const UserSelection& selection)
{
    if (selection.ComparedFields().empty()) {
        const std::string where = selection.Condition().empty() ? "" : " WHERE " + selection.Condition();
        return Number(conn, "SELECT COUNT(*) FROM qv_User" + where);
    }
    std::int64_t count = 0;
    EachSelected(conn, selection, ReadFields(selection.ComparedFields()), "",
                 [&count](const UserRow& /*user*/) { return ++count > 0; });
    return count;
}

} // namespace management
