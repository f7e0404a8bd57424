#include "basefun/SqlText.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/EngineKind.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <memory>

namespace sqltext {

Quoted::Quoted(const CString& text)
    : m_doubled(text.View().find('\'') == std::string_view::npos ? CString() : DoubleQuotes(text)),
      m_text(m_doubled.IsEmpty() ? text : m_doubled)
{
}

void Argument::Write(std::int32_t number)
{
    const auto written = std::to_chars(m_digits.data(), m_digits.data() + m_digits.size(), number);
    m_text = {m_digits.data(), static_cast<std::size_t>(written.ptr - m_digits.data())};
}

CString Join(std::string_view literal, const Argument* arguments, std::size_t count)
{
    std::size_t length = literal.size() - 2 * count;
    for (std::size_t i = 0; i < count; ++i) {
        length += arguments[i].View().size();
    }
    // In one piece at the end: a CString looks at its room before each of the many pieces.
    std::array<char, 2048> usual;
    const std::unique_ptr<char[]> longer(length > usual.size() ? new char[length] : nullptr);
    char* const text = longer != nullptr ? longer.get() : usual.data();
    char* to = text;
    const auto append = [&to](std::string_view piece) { to = std::copy(piece.begin(), piece.end(), to); };
    std::size_t from = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t placeholder = literal.find('%', from);
        append(literal.substr(from, placeholder - from));
        append(arguments[i].View());
        from = placeholder + 2;
    }
    append(literal.substr(from));
    return CString(std::string_view(text, length));
}

} // namespace sqltext

CString DoubleQuotes(CString text)
{
    text.Replace("'", "''");
    return text;
}

CString DoubleSlashes(const CAConnect& conn, CString text)
{
    if (dbaccess::EngineKindOf(conn) == dbaccess::EngineKind::mysql) {
        text.Replace("\\", "\\\\");
    }
    return text;
}
