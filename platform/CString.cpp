#include "platform/CString.h"

#include "platform/CodePage.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

constexpr std::size_t kMaxLength = 0x7FFFFFFE;
constexpr std::string_view kWhiteSpace = " \t\n\v\f\r";

std::size_t CheckedLength(std::size_t length)
{
    if (length > kMaxLength) {
        throw std::length_error("text too long");
    }
    return length;
}

// With its closing NUL the block is a multiple of 16 bytes, which the allocator would hand out anyway.
std::size_t RoundedCapacity(std::size_t length) { return std::min(length | 15, kMaxLength); }

char* AllocatedBlock(void* old, std::size_t capacity)
{
    void* data = std::realloc(old, capacity + 1);
    if (data == nullptr) {
        throw std::bad_alloc();
    }
    return static_cast<char*>(data);
}

std::string_view ViewOf(const char* text) { return text ? std::string_view(text) : std::string_view(); }

bool IsAscii(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), [](char ch) { return static_cast<unsigned char>(ch) < 0x80; });
}

std::string_view CharacterAt(std::string_view text, std::size_t start)
{
    const std::string_view rest = text.substr(start);
    return rest.substr(0, platform::AnsiCharLength(rest));
}

std::size_t NextBoundary(std::string_view text, std::size_t boundary, std::size_t target)
{
    while (boundary < target) {
        boundary += CharacterAt(text, boundary).size();
    }
    return boundary;
}

bool HasCharacter(std::string_view set, std::string_view character)
{
    for (std::size_t at = 0; at < set.size();) {
        const std::string_view member = CharacterAt(set, at);
        if (member == character) {
            return true;
        }
        at += member.size();
    }
    return false;
}

// In UTF-8 no character's bytes occur inside another's; elsewhere a hit must begin and end between two characters.
class CharacterSearch {
public:
    CharacterSearch(std::string_view text, std::string_view wanted)
        : m_text(text), m_wanted(wanted), m_byBytes(platform::AnsiIsUtf8() && platform::IsValidUtf8(wanted))
    {
    }

    // `start` lies between two characters.
    [[nodiscard]] std::size_t Next(std::size_t start) const
    {
        std::size_t hit = m_text.find(m_wanted, start);
        while (hit != std::string_view::npos && !m_byBytes) {
            start = NextBoundary(m_text, start, hit);
            const std::size_t end = hit + m_wanted.size();
            if (start == hit && NextBoundary(m_text, hit, end) == end) {
                break;
            }
            start = NextBoundary(m_text, start, hit + 1);
            hit = m_text.find(m_wanted, start);
        }
        return hit;
    }

private:
    std::string_view m_text;
    std::string_view m_wanted;
    bool m_byBytes;
};

std::size_t StartBehind(std::string_view text, std::string_view set)
{
    std::size_t start = 0;
    while (start < text.size()) {
        const std::string_view character = CharacterAt(text, start);
        if (!HasCharacter(set, character)) {
            break;
        }
        start += character.size();
    }
    return start;
}

// Where a character begins cannot be told from behind in a double-byte code page, so this walks from the start.
std::size_t WalkedEndBefore(std::string_view text, std::string_view set)
{
    std::size_t end = 0;
    for (std::size_t at = 0; at < text.size();) {
        const std::string_view character = CharacterAt(text, at);
        at += character.size();
        end = HasCharacter(set, character) ? end : at;
    }
    return end;
}

std::size_t EndBefore(std::string_view text, std::string_view set)
{
    if (text.empty() || set.find(text.back()) == std::string_view::npos) {
        return text.size();
    }
    if (platform::AnsiIsUtf8() && IsAscii(set)) {
        return text.find_last_not_of(set) + 1;
    }
    return WalkedEndBefore(text, set);
}

} // namespace

CString::CString(char ch, int count) : CString()
{
    if (count <= 0) {
        return;
    }
    const auto length = static_cast<std::size_t>(count);
    Reserve(length);
    std::memset(Data(), ch, length);
    SetLength(length);
}

// Also copies a text that has become short but still owns a block; the copy needs none.
void CString::ConstructLong(const char* bytes, std::size_t length)
{
    if (length <= kInlineCapacity) {
        std::memcpy(m_rep.bytes, bytes, length);
        SetInlineLength(length);
        return;
    }
    const std::size_t capacity = RoundedCapacity(CheckedLength(length));
    char* data = AllocatedBlock(nullptr, capacity);
    std::memcpy(data, bytes, length);
    data[length] = '\0';
    SetBlock(data, length, capacity);
}

void CString::SetBlock(char* data, std::size_t length, std::size_t capacity) noexcept
{
    m_rep.block = {data, static_cast<std::uint32_t>(length), static_cast<std::uint32_t>(capacity), {}, kBlockMark};
}

void CString::FreeBlock() const noexcept { std::free(m_rep.block.data); }

void CString::SetLength(std::size_t length) noexcept
{
    if (IsInline()) {
        SetInlineLength(length);
    } else {
        m_rep.block.length = static_cast<std::uint32_t>(length);
        m_rep.block.data[length] = '\0';
    }
}

// By half at least, so that a text built bit by bit is copied a bounded number of times.
void CString::Grow(std::size_t needed)
{
    const std::size_t length = Size();
    const std::size_t capacity = RoundedCapacity(std::max(CheckedLength(needed), Capacity() + Capacity() / 2));
    if (IsInline()) {
        char* data = AllocatedBlock(nullptr, capacity);
        std::memcpy(data, m_rep.bytes, length);
        data[length] = '\0';
        SetBlock(data, length, capacity);
    } else {
        SetBlock(AllocatedBlock(m_rep.block.data, capacity), length, capacity);
    }
}

// Bytes of this very text always fit, so they are never read after their block is gone.
CString& CString::Assign(const char* bytes, std::size_t length)
{
    if (length > Capacity()) {
        return *this = CString(bytes, length);
    }
    if (length != 0) {
        std::memmove(Data(), bytes, length);
    }
    SetLength(length);
    return *this;
}

CString& CString::operator=(const CString& from)
{
    if (this == &from) {
        return *this;
    }
    if (IsInline() && from.IsInline()) {
        m_rep = from.m_rep;
        return *this;
    }
    return Assign(from.GetString(), from.Size());
}

CString& CString::operator=(CString&& from) noexcept
{
    if (this != &from) {
        Empty();
        m_rep = from.m_rep;
        from.SetInlineLength(0);
    }
    return *this;
}

CString& CString::operator=(const char* text)
{
    const std::string_view view = ViewOf(text);
    return Assign(view.data(), view.size());
}

void CString::Empty() noexcept
{
    if (!IsInline()) {
        FreeBlock();
    }
    SetInlineLength(0);
}

char CString::GetAt(int index) const
{
    if (index < 0 || index >= GetLength()) {
        throw std::out_of_range("text index out of range");
    }
    return GetString()[index];
}

void CString::SetAt(int index, char ch)
{
    if (index < 0 || index >= GetLength()) {
        throw std::out_of_range("text index out of range");
    }
    Data()[index] = ch;
}

CString& CString::Append(const char* bytes, std::size_t length)
{
    const std::size_t size = Size();
    if (length <= Capacity() - size) {
        // Overlaps where the bytes are this text's own and reach up to its NUL.
        if (length != 0) {
            std::memmove(Data() + size, bytes, length);
        }
    } else {
        CheckedLength(length);
        const char* own = GetString();
        const bool isOwn = !std::less<>()(bytes, own) && !std::less<>()(own + size, bytes);
        const std::size_t offset = isOwn ? static_cast<std::size_t>(bytes - own) : 0;
        Grow(size + length);
        std::memmove(Data() + size, isOwn ? Data() + offset : bytes, length);
    }
    SetLength(size + length);
    return *this;
}

void CString::Reserve(std::size_t length)
{
    if (length > Capacity()) {
        Grow(length);
    }
}

int CString::Compare(const char* text) const noexcept { return View().compare(ViewOf(text)); }

// The arguments may point into this text, which therefore stays until the new one is complete.
void CString::FormatC(const char* format, ...)
{
    char buffer[512];
    std::va_list arguments;
    va_start(arguments, format);
    const int needed = std::vsnprintf(buffer, sizeof(buffer), format, arguments);
    va_end(arguments);
    const auto length = static_cast<std::size_t>(std::max(needed, 0));
    if (length < sizeof(buffer)) {
        Assign(buffer, length);
        return;
    }
    CString result;
    result.Reserve(length);
    va_start(arguments, format);
    std::vsnprintf(result.Data(), length + 1, format, arguments);
    va_end(arguments);
    result.SetLength(length);
    *this = std::move(result);
}

int CString::Replace(const char* from, const char* to)
{
    const std::string_view wanted = ViewOf(from);
    const std::string_view replacement = ViewOf(to);
    if (wanted.empty()) {
        return 0;
    }
    const std::string_view text = View();
    const CharacterSearch search(text, wanted);
    std::size_t hit = search.Next(0);
    if (hit == std::string_view::npos) {
        return 0;
    }
    CString result;
    result.Reserve(text.size());
    int count = 0;
    std::size_t copied = 0;
    for (; hit != std::string_view::npos; hit = search.Next(copied)) {
        result += text.substr(copied, hit - copied);
        result += replacement;
        copied = hit + wanted.size();
        ++count;
    }
    result += text.substr(copied);
    *this = std::move(result);
    return count;
}

int CString::Replace(char from, char to)
{
    const CharacterSearch search(View(), {&from, 1});
    int count = 0;
    for (std::size_t hit = search.Next(0); hit != std::string_view::npos; hit = search.Next(hit + 1)) {
        Data()[hit] = to;
        ++count;
    }
    return count;
}

void CString::MakeUpper()
{
    char* data = Data();
    const std::size_t size = Size();
    std::size_t at = 0;
    for (; at < size && static_cast<unsigned char>(data[at]) < 0x80; ++at) {
        data[at] = data[at] >= 'a' && data[at] <= 'z' ? static_cast<char>(data[at] - 'a' + 'A') : data[at];
    }
    if (at < size) {
        const std::string rest = platform::UpperAnsi(View().substr(at));
        SetLength(at);
        Append(rest.data(), rest.size());
    }
}

void CString::KeepFrom(std::size_t start) noexcept
{
    if (start != 0) {
        const std::size_t length = Size() - start;
        std::memmove(Data(), Data() + start, length);
        SetLength(length);
    }
}

void CString::TrimLeft() { KeepFrom(StartBehind(View(), kWhiteSpace)); }

void CString::TrimLeft(char ch) { KeepFrom(StartBehind(View(), {&ch, 1})); }

void CString::TrimLeft(const char* set) { KeepFrom(StartBehind(View(), ViewOf(set))); }

void CString::TrimRight() { SetLength(EndBefore(View(), kWhiteSpace)); }

void CString::TrimRight(char ch) { SetLength(EndBefore(View(), {&ch, 1})); }

void CString::TrimRight(const char* set) { SetLength(EndBefore(View(), ViewOf(set))); }

namespace {

CString Joined(std::string_view a, std::string_view b)
{
    CString result;
    result.Reserve(a.size() + b.size());
    result += a;
    result += b;
    return result;
}

} // namespace

CString operator+(const CString& a, const CString& b) { return Joined(a.View(), b.View()); }

CString operator+(const CString& a, const char* b) { return Joined(a.View(), ViewOf(b)); }

CString operator+(const char* a, const CString& b) { return Joined(ViewOf(a), b.View()); }
