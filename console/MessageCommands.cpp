#include "console/MessageCommands.h"

#include "console/Confirm.h"
#include "console/Interrupt.h"
#include "console/Opened.h"
#include "console/Progress.h"
#include "console/Render.h"
#include "console/Words.h"
#include "management/DatabaseError.h"
#include "management/FindEach.h"
#include "management/Text.h"
#include "management/messages/Messages.h"
#include "platform/COleDateTime.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <functional>
#include <numeric>
#include <optional>
#include <utility>

namespace console::message {

namespace {

using namespace words;

constexpr int kUsualBatch = 10000;
constexpr int kLargestBatch = 1000000;
constexpr int kMostDays = 36500;

constexpr Field kBefore{
    "before", "", {}, Field::Use::given, "delete what was sent before this: YYYY-MM-DD or 'YYYY-MM-DD HH:MM:SS'"};
constexpr Field kKeepDays{
    "keep_days", "", {}, Field::Use::given, "keep today and so many days before it, and delete what is older"};
constexpr Field kBatch{"batch", "", {}, Field::Use::given, "so many messages in one transaction; 10000 if not given"};

int NumberGiven(const Arguments& arguments, const Field& field, int least, int most, int usual)
{
    const int number = GivenNumber(arguments, field).value_or(usual);
    if (number < least || number > most) {
        throw Error(ErrorCode::invalid,
                    fmt::format("{} {} is not between {} and {}", OptionOf(field), number, least, most));
    }
    return number;
}

/// The first moment of the day that is so many days ago.
std::string DaysAgo(int days)
{
    const double today = std::floor(static_cast<double>(COleDateTime::GetCurrentTime()));
    const COleDateTime day(today - days);
    return fmt::format("{:04}-{:02}-{:02} 00:00:00", day.GetYear(), day.GetMonth(), day.GetDay());
}

/// The date before which messages are to go.
std::string BoundaryGiven(const Arguments& arguments)
{
    const std::optional<std::string> before = Given(arguments, kBefore);
    const bool keepsDays = Given(arguments, kKeepDays).has_value();
    if (before.has_value() == keepsDays) {
        throw Error(ErrorCode::invalid, "say with either --before or --keep-days which messages are to go");
    }
    return before ? WholeDate(*before) : DaysAgo(NumberGiven(arguments, kKeepDays, 0, kMostDays, 0));
}

std::string Counted(std::int64_t count, std::string_view noun)
{
    return console::Counted(static_cast<std::size_t>(count), noun);
}

std::string Described(const MessageCounts& counts)
{
    return fmt::format("{}, {}, {}", Counted(counts.messages, "message"), Counted(counts.attachments, "attachment"),
                       Counted(counts.receipts, "receipt"));
}

std::string Described(const OrphanCounts& counts)
{
    return fmt::format("{}, {}", Counted(counts.attachments, "orphaned attachment"),
                       Counted(counts.receipts, "orphaned receipt"));
}

/// Deletes messages slice by slice, each in a transaction. A signal to stop is obeyed between two of them.
class Purger {
public:
    /// @param shown  what was shown of the messages before the date.
    Purger(Messages& messages, std::string before, std::string shown, std::size_t batch, Terminal& terminal)
        : m_messages(messages),
          m_before(std::move(before)),
          m_shown(std::move(shown)),
          m_slices(messages.SlicesBefore(m_before, batch)),
          m_total(std::accumulate(
              m_slices.begin(), m_slices.end(), 0L,
              [](long sum, const MessageSlice& slice) { return sum + static_cast<long>(slice.messages); })),
          m_progress(terminal, m_total)
    {
    }

    /// @return what was deleted. @throws Error that says how far it came.
    MessageCounts Run()
    {
        const Interrupt interrupt;
        try {
            DeleteSlices();
        } catch (const DatabaseError& e) {
            m_progress.Clear();
            throw Error(ErrorCode::database, fmt::format("stopped: {}; {}", e.what(), Standing()));
        }
        m_progress.Clear();
        if (m_next < m_slices.size()) {
            throw Error(ErrorCode::failed, "stopped by a signal; " + Standing());
        }
        return m_deleted;
    }

    [[nodiscard]] std::string Pace() const { return m_progress.Pace(static_cast<long>(m_deleted.messages)); }

private:
    void DeleteSlices()
    {
        for (; m_next < m_slices.size() && !Interrupt::Requested(); ++m_next) {
            Transaction transaction(m_messages.Connection());
            if (m_next == 0) {
                ThrowIfChanged(m_shown, Described(m_messages.CountBefore(m_before)));
            }
            const MessageCounts deleted = m_messages.DeleteBefore(m_before, m_slices[m_next]);
            transaction.Commit();
            m_deleted.messages += deleted.messages;
            m_deleted.attachments += deleted.attachments;
            m_deleted.receipts += deleted.receipts;
            m_progress.Show(static_cast<long>(m_deleted.messages));
        }
    }

    [[nodiscard]] std::string Standing() const
    {
        return fmt::format("deleted {}, of {} messages in all; the same command goes on with the others",
                           Described(m_deleted), m_total);
    }

    Messages& m_messages;
    std::string m_before;
    std::string m_shown;
    std::vector<MessageSlice> m_slices;
    long m_total;
    Progress m_progress;
    std::size_t m_next = 0;
    MessageCounts m_deleted;
};

Value OrAbsent(const std::optional<std::string>& text) { return text ? Value(*text) : Value(); }

} // namespace

void DeclarePurge(CLI::App& app, Arguments& arguments)
{
    DeclareOption(app, arguments, kBefore);
    DeclareNumber(app, arguments, kKeepDays);
    DeclareNumber(app, arguments, kBatch);
    DeclareYes(app, arguments);
}

void DeclareSweep(CLI::App& app, Arguments& arguments) { DeclareYes(app, arguments); }

Exit Stats(const Context& context)
{
    Opened opened(context.arguments);
    Messages messages(opened.Directory().Connection());
    const MessageCounts counts = messages.Count();
    const OrphanCounts orphans = messages.CountOrphans();
    const Record record = {{"messages", counts.messages},           {"attachments", counts.attachments},
                           {"receipts", counts.receipts},           {"orphaned_attachments", orphans.attachments},
                           {"orphaned_receipts", orphans.receipts}, {"oldest", OrAbsent(messages.Oldest())},
                           {"newest", OrAbsent(messages.Newest())}};
    Render(context.arguments.format, record, context.terminal.out);
    return Exit::done;
}

Exit Oldest(const Context& context)
{
    Opened opened(context.arguments);
    const std::optional<std::string> oldest = Messages(opened.Directory().Connection()).Oldest();
    if (!oldest) {
        throw Error(ErrorCode::notFound, "there is no message with a date");
    }
    context.terminal.out << *oldest << '\n';
    return Exit::done;
}

Exit Purge(const Context& context)
{
    const std::string before = BoundaryGiven(context.arguments);
    const int batch = NumberGiven(context.arguments, kBatch, 1, kLargestBatch, kUsualBatch);
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    Messages messages(conn);
    const MessageCounts counts = messages.CountBefore(before);
    if (counts.messages == 0) {
        context.terminal.err << fmt::format("there are no messages from before {}\n", before);
        return Exit::done;
    }
    context.terminal.err << fmt::format("delete {}\n", Described(counts));
    RequireConfirmation(context, fmt::format("Delete {} from before {}?", Counted(counts.messages, "message"), before),
                        static_cast<std::size_t>(counts.messages + counts.attachments + counts.receipts));
    Purger purger(messages, before, Described(counts), static_cast<std::size_t>(batch), context.terminal);
    const MessageCounts deleted = purger.Run();
    context.terminal.err << fmt::format("deleted {} ({})\n", Described(deleted), purger.Pace());
    const CString engine = WithDatabaseErrors(conn, [&] { return conn.GetEngineName(); });
    context.terminal.err << RoomAdvice(engine.View()) << '\n';
    return Exit::done;
}

Exit Sweep(const Context& context)
{
    Opened opened(context.arguments);
    Messages messages(opened.Directory().Connection());
    const OrphanCounts told = messages.CountOrphans();
    if (told.attachments == 0 && told.receipts == 0) {
        context.terminal.err << "there are no orphaned attachments or receipts\n";
        return Exit::done;
    }
    context.terminal.err << fmt::format("delete {}\n", Described(told));
    RequireConfirmation(context, fmt::format("Delete {}?", Described(told)),
                        static_cast<std::size_t>(told.attachments + told.receipts));
    Transaction transaction(messages.Connection());
    ThrowIfChanged(Described(told), Described(messages.CountOrphans()));
    messages.DeleteOrphans();
    transaction.Commit();
    context.terminal.err << fmt::format("deleted {}\n", Described(told));
    return Exit::done;
}

} // namespace console::message

namespace console::loginlog {

namespace {

using namespace words;

int ReadId(const std::string& text)
{
    int id = 0;
    const char* end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, id);
    if (read.ec != std::errc() || read.ptr != end) {
        throw Error(ErrorCode::invalid, fmt::format("{} is no id of an entry; write a number", Quoted(text)));
    }
    return id;
}

/// Those given, each once. @throws Error (invalid, notFound) when one of them is none.
std::vector<int> FindEntries(LoginLog& log, const std::vector<std::string>& arguments)
{
    const auto find = [&log](const std::string& argument) {
        const int id = ReadId(argument);
        if (!log.Has(id)) {
            throw Error(ErrorCode::notFound,
                        fmt::format("there is no entry {} in the login log; nothing was deleted", id));
        }
        return id;
    };
    return FindEach(arguments, "entries in the login log", "nothing was deleted", find, std::identity());
}

} // namespace

void DeclareList(CLI::App& app, Arguments& arguments) { DeclareLimit(app, arguments); }

void DeclareDelete(CLI::App& app, Arguments& arguments)
{
    DeclareWords(app, arguments, "ID", "id of an entry");
    words::DeclareYes(app, arguments);
}

Exit List(const Context& context)
{
    Opened opened(context.arguments);
    LoginLog log(opened.Directory().Connection());
    std::optional<TableWriter> writer;
    log.Entries(
        LimitOf(context.arguments),
        [&](std::vector<std::string> columns) {
            writer.emplace(context.arguments.format, std::move(columns), context.terminal.out);
        },
        [&](const std::vector<Value>& row) { return writer->Write(row); });
    writer->Finish();
    return Exit::done;
}

Exit Delete(const Context& context)
{
    Opened opened(context.arguments);
    CAConnect& conn = opened.Directory().Connection();
    LoginLog log(conn);
    const std::vector<int> ids = FindEntries(log, context.arguments.users);
    const std::string entries = ids.size() == 1 ? "1 entry" : fmt::format("{} entries", ids.size());
    RequireConfirmation(context, fmt::format("Delete {} of the login log?", entries), ids.size());
    Transaction transaction(conn);
    FindEntries(log, context.arguments.users);
    for (const int id : ids) {
        log.Delete(id);
    }
    transaction.Commit();
    context.terminal.err << fmt::format("deleted {} of the login log\n", entries);
    return Exit::done;
}

} // namespace console::loginlog
