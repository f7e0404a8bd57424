#include "management/exchange/DirectoryImport.h"

#include "dbaccess/CAConnect.h"
#include "management/DatabaseError.h"
#include "management/Lengths.h"
#include "management/Query.h"
#include "management/Text.h"
#include "management/exchange/DirectoryWriter.h"
#include "management/exchange/ItemNames.h"
#include "management/exchange/LineReader.h"
#include "management/exchange/LineResolver.h"
#include "management/exchange/MatchedLine.h"
#include "management/exchange/Nouns.h"
#include "management/import/UserBlock.h"
#include "schema/Schema.h"

#include <fmt/format.h>

#include <algorithm>
#include <deque>
#include <map>
#include <utility>

namespace management {

namespace {

constexpr std::size_t kMostLines = 256;
constexpr std::size_t kMostBytes = std::size_t{2} * 1024 * 1024;
constexpr std::array<std::string_view, 5> kResultColumns = {"line", "noun", "name", "outcome", "reason"};
constexpr const char* kMark = "SAVEPOINT qv_block";
constexpr const char* kBackToMark = "ROLLBACK TO SAVEPOINT qv_block";

class Importer {
public:
    /// @param allOrNothing  the file's name, where everything is done in the caller's Change, and the first line that
    /// cannot be stored ends it.
    Importer(Call& call, const DirectoryImportOptions& options, LineSource& reader, ImportReport& report,
             std::optional<std::string> allOrNothing)
        : m_call(call),
          m_conn(call.Connection()),
          m_allOrNothing(std::move(allOrNothing)),
          m_isOneTransaction(call.Options().dryRun || m_allOrNothing),
          m_options(options),
          m_reader(reader),
          m_report(report)
    {
    }

    void Run(const std::optional<long>& total)
    {
        if (!m_allOrNothing) {
            m_call.Front().TakeColumns({kResultColumns.begin(), kResultColumns.end()});
        }
        m_call.Front().ShowProgress(0, total);
        if (m_isOneTransaction && !m_allOrNothing) {
            m_change.emplace(m_call);
        }
        m_next = m_reader.Next();
        while (m_next && !m_call.Front().IsStopRequested()) {
            const std::vector<ExportedLine> lines = ReadBlock();
            ApplyBlock(lines);
            m_call.Front().ShowProgress(m_report.rows, total);
        }
        if (m_change) {
            m_change->Finish();
        }
    }

private:
    /// Lines of one noun, all of them of a tree. Lines that are about the same row come together.
    std::vector<ExportedLine> ReadBlock()
    {
        std::vector<ExportedLine> lines;
        const Noun* noun = m_next->noun;
        const bool isTree = noun != nullptr && IsTree(noun->item);
        std::size_t bytes = 0;
        while (m_next && m_next->noun == noun && !m_call.Front().IsStopRequested()) {
            const bool isFull = lines.size() >= kMostLines || bytes > kMostBytes;
            if (isFull && !isTree && (noun == nullptr || !IsAboutSame(lines.back(), *m_next))) {
                break;
            }
            lines.push_back(std::move(*m_next));
            bytes += m_reader.TakeBytes();
            m_next = m_reader.Next();
        }
        return lines;
    }

    static bool IsAboutSame(const ExportedLine& a, const ExportedLine& b)
    {
        const auto firstOf = [](const ExportedLine& line) -> const JsonValue* {
            const auto found = std::ranges::find(line.object, line.noun->members.front().name, &JsonMember::name);
            return found == line.object.end() ? nullptr : &found->value;
        };
        const JsonValue* first = firstOf(a);
        const JsonValue* second = firstOf(b);
        return first != nullptr && second != nullptr && *first == *second && a.noun->keys > 1 &&
               a.object.size() == b.object.size();
    }

    void ApplyBlock(std::span<const ExportedLine> lines)
    {
        if (Try(lines)) {
            return;
        }
        // Which line the engine refused shows when each is done by itself, of a tree the parents first.
        std::vector<const ExportedLine*> order;
        std::ranges::transform(lines, std::back_inserter(order), [](const ExportedLine& line) { return &line; });
        if (IsTree(lines.front().noun->item)) {
            std::ranges::stable_sort(order, {}, [](const ExportedLine* line) { return DepthOf(*line); });
        }
        for (const ExportedLine* line : order) {
            if (m_call.Front().IsStopRequested()) {
                return;
            }
            Try({line, 1});
        }
        if (m_allOrNothing) { // what was recorded of the block does not hold any more
            throw Error(ErrorCode::database, m_refusal);
        }
    }

    /// @return false when the engine refused something and there are several lines: nothing was done then.
    bool Try(std::span<const ExportedLine> lines)
    {
        std::vector<MatchedLine> wanted;
        m_made.names.clear();
        try {
            Begin();
            wanted = Apply(lines);
            End();
        } catch (const DatabaseError& e) {
            if (e.IsLasting() || !m_conn.IsOpen()) {
                throw;
            }
            GoBack();
            if (lines.size() > 1) {
                m_refusal = e.Why();
                return false;
            }
            MatchedLine failed;
            failed.line = &lines.front();
            failed.name = wanted.empty() ? "" : wanted.front().name;
            failed.problem = e.Why();
            wanted = {failed};
        }
        for (const MatchedLine& one : wanted) {
            Report(one);
        }
        return true;
    }

    void Begin()
    {
        if (m_isOneTransaction) {
            Execute(m_conn, kMark);
        } else {
            m_change.emplace(m_call);
        }
        WithDatabaseErrors(m_conn, [this] { schema::PreferIndexes(m_conn); });
    }

    void End()
    {
        if (!m_isOneTransaction) {
            m_change->Finish();
            m_change.reset();
        }
    }

    void GoBack()
    {
        if (m_isOneTransaction) {
            Execute(m_conn, kBackToMark);
        } else {
            m_change.reset();
        }
        for (const auto& [kind, id] : m_made.names) {
            m_names->Remove(kind, id);
        }
    }

    std::vector<MatchedLine> Apply(std::span<const ExportedLine> lines)
    {
        std::vector<MatchedLine> all;
        const Noun* noun = lines.front().noun;
        if (noun == nullptr) {
            for (const ExportedLine& line : lines) {
                all.push_back({{.name = {}, .values = {}, .problem = line.problem}, &line});
            }
            return all;
        }
        ReadNames();
        LineMatcher matcher(m_conn, lines, *m_names);
        all = matcher.Resolve();
        RequireLengths(*noun, all);
        matcher.FindRows(all);
        DirectoryWriter(m_call, m_options, *noun, *m_names, m_made).Write(all, matcher.HasConfused());
        return all;
    }

    /// Reads the names of items once more where others have added or deleted some since the last time.
    void ReadNames()
    {
        std::string query;
        for (const Noun& noun : Nouns()) {
            if (noun.item != MemberKind::text) {
                query += fmt::format("{}SELECT COUNT(*), MAX(Col_ID), SUM(Col_ID) FROM {}",
                                     query.empty() ? "" : " UNION ALL ", noun.table);
            }
        }
        std::string state;
        EachRow(m_conn, query, [&state](CARecordset& row) {
            state += fmt::format("{} {} {}\n", TextIn(row, 1), TextIn(row, 2), TextIn(row, 3));
        });
        if (state != m_itemsState) {
            m_names.emplace(m_conn);
            m_itemsState = std::move(state);
        }
    }

    void RequireLengths(const Noun& noun, std::vector<MatchedLine>& lines)
    {
        auto found = m_lengths.find(noun.table);
        if (found == m_lengths.end()) {
            found = m_lengths.emplace(noun.table, LengthsOf(m_conn, std::string(noun.table))).first;
        }
        for (MatchedLine& wanted : lines) {
            for (const LineMember& member : noun.members) {
                const auto value = wanted.values.find(member.column);
                if (wanted.problem.IsEmpty() && value != wanted.values.end() && value->second) {
                    wanted.problem = TooLong(found->second, TextFor{member.name, member.column, *value->second});
                }
            }
        }
    }

    void Report(const MatchedLine& wanted)
    {
        const ExportedLine& line = *wanted.line;
        const RowFate fate = wanted.problem.IsEmpty() ? wanted.fate : RowFate::failed;
        if (m_allOrNothing) {
            if (fate == RowFate::failed) {
                throw Error(ErrorCode::conflict, FillPattern("{}:{}: {}; nothing was changed", Visible(*m_allOrNothing),
                                                             line.number, wanted.problem));
            }
            return;
        }
        ++m_report.counts.at(static_cast<std::size_t>(fate));
        ++m_report.rows;
        m_report.privileged += wanted.isPrivileged ? 1 : 0;
        m_report.lastLine = std::max(m_report.lastLine, line.number);
        m_call.Row(std::int64_t{line.number}, TextValue(std::string(line.noun == nullptr ? "" : line.noun->name)),
                   TextValue(wanted.name), TextValue(std::string(kRowFates.at(static_cast<std::size_t>(fate)))),
                   SentenceValue(wanted.problem));
    }

    Call& m_call;
    CAConnect& m_conn;
    std::optional<std::string> m_allOrNothing;
    bool m_isOneTransaction;
    Sentence m_refusal; // by the engine, of several lines
    const DirectoryImportOptions& m_options;
    LineSource& m_reader;
    ImportReport& m_report;
    std::optional<ItemNames> m_names;                            // read with the first block
    std::string m_itemsState;                                    // when they were read
    std::map<std::string_view, schema::ColumnLengths> m_lengths; // by table
    std::optional<ExportedLine> m_next;
    std::optional<Change> m_change; // of a dry run all the time; none in the caller's
    MadeItems m_made;
};

} // namespace

void ImportDirectory(Call& call, const ImportSource& source, const DirectoryImportOptions& options,
                     ImportReport& report)
{
    LineReader reader(source.in, source.name);
    reader.RequireHead();
    ImportLines(call, reader, source, options, report);
}

void ImportLines(Call& call, LineSource& lines, const ImportSource& source, const DirectoryImportOptions& options,
                 ImportReport& report)
{
    const auto noteIfCutShort = [&] {
        report.cutShort = call.Front().IsStopRequested() ? Sentence(Translatable("stopped by a signal"))
                          : lines.Failed()               ? FillPattern("{} cannot be read", source.name)
                                                         : Sentence();
        return !report.cutShort.IsEmpty();
    };
    if (noteIfCutShort()) {
        return;
    }
    try {
        Importer(call, options, lines, report, std::nullopt).Run(source.rows);
    } catch (const DatabaseError& e) {
        report.Stop(e);
    }
    noteIfCutShort();
}

void StoreLines(Call& call, LineSource& lines, const std::string& name, const DirectoryImportOptions& options)
{
    ImportReport report;
    Importer(call, options, lines, report, name).Run(std::nullopt);
    if (call.Front().IsStopRequested()) {
        throw Error(ErrorCode::failed, "stopped by a signal; nothing was changed");
    }
}

} // namespace management
