#include "management/import/FileFormat.h"

#include "management/Names.h"
#include "management/Text.h"
#include "platform/CodePage.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <utility>

namespace management {

namespace {

using namespace std::string_view_literals;

struct Signature {
    std::string_view bytes;
    const char* name;
    const char* advice; ///< {0} is the file
};

constexpr const char* kFromOffice =
    Translatable("save it there as CSV in UTF-8, or convert it with `soffice --headless --convert-to "
                 "'csv:Text - txt - csv (StarCalc):44,34,76' {0}`");

constexpr const char* kOfDirectories = Translatable("import it with `qvadmin import {0}`");

/// Marks of the byte order.
constexpr std::pair<std::string_view, std::string_view> kMarks[] = {
    {"\xFF\xFE\0\0"sv, "utf-32"}, {"\0\0\xFE\xFF"sv, "utf-32"}, {"\xFF\xFE"sv, "utf-16"}, {"\xFE\xFF"sv, "utf-16"}};

constexpr Signature kSignatures[] = {
    {"SQLite format 3\0"sv, Translatable("a SQLite database"),
     Translatable("give it to --db if it is a directory, or write a table of it with `sqlite3 -header -csv {0} 'SELECT "
                  "...' >{0}.csv`")},
    {"\x1F\x8B"sv, Translatable("compressed by gzip"), Translatable("unpack it with `gunzip -c {0} >{0}.csv`")},
    {"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"sv, Translatable("an Excel workbook"), kFromOffice},
    {"%PDF-"sv, Translatable("a PDF document"), Translatable("import the table that it was made of")},
};

/// @param what, advice  marked by Translatable; {0} in the advice is the file as a shell takes it.
Sentence Refusal(const char* what, const char* advice, const std::string& name)
{
    const std::string shown = Visible(ShellQuoted(name.starts_with('-') ? "./" + name : name));
    const Sentence filled(Sentence::Origin{.pattern = advice, .arguments = {{shown, true}}});
    return FillPattern("{} is {}; {}", Visible(name), Sentence(what), filled);
}

/// The encoding in which every second byte is NUL; empty for none.
std::string_view Utf16Encoding(std::string_view text)
{
    constexpr std::size_t kEnough = 8;
    std::array<std::size_t, 2> nuls = {};
    for (std::size_t i = 0; i < text.size(); ++i) {
        nuls.at(i % 2) += text[i] == '\0' ? 1 : 0;
    }
    const std::size_t half = text.size() / 2;
    const bool isLong = text.size() >= kEnough;
    return isLong && nuls[1] > half / 2 && nuls[0] <= half / 8   ? "utf-16le"
           : isLong && nuls[0] > half / 2 && nuls[1] <= half / 8 ? "utf-16be"
                                                                 : "";
}

Sentence ArchiveSentence(std::string_view beginning, const std::string& name)
{
    const auto holds = [beginning](std::string_view part) { return beginning.find(part) != std::string_view::npos; };
    if (holds("[Content_Types].xml") || holds("xl/") || holds("docProps/")) {
        return Refusal(Translatable("an Excel workbook (XLSX)"), kFromOffice, name);
    }
    if (holds("application/vnd.oasis.opendocument")) {
        return Refusal(Translatable("an OpenDocument file"), kFromOffice, name);
    }
    return Refusal(Translatable("a ZIP archive"), Translatable("unpack it with `unzip {0}`"), name);
}

bool IsJson(std::string_view text)
{
    const std::size_t first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos || (text[first] != '[' && text[first] != '{')) {
        return false;
    }
    const std::size_t second = text.find_first_not_of(" \t\r\n", first + 1);
    return second == std::string_view::npos || std::string_view("{}[]\"").find(text[second]) != std::string_view::npos;
}

/// A line of several ones that carriage returns end.
bool HasCarriageReturnsOnly(std::string_view text)
{
    const std::size_t at = text.substr(0, text.find('\n')).find('\r');
    return at != std::string_view::npos && at + 1 < text.size() && text[at + 1] != '\n' && text[at + 1] != '\r';
}

bool IsAscii(unsigned char byte) { return byte < 0x80U; }

/// How many bytes a UTF-8 character that begins here should have; 1 for none.
std::size_t CharacterSize(unsigned char first)
{
    return first >= 0xF0U ? 4 : first >= 0xE0U ? 3 : first >= 0xC2U ? 2 : 1;
}

/// Counts what is no ASCII in a text: characters of UTF-8, and bytes that are none.
class LetterCount {
public:
    void Add(std::string_view text)
    {
        for (std::size_t i = 0; i < text.size();) {
            const auto first = static_cast<unsigned char>(text[i]);
            const std::string_view character = text.substr(i, CharacterSize(first));
            const bool isValid = !IsAscii(first) && character.size() > 1 && platform::IsValidUtf8(character);
            m_characters += isValid ? 1 : 0;
            if (!IsAscii(first) && !isValid) {
                ++m_others;
                m_isWindows =
                    m_isWindows && std::string_view("\x81\x8D\x8F\x90\x9D").find(text[i]) == std::string_view::npos;
            }
            i += isValid ? character.size() : 1;
        }
    }

    [[nodiscard]] OtherFile Guess(const std::string& name) const
    {
        if (m_others == 0 || m_characters > 0) {
            return {};
        }
        return m_isWindows ? OtherFile{"windows-1252", ""}
                           : OtherFile{"", Refusal(Translatable("not UTF-8"),
                                                   Translatable("name its encoding with --encoding"), name)};
    }

private:
    std::size_t m_characters = 0;
    std::size_t m_others = 0;
    bool m_isWindows = true;
};

} // namespace

bool IsLdif(std::string_view beginning)
{
    std::string_view text = WithoutByteOrderMark(beginning);
    bool isComment = false;
    // A line that begins with a blank goes on with the one before.
    while (text.starts_with('#') || text.starts_with('\n') || text.starts_with("\r\n") ||
           (isComment && text.starts_with(' '))) {
        isComment = text.starts_with('#') || text.starts_with(' ');
        text.remove_prefix(std::min(text.size(), text.find('\n')));
        text.remove_prefix(text.empty() ? 0 : 1);
    }
    const auto beginsWith = [text](std::string_view name) { return SameName(text.substr(0, name.size()), name); };
    return beginsWith("dn:") || beginsWith("version:") || (isComment && text.empty());
}

OtherFile GuessFormat(std::string_view beginning, const std::string& name)
{
    for (const auto& [mark, encoding] : kMarks) {
        if (beginning.starts_with(mark)) {
            return {std::string(encoding), ""};
        }
    }
    const auto* known = std::ranges::find_if(
        kSignatures, [beginning](const Signature& signature) { return beginning.starts_with(signature.bytes); });
    if (known != std::end(kSignatures)) {
        return {"", Refusal(known->name, known->advice, name)};
    }
    if (beginning.starts_with("PK\x03\x04")) {
        return {"", ArchiveSentence(beginning, name)};
    }
    const std::string_view utf16 = Utf16Encoding(beginning);
    if (!utf16.empty()) {
        return {std::string(utf16), ""};
    }
    const std::string_view text = WithoutByteOrderMark(beginning);
    if (text.starts_with(R"({"format":"qvadmin directory")")) {
        return {"", Refusal(Translatable("an exported directory"), kOfDirectories, name)};
    }
    if (IsLdif(beginning)) {
        return {"", Refusal(Translatable("LDIF"), kOfDirectories, name)};
    }
    if (IsJson(beginning)) {
        return {
            "",
            Refusal(Translatable("JSON"),
                    Translatable(
                        "convert it with `jq -r '(.[0] | keys_unsorted) as $names | $names, (.[] | [.[$names[]]]) | "
                        "@csv' {0} >{0}.csv`"),
                    name)};
    }
    if (HasCarriageReturnsOnly(beginning)) {
        return {"", Refusal(Translatable("a text whose lines end with carriage returns"),
                            Translatable("convert it with `tr '\\r' '\\n' <{0} >{0}.csv`"), name)};
    }
    LetterCount letters;
    // The last character may be cut off.
    std::size_t end = beginning.size();
    while (end > 0 && beginning.size() - end < 3 && !IsAscii(static_cast<unsigned char>(beginning[end - 1]))) {
        --end;
    }
    letters.Add(beginning.substr(0, end == 0 ? beginning.size() : end));
    return letters.Guess(name);
}

OtherFile GuessEncoding(std::istream& in, const std::string& name)
{
    LetterCount letters;
    std::string text;
    std::array<char, 65536> bytes = {};
    for (std::streamsize count = in.rdbuf()->sgetn(bytes.data(), bytes.size()); count > 0;
         count = in.rdbuf()->sgetn(bytes.data(), bytes.size())) {
        text.append(bytes.data(), static_cast<std::size_t>(count));
        // A character may go on in the next piece; no line break is part of one.
        std::size_t end = text.size();
        while (end > 0 && text.size() - end < 3 && !IsAscii(static_cast<unsigned char>(text[end - 1]))) {
            --end;
        }
        letters.Add(std::string_view(text).substr(0, end));
        text.erase(0, end);
    }
    letters.Add(text);
    return letters.Guess(name);
}

} // namespace management
