#include "management/exchange/LineResolver.h"

#include "basefun/ItemTypes.h"
#include "management/Errors.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/documents/Documents.h"
#include "management/users/Fields.h"
#include "management/users/Users.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <limits>
#include <set>

namespace management {

namespace {

void NameBy(ResolvedLine& resolved, const JsonValue& value)
{
    const auto* text = std::get_if<TextValue>(&value);
    const auto* number = std::get_if<std::int64_t>(&value);
    resolved.name += fmt::format("{}{}", resolved.name.empty() ? "" : " ",
                                 text != nullptr     ? std::string(*text)
                                 : number != nullptr ? std::to_string(*number)
                                                     : "");
}

const std::string& TextOf(const JsonMember& given)
{
    const auto* text = std::get_if<TextValue>(&given.value);
    if (text == nullptr) {
        throw Error(ErrorCode::invalid, FillPattern("{} is not a text", given.name));
    }
    return *text;
}

Stored PlainValue(const LineMember& member, const JsonMember& given)
{
    if (std::holds_alternative<std::monostate>(given.value)) {
        return std::nullopt;
    }
    if (!IsNumber(member.kind)) {
        const std::string& text = TextOf(given);
        // SQLite would store anything; the empty text is what other programs have left there.
        if (member.kind == MemberKind::moment && !text.empty() && !BeginsWithDate(text)) {
            throw Error(ErrorCode::invalid,
                        FillPattern("{} {} is not a date ({})", given.name, Quoted(text), "YYYY-MM-DD"));
        }
        return text;
    }
    if (const auto* flag = std::get_if<bool>(&given.value)) {
        return *flag ? "1" : "0";
    }
    const auto* number = std::get_if<std::int64_t>(&given.value);
    if (number == nullptr) {
        throw Error(ErrorCode::invalid, FillPattern("{} is not a whole number", given.name));
    }
    return std::to_string(*number);
}

std::pair<MemberKind, int> TypeOf(const LineMember& member, const JsonMember& given)
{
    if (member.kind == MemberKind::object) {
        return {MemberKind::folder, kFolderClass};
    }
    if (member.kind != MemberKind::item) {
        return {member.kind, 0};
    }
    constexpr std::array<std::pair<std::string_view, std::pair<MemberKind, int>>, 4> kTypes = {
        {{"user", {MemberKind::user, kItemTypeUser}},
         {"group", {MemberKind::group, kItemTypeGroup}},
         {"role", {MemberKind::role, kItemTypeRole}},
         {"view", {MemberKind::view, kItemTypeView}}}};
    const auto* found = std::ranges::find(kTypes, std::string_view(given.part), &decltype(kTypes)::value_type::first);
    if (found == kTypes.end()) {
        throw Error(ErrorCode::invalid, FillPattern("{} has none of user, group, role and view", given.name));
    }
    return found->second;
}

void RequireKeys(const Noun& noun, const ResolvedLine& resolved)
{
    for (const LineMember& member : std::span(noun.members).first(noun.keys)) {
        const auto value = resolved.values.find(member.column);
        const bool hasType = member.typeColumn.empty() || resolved.values.contains(member.typeColumn);
        if (value == resolved.values.end() || !hasType) {
            throw Error(ErrorCode::invalid, FillPattern("the line has no {}", member.name));
        }
    }
    const auto first = resolved.values.find(noun.members.front().column);
    if (first->second.value_or("").empty()) {
        throw Error(ErrorCode::invalid, FillPattern("{} is empty", noun.members.front().name));
    }
}

} // namespace

std::vector<std::string> LoginsIn(std::span<const ExportedLine> lines)
{
    std::set<std::string> logins;
    for (const ExportedLine& line : lines) {
        for (const JsonMember& given : line.object) {
            const auto* text = std::get_if<TextValue>(&given.value);
            const auto isNamed = [&](const LineMember& member) {
                return member.name == given.name &&
                       (member.kind == MemberKind::user || (member.kind == MemberKind::item && given.part == "user") ||
                        member.column == "Col_LoginName");
            };
            if (text != nullptr && line.problem.IsEmpty() && std::ranges::any_of(line.noun->members, isNamed)) {
                logins.insert(*text);
            }
        }
    }
    return {logins.begin(), logins.end()};
}

ResolvedLine LineResolver::Resolve(const ExportedLine& line) const
{
    ResolvedLine resolved;
    resolved.problem = line.problem;
    if (!line.problem.IsEmpty()) {
        return resolved;
    }
    try {
        for (const JsonMember& given : line.object) {
            Take(resolved, *line.noun, given);
        }
        RequireKeys(*line.noun, resolved);
    } catch (const Error& e) {
        resolved.problem = e.Why();
    }
    return resolved;
}

void LineResolver::Take(ResolvedLine& resolved, const Noun& noun, const JsonMember& given) const
{
    const auto member = std::ranges::find(noun.members, given.name, &LineMember::name);
    if (member == noun.members.end()) {
        throw Error(ErrorCode::invalid, FillPattern("a {} has no member {}", noun.name, Quoted(given.name)));
    }
    if (static_cast<std::size_t>(member - noun.members.begin()) < noun.keys) {
        NameBy(resolved, given.value);
    }
    if (noun.item != MemberKind::text && member == noun.members.begin()) {
        resolved.values[member->column] = ParseItemName(noun.item, TextOf(given)).name;
        resolved.id = m_names.Find(noun.item, TextOf(given));
    } else if (IsReference(member->kind)) {
        TakeReference(resolved, *member, given);
    } else {
        if (!given.part.empty()) {
            throw Error(ErrorCode::invalid, FillPattern("{} is an object", given.name));
        }
        resolved.values[member->column] = PlainValue(*member, given);
    }
}

void LineResolver::TakeReference(ResolvedLine& resolved, const LineMember& member, const JsonMember& given) const
{
    if (std::holds_alternative<std::monostate>(given.value) && given.part.empty()) {
        resolved.values[member.column] = "0";
        return;
    }
    const bool isObject = member.kind == MemberKind::object && given.part != "folder";
    if (isObject) {
        const auto* number = std::get_if<std::int64_t>(&given.value);
        const bool isInRange = number != nullptr && *number >= 0 && *number <= std::numeric_limits<int>::max();
        if (!isInRange || (given.part != "class" && given.part != "id")) {
            throw Error(ErrorCode::invalid, FillPattern("{} is neither a folder nor a class and an id", given.name));
        }
        resolved.values[given.part == "class" ? member.typeColumn : member.column] = std::to_string(*number);
        return;
    }
    const auto [kind, type] = TypeOf(member, given);
    if (!member.typeColumn.empty()) {
        resolved.values[member.typeColumn] = std::to_string(type);
    }
    resolved.values[member.column] =
        std::to_string(kind == MemberKind::user ? FindUser(TextOf(given)) : FindItem(kind, TextOf(given)));
}

int LineResolver::FindUser(const std::string& login) const
{
    const std::span<const UserBlock::User> users = m_users.Find(NameKey(login));
    if (users.empty()) {
        throw Error(ErrorCode::notFound, FillPattern("there is no user {}", Quoted(login)));
    }
    const auto exact =
        std::ranges::find_if(users, [&](const UserBlock::User& user) { return user.key.login == login; });
    if (exact == users.end() && users.size() > 1) {
        throw Error(ErrorCode::conflict, FillPattern("{} may be {} or {}, which differ in case only", Quoted(login),
                                                     Named(users[0].key), Named(users[1].key)));
    }
    return exact == users.end() ? users.front().key.id : exact->key.id;
}

int LineResolver::FindItem(MemberKind kind, const std::string& name) const
{
    const std::optional<int> id = m_names.Find(kind, name);
    if (!id) {
        constexpr std::array<std::string_view, 6> kNames = {"view", "group", "role", "plan", "document root", "folder"};
        throw Error(ErrorCode::notFound,
                    FillPattern("there is no {} {}",
                                kNames.at(static_cast<std::size_t>(kind) - static_cast<std::size_t>(MemberKind::view)),
                                Quoted(name)));
    }
    return *id;
}

} // namespace management
