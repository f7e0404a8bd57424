#include "web/Jobs.h"

#include "management/CsvWriter.h"
#include "management/Errors.h"
#include "web/Import.h"
#include "web/Problem.h"

#include <algorithm>
#include <sstream>

namespace web {

using namespace management;

namespace {

std::string CsvRow(const std::vector<std::string>& fields)
{
    std::ostringstream out;
    WriteCsvRow(fields, out);
    return std::move(out).str();
}

} // namespace

void Job::Run(CAConnect& conn, const Surroundings& surroundings) noexcept
{
    m_surroundings = &surroundings;
    {
        const std::lock_guard lock(m_mutex);
        m_isBegun = true;
    }
    try {
        Finish(m_order.work(conn, *this));
    } catch (const Error& e) {
        Finish(ResponseOf(ProblemOf(e)));
    } catch (const std::bad_alloc&) {
        Finish(ResponseOf(OutOfMemory()));
    } catch (const std::exception&) {
        Finish(ResponseOf(ServerFailed()));
    }
}

void Job::Finish(Response answer)
{
    const std::lock_guard lock(m_mutex);
    m_order.work = {}; // what it holds, such as passwords, goes with it
    m_status = answer.status;
    m_isFile = !answer.headers.empty();
    m_answer = std::move(answer);
    m_isOver = true;
    if (m_order.import && m_status == Response().status) {
        m_answer.reset(); // it is shown by what became of the rows
    }
}

bool Job::IsOver() const
{
    const std::lock_guard lock(m_mutex);
    return m_isOver;
}

std::optional<Response> Job::TakeAnswer()
{
    const std::lock_guard lock(m_mutex);
    return m_isFile ? std::nullopt : std::exchange(m_answer, std::nullopt);
}

std::optional<Response> Job::File() const
{
    const std::lock_guard lock(m_mutex);
    return m_isFile ? m_answer : std::nullopt;
}

std::string Job::Report(bool onlyFailed) const
{
    if (m_order.import) {
        return m_order.import->Report(onlyFailed);
    }
    const std::lock_guard lock(m_mutex);
    return CsvRow({"type", "id", "name", "outcome", "message"}) + (onlyFailed ? m_failed : m_report);
}

void Job::ShowProgress(long done, std::optional<long> total)
{
    {
        const std::lock_guard lock(m_mutex);
        m_done = done;
        m_total = total;
        m_canStop = true;
    }
    m_surroundings->between();
}

void Job::TakeOutcome(const Outcome& outcome, bool hasFailed)
{
    const std::string row = CsvRow({std::string(outcome.type), std::to_string(outcome.id), outcome.name,
                                    std::string(outcome.outcome), outcome.sentence});
    const std::lock_guard lock(m_mutex);
    m_report += row;
    if (hasFailed) {
        m_failed += row;
        ++m_failedCount;
    }
}

void Job::TakeWritten(const Written& written) { m_surroundings->written(written); }

bool Job::IsStopRequested() const noexcept { return m_isStopped || m_surroundings->isEnding(); }

void Job::Write(JsonWriter& json) const
{
    const std::lock_guard lock(m_mutex);
    json.WriteMember("id", std::int64_t{m_id});
    json.WriteMember("what", TextValue(m_order.what));
    json.WriteMember("login", TextValue(m_order.login));
    json.WriteMember("begun", m_isBegun);
    json.WriteMember("over", m_isOver);
    json.WriteMember("stopped", m_isStopped.load());
    json.WriteMember("can_stop", m_canStop && !m_isOver);
    json.WriteMember("done", std::int64_t{m_done});
    json.WriteMember("total", OrAbsent(m_total));
    json.WriteMember("failed",
                     static_cast<std::int64_t>(m_order.import ? m_order.import->FailedCount() : m_failedCount));
    json.WriteMember("status", m_isOver ? Value(std::int64_t{m_status}) : Value());
    json.WriteMember("answer", m_answer.has_value() && !m_isFile);
    json.WriteMember("file", m_isFile);
    json.WriteMember("reported", m_order.import ? m_isOver : !m_report.empty());
    json.WriteMember("import", m_order.import != nullptr);
}

std::shared_ptr<Job> Jobs::Add(Job::Order order)
{
    const std::lock_guard lock(m_mutex);
    const auto isBusy = [](const auto& job) { return !job->IsOver(); };
    if (order.import && std::ranges::any_of(m_jobs, [&](const auto& job) { return isBusy(job) && job->ItsImport(); })) {
        throw Error(ErrorCode::conflict, "another import is running; wait for it, or stop it");
    }
    if (static_cast<std::size_t>(std::ranges::count_if(m_jobs, isBusy)) >= kMost) {
        throw Error(ErrorCode::conflict, "too many jobs wait already; wait for one of them, or stop it");
    }
    if (m_jobs.size() == kMost) {
        m_jobs.erase(std::ranges::find_if_not(m_jobs, isBusy));
    }
    m_jobs.push_back(std::make_shared<Job>(++m_last, std::move(order)));
    return m_jobs.back();
}

std::shared_ptr<Job> Jobs::Find(int id) const
{
    const std::lock_guard lock(m_mutex);
    const auto found = std::ranges::find(m_jobs, id, &Job::Id);
    return found == m_jobs.end() ? nullptr : *found;
}

std::vector<std::shared_ptr<Job>> Jobs::All() const
{
    const std::lock_guard lock(m_mutex);
    return {m_jobs.rbegin(), m_jobs.rend()};
}

} // namespace web
