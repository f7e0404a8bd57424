#include "basefun/SqlText.h"

#include "dbaccess/CAConnect.h"
#include "dbaccess/EngineKind.h"

#include <charconv>

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
    CString text;
    text.Reserve(length);
    std::size_t from = 0;
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t placeholder = literal.find('%', from);
        text += literal.substr(from, placeholder - from);
        text += arguments[i].View();
        from = placeholder + 2;
    }
    text += literal.substr(from);
    return text;
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
