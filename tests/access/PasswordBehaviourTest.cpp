#include "basefun/QVBaseFun.h"
#include "dbaccess/CAConnect.h"
#include "platform/CodePage.h"
#include "tests/directory/BehaviourCase.h"
#include "tests/platform/AnsiCodePageScope.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace password_behaviour {

using behaviour::Line;
using behaviour::ReadCase;
using behaviour::WriteCase;
using scripted::Raise;
using scripted::Reply;
using scripted::Rows;
using testing::SizeIs;

namespace {

// ---- Digests -----------------------------------------------------------------------------------------------------

/// Opens the protected helpers to the tests.
class Digests : public CQVBaseFun {
public:
    using CQVBaseFun::MD5Encrypt;
    using CQVBaseFun::MD5UnicodeEncrypt;
};

std::string OfBytes(CString text)
{
    Digests::MD5Encrypt(text);
    return std::string(text.View());
}

std::string OfUtf16(CString text)
{
    Digests::MD5UnicodeEncrypt(text);
    return std::string(text.View());
}

std::string Encoded(CString text, int type, const char* unused = "")
{
    EXPECT_TRUE(CQVBaseFun::Encrypt(text, unused, type));
    return std::string(text.View());
}

struct DigestCase {
    CString text;
    const char* ofBytes;
    const char* ofUtf16;
};

// The first seven are the vectors of RFC 1321; the last texts end around the digest's block of 64 bytes.
std::vector<DigestCase> PlainTexts()
{
    return {
        {"", "d41d8cd98f00b204e9800998ecf8427e", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661", "4144e195f46de78a3623da7364d04f11"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72", "ce1473cf80c6b3fda8e3dfc006adc315"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0", "6f9ab83227f65f9b86c380e2c9c33031"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b", "35020d67a52d8e915330f0a77f676bbf"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f",
         "86056d805455c8448f6c09404c3db624"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a", "903f43f5c1f384fc267110bf07caec04"},
        {CString("a\0b", 3), "70350f6027bce3713f6b76473084309b", "05c2d85585d36e935bc6be6d82f08708"},
        {CString('x', 55), "04364420e25c512fd958a70738aa8f72", "ac081dd22cb77b9bb0b9879be4ce6a36"},
        {CString('x', 56), "668a72d5ba17f08e62dabcafad6db14b", "6eb738b026ce83b6dcdd0101d703acaa"},
        {CString('x', 64), "c1bb4f81d892b2d57947682aeb252456", "bbdb467263c5ab8fc14820950c06a606"},
        {CString('x', 1000), "398533d48111e9f664b1f64cb10c4b63", "9edd3c9d394f1c966a682c62218d9916"},
    };
}

void ExpectDigests(const std::vector<DigestCase>& cases)
{
    for (const DigestCase& c : cases) {
        EXPECT_EQ(OfBytes(c.text), c.ofBytes) << c.text;
        EXPECT_EQ(OfUtf16(c.text), c.ofUtf16) << c.text;
        EXPECT_EQ(Encoded(c.text, 1), c.ofBytes) << c.text;
        EXPECT_EQ(Encoded(c.text, 2), c.ofUtf16) << c.text;
    }
}

TEST(PasswordDigests, OfPlainTextsAreTheSameInEveryCodePage)
{
    for (const UINT codePage : {65001U, 936U, 1252U}) {
        const AnsiCodePageScope scope(codePage);
        ExpectDigests(PlainTexts());
    }
}

TEST(PasswordDigests, OfUtf8TextsTakeItsBytesOrItsUtf16)
{
    const AnsiCodePageScope utf8(CP_UTF8);
    ExpectDigests({
        {"josé", "1a5e9b272e3e1f9904485b93e7a34aa5", "c42a6c990a0c4262114068938ab45a9d"},
        {"Юлия", "aefc9f94d6fcebdb86d41c521dd2c441", "48cf0a7a4b5a90e65e02d9f5292b5535"},
        {"中文", "a7bac2239fcdcb3a067903d8077c4a07", "73c6c8cd2f94355ef015e5265d5e65b1"},
    });
}

TEST(PasswordDigests, OfACharacterBeyond16BitsTakeItsSurrogatePair)
{
    const AnsiCodePageScope utf8(CP_UTF8);
    ExpectDigests({{"pass😀word", "648028b71ded28581784cd3d9af9a520", "95effc743d7edec2489cd41dd078436f"}});
}

TEST(PasswordDigests, OfTextsInCodePage936TakeItsBytesOrTheirUtf16)
{
    const AnsiCodePageScope chinese(936);
    ExpectDigests(
        {{"\xD6\xD0\xCE\xC4\xC3\xDC\xC2\xEB", "cab54837b8cb3345b7d7bd03e904d1c8", "6b2cad0f43a5db7286e6b5fa88ecadc5"}});
}

TEST(PasswordDigests, OfTextsInCodePage1252TakeItsBytesOrTheirUtf16)
{
    const AnsiCodePageScope western(1252);
    ExpectDigests({{"\xE9\x80\xDF", "5bf9726ac6a4cf4b4c36bc17eac98884", "26f5a773c64fb7c7b0b752c1286b148c"}});
}

TEST(PasswordDigests, OfAByteThatIsNoCharacterTakeItOrTheReplacementCharacter)
{
    const AnsiCodePageScope utf8(CP_UTF8);
    ExpectDigests({{"\xFF", "00594fd4f42ba43fc1ca0427a0576295", "9ae29661ba05d780433727db1600d161"}});
}

TEST(PasswordEncoding, OfAnyOtherTypeLeavesTheText)
{
    for (const int type : {0, 3, 7, -1, 2147483647}) {
        EXPECT_EQ(Encoded("Secret", type), "Secret");
        EXPECT_EQ(Encoded("", type), "");
    }
}

TEST(PasswordEncoding, IgnoresItsSecondText)
{
    for (const int type : {0, 1, 2, 7}) {
        EXPECT_EQ(Encoded("Secret", type, "something"), Encoded("Secret", type));
    }
}

// ---- Operations --------------------------------------------------------------------------------------------------

std::vector<ReadCase> Reads()
{
    return {
        {"CheckUserPassword",
         [](CAConnect& conn) {
             bool matches = true;
             const bool ran = CQVBaseFun::CheckUserPassword(conn, "amy", "Secret", matches);
             return Line(ran, matches);
         },
         {{"Secret", "0"}, {"Other", "0"}},
         "true true",
         "false false",
         "true false",
         "false false"},
        {"GetEncryptKey",
         [](CAConnect& conn) {
             CString key = "before";
             const bool ran = CQVBaseFun::GetEncryptKey(conn, key);
             return Line(ran, key);
         },
         {{"key1"}, {"key2"}},
         R"(true "key1")",
         R"(true "")",
         R"(true "")",
         R"(false "")"},
    };
}

std::vector<WriteCase> Writes()
{
    return {
        {"UpdateItemPassword", [](CAConnect& conn) { return CQVBaseFun::UpdateItemPassword(conn, "amy", "x", 1); }},
    };
}

class PasswordBehaviour : public behaviour::Script {
protected:
    PasswordBehaviour() : Script("access/QVBaseFun_Passwords.cpp") {}

    /// The verdict on a password beside a stored one, as Line shows it.
    std::string Check(const std::string& stored, const scripted::Value& type, const char* login, const char* password)
    {
        Connect();
        m_database->Answer(Rows({{stored, type}}));
        bool matches = false;
        const bool ran = CQVBaseFun::CheckUserPassword(*m_conn, login, password, matches);
        ExpectNoError();
        return Line(ran, matches);
    }

private:
    AnsiCodePageScope m_utf8{CP_UTF8};
};

TEST_F(PasswordBehaviour, ReadsGiveWhatTheRowHoldsOrTheirPresets) { ExpectAnswersAreRead(Reads()); }

TEST_F(PasswordBehaviour, ReadsReadTheFirstRowOnly) { ExpectOnlyTheFirstRowIsRead(Reads()); }

TEST_F(PasswordBehaviour, ReadsOfAClosedConnectionGiveFalseAndSayNothing) { ExpectClosedReadsSayNothing(Reads()); }

TEST_F(PasswordBehaviour, WhatTheEngineRefusesIsReportedOnceWithALineOfItsOwn)
{
    ExpectRefusedReadsAreReported(Reads());
    ExpectRefusedWritesAreReported(Writes());
}

TEST_F(PasswordBehaviour, WritesGiveTrueWhateverTheEngineCounts) { ExpectWritesGiveTrueWhateverIsCounted(Writes()); }

TEST_F(PasswordBehaviour, WritesOnAClosedConnectionAreReportedAsErrors) { ExpectClosedWritesAreReported(Writes()); }

// ---- Verdicts ----------------------------------------------------------------------------------------------------

const char* const kMatch = "true true";
const char* const kNoMatch = "true false";
const char* const kMd5OfAbc = "900150983cd24fb0d6963f7d28e17f72";
const char* const kMd5OfNothing = "d41d8cd98f00b204e9800998ecf8427e";
const char* const kMd5OfAbIn16Bits = "aa3a791e273bce9cf4a2a7caa9028b36";

TEST_F(PasswordBehaviour, BothEmptyMatchWhateverTheType)
{
    for (const char* type : {"0", "1", "2", "7", "-1"}) {
        EXPECT_EQ(Check("", type, "amy", ""), kMatch) << type;
    }
    EXPECT_EQ(Check("", {}, "amy", ""), kMatch);
}

TEST_F(PasswordBehaviour, NothingStoredMatchesNoOtherPassword)
{
    for (const char* type : {"0", "1", "2", "7"}) {
        EXPECT_EQ(Check("", type, "amy", "abc"), kNoMatch) << type;
    }
}

TEST_F(PasswordBehaviour, APlainPasswordMatchesItselfInItsLettersOnly)
{
    for (const char* type : {"0", "3", "7", "-1"}) {
        EXPECT_EQ(Check("Secret", type, "amy", "Secret"), kMatch) << type;
        for (const char* other : {"", "secret", "Secret ", "Secre", "Secret1"}) {
            EXPECT_EQ(Check("Secret", type, "amy", other), kNoMatch) << other;
        }
    }
}

TEST_F(PasswordBehaviour, AnUnreadableTypeMeansAPlainPassword)
{
    EXPECT_EQ(Check("abc", {}, "amy", "abc"), kMatch);
    EXPECT_EQ(Check("abc", "no number", "amy", "abc"), kMatch);
    EXPECT_EQ(Check(kMd5OfAbc, {}, "amy", "abc"), kNoMatch);
}

TEST_F(PasswordBehaviour, ADigestOfTypeOneMatchesItsPasswordWhateverTheLoginName)
{
    for (const char* login : {"amy", "AMY", ""}) {
        EXPECT_EQ(Check(kMd5OfAbc, "1", login, "abc"), kMatch);
    }
    EXPECT_EQ(Check(kMd5OfAbc, "1", "amy", "Abc"), kNoMatch);
    EXPECT_EQ(Check(kMd5OfAbc, "1", "amy", kMd5OfAbc), kNoMatch);
    EXPECT_EQ(Check(kMd5OfAbc, "0", "amy", "abc"), kNoMatch);
    EXPECT_EQ(Check(kMd5OfAbc, "2", "amy", "abc"), kNoMatch);
}

TEST_F(PasswordBehaviour, AnEmptyPasswordIsEncodedWhereSomethingIsStored)
{
    EXPECT_EQ(Check(kMd5OfNothing, "1", "amy", ""), kMatch);
    EXPECT_EQ(Check(kMd5OfAbc, "1", "amy", ""), kNoMatch);
    EXPECT_EQ(Check("4144e195f46de78a3623da7364d04f11", "2", "a", ""), kMatch);
}

TEST_F(PasswordBehaviour, ADigestInCapitalsNeverMatches)
{
    EXPECT_EQ(Check("900150983CD24FB0D6963F7D28E17F72", "1", "amy", "abc"), kNoMatch);
    EXPECT_EQ(Check("AA3A791E273BCE9CF4A2A7CAA9028B36", "2", "a", "b"), kNoMatch);
}

TEST_F(PasswordBehaviour, ADigestOfTypeTwoIsOfTheLoginNameAndThenThePassword)
{
    EXPECT_EQ(Check(kMd5OfAbIn16Bits, "2", "a", "b"), kMatch);
    EXPECT_EQ(Check(kMd5OfAbIn16Bits, "2", "", "ab"), kMatch);
    EXPECT_EQ(Check(kMd5OfAbIn16Bits, "2", "b", "a"), kNoMatch);
    EXPECT_EQ(Check(kMd5OfAbIn16Bits, "2", "amy", "ab"), kNoMatch);
}

TEST_F(PasswordBehaviour, ADigestOfTypeTwoTakesTheLoginNameInTheCallersLetters)
{
    EXPECT_EQ(Check(kMd5OfAbIn16Bits, "2", "A", "b"), kNoMatch);
    EXPECT_EQ(Check("b6adfb6b8cd5da480aece75d20f1ff9d", "2", "A", "b"), kMatch);
}

TEST_F(PasswordBehaviour, DigestsOfOtherAlphabetsMatchInTheirCodePage)
{
    EXPECT_EQ(Check("648028b71ded28581784cd3d9af9a520", "1", "amy", "pass😀word"), kMatch);
    EXPECT_EQ(Check("95effc743d7edec2489cd41dd078436f", "2", "pass", "😀word"), kMatch);
    {
        const AnsiCodePageScope chinese(936);
        EXPECT_EQ(Check("cab54837b8cb3345b7d7bd03e904d1c8", "1", "amy", "\xD6\xD0\xCE\xC4\xC3\xDC\xC2\xEB"), kMatch);
        EXPECT_EQ(Check("6b2cad0f43a5db7286e6b5fa88ecadc5", "2", "\xD6\xD0\xCE\xC4", "\xC3\xDC\xC2\xEB"), kMatch);
    }
    const AnsiCodePageScope western(1252);
    EXPECT_EQ(Check("5bf9726ac6a4cf4b4c36bc17eac98884", "1", "amy", "\xE9\x80\xDF"), kMatch);
    EXPECT_EQ(Check("26f5a773c64fb7c7b0b752c1286b148c", "2", "\xE9", "\x80\xDF"), kMatch);
}

TEST_F(PasswordBehaviour, AVerdictThatBreaksOffIsNone)
{
    Connect();
    m_database->Answer(Rows({{"abc"}}));
    bool matches = true;
    EXPECT_FALSE(CQVBaseFun::CheckUserPassword(*m_conn, "amy", "abc", matches));
    EXPECT_FALSE(matches);
    TakeError("column 2 is out of range: the result has 1", OnlyStatement());
}

// ---- Setting the key ---------------------------------------------------------------------------------------------

TEST_F(PasswordBehaviour, AKeyIsAddedWhereNoneOrAnEmptyOneIsReadAndElseUpdated)
{
    const std::vector<std::pair<Reply, const char*>> cases = {
        {Rows({}), "INSERT"},
        {Rows({{""}}), "INSERT"},
        {Rows({{scripted::Value()}}), "INSERT"},
        {Rows({{""}, {"second"}}), "INSERT"},
        {Rows({{"first"}, {""}}), "UPDATE"},
        {Rows({{" "}}), "UPDATE"},
    };
    for (const auto& [present, verb] : cases) {
        Connect();
        m_database->Answer(present);
        EXPECT_TRUE(CQVBaseFun::SetEncryptKey(*m_conn, "key"));
        ASSERT_THAT(m_database->executions, SizeIs(1));
        EXPECT_THAT(m_database->executions[0], testing::StartsWith(verb));
        ExpectNoError();
    }
}

TEST_F(PasswordBehaviour, AKeyIsAddedAlsoWhereThePresentOneCannotBeRead)
{
    Connect();
    m_database->Answer(Raise("refused"));
    EXPECT_TRUE(CQVBaseFun::SetEncryptKey(*m_conn, "key"));
    ASSERT_THAT(m_database->executions, SizeIs(1));
    EXPECT_THAT(m_database->executions[0], testing::StartsWith("INSERT"));
    TakeError("refused [Script 1]", m_database->queries.at(0));
}

TEST_F(PasswordBehaviour, AKeyThatIsRefusedIsReported)
{
    for (const auto& present : {Rows({}), Rows({{"present"}})}) {
        Connect();
        m_database->Answer(present);
        m_database->Answer(Raise("refused"));
        EXPECT_FALSE(CQVBaseFun::SetEncryptKey(*m_conn, "key"));
        TakeError("refused [Script 1]", m_database->executions.at(0));
    }
}

TEST_F(PasswordBehaviour, SettingTheKeyOnAClosedConnectionIsReportedAsAnError)
{
    ExpectClosedWritesAreReported(
        {{"SetEncryptKey", [](CAConnect& conn) { return CQVBaseFun::SetEncryptKey(conn, "key"); }}});
}

} // namespace

} // namespace password_behaviour
