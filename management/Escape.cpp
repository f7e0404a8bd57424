#include "management/Escape.h"

#include "dbaccess/CAConnect.h"
#include "management/DatabaseError.h"
#include "management/Text.h"

#include <fmt/format.h>

namespace management {

namespace {

using Escape = CString (CAConnect::*)(const CString& text) const;

CString EscapeBy(Escape escape, const CAConnect& conn, std::string_view text)
{
    if (text.find('\0') != std::string_view::npos) {
        throw Error(ErrorCode::failed,
                    FillPattern("the text {} holds a NUL byte, which no directory can store", Quoted(text)));
    }
    return WithDatabaseErrors(conn, [&] { return (conn.*escape)(CString(text)); });
}

} // namespace

CString EscapeLiteral(const CAConnect& conn, std::string_view text)
{
    return EscapeBy(&CAConnect::EscapeLiteral, conn, text);
}

std::string Literal(const CAConnect& conn, std::string_view text)
{
    return fmt::format("'{}'", EscapeLiteral(conn, text).View());
}

std::string LiteralOrNull(const CAConnect& conn, const std::optional<std::string>& text)
{
    return text ? Literal(conn, *text) : "NULL";
}

CString EscapeBackslashes(const CAConnect& conn, std::string_view text)
{
    return EscapeBy(&CAConnect::EscapeBackslashes, conn, text);
}

CString EscapeQuotes(const CAConnect& conn, std::string_view text)
{
    return EscapeBy(&CAConnect::EscapeQuotes, conn, text);
}

bool EscapesBackslashes(const CAConnect& conn) { return EscapeLiteral(conn, "\\") != "\\"; }

} // namespace management
