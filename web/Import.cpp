#include "web/Import.h"

#include "management/Call.h"
#include "management/CsvWriter.h"
#include "web/CommandAnswer.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <utility>

namespace web {

using namespace management;

namespace {

constexpr std::size_t kMostShown = 200;
constexpr std::size_t kOutcomeColumn = 3;

} // namespace

/// Keeps what becomes of rows, and lets others in between.
class Import::Front final : public FrontEnd {
public:
    Front(Import& job, const ImportReport& report, JobControl& control)
        : m_job(job), m_report(report), m_control(control)
    {
    }

    /// @param call  whose entry of the record is shown; outlives the rows.
    void SetCall(const Call& call) { m_call = &call; }
    /// @param found  outlives this.
    void SetSynchronisation(const Synchronisation& found) { m_synchronisation = &found; }

    void TakeColumns(std::vector<std::string> names) override
    {
        WriteCsvRow(names, m_reported);
        const std::lock_guard lock(m_job.m_mutex);
        m_job.m_columns = std::move(names);
    }
    bool TakeRow(const std::vector<Value>& row) override
    {
        const std::vector<std::string> texts = TextsForPrograms(row);
        WriteCsvRow(texts, m_reported);
        const std::lock_guard lock(m_job.m_mutex);
        // Who has left has no line.
        const bool isLeaver = std::holds_alternative<std::monostate>(row.front());
        Rows& rows = isLeaver ? m_job.m_leaverRows : m_job.m_rows;
        if (rows.size() < kMostShown) {
            rows.push_back(row);
        }
        if (texts.at(kOutcomeColumn) == kRowFates[static_cast<std::size_t>(RowFate::failed)] &&
            m_job.m_failed.size() < kMostShown) {
            m_job.m_failed.push_back(row);
        }
        return true;
    }
    void ShowProgress(long done, std::optional<long> total) override
    {
        Settle();
        m_control.ShowProgress(done, total);
    }
    [[nodiscard]] bool IsStopRequested() const noexcept override { return m_control.IsStopRequested(); }

    void TakeFailed(const CsvRecord& record)
    {
        // The header comes first, and is nothing to import by itself.
        ++m_failedCount;
        if (record.problem.IsEmpty()) {
            WriteCsvRow(record.fields, m_failed, m_job.m_order.delimiter);
        } else {
            m_failed << record.text << '\n';
        }
    }
    /// Shows what was done so far.
    void Settle()
    {
        const std::lock_guard lock(m_job.m_mutex);
        m_job.m_report = m_report;
        m_job.m_entry = m_call == nullptr ? 0 : m_call->Entry();
        if (m_synchronisation != nullptr) {
            m_job.m_leavers = m_synchronisation->Report();
        }
        m_job.m_reportText += std::exchange(m_reported, std::ostringstream()).str();
        if (m_failedCount > 1) {
            m_job.m_failedText += std::exchange(m_failed, std::ostringstream()).str();
        }
    }

    void TakeOutcome(const Outcome& /*outcome*/) override {}
    void Confirm(const Plan& /*plan*/) override {}
    [[nodiscard]] bool CanAsk() const override { return false; }
    void Explain(const Sentence& /*sentence*/) override {}
    [[nodiscard]] bool IsGiven(std::string_view /*secret*/) const override { return false; }
    Secret ObtainSecret(const SecretQuestion& /*question*/) override
    {
        throw Error(ErrorCode::invalid, "imports take no passwords");
    }
    void ShowSecret(const Secret& /*secret*/) override {}
    void StoreSecrets(const std::string& /*file*/, const std::vector<UserSecret>& /*secrets*/) override {}
    std::string ReadText(const std::string& /*name*/) override
    {
        throw Error(ErrorCode::invalid, "files cannot be named here");
    }

private:
    Import& m_job;
    const ImportReport& m_report;
    const Call* m_call = nullptr;
    const Synchronisation* m_synchronisation = nullptr;
    JobControl& m_control;
    std::ostringstream m_reported;
    std::ostringstream m_failed;
    long m_failedCount = 0;
};

Response Import::Run(CAConnect& conn, JobControl& control)
{
    const int before = LatestEntry(conn);
    ImportReport report;
    Front front(*this, report, control);
    CallOptions options;
    options.dryRun = m_order.dryRun;
    options.reason = m_order.reason;
    options.who = m_order.login;
    options.frontEnd = "web";
    options.command = "user import";
    Call call([&conn]() -> CAConnect& { return conn; }, front, std::move(options));
    front.SetCall(call);
    m_order.options.takeFailed = [&front](const CsvRecord& record) { front.TakeFailed(record); };
    std::optional<Synchronisation> synchronisation;
    Sentence error;
    try {
        Carry(call, front, report, synchronisation);
        error = report.cutShort.IsEmpty() ? "" : Translatable("stopped");
    } catch (const Error& e) {
        error = e.Why();
    } catch (const std::bad_alloc&) {
        error = Translatable("out of memory");
    } catch (const std::exception&) {
        error = Translatable("the server has failed");
    }
    front.Settle();
    {
        const std::lock_guard lock(m_mutex);
        m_error = error;
    }
    if (const int after = LatestEntry(conn); after != before) {
        control.TakeWritten({.isAnything = true, .before = before, .entry = after, .isMore = true});
    }
    return {};
}

void Import::Carry(Call& call, Front& front, ImportReport& report, std::optional<Synchronisation>& synchronisation)
{
    std::istringstream in(std::move(m_order.text));
    const ImportSource source{in, "the text", m_order.rows, m_order.delimiter};
    if (m_order.synchronisation) {
        synchronisation.emplace(call, source, m_order.options.columns, *m_order.synchronisation);
        in.clear();
        in.seekg(0);
        std::string digest = synchronisation->Digest();
        RequireAgreed(digest);
        front.SetSynchronisation(*synchronisation);
        const std::lock_guard lock(m_mutex);
        m_leaversDigest = std::move(digest);
    }
    ImportUsers(call, source, m_order.options, report);
    if (synchronisation && report.cutShort.IsEmpty()) {
        synchronisation->Apply(call);
    }
}

void Import::RequireAgreed(const std::string& digest) const
{
    const bool isToAct = !m_order.dryRun && m_order.synchronisation->action != LeaverAction::list;
    if (isToAct && m_order.agreed != digest) {
        throw Error(
            ErrorCode::conflict,
            "the people who are not in the text are others than those that the try has shown; nothing was imported");
    }
}

std::string Import::Report(bool onlyFailed) const
{
    const std::lock_guard lock(m_mutex);
    return onlyFailed ? m_failedText : m_reportText;
}

std::size_t Import::FailedCount() const
{
    const std::lock_guard lock(m_mutex);
    return static_cast<std::size_t>(m_report.counts.at(static_cast<std::size_t>(RowFate::failed)));
}

void Import::Write(JsonWriter& json, bool withRows) const
{
    const std::lock_guard lock(m_mutex);
    json.WriteMember("dry_run", m_order.dryRun);
    json.WriteMember("error", SentenceValue(m_error));
    for (std::size_t i = 0; i < kRowFates.size(); ++i) {
        if (static_cast<RowFate>(i) != RowFate::failed) {
            json.WriteMember(kRowFates.at(i), std::int64_t{m_report.counts.at(i)});
        }
    }
    json.WriteMember("privileged", std::int64_t{m_report.privileged});
    json.WriteMember("entry", m_entry == 0 ? Value() : Value(std::int64_t{m_entry}));
    std::vector<std::string> groups;
    std::ranges::transform(m_report.madeGroups, std::back_inserter(groups), &NewGroup::path);
    groups.resize(std::min(groups.size(), kMostShown));
    WriteTexts(json, "groups", groups);
    json.WriteMember("group_count", static_cast<std::int64_t>(m_report.madeGroups.size()));
    if (m_leavers) {
        WriteLeavers(json);
    }
    if (withRows) {
        WriteRows(json, "rows", m_rows);
        WriteRows(json, "failed_rows", m_failed);
        WriteRows(json, "leaver_rows", m_leaverRows);
    }
}

void Import::WriteLeavers(JsonWriter& json) const
{
    json.WriteName("leavers");
    json.BeginObject();
    json.WriteMember("people", static_cast<std::int64_t>(m_leavers->people));
    json.WriteMember("leavers", static_cast<std::int64_t>(m_leavers->leavers));
    json.WriteMember("done", static_cast<std::int64_t>(m_leavers->done));
    json.WriteMember("failed", static_cast<std::int64_t>(m_leavers->failed));
    json.WriteMember("unreadable", static_cast<std::int64_t>(m_leavers->unreadable));
    json.WriteMember("digest", TextValue(m_leaversDigest));
    json.End();
}

void Import::WriteRows(JsonWriter& json, std::string_view name, const Rows& rows) const
{
    json.WriteName(name);
    json.BeginArray();
    for (const std::vector<Value>& row : rows) {
        json.WriteRow(m_columns, row);
    }
    json.End();
}

} // namespace web
