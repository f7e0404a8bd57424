#include "management/import/CsvReader.h"

#include "platform/CodePage.h"

#include <fmt/format.h>

#include <algorithm>
#include <new>
#include <string_view>
#include <utility>

namespace management {

namespace {

constexpr std::size_t kLongestRecord = std::size_t{1024} * 1024;
constexpr std::size_t kMostFields = 4096;
constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr const char* kTooLong = Translatable("the row is longer than 1 MiB; is a quote left open?");

bool IsBlank(std::string_view text) { return text.find_first_not_of(" \t\r\n") == std::string_view::npos; }

// A carriage return is a blank and no line break, so that CRLF ends a line once and a quoted CRLF stays as it is.
int IsCarriageReturn(unsigned char ch) { return ch == '\r' ? 1 : 0; }
int IsLineFeed(unsigned char ch) { return ch == '\n' ? 1 : 0; }

Sentence ProblemOf(const std::vector<std::string>& fields)
{
    if (fields.size() > kMostFields) {
        return FillPattern("the row has more than {} values", kMostFields);
    }
    for (const std::string& field : fields) {
        if (field.find('\0') != std::string::npos) {
            return Translatable("there is a NUL byte in the row");
        }
        if (!platform::IsValidUtf8(field)) {
            return Translatable("the row is not UTF-8");
        }
    }
    return {};
}

/// @param number  of the line that cannot be read. @param further  lines of its record after the first.
Sentence QuoteProblem(long number, const std::string& further)
{
    return further.empty() ? Translatable("there is a quote in the middle of a value")
                           : FillPattern("a quote opened here is not closed properly (line {})", number);
}

} // namespace

CsvReader::CsvReader(std::istream& in, char delimiter) : m_in(in), m_delimiter(delimiter), m_parser() { StartParser(); }

CsvReader::~CsvReader() { csv_free(&m_parser); }

std::optional<CsvRecord> CsvReader::Next()
{
    while (const std::optional<Line> line = ReadLine()) {
        if (!IsBlank(line->text)) {
            return ReadRecord(*line);
        }
    }
    return std::nullopt;
}

std::optional<CsvReader::Line> CsvReader::ReadLine()
{
    Line line;
    int byte = ReadByte();
    if (byte == std::char_traits<char>::eof()) {
        return std::nullopt;
    }
    for (; byte != std::char_traits<char>::eof() && byte != '\n'; byte = ReadByte()) {
        // One byte more than there may be says that there were more, also when the line is read again.
        if (line.text.size() <= kLongestRecord) {
            line.text += static_cast<char>(byte);
        }
    }
    line.tooLong = line.text.size() > kLongestRecord;
    if (m_failed) {
        return std::nullopt;
    }
    line.number = ++m_lines;
    if (line.number == 1 && line.text.starts_with(kByteOrderMark)) {
        line.text.erase(0, kByteOrderMark.size());
    }
    line.text += '\n';
    return line;
}

// The buffer is asked directly: what it throws when reading fails is not lost in a state bit.
int CsvReader::ReadByte()
{
    if (m_at < m_again.size()) {
        return std::char_traits<char>::to_int_type(m_again[m_at++]);
    }
    try {
        return m_in.rdbuf()->sbumpc();
    } catch (const std::ios_base::failure&) {
        m_failed = true;
        return std::char_traits<char>::eof();
    }
}

void CsvReader::StartParser()
{
    if (csv_init(&m_parser, CSV_STRICT) != 0) {
        throw std::bad_alloc();
    }
    csv_set_delim(&m_parser, static_cast<unsigned char>(m_delimiter));
    csv_set_space_func(&m_parser, &IsCarriageReturn);
    csv_set_term_func(&m_parser, &IsLineFeed);
}

bool CsvReader::Feed(const std::string& text)
{
    const auto takeField = [](void* bytes, std::size_t length, void* self) {
        auto& reader = *static_cast<CsvReader*>(self);
        if (reader.m_fields.size() > kMostFields) {
            return;
        }
        try { // nothing may be thrown through the parser
            reader.m_fields.emplace_back(static_cast<const char*>(bytes), length);
        } catch (const std::bad_alloc&) {
            reader.m_outOfMemory = true;
        }
    };
    const auto endRow = [](int, void* self) { static_cast<CsvReader*>(self)->m_complete = true; };
    const std::size_t taken = csv_parse(&m_parser, text.data(), text.size(), takeField, endRow, this);
    if (m_outOfMemory || (taken != text.size() && csv_error(&m_parser) == CSV_ENOMEM)) {
        throw std::bad_alloc();
    }
    return taken == text.size();
}

std::optional<CsvRecord> CsvReader::ReadRecord(const Line& first)
{
    m_fields.clear();
    m_complete = false;
    std::string further; // lines after the first
    Line line = first;
    std::size_t length = 0;
    for (;;) {
        length += line.text.size();
        if (line.tooLong || length > kLongestRecord) {
            return GiveUp(first, kTooLong, further);
        }
        if (!Feed(line.text)) {
            return GiveUp(first, QuoteProblem(line.number, further), further);
        }
        if (m_complete) {
            Sentence problem = ProblemOf(m_fields);
            return CsvRecord{first.number, std::move(m_fields), std::move(problem)};
        }
        std::optional<Line> next = ReadLine();
        if (!next && m_failed) {
            return std::nullopt;
        }
        if (!next) {
            return GiveUp(first, Translatable("a quote opened here is never closed"), further);
        }
        line = std::move(*next);
        further += line.text;
    }
}

CsvRecord CsvReader::GiveUp(const Line& first, Sentence problem, const std::string& further)
{
    csv_free(&m_parser);
    StartParser();
    m_again.replace(0, m_at, further);
    m_at = 0;
    m_lines = first.number;
    return {first.number, {}, std::move(problem), first.text.substr(0, first.text.find_last_not_of("\r\n") + 1)};
}

} // namespace management
