#include "management/exchange/LineReader.h"

#include "management/Errors.h"
#include "management/Text.h"
#include "management/exchange/Export.h"

#include <fmt/format.h>

#include <algorithm>

namespace management {

namespace {

constexpr std::size_t kLongestLine = std::size_t{64} * 1024 * 1024;

/// A line after the first; where it cannot be used, its problem says why.
ExportedLine ParseExportedLine(const std::string& text, long number)
{
    ExportedLine line{number, nullptr, {}, {}};
    try {
        if (text.size() > kLongestLine) {
            throw Error(ErrorCode::invalid, "the line is longer than 64 MiB");
        }
        line.object = ReadJsonLine(text);
        const auto noun = std::ranges::find(line.object, "noun", &JsonMember::name);
        const auto* name = noun == line.object.end() ? nullptr : std::get_if<TextValue>(&noun->value);
        line.noun = name == nullptr ? nullptr : FindNoun(*name);
        if (line.noun == nullptr) {
            throw Error(ErrorCode::invalid, name == nullptr ? Sentence(Translatable("the line has no noun"))
                                                            : FillPattern("unknown noun {}", Quoted(*name)));
        }
        line.object.erase(noun);
        for (const JsonMember& member : line.object) {
            const auto* value = std::get_if<TextValue>(&member.value);
            if (value != nullptr && value->find('\0') != std::string::npos) {
                throw Error(ErrorCode::invalid, FillPattern("{} holds a NUL byte", member.name));
            }
        }
    } catch (const Error& e) {
        line.problem = e.Why();
    }
    return line;
}

} // namespace

void LineReader::RequireHead()
{
    const std::optional<std::string> text = ReadText();
    if (m_failed) {
        return;
    }
    JsonObject head;
    try {
        head = ReadJsonLine(text.value_or(""));
    } catch (const Error&) { // said below
    }
    const auto is = [&head](std::string_view member, const JsonValue& value) {
        return std::ranges::any_of(head, [&](const JsonMember& m) { return m.name == member && m.value == value; });
    };
    if (!is("format", TextValue("qvadmin directory"))) {
        throw Error(ErrorCode::invalid,
                    FillPattern("{} is not an exported directory: its first line is not {}", m_name, kExportHead));
    }
    if (!is("version", std::int64_t{1})) {
        throw Error(ErrorCode::invalid, FillPattern("{} was exported by a later qvadmin", m_name));
    }
    TakeScope(head);
}

void LineReader::TakeScope(const JsonObject& head)
{
    for (const JsonMember& member : head) {
        const auto* text = std::get_if<TextValue>(&member.value);
        if (text != nullptr && member.name == "in") {
            m_scope.in = *text;
        }
        if (text == nullptr || member.name != "nouns") {
            continue;
        }
        for (const std::string& plural : SplitAtCommas(*text)) {
            const auto noun = std::ranges::find(Nouns(), std::string_view(plural), &Noun::plural);
            if (noun == Nouns().end()) {
                throw Error(ErrorCode::invalid, FillPattern("{}:1: unknown noun {}", m_name, Quoted(plural)));
            }
            m_scope.nouns.push_back(&*noun);
        }
    }
}

std::optional<ExportedLine> LineReader::Next()
{
    while (std::optional<std::string> text = ReadText()) {
        if (text->find_first_not_of(" \t\r") != std::string::npos) {
            m_bytes += text->size();
            return ParseExportedLine(*text, m_number);
        }
    }
    return std::nullopt;
}

// The buffer is asked directly: what it throws when reading fails is not lost in a state bit.
std::optional<std::string> LineReader::ReadText()
{
    constexpr int kEnd = std::char_traits<char>::eof();
    std::string text;
    try {
        int byte = m_in.rdbuf()->sbumpc();
        if (byte == kEnd) {
            return std::nullopt;
        }
        for (; byte != kEnd && byte != '\n'; byte = m_in.rdbuf()->sbumpc()) {
            if (text.size() <= kLongestLine) {
                text += static_cast<char>(byte);
            }
        }
    } catch (const std::ios_base::failure&) {
        m_failed = true;
        return std::nullopt;
    }
    ++m_number;
    return text;
}

} // namespace management
