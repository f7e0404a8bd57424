#include "management/Sentence.h"

#include "management/Errors.h"
#include "management/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <initializer_list>
#include <map>
#include <string>
#include <utility>

using namespace management;

namespace {

/// A language with these texts.
class SmallLanguage final : public Language {
public:
    SmallLanguage(std::initializer_list<std::pair<const std::string, std::string>> texts) : m_texts(texts) {}

    [[nodiscard]] std::string Find(const std::string& english) const override
    {
        const auto found = m_texts.find(english);
        return found == m_texts.end() ? english : found->second;
    }
    [[nodiscard]] std::string FindPlural(const std::string& one, const std::string& others,
                                         std::uint64_t count) const override
    {
        return Find(count == 1 ? one : others);
    }

private:
    std::map<std::string, std::string> m_texts;
};

} // namespace

TEST(SentenceTest, IsItsEnglishText)
{
    const Sentence sentence = FillPattern("there is no user {}; {} are left", "'amy'", 3);
    EXPECT_EQ(sentence.English(), "there is no user 'amy'; 3 are left");
    const auto asText = [](const std::string& text) { return text; };
    EXPECT_EQ(asText(sentence), sentence.English());
    EXPECT_EQ(FillPattern("{1} before {0}, {{}}", "b", 'a').English(), "a before b, {}");
    EXPECT_EQ(Sentence("plain").English(), "plain");
}

TEST(SentenceTest, ATranslationMayTurnTheOrderOfArgumentsRound)
{
    const SmallLanguage language{{"moved {} to {}", "nach {1}: {0}"}};
    EXPECT_EQ(Translate(FillPattern("moved {} to {}", "amy", "/A"), language), "nach /A: amy");
}

TEST(SentenceTest, OnlySentencesAmongTheArgumentsAreTranslated)
{
    const SmallLanguage language{{"the {} {}", "{} {}"}, {"group", "Gruppe"}};
    const std::string name = "group"; // somebody's
    EXPECT_EQ(Translate(FillPattern("the {} {}", Sentence("group"), name), language), "Gruppe group");
    EXPECT_EQ(Translate("group" + FillPattern(" {}", name), language), "Gruppe group");
    EXPECT_EQ(Translate(Joined({"group", name}, ", "), language), "Gruppe, Gruppe");
}

TEST(SentenceTest, ACountChoosesThePattern)
{
    const SmallLanguage language{{"{} right", "{} Recht"}, {"{} rights", "{} Rechte"}};
    EXPECT_EQ(Translate(Counted(1, "right"), language), "1 Recht");
    EXPECT_EQ(Translate(Counted(2, "right"), language), "2 Rechte");
    EXPECT_EQ(FillPlural("{} is gone", "{} are gone", 1, "amy").English(), "amy is gone");
    EXPECT_EQ(FillPlural("{} is gone", "{} are gone", 0, "none").English(), "none are gone");
}

TEST(SentenceTest, TheWordThatIsCountedHasThePlural)
{
    EXPECT_EQ(Counted(1, "right between items").English(), "1 right between items");
    EXPECT_EQ(Counted(2, "right between items").English(), "2 rights between items");
    EXPECT_EQ(Counted(2, "right on documents").English(), "2 rights on documents");
    EXPECT_EQ(Counted(2, "document log entry").English(), "2 document log entries");
}

TEST(SentenceTest, WhatCannotBeFilledOrIsNotThereIsEnglish)
{
    for (const char* bad : {"{2} ist weg", "{ ist weg", "{} {0} ist weg"}) {
        const SmallLanguage language{{"{} is gone", bad}};
        EXPECT_EQ(Translate(FillPattern("{} is gone", "amy"), language), "amy is gone") << bad;
    }
    EXPECT_EQ(Translate(FillPattern("{} is gone", "amy"), SmallLanguage{}), "amy is gone");
}

TEST(SentenceTest, AnErrorKeepsWhatItsSentenceWasMadeOf)
{
    const SmallLanguage language{{"{} is gone", "{} ist weg"}, {"{}; {}", "{}; {}"}};
    const Error error(ErrorCode::notFound, FillPattern("{} is gone", "amy"));
    EXPECT_STREQ(error.what(), "amy is gone");
    EXPECT_EQ(Translate(FillPattern("{}; {}", error.Why(), "more"), language), "amy ist weg; more");
}
