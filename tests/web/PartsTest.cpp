#include "console/Translation.h"
#include "management/Catalogue.h"
#include "management/Errors.h"
#include "web/JsonReader.h"
#include "web/Languages.h"
#include "web/Origins.h"
#include "web/PasswordRules.h"
#include "web/People.h"
#include "web/Sessions.h"
#include "web/TextSearch.h"
#include "web/Throttle.h"
#include "web/Tokens.h"
#include "web/Totp.h"
#include "web/Worker.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <set>
#include <vector>

using namespace web;
using namespace std::chrono_literals;
using management::Error;
using testing::ElementsAre;

namespace {

TEST(JsonReaderTest, ReadsAnObject)
{
    const JsonValue read = ReadJsonObject(R"({"a":"x","n":-17,"t":true,"l":["1",2],"o":{"i":null}})");
    EXPECT_EQ(read.Find("a")->text, "x");
    EXPECT_EQ(read.Find("n")->text, "-17");
    EXPECT_EQ(read.Find("t")->text, "1");
    ASSERT_EQ(read.Find("l")->items.size(), 2U);
    EXPECT_EQ(read.Find("l")->items[1].text, "2");
    EXPECT_EQ(read.Find("o")->Find("i")->type, JsonValue::Type::null);
    EXPECT_EQ(read.Find("x"), nullptr);
}

TEST(JsonReaderTest, RefusesAllElse)
{
    std::string deep = "1";
    for (int i = 0; i < 17; ++i) {
        deep = R"({"a":)" + deep + "}";
    }
    std::string many = R"({"a":[0)";
    for (int i = 0; i < 10001; ++i) {
        many += ",0";
    }
    many += "]}";
    for (const std::string& body :
         {std::string(), std::string("[]"), std::string("1"), std::string("{"), std::string(R"({"a":1}{})"),
          std::string(R"({"a":1,"a":2})"), std::string(R"({"a":1.5})"), std::string("{\"a\":\"\xff\"}"),
          std::string(R"({"a":"\u0000"})"), std::string(R"({"a":1e400})"), deep, many}) {
        EXPECT_THROW(ReadJsonObject(body), Error) << body.substr(0, 40);
    }
}

TEST(LanguagesTest, AreThoseThatAreWantedMostAndThere)
{
    const Languages languages(console::CatalogueFolder());
    for (const auto& [accepted, tag] :
         std::vector<std::pair<std::string, std::string>>{{"", "en"},
                                                          {"de", "de"},
                                                          {"DE-at", "de"},
                                                          {"zh-CN", "zh-CN"},
                                                          {"zh", "zh-CN"},
                                                          {"zh-Hant-TW", "zh-CN"},
                                                          {"fr-CH, fr;q=0.9, en;q=0.8, de;q=0.7, *;q=0.5", "en"},
                                                          {"en;q=0.5, de;q=0.8", "de"},
                                                          {"de;q=0, zh", "zh-CN"},
                                                          {"de;q=x, de;q=-1,;q=1,,-,--x, -de", "en"},
                                                          {"d", "en"},
                                                          {"*", "en"},
                                                          {std::string(60000, '-') + ",de", "en"}}) {
        EXPECT_EQ(languages.For(accepted).tag, tag) << accepted.substr(0, 60);
        EXPECT_EQ(languages.TagOf(languages.For(accepted).catalogue.get()), tag);
    }
    EXPECT_EQ(Languages("").For("de").tag, "en");
    EXPECT_EQ(Languages("/nowhere").For("de").tag, "en");
}

TEST(LanguagesTest, AFileThatIsNoCatalogueIsLeftOut)
{
    const std::filesystem::path folder = testing::TempDir() + "languages";
    std::string whole;
    {
        std::ifstream in(console::CatalogueFolder() / "de/LC_MESSAGES/qvadmin.mo", std::ios::binary);
        whole.assign(std::istreambuf_iterator<char>(in), {});
    }
    for (const std::string& bytes : {std::string(), std::string("no catalogue"), whole.substr(0, 30),
                                     whole.substr(0, whole.size() - 1000), whole}) {
        std::filesystem::create_directories(folder / "de/LC_MESSAGES");
        std::ofstream(folder / "de/LC_MESSAGES/qvadmin.mo", std::ios::binary) << bytes;
        EXPECT_EQ(Languages(folder).For("de").tag, bytes == whole ? "de" : "en") << bytes.size();
    }
    std::filesystem::remove_all(folder);
}

TEST(CatalogueTest, RulesOfPluralsAreWorkedOut)
{
    const std::string polish = "(n==1 ? 0 : n%10>=2 && n%10<=4 && (n%100<10 || n%100>=20) ? 1 : 2)";
    for (const auto& [rule, n, form] :
         std::vector<std::tuple<std::string, std::uint64_t, std::uint64_t>>{{"0", 5, 0},
                                                                            {"(n != 1)", 1, 0},
                                                                            {" n!=1 ", 0, 1},
                                                                            {"n > 1", 1, 0},
                                                                            {polish, 1, 0},
                                                                            {polish, 22, 1},
                                                                            {polish, 12, 2},
                                                                            {polish, 25, 2},
                                                                            {"!n ? 3 : n - 1 * 2 + 4 / 2", 7, 7},
                                                                            {"!n ? 3 : 1", 0, 3},
                                                                            // What is none.
                                                                            {"", 1, 0},
                                                                            {"n +", 1, 0},
                                                                            {"(n", 1, 0},
                                                                            {"n n", 1, 0},
                                                                            {"n ? 1", 1, 0},
                                                                            {"n / 0 + n % 0", 4, 0}}) {
        EXPECT_EQ(management::FindPluralForm(rule, n), form) << rule << " of " << n;
    }
}

TEST(CatalogueTest, ThreadsSpeakEachTheirOwn)
{
    const Languages languages(console::CatalogueFolder());
    const management::Sentence people = management::Counted(3, "user");
    EXPECT_EQ(management::Said(people), "3 users");
    const management::Speaking german(languages.For("de").catalogue.get());
    EXPECT_EQ(management::Said(people), "3 Benutzer");
    EXPECT_EQ(management::Said(management::Counted(1, "user")), "1 Benutzer");
    {
        const management::Speaking chinese(languages.For("zh-CN").catalogue.get());
        EXPECT_EQ(management::Said(people), "3 名用户");
        std::promise<std::string> inWorker;
        Worker worker;
        worker.Post([&] { inWorker.set_value(management::Said(people)); });
        EXPECT_EQ(inWorker.get_future().get(), "3 名用户");
        EXPECT_EQ(std::async(std::launch::async, [&] { return management::Said(people); }).get(), "3 users");
    }
    EXPECT_EQ(management::Said(people), "3 Benutzer");
    EXPECT_EQ(people.English(), "3 users");
}

TEST(TokensTest, DigestsInBothWaysOfWritingThem)
{
    EXPECT_EQ(Digest("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_EQ(Base64Digest("abc"), "ungWv48Bz+pBQUDeXa4iI7ADYaOWF3qctBD/YfIAFa0=");
}

TEST(PasswordRulesTest, CharactersAreCountedAndNoneAreAskedFor)
{
    const PasswordOwner owners[] = {{"amy", "", "", false}};
    const PasswordOwner super[] = {{"amy", "", "", false}, {"boss", "", "", true}};
    const auto code = [](std::string_view password, std::span<const PasswordOwner> whom) {
        const std::optional<Problem> found = FindWeakness(password, whom);
        return found ? std::string(found->code) : "";
    };
    EXPECT_EQ(code("eleven char", owners), "password_short");
    EXPECT_EQ(code("twelve small", owners), "");
    EXPECT_EQ(code("twelve small", super), "password_short_super");
    EXPECT_EQ(code("fifteen letters", super), "");
    // Twelve characters, and eleven of more bytes.
    EXPECT_EQ(code("äöüßéèêñçłøå", owners), "");
    EXPECT_EQ(code("äöüßéèêñçłø", owners), "password_short");
}

TEST(PasswordRulesTest, NamesOfTheOwnerAndWordsAreRefused)
{
    const PasswordOwner owners[] = {{"amelia.pond.jr", "Amelia Jessica Pond", "Brightwater Ltd", false}};
    const auto code = [&owners](std::string_view password) {
        const std::optional<Problem> found = FindWeakness(password, owners);
        return found ? std::string(found->code) : "";
    };
    for (const char* name :
         {"amelia.pond.jr", "AMELIA.POND.JR", "ameliajessicapond", "Brightwater Ltd", "brightwaterltd"}) {
        EXPECT_EQ(code(name), "password_is_name") << name;
    }
    for (const char* easy : {"password1234", "1234password!", "administrator1", "123456789012", "abcdefghijkl",
                             "passwordpassword", "aaaaaaaaaaaa", "xk9Qxk9Qxk9Q", "international"}) {
        EXPECT_EQ(code(easy), "password_easy") << easy;
    }
    for (const char* good : {"correct horse battery", "vk93ndk38fkw", "8391 2847 5562", "tom 8391 2847 5562"}) {
        EXPECT_EQ(code(good), "") << good;
    }
}

TEST(TextSearchTest, FindsAPartWhereverItIs)
{
    for (std::size_t at = 0; at < 200; ++at) {
        const PartFinder finder("abc", CountBytes(std::string(at, 'b') + "cc"));
        std::string text(210, 'x');
        text.replace(at, 3, "abc");
        EXPECT_EQ(finder.Find(text, 0), at);
        EXPECT_EQ(finder.Find(text, at), at);
        EXPECT_EQ(finder.Find(text, at + 1), std::string::npos);
    }
}

TEST(TextSearchTest, FindsWhatTheLibraryFinds)
{
    std::string text;
    unsigned state = 7;
    for (int i = 0; i < 3000; ++i) {
        state = state * 1664525U + 1013904223U;
        text += static_cast<char>('a' + (state >> 24U) % 3);
    }
    for (const std::string part : {"a", "ab", "abc", "abcabc", "ccccc", "abcabcabcabcabc", "x"}) {
        const PartFinder finder(part, CountBytes("aab"));
        std::size_t from = 0;
        do {
            const std::size_t at = finder.Find(text, from);
            ASSERT_EQ(at, text.find(part, from)) << part << " from " << from;
            from = at == std::string::npos ? at : at + 1;
        } while (from != std::string::npos);
        EXPECT_EQ(finder.Find(text, text.size()), std::string::npos);
        EXPECT_EQ(finder.Find(text.substr(0, 70), 3), text.substr(0, 70).find(part, 3));
    }
}

TEST(ThrottleTest, SlowsDownAfterFiveFailuresAndNeverLocksOut)
{
    Throttle throttle;
    Throttle::Clock::time_point now{};
    std::vector<long> delays;
    for (int i = 0; i < 14; ++i) {
        now += 2min;
        const auto delay = throttle.Begin("amy", "192.0.2.1", now);
        ASSERT_TRUE(delay);
        delays.push_back(std::chrono::duration_cast<std::chrono::seconds>(*delay).count());
        throttle.End("amy", "192.0.2.1", Throttle::Outcome::wrong, now);
    }
    EXPECT_THAT(delays, ElementsAre(0, 0, 0, 0, 0, 1, 2, 4, 8, 16, 32, 60, 60, 60));
    // The login name is slow from everywhere, the address for everybody.
    EXPECT_EQ(throttle.Begin("amy", "192.0.2.2", now), 60s);
    EXPECT_EQ(throttle.Begin("rory", "192.0.2.1", now), 60s);
    EXPECT_EQ(throttle.Begin("rory", "192.0.2.3", now), 0s);
    EXPECT_EQ(throttle.Begin("amy", "192.0.2.4", now + 16min), 0s);
}

TEST(ThrottleTest, ARightPasswordForgivesTheName)
{
    Throttle throttle;
    const Throttle::Clock::time_point now{};
    for (int i = 0; i < 6; ++i) {
        ASSERT_TRUE(throttle.Begin("amy", "192.0.2." + std::to_string(i), now));
        throttle.End("amy", "192.0.2." + std::to_string(i), Throttle::Outcome::wrong, now);
    }
    ASSERT_EQ(throttle.Begin("amy", "192.0.2.9", now), 2s);
    throttle.End("amy", "192.0.2.9", Throttle::Outcome::unfinished, now);
    ASSERT_EQ(throttle.Begin("amy", "192.0.2.9", now), 2s);
    throttle.End("amy", "192.0.2.9", Throttle::Outcome::right, now);
    EXPECT_EQ(throttle.Begin("amy", "192.0.2.9", now), 0s);
}

TEST(ThrottleTest, TakesTenASecondAndFourWaitingOfOneAddress)
{
    Throttle throttle;
    const Throttle::Clock::time_point now{};
    for (int i = 0; i < 4; ++i) {
        EXPECT_TRUE(throttle.Begin("a" + std::to_string(i), "192.0.2.1", now));
    }
    EXPECT_FALSE(throttle.Begin("b", "192.0.2.1", now));
    for (int i = 0; i < 6; ++i) {
        EXPECT_TRUE(throttle.Begin("c", "192.0.2." + std::to_string(10 + i), now));
    }
    EXPECT_FALSE(throttle.Begin("d", "192.0.2.99", now));
    EXPECT_TRUE(throttle.Begin("d", "192.0.2.99", now + 1s));
}

constexpr const char* kSecretOfRfc = "GEZDGNBVGY3TQOJQGEZDGNBVGY3TQOJQ"; // 12345678901234567890

TEST(TotpTest, CodesAreThoseOfRfc6238)
{
    // The last six of the eight digits of its appendix B.
    for (const auto& [time, code] : {std::pair<std::int64_t, const char*>{59, "287082"},
                                     {1111111109, "081804"},
                                     {1111111111, "050471"},
                                     {1234567890, "005924"},
                                     {2000000000, "279037"},
                                     {20000000000, "353130"}}) {
        EXPECT_EQ(TotpCode(kSecretOfRfc, static_cast<int>(time / kTotpSeconds)), code);
        EXPECT_EQ(StepOfCode(kSecretOfRfc, code, time), time / kTotpSeconds);
    }
}

TEST(TotpTest, TakesTheStepsBesideThePresentOne)
{
    const std::string code = TotpCode(kSecretOfRfc, 100);
    for (const auto& [step, isTaken] : {std::pair{98, false}, {99, true}, {100, true}, {101, true}, {102, false}}) {
        EXPECT_EQ(StepOfCode(kSecretOfRfc, code, std::time_t{step} * kTotpSeconds).has_value(), isTaken) << step;
    }
    EXPECT_EQ(StepOfCode(kSecretOfRfc, code.substr(0, 3) + " " + code.substr(3), 3000), 100);
    for (const std::string& wrong : {std::string(), code.substr(1), code + "0", std::string(6, 'x')}) {
        EXPECT_FALSE(StepOfCode(kSecretOfRfc, wrong, 3000)) << wrong;
    }
}

TEST(TotpTest, SecretsAndRecoveryCodesAreRandom)
{
    const std::string secret = NewTotpSecret();
    EXPECT_THAT(secret, testing::MatchesRegex("[A-Z2-7]{32}"));
    EXPECT_NE(secret, NewTotpSecret());
    EXPECT_EQ(TotpUri("ABC", "o'brien+ü"), "otpauth://totp/Quorvel:o%27brien%2B%C3%BC?secret=ABC&issuer=Quorvel");
    const RecoveryCodes made = NewRecoveryCodes();
    EXPECT_EQ(std::set<std::string>(made.codes.begin(), made.codes.end()).size(), 10U);
    for (std::size_t i = 0; i < made.codes.size(); ++i) {
        EXPECT_THAT(made.codes[i], testing::MatchesRegex("[a-z2-7]{4}(-[a-z2-7]{4}){3}"));
        EXPECT_EQ(made.digests.at(i), RecoveryDigest(made.codes[i]));
    }
    EXPECT_EQ(RecoveryDigest(" ABCD-efgh"), RecoveryDigest("abcdefgh"));
}

TEST(SessionsTest, EndWithTime)
{
    Sessions sessions({.idle = 15min, .whole = 1h});
    Sessions::Clock::time_point now{};
    const auto [token, session] = sessions.Begin({1, "amy", "Amy", "mark"}, now);
    EXPECT_EQ(token.size(), 64U);
    EXPECT_NE(token, session.csrf);
    EXPECT_NE(token, session.key);
    for (int i = 0; i < 6; ++i) {
        now += 10min;
        ASSERT_TRUE(sessions.Use(token, now));
    }
    EXPECT_FALSE(sessions.Use(token, now + 1min));
    const auto again = sessions.Begin({1, "amy", "Amy", "mark"}, now);
    EXPECT_NE(again.first, token);
    EXPECT_FALSE(sessions.Use(again.first, now + 16min));
    EXPECT_FALSE(sessions.Use(again.first, now));
    EXPECT_FALSE(sessions.Use("", now));
}

TEST(SessionsTest, AUserHasFive)
{
    Sessions sessions({});
    Sessions::Clock::time_point now{};
    const std::string other = sessions.Begin({2, "rory", "", ""}, now).first;
    const std::string first = sessions.Begin({1, "amy", "", ""}, now).first;
    for (int i = 0; i < 5; ++i) {
        now += 1s;
        sessions.Begin({1, "amy", "", ""}, now);
    }
    EXPECT_FALSE(sessions.Use(first, now));
    EXPECT_TRUE(sessions.Use(other, now));
}

TEST(SessionsTest, AConfirmationGivesANewToken)
{
    Sessions sessions({});
    Sessions::Clock::time_point now{};
    const auto [token, session] = sessions.Begin({1, "amy", "", ""}, now);
    now += 10min;
    EXPECT_FALSE(sessions.IsConfirmed(session, now));
    const auto confirmed = sessions.Confirm(session.key, {1, "amy", "Amy", "another mark"}, now);
    ASSERT_TRUE(confirmed);
    EXPECT_TRUE(sessions.IsConfirmed(confirmed->second, now));
    EXPECT_FALSE(sessions.Use(token, now));
    EXPECT_TRUE(sessions.Use(confirmed->first, now));
    EXPECT_NE(confirmed->second.csrf, session.csrf);
    EXPECT_FALSE(sessions.Confirm(session.key, {1, "amy", "Amy", "another mark"}, now));
}

Request RequestFor(const std::string& host, NamedValues headers = {})
{
    Request request;
    request.headers = std::move(headers);
    request.headers.emplace_back("Host", host);
    return request;
}

TEST(OriginsTest, KnowsItsOwnNamesAlone)
{
    const Origins origins("127.0.0.1", 8420, false, {"https://Admin.example.org"});
    EXPECT_EQ(origins.First().Text(), "http://127.0.0.1:8420");
    for (const std::string host : {"127.0.0.1:8420", "localhost:8420", "LOCALHOST:8420"}) {
        ASSERT_TRUE(origins.Of(RequestFor(host))) << host;
        EXPECT_FALSE(origins.Of(RequestFor(host))->isSecure);
    }
    ASSERT_TRUE(origins.Of(RequestFor("admin.example.org")));
    EXPECT_TRUE(origins.Of(RequestFor("admin.example.org:443"))->isSecure);
    for (const std::string host : {"127.0.0.1", "127.0.0.1:80", "evil.example", "localhost.evil.example:8420", ""}) {
        EXPECT_FALSE(origins.Of(RequestFor(host))) << host;
    }
    EXPECT_EQ(Origins("::1", 1, true, {}).First().Text(), "https://[::1]:1");
    for (const std::string text : {"admin.example.org", "https://", "https://a/b", "ftp://a"}) {
        EXPECT_THROW(Origins("127.0.0.1", 1, false, {text}), Error) << text;
    }
}

TEST(OriginsTest, ChangesComeFromTheOwnPage)
{
    const Origin own{false, "127.0.0.1:8420"};
    EXPECT_TRUE(IsSameOrigin(RequestFor("", {}), own));
    EXPECT_TRUE(IsSameOrigin(RequestFor("", {{"Origin", "http://127.0.0.1:8420"}}), own));
    EXPECT_TRUE(IsSameOrigin(RequestFor("", {{"sec-fetch-site", "same-origin"}}), own));
    EXPECT_FALSE(IsSameOrigin(RequestFor("", {{"Origin", "http://evil.example"}}), own));
    EXPECT_FALSE(IsSameOrigin(RequestFor("", {{"Origin", "null"}}), own));
    EXPECT_FALSE(IsSameOrigin(RequestFor("", {{"Sec-Fetch-Site", "same-site"}}), own));
    EXPECT_FALSE(IsSameOrigin(RequestFor("", {{"Sec-Fetch-Site", "none"}}), own));
}

TEST(RequestTest, FindsCookies)
{
    const Request request = RequestFor("h", {{"Cookie", "a=1; qv=x=y;qvx=2; b"}});
    EXPECT_EQ(request.Cookie("a"), "1");
    EXPECT_EQ(request.Cookie("qv"), "x=y");
    EXPECT_EQ(request.Cookie("qvx"), "2");
    EXPECT_EQ(request.Cookie("b"), "");
    EXPECT_EQ(request.Cookie("v"), "");
}

TEST(TokensTest, AreNeverEqual)
{
    EXPECT_NE(NewToken(), NewToken());
    EXPECT_EQ(Digest("abc"), "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad");
    EXPECT_TRUE(IsSame("abc", "abc"));
    EXPECT_FALSE(IsSame("abc", "abd"));
    EXPECT_FALSE(IsSame("abc", "ab"));
}

TEST(PeopleTest, DigitsCountAsNumbers)
{
    EXPECT_LT(SortKey("AMY2"), SortKey("AMY10"));
    EXPECT_LT(SortKey("AMY2B"), SortKey("AMY10A"));
    EXPECT_LT(SortKey("AMY"), SortKey("AMY1"));
    EXPECT_LT(SortKey("AMY-"), SortKey("AMY1"));
    EXPECT_LT(SortKey("AMY99"), SortKey("AMYA"));
    EXPECT_LT(SortKey("A1B"), SortKey("AB"));
    EXPECT_LT(SortKey(""), SortKey("A"));
    EXPECT_EQ(SortKey("A007"), SortKey("A7"));
    EXPECT_EQ(SortKey("000"), SortKey("0"));
    EXPECT_LT(SortKey("A99999999999999999999998"), SortKey("A99999999999999999999999"));
    for (const std::size_t digits : {254U, 255U, 256U, 510U}) {
        EXPECT_LT(SortKey(std::string(digits, '9')), SortKey(std::string(digits + 1, '1'))) << digits;
        EXPECT_LT(SortKey(std::string(digits, '9') + "X"), SortKey(std::string(digits + 1, '1'))) << digits;
    }
}

TEST(WorkerTest, RunsTasksInTheOrderOfTheirTimes)
{
    std::vector<int> order;
    std::promise<void> done;
    {
        Worker worker;
        const auto now = Worker::Clock::now();
        worker.PostAt(now + 100ms, [&] {
            order.push_back(3);
            done.set_value();
        });
        worker.PostAt(now + 50ms, [&] { order.push_back(2); });
        worker.Post([&] { order.push_back(1); });
        worker.PostAt(now + 1h, [&] { order.push_back(4); });
        done.get_future().wait();
        worker.Stop();
        worker.Post([&] { order.push_back(5); });
    }
    EXPECT_THAT(order, ElementsAre(1, 2, 3));
}

TEST(WorkerTest, RestsInBetween)
{
    std::promise<void> rested;
    std::atomic<int> count = 0;
    Worker worker(
        [&] {
            if (++count == 2) {
                rested.set_value();
            }
        },
        20ms);
    EXPECT_EQ(rested.get_future().wait_for(10s), std::future_status::ready);
}

} // namespace
