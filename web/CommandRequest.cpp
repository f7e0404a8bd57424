#include "web/CommandRequest.h"

#include "management/CommandData.h"
#include "management/Text.h"

#include <algorithm>
#include <unordered_set>

namespace web {

using namespace management;

namespace {

/// A parameter that may be given, with the options of a set each by itself.
struct Offered {
    std::string name;
    Kind kind;
    bool isPositional;
    bool isList;
    bool isNegatable;
    std::string_view excludes;
};

std::vector<Offered> OfferedBy(const Command& command)
{
    std::vector<Offered> all;
    for (const ParamInfo& param : command.handler.params()) {
        if (param.isSet) {
            for (const NamedText& text : std::get<ListNamedTexts>(param.check)()) {
                all.push_back(
                    {std::string(text.name), text.isFlag ? Kind::flag : Kind::text, false, false, text.isFlag, {}});
            }
        } else if (IsOffered(param)) {
            all.push_back({std::string(param.name), param.kind, param.isPositional, param.isList, param.isNegatable,
                           param.excludes});
        }
    }
    return all;
}

[[noreturn]] void Refuse(const Sentence& sentence) { throw Error(ErrorCode::invalid, sentence); }

std::string TextOfMember(const std::string& name, const JsonValue& value)
{
    if (value.type != JsonValue::Type::text && value.type != JsonValue::Type::number) {
        Refuse(FillPattern("{} is neither a text nor a number", name));
    }
    return value.text;
}

std::string OptionText(const Offered& param, const std::string& value)
{
    std::string option = param.name;
    std::ranges::replace(option, '_', '-');
    if (param.kind == Kind::flag) {
        return (value == "1" ? "--" : "--no-") + option;
    }
    // A value that begins with a dash would be read as an option.
    return value.starts_with('-') ? ShellQuoted("--" + option + "=" + value) : "--" + option + " " + ShellQuoted(value);
}

void RequireKnown(const JsonValue& object, std::initializer_list<std::string_view> known)
{
    for (const auto& [name, value] : object.members) {
        if (std::ranges::find(known, name) == known.end()) {
            Refuse(FillPattern("there is no member {}", Quoted(name)));
        }
    }
}

Condition ReadCondition(const JsonValue& value, const SessionResults& results)
{
    if (value.type != JsonValue::Type::object) {
        Refuse("if_unchanged is not an object");
    }
    RequireKnown(value, {"command", "parameters", "version"});
    const Command* shows = FindCommand(MemberText(value, "command"));
    // What everybody may run, so that nobody tries by the way what is not for his level.
    if (shows == nullptr || LeastLevel(*shows) != Level::readOnly) {
        Refuse("if_unchanged names no command that shows something");
    }
    return {shows, WebArguments(*shows, value.Find("parameters"), results), MemberText(value, "version")};
}

} // namespace

bool HasRoute(const Command& command)
{
    const bool showsSecret = command.effect == Effect::read && command.risk == Risk::stepUp;
    return command.handler.run != nullptr && !showsSecret &&
           std::ranges::none_of(command.handler.params(),
                                [](const ParamInfo& param) { return param.isRequired && !IsOffered(param); });
}

bool IsOffered(const ParamInfo& param) { return param.kind != Kind::file; }

const Command* FindCommand(std::string_view path)
{
    std::string words(path);
    std::ranges::replace(words, '/', ' ');
    const auto found = std::ranges::find_if(
        Commands(), [&words](const Command& command) { return HasRoute(command) && PathText(command) == words; });
    return found == Commands().end() ? nullptr : &*found;
}

std::string PathText(const Command& command)
{
    std::string text;
    for (const std::string_view word : command.path) {
        text += word.empty() ? "" : (text.empty() ? "" : " ") + std::string(word);
    }
    return text;
}

namespace {

/// @throws Error (invalid) for two parameters that cannot be given together.
void ThrowIfExcluded(const WebArguments& given, const std::vector<Offered>& offered)
{
    const auto isGiven = [&given](std::string_view name) { return !given.ValuesOf(name).empty(); };
    for (const Offered& param : offered) {
        if (!param.excludes.empty() && isGiven(param.name) && isGiven(param.excludes)) {
            Refuse(FillPattern("{} and {} cannot be given together", param.name, param.excludes));
        }
    }
}

/// What is given, as it may be typed after the words of the command, without secrets.
std::string TextOf(const WebArguments& given, const std::vector<Offered>& offered)
{
    std::string options;
    std::string positionals;
    bool hasDash = false;
    for (const Offered& param : offered) {
        if (param.kind == Kind::secret) {
            continue;
        }
        for (const std::string& value : given.ValuesOf(param.name)) {
            hasDash = hasDash || (param.isPositional && value.starts_with('-'));
            (param.isPositional ? positionals : options) +=
                " " + (param.isPositional ? ShellQuoted(value) : OptionText(param, value));
        }
    }
    return options + (hasDash ? " --" : "") + positionals;
}

/// The parameter that takes several users, or users and groups; empty: none.
std::string NameOfMany(const Command& command)
{
    for (const ParamInfo& param : command.handler.params()) {
        if (param.isList && param.isPositional && (param.kind == Kind::user || param.kind == Kind::holder)) {
            return std::string(param.name);
        }
    }
    return {};
}

} // namespace

WebArguments::WebArguments(const Command& command, const JsonValue* given, const SessionResults& results)
    : m_many(NameOfMany(command)), m_text(PathText(command))
{
    static const JsonValue none;
    const JsonValue& values = given == nullptr ? none : *given;
    if (given != nullptr && given->type != JsonValue::Type::object) {
        Refuse("parameters is not an object");
    }
    const std::vector<Offered> offered = OfferedBy(command);
    for (const auto& [name, value] : values.members) {
        const auto param = std::ranges::find(offered, name, &Offered::name);
        if (param == offered.end()) {
            Refuse(FillPattern("{} has no parameter {}", PathText(command), Quoted(name)));
        }
        if (param->isList && value.type == JsonValue::Type::object) {
            TakeResult(name, param->kind, value, results);
        } else {
            Take(name, param->kind, param->isList, value);
        }
        // A flag that is off is not given, unless being off says something.
        if (const auto taken = m_values.find(name); taken != m_values.end() && param->kind == Kind::flag &&
                                                    !param->isNegatable && taken->second.front() == "0") {
            m_values.erase(taken);
        }
    }
    ThrowIfExcluded(*this, offered);
    m_text = Shortened(m_text + TextOf(*this, offered));
}

WebArguments::WebArguments(const Command& command, const WebArguments& whole, std::vector<std::string> some)
    : m_many(whole.m_many), m_values(whole.m_values), m_text(PathText(command))
{
    for (const auto& [name, secret] : whole.m_secrets) {
        m_secrets.emplace(name, Secret(secret.View()));
    }
    m_values[m_many] = std::move(some);
    m_text = Shortened(m_text + TextOf(*this, OfferedBy(command)));
}

std::vector<std::string> WebArguments::Many() const
{
    std::vector<std::string> many = ValuesOf(m_many);
    std::unordered_set<std::string> seen;
    std::erase_if(many, [&seen](const std::string& one) { return !seen.insert(one).second; });
    return many;
}

void WebArguments::Take(const std::string& name, Kind kind, bool isList, const JsonValue& value)
{
    if (value.type == JsonValue::Type::null) {
        return;
    }
    if (kind == Kind::flag) {
        if (value.type != JsonValue::Type::boolean) {
            Refuse(FillPattern("{} is neither true nor false", name));
        }
        m_values[name] = {value.text};
    } else if (kind == Kind::secret) {
        if (value.type != JsonValue::Type::text || value.text.size() > Secret::kLongest) {
            Refuse(FillPattern("{} is not a text of at most {} bytes", name, Secret::kLongest));
        }
        m_secrets.emplace(name, Secret(value.text));
    } else if (isList && value.type == JsonValue::Type::array) {
        for (const JsonValue& item : value.items) {
            m_values[name].push_back(TextOfMember(name, item));
        }
    } else {
        m_values[name] = {TextOfMember(name, value)};
    }
}

void WebArguments::TakeResult(const std::string& name, Kind kind, const JsonValue& value, const SessionResults& results)
{
    RequireKnown(value, {"result", "except"});
    if ((kind != Kind::user && kind != Kind::holder) || value.Find("result") == nullptr) {
        Refuse(FillPattern("{} is neither users nor a list of them", name));
    }
    const std::string prefix = kind == Kind::user ? "id:" : "user:id:";
    const Results::Ids ids = results.results.Find(MemberText(value, "result"), results.session);
    if (!ids) {
        throw Error(ErrorCode::conflict, kResultGone);
    }
    std::unordered_set<std::string> left;
    if (const JsonValue* except = value.Find("except")) {
        for (const JsonValue& item : except->items) {
            left.insert(TextOfMember("except", item));
        }
    }
    std::vector<std::string>& users = m_values[name];
    for (const int id : *ids) {
        if (std::string text = std::to_string(id); !left.contains(text)) {
            users.push_back(prefix + text);
        }
    }
    if (users.size() > results.most) {
        Refuse(FillPattern("these are {} people; more than {} at once are for a job, or for qvadmin in a shell",
                           users.size(), results.most));
    }
}

std::vector<std::string> WebArguments::ValuesOf(std::string_view name) const
{
    if (m_secrets.contains(name)) {
        return {"1"};
    }
    const auto found = m_values.find(name);
    return found == m_values.end() ? std::vector<std::string>() : found->second;
}

const Secret* WebArguments::FindSecret(std::string_view name) const
{
    const auto found = m_secrets.find(name);
    return found == m_secrets.end() ? nullptr : &found->second;
}

CommandRequest::CommandRequest(const Command& wanted, const std::string& body, const SessionResults& results)
    : command(wanted)
{
    const JsonValue request = ReadJsonObject(body);
    RequireKnown(request, {"parameters", "dry_run", "reason", "confirm", "if_unchanged", "job"});
    dryRun = MemberFlag(request, "dry_run");
    isAskedAsJob = MemberFlag(request, "job");
    reason = MemberText(request, "reason");
    confirmed = MemberText(request, "confirm");
    SessionResults lists = results;
    lists.most = IsJob() ? kMostFromResultAsJob : results.most;
    arguments.emplace(wanted, request.Find("parameters"), lists);
    if (const JsonValue* value = request.Find("if_unchanged")) {
        if (IsJob()) {
            Refuse("if_unchanged is not for what is done as a job");
        }
        condition.emplace(ReadCondition(*value, results));
    }
}

} // namespace web
