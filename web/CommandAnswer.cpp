#include "web/CommandAnswer.h"

#include "dbaccess/CAConnect.h"
#include "management/Changes.h"
#include "management/CommandData.h"
#include "management/Query.h"
#include "management/Text.h"
#include "management/audit/AuditedRow.h"
#include "web/Tokens.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <sstream>

namespace web {

using namespace management;

namespace {

constexpr std::size_t kMostPlanLines = 200;

Value WithWord(const Value& value)
{
    const auto* choice = std::get_if<Choice>(&value);
    return choice == nullptr ? value : Value(TextValue(std::string(choice->word)));
}

void WriteRows(JsonWriter& json, std::string_view name, const Table& table)
{
    json.WriteName(name);
    json.BeginArray();
    for (const std::vector<Value>& row : table.rows) {
        json.BeginObject();
        for (std::size_t i = 0; i < table.columns.size(); ++i) {
            json.WriteMember(table.columns[i], WithWord(row[i]));
        }
        json.End();
    }
    json.End();
}

std::string DigestOf(const Plan& plan, const WebArguments& arguments)
{
    std::string text = fmt::format("{}:{}{}:{}{}", arguments.Text().size(), arguments.Text(),
                                   plan.question.English().size(), plan.question.English(), plan.removed);
    for (const std::string& line : plan.lines) {
        text += fmt::format("{}:{}", line.size(), line);
    }
    return Digest(text);
}

/// Takes what a command gives, for one answer.
class WebFrontEnd final : public FrontEnd {
public:
    WebFrontEnd(const Command& command, const WebArguments& arguments, const std::string& confirmed,
                const Caller& caller)
        : m_arguments(arguments), m_confirmed(confirmed), m_caller(caller)
    {
        for (const Column& column : command.columns) {
            table.columns.emplace_back(column.name);
        }
    }

    void TakeColumns(std::vector<std::string> names) override { table.columns = std::move(names); }
    bool TakeRow(const std::vector<Value>& row) override
    {
        isCut = table.rows.size() == kMostRows;
        if (!isCut) {
            // A flag may ask for more columns at the end, or for less.
            table.rows.push_back(row);
            table.rows.back().resize(table.columns.size());
        }
        return !isCut;
    }
    void TakeOutcome(const Outcome& outcome) override { outcomes.push_back(outcome); }
    void Confirm(const Plan& shown) override
    {
        plan = shown;
        digest = DigestOf(shown, m_arguments);
        if (shown.question.IsEmpty()) {
            return;
        }
        if (m_confirmed.empty() || !IsSame(m_confirmed, digest)) {
            throw Error(ErrorCode::confirmationRequired,
                        m_confirmed.empty()
                            ? shown.question.English()
                            : fmt::format("what is to be done has changed; {}", shown.nothingDone.English()));
        }
        needsPassword = shown.removed > kMostWithoutPassword && !m_caller.hasConfirmed;
        if (needsPassword) {
            throw Error(ErrorCode::confirmationRequired,
                        fmt::format("this removes {} things; give your password first", shown.removed));
        }
    }
    [[nodiscard]] bool CanAsk() const override { return false; }
    void Explain(const Sentence& sentence) override { notes.push_back(sentence); }
    [[nodiscard]] bool IsGiven(std::string_view secret) const override
    {
        return m_arguments.FindSecret(secret) != nullptr;
    }
    Secret ObtainSecret(const SecretQuestion& question) override
    {
        const Secret* given = m_arguments.FindSecret(question.name);
        if (given == nullptr) {
            throw Error(ErrorCode::invalid, fmt::format("{} is required", question.name));
        }
        return Secret(given->View());
    }
    void ShowSecret(const Secret& secret) override { madeUp = secret.View(); }
    [[nodiscard]] bool CanShowSecrets() const override { return true; }
    void StoreSecrets(const std::string& /*file*/, const std::vector<UserSecret>& secrets) override
    {
        // No parameter that names a file is offered.
        for (const UserSecret& secret : secrets) {
            allMadeUp.emplace_back(secret.login, secret.secret.View());
        }
    }
    std::string ReadText(const std::string& /*name*/) override
    {
        throw Error(ErrorCode::invalid, "files cannot be named here; give the text itself");
    }
    void ShowProgress(long /*done*/, std::optional<long> /*total*/) override {}
    [[nodiscard]] bool IsStopRequested() const noexcept override { return false; }

    Table table;
    bool isCut = false;
    std::vector<Outcome> outcomes;
    std::vector<std::string> notes;
    std::optional<Plan> plan;
    std::string digest;
    std::string madeUp;
    std::vector<std::pair<std::string, std::string>> allMadeUp; ///< for several users: login names and passwords
    bool needsPassword = false;

private:
    const WebArguments& m_arguments;
    const std::string& m_confirmed;
    const Caller& m_caller;
};

void WriteParts(JsonWriter& json, const Result& result)
{
    if (!result.record.empty()) {
        json.WriteName("record");
        json.BeginObject();
        WriteRecord(json, result.record);
        json.End();
    }
    if (!result.parts.empty()) {
        json.WriteName("parts");
        json.BeginObject();
        for (const Part& part : result.parts) {
            WriteRows(json, part.name, part.rows);
        }
        json.End();
    }
}

/// By which a caller says what it saw.
std::string VersionOf(const Result& result)
{
    std::ostringstream out;
    JsonWriter json(out, JsonWriter::Layout::line);
    json.BeginObject();
    WriteParts(json, result);
    json.End();
    return Digest(std::move(out).str());
}

void WriteFinding(JsonWriter& json, const Finding& finding)
{
    json.WriteName("finding");
    json.BeginObject();
    json.WriteMember("sentence", TextValue(finding.sentence.English()));
    WriteTexts(json, "notes", {finding.notes.begin(), finding.notes.end()});
    WriteRows(json, "rows", finding.rows);
    json.End();
}

/// What the answer of a writing command has beside what all answers have.
struct ChangeAnswer {
    bool isChanged = false;
    int entry = 0; ///< of the record; 0: none
};

/// Passwords that were made up: of one user, or of several with their login names.
void WriteMadeUp(JsonWriter& json, const WebFrontEnd& front)
{
    if (!front.madeUp.empty()) {
        json.WriteMember("password", TextValue(front.madeUp));
    }
    if (front.allMadeUp.empty()) {
        return;
    }
    json.WriteName("passwords");
    json.BeginArray();
    for (const auto& [login, password] : front.allMadeUp) {
        json.BeginObject();
        json.WriteMember("login", TextValue(login));
        json.WriteMember("password", TextValue(password));
        json.End();
    }
    json.End();
}

std::string BodyOf(const CommandRequest& request, const WebFrontEnd& front, const Result& result,
                   const std::optional<ChangeAnswer>& written)
{
    std::ostringstream out;
    JsonWriter json(out, JsonWriter::Layout::line);
    json.BeginObject();
    json.WriteMember("v", std::int64_t{1});
    if (written) {
        json.WriteMember("changed", written->isChanged);
        json.WriteMember("dry_run", request.dryRun);
        json.WriteMember("entry", written->entry == 0 ? Value() : Value(std::int64_t{written->entry}));
        WriteOutcomes(json, front.outcomes);
    }
    if (result.value) {
        json.WriteMember("value", WithWord(*result.value));
    }
    WriteParts(json, result);
    if (!result.record.empty()) {
        json.WriteMember("version", TextValue(VersionOf(result)));
    } else if (!front.table.columns.empty() && (!written || !front.table.rows.empty())) {
        WriteTexts(json, "columns", front.table.columns);
        WriteRows(json, "rows", front.table);
        json.WriteMember("cut", front.isCut);
    }
    if (result.verdict) {
        json.WriteMember("verdict", *result.verdict);
    }
    if (result.finding) {
        WriteFinding(json, *result.finding);
    }
    if (front.plan) {
        WritePlan(json, *front.plan, front.digest);
    }
    if (!front.notes.empty()) {
        WriteTexts(json, "notes", front.notes);
    }
    if (result.error) {
        json.WriteMember("error", TextValue(std::string(result.error->what())));
    }
    WriteMadeUp(json, front);
    json.End();
    return std::move(out).str();
}

Call CallFor(CAConnect& conn, FrontEnd& front, CallOptions options)
{
    return {[&conn]() -> CAConnect& { return conn; }, front, std::move(options)};
}

/// What stands in the way of a change that is made only if something is as it was.
std::optional<Problem> FindChange(CAConnect& conn, const Condition& condition, const Caller& caller)
{
    WebFrontEnd front(*condition.command, condition.arguments, {}, caller);
    Call call = CallFor(conn, front, {});
    const Result present = condition.command->run(call, condition.arguments);
    const std::string version = VersionOf(present);
    if (IsSame(version, condition.version)) {
        return std::nullopt;
    }
    return Problem{412,
                   "changed_meanwhile",
                   "somebody else has changed this in the meantime; nothing was saved",
                   {},
                   {},
                   {},
                   present.record,
                   version};
}

/// What the entries of the record between two ids have to say.
Written ReadWritten(CAConnect& conn, int before, int after)
{
    constexpr int most = 200;
    Written written{.isAnything = after != before, .before = before, .entry = after};
    int rows = 0;
    const auto is = [](const std::string& table, std::string_view name) { return audit::SameIdentifier(table, name); };
    EachRow(conn,
            fmt::format(
                "SELECT Col_Table, Col_Key, Col_Count FROM qv_AuditRow WHERE Col_EntryID > {} AND Col_EntryID <= {}",
                before, after),
            [&](CARecordset& row) {
                const std::string table = TextIn(row, 1);
                const bool isUser = is(table, "qv_User");
                const bool isColumns = isUser && NumberIn(row, 3) == 0;
                if (isColumns && ++rows <= most) {
                    written.users.push_back(NumberIn(row, 2));
                } else {
                    written.isMore = written.isMore || isUser || is(table, "qv_Group") || is(table, "qv_View") ||
                                     is(table, "qv_Relation");
                }
                return !written.isMore;
            });
    return written;
}

/// What stands in the way of a caller who may not change super users. @param outcomes  of what was just done, in a
/// transaction that is rolled back then.
std::optional<Problem> FindSuperUser(CAConnect& conn, const std::vector<Outcome>& outcomes, const Caller& caller)
{
    std::vector<int> users;
    std::ranges::transform(outcomes, std::back_inserter(users), &Outcome::id);
    std::string login;
    if (caller.level != Level::full) {
        ForEachPart(users, [&](std::span<const int> some) {
            EachRow(conn,
                    fmt::format("SELECT Col_LoginName FROM qv_User WHERE Col_IsSuper <> 0 AND Col_ID IN ({})",
                                fmt::join(some, ",")),
                    [&login](CARecordset& row) { login = TextIn(row, 1); });
        });
    }
    if (login.empty()) {
        return std::nullopt;
    }
    return Problem{403, kNotAllowed,
                   fmt::format("{} is a super user, whom {} may not change; nothing was changed", Visible(login),
                               WithArticle(caller.level))};
}

/// Whether entries of the record between two ids say who may use this console, or who is a super user.
bool ChangesPrivileges(CAConnect& conn, int before, int after)
{
    const std::string super = R"('%"Col_IsSuper":"1"%')";
    return Number(conn,
                  fmt::format("SELECT COUNT(*) FROM qv_AuditRow WHERE Col_EntryID > {} AND Col_EntryID <= {} AND "
                              "(Col_Table = 'qv_ConsoleAccount' OR (Col_Table = 'qv_User' AND (Col_Before LIKE {} "
                              "OR Col_After LIKE {})))",
                              before, after, super, super)) != 0;
}

Response RunWriting(CAConnect& conn, const CommandRequest& request, const Caller& caller, WebFrontEnd& front,
                    Written& written)
{
    // One transaction holds the look at what was seen, the change, and its entry in the record.
    Transaction transaction(conn);
    if (request.condition) {
        if (const std::optional<Problem> problem = FindChange(conn, *request.condition, caller)) {
            return ResponseOf(*problem);
        }
    }
    const int before = LatestEntry(conn);
    CallOptions options;
    options.dryRun = request.dryRun;
    options.reason = request.reason;
    options.who = caller.login;
    options.frontEnd = "web";
    options.command = request.arguments->Text();
    options.joinsTransaction = true;
    Call call = CallFor(conn, front, std::move(options));
    const Result result = request.command.run(call, *request.arguments);
    const int after = LatestEntry(conn);
    if (const std::optional<Problem> problem = FindSuperUser(conn, front.outcomes, caller)) {
        return ResponseOf(*problem);
    }
    if (after != before && !caller.hasConfirmed && ChangesPrivileges(conn, before, after)) {
        return ResponseOf(PasswordRequired());
    }
    if (request.dryRun) {
        transaction.Rollback();
    } else {
        Written found = ReadWritten(conn, before, after);
        Changes::NoteCommit();
        transaction.Commit();
        written = std::move(found);
    }
    const ChangeAnswer change{result.isChanged && !result.isRead, after == before ? 0 : after};
    return {200, "application/json", BodyOf(request, front, result, change)};
}

} // namespace

Response RunCommand(CAConnect& conn, const CommandRequest& request, const Caller& caller, Written& written)
{
    written = {};
    WebFrontEnd front(request.command, *request.arguments, request.confirmed, caller);
    try {
        if (request.command.effect != Effect::read) {
            return RunWriting(conn, request, caller, front, written);
        }
        Call call = CallFor(conn, front, {});
        const Result result = request.command.run(call, *request.arguments);
        return {200, "application/json", BodyOf(request, front, result, {})};
    } catch (const Error& e) {
        Problem problem = ProblemOf(e);
        if (e.Code() == ErrorCode::confirmationRequired) {
            problem.plan = front.plan;
            problem.planDigest = front.digest;
            problem.code = front.needsPassword         ? "password_required"
                           : request.confirmed.empty() ? problem.code
                                                       : "plan_changed";
        }
        return ResponseOf(problem);
    }
}

int LatestEntry(CAConnect& conn) { return Number(conn, "SELECT MAX(Col_ID) FROM qv_AuditEntry"); }

void WriteTexts(JsonWriter& json, std::string_view name, const std::vector<std::string>& texts)
{
    json.WriteName(name);
    json.BeginArray();
    for (const std::string& text : texts) {
        json.Write(TextValue(text));
    }
    json.End();
}

void WriteRecord(JsonWriter& json, const Record& record)
{
    for (const auto& [name, value] : record) {
        json.WriteMember(name, WithWord(value));
    }
}

void WritePlan(JsonWriter& json, const Plan& plan, const std::string& digest)
{
    std::vector<std::string> lines(plan.lines.begin(), plan.lines.end());
    lines.resize(std::min(lines.size(), kMostPlanLines));
    json.WriteName("plan");
    json.BeginObject();
    WriteTexts(json, "lines", lines);
    json.WriteMember("further_lines", static_cast<std::int64_t>(plan.lines.size() - lines.size()));
    json.WriteMember("question", TextValue(plan.question.English()));
    json.WriteMember("removed", static_cast<std::int64_t>(plan.removed));
    json.WriteMember("digest", TextValue(digest));
    json.End();
}

} // namespace web
