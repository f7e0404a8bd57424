#include "platform/CodePage.h"

#include "AnsiCodePageScope.h"
#include "platform/CString.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using testing::AnyOf;
using testing::MatchesRegex;

constexpr UINT kTablePages[] = {936, 950, 932, 949, 874, 1250, 1251, 1252, 1253, 1254, 1255, 1256, 1257, 1258};
constexpr UINT kDoubleBytePages[] = {936, 950, 932, 949};
constexpr char16_t kReplacement = 0xFFFD;

std::u16string ToWide(UINT codePage, const std::string& bytes, unsigned int flags = 0)
{
    std::u16string units(bytes.size() + 1, u'#');
    const int count = MultiByteToWideChar(codePage, flags, bytes.data(), static_cast<int>(bytes.size()), units.data(),
                                          static_cast<int>(units.size()));
    units.resize(static_cast<std::size_t>(count));
    return units;
}

std::string ToBytes(UINT codePage, const std::u16string& units, bool* replaced = nullptr)
{
    std::string bytes(units.size() * 3 + 1, '#');
    int used = -1;
    const int count = WideCharToMultiByte(codePage, 0, units.data(), static_cast<int>(units.size()), bytes.data(),
                                          static_cast<int>(bytes.size()), nullptr, &used);
    bytes.resize(static_cast<std::size_t>(count));
    EXPECT_THAT(used, AnyOf(0, 1));
    if (replaced != nullptr) {
        *replaced = used == 1;
    }
    return bytes;
}

std::string OneByte(unsigned byte) { return {static_cast<char>(byte)}; }

/// Every valid character of a code page: its bytes and its unit.
std::vector<std::pair<std::string, char16_t>> CharactersOf(UINT codePage)
{
    std::vector<std::pair<std::string, char16_t>> characters;
    const auto add = [&](const std::string& bytes) {
        const std::u16string units = ToWide(codePage, bytes, MB_ERR_INVALID_CHARS);
        if (units.size() == 1) {
            characters.emplace_back(bytes, units[0]);
        }
        return units.size() == 1;
    };
    for (unsigned first = 0; first < 256; ++first) {
        if (add(OneByte(first))) {
            continue;
        }
        for (unsigned second = 0; second < 256; ++second) {
            add(OneByte(first) + OneByte(second));
        }
    }
    return characters;
}

TEST(CodePage, setsEveryCodePageItKnows)
{
    for (const UINT codePage : kTablePages) {
        const AnsiCodePageScope scope(codePage);
        EXPECT_EQ(GetACP(), codePage);
        EXPECT_FALSE(platform::AnsiIsUtf8());
    }
    const AnsiCodePageScope scope(CP_UTF8);
    EXPECT_EQ(GetACP(), CP_UTF8);
    EXPECT_TRUE(platform::AnsiIsUtf8());
}

TEST(CodePage, keepsTheOldOneWhenAskedForOneItDoesNotKnow)
{
    const AnsiCodePageScope scope(1251);
    for (const UINT codePage : {CP_ACP, 1u, 437u, 1259u, 65000u}) {
        EXPECT_FALSE(SetAnsiCodePage(codePage));
        EXPECT_EQ(GetACP(), 1251u);
    }
}

int AnsiCodePagePresetBy(const char* value)
{
    ::setenv("QV_ANSI_CODEPAGE", value, 1);
    return GetACP() == 936 ? 36 : GetACP() == CP_UTF8 ? 8 : 1;
}

// Each of these runs in a process of its own, in which no text has been touched yet.
TEST(CodePageDeathTest, isPresetFromTheEnvironment)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(std::_Exit(AnsiCodePagePresetBy("936")), testing::ExitedWithCode(36), "");
    EXPECT_EXIT(std::_Exit(AnsiCodePagePresetBy("65001")), testing::ExitedWithCode(8), "");
    for (const char* useless : {"", "0", "437", "-936", "936x", " 936", "99999999999999"}) {
        EXPECT_EXIT(std::_Exit(AnsiCodePagePresetBy(useless)), testing::ExitedWithCode(8), "") << useless;
    }
}

TEST(CodePage, asciiIsAsciiEverywhere)
{
    for (const UINT codePage : kTablePages) {
        for (unsigned byte = 0; byte < 0x80; ++byte) {
            ASSERT_EQ(ToWide(codePage, OneByte(byte)), std::u16string(1, static_cast<char16_t>(byte))) << codePage;
            ASSERT_EQ(ToBytes(codePage, std::u16string(1, static_cast<char16_t>(byte))), OneByte(byte)) << codePage;
        }
    }
}

TEST(CodePage, knowsTheCharactersOfEachCodePage)
{
    const struct {
        UINT codePage;
        const char* bytes;
        char16_t unit;
    } known[] = {
        {936, "\xD6\xD0", u'中'},     {936, "\x80", u'€'},      {936, "\x95\x5C", u'昞'}, {950, "\xA4\x40", u'一'},
        {950, "\xB3\x5C", u'許'},     {932, "\x82\xA0", u'あ'}, {932, "\xB1", u'\uFF71'}, {932, "\x95\x5C", u'表'},
        {932, "\x81\x60", u'\uFF5E'}, {949, "\xB0\xA1", u'가'}, {949, "\xA9\xA5", u'ı'},  {874, "\xA1", u'\u0E01'},
        {1250, "\x8A", u'Š'},         {1251, "\xC0", u'А'},     {1252, "\x80", u'€'},     {1252, "\x81", u'\u0081'},
        {1252, "\xFF", u'ÿ'},         {1253, "\xC1", u'Α'},     {1254, "\xFD", u'ı'},     {1255, "\xE0", u'\u05D0'},
        {1256, "\xC7", u'\u0627'},    {1257, "\xD0", u'Š'},     {1258, "\xFE", u'₫'},
    };
    for (const auto& k : known) {
        EXPECT_EQ(ToWide(k.codePage, k.bytes, MB_ERR_INVALID_CHARS), std::u16string(1, k.unit)) << k.codePage;
        EXPECT_EQ(ToBytes(k.codePage, std::u16string(1, k.unit)), k.bytes) << k.codePage;
    }
}

TEST(CodePage, everyByteAndEveryPairOfBytesConverts)
{
    for (const UINT codePage : kTablePages) {
        const AnsiCodePageScope scope(codePage);
        for (unsigned first = 0; first < 256; ++first) {
            const std::u16string alone = ToWide(CP_ACP, OneByte(first));
            ASSERT_EQ(alone.size(), 1u);
            for (unsigned second = 0; second < 256; ++second) {
                const std::string bytes = OneByte(first) + OneByte(second);
                const std::size_t length = platform::AnsiCharLength(bytes);
                const std::u16string units = ToWide(CP_ACP, bytes);
                ASSERT_EQ(units.size(), length == 2 ? 1u : 2u) << codePage << ' ' << first << ' ' << second;
                if (length == 1) {
                    ASSERT_EQ(units, alone + ToWide(CP_ACP, OneByte(second)));
                }
            }
        }
    }
}

TEST(CodePage, everyByteAndEveryPairOfBytesConvertsInUtf8)
{
    const AnsiCodePageScope scope(CP_UTF8);
    for (unsigned first = 0; first < 256; ++first) {
        for (unsigned second = 0; second < 256; ++second) {
            const std::string bytes = OneByte(first) + OneByte(second);
            const bool isPair = first >= 0xC2 && first <= 0xDF && second >= 0x80 && second <= 0xBF;
            ASSERT_EQ(platform::AnsiCharLength(bytes), isPair ? 2u : 1u);
            ASSERT_EQ(ToWide(CP_ACP, bytes).size(), isPair ? 1u : 2u);
        }
    }
}

TEST(CodePage, everyCharacterComesBack)
{
    for (const UINT codePage : kTablePages) {
        const AnsiCodePageScope scope(codePage);
        std::map<char16_t, std::string> written;
        for (const auto& [bytes, unit] : CharactersOf(codePage)) {
            bool replaced = false;
            const std::string back = ToBytes(codePage, {unit}, &replaced);
            if (!replaced) {
                ASSERT_EQ(ToWide(codePage, back), std::u16string(1, unit)) << codePage;
                ASSERT_EQ(written.emplace(unit, back).first->second, back);
                ASSERT_EQ(platform::Utf8ToAnsi(platform::AnsiToUtf8(bytes)).View(), back);
            }
        }
        EXPECT_GE(written.size(), codePage < 1000 && codePage != 874 ? 7000u : 220u) << codePage;
    }
}

TEST(CodePage, writesExactlyTheCharactersItReads)
{
    for (const UINT codePage : kTablePages) {
        std::set<char16_t> readable;
        for (const auto& character : CharactersOf(codePage)) {
            readable.insert(character.second);
        }
        for (unsigned unit = 0; unit < 0x10000; ++unit) {
            bool replaced = false;
            const std::string bytes = ToBytes(codePage, {static_cast<char16_t>(unit)}, &replaced);
            if (replaced) {
                ASSERT_EQ(bytes, "?");
            } else {
                ASSERT_EQ(ToWide(codePage, bytes), std::u16string(1, static_cast<char16_t>(unit)));
                ASSERT_EQ(readable.count(static_cast<char16_t>(unit)), 1u);
            }
        }
    }
}

TEST(CodePage, putsNothingSimilarInPlaceOfWhatItLacks)
{
    bool replaced = false;
    EXPECT_EQ(ToBytes(1252, u"a\u0100b", &replaced), "a?b");
    EXPECT_TRUE(replaced);
    EXPECT_EQ(ToBytes(1252, u"\uFF21"), "?");
    EXPECT_EQ(ToBytes(1252, u"\u2032"), "?");
    EXPECT_EQ(ToBytes(936, u"é¥"), "\xA8\xA6?");
}

TEST(CodePage, aCharacterOutsideTheFirstPlaneIsOneThatIsLacking)
{
    const AnsiCodePageScope scope(936);
    EXPECT_EQ(ToBytes(936, u"a\U0001F600b"), "a?b");
    EXPECT_EQ(platform::Utf8ToAnsi("a\U0001F600b"), "a?b");
    EXPECT_EQ(ToBytes(936, u"a\xD83D"
                           u"b"),
              "a?b");
}

TEST(CodePage, takesTheGivenDefaultCharacter)
{
    const auto converted = [](UINT codePage, const std::string& defaultChar) {
        char bytes[8] = {};
        const int count = WideCharToMultiByte(codePage, 0, u"a\u0E01b", 3, bytes, 8, defaultChar.data(), nullptr);
        return std::string(bytes, static_cast<std::size_t>(count));
    };
    EXPECT_EQ(converted(1252, "_"), "a_b");
    EXPECT_EQ(converted(936, "_"), "a_b");
    EXPECT_EQ(converted(936, "\xA1\xF5"), "a\xA1\xF5"
                                          "b");
    const char one = '!';
    char bytes[4];
    EXPECT_EQ(WideCharToMultiByte(936, 0, u"\u0E01", 1, bytes, 4, &one, nullptr), 1);
    EXPECT_EQ(bytes[0], '!');
}

TEST(CodePage, aByteBehindALeadByteThatIsNoTrailByteIsLookedAtAfresh)
{
    for (const UINT codePage : kDoubleBytePages) {
        EXPECT_EQ(ToWide(codePage, "\x95'"), u"\uFFFD'");
        EXPECT_EQ(ToWide(codePage, "\x95"), u"\uFFFD");
        EXPECT_EQ(ToWide(codePage, "\x95\n\x95"), u"\uFFFD\n\uFFFD");
    }
    EXPECT_EQ(ToWide(936, "\x95\x95\x5C"), u"\u667B\\");
    EXPECT_EQ(ToWide(936, "\xFE\xFF\x95\x5C").back(), u'昞');
}

TEST(CodePage, refusesInvalidBytesWhenAskedTo)
{
    EXPECT_TRUE(ToWide(936, "a\x95", MB_ERR_INVALID_CHARS).empty());
    EXPECT_TRUE(ToWide(CP_UTF8, "a\xC3", MB_ERR_INVALID_CHARS).empty());
    EXPECT_TRUE(ToWide(1253, "\xD2", MB_ERR_INVALID_CHARS).empty());
    EXPECT_EQ(ToWide(CP_UTF8, "a\uFFFD", MB_ERR_INVALID_CHARS), u"a\uFFFD");
}

TEST(CodePage, everyInvalidUtf8ByteStandsForItself)
{
    const std::pair<std::string, std::u16string> table[] = {
        {"\x80", u"\uFFFD"},
        {"\xBF", u"\uFFFD"},
        {"\xC0\x80", u"\uFFFD\uFFFD"},
        {"\xC1\xBF", u"\uFFFD\uFFFD"},
        {"\xC3", u"\uFFFD"},
        {"\xC3'", u"\uFFFD'"},
        {"\xC3\xC3\xA9", u"\uFFFDé"},
        {"\xE0\x80\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD"},
        {"\xE0\xA0\x80", u"\u0800"},
        {"\xE2\x82", u"\uFFFD\uFFFD"},
        {"\xE2\x82'", u"\uFFFD\uFFFD'"},
        {"\xED\x9F\xBF", u"\uD7FF"},
        {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD"},
        {"\xED\xBF\xBF", u"\uFFFD\uFFFD\uFFFD"},
        {"\xEE\x80\x80", u"\uE000"},
        {"\xEF\xBF\xBF", u"\uFFFF"},
        {"\xF0\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x8F\xBF\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF0\x90\x80\x80", u"\U00010000"},
        {"\xF0\x9F\x98", u"\uFFFD\uFFFD\uFFFD"},
        {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
        {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF5\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xF8\x88\x80\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD"},
        {"\xFE", u"\uFFFD"},
        {"\xFF", u"\uFFFD"},
    };
    const AnsiCodePageScope scope(CP_UTF8);
    for (const auto& [bytes, units] : table) {
        const bool isValid = units.find(kReplacement) == std::u16string::npos;
        EXPECT_EQ(ToWide(CP_UTF8, bytes), units);
        EXPECT_EQ(ToWide(CP_UTF8, "ASCII around it " + bytes + "!"), u"ASCII around it " + units + u"!");
        EXPECT_EQ(platform::IsValidUtf8(bytes), isValid);
        EXPECT_EQ(platform::IsValidUtf8("eight or more " + bytes), isValid);
        EXPECT_EQ(ToWide(CP_UTF8, bytes, MB_ERR_INVALID_CHARS).empty(), !isValid);
        EXPECT_EQ(ToBytes(CP_UTF8, units), platform::AnsiToUtf8(bytes));
        EXPECT_EQ(platform::Utf8ToAnsi(bytes), platform::AnsiToUtf8(bytes).c_str());
    }
}

TEST(CodePage, everyCodePointGoesThroughUtf16)
{
    for (char32_t value = 1; value <= 0x10FFFF; ++value) {
        if (value >= 0xD800 && value <= 0xDFFF) {
            continue;
        }
        std::u16string units;
        if (value < 0x10000) {
            units = {static_cast<char16_t>(value)};
        } else {
            units = {static_cast<char16_t>(0xD800 + ((value - 0x10000) >> 10)),
                     static_cast<char16_t>(0xDC00 + ((value - 0x10000) & 0x3FF))};
        }
        const std::string bytes = ToBytes(CP_UTF8, units);
        ASSERT_EQ(ToWide(CP_UTF8, bytes, MB_ERR_INVALID_CHARS), units) << static_cast<unsigned>(value);
    }
}

TEST(CodePage, loneSurrogatesBecomeReplacementCharacters)
{
    bool replaced = false;
    EXPECT_EQ(ToBytes(CP_UTF8, {0xD83D}, &replaced), "\uFFFD");
    EXPECT_TRUE(replaced);
    EXPECT_EQ(ToBytes(CP_UTF8, {0xDE00, u'a'}), "\uFFFDa");
    EXPECT_EQ(ToBytes(CP_UTF8, {0xD83D, 0xD83D, 0xDE00}), "\uFFFD\U0001F600");
    EXPECT_EQ(ToBytes(CP_UTF8, {0xDE00, 0xD83D}), "\uFFFD\uFFFD");
    EXPECT_EQ(ToBytes(CP_UTF8, u"\U0001F600", &replaced), "\U0001F600");
    EXPECT_FALSE(replaced);
}

TEST(CodePage, tellsHowMuchRoomIsNeeded)
{
    const char* text = "aé\U0001F600";
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, text, -1, nullptr, 0), 5);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, text, 3, nullptr, 0), 2);
    char16_t units[8] = {};
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, text, -1, units, 0), 5);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, text, -1, units, 5), 5);
    EXPECT_EQ(std::u16string(units), u"aé\U0001F600");
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, units, -1, nullptr, 0, nullptr, nullptr), 8);
    EXPECT_EQ(WideCharToMultiByte(936, 0, units, 2, nullptr, 0, nullptr, nullptr), 3);
    char bytes[8] = {};
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, units, -1, bytes, 8, nullptr, nullptr), 8);
    EXPECT_EQ(std::string(bytes), text);
}

TEST(CodePage, givesNothingWhenTheRoomIsTooSmall)
{
    for (int room = 1; room < 5; ++room) {
        std::vector<char16_t> units(static_cast<std::size_t>(room));
        EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "aé\U0001F600", -1, units.data(), room), 0);
    }
    for (int room = 1; room < 8; ++room) {
        std::vector<char> bytes(static_cast<std::size_t>(room));
        EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"aé\U0001F600", -1, bytes.data(), room, nullptr, nullptr), 0);
    }
}

TEST(CodePage, givesNothingForWhatMakesNoSense)
{
    char16_t units[4];
    char bytes[4];
    EXPECT_EQ(MultiByteToWideChar(437, 0, "a", 1, units, 4), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a", 0, units, 4), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, nullptr, 1, units, 4), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a", 1, nullptr, 4), 0);
    EXPECT_EQ(MultiByteToWideChar(CP_UTF8, 0, "a", 1, units, -1), 0);
    EXPECT_EQ(WideCharToMultiByte(437, 0, u"a", 1, bytes, 4, nullptr, nullptr), 0);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"a", 0, bytes, 4, nullptr, nullptr), 0);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, nullptr, 1, bytes, 4, nullptr, nullptr), 0);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"a", 1, nullptr, 4, nullptr, nullptr), 0);
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, u"a", 1, bytes, -1, nullptr, nullptr), 0);
}

TEST(CodePage, convertsBehindNulsWhenTheLengthIsGiven)
{
    const AnsiCodePageScope scope(1252);
    EXPECT_EQ(ToWide(1252, std::string("a\0\xE9", 3)), std::u16string(u"a\0é", 3));
    EXPECT_EQ(platform::AnsiToUtf8(std::string_view("a\0\xE9", 3)), std::string("a\0é", 4));
    EXPECT_EQ(platform::Utf8ToAnsi(std::string_view("a\0é", 4)), CString("a\0\xE9", 3));
}

int Compared(const char* a, const char* b)
{
    const int result = _mbscmp(reinterpret_cast<const unsigned char*>(a), reinterpret_cast<const unsigned char*>(b));
    return result < 0 ? -1 : result > 0 ? 1 : 0;
}

TEST(CodePage, comparesByCharacterCode)
{
    for (const UINT codePage : {CP_UTF8, 936u, 932u, 1252u}) {
        const AnsiCodePageScope scope(codePage);
        EXPECT_EQ(Compared("abc", "abc"), 0);
        EXPECT_EQ(Compared("", ""), 0);
        EXPECT_EQ(Compared("abc", "abd"), -1);
        EXPECT_EQ(Compared("abc", "ab"), 1);
        EXPECT_EQ(Compared("", "a"), -1);
        EXPECT_EQ(Compared("Z", "a"), -1);
        EXPECT_EQ(Compared("z", "\xE9\xA0\xA1"), -1);
    }
}

TEST(CodePage, everyDoubleByteCharacterComesBehindEverySingleByte)
{
    const AnsiCodePageScope scope(932);
    EXPECT_EQ(Compared("\x82\xA0", "\xB1"), 1);
    EXPECT_EQ(Compared("\x82\xA0", "\x82\xA1"), -1);
    EXPECT_EQ(Compared("a\x95\x5C", "a\x95"), 1);
    EXPECT_EQ(Compared("\x95\x5C"
                       "a",
                       "\x95\x5C"
                       "a"),
              0);
}

TEST(CodePage, upperCasesOneToOne)
{
    EXPECT_EQ(platform::UpperUtf8("Az{é ñ ю я ß ı ÿ µ ǆ ﬁ}"), "AZ{É Ñ Ю Я ß I Ÿ Μ Ǆ ﬁ}");
    EXPECT_EQ(platform::UpperUtf8("i\u0307"), "I\u0307");
    EXPECT_EQ(platform::UpperUtf8("\U00010428"), "\U00010400");
    EXPECT_EQ(platform::UpperUtf8("中"), "中");
    EXPECT_EQ(platform::UpperUtf8(""), "");
    EXPECT_EQ(platform::UpperUtf8(std::string("a\0é", 4)), std::string("A\0É", 4));
}

TEST(CodePage, upperCasingKeepsInvalidBytes)
{
    EXPECT_EQ(platform::UpperUtf8("a\xC3"
                                  "b\xFF\xED\xA0\x80"
                                  "c"),
              "A\xC3"
              "B\xFF\xED\xA0\x80"
              "C");
}

TEST(CodePage, makeUpperAndUpperUtf8AgreeWhereverTheCodePageHasTheCapital)
{
    for (const UINT codePage : kTablePages) {
        const AnsiCodePageScope scope(codePage);
        int changed = 0;
        for (const auto& character : CharactersOf(codePage)) {
            const std::string& bytes = character.first;
            CString upper(bytes.data(), bytes.size());
            upper.MakeUpper();
            const std::string capital = platform::UpperUtf8(platform::AnsiToUtf8(bytes));
            const CString capitalBytes = platform::Utf8ToAnsi(capital);
            const bool has = platform::AnsiToUtf8(capitalBytes.View()) == capital;
            ASSERT_EQ(platform::AnsiToUtf8(upper.View()), has ? capital : platform::AnsiToUtf8(bytes)) << codePage;
            if (!has || capital == platform::AnsiToUtf8(bytes)) {
                ASSERT_EQ(upper.View(), bytes);
            }
            changed += upper.View() == bytes ? 0 : 1;
        }
        EXPECT_GE(changed, 26) << codePage;
    }
}

TEST(CodePage, namesTheVersionOfItsRules)
{
    EXPECT_THAT(platform::UnicodeVersion(), MatchesRegex("[0-9]+\\.[0-9]+(\\.[0-9]+)*"));
}

TEST(CodePage, manyThreadsMayUseACodePageForTheFirstTime)
{
    std::vector<std::thread> threads;
    for (int i = 0; i < 8; ++i) {
        threads.emplace_back([] {
            for (const UINT codePage : kTablePages) {
                EXPECT_EQ(ToBytes(codePage, ToWide(codePage, "abc")), "abc");
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

} // namespace
