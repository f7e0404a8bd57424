#pragma once

#include "console/LocalCommand.h"
#include "console/OutputFile.h"
#include "console/SourceFile.h"
#include "console/TerminalFrontEnd.h"
#include "management/import/Import.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace console {

/// Of the result, after the name of the file that is imported.
inline constexpr std::string_view kResultSuffix = ".result.csv";

/// Takes what becomes of the rows of a file: each goes to the result file, and those that fail also to standard error.
class ImportFrontEnd final : public TerminalFrontEnd {
public:
    struct Files {
        std::string file; ///< - for standard input
        bool dryRun = false;
        std::optional<std::string> result; ///< the file with kResultSuffix if not given; - for standard output
    };

    /// @param call  outlives this.
    ImportFrontEnd(const LocalCall& call, Files files);

    /// @throws Error when the result file cannot be made.
    void TakeColumns(std::vector<std::string> names) override;
    bool TakeRow(const std::vector<Value>& row) override;
    void ShowProgress(long done, std::optional<long> total) override;

    /// Whether the rows have begun, and not only what is looked at before them.
    [[nodiscard]] bool IsBegun() const { return m_isBegun; }
    /// All rows are written.
    void FinishResult();
    /// Whether the outcomes go to a file, and not to standard output.
    [[nodiscard]] bool HasResultFile() const { return m_result != nullptr; }
    /// Where the outcomes written so far are, for sentences.
    [[nodiscard]] std::string ResultName() const { return m_result ? m_result->Name() : "standard output"; }
    /// Where the import stands, to end a sentence with.
    [[nodiscard]] Sentence Summary(const ImportReport& report) const;

private:
    [[nodiscard]] std::ostream& Stream() { return m_result ? m_result->Stream() : m_call.terminal.out; }
    void Flush();

    const LocalCall& m_call;
    Files m_files;
    std::string m_source;
    std::unique_ptr<OutputFile> m_result; ///< none for standard output
    bool m_isBegun = false;
};

/// What becomes of rows, for a summary: "3 created, 0 updated, ...".
Sentence FatesText(const ImportReport& report);

} // namespace console
