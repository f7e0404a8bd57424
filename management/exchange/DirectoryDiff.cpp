#include "management/exchange/DirectoryDiff.h"

#include "management/Names.h"
#include "management/Text.h"
#include "management/audit/AuditedRow.h"
#include "management/exchange/Export.h"

#include <fmt/format.h>

#include <algorithm>
#include <functional>
#include <iterator>
#include <span>
#include <utility>

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
                                   ValueOf(here, member, own), ValueOf(there, member, other), &here, &there});
        }
    }
}

/// Lines of one key that no line on the other side equals, and as many pairs of them as there are.
struct Unequal {
    std::vector<const ExportedLine*> here;
    std::vector<const ExportedLine*> there;
    std::size_t pairs = 0;
};

Unequal UnequalLines(const Lines& here, const Lines& there)
{
    Unequal lines;
    std::ranges::transform(here, std::back_inserter(lines.here), [](const ExportedLine& line) { return &line; });
    std::ranges::transform(there, std::back_inserter(lines.there), [](const ExportedLine& line) { return &line; });
    std::erase_if(lines.here, [&lines](const ExportedLine* line) {
        const auto same = std::ranges::find_if(lines.there, [line](const ExportedLine* other) {
            std::vector<DirectoryDifference> none;
            AddDiffering(*line, *other, none);
            return none.empty();
        });
        const bool isFound = same != lines.there.end();
        if (isFound) {
            lines.there.erase(same);
        }
        return isFound;
    });
    lines.pairs = std::min(lines.here.size(), lines.there.size());
    return lines;
}

/// @param isLacking  whether a line that is only here makes a difference.
template <class IsLacking>
void AddUnequal(const Unequal& lines, IsLacking isLacking, std::vector<DirectoryDifference>& differences)
{
    using Kind = DirectoryDifference::Kind;
    for (std::size_t i = 0; i < lines.pairs; ++i) {
        AddDiffering(*lines.here[i], *lines.there[i], differences);
    }
    for (const ExportedLine* line : std::span(lines.here).subspan(lines.pairs)) {
        if (isLacking(line)) {
            differences.push_back({line->noun, NameOf(*line), Kind::onlyHere, {}, {}, {}, line, nullptr});
        }
    }
    for (const ExportedLine* line : std::span(lines.there).subspan(lines.pairs)) {
        differences.push_back({line->noun, NameOf(*line), Kind::onlyThere, {}, {}, {}, nullptr, line});
    }
}

/// Whether a name is that of a view or group, or of a group below it. @param top  as the first line of a part has it.
bool IsAtOrBelow(const std::string& name, const std::string& top)
{
    const std::string key = NameKey(name);
    const std::string topKey = NameKey(top);
    return key == topKey || key.starts_with(topKey + "/");
}

} // namespace

DirectoryLines DirectoryLines::Of(Call& call, const ExportScope& scope, bool atOneMoment)
{
    DirectoryLines lines;
    ExportOptions options;
    options.withPasswords = true;
    options.atOneMoment = atOneMoment;
    const auto read = [&](const std::function<void(ExportedLine)>& take) {
        ExportReport report;
        const bool isDone = ExportLines(
            call, options,
            [&take](const Noun& noun, JsonObject object) {
                object.erase(object.begin());
                take({.noun = &noun, .object = std::move(object)});
            },
            report);
        if (!isDone) {
            throw Error(ErrorCode::failed, "stopped by a signal");
        }
    };
    read([&lines](ExportedLine line) { lines.Add(std::move(line)); });
    if (!scope.in) {
        return lines;
    }
    options.in = scope.in;
    try {
        read([&lines](const ExportedLine& line) { lines.m_part.insert(KeyOf(line)); });
    } catch (const Error& e) {
        if (e.Code() != ErrorCode::notFound) {
            throw;
        } // and nothing is in the part
    }
    return lines;
}

DirectoryLines DirectoryLines::Of(LineReader& reader)
{
    DirectoryLines lines;
    lines.m_isFile = true;
    lines.m_scope = reader.Scope();
    lines.m_nouns.insert(lines.m_scope.nouns.begin(), lines.m_scope.nouns.end());
    while (std::optional<ExportedLine> line = reader.Next()) {
        if (!line->problem.IsEmpty()) {
            throw Error(ErrorCode::invalid, FillPattern("{}:{}: {}", reader.Name(), line->number, line->problem));
        }
        lines.m_nouns.insert(line->noun);
        lines.Add(std::move(*line));
    }
    if (reader.Failed()) {
        throw Error(ErrorCode::failed, FillPattern("{} cannot be read", reader.Name()));
    }
    return lines;
}

DirectoryLines::Key DirectoryLines::KeyOf(const ExportedLine& line)
{
    return {line.noun - Nouns().data(), NameKey(NameOf(line))};
}

void DirectoryLines::Add(ExportedLine line)
{
    Key key = KeyOf(line);
    m_lines[std::move(key)].push_back(std::move(line));
}

bool DirectoryLines::Covers(const ExportedLine& line, const DirectoryLines& here) const
{
    return !m_isFile ||
           (m_nouns.contains(line.noun) && (!m_scope.in || (here.m_part.contains(KeyOf(line)) && IsOfPart(line))));
}

bool DirectoryLines::IsOfPart(const ExportedLine& line) const
{
    const MemberKind item = line.noun->item;
    if (item != MemberKind::text || line.noun->name == "user") {
        return item == MemberKind::group && IsAtOrBelow(NameOf(line), *m_scope.in) &&
               NameKey(NameOf(line)) != NameKey(*m_scope.in);
    }
    return std::ranges::any_of(line.object, [this](const JsonMember& member) {
        const std::string text = TextOf(member.value);
        const bool isUser = member.part == "user" || member.name == "user";
        return isUser ? m_lines.contains({0, NameKey(text)})
                      : IsAtOrBelow(member.part == "view" ? "/" + text : text, *m_scope.in);
    });
}

std::size_t DirectoryLines::CountCovered(const DirectoryLines& file) const
{
    std::size_t count = 0;
    for (const auto& [key, lines] : m_lines) {
        count += file.Covers(lines.front(), *this) ? lines.size() : 0;
    }
    return count;
}

Sentence DirectoryLines::NotCompared(const DirectoryLines& file, std::string_view name) const
{
    std::map<std::ptrdiff_t, std::size_t> counts;
    for (const auto& [key, lines] : m_lines) {
        const bool isLeft = file.m_isFile && file.m_scope.nouns.empty() && (!file.m_scope.in || m_part.contains(key)) &&
                            !file.m_nouns.contains(lines.front().noun) && !HasSecretSetting(lines.front());
        if (isLeft) {
            counts[key.first] += lines.size();
        }
    }
    std::string list;
    for (const auto& [noun, count] : counts) {
        const Noun& kind = Nouns()[static_cast<std::size_t>(noun)];
        list += fmt::format("{}{} {}", list.empty() ? "" : ", ", count, count == 1 ? kind.name : kind.plural);
    }
    return list.empty() ? Sentence()
                        : FillPattern("left alone, since {} has no line of that kind: {}", Visible(name), list);
}

const std::vector<ExportedLine>& DirectoryLines::LinesAbout(const ExportedLine& line) const
{
    return m_lines.at(KeyOf(line));
}

bool DirectoryLines::Lacks(const ExportedLine& line, const DirectoryLines& here) const
{
    return Covers(line, here) && !(m_isFile && HasSecretSetting(line));
}

std::vector<DirectoryDifference> Differences(const DirectoryLines& here, const DirectoryLines& there)
{
    static const Lines kNone;
    std::vector<DirectoryDifference> differences;
    auto left = here.m_lines.begin();
    auto right = there.m_lines.begin();
    while (left != here.m_lines.end() || right != there.m_lines.end()) {
        const bool isLeft = right == there.m_lines.end() || (left != here.m_lines.end() && left->first <= right->first);
        const bool isRight =
            left == here.m_lines.end() || (right != there.m_lines.end() && right->first <= left->first);
        const auto isLacking = [&](const ExportedLine* line) { return there.Lacks(*line, here); };
        AddUnequal(UnequalLines(isLeft ? left->second : kNone, isRight ? right->second : kNone), isLacking,
                   differences);
        left = isLeft ? std::next(left) : left;
        right = isRight ? std::next(right) : right;
    }
    return differences;
}

} // namespace management
