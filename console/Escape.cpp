#include "console/Escape.h"

#include "console/Engine.h"
#include "console/Text.h"
#include "dbaccess/CAConnect.h"

namespace console {

namespace {

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
    // By the engine and not by the kind that it is taken for: what the engine takes for its own must not reach it.
    CString doubled = Escaped(conn, text);
    doubled.Replace("''", "'");
    return doubled;
}

CString Escaped(const CAConnect& conn, std::string_view text)
{
    const CString checked = WithoutNul(text);
    return Asking(conn, [&] { return conn.EscapeText(checked); });
}

CString QuotesDoubled(const CAConnect& conn, std::string_view text)
{
    constexpr int doublesSlashes = 6;
    if (conn.m_nDBType != doublesSlashes) {
        return Escaped(conn, text);
    }
    CString doubled = WithoutNul(text);
    doubled.Replace("'", "''");
    return doubled;
}

bool EscapesBackslashes(const CAConnect& conn) { return Escaped(conn, "\\") != "\\"; }

} // namespace console
