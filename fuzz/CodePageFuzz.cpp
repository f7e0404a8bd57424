// Conversion and character rules on any bytes: nothing undefined, no byte swallowed, replacing finds characters only.

#include "fuzz/Fuzz.h"
#include "platform/CString.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <string>

namespace {

constexpr UINT kCodePages[] = {CP_UTF8, 936, 950, 932, 949, 874, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258};

// A quote is never the second byte of a character, so each one must come through.
std::size_t Quotes(std::string_view text) { return static_cast<std::size_t>(std::ranges::count(text, '\'')); }

void Check(std::string_view text)
{
    const std::string utf8 = platform::AnsiToUtf8(text);
    if (!platform::AnsiIsUtf8()) {
        fuzz::Require(platform::IsValidUtf8(utf8), "what is converted is well-formed");
    }
    fuzz::Require(Quotes(utf8) == Quotes(text), "no quote is lost on the way to UTF-8");

    const CString back = platform::Utf8ToAnsi(utf8);
    fuzz::Require(Quotes(back.View()) == Quotes(text), "no quote is lost on the way back");

    CString doubled{text};
    const int count = doubled.Replace("'", "''");
    fuzz::Require(static_cast<std::size_t>(count) == Quotes(text), "every quote is doubled");
    fuzz::Require(doubled.View().size() == text.size() + Quotes(text), "nothing else is touched");
    doubled.Replace("''", "'");
    fuzz::Require(count == 0 || doubled.View().size() <= text.size() + Quotes(text), "halving does not lengthen");

    CString slashed{text};
    slashed.Replace("\\", "\\\\");
    CString halved = slashed;
    halved.Replace("\\\\", "\\");
    fuzz::Require(halved.View() == text, "doubled backslashes halve to the same text");

    CString upper{text};
    upper.MakeUpper();
    CString again = upper;
    again.MakeUpper();
    fuzz::Require(Quotes(upper.View()) == Quotes(text), "capitals keep the quotes");

    CString trimmed{text};
    trimmed.TrimLeft("' \\");
    trimmed.TrimRight("' \\");
    fuzz::Require(text.find(trimmed.View()) != std::string_view::npos, "trimming only cuts the ends");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    for (const UINT codePage : kCodePages) {
        fuzz::Require(SetAnsiCodePage(codePage), "the code page is known");
        Check(fuzz::Text(data, size));
    }
    return 0;
}
