#include "console/TerminalFrontEnd.h"

#include "console/TextFile.h"
#include "console/Translation.h"
#include "management/CommandData.h"
#include "management/Text.h"

#include <fmt/format.h>

#include <filesystem>
#include <system_error>
#include <utility>

namespace console {

namespace {

/// What a quick y may remove; for more, who answers has to have read the number.
constexpr std::size_t kMostForYes = 20;

} // namespace

TerminalFrontEnd::TerminalFrontEnd(const Command& command, const CommandLine& given, Format format, Terminal& terminal)
    : m_command(command),
      m_given(given),
      m_format(format),
      m_terminal(terminal),
      m_look{terminal.width, terminal.outHasColor}
{
}

bool TerminalFrontEnd::WritesObject() const { return m_command.effect != Effect::read && IsJson(m_format); }

TableWriter& TerminalFrontEnd::Writer()
{
    if (!m_writer) {
        std::vector<std::string> names;
        for (const Column& column : m_command.columns) {
            names.push_back(m_format == Format::table ? TranslatedColumn(column.name) : std::string(column.name));
        }
        m_writer.emplace(m_format, std::move(names), m_terminal.out, m_look);
    }
    return *m_writer;
}

bool TerminalFrontEnd::WritesRecords() const { return m_command.areRecords && m_format == Format::table; }

void TerminalFrontEnd::TakeColumns(std::vector<std::string> names)
{
    if (WritesRecords()) {
        m_names = std::move(names);
        return;
    }
    m_writer.emplace(m_format, std::move(names), m_terminal.out, m_look);
}

bool TerminalFrontEnd::TakeRow(const std::vector<Value>& row)
{
    HideProgress();
    if (!WritesRecords()) {
        return Writer().Write(row) && WantsMore();
    }
    Record record;
    for (std::size_t i = 0; i < row.size(); ++i) {
        record.emplace_back(m_names[i], row[i]);
    }
    m_terminal.out << (std::exchange(m_isFirstRecord, false) ? "" : "\n");
    Render(m_format, record, m_terminal.out);
    return !m_terminal.out.fail() && WantsMore();
}

bool TerminalFrontEnd::WantsMore()
{
    m_isStopped = m_terminal.isStopped();
    return !m_isStopped;
}

bool TerminalFrontEnd::TakeTreeRow(const std::vector<Value>& row, const std::string& line)
{
    if (m_format != Format::table) {
        return TakeRow(row);
    }
    m_terminal.out << line << '\n';
    return !m_terminal.out.fail() && WantsMore();
}

void TerminalFrontEnd::TakeOutcome(const Outcome& outcome)
{
    HideProgress();
    if (WritesObject()) {
        m_outcomes.push_back(outcome);
    } else {
        m_terminal.err << Translated(m_given.options.dryRun ? FillPattern("dry run: {}", outcome.sentence)
                                                            : outcome.sentence)
                       << '\n';
    }
}

void TerminalFrontEnd::Confirm(const Plan& plan)
{
    const bool isRefused = !plan.question.IsEmpty() && !CanAsk();
    // A program reads one object from standard error, the refusal.
    if (!isRefused || !WritesObject()) {
        for (const Sentence& line : plan.lines) {
            m_terminal.err << Translated(line) << '\n';
        }
    }
    if (plan.question.IsEmpty()) {
        return;
    }
    if (isRefused) {
        throw Error(ErrorCode::confirmationRequired, FillPattern("{}; --yes goes on without asking", plan.nothingDone));
    }
    const bool isMuch = plan.removed > kMostForYes;
    m_terminal.err << Translated(isMuch ? FillPattern("{0} This removes {1} things; type {1} to go on: ", plan.question,
                                                      plan.removed)
                                        : FillPattern("{} [y/N] ", plan.question))
                   << std::flush;
    std::string answer;
    std::getline(m_terminal.in, answer);
    const bool isYes =
        isMuch ? answer == std::to_string(plan.removed) : answer == "y" || answer == "Y" || answer == "yes";
    if (!isYes) {
        throw Error(ErrorCode::confirmationRequired, plan.nothingDone);
    }
}

bool TerminalFrontEnd::CanAsk() const { return console::CanAsk(m_terminal); }

void TerminalFrontEnd::Explain(const Sentence& sentence) { m_terminal.err << Translated(sentence) << '\n'; }

bool TerminalFrontEnd::IsGiven(std::string_view secret) const
{
    const auto found = m_given.secrets.find(secret);
    return found != m_given.secrets.end() && found->second.IsGiven();
}

Secret TerminalFrontEnd::ObtainSecret(const SecretQuestion& question)
{
    const auto found = m_given.secrets.find(question.name);
    return console::ObtainSecret(found == m_given.secrets.end() ? SecretSource() : found->second, question, m_terminal);
}

void TerminalFrontEnd::ShowSecret(const Secret& secret)
{
    if (WritesObject()) {
        Object().WriteMember("password", TextValue(std::string(secret.View())));
    } else {
        m_terminal.out << secret.View() << '\n';
    }
    m_terminal.out.flush();
    if (!m_terminal.out) {
        throw Error(ErrorCode::failed, "the password that was made up cannot be printed; nothing was changed");
    }
}

void TerminalFrontEnd::StoreSecrets(const std::string& file, const std::vector<UserSecret>& secrets)
{
    std::error_code error;
    if (std::filesystem::symlink_status(file, error).type() != std::filesystem::file_type::not_found) {
        throw Error(
            ErrorCode::conflict,
            FillPattern("{} is there already; nothing was changed, name a new file with --result", Visible(file)));
    }
    m_secrets.emplace(OutputFile::Description{file, "--result", "login,password", {}});
    for (const UserSecret& secret : secrets) {
        WriteCsvRow({secret.login, std::string(secret.secret.View())}, m_secrets->Stream());
    }
    m_secrets->Flush();
}

std::string TerminalFrontEnd::ReadText(const std::string& name) { return ReadTextFile(name, m_terminal.in); }

void TerminalFrontEnd::FinishSecrets()
{
    try {
        m_secrets->Finish();
    } catch (const Error& e) {
        throw Error(e.Code(), FillPattern("{}; the passwords are set, and in {}", e.Why(), m_secrets->Name()));
    }
}

void TerminalFrontEnd::ShowProgress(long done, std::optional<long> total)
{
    if (!m_progress) {
        m_interrupt.emplace();
        m_progress.emplace(m_terminal);
    }
    m_progress->Show(done, total);
}

void TerminalFrontEnd::HideProgress() noexcept
{
    if (m_progress) {
        m_progress->Clear();
    }
}

bool TerminalFrontEnd::IsStopRequested() const noexcept { return m_interrupt && Interrupt::Requested(); }

JsonWriter& TerminalFrontEnd::Object()
{
    if (!m_object) {
        m_object.emplace(m_terminal.out,
                         m_format == Format::json ? JsonWriter::Layout::indented : JsonWriter::Layout::line);
        m_object->BeginObject();
        m_object->WriteMember("v", std::int64_t{1});
    }
    return *m_object;
}

void TerminalFrontEnd::WriteObject(const Result& result)
{
    JsonWriter& json = Object();
    json.WriteMember("changed", result.isChanged);
    json.WriteMember("dry_run", m_given.options.dryRun);
    if (result.value) {
        json.WriteMember("value", *result.value);
    }
    json.WriteMembers(result.record);
    WriteOutcomes(json, m_outcomes);
    json.End();
    m_terminal.out << '\n';
}

void TerminalFrontEnd::WriteFinding(const Finding& finding)
{
    // The sentences are with the rows where people read them, and beside them where programs read the rows.
    std::ostream& sentences = m_format == Format::table ? m_terminal.out : m_terminal.err;
    sentences << Translated(finding.sentence) << '\n';
    if (m_format != Format::table || !finding.rows.rows.empty()) {
        Render(m_format, finding.rows, m_terminal.out, m_look);
    }
    for (const Sentence& note : finding.notes) {
        sentences << Translated(note) << '\n';
    }
}

void TerminalFrontEnd::WriteResult(const Result& result)
{
    // Without rows, a table still has its header, and a drawn tree nothing.
    const bool reads = m_command.effect == Effect::read || result.isRead;
    const bool isTable =
        m_writer || (reads && !m_command.columns.empty() && !(m_command.isTree && m_format == Format::table));
    if (result.finding && m_format != Format::json) {
        WriteFinding(*result.finding);
    } else if (!result.record.empty()) {
        Render(m_format, result.record, result.parts, m_terminal.out, m_look);
    } else if (result.value) {
        Render(m_format, *result.value, m_terminal.out);
    } else if (result.verdict) {
        m_terminal.out << (*result.verdict ? "true\n" : "false\n");
    } else if (isTable) {
        Writer().Finish();
    }
}

Exit TerminalFrontEnd::Finish(const Result& result)
{
    HideProgress();
    if (m_isStopped) {
        throw Error(ErrorCode::failed, "interrupted; there may be more rows");
    }
    if (m_secrets) {
        FinishSecrets();
    }
    if (WritesObject() && !result.isRead) {
        WriteObject(result);
    } else if (m_given.options.dryRun && !result.isRead) {
        m_terminal.err << Translated("dry run: nothing was changed") << '\n';
    } else {
        WriteResult(result);
    }
    if (result.error) {
        throw Error(*result.error);
    }
    if (result.verdict && !*result.verdict) {
        return Exit::notFound;
    }
    const bool isTrial = m_given.options.dryRun && !result.isRead;
    return result.hasFindings || (isTrial && result.isChanged) ? Exit::checkFailed : Exit::done;
}

} // namespace console
