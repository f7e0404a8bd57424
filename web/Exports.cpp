#include "web/Exports.h"

#include "management/CsvWriter.h"
#include "management/exchange/Export.h"
#include "web/Problem.h"

#include <fmt/format.h>

#include <array>
#include <sstream>

namespace web {

using namespace management;

namespace {

constexpr std::size_t kLongestExport = std::size_t{256} << 20U;

struct Format {
    std::string_view name;
    std::string_view type;
    std::string_view ending;
    std::string_view head; ///< the first line; empty: the columns
};
constexpr std::array<Format, 3> kFormats = {{
    {"json", "application/x-ndjson", "jsonl", kExportHead},
    {"csv", "text/csv; charset=utf-8", "csv", ""},
    {"ldif", "text/plain; charset=utf-8", "ldif", "version: 1"},
}};

const Format& FormatOf(std::string_view name)
{
    for (const Format& format : kFormats) {
        if (format.name == name) {
            return format;
        }
    }
    throw Error(ErrorCode::invalid, "format is json, csv or ldif");
}

/// Keeps what is exported.
class ExportFrontEnd final : public FrontEnd {
public:
    explicit ExportFrontEnd(JobControl& control) : m_control(control) {}

    void Add(std::string_view text)
    {
        if (m_text.size() + text.size() > kLongestExport) {
            throw Error(ErrorCode::invalid, "this is more than 256 MiB; longer files are for qvadmin export");
        }
        m_text += text;
    }
    [[nodiscard]] std::string TakeText() { return std::move(m_text); }

    void TakeColumns(std::vector<std::string> names) override { AddRow(names); }
    bool TakeRow(const std::vector<Value>& row) override
    {
        AddRow(TextsForPrograms(row));
        return true;
    }
    void ShowProgress(long done, std::optional<long> total) override { m_control.ShowProgress(done, total); }
    [[nodiscard]] bool IsStopRequested() const noexcept override { return m_control.IsStopRequested(); }

    void TakeOutcome(const Outcome& /*outcome*/) override {}
    void Confirm(const Plan& /*plan*/) override {}
    [[nodiscard]] bool CanAsk() const override { return false; }
    void Explain(const Sentence& /*sentence*/) override {}
    [[nodiscard]] bool IsGiven(std::string_view /*secret*/) const override { return false; }
    Secret ObtainSecret(const SecretQuestion& /*question*/) override { return {}; }
    void ShowSecret(const Secret& /*secret*/) override {}
    void StoreSecrets(const std::string& /*file*/, const std::vector<UserSecret>& /*secrets*/) override {}
    std::string ReadText(const std::string& /*name*/) override { return {}; }

private:
    void AddRow(const std::vector<std::string>& texts)
    {
        std::ostringstream out;
        WriteCsvRow(texts, out);
        Add(std::move(out).str());
    }

    JobControl& m_control;
    std::string m_text;
};

} // namespace

ExportOrder::ExportOrder(const JsonValue& body)
    : format(FormatOf(MemberText(body, "format")).name), in(MemberText(body, "in")), base(MemberText(body, "base"))
{
    if (!base.empty() && format != "ldif") {
        throw Error(ErrorCode::invalid, "base is for the format ldif");
    }
}

Response Export(CAConnect& conn, const ExportOrder& order, JobControl& control)
{
    const Format& format = FormatOf(order.format);
    ExportFrontEnd front(control);
    Call call([&conn]() -> CAConnect& { return conn; }, front, {});
    ExportOptions options;
    options.in = order.in.empty() ? std::nullopt : std::optional(order.in);
    options.base = order.base.empty() ? std::nullopt : std::optional(order.base);
    if (!format.head.empty()) {
        front.Add(fmt::format("{}\n", format.head));
    }
    ExportReport report;
    const auto addLine = [&front](const std::string& line) { front.Add(line + "\n"); };
    const auto addEntry = [&front](const std::string& entry) { front.Add(entry); };
    const bool isWhole = order.format == "json"   ? ExportDirectory(call, options, addLine, report)
                         : order.format == "ldif" ? ExportLdif(call, options, addEntry, report)
                                                  : ExportPeople(call, options, report);
    if (!isWhole) {
        throw Error(ErrorCode::failed, "the export was stopped; there is no file");
    }
    return {200,
            std::string(format.type),
            front.TakeText(),
            {{"Content-Disposition", fmt::format("attachment; filename=\"directory.{}\"", format.ending)}}};
}

} // namespace web
