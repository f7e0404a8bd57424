#include "console/Escape.h"

#include "console/Engine.h"
#include "console/Text.h"
#include "dbaccess/CAConnect.h"

namespace console {

namespace {

constexpr int kBackslashesEscape = 6;

CString WithoutNul(std::string_view text)
{
    if (text.find('\0') != std::string_view::npos) {
        throw Refusal(Exit::failed, "the text " + Quoted(text) + " holds a NUL byte, which no directory can store");
    }
    return CString(text);
}

} // namespace

CString SlashesDoubled(const CAConnect& conn, std::string_view text)
{
    CString doubled = WithoutNul(text);
    if (conn.m_nDBType == kBackslashesEscape) {
        doubled.Replace("\\", "\\\\");
    }
    return doubled;
}

CString Escaped(const CAConnect& conn, std::string_view text)
{
    const CString checked = WithoutNul(text);
    return Asking(conn, [&] { return conn.EscapeText(checked); });
}

} // namespace console
