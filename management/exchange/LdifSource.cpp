#include "management/exchange/LdifSource.h"

#include "basefun/ItemTypes.h"
#include "management/Errors.h"
#include "management/Names.h"
#include "management/Text.h"
#include "management/organisation/Organisation.h"
#include "platform/CodePage.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>
#include <tuple>
#include <utility>

namespace management {

namespace {

/// Fields of users, and the attributes that they are taken from: the first one that there is.
constexpr std::pair<std::string_view, std::array<std::string_view, 2>> kFields[] = {
    {"name", {"displayname", "cn"}},
    {"email", {"mail", ""}},
    {"mobile", {"mobile", ""}},
    {"title", {"title", ""}},
    {"company", {"o", ""}},
    {"office_phone", {"telephonenumber", ""}},
    {"office_fax", {"facsimiletelephonenumber", ""}},
    {"office_address", {"street", "postaladdress"}},
    {"office_postcode", {"postalcode", ""}},
    {"home_phone", {"homephone", ""}},
    {"home_address", {"homepostaladdress", ""}},
    {"description", {"description", ""}},
};

/// Whether the values of an attribute go into the directory.
bool IsTaken(std::string_view attribute)
{
    constexpr std::string_view kOthers[] = {"uid", "samaccountname", "member", "uniquemember"};
    return std::ranges::find(kOthers, attribute) != std::end(kOthers) ||
           std::ranges::any_of(kFields, [attribute](const auto& field) {
               return std::ranges::find(field.second, attribute) != field.second.end();
           });
}

void RequireText(std::string_view name, std::string_view value)
{
    if (value.find('\0') != std::string_view::npos) {
        throw Error(ErrorCode::invalid, FillPattern("{} holds a NUL byte", name));
    }
    if (!platform::IsValidUtf8(value)) {
        throw Error(ErrorCode::invalid, FillPattern("{} is not UTF-8", name));
    }
}

/// @throws Error (invalid) for an entry of which something cannot be stored.
void RequireStorable(const LdifEntry& entry)
{
    RequireText("dn", entry.dn);
    for (const auto& [name, value] : entry.attributes) {
        if (IsTaken(name)) {
            RequireText(name, value);
        }
    }
    const auto missing = std::ranges::find_if(entry.elsewhere, IsTaken);
    if (missing != entry.elsewhere.end()) {
        throw Error(ErrorCode::invalid, FillPattern("the value of {} is in another file", *missing));
    }
}

bool IsOf(const LdifEntry& entry, std::string_view objectClass)
{
    return std::ranges::any_of(entry.attributes, [objectClass](const auto& attribute) {
        return attribute.first == "objectclass" && SameName(attribute.second, objectClass);
    });
}

std::string KeyOf(const std::vector<RelativeName>& dn)
{
    std::string key;
    for (const RelativeName& name : dn) {
        key += name.attribute + "=" + NameKey(name.value) + '\0';
    }
    return key;
}

JsonMember Text(std::string name, std::string value) { return {std::move(name), {}, TextValue(std::move(value))}; }

} // namespace

LdifSource::LdifSource(Open open, LdifOptions options) : m_open(std::move(open)), m_options(std::move(options)) {}

LdifSource::Class LdifSource::ClassOf(const LdifEntry& entry)
{
    const auto isAnyOf = [&entry](std::initializer_list<std::string_view> classes) {
        return std::ranges::any_of(classes, [&entry](std::string_view name) { return IsOf(entry, name); });
    };
    return isAnyOf({"computer"})                                                  ? Class::other
           : isAnyOf({"person", "inetOrgPerson", "organizationalPerson", "user"}) ? Class::person
           : isAnyOf({"organizationalUnit"})                                      ? Class::unit
           : isAnyOf({"groupOfNames", "groupOfUniqueNames", "group"})             ? Class::group
                                                                                  : Class::other;
}

/// The units that an entry is in, or is.
LdifSource::Names LdifSource::UnitsOf(const std::vector<RelativeName>& dn, bool isUnit) const
{
    Names names;
    if (m_options.view) {
        names.push_back(*m_options.view);
    }
    for (std::size_t i = dn.size(); i > (isUnit ? 0U : 1U); --i) {
        if (dn[i - 1].attribute == "ou") {
            names.push_back(dn[i - 1].value);
        }
    }
    return names;
}

std::string LdifSource::PathOf(const Names& names)
{
    std::string path;
    for (const std::string& name : names) {
        path += "/" + PathEscaped(name);
    }
    return path;
}

std::string LdifSource::LoginOf(const LdifEntry& entry)
{
    const std::string* login = entry.Find("uid") != nullptr ? entry.Find("uid") : entry.Find("samaccountname");
    return login == nullptr ? "" : *login;
}

std::optional<ExportedLine> LdifSource::Next()
{
    while (m_pending.empty() && m_pass != Pass::done && !m_failed) {
        if (!m_reader) {
            m_reader.emplace(m_open());
        }
        if (const std::optional<LdifEntry> entry = m_reader->Next()) {
            TakeEntry(*entry);
            continue;
        }
        m_failed = m_reader->Failed();
        m_reader.reset();
        if (m_pass == Pass::units) {
            EndUnits();
        }
        m_pass = static_cast<Pass>(static_cast<int>(m_pass) + 1);
    }
    if (m_pending.empty() || m_failed) {
        return std::nullopt;
    }
    ExportedLine line = std::move(m_pending.front());
    m_pending.pop_front();
    return line;
}

void LdifSource::TakeEntry(const LdifEntry& entry)
{
    const bool isFirst = m_pass == Pass::units;
    try {
        if (!entry.problem.IsEmpty()) {
            throw Error(ErrorCode::invalid, entry.problem);
        }
        const Class kind = ClassOf(entry);
        if (kind == Class::other) {
            m_leftOut += isFirst ? 1 : 0;
            return;
        }
        RequireStorable(entry);
        const std::vector<RelativeName> dn = ParseDn(entry.dn);
        const bool isPeoplePass = m_pass == Pass::people || m_pass == Pass::departments || m_pass == Pass::members;
        if (isFirst) {
            TakeUnit(entry, kind, dn);
        } else if (kind == Class::person && m_pass == Pass::people) {
            TakePerson(entry, dn);
        } else if (kind == Class::person && isPeoplePass) {
            TakeMembership(entry, dn);
        } else if (kind == Class::group && !isPeoplePass) {
            TakeGroup(entry, dn);
        }
    } catch (const Error& e) {
        if (isFirst) {
            m_pending.push_back({entry.line, nullptr, {}, e.Why()});
        }
    }
}

void LdifSource::TakeUnit(const LdifEntry& entry, Class kind, const std::vector<RelativeName>& dn)
{
    if (kind == Class::person && LoginOf(entry).empty()) {
        throw Error(ErrorCode::invalid, FillPattern("{} has no uid to log in with", Visible(entry.dn)));
    }
    const bool isGroup = kind == Class::group && m_options.groupsAsGroups;
    if (kind == Class::group && !isGroup) {
        return;
    }
    Names names = UnitsOf(dn, kind == Class::unit);
    if (isGroup) {
        names.push_back(dn.front().value);
    }
    if (isGroup && names.size() < 2) {
        throw Error(ErrorCode::invalid, FillPattern("{} is in no unit; name a view with --view", Visible(entry.dn)));
    }
    NoteUnits(names, entry.line);
    if (!names.empty() && (isGroup || kind == Class::unit)) {
        const std::string* description = entry.Find("description");
        Unit& unit = m_units[names];
        unit.line = entry.line;
        unit.description = description == nullptr ? "" : *description;
    }
}

/// Sees to it that there are a unit and those above it.
void LdifSource::NoteUnits(Names names, long line)
{
    for (; !names.empty(); names.pop_back()) {
        Unit& unit = m_units[names];
        unit.line = unit.line == 0 ? line : unit.line;
        unit.firstLine = unit.firstLine == 0 ? line : unit.firstLine;
    }
}

/// Gives the views and then the groups, as the file names them, each after the one that it is in.
void LdifSource::EndUnits()
{
    std::vector<const std::pair<const Names, Unit>*> units;
    std::ranges::transform(m_units, std::back_inserter(units), [](const auto& unit) { return &unit; });
    std::ranges::stable_sort(units, {}, [](const auto* unit) {
        return std::tuple(unit->first.size() != 1, unit->second.firstLine, unit->first.size());
    });
    for (const auto* named : units) {
        const auto& [names, unit] = *named;
        const bool isView = names.size() == 1;
        JsonObject object = {isView ? Text("name", PathEscaped(names.front())) : Text("path", PathOf(names))};
        if (!unit.description.empty()) {
            object.push_back(Text("description", unit.description));
        }
        Add(unit.line, isView ? "view" : "group", std::move(object));
    }
}

void LdifSource::TakePerson(const LdifEntry& entry, const std::vector<RelativeName>& dn)
{
    const std::string login = LoginOf(entry);
    if (login.empty()) {
        return; // said before
    }
    if (dn.front().attribute != "uid" || dn.front().value != login) {
        m_logins[KeyOf(dn)] = login;
    }
    JsonObject object = {Text("login", login)};
    for (const auto& [field, attributes] : kFields) {
        const std::string* value = entry.Find(attributes[0]);
        value = value == nullptr && !attributes[1].empty() ? entry.Find(attributes[1]) : value;
        if (value != nullptr) {
            std::string text = *value;
            if (field.ends_with("address")) {
                std::ranges::replace(text, '$', '\n'); // the lines of a postal address
            }
            object.push_back(Text(std::string(field), std::move(text)));
        }
    }
    const Names names = UnitsOf(dn, false);
    if (names.size() > 1) {
        object.push_back(Text("department", PathOf({names.begin() + 1, names.end()}).substr(1)));
    }
    Add(entry.line, "user", std::move(object));
}

void LdifSource::TakeMembership(const LdifEntry& entry, const std::vector<RelativeName>& dn)
{
    const std::string login = LoginOf(entry);
    const Names names = UnitsOf(dn, false);
    if (login.empty() || names.empty()) {
        return;
    }
    if (m_pass == Pass::members) {
        AddMember(entry.line, login, names.size() == 1 ? "view" : "group",
                  names.size() == 1 ? PathEscaped(names.front()) : PathOf(names));
    } else if (names.size() > 1) {
        Add(entry.line, "department", {Text("user", login), Text("group", PathOf(names))});
    }
}

void LdifSource::TakeGroup(const LdifEntry& entry, const std::vector<RelativeName>& dn)
{
    Names path = UnitsOf(dn, false);
    path.push_back(dn.front().value);
    const std::string holder = m_options.groupsAsGroups ? PathOf(path) : PathEscaped(dn.front().value);
    if (m_pass == Pass::groups) {
        if (!m_options.groupsAsGroups) {
            AddRole(entry, holder);
        }
        return;
    }
    for (const auto& [name, value] : entry.attributes) {
        if ((name == "member" || name == "uniquemember") && !value.empty() && !SameName(value, entry.dn)) {
            TakeMember(entry, value, holder);
        }
    }
}

void LdifSource::AddRole(const LdifEntry& entry, const std::string& name)
{
    JsonObject object = {Text("name", name)};
    if (const std::string* description = entry.Find("description")) {
        object.push_back(Text("description", *description));
    }
    Add(entry.line, "role", std::move(object));
}

/// @param dn  of the member.
void LdifSource::TakeMember(const LdifEntry& entry, const std::string& dn, const std::string& holder)
{
    try {
        const std::vector<RelativeName> member = ParseDn(dn);
        const auto known = m_logins.find(KeyOf(member));
        if (known == m_logins.end() && member.front().attribute != "uid") {
            throw Error(ErrorCode::notFound, FillPattern("{} is not a person of the file", Visible(dn)));
        }
        AddMember(entry.line, known == m_logins.end() ? member.front().value : known->second,
                  m_options.groupsAsGroups ? "group" : "role", holder);
    } catch (const Error& e) {
        m_pending.push_back({entry.line, FindNoun("member"), {}, e.Why()});
    }
}

void LdifSource::AddMember(long line, const std::string& login, const std::string& holderType,
                           const std::string& holder)
{
    Add(line, "member",
        {{"member", "user", TextValue(login)},
         {"of", holderType, TextValue(holder)},
         {"relation", {}, std::int64_t{kMembership}}});
}

void LdifSource::Add(long line, std::string_view noun, JsonObject object)
{
    m_pending.push_back({line, FindNoun(noun), std::move(object), {}});
}

} // namespace management
