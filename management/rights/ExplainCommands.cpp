#include "basefun/ItemTypes.h"
#include "dbaccess/CAConnect.h"
#include "management/Command.h"
#include "management/DatabaseError.h"
#include "management/Items.h"
#include "management/Text.h"
#include "management/rights/Explain.h"
#include "management/rights/PermissionMask.h"
#include "management/roles/Roles.h"
#include "management/users/Users.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>

namespace management::rights {

namespace {

using QuestionKind = Question::Kind;

struct ExplainQuery {
    std::string user;
    std::string genre;
    std::string function;
    std::optional<std::string> bit;
    std::optional<std::string> mask;
    bool limit = false;
    bool guest = false;
    std::vector<std::string> ifRoles;

    void Check() const
    {
        if (int{bit.has_value()} + int{mask.has_value()} + int{limit} + int{guest} > 1) {
            throw Error(ErrorCode::invalid,
                        "--bit, --mask, --limit and --guest are questions of their own; ask one at a time");
        }
        (void)Asked();
    }

    /// @throws Error (invalid).
    [[nodiscard]] Question Asked() const
    {
        return bit     ? Question{QuestionKind::bit, BitFrom(*bit)}
               : mask  ? Question{QuestionKind::mask, BitsFrom(*mask)}
               : limit ? Question{QuestionKind::limit}
               : guest ? Question{QuestionKind::guest}
                       : Question{};
    }
};

constexpr Param<ExplainQuery> kExplainParams[] = {
    {"USER", &ExplainQuery::user, Kind::user, "login name, or id:NUMBER, or login:TEXT"},
    {"GENRE", &ExplainQuery::genre, Kind::text, "genre of the function, as it is"},
    {"FUNCTION", &ExplainQuery::function, Kind::text, "name of the function, as it is"},
    {"bit", &ExplainQuery::bit, Kind::number, "is this bit among the rights: 1, 2, 4, 8, also as 0x10"},
    {"mask", &ExplainQuery::mask, Kind::number, "is one of these bits among the rights, such as 6 or 0x6"},
    {"limit", &ExplainQuery::limit, Kind::flag, "how much may the user; -1 is unlimited"},
    {"guest", &ExplainQuery::guest, Kind::flag, "has the first role the bit for guests, 8"},
    {"if_role", &ExplainQuery::ifRoles, Kind::role,
     "answer as if the user were linked to this role too; may be given several times"},
};

constexpr Column kColumns[] = {{"user", Kind::user},
                               {"user_id", Kind::number},
                               {"genre"},
                               {"function"},
                               {"question", Kind::choice},
                               {"bits", Kind::number},
                               {"ran", Kind::flag},
                               {"verdict"},
                               {"decided_by", Kind::role},
                               {"case", Kind::choice},
                               {"rows", Kind::rows},
                               {"ignored", Kind::rows}};

/// What was asked, and of whom.
struct Subject {
    UserKey user;
    std::string genre;
    std::string function;
    Question question;
};

std::string_view NameOf(QuestionKind kind)
{
    constexpr std::array<std::string_view, 5> kNames = {"all", "bit", "mask", "limit", "guest"};
    return kNames[static_cast<std::size_t>(kind)];
}

std::string_view NameOf(Reason reason)
{
    constexpr std::array<std::string_view, 8> kNames = {"roles_unread", "no_row",    "no_bit",        "bit",
                                                        "together",     "first_row", "unlimited_row", "largest_row"};
    return kNames[static_cast<std::size_t>(reason)];
}

// ---- For people -----------------------------------------------------------------------------------------------------

/// "has bit 1", "has no limit".
Sentence VerdictText(const Question& question, std::int64_t verdict)
{
    const bool has = verdict != 0;
    switch (question.kind) {
    case QuestionKind::all:
        return FillPattern("has the bits {} ({})", fmt::format("{:#x}", verdict), verdict);
    case QuestionKind::bit:
        return has ? FillPattern("has bit {}", question.bits) : FillPattern("does not have bit {}", question.bits);
    case QuestionKind::mask:
        return has ? FillPattern("has a bit of {}", fmt::format("{:#x}", question.bits))
                   : FillPattern("does not have a bit of {}", fmt::format("{:#x}", question.bits));
    case QuestionKind::limit:
        return verdict == kUnlimited ? Translatable("has no limit") : FillPattern("has the limit {}", verdict);
    default:
        return has ? Translatable("has the bit for guests") : Translatable("does not have the bit for guests");
    }
}

/// "Editors (role 2)".
Sentence Decider(const Explanation& explanation)
{
    const ConsideredRow& row = explanation.rows[*explanation.decidedBy];
    return row.role.empty() ? FillPattern("role {}", row.roleId) : Named(RoleKey{row.roleId, row.role});
}

Sentence ReasonText(const Explanation& explanation)
{
    switch (explanation.reason) {
    case Reason::rolesUnread:
        return Translatable("the roles could not be read");
    case Reason::noRow:
        return Translatable("no role has a row for it");
    case Reason::noBit:
        return Translatable("no row has it");
    case Reason::bit:
        return FillPattern("the first row that has it is that of {}", Decider(explanation));
    case Reason::together:
        return Translatable("those of all rows together");
    case Reason::firstRow:
        return FillPattern("only the first row counts, in the engine's order, and that is of {}", Decider(explanation));
    case Reason::unlimitedRow:
        return FillPattern("{} grants unlimited", Decider(explanation));
    default:
        return explanation.decidedBy ? FillPattern("the largest of these rows is that of {}", Decider(explanation))
                                     : Translatable("no row holds a number");
    }
}

/// Whether a row grants unlimited and yet the verdict is a number.
bool HasSpoiltUnlimited(const Explanation& explanation)
{
    const auto isUnlimited = [](const ConsideredRow& row) { return row.power == kUnlimited; };
    return explanation.reason == Reason::largestRow && explanation.verdict != kUnlimited &&
           std::ranges::any_of(explanation.rows, isUnlimited);
}

Sentence IgnoredText(NameCache& names, const std::vector<IgnoredRow>& rows)
{
    std::vector<Sentence> list;
    list.reserve(rows.size());
    for (const IgnoredRow& row : rows) {
        const Item holder = names.Find(row.holder);
        list.push_back(row.power ? FillPattern("{} with power {}", Named(holder), *row.power)
                                 : FillPattern("{} with no power", Named(holder)));
    }
    return Joined(list, ", ");
}

std::vector<Sentence> Notes(const Explanation& explanation, NameCache& names)
{
    std::vector<Sentence> notes;
    if (HasSpoiltUnlimited(explanation)) {
        notes.emplace_back(Translatable("note: beside a power below -1, a power of -1 does not mean unlimited"));
    }
    if (explanation.lacksDefault) {
        notes.push_back(FillPattern("note: there is no role {}; rows of role 0 count in its place", kDefaultRole));
    }
    if (!explanation.ignored.empty()) {
        notes.push_back(
            FillPattern("note: rights of the user himself, of groups and of other applications' roles do not count, "
                        "though there are some: {}",
                        IgnoredText(names, explanation.ignored)));
    }
    return notes;
}

Table TableOf(const Explanation& explanation, QuestionKind kind)
{
    const bool hasUnlimited = kind == QuestionKind::limit && !HasSpoiltUnlimited(explanation);
    const auto shown = [hasUnlimited](int power) {
        return hasUnlimited && power == kUnlimited ? Value(Choice{power, "unlimited"}) : Value(std::int64_t{power});
    };
    Table table{{"row", "role_id", "role", "linked", "default", "power", "decides"}, {}};
    for (const ConsideredRow& row : explanation.rows) {
        table.rows.push_back({static_cast<std::int64_t>(table.rows.size() + 1), std::int64_t{row.roleId}, row.role,
                              row.isLinked, row.isDefault, row.power ? shown(*row.power) : Value(), row.decides});
    }
    return table;
}

Finding FindingOf(const Subject& subject, const Explanation& explanation, NameCache& names)
{
    return {FillPattern("{} {} in function {} of {}: {}", Named(subject.user),
                        VerdictText(subject.question, explanation.verdict), Quoted(subject.function),
                        Quoted(subject.genre), ReasonText(explanation)),
            TableOf(explanation, subject.question.kind), Notes(explanation, names)};
}

// ---- For programs ---------------------------------------------------------------------------------------------------

Part RowsOf(const Explanation& explanation)
{
    Part part{"rows", {{"role_id", "role", "linked", "default", "power", "decides"}, {}}};
    for (const ConsideredRow& row : explanation.rows) {
        part.rows.rows.push_back(
            {std::int64_t{row.roleId}, row.role, row.isLinked, row.isDefault, OrAbsent(row.power), row.decides});
    }
    return part;
}

Part IgnoredOf(const Explanation& explanation, NameCache& names)
{
    Part part{"ignored", {{"type", "id", "name", "power"}, {}}};
    for (const IgnoredRow& row : explanation.ignored) {
        part.rows.rows.push_back({std::int64_t{row.holder.type}, std::int64_t{row.holder.id}, names.NameOf(row.holder),
                                  OrAbsent(row.power)});
    }
    return part;
}

Record RecordOf(const Subject& subject, const Explanation& explanation)
{
    const QuestionKind kind = subject.question.kind;
    const bool hasBits = kind == QuestionKind::bit || kind == QuestionKind::mask;
    const bool isNumber = kind == QuestionKind::all || kind == QuestionKind::limit;
    return {{"user", subject.user.login},
            {"user_id", std::int64_t{subject.user.id}},
            {"genre", subject.genre},
            {"function", subject.function},
            {"question", std::string(NameOf(kind))},
            {"bits", hasBits ? Value(std::int64_t{subject.question.bits}) : Value()},
            {"ran", explanation.ran},
            {"verdict", isNumber ? Value(std::int64_t{explanation.verdict}) : Value(explanation.verdict != 0)},
            {"decided_by",
             explanation.decidedBy ? Value(std::int64_t{explanation.rows[*explanation.decidedBy].roleId}) : Value()},
            {"case", std::string(NameOf(explanation.reason))}};
}

// ---- The command ----------------------------------------------------------------------------------------------------

/// What is to be known of an answer about a user who has more roles than he has.
Sentence AssumptionText(const UserKey& user, const std::vector<RoleKey>& roles)
{
    std::vector<Sentence> list;
    std::ranges::transform(roles, std::back_inserter(list), [](const RoleKey& role) { return Named(role); });
    return FillPattern("note: this is as if {} were linked to {}", Named(user), Joined(list, ", "));
}

Result ExplainRight(Call& call, const ExplainQuery& in)
{
    const Question question = in.Asked();
    CAConnect& conn = call.Connection();
    const Subject subject{FindUser(call.Directory(), in.user), in.genre, in.function, question};
    const Explanation explanation = Explain(conn, subject.user.id, in.genre, in.function, question);
    NameCache names(conn);
    Result result = ResultOf(RecordOf(subject, explanation), {RowsOf(explanation), IgnoredOf(explanation, names)});
    result.finding = FindingOf(subject, explanation, names);
    if (explanation.reason == Reason::rolesUnread) {
        const DatabaseError error(explanation.trouble, !conn.IsOpen());
        result.error = Error(error.Code(), error.Why());
    }
    return result;
}

/// Answers in a transaction that is rolled back.
Result ExplainAssuming(Call& call, const ExplainQuery& in)
{
    if (call.Options().joinsTransaction) {
        throw Error(ErrorCode::invalid, "--if-role cannot be asked within one transaction; ask it by itself");
    }
    CAConnect& conn = call.Connection();
    Roles roles(conn);
    const UserKey user = FindUser(call.Directory(), in.user);
    const std::vector<RoleKey> assumed = FindRoles(roles, in.ifRoles, {});
    Transaction transaction(conn);
    for (const RoleKey& role : assumed) {
        roles.Link({kItemTypeRole, role.id}, user.id);
    }
    Result result = ExplainRight(call, in);
    transaction.Rollback();
    result.finding->notes.insert(result.finding->notes.begin(), AssumptionText(user, assumed));
    return result;
}

Result Explain(Call& call, const ExplainQuery& in)
{
    return in.ifRoles.empty() ? RunInSnapshot<&ExplainRight>(call, in) : ExplainAssuming(call, in);
}

constexpr Command kCommands[] = {
    {.path = {"right", "explain"},
     .summary = "why a user has a right, or has not: what is found, and which role decides",
     .examples = {"qvadmin right explain amy mail send --bit 1", "qvadmin right explain amy mail send --mask 0x6",
                  "qvadmin right explain amy mail size --limit",
                  "qvadmin right explain amy mail send --bit 1 --if-role Editors",
                  "qvadmin right explain amy chat join --guest -o json"},
     .columns = kColumns,
     .handler = Read<&Explain, kExplainParams>()},
};

} // namespace

std::span<const Command> ExplainCommands() { return kCommands; }

} // namespace management::rights
