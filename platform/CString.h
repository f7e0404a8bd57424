#pragma once

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
    CString() noexcept { SetInlineLength(0); }
    /// A null pointer gives the empty text.
    CString(const char* text) : CString(text, text ? std::strlen(text) : 0) {}
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
    explicit CString(std::string_view text) : CString(text.data(), text.size()) {}
    explicit CString(char ch, int count = 1);
    CString(const CString& from)
    {
        if (from.IsInline()) {
            m_rep = from.m_rep;
        } else {
            ConstructLong(from.m_rep.block.data, from.m_rep.block.length);
        }
    }
    CString(CString&& from) noexcept : m_rep(from.m_rep) { from.SetInlineLength(0); }
    ~CString()
    {
        if (!IsInline()) {
            FreeBlock();
        }
    }

    CString& operator=(const CString& from);
    CString& operator=(CString&& from) noexcept;
    CString& operator=(const char* text);

    [[nodiscard]] int GetLength() const noexcept { return static_cast<int>(Size()); }
    [[nodiscard]] bool IsEmpty() const noexcept { return Size() == 0; }
    /// Makes the text empty and gives its memory back.
    void Empty() noexcept;

    /// The bytes, followed by a NUL. Valid until the text changes.
    [[nodiscard]] const char* GetString() const noexcept { return IsInline() ? m_rep.bytes : m_rep.block.data; }
    operator const char*() const noexcept { return GetString(); }
    [[nodiscard]] std::string_view View() const noexcept { return {GetString(), Size()}; }

    /// The byte at an index. @throws std::out_of_range outside 0..GetLength()-1.
    [[nodiscard]] char GetAt(int index) const;
    char operator[](int index) const { return GetAt(index); }
    void SetAt(int index, char ch);

    CString& operator+=(const CString& text) { return Append(text.GetString(), text.Size()); }
    CString& operator+=(const char* text) { return Append(text, text ? std::strlen(text) : 0); }
    CString& operator+=(char ch) { return Append(&ch, 1); }
    CString& operator+=(std::string_view text) { return Append(text.data(), text.size()); }
    /// Appends bytes, which may be part of this text.
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
    int Replace(char from, char to);
    /// Upper-cases every letter whose capital the code page has.
    void MakeUpper();

    /// Cut white space, one character, or all characters of a set from one end.
    void TrimLeft();
    void TrimLeft(char ch);
    void TrimLeft(const char* set);
    void TrimRight();
    void TrimRight(char ch);
    void TrimRight(const char* set);

    // One by one, for callers that are compiled as C++17.
    friend bool operator==(const CString& a, const CString& b) noexcept { return a.View() == b.View(); }
    friend bool operator!=(const CString& a, const CString& b) noexcept { return a.View() != b.View(); }
    friend bool operator<(const CString& a, const CString& b) noexcept { return a.View() < b.View(); }
    friend bool operator<=(const CString& a, const CString& b) noexcept { return a.View() <= b.View(); }
    friend bool operator>(const CString& a, const CString& b) noexcept { return a.View() > b.View(); }
    friend bool operator>=(const CString& a, const CString& b) noexcept { return a.View() >= b.View(); }
    friend bool operator==(const CString& a, const char* b) noexcept { return a.Compare(b) == 0; }
    friend bool operator!=(const CString& a, const char* b) noexcept { return a.Compare(b) != 0; }
    friend bool operator<(const CString& a, const char* b) noexcept { return a.Compare(b) < 0; }
    friend bool operator<=(const CString& a, const char* b) noexcept { return a.Compare(b) <= 0; }
    friend bool operator>(const CString& a, const char* b) noexcept { return a.Compare(b) > 0; }
    friend bool operator>=(const CString& a, const char* b) noexcept { return a.Compare(b) >= 0; }
    friend bool operator==(const char* a, const CString& b) noexcept { return 0 == b.Compare(a); }
    friend bool operator!=(const char* a, const CString& b) noexcept { return 0 != b.Compare(a); }
    friend bool operator<(const char* a, const CString& b) noexcept { return 0 < b.Compare(a); }
    friend bool operator<=(const char* a, const CString& b) noexcept { return 0 <= b.Compare(a); }
    friend bool operator>(const char* a, const CString& b) noexcept { return 0 > b.Compare(a); }
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

QV_API CString operator+(const CString& a, const CString& b);
QV_API CString operator+(const CString& a, const char* b);
QV_API CString operator+(const char* a, const CString& b);
