#include "console/SourceFile.h"

#include "console/Interrupt.h"
#include "management/Errors.h"
#include "management/Text.h"
#include "management/import/CsvReader.h"
#include "management/import/FileFormat.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <utility>

namespace console {

using namespace management;

SourceFile::SourceFile(std::string path, std::istream& standardInput)
    : m_path(std::move(path)), m_standardInput(standardInput), m_file(nullptr), m_decoded(nullptr)
{
    if (!IsStandardInput()) {
        m_buffer = Open();
        m_file.rdbuf(m_buffer.get());
    }
}

std::string SourceFile::Name() const { return IsStandardInput() ? "standard input" : Visible(m_path); }

std::string SourceFile::Beginning()
{
    try {
        return ReadBeginning();
    } catch (const std::ios_base::failure& e) {
        ThrowNothingImported(e);
    }
}

std::string SourceFile::ReadAsCsv(const std::optional<std::string>& encoding)
{
    try {
        OtherFile other = GuessFormat(ReadBeginning(), m_path);
        if (!encoding && other.encoding.empty() && other.problem.IsEmpty() && IsRegularFile()) {
            const std::unique_ptr<FileBuffer> buffer = Open();
            std::istream file(buffer.get());
            other = GuessEncoding(file, m_path);
        }
        if (!other.problem.IsEmpty() && !encoding) {
            throw Error(ErrorCode::invalid,
                        IsStandardInput()
                            ? FillPattern("what standard input holds, written to the file {}; nothing was imported",
                                          other.problem)
                            : FillPattern("{}; nothing was imported", other.problem));
        }
        const bool isUtf8 = encoding && (*encoding == "utf-8" || *encoding == "UTF-8");
        m_encoding = isUtf8 ? "" : encoding.value_or(other.encoding);
        if (!m_encoding.empty()) {
            m_decoder = std::make_unique<DecodingBuffer>(*Stream().rdbuf(), m_encoding);
            m_decoded.rdbuf(m_decoder.get());
        }
        return encoding ? "" : other.encoding;
    } catch (const std::ios_base::failure& e) {
        ThrowNothingImported(e);
    }
}

std::optional<long> SourceFile::CountRows(char delimiter) const
{
    if (!IsRegularFile()) {
        return std::nullopt;
    }
    const std::unique_ptr<FileBuffer> buffer = Open();
    std::optional<DecodingBuffer> decoder;
    if (!m_encoding.empty()) {
        decoder.emplace(*buffer, m_encoding);
    }
    std::istream file(decoder ? static_cast<std::streambuf*>(&*decoder) : buffer.get());
    CsvReader reader(file, delimiter);
    long count = -1;
    while (reader.Next()) {
        ++count;
    }
    return count;
}

std::optional<long> SourceFile::CountLines() const
{
    if (!IsRegularFile()) {
        return std::nullopt;
    }
    try {
        const std::unique_ptr<FileBuffer> buffer = Open();
        std::array<char, 65536> bytes = {};
        long count = -1;
        for (std::streamsize size = buffer->sgetn(bytes.data(), bytes.size()); size > 0;
             size = buffer->sgetn(bytes.data(), bytes.size())) {
            count += static_cast<long>(std::count(bytes.begin(), bytes.begin() + size, '\n'));
        }
        return count;
    } catch (const std::ios_base::failure&) {
        return std::nullopt; // reading it will say why
    }
}

bool SourceFile::IsRegularFile() const
{
    std::error_code error;
    return !IsStandardInput() && std::filesystem::is_regular_file(m_path, error);
}

std::string SourceFile::ReadBeginning()
{
    constexpr std::streamsize kMost = 4096;
    std::streambuf& buffer = *Stream().rdbuf();
    buffer.sgetc();
    std::string text(static_cast<std::size_t>(std::clamp<std::streamsize>(buffer.in_avail(), 0, kMost)), '\0');
    buffer.sgetn(text.data(), static_cast<std::streamsize>(text.size()));
    for (std::size_t i = 0; i < text.size(); ++i) {
        buffer.sungetc();
    }
    return text;
}

std::unique_ptr<FileBuffer> SourceFile::Open() const { return std::make_unique<FileBuffer>(OpenForReading(m_path)); }

void SourceFile::ThrowNothingImported(const std::ios_base::failure& e) const
{
    throw Error(ErrorCode::failed, FillPattern("{}; nothing was imported",
                                               Interrupt::Requested() ? Translatable("stopped by a signal")
                                                                      : UnreadableSentence(Name(), e.code().value())));
}

} // namespace console
