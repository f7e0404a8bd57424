#include "console/ImportFrontEnd.h"

#include "console/DatabaseFiles.h"
#include "console/Translation.h"
#include "console/Url.h"
#include "management/Text.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <utility>

namespace console {

namespace {

constexpr std::string_view kFailed = kRowFates[static_cast<std::size_t>(RowFate::failed)];
/// As kRowFates, to follow a number.
constexpr std::array<std::string_view, kRowFates.size()> kFatesInSummary = {
    Translatable("created"), Translatable("updated"), Translatable("unchanged"), Translatable("already there"),
    Translatable("failed")};

} // namespace

ImportFrontEnd::ImportFrontEnd(const LocalCall& call, Files files)
    : TerminalFrontEnd(kNoRow, call.given, Format::csv, call.terminal),
      m_call(call),
      m_files(std::move(files)),
      m_source(m_files.file == kStandardStream ? "standard input" : Visible(m_files.file))
{
    TerminalFrontEnd::ShowProgress(0, std::nullopt); // from here on a signal is a request to stop
}

void ImportFrontEnd::TakeColumns(std::vector<std::string> names)
{
    m_isBegun = true;
    const bool fromStandardInput = m_files.file == kStandardStream;
    std::vector<OutputFile::InUse> inUse = DatabaseFiles(ChooseUrl(m_call.arguments.db));
    if (!fromStandardInput) {
        inUse.push_back({m_files.file, "the file to import"});
    }
    const std::string header = fmt::format("{}", fmt::join(names, ","));
    const std::string path =
        m_files.result.value_or(fromStandardInput ? m_files.file : m_files.file + std::string(kResultSuffix));
    if (path != kStandardStream) {
        m_result = std::make_unique<OutputFile>(OutputFile::Description{path, "--result", header, std::move(inUse)});
        return;
    }
    m_call.terminal.out << header << '\n';
    Flush();
}

bool ImportFrontEnd::TakeRow(const std::vector<Value>& row)
{
    const std::vector<std::string> texts = TextsForPrograms(row);
    WriteCsvRow(texts, Stream());
    if (texts.at(3) == kFailed) {
        HideProgress();
        ErrorsOf(m_call.terminal) << fmt::format("{}:{}: {}\n", m_source, texts.at(0),
                                                 Translated(std::get<SentenceValue>(row.at(4))));
    }
    return true;
}

void ImportFrontEnd::ShowProgress(long done, std::optional<long> total)
{
    if (m_isBegun) {
        Flush();
    }
    TerminalFrontEnd::ShowProgress(done, total);
}

void ImportFrontEnd::Flush()
{
    if (m_result) {
        m_result->Flush();
        return;
    }
    m_call.terminal.out.flush();
    if (!m_call.terminal.out) {
        throw Error(ErrorCode::failed, "cannot write the outcomes to standard output");
    }
}

void ImportFrontEnd::FinishResult()
{
    if (m_result) {
        m_result->Finish();
    }
}

Sentence ImportFrontEnd::Summary(const ImportReport& report) const
{
    if (report.mayHaveDoneMore && report.lastLine == 0) {
        return Translatable("the same file can be imported again");
    }
    if (m_files.dryRun || report.lastLine == 0) {
        return Translatable("nothing was imported");
    }
    return m_result ? FillPattern(
                          "the rows up to line {} are done and listed in {}, and the same file can be imported again",
                          report.lastLine, m_result->Name())
                    : FillPattern("the rows up to line {} are done, and the same file can be imported again",
                                  report.lastLine);
}

Sentence FatesText(const ImportReport& report)
{
    std::vector<Sentence> parts;
    parts.reserve(kFatesInSummary.size());
    for (std::size_t i = 0; i < kFatesInSummary.size(); ++i) {
        parts.push_back(FillPattern("{} {}", report.counts.at(i), Sentence(kFatesInSummary.at(i))));
    }
    return Joined(parts, ", ");
}

} // namespace console
