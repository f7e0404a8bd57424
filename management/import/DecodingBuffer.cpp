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
                    fmt::format("there is no encoding {}; common ones are utf-8, utf-16, windows-1252, "
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
        if (m_next == m_end && !m_atEnd) {
            const std::streamsize count = m_from.sgetn(m_bytes.data(), static_cast<std::streamsize>(m_bytes.size()));
            m_next = m_bytes.data();
            m_end = m_next + count;
            m_atEnd = count == 0;
        }
        char* target = m_text.data();
        UErrorCode error = U_ZERO_ERROR;
        ucnv_convertEx(m_encoder.get(), m_decoder.get(), &target, m_text.data() + m_text.size(), &m_next, m_end,
                       m_pivot.data(), &m_pivotSource, &m_pivotTarget, m_pivot.data() + m_pivot.size(), 0,
                       static_cast<UBool>(m_atEnd), &error);
        if (U_FAILURE(error) != 0 && error != U_BUFFER_OVERFLOW_ERROR) {
            ThrowUnreadable();
        }
        if (target != m_text.data()) {
            char* begin = m_text.data();
            if (m_isFirst && std::string_view(begin, static_cast<std::size_t>(target - begin)).starts_with(kMark)) {
                begin += kMark.size();
            }
            m_isFirst = false;
            setg(begin, begin, target);
            if (begin != target) {
                return traits_type::to_int_type(*begin);
            }
        }
        if (m_atEnd && target == m_text.data()) {
            return traits_type::eof();
        }
    }
}

void DecodingBuffer::ThrowUnreadable() const
{
    throw Error(
        ErrorCode::invalid,
        fmt::format("the file holds bytes that are not text of the encoding {}; name another one with --encoding",
                    m_encoding));
}

} // namespace management
