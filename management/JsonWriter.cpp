#include "management/JsonWriter.h"

#include "management/Overloaded.h"
#include "management/Text.h"

#include <nlohmann/json.hpp>

#include <ostream>

namespace management {

namespace {

using Json = nlohmann::json;

void WriteText(std::string_view text, std::ostream& out)
{
    if (IsPlainInJson(text)) {
        out << '"' << text << '"';
    } else {
        out << Json(text).dump(-1, ' ', false, Json::error_handler_t::replace);
    }
}

} // namespace

JsonWriter::JsonWriter(std::ostream& out, Layout layout) : m_out(out), m_layout(layout) {}

void JsonWriter::End()
{
    const Level ended = m_levels.back();
    m_levels.pop_back();
    if (!ended.isEmpty) {
        BreakLine();
    }
    m_out << ended.end;
}

void JsonWriter::WriteName(std::string_view name)
{
    Separate();
    WriteText(name, m_out);
    m_out << (m_layout == Layout::indented ? ": " : ":");
    m_isAfterName = true;
}

void JsonWriter::Write(const Value& value)
{
    Separate();
    std::visit(Overloaded{[this](std::monostate) { m_out << "null"; },
                          [this](std::int64_t number) { m_out << std::to_string(number); },
                          [this](bool flag) { m_out << (flag ? "true" : "false"); },
                          [this](const Choice& choice) { m_out << std::to_string(choice.number); },
                          [this](const TextValue& text) { WriteText(text, m_out); },
                          [this](const SentenceValue& sentence) { WriteText(Said(sentence), m_out); }},
               value);
}

void JsonWriter::WriteMember(std::string_view name, const Value& value)
{
    WriteName(name);
    Write(value);
}

void JsonWriter::WriteMembers(const Record& record)
{
    for (const auto& [name, value] : record) {
        WriteMember(name, value);
    }
}

void JsonWriter::WriteRow(const std::vector<std::string>& columns, const std::vector<Value>& row)
{
    BeginObject();
    for (std::size_t i = 0; i < columns.size(); ++i) {
        WriteMember(columns[i], row[i]);
    }
    End();
}

void JsonWriter::Begin(char begin, char end)
{
    Separate();
    m_out << begin;
    m_levels.push_back({end, true});
}

void JsonWriter::Separate()
{
    if (!m_isAfterName && !m_levels.empty()) {
        m_out << (m_levels.back().isEmpty ? "" : ",");
        m_levels.back().isEmpty = false;
        BreakLine();
    }
    m_isAfterName = false;
}

void JsonWriter::BreakLine()
{
    if (m_layout == Layout::indented) {
        m_out << '\n' << std::string(2 * m_levels.size(), ' ');
    }
}

} // namespace management
