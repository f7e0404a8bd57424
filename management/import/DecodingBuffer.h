#pragma once

#include <array>
#include <memory>
#include <streambuf>
#include <string>

struct UConverter;

namespace management {

/// Reads a text of another encoding as UTF-8, without the mark of a byte order, in little memory. Reading @throws Error
/// (invalid) for bytes that are not text of the encoding, and what the buffer below throws.
class DecodingBuffer final : public std::streambuf {
public:
    /// @param from  outlives this. @param encoding  by any of its common names, such as windows-1252.
    /// @throws Error (invalid) for an encoding that is not known.
    DecodingBuffer(std::streambuf& from, const std::string& encoding);
    DecodingBuffer(const DecodingBuffer&) = delete;
    DecodingBuffer& operator=(const DecodingBuffer&) = delete;
    ~DecodingBuffer() override;

protected:
    int_type underflow() override;

private:
    struct CloseConverter {
        void operator()(UConverter* converter) const noexcept;
    };
    using Converter = std::unique_ptr<UConverter, CloseConverter>;

    static constexpr std::size_t kPiece = 16384;

    static Converter Open(const std::string& encoding);
    void ReadBytes();
    char* Convert();
    [[noreturn]] void ThrowUndecodable() const;

    std::streambuf& m_from;
    std::string m_encoding;
    Converter m_decoder;
    Converter m_encoder;
    std::array<char, kPiece> m_bytes{};
    const char* m_next = m_bytes.data(); ///< the first byte that is not decoded yet
    const char* m_end = m_bytes.data();  ///< of the bytes that were read
    std::array<char16_t, kPiece> m_pivot{};
    char16_t* m_pivotSource = m_pivot.data();
    char16_t* m_pivotTarget = m_pivot.data();
    std::array<char, kPiece> m_text{};
    bool m_isFirst = true; ///< nothing has been decoded yet
    bool m_atEnd = false;  ///< of the buffer below
};

} // namespace management
