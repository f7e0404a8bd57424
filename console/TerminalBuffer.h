#pragma once

#include <streambuf>
#include <string>
#include <string_view>

namespace console {

/// Passes a text on to a terminal, with what would act on it in its visible form: data may hold escape sequences.
class TerminalBuffer final : public std::streambuf {
public:
    /// @param terminal  must outlive this. @param kept  control characters that are passed on as they are.
    TerminalBuffer(std::streambuf& terminal, std::string_view kept) : m_terminal(terminal), m_kept(kept) {}
    TerminalBuffer(const TerminalBuffer&) = delete;
    TerminalBuffer& operator=(const TerminalBuffer&) = delete;
    /// Passes on what is left, even half a character.
    ~TerminalBuffer() override;

    /// Passes on what is to act on the terminal. Everything before it is to be flushed.
    void PassThrough(std::string_view sequence);

protected:
    int_type overflow(int_type ch) override;
    std::streamsize xsputn(const char* bytes, std::streamsize count) override;
    /// A character that is not whole yet waits for its other bytes.
    int sync() override;

private:
    /// @return whether the terminal took all of it.
    bool PassOn(std::size_t length);

    std::streambuf& m_terminal;
    std::string m_kept;
    std::string m_pending;
};

} // namespace console
