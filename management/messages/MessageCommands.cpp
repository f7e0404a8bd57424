#include "dbaccess/CAConnect.h"
#include "management/Command.h"
#include "management/Text.h"
#include "management/messages/Messages.h"
#include "platform/COleDateTime.h"

#include <fmt/format.h>

#include <chrono>
#include <cmath>
#include <numeric>

namespace management::messages {

namespace {

constexpr int kUsualBatch = 10000;

struct Purge {
    std::optional<std::string> before;
    std::optional<int> keepDays;
    std::optional<int> batch;
};

constexpr Param<Purge> kPurgeParams[] = {
    {"before", &Purge::before, Kind::date, "delete what was sent before this: YYYY-MM-DD or 'YYYY-MM-DD HH:MM:SS'"},
    {"keep_days", &Purge::keepDays, Kind::number, "keep today and so many days before it, and delete what is older",
     Range{0, 36500}},
    {"batch", &Purge::batch, Kind::number, "so many messages in one transaction; 10000 if not given",
     Range{1, 1000000}},
};

constexpr Column kStatsColumns[] = {{"messages", Kind::number},
                                    {"attachments", Kind::number},
                                    {"receipts", Kind::number},
                                    {"orphaned_attachments", Kind::number},
                                    {"orphaned_receipts", Kind::number},
                                    {"oldest", Kind::date},
                                    {"newest", Kind::date}};

Sentence Counted(std::int64_t count, std::string_view noun)
{
    return management::Counted(static_cast<std::size_t>(count), noun);
}

Sentence Described(const MessageCounts& counts)
{
    return Joined({Counted(counts.messages, "message"), Counted(counts.attachments, "attachment"),
                   Counted(counts.receipts, "receipt")},
                  ", ");
}

Sentence Described(const OrphanCounts& counts)
{
    return Joined({Counted(counts.attachments, "orphaned attachment"), Counted(counts.receipts, "orphaned receipt")},
                  ", ");
}

// ---- Reading --------------------------------------------------------------------------------------------------------

Result Stats(Call& call)
{
    Messages messages(call.Connection());
    const MessageCounts counts = messages.Count();
    const OrphanCounts orphans = messages.CountOrphans();
    return ResultOf(Record{{"messages", counts.messages},
                           {"attachments", counts.attachments},
                           {"receipts", counts.receipts},
                           {"orphaned_attachments", orphans.attachments},
                           {"orphaned_receipts", orphans.receipts},
                           {"oldest", OrAbsent(messages.Oldest())},
                           {"newest", OrAbsent(messages.Newest())}});
}

Result Oldest(Call& call)
{
    const std::optional<std::string> oldest = Messages(call.Connection()).Oldest();
    if (!oldest) {
        throw Error(ErrorCode::notFound, "there is no message with a date");
    }
    return ResultOf(Value(*oldest));
}

// ---- Purging --------------------------------------------------------------------------------------------------------

/// The first moment of the day that is so many days ago.
std::string DaysAgo(int days)
{
    const double today = std::floor(static_cast<double>(COleDateTime::GetCurrentTime()));
    const COleDateTime day(today - days);
    return fmt::format("{:04}-{:02}-{:02} 00:00:00", day.GetYear(), day.GetMonth(), day.GetDay());
}

/// The date before which messages are to go.
std::string BoundaryOf(const Purge& in)
{
    if (in.before.has_value() == in.keepDays.has_value()) {
        throw Error(ErrorCode::invalid, "say with either --before or --keep-days which messages are to go");
    }
    return in.before ? WholeDate(*in.before) : DaysAgo(*in.keepDays);
}

struct PurgePlan : Plan {
    std::string before;
    MessageCounts counts;
};

PurgePlan PlanPurge(Call& call, const Purge& in)
{
    PurgePlan plan;
    plan.before = BoundaryOf(in);
    plan.counts = Messages(call.Connection()).CountBefore(plan.before);
    if (plan.counts.messages != 0) {
        plan.lines.push_back(FillPattern("delete {}", Described(plan.counts)));
        plan.question = FillPattern("Delete {} from before {}?", Counted(plan.counts.messages, "message"), plan.before);
        plan.removed = static_cast<std::size_t>(plan.counts.messages + plan.counts.attachments + plan.counts.receipts);
    }
    return plan;
}

/// Deletes messages slice by slice, each in a transaction. A request to stop is obeyed between two of them.
class Purger {
public:
    Purger(Call& call, const PurgePlan& plan, std::size_t batch)
        : m_call(call),
          m_plan(plan),
          m_messages(call.Connection()),
          m_slices(m_messages.SlicesBefore(plan.before, batch)),
          m_total(std::accumulate(m_slices.begin(), m_slices.end(), 0L, [](long sum, const MessageSlice& slice) {
              return sum + static_cast<long>(slice.messages);
          }))
    {
    }

    /// @return what was deleted. @throws Error that says how far it came.
    MessageCounts Run()
    {
        m_call.Front().ShowProgress(0, m_total);
        try {
            DeleteSlices();
        } catch (const DatabaseError& e) {
            throw Error(ErrorCode::database, FillPattern("stopped: {}; {}", e.Why(), Summary()));
        }
        if (m_next < m_slices.size()) {
            throw Error(ErrorCode::failed, FillPattern("stopped; {}", Summary()));
        }
        return m_deleted;
    }

private:
    void DeleteSlices()
    {
        for (; m_next < m_slices.size() && !m_call.Front().IsStopRequested(); ++m_next) {
            Change change(m_call);
            if (m_next == 0 && m_messages.CountBefore(m_plan.before) != m_plan.counts) {
                ThrowChanged(m_plan.nothingDone);
            }
            const MessageCounts deleted = m_messages.DeleteBefore(m_plan.before, m_slices[m_next]);
            change.Finish();
            m_deleted.messages += deleted.messages;
            m_deleted.attachments += deleted.attachments;
            m_deleted.receipts += deleted.receipts;
            m_call.Front().ShowProgress(static_cast<long>(m_deleted.messages), m_total);
        }
    }

    [[nodiscard]] Sentence Summary() const
    {
        return FillPattern("deleted {}, of {} messages in all; the same command goes on with the others",
                           Described(m_deleted), m_total);
    }

    Call& m_call;
    const PurgePlan& m_plan;
    Messages m_messages;
    std::vector<MessageSlice> m_slices;
    long m_total;
    std::size_t m_next = 0;
    MessageCounts m_deleted;
};

Result PurgeMessages(Call& call, const Purge& in, const PurgePlan& plan)
{
    if (plan.counts.messages == 0) {
        call.Report({"message", 0, "", "unchanged", FillPattern("there are no messages from before {}", plan.before)});
        return Unchanged();
    }
    const auto begin = std::chrono::steady_clock::now();
    const MessageCounts deleted = Purger(call, plan, static_cast<std::size_t>(in.batch.value_or(kUsualBatch))).Run();
    const std::string pace = PaceText(std::chrono::steady_clock::now() - begin, deleted.messages);
    call.Report({"message", 0, Counted(deleted.messages, "message"), "deleted",
                 FillPattern("deleted {} ({})", Described(deleted), pace)});
    if (!call.Options().dryRun) {
        CAConnect& conn = call.Connection();
        const CString engine = WithDatabaseErrors(conn, [&] { return conn.GetEngineName(); });
        call.Report({"database", 0, "", "advice", RoomAdvice(engine.View())});
    }
    return {};
}

// ---- Sweeping -------------------------------------------------------------------------------------------------------

struct SweepPlan : Plan {
    OrphanCounts orphans;

    bool operator==(const SweepPlan&) const = default;
};

SweepPlan PlanSweep(Call& call, const NoInput& /*in*/)
{
    SweepPlan plan;
    plan.orphans = Messages(call.Connection()).CountOrphans();
    if (plan.orphans != OrphanCounts()) {
        const Sentence what = Described(plan.orphans);
        plan.lines.push_back(FillPattern("delete {}", what));
        plan.question = FillPattern("Delete {}?", what);
        plan.removed = static_cast<std::size_t>(plan.orphans.attachments + plan.orphans.receipts);
    }
    return plan;
}

Result Sweep(Call& call, const NoInput& /*in*/, const SweepPlan& plan)
{
    if (plan.orphans == OrphanCounts()) {
        call.Report({"message", 0, "", "unchanged", Translatable("there are no orphaned attachments or receipts")});
        return Unchanged();
    }
    Messages(call.Connection()).DeleteOrphans();
    const Sentence what = Described(plan.orphans);
    call.Report({"message", 0, what, "deleted", FillPattern("deleted {}", what)});
    return {};
}

constexpr Command kCommands[] = {
    {.path = {"message", "stats"},
     .summary = "how many messages, attachments and receipts there are, and from when",
     .examples = {"qvadmin message stats -o json"},
     .columns = kStatsColumns,
     .handler = Read<&Stats>()},
    {.path = {"message", "oldest"},
     .summary = "print the date of the oldest message; ends with 3 when there is none",
     .examples = {"qvadmin message oldest"},
     .handler = Read<&Oldest>()},
    {.path = {"message", "purge"},
     .summary = "delete old messages and what belongs to them, in batches; asks first",
     .examples = {"qvadmin message purge --before 2020-01-01",
                  "qvadmin message purge --keep-days 365 --batch 1000 --yes"},
     .effect = Effect::remove,
     .asks = true,
     .duration = Duration::longRunning,
     .handler = WriteInSteps<&PlanPurge, &PurgeMessages, kPurgeParams>()},
    {.path = {"message", "sweep"},
     .summary = "delete attachments and receipts whose message is gone; asks first",
     .examples = {"qvadmin message sweep"},
     .effect = Effect::remove,
     .asks = true,
     .handler = WritePlanned<&PlanSweep, &Sweep, kNoParams>()},
};

} // namespace

std::span<const Command> MessageCommands() { return kCommands; }

} // namespace management::messages
