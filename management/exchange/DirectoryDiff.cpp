#include "management/exchange/DirectoryDiff.h"

#include "management/Names.h"
#include "management/audit/AuditedRow.h"
#include "management/exchange/Export.h"
#include "management/exchange/LineReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>
#include <span>
#include <sstream>

namespace management {

namespace {

constexpr const char* kHidden = "***";

using Lines = std::vector<ExportedLine>;

std::string TextOf(const JsonValue& value)
{
    if (const auto* text = std::get_if<TextValue>(&value)) {
        return *text;
    }
    const auto* number = std::get_if<std::int64_t>(&value);
    return number == nullptr ? "" : std::to_string(*number);
}

/// What a line has for a member, which several members of an inner object may be.
std::vector<const JsonMember*> FindAll(const JsonObject& object, std::string_view name)
{
    std::vector<const JsonMember*> found;
    for (const JsonMember& member : object) {
        if (member.name == name) {
            found.push_back(&member);
        }
    }
    return found;
}

/// Members as people write them: user:amy, or a value by itself.
std::string TextOf(const std::vector<const JsonMember*>& members)
{
    std::string text;
    for (const JsonMember* member : members) {
        text += fmt::format("{}{}{}{}", text.empty() ? "" : ",", member->part, member->part.empty() ? "" : ":",
                            TextOf(member->value));
    }
    return text;
}

std::string NameOf(const ExportedLine& line)
{
    std::string name;
    for (const LineMember& key : std::span(line.noun->members).first(line.noun->keys)) {
        name += (name.empty() ? "" : " ") + TextOf(FindAll(line.object, key.name));
    }
    return name;
}

bool IsSecret(const ExportedLine& line, const LineMember& member)
{
    if (member.kind != MemberKind::setting) {
        return member.kind == MemberKind::secret || member.kind == MemberKind::secretNumber;
    }
    return audit::IsSecretSetting(TextOf(FindAll(line.object, "name")));
}

bool HasSecretSetting(const ExportedLine& line)
{
    return std::ranges::any_of(line.noun->members, [&line](const LineMember& member) {
        return member.kind == MemberKind::setting && IsSecret(line, member);
    });
}

Value ValueOf(const ExportedLine& line, const LineMember& member, const std::vector<const JsonMember*>& found)
{
    if (IsSecret(line, member)) {
        return TextValue(kHidden);
    }
    if (found.size() == 1 && found.front()->part.empty()) {
        return std::visit([](const auto& value) { return Value(value); }, found.front()->value);
    }
    return TextValue(TextOf(found));
}

bool AreSame(const LineMember& member, const std::vector<const JsonMember*>& a, const std::vector<const JsonMember*>& b)
{
    return std::ranges::equal(a, b, [&member](const JsonMember* left, const JsonMember* right) {
        return left->part == right->part &&
               (IsReference(member.kind) ? NameKey(TextOf(left->value)) == NameKey(TextOf(right->value))
                                         : left->value == right->value);
    });
}

/// Adds the members in which two lines about the same differ.
void AddDiffering(const ExportedLine& here, const ExportedLine& there, std::vector<DirectoryDifference>& differences)
{
    for (const LineMember& member : std::span(here.noun->members).subspan(here.noun->keys)) {
        const std::vector<const JsonMember*> own = FindAll(here.object, member.name);
        const std::vector<const JsonMember*> other = FindAll(there.object, member.name);
        if (!own.empty() && !other.empty() && !AreSame(member, own, other)) {
            differences.push_back({here.noun, NameOf(here), DirectoryDifference::Kind::differs, member.name,
                                   ValueOf(here, member, own), ValueOf(there, member, other)});
        }
    }
}

/// Adds what differs between the lines of one key.
void Compare(const Lines& here, const Lines& there, bool lacksSecrets, std::vector<DirectoryDifference>& differences)
{
    std::vector<const ExportedLine*> left;
    std::vector<const ExportedLine*> right;
    std::ranges::transform(here, std::back_inserter(left), [](const ExportedLine& line) { return &line; });
    std::ranges::transform(there, std::back_inserter(right), [](const ExportedLine& line) { return &line; });
    // Those that are equal come together first.
    std::erase_if(left, [&right](const ExportedLine* line) {
        const auto same = std::ranges::find_if(right, [line](const ExportedLine* other) {
            std::vector<DirectoryDifference> none;
            AddDiffering(*line, *other, none);
            return none.empty();
        });
        const bool isFound = same != right.end();
        if (isFound) {
            right.erase(same);
        }
        return isFound;
    });
    const std::size_t pairs = std::min(left.size(), right.size());
    for (std::size_t i = 0; i < pairs; ++i) {
        AddDiffering(*left[i], *right[i], differences);
    }
    for (const ExportedLine* line : std::span(left).subspan(pairs)) {
        if (!lacksSecrets || !HasSecretSetting(*line)) {
            differences.push_back({line->noun, NameOf(*line), DirectoryDifference::Kind::onlyHere});
        }
    }
    for (const ExportedLine* line : std::span(right).subspan(pairs)) {
        differences.push_back({line->noun, NameOf(*line), DirectoryDifference::Kind::onlyThere});
    }
}

} // namespace

DirectoryLines DirectoryLines::Of(Call& call)
{
    DirectoryLines lines;
    ExportOptions options;
    options.withPasswords = true;
    ExportReport report;
    const bool isDone = ExportDirectory(
        call, options, [&lines](const std::string& text) { lines.Add(ParseExportedLine(text, 0)); }, report);
    if (!isDone) {
        throw Error(ErrorCode::failed, "stopped by a signal");
    }
    return lines;
}

DirectoryLines DirectoryLines::Of(LineSource& source, const std::string& name)
{
    DirectoryLines lines;
    while (std::optional<ExportedLine> line = source.Next()) {
        if (!line->problem.empty()) {
            throw Error(ErrorCode::invalid, FillPattern("{}:{}: {}", name, line->number, line->problem));
        }
        lines.Add(std::move(*line));
    }
    if (source.Failed()) {
        throw Error(ErrorCode::failed, FillPattern("{} cannot be read", name));
    }
    return lines;
}

void DirectoryLines::Add(ExportedLine line)
{
    const std::ptrdiff_t noun = line.noun - Nouns().data();
    std::string key = NameKey(NameOf(line));
    m_lines[{noun, std::move(key)}].push_back(std::move(line));
}

std::vector<DirectoryDifference> Differences(const DirectoryLines& here, const DirectoryLines& there, bool lacksSecrets)
{
    static const Lines kNone;
    std::vector<DirectoryDifference> differences;
    auto left = here.m_lines.begin();
    auto right = there.m_lines.begin();
    while (left != here.m_lines.end() || right != there.m_lines.end()) {
        const bool isLeft = right == there.m_lines.end() || (left != here.m_lines.end() && left->first <= right->first);
        const bool isRight =
            left == here.m_lines.end() || (right != there.m_lines.end() && right->first <= left->first);
        Compare(isLeft ? left->second : kNone, isRight ? right->second : kNone, lacksSecrets, differences);
        left = isLeft ? std::next(left) : left;
        right = isRight ? std::next(right) : right;
    }
    return differences;
}

} // namespace management
