#include "platform/CodePage.h"

#include "platform/CString.h"

#include <unicode/uchar.h>
#include <unicode/ucnv.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace {

constexpr char32_t kReplacement = 0xFFFD;
// Neither is a character, so they can mark places in the tables where there is none.
constexpr char16_t kLeads = 0xFFFE;
constexpr char16_t kNoUnit = 0xFFFF;
constexpr std::size_t kUnits = 0x10000;

/// What a single- or double-byte code page holds; all of it lies in Unicode's first plane.
struct Tables {
    /// The character that a byte is by itself; kLeads for a lead byte, kNoUnit for any other.
    std::vector<char16_t> single;
    /// The character of a lead byte and a trail byte, at (lead << 8 | trail). Empty where no byte leads.
    std::vector<char16_t> pair;
    /// The byte, or (lead << 8 | trail), of each UTF-16 unit; 0 where it has none.
    std::vector<std::uint16_t> code;
};

/// A code page; UTF-8 is the one without tables.
struct CodePage {
    UINT number;
    std::unique_ptr<const Tables> tables;
};

/// A character at the front of a text. Length 0: the first byte begins none.
struct Decoded {
    char32_t value;
    std::size_t length;
};

/// The bytes of one character. Length 0: the code page lacks it.
struct Encoded {
    char bytes[4];
    std::size_t length;

    [[nodiscard]] std::string_view View() const { return {bytes, length}; }
};

constexpr Decoded kInvalid{kReplacement, 0};

constexpr bool IsAscii(char32_t value) { return value < 0x80; }

constexpr bool IsSurrogate(char32_t value) { return value >= 0xD800 && value <= 0xDFFF; }

constexpr unsigned char Byte(std::string_view text, std::size_t index)
{
    return static_cast<unsigned char>(text[index]);
}

std::size_t AsciiRun(std::string_view text)
{
    constexpr std::uint64_t highBits = 0x8080808080808080;
    std::size_t length = 0;
    for (std::uint64_t eight = 0; length + sizeof(eight) <= text.size(); length += sizeof(eight)) {
        std::memcpy(&eight, text.data() + length, sizeof(eight));
        if ((eight & highBits) != 0) {
            break;
        }
    }
    while (length < text.size() && IsAscii(Byte(text, length))) {
        ++length;
    }
    return length;
}

// ---- building the tables -------------------------------------------------------------------------------------------

struct ConverterCloser {
    void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, ConverterCloser>;

Converter OpenedConverter(const char* name)
{
    UErrorCode error = U_ZERO_ERROR;
    Converter converter(ucnv_open(name, &error));
    ucnv_setToUCallBack(converter.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    ucnv_setFromUCallBack(converter.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &error);
    if (U_FAILURE(error)) {
        return nullptr;
    }
    ucnv_setFallback(converter.get(), false);
    return converter;
}

struct OneUnit {
    char16_t unit;
    bool incomplete;
};

OneUnit UnitOf(UConverter* converter, const char* bytes, std::size_t length)
{
    UErrorCode error = U_ZERO_ERROR;
    char16_t units[4] = {};
    char16_t* unitsEnd = units;
    const char* next = bytes;
    ucnv_reset(converter);
    ucnv_toUnicode(converter, &unitsEnd, units + 4, &next, bytes + length, nullptr, true, &error);
    if (U_FAILURE(error) || unitsEnd != units + 1 || units[0] == kReplacement) {
        return {kNoUnit, error == U_TRUNCATED_CHAR_FOUND};
    }
    return {units[0], false};
}

std::uint16_t CodeOf(UConverter* converter, char16_t unit)
{
    UErrorCode error = U_ZERO_ERROR;
    char bytes[8] = {};
    char* bytesEnd = bytes;
    const char16_t* next = &unit;
    ucnv_reset(converter);
    ucnv_fromUnicode(converter, &bytesEnd, bytes + sizeof(bytes), &next, &unit + 1, nullptr, true, &error);
    const auto length = static_cast<std::size_t>(bytesEnd - bytes);
    if (U_FAILURE(error) || length == 0 || length > 2) {
        return 0;
    }
    const std::string_view code(bytes, length);
    return length == 1 ? Byte(code, 0) : static_cast<std::uint16_t>(Byte(code, 0) << 8 | Byte(code, 1));
}

void FillPairs(UConverter* converter, unsigned lead, std::vector<char16_t>& pair)
{
    pair.resize(kUnits, kNoUnit);
    for (unsigned trail = 0; trail < 256; ++trail) {
        const char bytes[] = {static_cast<char>(lead), static_cast<char>(trail)};
        pair[lead << 8 | trail] = UnitOf(converter, bytes, 2).unit;
    }
}

// One converter shuffles three control bytes; on this module's systems ASCII is ASCII in every code page.
void FillAscii(Tables& tables)
{
    for (std::uint16_t ascii = 0; ascii < 0x80; ++ascii) {
        tables.single[ascii] = ascii;
        tables.code[ascii] = ascii;
    }
}

char16_t UnitAt(const Tables& tables, std::uint16_t code)
{
    if (code < 0x100) {
        return tables.single[code];
    }
    return tables.pair.empty() ? kNoUnit : tables.pair[code];
}

// Several bytes may mean the same character, so the converter is asked which of them it is written with.
void FillCodes(UConverter* converter, const std::vector<char16_t>& units, Tables& tables)
{
    for (const char16_t unit : units) {
        if (unit < kLeads && !IsAscii(unit) && tables.code[unit] == 0) {
            const std::uint16_t code = CodeOf(converter, unit);
            tables.code[unit] = UnitAt(tables, code) == unit ? code : std::uint16_t{0};
        }
    }
}

std::unique_ptr<const Tables> BuiltTables(const char* converterName)
{
    const Converter converter = OpenedConverter(converterName);
    if (!converter) {
        return nullptr;
    }
    auto tables = std::make_unique<Tables>();
    tables->single.resize(256, kNoUnit);
    tables->code.resize(kUnits, 0);
    for (unsigned byte = 0; byte < 256; ++byte) {
        const char bytes[] = {static_cast<char>(byte)};
        const OneUnit one = UnitOf(converter.get(), bytes, 1);
        tables->single[byte] = one.incomplete ? kLeads : one.unit;
        if (one.incomplete) {
            FillPairs(converter.get(), byte, tables->pair);
        }
    }
    FillAscii(*tables);
    FillCodes(converter.get(), tables->single, *tables);
    FillCodes(converter.get(), tables->pair, *tables);
    return tables;
}

// ---- finding code pages --------------------------------------------------------------------------------------------

struct Slot {
    UINT number;
    const char* converter;
    std::once_flag once{};
    const CodePage* page = nullptr;
};

const CodePage kUtf8{CP_UTF8, nullptr};

Slot slots[] = {
    {936, "windows-936-2000"},    {950, "windows-950-2000"},    {932, "ibm-943_P15A-2003"},
    {949, "windows-949-2000"},    {874, "windows-874-2000"},    {1250, "ibm-5346_P100-1998"},
    {1251, "ibm-5347_P100-1998"}, {1252, "ibm-5348_P100-1997"}, {1253, "ibm-5349_P100-1998"},
    {1254, "ibm-5350_P100-1998"}, {1255, "ibm-9447_P100-2002"}, {1256, "ibm-9448_X100-2005"},
    {1257, "ibm-9449_P100-2002"}, {1258, "ibm-5354_P100-1998"},
};

// Built pages stay until the process is gone, as threads may still convert while it ends.
const CodePage* BuiltPage(Slot& slot)
{
    std::call_once(slot.once, [&slot] {
        if (auto tables = BuiltTables(slot.converter)) {
            slot.page = new CodePage{slot.number, std::move(tables)};
        }
    });
    return slot.page;
}

// Null for a code page that is unknown, here or to the ICU of this system.
const CodePage* NamedPage(UINT number)
{
    if (number == CP_UTF8) {
        return &kUtf8;
    }
    for (Slot& slot : slots) {
        if (slot.number == number) {
            return BuiltPage(slot);
        }
    }
    return nullptr;
}

constinit std::atomic<const CodePage*> ansiPage{nullptr};

const CodePage& PresetPage()
{
    const char* preset = std::getenv("QV_ANSI_CODEPAGE");
    const std::string_view text = preset ? preset : "";
    UINT number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    const CodePage* named = isNumber ? NamedPage(number) : nullptr;
    const CodePage* expected = nullptr;
    const CodePage* page = named ? named : &kUtf8;
    return ansiPage.compare_exchange_strong(expected, page) ? *page : *expected;
}

const CodePage& AnsiPage()
{
    const CodePage* page = ansiPage.load(std::memory_order_acquire);
    return page ? *page : PresetPage();
}

const CodePage* PageOf(UINT number) { return number == CP_ACP ? &AnsiPage() : NamedPage(number); }

// ---- single characters ---------------------------------------------------------------------------------------------

std::size_t Utf8Length(unsigned char first)
{
    if (first >= 0xC2 && first <= 0xDF) {
        return 2;
    }
    if (first >= 0xE0 && first <= 0xEF) {
        return 3;
    }
    return first >= 0xF0 && first <= 0xF4 ? 4 : 0;
}

Decoded DecodedUtf8(std::string_view text)
{
    constexpr char32_t least[] = {0, 0, 0x80, 0x800, 0x10000};
    const unsigned char first = Byte(text, 0);
    if (IsAscii(first)) {
        return {first, 1};
    }
    const std::size_t length = Utf8Length(first);
    if (length == 0 || length > text.size()) {
        return kInvalid;
    }
    char32_t value = first & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if ((Byte(text, i) & 0xC0) != 0x80) {
            return kInvalid;
        }
        value = value << 6 | (Byte(text, i) & 0x3F);
    }
    return value < least[length] || value > 0x10FFFF || IsSurrogate(value) ? kInvalid : Decoded{value, length};
}

Decoded DecodedByTables(const Tables& tables, std::string_view text)
{
    const unsigned char first = Byte(text, 0);
    const char16_t single = tables.single[first];
    if (single < kLeads) {
        return {single, 1};
    }
    if (single == kNoUnit || text.size() < 2) {
        return kInvalid;
    }
    const char16_t unit = tables.pair[static_cast<std::size_t>(first << 8 | Byte(text, 1))];
    return unit == kNoUnit ? kInvalid : Decoded{unit, 2};
}

Decoded DecodedFront(const CodePage& page, std::string_view text)
{
    return page.tables ? DecodedByTables(*page.tables, text) : DecodedUtf8(text);
}

Decoded DecodedUtf16(std::u16string_view text)
{
    const char32_t first = text[0];
    if (!IsSurrogate(first)) {
        return {first, 1};
    }
    const bool isPair = first < 0xDC00 && text.size() > 1 && text[1] >= 0xDC00 && text[1] <= 0xDFFF;
    return isPair ? Decoded{0x10000 + ((first - 0xD800) << 10) + (text[1] - 0xDC00u), 2} : kInvalid;
}

Encoded EncodedUtf8(char32_t value)
{
    const auto tail = [value](unsigned shift) { return static_cast<char>(0x80 | (value >> shift & 0x3F)); };
    if (IsAscii(value)) {
        return {{static_cast<char>(value)}, 1};
    }
    if (value < 0x800) {
        return {{static_cast<char>(0xC0 | value >> 6), tail(0)}, 2};
    }
    if (value < 0x10000) {
        return {{static_cast<char>(0xE0 | value >> 12), tail(6), tail(0)}, 3};
    }
    return {{static_cast<char>(0xF0 | value >> 18), tail(12), tail(6), tail(0)}, 4};
}

Encoded EncodedByTables(const Tables& tables, char32_t value)
{
    const unsigned code = value < kUnits ? tables.code[value] : 0;
    if (code == 0 && value != 0) {
        return {{}, 0};
    }
    if (code < 0x100) {
        return {{static_cast<char>(code)}, 1};
    }
    return {{static_cast<char>(code >> 8), static_cast<char>(code & 0xFF)}, 2};
}

Encoded EncodedCharacter(const CodePage& page, char32_t value)
{
    return page.tables ? EncodedByTables(*page.tables, value) : EncodedUtf8(value);
}

// ---- whole texts ---------------------------------------------------------------------------------------------------

// Calls `ascii` for each run of ASCII, and `other(decoded, bytes)` for each other character and each invalid byte.
template <class Ascii, class Other>
void ForEachPart(const CodePage& page, std::string_view text, Ascii ascii, Other other)
{
    while (!text.empty()) {
        const std::size_t run = AsciiRun(text);
        if (run != 0) {
            ascii(text.substr(0, run));
            text.remove_prefix(run);
            continue;
        }
        const Decoded decoded = DecodedFront(page, text);
        const std::size_t length = decoded.length == 0 ? 1 : decoded.length;
        other(decoded, text.substr(0, length));
        text.remove_prefix(length);
    }
}

template <class Out>
void Transcode(const CodePage& from, std::string_view text, const CodePage& to, Out& out)
{
    const auto character = [&](const Decoded& decoded, std::string_view) {
        const Encoded encoded = EncodedCharacter(to, decoded.value);
        out += encoded.length == 0 ? std::string_view("?") : encoded.View();
    };
    ForEachPart(from, text, [&](std::string_view run) { out += run; }, character);
}

template <class Map>
void AppendMapped(std::string& out, std::string_view run, Map map)
{
    const auto start = static_cast<std::ptrdiff_t>(out.size());
    out += run;
    std::transform(out.begin() + start, out.end(), out.begin() + start,
                   [map](char ch) { return static_cast<char>(map(static_cast<UChar32>(ch))); });
}

UChar32 Capital(UChar32 letter) { return u_toupper(letter); }

UChar32 CapitalOfAscii(UChar32 letter) { return letter >= 'a' && letter <= 'z' ? letter - 'a' + 'A' : letter; }

UChar32 Folded(UChar32 letter)
{
    const UChar32 folded = u_foldCase(letter, U_FOLD_CASE_DEFAULT);
    return u_toupper(folded) == u_toupper(letter) ? folded : letter;
}

UChar32 FoldedAscii(UChar32 letter) { return letter >= 'A' && letter <= 'Z' ? letter - 'A' + 'a' : letter; }

// Letter by letter; the second map does the same for ASCII, and faster.
template <class Map, class AsciiMap>
std::string Mapped(const CodePage& page, std::string_view text, Map map, AsciiMap mapAscii)
{
    std::string out;
    out.reserve(text.size());
    // What the map leaves alone keeps its bytes, also where it could be written with others.
    const auto character = [&](const Decoded& decoded, std::string_view bytes) {
        const auto mapped = static_cast<char32_t>(map(static_cast<UChar32>(decoded.value)));
        const Encoded encoded = mapped == decoded.value ? Encoded{} : EncodedCharacter(page, mapped);
        out += encoded.length == 0 ? bytes : encoded.View();
    };
    ForEachPart(page, text, [&](std::string_view run) { AppendMapped(out, run, mapAscii); }, character);
    return out;
}

std::string Upper(const CodePage& page, std::string_view text) { return Mapped(page, text, Capital, CapitalOfAscii); }

/// The caller's room for a converted text; counts what would be written where none is given.
template <class Unit>
class Room {
public:
    Room(Unit* out, int size) : m_out(size == 0 ? nullptr : out), m_size(static_cast<std::size_t>(size)) {}

    void Put(const Unit* units, std::size_t count)
    {
        if (m_out != nullptr && count <= m_size - m_used) {
            std::memcpy(m_out + m_used, units, count * sizeof(Unit));
        } else if (m_size != 0) {
            m_isTooSmall = true;
            return;
        }
        m_used += count;
    }
    void Put(Unit unit) { Put(&unit, 1); }

    [[nodiscard]] int Result() const { return m_isTooSmall || m_used > INT_MAX ? 0 : static_cast<int>(m_used); }

private:
    Unit* m_out;
    std::size_t m_size;
    std::size_t m_used = 0;
    bool m_isTooSmall = false;
};

void PutUtf16(Room<char16_t>& room, char32_t value)
{
    if (value < 0x10000) {
        room.Put(static_cast<char16_t>(value));
        return;
    }
    room.Put(static_cast<char16_t>(0xD7C0 + (value >> 10)));
    room.Put(static_cast<char16_t>(0xDC00 + (value & 0x3FF)));
}

template <class Unit>
std::basic_string_view<Unit> InputOf(const Unit* text, int length)
{
    using View = std::basic_string_view<Unit>;
    return length < 0 ? View(text, View(text).size() + 1) : View(text, static_cast<std::size_t>(length));
}

// A single character, which need not be followed by a NUL.
std::string_view DefaultCharacter(const Tables& tables, const char* defaultChar)
{
    if (defaultChar == nullptr) {
        return "?";
    }
    const bool leads = tables.single[static_cast<unsigned char>(*defaultChar)] == kLeads;
    return {defaultChar, leads ? std::size_t{2} : std::size_t{1}};
}

} // namespace

bool SetAnsiCodePage(UINT codePage)
{
    const CodePage* page = NamedPage(codePage);
    if (page == nullptr) {
        return false;
    }
    ansiPage.store(page, std::memory_order_release);
    return true;
}

UINT GetACP() { return AnsiPage().number; }

int MultiByteToWideChar(UINT codePage, unsigned int flags, const char* text, int length, char16_t* out, int outLength)
{
    const CodePage* page = PageOf(codePage);
    if (page == nullptr || text == nullptr || outLength < 0) {
        return 0;
    }
    Room<char16_t> room(out, outLength);
    bool isValid = true;
    const auto ascii = [&](std::string_view run) {
        for (const char ch : run) {
            room.Put(static_cast<char16_t>(ch));
        }
    };
    const auto character = [&](const Decoded& decoded, std::string_view) {
        isValid = isValid && decoded.length != 0;
        PutUtf16(room, decoded.value);
    };
    ForEachPart(*page, InputOf(text, length), ascii, character);
    return isValid || (flags & MB_ERR_INVALID_CHARS) == 0 ? room.Result() : 0;
}

int WideCharToMultiByte(UINT codePage, unsigned int /*flags*/, const char16_t* text, int length, char* out,
                        int outLength, const char* defaultChar, int* usedDefaultChar)
{
    const CodePage* page = PageOf(codePage);
    if (page == nullptr || text == nullptr || outLength < 0) {
        return 0;
    }
    Room<char> room(out, outLength);
    bool isReplaced = false;
    for (std::u16string_view rest = InputOf(text, length); !rest.empty();) {
        const Decoded decoded = DecodedUtf16(rest);
        const Encoded encoded = EncodedCharacter(*page, decoded.value);
        const auto bytes = encoded.length == 0 ? DefaultCharacter(*page->tables, defaultChar) : encoded.View();
        room.Put(bytes.data(), bytes.size());
        isReplaced = isReplaced || decoded.length == 0 || encoded.length == 0;
        rest.remove_prefix(decoded.length == 0 ? 1 : decoded.length);
    }
    if (usedDefaultChar != nullptr) {
        *usedDefaultChar = isReplaced ? 1 : 0;
    }
    return room.Result();
}

int _mbscmp(const unsigned char* a, const unsigned char* b)
{
    std::string_view restA(reinterpret_cast<const char*>(a));
    std::string_view restB(reinterpret_cast<const char*>(b));
    const CodePage& page = AnsiPage();
    if (!page.tables || page.tables->pair.empty()) {
        // Byte order is character order here.
        return restA.compare(restB);
    }
    const auto takeCode = [&page](std::string_view& rest) {
        const unsigned first = Byte(rest, 0);
        const bool isPair = DecodedFront(page, rest).length == 2;
        const unsigned code = isPair ? first << 8 | Byte(rest, 1) : first;
        rest.remove_prefix(isPair ? 2 : 1);
        return static_cast<int>(code);
    };
    while (!restA.empty() && !restB.empty()) {
        const int codeA = takeCode(restA);
        const int codeB = takeCode(restB);
        if (codeA != codeB) {
            return codeA - codeB;
        }
    }
    return static_cast<int>(!restA.empty()) - static_cast<int>(!restB.empty());
}

namespace platform {

bool AnsiIsUtf8() noexcept { return !AnsiPage().tables; }

std::string AnsiToUtf8(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    Transcode(AnsiPage(), text, kUtf8, out);
    return out;
}

CString Utf8ToAnsi(std::string_view text)
{
    CString out;
    out.Reserve(text.size());
    Transcode(kUtf8, text, AnsiPage(), out);
    return out;
}

std::size_t AnsiCharLength(std::string_view text) noexcept
{
    const std::size_t length = DecodedFront(AnsiPage(), text).length;
    return length == 0 ? 1 : length;
}

bool IsValidUtf8(std::string_view text) noexcept
{
    while (true) {
        text.remove_prefix(AsciiRun(text));
        if (text.empty()) {
            return true;
        }
        const std::size_t length = DecodedUtf8(text).length;
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
}

std::string UpperUtf8(std::string_view text) { return Upper(kUtf8, text); }

std::string FoldUtf8(std::string_view text) { return Mapped(kUtf8, text, Folded, FoldedAscii); }

std::string UpperAnsi(std::string_view text) { return Upper(AnsiPage(), text); }

const char* UnicodeVersion() noexcept
{
    static const auto version = [] {
        struct Text {
            char characters[U_MAX_VERSION_STRING_LENGTH];
        };
        UVersionInfo numbers;
        Text text{};
        u_getUnicodeVersion(numbers);
        u_versionToString(numbers, text.characters);
        return text;
    }();
    return version.characters;
}

} // namespace platform
