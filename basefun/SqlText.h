#pragma once

#include "platform/CString.h"

#include <array>
#include <cstdint>
#include <string_view>
#include <type_traits>

class CAConnect;

// Statement texts: a literal with %s for texts and %d for 32-bit numbers, checked against its arguments when compiled.

namespace sqltext {

/// A text with every ' doubled; no copy where it has none. Lives as long as the text.
class Quoted {
public:
    explicit Quoted(const CString& text);
    Quoted(const Quoted&) = delete;
    Quoted& operator=(const Quoted&) = delete;

    [[nodiscard]] const CString& Text() const noexcept { return m_text; }

private:
    CString m_doubled;
    const CString& m_text;
};

/// One argument, reduced to what its placeholder writes: a text up to its first NUL, or a signed 32-bit number (flags
/// as 0 or 1).
class Argument {
public:
    Argument(const CString& text) : m_text(text.GetString(), ::strnlen(text.GetString(), text.View().size())) {}
    Argument(const Quoted& text) : Argument(text.Text()) {}
    Argument(const char* text) : m_text(text) {}
    Argument(int number) { Write(number); }
    Argument(bool flag) { Write(flag ? 1 : 0); }
    Argument(unsigned int number) { Write(static_cast<std::int32_t>(number)); }
    Argument(unsigned long number) { Write(static_cast<std::int32_t>(static_cast<std::uint32_t>(number))); }
    Argument(const Argument&) = delete;
    Argument& operator=(const Argument&) = delete;

    [[nodiscard]] std::string_view View() const noexcept { return m_text; }

private:
    void Write(std::int32_t number);

    std::array<char, 11> m_digits;
    std::string_view m_text;
};

template <class T>
inline constexpr char kPlaceholder = std::is_arithmetic_v<T> ? 'd' : 's';

/// Joins literal and arguments. @param count  as many arguments as the literal has placeholders.
CString Join(std::string_view literal, const Argument* arguments, std::size_t count);

} // namespace sqltext

/// A statement literal whose placeholders fit the argument types; any other does not compile.
template <class... Args>
class SqlText {
public:
    consteval SqlText(const char* sql) : m_text(sql)
    {
        constexpr char kinds[] = {sqltext::kPlaceholder<Args>..., '\0'};
        const char* kind = kinds;
        for (const char* p = sql; *p != '\0'; ++p) {
            if (*p == '%' && *++p != *kind++) {
                throw "placeholder and argument differ";
            }
        }
        if (*kind != '\0') {
            throw "more arguments than placeholders";
        }
    }

    [[nodiscard]] std::string_view View() const noexcept { return m_text; }

private:
    std::string_view m_text;
};

/// The statement with its arguments put in: %s writes a text up to its first NUL, %d a signed 32-bit number.
template <class... Args>
CString FormatSql(SqlText<std::type_identity_t<std::decay_t<Args>>...> sql, const Args&... args)
{
    if constexpr (sizeof...(Args) == 0) {
        return CString(sql.View());
    } else {
        const sqltext::Argument arguments[] = {args...};
        return sqltext::Join(sql.View(), arguments, sizeof...(Args));
    }
}

/// The text with every ' doubled.
CString DoubleQuotes(CString text);
/// The text with every backslash doubled where the engine kind is 6, and as it is on all others.
CString DoubleSlashes(const CAConnect& conn, CString text);
