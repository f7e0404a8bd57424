// What docs/security.md and the headers say of texts is what the operations do to them.

#include "tests/escaping/TextCall.h"
#include "tests/support/Lines.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

using testing::ElementsAreArray;
using testing::HasSubstr;

namespace escaping {

namespace {

namespace fs = std::filesystem;

struct Words {
    std::string inTable;  // what the operation escapes
    std::string caller;   // what the caller does to the text
    std::string inHeader; // before the names of the texts, or at a member
};

const Words& WordsFor(const Treatments& treatments)
{
    using enum Treatment;
    static const std::map<Treatments, Words> words = {
        {{asItIs, asItIs, asItIs, asItIs}, {"nothing", "`EscapeLiteral`", "not escaped"}},
        {{quotes, quotes, quotes, quotes}, {"quotes", "`EscapeBackslashes`", "quotes doubled"}},
        {{asItIs, asItIs, asItIs, backslashes},
         {"backslashes on kind 6", "`EscapeQuotes`", "backslashes doubled on kind 6"}},
        {{quotes, quotes, quotes, quotesAndBackslashes},
         {"quotes; on kind 6 backslashes too", "`EscapeBackslashes`, on kind 6 nothing",
          "quotes doubled, on kind 6 backslashes too"}},
        {{notUsed, notUsed, notUsed, asItIs}, {"nothing; used on kind 6 only", "`EscapeLiteral`", "not escaped"}},
        {{notUsed, notUsed, notUsed, notUsed}, {"not in a statement", "nothing", "not in a statement"}},
        {{refused, refused, refused, refused}, {"refuses all but a date", "nothing", "checked to be a date"}},
    };
    return words.at(treatments);
}

// ---- The table ------------------------------------------------------------------------------------------------------

constexpr std::string_view kHeading = "| Operation | Text | The operation doubles | The caller applies |";

/// The texts of a call that are treated alike, in the order of their first.
std::vector<std::pair<Treatments, std::vector<std::string>>> Alike(const ObservedCall& observed)
{
    std::vector<std::pair<Treatments, std::vector<std::string>>> groups;
    for (std::size_t i = 0; i < observed.texts.size(); ++i) {
        const bool isIdleMember =
            observed.call.isRecord && observed.texts[i] == Treatments(kKinds.size(), Treatment::notUsed);
        if (isIdleMember) {
            continue;
        }
        const auto group = std::ranges::find(groups, observed.texts[i], [](const auto& each) { return each.first; });
        if (group == groups.end()) {
            groups.push_back({observed.texts[i], {observed.call.texts[i]}});
        } else {
            group->second.push_back(observed.call.texts[i]);
        }
    }
    return groups;
}

std::vector<std::string> ExpectedRows()
{
    std::vector<std::string> rows;
    for (const ObservedCall& observed : ObserveAll()) {
        for (const auto& [treatments, texts] : Alike(observed)) {
            const Words& words = WordsFor(treatments);
            const std::string row = fmt::format("| `{}` | `{}` | {} | {} |", observed.call.name,
                                                fmt::join(texts, "`, `"), words.inTable, words.caller);
            if (std::ranges::find(rows, row) == rows.end()) { // overloads with equal texts share a row
                rows.push_back(row);
            }
        }
    }
    return rows;
}

std::string Content(const fs::path& file)
{
    std::ifstream in(fs::path(QV_SOURCE_FOLDER) / file);
    EXPECT_TRUE(in.is_open()) << file;
    return {std::istreambuf_iterator<char>(in), {}};
}

TEST(EscapingTable, SaysOfEveryTextWhatTheOperationsDoToIt)
{
    const std::vector<std::string> page = LinesOf(Content("docs/security.md"));
    auto line = std::ranges::find(page, kHeading);
    ASSERT_NE(line, page.end());
    std::vector<std::string> rows;
    for (line += 2; line != page.end() && line->starts_with("|"); ++line) {
        rows.push_back(*line);
    }
    const std::vector<std::string> expected = ExpectedRows();
    EXPECT_THAT(rows, ElementsAreArray(expected)) << "expected:\n" << fmt::format("{}", fmt::join(expected, "\n"));
}

TEST(EscapingTable, CoversTheOperationsThatTheHeaderDeclares)
{
    // Counted in another way than the calls are made: every text parameter that is passed by value.
    const std::string header = Content("basefun/QVBaseFun.h");
    std::size_t declared = 0;
    std::istringstream declarations(header.substr(header.find("class QV_API CQVBaseFun")));
    for (std::string declaration; std::getline(declarations, declaration, ';');) {
        declared += declaration.find("(CAConnect& conn") == std::string::npos ? 0 : TextParameters(declaration).size();
    }
    std::size_t observed = 0;
    for (const ObservedCall& call : ObserveAll()) {
        observed += call.call.isRecord ? 0 : call.texts.size();
    }
    EXPECT_GT(observed, 100U);
    EXPECT_EQ(observed, declared);
}

// ---- The headers ----------------------------------------------------------------------------------------------------

std::string WithoutBreaks(std::string_view text)
{
    std::string joined;
    for (const char c : text) {
        const bool isBlank = c == ' ' || c == '\n';
        if (!isBlank) {
            joined += c;
        } else if (!joined.empty() && joined.back() != ' ') {
            joined += ' ';
        }
    }
    return joined;
}

/// The comment before each operation, by the operation as TextCall::declaration has it.
std::map<std::string, std::string> Comments()
{
    std::map<std::string, std::string> comments;
    std::string comment;
    std::string declaration;
    for (const std::string& line : LinesOf(Content("basefun/QVBaseFun.h"))) {
        const std::size_t slashes = line.find("/// ");
        if (slashes != std::string::npos) {
            comment += " " + line.substr(slashes + 4);
        } else if (line.empty()) {
            comment.clear();
        } else {
            declaration += line + " ";
            if (line.ends_with(';')) {
                const std::size_t name = declaration.rfind(' ', declaration.find('(')) + 1;
                comments[WithoutBreaks(declaration.substr(name, declaration.rfind(';') - name))] = comment;
                comment.clear();
                declaration.clear();
            } else if (!line.ends_with(',')) {
                declaration.clear();
            }
        }
    }
    return comments;
}

/// "@note Not escaped: loginName, name. Quotes doubled: data."
std::string ExpectedNote(const ObservedCall& observed)
{
    std::string note = "@note";
    for (const auto& [treatments, texts] : Alike(observed)) {
        std::string words = WordsFor(treatments).inHeader;
        words.front() = static_cast<char>(words.front() - 'a' + 'A');
        note += fmt::format(" {}: {}.", words, fmt::join(texts, ", "));
    }
    return note;
}

TEST(EscapingHeaders, SayAtEveryOperationWhatItDoesToItsTexts)
{
    const std::map<std::string, std::string> comments = Comments();
    for (const ObservedCall& observed : ObserveAll()) {
        if (!observed.call.isRecord) {
            const auto comment = comments.find(observed.call.declaration);
            ASSERT_NE(comment, comments.end()) << observed.call.declaration;
            EXPECT_THAT(comment->second, HasSubstr(ExpectedNote(observed))) << observed.call.declaration;
        }
    }
}

/// What operations do to a member of a record, each with its word.
using OperationWords = std::vector<std::pair<std::string, std::string>>;

/// By class and member.
std::map<std::string, std::map<std::string, OperationWords>> WordsOfRecords()
{
    std::map<std::string, std::map<std::string, OperationWords>> seen;
    for (const ObservedCall& observed : ObserveAll()) {
        if (!observed.call.isRecord) {
            continue;
        }
        const std::size_t colons = observed.call.name.find("::");
        for (const auto& [treatments, texts] : Alike(observed)) {
            for (const std::string& text : texts) {
                seen[observed.call.name.substr(0, colons)][text].emplace_back(observed.call.name.substr(colons + 2),
                                                                              WordsFor(treatments).inHeader);
            }
        }
    }
    return seen;
}

/// The word that all of them have, or "SaveData: not escaped; ..." for different ones.
std::string RemarkOf(const OperationWords& words)
{
    const std::string& first = words.front().second;
    if (std::ranges::all_of(words, [&first](const auto& each) { return each.second == first; })) {
        return first;
    }
    std::string remark;
    for (const auto& [operation, word] : words) {
        remark += fmt::format("{}{}: {}", remark.empty() ? "" : "; ", operation, word);
    }
    return remark;
}

/// What is said at the members of records, by class and member.
std::map<std::string, std::map<std::string, std::string>> ExpectedRemarks()
{
    std::map<std::string, std::map<std::string, std::string>> remarks;
    for (const auto& [type, members] : WordsOfRecords()) {
        for (const auto& [member, words] : members) {
            remarks[type][member] = RemarkOf(words);
        }
    }
    return remarks;
}

TEST(EscapingHeaders, SayAtEveryMemberOfARecordWhatIsDoneToIt)
{
    std::map<std::string, fs::path> headers;
    for (const char* folder : {"access", "admin", "directory", "documents"}) {
        for (const auto& file : fs::directory_iterator(fs::path(QV_SOURCE_FOLDER) / folder)) {
            if (file.path().extension() == ".h") {
                headers["C" + file.path().stem().string()] = file.path();
            }
        }
    }
    const std::string link = Content("documents/DocLink.h");
    const auto remarks = ExpectedRemarks();
    EXPECT_GE(remarks.size(), 10U);
    for (const auto& [type, members] : remarks) {
        const std::string header = Content(headers.at(type));
        for (const auto& [member, remark] : members) {
            const std::string declaration = "CString " + member + ";";
            const std::string& text = header.find(declaration) == std::string::npos ? link : header;
            const std::size_t at = text.find(declaration);
            ASSERT_NE(at, std::string::npos) << type << "::" << member;
            EXPECT_THAT(text.substr(at, text.find('\n', at) - at), HasSubstr(" ///< " + remark)) << type;
        }
    }
}

} // namespace

} // namespace escaping
