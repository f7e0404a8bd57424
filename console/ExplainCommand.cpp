#include "console/ExplainCommand.h"

#include "console/JsonWriter.h"
#include "console/Opened.h"
#include "console/Render.h"
#include "console/UserCommands.h"
#include "console/Words.h"
#include "management/DatabaseError.h"
#include "management/Items.h"
#include "management/Text.h"
#include "management/rights/Explain.h"
#include "management/rights/PermissionMask.h"
#include "management/roles/Roles.h"
#include "management/users/Users.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <bit>

namespace console::right {

namespace {

using namespace words;
using Kind = Question::Kind;
constexpr Field kGenre{"GENRE", "", {}, Field::Use::given, "genre of the function, as it is"};
constexpr Field kFunction{"FUNCTION", "", {}, Field::Use::given, "name of the function, as it is"};
constexpr Field kBit{"bit", "", {}, Field::Use::given, "is this bit among the rights: 1, 2, 4, 8, also as 0x10"};
constexpr Field kMask{"mask", "", {}, Field::Use::given, "is one of these bits among the rights, such as 6 or 0x6"};
constexpr Field kLimit{"limit", "", {}, Field::Use::given, "how much may the user; -1 is unlimited"};
constexpr Field kGuest{"guest", "", {}, Field::Use::given, "has the first role the bit for guests, 8"};

/// What was asked, as it was and of whom.
struct Asked {
    UserKey user;
    std::string genre;
    std::string function;
    Question question;
};

// ---- The question ---------------------------------------------------------------------------------------------------

void DeclareBits(CLI::App& app, Arguments& arguments, const Field& field)
{
    const auto take = [&arguments, &field](const std::string& text) { arguments.fields[&field] = text; };
    app.add_option_function<std::string>(OptionOf(field), take, std::string(field.help))->type_name("N");
}

Question BitGiven(const std::string& text)
{
    const std::uint32_t bit = BitsFrom(text);
    if (!std::has_single_bit(bit)) {
        throw Error(ErrorCode::invalid,
                    fmt::format("--bit {} is not the value of one bit, such as 1, 2, 4 or 8; --mask "
                                "takes several",
                                Quoted(text)));
    }
    return {Kind::bit, bit};
}

Question QuestionGiven(const Arguments& arguments)
{
    constexpr std::array<const Field*, 4> kQuestions = {&kBit, &kMask, &kLimit, &kGuest};
    const auto isGiven = [&arguments](const Field* field) { return Given(arguments, *field).has_value(); };
    if (std::ranges::count_if(kQuestions, isGiven) > 1) {
        throw Error(ErrorCode::invalid,
                    "--bit, --mask, --limit and --guest are questions of their own; ask one at a time");
    }
    if (const std::optional<std::string> bit = Given(arguments, kBit)) {
        return BitGiven(*bit);
    }
    if (const std::optional<std::string> mask = Given(arguments, kMask)) {
        return {Kind::mask, BitsFrom(*mask)};
    }
    return {isGiven(&kLimit) ? Kind::limit : isGiven(&kGuest) ? Kind::guest : Kind::all};
}

std::string_view NameOf(Kind kind)
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
std::string VerdictText(const Question& question, std::int64_t verdict)
{
    const std::string_view has = verdict != 0 ? "has" : "does not have";
    switch (question.kind) {
    case Kind::all:
        return fmt::format("has the bits {0:#x} ({0})", verdict);
    case Kind::bit:
        return fmt::format("{} bit {}", has, question.bits);
    case Kind::mask:
        return fmt::format("{} a bit of {:#x}", has, question.bits);
    case Kind::limit:
        return verdict == kUnlimited ? "has no limit" : fmt::format("has the limit {}", verdict);
    default:
        return fmt::format("{} the bit for guests", has);
    }
}

/// "Editors (role 2)".
std::string Decider(const Explanation& explanation)
{
    const ConsideredRow& row = explanation.rows[*explanation.decidedBy];
    return row.role.empty() ? fmt::format("role {}", row.roleId) : Named(RoleKey{row.roleId, row.role});
}

std::string WhyText(const Explanation& explanation)
{
    switch (explanation.reason) {
    case Reason::rolesUnread:
        return "the roles could not be read";
    case Reason::noRow:
        return "no role has a row for it";
    case Reason::noBit:
        return "no row has it";
    case Reason::bit:
        return fmt::format("the first row that has it is that of {}", Decider(explanation));
    case Reason::together:
        return "those of all rows together";
    case Reason::firstRow:
        return fmt::format("only the first row counts, in the engine's order, and that is of {}", Decider(explanation));
    case Reason::unlimitedRow:
        return fmt::format("{} grants unlimited", Decider(explanation));
    default:
        return explanation.decidedBy ? fmt::format("the largest of these rows is that of {}", Decider(explanation))
                                     : "no row holds a number";
    }
}

std::string Sentence(const Asked& asked, const Explanation& explanation)
{
    return fmt::format("{} {} in function {} of {}: {}\n", Named(asked.user),
                       VerdictText(asked.question, explanation.verdict), Quoted(asked.function), Quoted(asked.genre),
                       WhyText(explanation));
}

/// Whether a row grants unlimited and yet the verdict is a number.
bool HasSpoiltUnlimited(const Explanation& explanation)
{
    const auto isUnlimited = [](const ConsideredRow& row) { return row.power == kUnlimited; };
    return explanation.reason == Reason::largestRow && explanation.verdict != kUnlimited &&
           std::ranges::any_of(explanation.rows, isUnlimited);
}

std::string IgnoredText(NameCache& namer, const std::vector<IgnoredRow>& rows)
{
    std::string list;
    for (const IgnoredRow& row : rows) {
        const std::string power = row.power ? fmt::format("power {}", *row.power) : "no power";
        list += fmt::format("{}{} with {}", list.empty() ? "" : ", ", Named(namer.Find(row.holder)), power);
    }
    return list;
}

std::string Notes(const Explanation& explanation, NameCache& namer)
{
    std::string notes;
    if (HasSpoiltUnlimited(explanation)) {
        notes += "note: beside a power below -1, a power of -1 does not mean unlimited\n";
    }
    if (explanation.lacksDefault) {
        notes += fmt::format("note: there is no role {}; rows of role 0 count in its place\n", kDefaultRole);
    }
    if (!explanation.ignored.empty()) {
        notes += fmt::format("note: rights of the user himself, of groups and of other applications' roles do not "
                             "count, though there are some: {}\n",
                             IgnoredText(namer, explanation.ignored));
    }
    return notes;
}

Table AsTable(const Explanation& explanation, Kind kind)
{
    const bool hasUnlimited = kind == Kind::limit && !HasSpoiltUnlimited(explanation);
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

/// The sentences stand with the rows where people read them, and beside them where programs read the rows.
void Write(const Context& context, const Asked& asked, const Explanation& explanation, NameCache& namer)
{
    const Format format = context.arguments.format;
    std::ostream& sentences = format == Format::table ? context.terminal.out : context.terminal.err;
    sentences << Sentence(asked, explanation);
    if (format != Format::table || !explanation.rows.empty()) {
        Render(format, AsTable(explanation, asked.question.kind), context.terminal.out);
    }
    sentences << Notes(explanation, namer);
}

// ---- For programs ---------------------------------------------------------------------------------------------------

Value OrNull(const std::optional<int>& number) { return number ? Value(std::int64_t{*number}) : Value(); }

Value VerdictOf(const Asked& asked, const Explanation& explanation)
{
    const bool isNumber = asked.question.kind == Kind::all || asked.question.kind == Kind::limit;
    return isNumber ? Value(std::int64_t{explanation.verdict}) : Value(explanation.verdict != 0);
}

void WriteRows(const Explanation& explanation, JsonWriter& json)
{
    json.BeginArray();
    for (const ConsideredRow& row : explanation.rows) {
        json.BeginObject();
        json.WriteMember("role_id", std::int64_t{row.roleId});
        json.WriteMember("role", row.role);
        json.WriteMember("linked", row.isLinked);
        json.WriteMember("default", row.isDefault);
        json.WriteMember("power", OrNull(row.power));
        json.WriteMember("decides", row.decides);
        json.End();
    }
    json.End();
}

void WriteIgnored(const Explanation& explanation, NameCache& namer, JsonWriter& json)
{
    json.BeginArray();
    for (const IgnoredRow& row : explanation.ignored) {
        json.BeginObject();
        json.WriteMember("type", std::int64_t{row.holder.type});
        json.WriteMember("id", std::int64_t{row.holder.id});
        json.WriteMember("name", namer.NameOf(row.holder));
        json.WriteMember("power", OrNull(row.power));
        json.End();
    }
    json.End();
}

void WriteJson(const Context& context, const Asked& asked, const Explanation& explanation, NameCache& namer)
{
    const bool hasBits = asked.question.kind == Kind::bit || asked.question.kind == Kind::mask;
    const auto decider =
        explanation.decidedBy ? std::optional(explanation.rows[*explanation.decidedBy].roleId) : std::nullopt;
    JsonWriter json(context.terminal.out, JsonWriter::Layout::indented);
    json.BeginObject();
    json.WriteMember("user", asked.user.login);
    json.WriteMember("user_id", std::int64_t{asked.user.id});
    json.WriteMember("genre", asked.genre);
    json.WriteMember("function", asked.function);
    json.WriteMember("question", std::string(NameOf(asked.question.kind)));
    json.WriteMember("bits", hasBits ? Value(std::int64_t{asked.question.bits}) : Value());
    json.WriteMember("ran", explanation.ran);
    json.WriteMember("verdict", VerdictOf(asked, explanation));
    json.WriteMember("decided_by", OrNull(decider));
    json.WriteMember("case", std::string(NameOf(explanation.reason)));
    json.WriteName("rows");
    WriteRows(explanation, json);
    json.WriteName("ignored");
    WriteIgnored(explanation, namer, json);
    json.End();
    context.terminal.out << '\n';
}

} // namespace

// ---- The command ----------------------------------------------------------------------------------------------------

void DeclareExplain(CLI::App& app, Arguments& arguments)
{
    user::DeclareOne(app, arguments);
    DeclareArgument(app, arguments, kGenre);
    DeclareArgument(app, arguments, kFunction);
    DeclareBits(app, arguments, kBit);
    DeclareBits(app, arguments, kMask);
    DeclareFlag(app, arguments, kLimit);
    DeclareFlag(app, arguments, kGuest);
}

Exit Explain(const Context& context)
{
    const Arguments& arguments = context.arguments;
    const Question question = QuestionGiven(arguments);
    Opened opened(arguments);
    CAConnect& conn = opened.Directory().Connection();
    const Asked asked{FindUser(opened.Directory(), arguments.user), Given(arguments, kGenre).value_or(""),
                      Given(arguments, kFunction).value_or(""), question};
    const Explanation explanation = console::Explain(conn, asked.user.id, asked.genre, asked.function, question);
    NameCache namer(conn);
    if (arguments.format == Format::json) {
        WriteJson(context, asked, explanation, namer);
    } else {
        Write(context, asked, explanation, namer);
    }
    if (explanation.reason == Reason::rolesUnread) {
        throw DatabaseError(explanation.trouble, !conn.IsOpen());
    }
    return Exit::done;
}

} // namespace console::right
