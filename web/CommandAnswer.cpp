#include "web/CommandAnswer.h"

#include "dbaccess/CAConnect.h"
#include "management/CommandData.h"
#include "management/Query.h"
#include "management/Text.h"
#include "management/audit/AuditedRow.h"
#include "web/PasswordRules.h"
#include "web/Tokens.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <span>
#include <sstream>
#include <stdexcept>

namespace web {

using namespace management;

namespace {

constexpr std::size_t kMostPlanLines = 200;
constexpr std::size_t kPart = 200; ///< people in a transaction of a job

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

/// Is thrown to end a run once its plan is known.
struct PlanSeen {};

/// Takes what a command gives, for one answer.
class WebFrontEnd final : public FrontEnd {
public:
    /// @param control  of the job; null: none. What else it is given outlives it too.
    WebFrontEnd(const Command& command, const WebArguments& arguments, std::string confirmed, const Caller& caller,
                JobControl* control = nullptr)
        : m_arguments(&arguments), m_confirmed(std::move(confirmed)), m_caller(caller), m_control(control)
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
    /// Has a plan looked at and no more: as soon as one is agreed to, PlanSeen ends the run.
    void BeginPlan() { m_isPlanning = true; }
    /// Goes on with a part of what was agreed to. @param agreed  the digest of its plan.
    void BeginPart(const WebArguments& arguments, const std::string& agreed)
    {
        m_arguments = &arguments;
        m_confirmed = agreed;
        m_isPlanning = false;
        m_isPart = true;
    }
    /// Has the plan of a part looked at, which is not asked for by itself.
    void BeginPlanOfPart(const WebArguments& arguments)
    {
        BeginPart(arguments, "");
        m_isPlanning = true;
    }
    void Confirm(const Plan& shown) override
    {
        plan = shown;
        digest = DigestOf(shown, *m_arguments);
        if (m_isPart) {
            ConfirmPart(shown);
        } else {
            ConfirmWhole(shown);
        }
        if (m_isPlanning) {
            throw PlanSeen();
        }
    }
    [[nodiscard]] bool CanAsk() const override { return false; }
    void Explain(const Sentence& sentence) override { notes.push_back(sentence); }
    [[nodiscard]] bool IsGiven(std::string_view secret) const override
    {
        return m_arguments->FindSecret(secret) != nullptr;
    }
    Secret ObtainSecret(const SecretQuestion& question) override
    {
        const Secret* given = m_arguments->FindSecret(question.name);
        if (given == nullptr) {
            throw Error(ErrorCode::invalid, FillPattern("{} is required", question.name));
        }
        if (question.isRepeated && question.name == "password") {
            typedPassword = given;
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
    void ShowProgress(long done, std::optional<long> total) override
    {
        if (m_control != nullptr) {
            m_control->ShowProgress(done, total);
        }
    }
    [[nodiscard]] bool IsStopRequested() const noexcept override
    {
        return m_control != nullptr && m_control->IsStopRequested();
    }

    Table table;
    bool isCut = false;
    std::vector<Outcome> outcomes;
    std::vector<Sentence> notes;
    std::optional<Plan> plan;
    std::string digest;
    std::string madeUp;
    std::vector<std::pair<std::string, std::string>> allMadeUp; ///< for several users: login names and passwords
    bool needsPassword = false;
    const Secret* typedPassword = nullptr; ///< a new one that somebody was given

private:
    void ConfirmPart(const Plan& shown) const
    {
        if (!m_isPlanning && !shown.question.IsEmpty() && !IsSame(m_confirmed, digest)) {
            ThrowChanged(shown.nothingDone);
        }
    }
    void ConfirmWhole(const Plan& shown)
    {
        if (shown.question.IsEmpty()) {
            return;
        }
        if (m_confirmed.empty() || !IsSame(m_confirmed, digest)) {
            throw Error(ErrorCode::confirmationRequired,
                        m_confirmed.empty() ? shown.question
                                            : FillPattern("what is to be done has changed; {}", shown.nothingDone));
        }
        needsPassword = shown.removed > kMostWithoutPassword && !m_caller.hasConfirmed;
        if (needsPassword) {
            throw Error(ErrorCode::confirmationRequired,
                        FillPattern("this removes {} things; give your password first", shown.removed));
        }
    }

    const WebArguments* m_arguments;
    std::string m_confirmed;
    const Caller& m_caller;
    JobControl* m_control;
    bool m_isPlanning = false;
    bool m_isPart = false;
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
    const Speaking english(nullptr); // who reads another language has seen the same
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
    json.WriteMember("sentence", SentenceValue(finding.sentence));
    WriteSentences(json, "notes", finding.notes);
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
    } else if (!front.table.columns.empty() && (!written || result.isRead || !front.table.rows.empty())) {
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
        WriteSentences(json, "notes", front.notes);
    }
    if (result.error) {
        json.WriteMember("error", SentenceValue(result.error->Why()));
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
    const Result present = condition.command->handler.run(call, condition.arguments);
    const std::string version = VersionOf(present);
    if (IsSame(version, condition.version)) {
        return std::nullopt;
    }
    return Problem{412,
                   "changed_meanwhile",
                   Translatable("somebody else has changed this in the meantime; nothing was saved"),
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
                   FillPattern("{} is a super user, whom {} may not change; nothing was changed", Visible(login),
                               WithArticle(caller.level))};
}

/// What is wrong with a password that was typed for users. @param outcomes  of what was just done, in a transaction
/// that is rolled back then.
std::optional<Problem> FindWeakness(CAConnect& conn, const std::vector<Outcome>& outcomes, const Secret* password)
{
    if (password == nullptr) {
        return std::nullopt;
    }
    std::vector<int> users;
    std::ranges::transform(outcomes, std::back_inserter(users), &Outcome::id);
    std::vector<PasswordOwner> owners;
    ForEachPart(users, [&](std::span<const int> some) {
        EachRow(conn,
                fmt::format("SELECT Col_LoginName, Col_Name, Col_o_CompanyName, Col_IsSuper FROM qv_User WHERE Col_ID "
                            "IN ({})",
                            fmt::join(some, ",")),
                [&owners](CARecordset& row) {
                    owners.push_back({TextIn(row, 1), TextIn(row, 2), TextIn(row, 3), NumberIn(row, 4) != 0});
                });
    });
    return web::FindWeakness(password->View(), owners);
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

CallOptions OptionsFor(const CommandRequest& request, const Caller& caller)
{
    CallOptions options;
    options.dryRun = request.dryRun;
    options.reason = request.reason;
    options.who = caller.login;
    options.frontEnd = "web";
    options.command = request.arguments->Text();
    return options;
}

/// What stands in the way of a change that was made in the transaction that is open. @param outcomes  of it.
std::optional<Problem> FindRefusal(CAConnect& conn, int before, int after, const std::vector<Outcome>& outcomes,
                                   const Caller& caller, const WebFrontEnd& front)
{
    if (std::optional<Problem> problem = FindSuperUser(conn, outcomes, caller)) {
        return problem;
    }
    if (std::optional<Problem> problem = FindWeakness(conn, outcomes, front.typedPassword)) {
        return problem;
    }
    const bool isRefused = after != before && !caller.hasConfirmed && ChangesPrivileges(conn, before, after);
    return isRefused ? std::optional(PasswordRequired()) : std::nullopt;
}

/// Makes a change last, or undoes it in a dry run. @return what was written.
Written Settle(Transaction& transaction, CAConnect& conn, const CommandRequest& request, int before, int after)
{
    if (request.dryRun) {
        transaction.Rollback();
        return {};
    }
    Written written = ReadWritten(conn, before, after);
    transaction.Commit();
    return written;
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
    CallOptions options = OptionsFor(request, caller);
    options.joinsTransaction = true;
    Call call = CallFor(conn, front, std::move(options));
    const Result result = request.command.handler.run(call, *request.arguments);
    const int after = LatestEntry(conn);
    if (const std::optional<Problem> problem = FindRefusal(conn, before, after, front.outcomes, caller, front)) {
        return ResponseOf(*problem);
    }
    written = Settle(transaction, conn, request, before, after);
    const ChangeAnswer change{result.isChanged && !result.isRead, after == before ? 0 : after};
    return {200, "application/json", BodyOf(request, front, result, change)};
}

Response RunReading(CAConnect& conn, const CommandRequest& request, WebFrontEnd& front)
{
    Call call = CallFor(conn, front, {});
    const Result result = request.command.handler.run(call, *request.arguments);
    return {200, "application/json", BodyOf(request, front, result, {})};
}

/// Runs what makes an answer; what it throws becomes one.
template <class Make>
Response Answered(const CommandRequest& request, const WebFrontEnd& front, Make make)
{
    try {
        return make();
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

// ---- Jobs -----------------------------------------------------------------------------------------------------------

/// Runs what makes its transactions itself, and tells of what was written in whichever way it ends.
Response RunLong(CAConnect& conn, const CommandRequest& request, const Caller& caller, WebFrontEnd& front,
                 JobControl& control)
{
    const int before = LatestEntry(conn);
    const auto tell = [&] {
        if (!request.dryRun) {
            control.TakeWritten(ReadWritten(conn, before, LatestEntry(conn)));
        }
    };
    Call call = CallFor(conn, front, OptionsFor(request, caller));
    std::optional<Result> result;
    try {
        result = request.command.handler.run(call, *request.arguments);
    } catch (const Error&) {
        tell();
        throw;
    }
    tell();
    for (const Outcome& outcome : front.outcomes) {
        control.TakeOutcome(outcome, false);
    }
    const ChangeAnswer change{result->isChanged && !result->isRead, call.Entry()};
    return {200, "application/json", BodyOf(request, front, *result, change)};
}

/// A change of many people, part by part.
class PartwiseChange {
public:
    PartwiseChange(CAConnect& conn, const CommandRequest& request, const Caller& caller, WebFrontEnd& front,
                   JobControl& control)
        : m_conn(conn),
          m_request(request),
          m_caller(caller),
          m_front(front),
          m_control(control),
          m_call(CallFor(conn, front, Options(request, caller)))
    {
        const std::vector<std::string> all = request.arguments->Many();
        m_total = all.size();
        for (std::size_t begin = 0; begin < all.size(); begin += kPart) {
            const std::size_t end = std::min(begin + kPart, all.size());
            m_parts.push_back({{request.command,
                                *request.arguments,
                                {all.begin() + static_cast<long>(begin), all.begin() + static_cast<long>(end)}},
                               ""});
        }
    }

    Response Run()
    {
        if (m_request.command.asks && !m_request.dryRun) {
            AtOneMoment(m_conn, [this] { return FindPlans(); });
        }
        std::size_t done = 0;
        m_control.ShowProgress(0, static_cast<long>(m_total));
        for (const Part& part : m_parts) {
            if (m_control.IsStopRequested()) {
                break;
            }
            if (const std::optional<Problem> problem = RunPart(part)) {
                return ResponseOf(*problem);
            }
            done += part.arguments.Many().size();
            m_control.ShowProgress(static_cast<long>(done), static_cast<long>(m_total));
        }
        if (done < m_total) {
            m_front.notes.push_back(FillPattern("stopped after {} of {}", done, m_total));
        }
        m_front.plan.reset();
        m_result.isChanged = m_isChanged;
        return {200, "application/json",
                BodyOf(m_request, m_front, m_result, ChangeAnswer{m_isChanged, m_call.Entry()})};
    }

private:
    struct Part {
        WebArguments arguments;
        std::string agreed; ///< the digest of its plan
    };

    static CallOptions Options(const CommandRequest& request, const Caller& caller)
    {
        CallOptions options = OptionsFor(request, caller);
        options.joinsTransaction = true;
        return options;
    }

    /// Finds out what is agreed to: all of it, and then the share that each part has in that.
    bool FindPlans()
    {
        m_front.BeginPlan();
        LookAtPlan(*m_request.arguments);
        m_isAsked = !m_front.plan->question.IsEmpty();
        for (Part& part : m_isAsked ? std::span(m_parts) : std::span<Part>()) {
            m_front.BeginPlanOfPart(part.arguments);
            LookAtPlan(part.arguments);
            part.agreed = m_front.digest;
        }
        return true;
    }
    void LookAtPlan(const WebArguments& arguments)
    {
        try {
            m_request.command.handler.run(m_call, arguments);
        } catch (const PlanSeen&) {
            return;
        }
        // It has done already what it was to ask for, in a transaction that this undoes.
        throw std::logic_error("a command that asks has not asked");
    }

    std::optional<Problem> RunPart(const Part& part)
    {
        m_front.BeginPart(part.arguments, part.agreed);
        try {
            return RunAtOnce(part.arguments);
        } catch (const Error& e) {
            if (m_isAsked || e.Code() == ErrorCode::database) {
                throw Error(e.Code(),
                            FillPattern("{}; before that, it was done for {} of {}", e.Why(), m_done, m_total));
            }
        }
        for (const std::string& one : part.arguments.Many()) {
            if (std::optional<Problem> problem = RunOne(one)) {
                return problem;
            }
        }
        return std::nullopt;
    }

    std::optional<Problem> RunOne(const std::string& one)
    {
        const WebArguments arguments(m_request.command, *m_request.arguments, {one});
        try {
            m_front.BeginPart(arguments, "");
            return RunAtOnce(arguments);
        } catch (const Error& e) {
            if (e.Code() == ErrorCode::database) {
                throw;
            }
            const Outcome failed{"user", 0, one, "failed", e.Why()};
            m_front.outcomes.push_back(failed);
            m_control.TakeOutcome(failed, true);
            return std::nullopt;
        }
    }

    std::optional<Problem> RunAtOnce(const WebArguments& arguments)
    {
        const std::size_t outcomes = m_front.outcomes.size();
        const std::size_t secrets = m_front.allMadeUp.size();
        try {
            const std::optional<Problem> problem = RunInTransaction(arguments, outcomes);
            if (problem) {
                m_front.outcomes.resize(outcomes);
                m_front.allMadeUp.resize(secrets);
            }
            return problem;
        } catch (...) {
            m_call.DropOutcomes();
            m_front.outcomes.resize(outcomes);
            m_front.allMadeUp.resize(secrets);
            m_front.madeUp.clear();
            throw;
        }
    }

    /// @param first  the outcomes of this run begin there.
    std::optional<Problem> RunInTransaction(const WebArguments& arguments, std::size_t first)
    {
        Transaction transaction(m_conn);
        const int before = LatestEntry(m_conn);
        m_result = m_request.command.handler.run(m_call, arguments);
        const int after = LatestEntry(m_conn);
        const std::vector<Outcome> own(m_front.outcomes.begin() + static_cast<long>(first), m_front.outcomes.end());
        if (std::optional<Problem> problem = FindRefusal(m_conn, before, after, own, m_caller, m_front)) {
            return problem;
        }
        const Written written = Settle(transaction, m_conn, m_request, before, after);
        // That of a single user comes by itself, and the outcome says whose it is.
        if (!m_front.madeUp.empty() && !own.empty()) {
            m_front.allMadeUp.emplace_back(own.front().name, std::exchange(m_front.madeUp, ""));
        }
        m_isChanged = m_isChanged || (m_result.isChanged && !m_result.isRead);
        m_done += arguments.Many().size();
        m_control.TakeWritten(written);
        for (const Outcome& outcome : own) {
            m_control.TakeOutcome(outcome, false);
        }
        return std::nullopt;
    }

    CAConnect& m_conn;
    const CommandRequest& m_request;
    const Caller& m_caller;
    WebFrontEnd& m_front;
    JobControl& m_control;
    Call m_call; ///< one for all parts, so that they are undone together
    std::vector<Part> m_parts;
    bool m_isAsked = false; ///< whether somebody has agreed to a plan of it
    std::size_t m_total = 0;
    std::size_t m_done = 0;
    Result m_result;
    bool m_isChanged = false;
};

} // namespace

Response RunCommand(CAConnect& conn, const CommandRequest& request, const Caller& caller, Written& written)
{
    written = {};
    WebFrontEnd front(request.command, *request.arguments, request.confirmed, caller);
    return Answered(request, front, [&] {
        return request.command.effect == Effect::read ? RunReading(conn, request, front)
                                                      : RunWriting(conn, request, caller, front, written);
    });
}

Response RunCommandAsJob(CAConnect& conn, const CommandRequest& request, const Caller& caller, JobControl& control)
{
    WebFrontEnd front(request.command, *request.arguments, request.confirmed, caller, &control);
    return Answered(request, front, [&] {
        if (IsReading(request.command, *request.arguments)) {
            return RunReading(conn, request, front);
        }
        if (request.command.duration == Duration::longRunning) {
            return RunLong(conn, request, caller, front, control);
        }
        if (request.arguments->Many().size() > kPart) {
            return PartwiseChange(conn, request, caller, front, control).Run();
        }
        Written written;
        Response answer = RunWriting(conn, request, caller, front, written);
        control.TakeWritten(written);
        return answer;
    });
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

void WriteSentences(JsonWriter& json, std::string_view name, std::span<const Sentence> sentences)
{
    json.WriteName(name);
    json.BeginArray();
    for (const Sentence& sentence : sentences) {
        json.Write(SentenceValue(sentence));
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
    const std::span lines = std::span(plan.lines).first(std::min(plan.lines.size(), kMostPlanLines));
    json.WriteName("plan");
    json.BeginObject();
    WriteSentences(json, "lines", lines);
    json.WriteMember("further_lines", static_cast<std::int64_t>(plan.lines.size() - lines.size()));
    json.WriteMember("question", SentenceValue(plan.question));
    json.WriteMember("removed", static_cast<std::int64_t>(plan.removed));
    json.WriteMember("digest", TextValue(digest));
    json.End();
}

} // namespace web
