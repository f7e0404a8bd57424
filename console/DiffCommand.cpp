#include "console/FileBuffer.h"
#include "console/LocalCommand.h"
#include "console/OtherUrl.h"
#include "console/Session.h"
#include "console/SourceFile.h"
#include "console/TerminalFrontEnd.h"
#include "console/Translation.h"
#include "management/Text.h"
#include "management/exchange/DirectoryDiff.h"

#include <fmt/format.h>

#include <filesystem>
#include <istream>
#include <set>
#include <system_error>

// What differs between this directory and another, or one in a file.

namespace console {

namespace {

struct DiffInput {
    std::string other;
};

constexpr Param<DiffInput> kDiffParams[] = {
    {"OTHER", &DiffInput::other, Kind::file,
     "the URL of another directory, or a file that `qvadmin export` has written; - for standard input"}};

constexpr Column kDiffColumns[] = {{"noun"}, {"item"}, {"difference"}, {"member"}, {"here"}, {"there"}};

constexpr Command kDiffRow = {
    .path = {"db", "diff"},
    .summary = "what differs between this directory and another one, or one in a file",
    .examples = {"qvadmin db diff sqlite:/srv/directory.db", "qvadmin export | qvadmin -p test db diff -",
                 "qvadmin db diff directory.jsonl -o json"},
    .duration = Duration::longRunning,
    .columns = kDiffColumns,
    .handler = {&InfosOf<kDiffParams>},
};

/// Whether an argument is a file and not the URL of a database.
bool IsFile(const std::string& other)
{
    std::error_code error;
    return other.find(':') == std::string::npos || std::filesystem::exists(other, error);
}

DirectoryLines LinesOf(const Arguments& arguments, const ExportScope& scope, TerminalFrontEnd& frontEnd)
{
    Session session(arguments, Session::Indexes::leftAlone);
    Call call([&]() -> CAConnect& { return session.Directory().Connection(); }, frontEnd, {});
    return DirectoryLines::Of(call, scope, true);
}

DirectoryLines LinesIn(std::istream& in, const std::string& name)
{
    LineReader reader(in, name);
    reader.RequireHead();
    return DirectoryLines::Of(reader);
}

DirectoryLines LinesOfFile(const std::string& path, std::istream& standardInput)
{
    if (path == kStandardStream) {
        return LinesIn(standardInput, "standard input");
    }
    return ReadFile(path, [&path](FileBuffer& buffer) {
        // What cannot be read at all, such as a folder, is refused with the system's reason.
        buffer.sgetc();
        std::istream in(&buffer);
        return LinesIn(in, Visible(path));
    });
}

Sentence Summary(const std::vector<DirectoryDifference>& differences)
{
    std::set<std::pair<std::string_view, std::string>> differing;
    std::array<std::size_t, 3> counts{};
    for (const DirectoryDifference& difference : differences) {
        const bool isCounted = difference.kind != DirectoryDifference::Kind::differs ||
                               differing.emplace(difference.noun->name, difference.name).second;
        counts.at(static_cast<std::size_t>(difference.kind)) += isCounted ? 1 : 0;
    }
    return FillPattern("{} only here, {} only there, {} differ", counts[0], counts[1], counts[2]);
}

Exit Diff(const LocalCall& call)
{
    const auto in = binding::ReadInput<kDiffParams>(call.given);
    const bool isFile = IsFile(in.other);
    Arguments other = call.arguments;
    if (!isFile) {
        RequireOtherUrl(in.other, "the other directory");
        other.db = in.other;
    }
    TerminalFrontEnd frontEnd(kDiffRow, call.given, call.arguments.format, call.terminal);
    const DirectoryLines there = isFile ? LinesOfFile(in.other, call.terminal.in) : LinesOf(other, {}, frontEnd);
    const DirectoryLines here = LinesOf(call.arguments, there.Scope(), frontEnd);
    frontEnd.HideProgress();
    const std::vector<DirectoryDifference> differences = Differences(here, there);
    for (const DirectoryDifference& difference : differences) {
        frontEnd.TakeRow(MakeRow(TextValue(std::string(difference.noun->name)), TextValue(difference.name),
                                 TextValue(std::string(kDifferenceKinds.at(static_cast<std::size_t>(difference.kind)))),
                                 TextValue(std::string(difference.member)), difference.here, difference.there));
    }
    call.terminal.err << Translated(differences.empty() ? Translatable("there is no difference") : Summary(differences))
                      << '\n';
    if (const Sentence left = here.NotCompared(there, in.other); !left.IsEmpty()) {
        call.terminal.err << Translated(left) << '\n';
    }
    Result result;
    result.hasFindings = !differences.empty();
    return frontEnd.Finish(result);
}

constexpr LocalCommand kDiffCommands[] = {{kDiffRow, &Diff}};

} // namespace

std::span<const LocalCommand> DiffCommands() { return kDiffCommands; }

} // namespace console
