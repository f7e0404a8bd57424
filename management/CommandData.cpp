#include "management/CommandData.h"

#include "management/Text.h"

namespace management {

namespace {

std::string_view NameOf(Effect effect)
{
    switch (effect) {
    case Effect::read:
        return "read";
    case Effect::create:
        return "create";
    case Effect::change:
        return "change";
    default:
        return "remove";
    }
}

std::string_view NameOf(Kind kind)
{
    static constexpr std::string_view kNames[] = {"text",  "number", "flag",    "date",   "choice", "power",   "secret",
                                                  "file",  "user",   "group",   "view",   "holder", "item",    "role",
                                                  "title", "plan",   "docroot", "folder", "addin",  "package", "rows"};
    return kNames[static_cast<std::size_t>(kind)];
}

constexpr std::size_t kLongestCommand = 2000;

TextValue AsText(std::string_view text) { return std::string(text); }

void WriteAsData(const ParamInfo& param, JsonWriter& json)
{
    json.BeginObject();
    json.WriteMember("name", AsText(param.name));
    json.WriteMember("kind", AsText(NameOf(param.kind)));
    json.WriteMember("help", SentenceValue(Sentence(param.help)));
    json.WriteMember("positional", param.isPositional);
    json.WriteMember("required", param.isRequired);
    json.WriteMember("list", param.isList);
    if (const std::vector<std::string_view> words = WordsOf(param.check); !words.empty()) {
        json.WriteName("choices");
        json.BeginArray();
        for (const std::string_view word : words) {
            json.Write(AsText(word));
        }
        json.End();
    }
    if (const auto* range = std::get_if<Range>(&param.check)) {
        json.WriteMember("least", range->least);
        json.WriteMember("most", range->most);
    }
    if (param.isNegatable) {
        json.WriteMember("negatable", true);
    }
    if (!param.excludes.empty()) {
        json.WriteMember("excludes", AsText(param.excludes));
    }
    json.End();
}

} // namespace

void WriteAsData(const Command& command, JsonWriter& json, bool withExamples)
{
    json.BeginObject();
    json.WriteName("path");
    json.BeginArray();
    for (const std::string_view word : command.path) {
        if (!word.empty()) {
            json.Write(AsText(word));
        }
    }
    json.End();
    json.WriteMember("summary", SentenceValue(Sentence(command.summary)));
    json.WriteMember("effect", AsText(NameOf(command.effect)));
    json.WriteMember("asks", command.asks);
    json.WriteMember("long_running", command.duration == Duration::longRunning);
    if (withExamples) {
        json.WriteName("examples");
        json.BeginArray();
        for (const std::string_view example : GivenOf(command.examples)) {
            json.Write(AsText(example));
        }
        json.End();
    }
    json.WriteName("parameters");
    json.BeginArray();
    for (const ParamInfo& param : command.handler.params()) {
        if (!param.isSet) {
            WriteAsData(param, json);
            continue;
        }
        for (const NamedText& text : std::get<ListNamedTexts>(param.check)()) {
            ParamInfo option{text.name, text.isFlag ? Kind::flag : Kind::text, text.help, {}, {}};
            option.isNegatable = text.isFlag;
            WriteAsData(option, json);
        }
    }
    json.End();
    json.WriteName("columns");
    json.BeginArray();
    for (const Column& column : command.columns) {
        json.BeginObject();
        json.WriteMember("name", AsText(column.name));
        json.WriteMember("kind", AsText(NameOf(column.kind)));
        json.End();
    }
    json.End();
    json.End();
}

std::set<std::string> NamesIn(std::span<const Command> commands)
{
    std::set<std::string> names = {"line", "outcome"};
    const auto add = [&names](std::string_view name) { names.insert(InSmallLetters(name)); };
    for (const Command& command : commands) {
        for (const ParamInfo& param : command.handler.params()) {
            if (!param.isSet) {
                add(param.name);
                continue;
            }
            for (const NamedText& text : std::get<ListNamedTexts>(param.check)()) {
                add(text.name);
            }
        }
        for (const Column& column : command.columns) {
            add(column.name);
        }
    }
    return names;
}

std::string_view NameOf(ErrorCode code)
{
    switch (code) {
    case ErrorCode::invalid:
        return "invalid";
    case ErrorCode::notFound:
        return "not_found";
    case ErrorCode::conflict:
        return "conflict";
    case ErrorCode::isProtected:
        return "protected";
    case ErrorCode::database:
        return "database";
    case ErrorCode::confirmationRequired:
        return "confirmation_required";
    default:
        return "failed";
    }
}

std::string Shortened(std::string command)
{
    if (command.size() > kLongestCommand) {
        std::size_t end = kLongestCommand;
        while (end > 0 && ContinuesCharacter(command[end])) {
            --end;
        }
        command = command.substr(0, end) + " ...";
    }
    return command;
}

void WriteOutcomes(JsonWriter& json, const std::vector<Outcome>& outcomes)
{
    json.WriteName("outcomes");
    json.BeginArray();
    for (const Outcome& outcome : outcomes) {
        json.BeginObject();
        json.WriteMember("type", TextValue(std::string(outcome.type)));
        json.WriteMember("id", std::int64_t{outcome.id});
        json.WriteMember("name", TextValue(outcome.name));
        json.WriteMember("outcome", TextValue(std::string(outcome.outcome)));
        json.WriteMember("message", SentenceValue(outcome.sentence));
        json.End();
    }
    json.End();
}

} // namespace management
