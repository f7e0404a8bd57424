#include "management/Call.h"

#include <fmt/format.h>

namespace management {

Result ResultOf(Value value)
{
    Result result;
    result.value = std::move(value);
    return result;
}

Result ResultOf(Record record, std::vector<Part> parts)
{
    Result result;
    result.record = std::move(record);
    result.parts = std::move(parts);
    return result;
}

Result Verdict(bool verdict)
{
    Result result;
    result.verdict = verdict;
    return result;
}

Result Unchanged()
{
    Result result;
    result.isChanged = false;
    return result;
}

void ThrowNothingToSet(std::string_view noun)
{
    throw Error(ErrorCode::invalid,
                FillPattern("there is nothing to set; `qvadmin {} set --help` lists what can be", noun));
}

Directory& Call::Directory() const
{
    if (!m_directory) {
        m_directory.emplace(m_open());
    }
    return *m_directory;
}

void Call::Confirm(const Plan& plan)
{
    Plan asked = plan;
    if (m_options.yes || m_options.dryRun) {
        asked.question = {};
    }
    m_frontEnd.Confirm(asked);
}

void Call::ShowProgress(long done, long total) const
{
    if (m_isInChange || m_options.joinsTransaction) {
        return;
    }
    m_frontEnd.ShowProgress(done, total);
    if (m_frontEnd.IsStopRequested()) {
        throw Error(ErrorCode::failed, FillPattern("stopped after {} of {}", done, total));
    }
}

void Call::ShowSecret(const Secret& secret) const
{
    if (!m_options.dryRun) {
        m_frontEnd.ShowSecret(secret);
    }
}

void Call::StoreSecrets(const std::string& file, const std::vector<UserSecret>& secrets) const
{
    if (!m_options.dryRun) {
        m_frontEnd.StoreSecrets(file, secrets);
    }
}

void Call::DeliverOutcomes()
{
    for (const Outcome& outcome : std::exchange(m_outcomes, {})) {
        m_frontEnd.TakeOutcome(outcome);
    }
}

void Call::Record(audit::Recorder& recorder)
{
    const int entry = WithDatabaseErrors(Connection(), [&] {
        return recorder.Write(
            {m_options.who, m_options.frontEnd, m_options.command, m_options.reason, m_entry, m_undoes},
            m_isRecordedAnyway);
    });
    m_entry = m_entry == 0 ? entry : m_entry;
}

Change::Change(Call& call) : m_call(call)
{
    call.m_isInChange = true;
    if (!call.Options().joinsTransaction) {
        m_transaction.emplace(call.Connection());
    }
    if (!call.Options().dryRun) {
        WithDatabaseErrors(call.Connection(), [&] { m_recorder.emplace(call.Connection()); });
    }
}

void Change::Finish()
{
    if (m_recorder) {
        m_call.Record(*m_recorder);
        m_recorder.reset();
    }
    if (m_transaction && m_call.Options().dryRun) {
        m_transaction->Rollback();
    } else if (m_transaction) {
        m_call.m_frontEnd.NoteCommit();
        m_transaction->Commit();
    }
    m_call.DeliverOutcomes();
}

void ThrowChanged(const Sentence& nothingDone)
{
    throw Error(ErrorCode::conflict,
                FillPattern("somebody else has changed what was shown in the meantime; {}, look again", nothingDone));
}

} // namespace management
