#include "management/import/DecodingBuffer.h"

#include "management/Errors.h"
#include "management/Text.h"

#include <fmt/format.h>
#include <unicode/ucnv.h>

#include <string_view>

namespace management {

void DecodingBuffer::CloseConverter::operator()(UConverter* converter) const noexcept { ucnv_close(converter); }

DecodingBuffer::DecodingBuffer(std::streambuf& from, const std::string& encoding)
    : m_from(from), m_encoding(encoding), m_decoder(Open(encoding)), m_encoder(Open("UTF-8"))
{
}

DecodingBuffer::~DecodingBuffer() = default;

DecodingBuffer::Converter DecodingBuffer::Open(const std::string& encoding)
{
    UErrorCode error = U_ZERO_ERROR;
    Converter converter(encoding.empty() ? nullptr : ucnv_open(encoding.c_str(), &error));
    if (!converter || U_FAILURE(error) != 0) {
        throw Error(ErrorCode::invalid,
                    FillPattern("there is no encoding {}; common ones are utf-8, utf-16, windows-1252, "
                                "iso-8859-15, gb18030, shift_jis and koi8-r",
                                Quoted(encoding)));
    }
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    return converter;
}

DecodingBuffer::int_type DecodingBuffer::underflow()
{
    constexpr std::string_view kMark = "\xEF\xBB\xBF";
    for (;;) {
        ReadBytes();
        char* begin = m_text.data();
        char* const end = Convert();
        if (begin == end) {
            if (m_atEnd) {
                return traits_type::eof();
            }
            continue;
        }
        if (m_isFirst && std::string_view(begin, static_cast<std::size_t>(end - begin)).starts_with(kMark)) {
            begin += kMark.size();
        }
        m_isFirst = false;
        setg(begin, begin, end);
        if (begin != end) {
            return traits_type::to_int_type(*begin);
        }
    }
}

/// Reads more bytes once those that were read are converted.
void DecodingBuffer::ReadBytes()
{
    if (m_next == m_end && !m_atEnd) {
        const std::streamsize count = m_from.sgetn(m_bytes.data(), static_cast<std::streamsize>(m_bytes.size()));
        m_next = m_bytes.data();
        m_end = m_next + count;
        m_atEnd = count == 0;
    }
}

/// Converts what was read. @return the end of what there is in m_text now.
char* DecodingBuffer::Convert()
{
    char* target = m_text.data();
    UErrorCode error = U_ZERO_ERROR;
    ucnv_convertEx(m_encoder.get(), m_decoder.get(), &target, m_text.data() + m_text.size(), &m_next, m_end,
                   m_pivot.data(), &m_pivotSource, &m_pivotTarget, m_pivot.data() + m_pivot.size(), 0,
                   static_cast<UBool>(m_atEnd), &error);
    if (U_FAILURE(error) != 0 && error != U_BUFFER_OVERFLOW_ERROR) {
        ThrowUndecodable();
    }
    return target;
}

void DecodingBuffer::ThrowUndecodable() const
{
    throw Error(
        ErrorCode::invalid,
        FillPattern("the file holds bytes that are not text of the encoding {}; name another one with --encoding",
                    m_encoding));
}

} // namespace management
