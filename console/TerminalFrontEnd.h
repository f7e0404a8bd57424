#pragma once

#include "console/CommandLine.h"
#include "console/Interrupt.h"
#include "console/OutputFile.h"
#include "console/Progress.h"
#include "console/Render.h"
#include "console/Terminal.h"
#include "management/JsonWriter.h"

#include <optional>
#include <span>

namespace console {

/// For what is no command of the table, and so shows no columns and changes nothing by its row.
inline constexpr Command kNoRow = {};

/// A command of the table that is run from a terminal or a script: rows and values go to standard output, all else to
/// standard error. Where JSON is asked for, a command that writes gives one object with all that became of it.
class TerminalFrontEnd : public FrontEnd {
public:
    /// All of them outlive this.
    TerminalFrontEnd(const Command& command, const CommandLine& given, Format format, Terminal& terminal);
    TerminalFrontEnd(const TerminalFrontEnd&) = delete;
    TerminalFrontEnd& operator=(const TerminalFrontEnd&) = delete;
    ~TerminalFrontEnd() override { HideProgress(); }

    void TakeColumns(std::vector<std::string> names) override;
    bool TakeRow(const std::vector<Value>& row) override;
    bool TakeTreeRow(const std::vector<Value>& row, const std::string& line) override;
    void TakeOutcome(const Outcome& outcome) override;
    void Confirm(const Plan& plan) override;
    [[nodiscard]] bool CanAsk() const override;
    void Explain(const Sentence& sentence) override;
    [[nodiscard]] bool IsGiven(std::string_view secret) const override;
    Secret ObtainSecret(const SecretQuestion& question) override;
    void ShowSecret(const Secret& secret) override;
    void StoreSecrets(const std::string& file, const std::vector<UserSecret>& secrets) override;
    std::string ReadText(const std::string& name) override;
    void ShowProgress(long done, std::optional<long> total) override;
    [[nodiscard]] bool IsStopRequested() const noexcept override;
    void NoteCommit() noexcept override { *m_terminal.mayHaveChanged = true; }
    /// Takes the line of the progress away, so that something else can be written.
    void HideProgress() noexcept;

    /// Writes what the command gave. @return what the program is to end with. @throws Error that the result has.
    Exit Finish(const Result& result);

private:
    /// Whether rows are wanted after one that has been written.
    bool WantsMore();
    [[nodiscard]] bool WritesObject() const;
    /// Whether rows are written as records are.
    [[nodiscard]] bool WritesRecords() const;
    TableWriter& Writer();
    JsonWriter& Object();
    void WriteObject(const Result& result);
    void WriteFinding(const Finding& finding);
    void WriteResult(const Result& result);
    void FinishSecrets();

    const Command& m_command;
    const CommandLine& m_given;
    Format m_format;
    Terminal& m_terminal;
    TableLook m_look;
    std::optional<TableWriter> m_writer;
    std::vector<std::string> m_names; ///< of the columns of records
    bool m_isFirstRecord = true;
    bool m_isStopped = false;             ///< before all rows had come
    std::optional<OutputFile> m_secrets;  ///< gets its name once they are stored
    std::optional<Interrupt> m_interrupt; ///< from the first progress on
    std::optional<Progress> m_progress;
    std::vector<Outcome> m_outcomes;
    std::optional<JsonWriter> m_object; ///< once begun: it is not ended where the command fails after that
};

} // namespace console
