#pragma once

/// @file
/// The text class and its operators.

#include "platform/Api.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <type_traits>

/// Counted 8-bit text in the process's ANSI code page (platform/CodePage.h).
///
/// A text may hold NUL bytes; operations that take a `const char*` read up to its first NUL, as C does. What goes by
/// characters (Replace, MakeUpper, the trims) goes by characters of the code page: the second byte of a double-byte
/// character is never taken for a character of its own.
///
/// Texts of up to 23 bytes live in the object; longer ones own one heap block. The object can be moved in memory by
/// copying its bytes (CStringArray relies on it). One object belongs to one thread at a time.
/// @throws std::length_error when a text would exceed 2^31-2 bytes, std::bad_alloc when memory runs out.
class QV_API CString {
public:
    /// The empty text.
    CString() noexcept { SetInlineLength(0); }
    /// A null pointer gives the empty text.
    CString(const char* text) : CString(text, text ? std::strlen(text) : 0) {}
    /// A copy of bytes, which may hold NUL bytes. @param bytes  may be null when the length is 0.
    CString(const char* bytes, std::size_t length)
    {
        if (length <= kInlineCapacity) {
            if (length != 0) {
                std::memcpy(m_rep.bytes, bytes, length);
            }
            SetInlineLength(length);
        } else {
            ConstructLong(bytes, length);
        }
    }
    /// A copy of a text, which may hold NUL bytes.
    explicit CString(std::string_view text) : CString(text.data(), text.size()) {}
    /// One byte repeated; the empty text for a count below 1.
    explicit CString(char ch, int count = 1);
    /// A copy.
    CString(const CString& from)
    {
        if (from.IsInline()) {
            m_rep = from.m_rep;
        } else {
            ConstructLong(from.m_rep.block.data, from.m_rep.block.length);
        }
    }
    /// Takes the text over and leaves the other one empty.
    CString(CString&& from) noexcept : m_rep(from.m_rep) { from.SetInlineLength(0); }
    ~CString()
    {
        if (!IsInline()) {
            FreeBlock();
        }
    }

    /// Replaces the text by a copy.
    CString& operator=(const CString& from);
    /// Takes the text over and leaves the other one empty.
    CString& operator=(CString&& from) noexcept;
    /// Replaces the text by a copy. @param text  null gives the empty text; may be part of this text.
    CString& operator=(const char* text);

    /// The length in bytes, without the closing NUL.
    [[nodiscard]] int GetLength() const noexcept { return static_cast<int>(Size()); }
    /// Whether the text has no byte.
    [[nodiscard]] bool IsEmpty() const noexcept { return Size() == 0; }
    /// Makes the text empty and gives its memory back.
    void Empty() noexcept;

    /// The bytes, followed by a NUL. Valid until the text changes.
    [[nodiscard]] const char* GetString() const noexcept { return IsInline() ? m_rep.bytes : m_rep.block.data; }
    /// The bytes, followed by a NUL, as GetString gives them. Valid until the text changes.
    operator const char*() const noexcept { return GetString(); }
    /// The text with its length, NUL bytes included. Valid until the text changes.
    [[nodiscard]] std::string_view View() const noexcept { return {GetString(), Size()}; }

    /// The byte at an index. @throws std::out_of_range outside 0..GetLength()-1.
    [[nodiscard]] char GetAt(int index) const;
    /// The byte at an index. @throws std::out_of_range outside 0..GetLength()-1.
    char operator[](int index) const { return GetAt(index); }
    /// Sets the byte at an index. @throws std::out_of_range outside 0..GetLength()-1.
    void SetAt(int index, char ch);

    /// Appends a text, NUL bytes included; it may be this text. @return this text.
    CString& operator+=(const CString& text) { return Append(text.GetString(), text.Size()); }
    /// Appends a text up to its first NUL. @param text  null appends nothing. @return this text.
    CString& operator+=(const char* text) { return Append(text, text ? std::strlen(text) : 0); }
    /// Appends a byte. @return this text.
    CString& operator+=(char ch) { return Append(&ch, 1); }
    /// Appends a text, NUL bytes included. @return this text.
    CString& operator+=(std::string_view text) { return Append(text.data(), text.size()); }
    /// Appends bytes, which may be part of this text. @return this text.
    CString& Append(const char* bytes, std::size_t length);
    /// Makes room for a text of this many bytes, so that appending up to it allocates once.
    void Reserve(std::size_t length);

    /// Byte order of the texts: negative, 0 or positive.
    [[nodiscard]] int Compare(const char* text) const noexcept;

    /// Replaces this text by a formatted one, by printf's rules; a CString argument goes to `%s`.
    /// A format that printf refuses leaves the empty text.
    template <class... Args>
    void Format(const char* format, const Args&... args)
    {
        FormatC(format, Argument(args)...);
    }

    /// Replaces every occurrence of `from`, left to right, by `to`. @return how many there were; 0 when `from` is
    /// empty.
    int Replace(const char* from, const char* to);
    /// Replaces every occurrence of a one-byte character by another. @return how many there were.
    int Replace(char from, char to);
    /// Upper-cases every letter whose capital the code page has.
    void MakeUpper();

    /// Removes blanks, tabs, line breaks, vertical tabs and form feeds from the beginning.
    void TrimLeft();
    /// Removes a one-byte character from the beginning, as often as it is there.
    void TrimLeft(char ch);
    /// Removes all leading characters that are in a set.
    void TrimLeft(const char* set);
    /// Removes blanks, tabs, line breaks, vertical tabs and form feeds from the end.
    void TrimRight();
    /// Removes a one-byte character from the end, as often as it is there.
    void TrimRight(char ch);
    /// Removes all trailing characters that are in a set.
    void TrimRight(const char* set);

    // One by one, for callers that are compiled as C++17.

    /// Equal in length and in every byte.
    friend bool operator==(const CString& a, const CString& b) noexcept { return a.View() == b.View(); }
    /// Unequal in length or in a byte.
    friend bool operator!=(const CString& a, const CString& b) noexcept { return a.View() != b.View(); }
    /// By bytes without a sign; a text comes after its own beginning.
    friend bool operator<(const CString& a, const CString& b) noexcept { return a.View() < b.View(); }
    /// By bytes without a sign; a text comes after its own beginning.
    friend bool operator<=(const CString& a, const CString& b) noexcept { return a.View() <= b.View(); }
    /// By bytes without a sign; a text comes after its own beginning.
    friend bool operator>(const CString& a, const CString& b) noexcept { return a.View() > b.View(); }
    /// By bytes without a sign; a text comes after its own beginning.
    friend bool operator>=(const CString& a, const CString& b) noexcept { return a.View() >= b.View(); }
    /// By Compare.
    friend bool operator==(const CString& a, const char* b) noexcept { return a.Compare(b) == 0; }
    /// By Compare.
    friend bool operator!=(const CString& a, const char* b) noexcept { return a.Compare(b) != 0; }
    /// By Compare.
    friend bool operator<(const CString& a, const char* b) noexcept { return a.Compare(b) < 0; }
    /// By Compare.
    friend bool operator<=(const CString& a, const char* b) noexcept { return a.Compare(b) <= 0; }
    /// By Compare.
    friend bool operator>(const CString& a, const char* b) noexcept { return a.Compare(b) > 0; }
    /// By Compare.
    friend bool operator>=(const CString& a, const char* b) noexcept { return a.Compare(b) >= 0; }
    /// By Compare.
    friend bool operator==(const char* a, const CString& b) noexcept { return 0 == b.Compare(a); }
    /// By Compare.
    friend bool operator!=(const char* a, const CString& b) noexcept { return 0 != b.Compare(a); }
    /// By Compare.
    friend bool operator<(const char* a, const CString& b) noexcept { return 0 < b.Compare(a); }
    /// By Compare.
    friend bool operator<=(const char* a, const CString& b) noexcept { return 0 <= b.Compare(a); }
    /// By Compare.
    friend bool operator>(const char* a, const CString& b) noexcept { return 0 > b.Compare(a); }
    /// By Compare.
    friend bool operator>=(const char* a, const CString& b) noexcept { return 0 >= b.Compare(a); }

private:
    static constexpr std::size_t kInlineCapacity = 23;
    static constexpr unsigned char kBlockMark = 0x80;

    // The last byte tells the two forms apart and, in the inline form, holds 23 - length: it is the closing NUL of a
    // text of 23 bytes.
    struct Block {
        char* data;
        std::uint32_t length;
        std::uint32_t capacity;
        unsigned char unused[7];
        unsigned char mark;
    };
    union Rep {
        char bytes[kInlineCapacity + 1];
        Block block;
    };
    static_assert(sizeof(void*) == 8 && sizeof(Rep) == 24 && offsetof(Block, mark) == kInlineCapacity);

    [[nodiscard]] unsigned char Mark() const noexcept
    {
        return static_cast<unsigned char>(m_rep.bytes[kInlineCapacity]);
    }
    [[nodiscard]] bool IsInline() const noexcept { return Mark() < kBlockMark; }
    [[nodiscard]] std::size_t Size() const noexcept
    {
        return IsInline() ? kInlineCapacity - Mark() : m_rep.block.length;
    }
    void SetInlineLength(std::size_t length) noexcept
    {
        m_rep.bytes[kInlineCapacity] = static_cast<char>(kInlineCapacity - length);
        if (length < kInlineCapacity) {
            m_rep.bytes[length] = '\0';
        }
    }
    void ConstructLong(const char* bytes, std::size_t length);
    void SetBlock(char* data, std::size_t length, std::size_t capacity) noexcept;
    void FreeBlock() const noexcept;
    void Grow(std::size_t needed);
    CString& Assign(const char* bytes, std::size_t length);
    void KeepFrom(std::size_t start) noexcept;
    [[nodiscard]] std::size_t Capacity() const noexcept { return IsInline() ? kInlineCapacity : m_rep.block.capacity; }
    [[nodiscard]] char* Data() noexcept { return IsInline() ? m_rep.bytes : m_rep.block.data; }
    void SetLength(std::size_t length) noexcept;

    template <class T>
    static auto Argument(const T& value)
    {
        if constexpr (std::is_same_v<T, CString>) {
            return value.GetString();
        } else {
            return value;
        }
    }
    static const char* Argument(const char* value) { return value; }
    void FormatC(const char* format, ...);

    Rep m_rep{};
};

/// Joins two texts, NUL bytes included.
QV_API CString operator+(const CString& a, const CString& b);
/// Joins two texts, the second up to its first NUL. @param b  null is the empty text.
QV_API CString operator+(const CString& a, const char* b);
/// Joins two texts, the first up to its first NUL. @param a  null is the empty text.
QV_API CString operator+(const char* a, const CString& b);
