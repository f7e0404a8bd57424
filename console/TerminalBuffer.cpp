#include "console/TerminalBuffer.h"

#include "console/ExitCode.h"
#include "management/Text.h"

#include <unicode/utf8.h>

#include <algorithm>
#include <cstdint>

namespace console {

namespace {

constexpr std::size_t kLongestPending = 65536;

// The last character may break off.
std::size_t LengthOfWholeCharacters(std::string_view text)
{
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    std::size_t length = text.size();
    U8_TRUNCATE_IF_INCOMPLETE(bytes, 0, length);
    return length;
}

std::string VisibleExcept(std::string_view kept, std::string_view text)
{
    std::string visible;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find_first_of(kept), text.size());
        visible += Visible(text.substr(0, end));
        visible += text.substr(end, 1);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return visible;
}

} // namespace

TerminalBuffer::~TerminalBuffer()
{
    PassOn(m_pending.size());
    m_terminal.pubsync();
}

void TerminalBuffer::PassThrough(std::string_view sequence)
{
    m_terminal.sputn(sequence.data(), static_cast<std::streamsize>(sequence.size()));
}

TerminalBuffer::int_type TerminalBuffer::overflow(int_type ch)
{
    const char byte = traits_type::to_char_type(ch);
    const bool isTaken = traits_type::eq_int_type(ch, traits_type::eof()) || xsputn(&byte, 1) == 1;
    return isTaken ? traits_type::not_eof(ch) : traits_type::eof();
}

std::streamsize TerminalBuffer::xsputn(const char* bytes, std::streamsize count)
{
    m_pending.append(bytes, static_cast<std::size_t>(count));
    const bool isTaken = m_pending.size() < kLongestPending || PassOn(LengthOfWholeCharacters(m_pending));
    return isTaken ? count : 0;
}

int TerminalBuffer::sync() { return PassOn(LengthOfWholeCharacters(m_pending)) && m_terminal.pubsync() == 0 ? 0 : -1; }

bool TerminalBuffer::PassOn(std::size_t length)
{
    const std::string shown = VisibleExcept(m_kept, std::string_view(m_pending).substr(0, length));
    m_pending.erase(0, length);
    const auto size = static_cast<std::streamsize>(shown.size());
    return m_terminal.sputn(shown.data(), size) == size;
}

} // namespace console
