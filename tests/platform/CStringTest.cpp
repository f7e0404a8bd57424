#include "platform/CString.h"

#include "AnsiCodePageScope.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>

namespace {

using testing::StrEq;

const std::string kLong(100, 'x');

std::string Bytes(const CString& text) { return std::string(text.View()); }

bool IsInObject(const CString& text)
{
    const auto* object = reinterpret_cast<const char*>(&text);
    return text.GetString() >= object && text.GetString() < object + sizeof(text);
}

TEST(CString, is24BytesAndKeeps23OfThemInTheObject)
{
    EXPECT_EQ(sizeof(CString), 24u);
    for (std::size_t length = 0; length <= 40; ++length) {
        const std::string bytes(length, 'a');
        const CString text(bytes.c_str());
        EXPECT_EQ(Bytes(text), bytes);
        EXPECT_EQ(text.GetLength(), static_cast<int>(length));
        EXPECT_EQ(text.GetString()[length], '\0');
        EXPECT_EQ(IsInObject(text), length <= 23) << length;
    }
}

TEST(CString, isEmptyWhenMadeOfNothing)
{
    EXPECT_TRUE(CString().IsEmpty());
    EXPECT_TRUE(CString("").IsEmpty());
    EXPECT_TRUE(CString(static_cast<const char*>(nullptr)).IsEmpty());
    EXPECT_TRUE(CString('x', 0).IsEmpty());
    EXPECT_TRUE(CString('x', -5).IsEmpty());
    EXPECT_THAT(CString().GetString(), StrEq(""));
}

TEST(CString, repeatsACharacter)
{
    EXPECT_EQ(CString('x'), "x");
    EXPECT_EQ(Bytes(CString('x', 100)), kLong);
}

TEST(CString, keepsCountedBytesWithNulsAmongThem)
{
    const CString text("a\0b", 3);
    EXPECT_EQ(text.GetLength(), 3);
    EXPECT_EQ(text[1], '\0');
    EXPECT_NE(text, CString("a"));
    EXPECT_NE(text, "a");
}

TEST(CString, copiesAreIndependent)
{
    for (const std::string& bytes : {std::string("short"), kLong}) {
        CString original(bytes.c_str());
        const CString copy(original);
        original.SetAt(0, '!');
        EXPECT_EQ(Bytes(copy), bytes);
    }
}

TEST(CString, aCopyOfATextThatBecameShortTakesNoBlock)
{
    CString text(kLong.c_str());
    text = "short";
    const CString copy(text);
    EXPECT_TRUE(IsInObject(copy));
    EXPECT_EQ(copy, "short");
}

TEST(CString, movingLeavesTheEmptyText)
{
    for (const std::string& bytes : {std::string("short"), kLong}) {
        CString source(bytes.c_str());
        CString target(std::move(source));
        EXPECT_EQ(Bytes(target), bytes);
        EXPECT_TRUE(source.IsEmpty()); // NOLINT(bugprone-use-after-move)
        source = std::move(target);
        EXPECT_EQ(Bytes(source), bytes);
        EXPECT_TRUE(target.IsEmpty()); // NOLINT(bugprone-use-after-move)
    }
}

TEST(CString, assignsEveryFormToEveryForm)
{
    const std::string longer(300, 'y');
    for (const std::string& before : {std::string(), std::string("short"), kLong, longer}) {
        for (const std::string& after : {std::string(), std::string("other"), kLong, longer}) {
            CString text(before.c_str());
            text = CString(after.c_str());
            EXPECT_EQ(Bytes(text), after);
            CString copied(before.c_str());
            const CString source(after.c_str());
            copied = source;
            EXPECT_EQ(Bytes(copied), after);
            CString pointed(before.c_str());
            pointed = after.c_str();
            EXPECT_EQ(Bytes(pointed), after);
        }
    }
}

TEST(CString, assigningATextToItselfChangesNothing)
{
    for (const std::string& bytes : {std::string("short"), kLong}) {
        CString text(bytes.c_str());
        CString& same = text;
        text = same;
        EXPECT_EQ(Bytes(text), bytes);
        text = std::move(same);
        EXPECT_EQ(Bytes(text), bytes);
        text = text.GetString();
        EXPECT_EQ(Bytes(text), bytes);
    }
}

TEST(CString, assignsItsOwnTail)
{
    CString inObject("abcdef");
    inObject = inObject.GetString() + 2;
    EXPECT_EQ(inObject, "cdef");
    const std::string bytes = kLong + "tail that is longer than the object itself";
    CString inBlock(bytes.c_str());
    inBlock = inBlock.GetString() + 90;
    EXPECT_EQ(Bytes(inBlock), bytes.substr(90));
}

TEST(CString, assigningNullGivesTheEmptyText)
{
    CString text(kLong.c_str());
    text = static_cast<const char*>(nullptr);
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_THAT(text.GetString(), StrEq(""));
}

TEST(CString, emptyGivesTheMemoryBack)
{
    CString text(kLong.c_str());
    text.Empty();
    EXPECT_TRUE(text.IsEmpty());
    EXPECT_TRUE(IsInObject(text));
}

TEST(CString, appendsTextsPointersCharactersAndViews)
{
    CString text("a");
    text += CString("b");
    text += "c";
    text += 'd';
    text += std::string_view("ef", 1);
    text += static_cast<const char*>(nullptr);
    EXPECT_EQ(text, "abcde");
    text += kLong.c_str();
    EXPECT_EQ(Bytes(text), "abcde" + kLong);
}

TEST(CString, appendsItsOwnBytesAtEveryLength)
{
    for (std::size_t length = 0; length < 80; ++length) {
        std::string bytes;
        for (std::size_t i = 0; i < length; ++i) {
            bytes += static_cast<char>('a' + i % 26);
        }
        CString whole(bytes.c_str());
        whole += whole;
        EXPECT_EQ(Bytes(whole), bytes + bytes);
        CString part(bytes.c_str());
        part.Append(part.GetString() + length / 2, length - length / 2);
        EXPECT_EQ(Bytes(part), bytes + bytes.substr(length / 2));
        CString withNul(bytes.c_str());
        withNul.Append(withNul.GetString(), length + 1);
        EXPECT_EQ(Bytes(withNul), bytes + bytes + '\0');
    }
}

TEST(CString, buildingByteByByteMovesTheTextRarely)
{
    CString text;
    std::size_t moves = 0;
    std::size_t movesOfAnyGrowth = 0;
    const char* place = text.GetString();
    for (int i = 0; i < 1'000'000; ++i) {
        text += 'x';
        if (text.GetString() != place) {
            place = text.GetString();
            ++moves;
        }
    }
    for (int capacity = 23; capacity < 1'000'000; capacity += capacity / 2) {
        ++movesOfAnyGrowth;
    }
    EXPECT_EQ(text.GetLength(), 1'000'000);
    EXPECT_LE(moves, movesOfAnyGrowth);
}

TEST(CString, reservedRoomIsAllThatIsNeeded)
{
    CString text("start");
    text.Reserve(5000);
    EXPECT_EQ(text, "start");
    const char* place = text.GetString();
    while (text.GetLength() < 5000) {
        text += 'x';
    }
    EXPECT_EQ(text.GetString(), place);
    text.Reserve(10);
    EXPECT_EQ(text.GetLength(), 5000);
}

TEST(CString, refusesTextsBeyondTheLimit)
{
    CString text("abc");
    EXPECT_THROW(CString('x', 0x7FFFFFFF), std::length_error);
    EXPECT_THROW(CString("x", 0x7FFFFFFF), std::length_error);
    EXPECT_THROW(text.Reserve(0x7FFFFFFF), std::length_error);
    EXPECT_THROW(text.Append("x", 0x7FFFFFFE), std::length_error);
    EXPECT_THROW(text.Append("x", static_cast<std::size_t>(-1)), std::length_error);
    EXPECT_EQ(text, "abc");
}

TEST(CString, givesAndSetsBytesInsideOnly)
{
    CString text("abc");
    EXPECT_EQ(text.GetAt(0), 'a');
    EXPECT_EQ(text[2], 'c');
    text.SetAt(1, 'X');
    EXPECT_EQ(text, "aXc");
    EXPECT_THROW((void)text.GetAt(3), std::out_of_range);
    EXPECT_THROW((void)text.GetAt(-1), std::out_of_range);
    EXPECT_THROW(text.SetAt(3, 'x'), std::out_of_range);
    EXPECT_THROW(text.SetAt(-1, 'x'), std::out_of_range);
}

TEST(CString, comparesByBytes)
{
    EXPECT_EQ(CString("abc").Compare("abc"), 0);
    EXPECT_LT(CString("abc").Compare("abd"), 0);
    EXPECT_GT(CString("abc").Compare("ab"), 0);
    EXPECT_GT(CString("\xFF").Compare("a"), 0);
    EXPECT_EQ(CString().Compare(nullptr), 0);
    EXPECT_LT(CString("Abc"), CString("abc"));
    EXPECT_LT(CString("abc"), "abd");
    EXPECT_EQ("abc", CString("abc"));
    EXPECT_NE(CString("abc"), CString("abcd"));
}

TEST(CString, addsTexts)
{
    const CString a("a");
    EXPECT_EQ(a + CString("b"), "ab");
    EXPECT_EQ(a + "b", "ab");
    EXPECT_EQ("b" + a, "ba");
    EXPECT_EQ(a + static_cast<const char*>(nullptr), "a");
    EXPECT_EQ(Bytes(a + kLong.c_str()), "a" + kLong);
}

TEST(CString, formats)
{
    CString text;
    text.Format("%s=%d, %s, %c%%, %05.1f", "a", 42, CString("b"), 'c', 2.25);
    EXPECT_EQ(text, "a=42, b, c%, 002.2");
    text.Format("plain");
    EXPECT_EQ(text, "plain");
}

TEST(CString, formatsEveryLengthAroundTheInnerBuffer)
{
    for (const std::size_t length : {0u, 23u, 24u, 510u, 511u, 512u, 513u, 100'000u}) {
        const std::string bytes(length, 'q');
        CString text;
        text.Format("%s", bytes.c_str());
        EXPECT_EQ(Bytes(text), bytes);
    }
}

TEST(CString, formatsItself)
{
    CString text("ab");
    text.Format("%s-%s", text, text.GetString());
    EXPECT_EQ(text, "ab-ab");
    CString big(std::string(600, 'z').c_str());
    big.Format("%s%s", big, big);
    EXPECT_EQ(Bytes(big), std::string(1200, 'z'));
}

TEST(CString, aFormatThatIsRefusedLeavesTheEmptyText)
{
    CString text("before");
    text.Format("%2147483648d", 1);
    EXPECT_TRUE(text.IsEmpty());
}

TEST(CString, replacesEveryOccurrenceLeftToRight)
{
    CString text("aXaXXa");
    EXPECT_EQ(text.Replace("X", "--"), 3);
    EXPECT_EQ(text, "a--a----a");
    EXPECT_EQ(text.Replace("--", ""), 3);
    EXPECT_EQ(text, "aaa");
    EXPECT_EQ(text.Replace("aa", "b"), 1);
    EXPECT_EQ(text, "ba");
    EXPECT_EQ(text.Replace("", "x"), 0);
    EXPECT_EQ(text.Replace(nullptr, "x"), 0);
    EXPECT_EQ(text.Replace("b", nullptr), 1);
    EXPECT_EQ(text, "a");
}

TEST(CString, doublesTheQuotesOfALongText)
{
    std::string expected;
    CString text;
    for (int i = 0; i < 1000; ++i) {
        text += "it's ";
        expected += "it''s ";
    }
    EXPECT_EQ(text.Replace("'", "''"), 1000);
    EXPECT_EQ(Bytes(text), expected);
}

TEST(CString, replacesWithPartsOfItself)
{
    CString text("a,b");
    EXPECT_EQ(text.Replace(",", text), 1);
    EXPECT_EQ(text, "aa,bb");
    EXPECT_EQ(text.Replace(text, "x"), 1);
    EXPECT_EQ(text, "x");
}

TEST(CString, replacingWithoutAHitKeepsItsBlock)
{
    CString text(kLong.c_str());
    const char* place = text.GetString();
    EXPECT_EQ(text.Replace("'", "''"), 0);
    EXPECT_EQ(text.Replace('\'', '"'), 0);
    EXPECT_EQ(text.GetString(), place);
}

TEST(CString, replacesBehindAnEmbeddedNul)
{
    CString text("a'\0'b", 5);
    EXPECT_EQ(text.Replace("'", "''"), 2);
    EXPECT_EQ(Bytes(text), std::string("a''\0''b", 7));
    EXPECT_EQ(text.Replace('\0', '0'), 1);
    EXPECT_EQ(text, "a''0''b");
}

TEST(CString, replacesSingleCharacters)
{
    CString text("a\\b\\");
    EXPECT_EQ(text.Replace('\\', '/'), 2);
    EXPECT_EQ(text, "a/b/");
}

TEST(CString, utf8BytesInsideACharacterAreNoMatch)
{
    const AnsiCodePageScope scope(CP_UTF8);
    CString text("é\xA9");
    EXPECT_EQ(text.Replace("\xA9", "x"), 1);
    EXPECT_EQ(text, "éx");
    EXPECT_EQ(text.Replace("\xC3", "x"), 0);
    EXPECT_EQ(text.Replace("é", "e"), 1);
    EXPECT_EQ(text, "ex");
}

TEST(CString, aTrailByteThatLooksLikeABackslashIsNone)
{
    const AnsiCodePageScope scope(936);
    CString text("\x95\x5C\\\x95\x5C");
    EXPECT_EQ(text.Replace("\\", "\\\\"), 1);
    EXPECT_EQ(text, "\x95\x5C\\\\\x95\x5C");
    EXPECT_EQ(text.Replace('\\', '/'), 2);
    EXPECT_EQ(text, "\x95\x5C//\x95\x5C");
    text.TrimRight('\\');
    EXPECT_EQ(text, "\x95\x5C//\x95\x5C");
    text.TrimRight("\x95\x5C");
    EXPECT_EQ(text, "\x95\x5C//");
    text.TrimLeft("\\");
    EXPECT_EQ(text, "\x95\x5C//");
    text.TrimLeft("\x95\x5C");
    EXPECT_EQ(text, "//");
}

TEST(CString, aMatchNeitherBeginsNorEndsInsideADoubleByteCharacter)
{
    const AnsiCodePageScope scope(936);
    CString acrossTwo("\xB0\xA1\xB0\xA1");
    EXPECT_EQ(acrossTwo.Replace("\xA1\xB0", "x"), 0);
    EXPECT_EQ(acrossTwo.Replace("\xB0", "x"), 0);
    EXPECT_EQ(acrossTwo.Replace("\xB0\xA1", "x"), 2);
    EXPECT_EQ(acrossTwo, "xx");
    CString shifted("\xA1\xB0\xA1\xB0\xA1\xB0");
    EXPECT_EQ(shifted.Replace("\xB0\xA1", "x"), 0);
}

TEST(CString, aQuoteBehindALoneLeadByteIsAQuote)
{
    for (const UINT codePage : {936u, 950u, 932u, 949u}) {
        const AnsiCodePageScope scope(codePage);
        CString text("\x95'");
        EXPECT_EQ(text.Replace("'", "''"), 1) << codePage;
        EXPECT_EQ(text, "\x95''");
    }
}

TEST(CString, trimsWhiteSpaceFromItsEnds)
{
    for (const UINT codePage : {CP_UTF8, 936u, 1252u}) {
        const AnsiCodePageScope scope(codePage);
        CString text(" \t\n\v\f\ra b\r\f\v\n\t ");
        text.TrimLeft();
        EXPECT_EQ(text, "a b\r\f\v\n\t ");
        text.TrimRight();
        EXPECT_EQ(text, "a b");
        CString blank(" \t ");
        blank.TrimRight();
        EXPECT_TRUE(blank.IsEmpty());
        CString blankToo(" \t ");
        blankToo.TrimLeft();
        EXPECT_TRUE(blankToo.IsEmpty());
        CString nothing;
        nothing.TrimLeft();
        nothing.TrimRight();
        EXPECT_TRUE(nothing.IsEmpty());
    }
}

TEST(CString, aNoBreakSpaceIsNoWhiteSpace)
{
    const AnsiCodePageScope scope(1252);
    CString text("\xA0"
                 "a\xA0");
    text.TrimLeft();
    text.TrimRight();
    EXPECT_EQ(text, "\xA0"
                    "a\xA0");
}

TEST(CString, trimsCharactersOfASet)
{
    const AnsiCodePageScope scope(CP_UTF8);
    CString text("éñabñé");
    text.TrimRight("ñé");
    EXPECT_EQ(text, "éñab");
    text.TrimLeft("xéñ");
    EXPECT_EQ(text, "ab");
    text.TrimRight('b');
    EXPECT_EQ(text, "a");
    text.TrimLeft('a');
    EXPECT_TRUE(text.IsEmpty());
}

TEST(CString, trimmingWithAnEmptySetKeepsTheText)
{
    CString text(" a ");
    text.TrimLeft("");
    text.TrimLeft(nullptr);
    text.TrimRight("");
    text.TrimRight(nullptr);
    EXPECT_EQ(text, " a ");
}

TEST(CString, trimmingByACharacterSharesNoBytesWithAnother)
{
    const AnsiCodePageScope scope(CP_UTF8);
    CString text("\u0429\u00A9"); // both end with the same byte
    text.TrimRight("\u00E9");
    EXPECT_EQ(text, "\u0429\u00A9");
}

TEST(CString, upperCasesUtf8)
{
    const AnsiCodePageScope scope(CP_UTF8);
    CString text("abc xyz {é ñ ю я ß ı ÿ µ}");
    text.MakeUpper();
    EXPECT_EQ(text, "ABC XYZ {É Ñ Ю Я ß I Ÿ Μ}");
    CString growing("\u0250");
    growing.MakeUpper();
    EXPECT_EQ(growing, "\u2C6F");
}

TEST(CString, upperCasesWhereTheCodePageHasTheCapital)
{
    const AnsiCodePageScope scope(1252);
    CString text("ab\xE9\xF1\xDF\xFF\xB5z");
    text.MakeUpper();
    EXPECT_EQ(text, "AB\xC9\xD1\xDF\x9F\xB5Z");
}

TEST(CString, upperCasesCyrillic)
{
    const AnsiCodePageScope scope(1251);
    CString text("\xFE\xFF\xB8");
    text.MakeUpper();
    EXPECT_EQ(text, "\xDE\xDF\xA8");
}

TEST(CString, upperCasesTheTurkishDotlessLetterToAPlainOne)
{
    const AnsiCodePageScope scope(1254);
    CString text("i\xFD");
    text.MakeUpper();
    EXPECT_EQ(text, "II");
}

TEST(CString, upperCasingLeavesTrailAndInvalidBytesAlone)
{
    const AnsiCodePageScope scope(936);
    CString text("\x95\x61z\xFE");
    text.MakeUpper();
    EXPECT_EQ(text, "\x95\x61Z\xFE");
    CString cut("a\x95");
    cut.MakeUpper();
    EXPECT_EQ(cut, "A\x95");
}

TEST(CString, upperCasesBehindAnEmbeddedNul)
{
    CString text("a\0b", 3);
    text.MakeUpper();
    EXPECT_EQ(Bytes(text), std::string("A\0B", 3));
}

} // namespace
