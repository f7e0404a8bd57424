#include "platform/CObList.h"

#include "platform/CObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <type_traits>
#include <vector>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_copy_constructible_v<CObList> && !std::is_copy_assignable_v<CObList>);

class Item : public CObject {};

class CObListTest : public testing::Test {
protected:
    [[nodiscard]] std::vector<CObject*> Forward() const
    {
        std::vector<CObject*> objects;
        for (POSITION position = list.GetHeadPosition(); position != nullptr;) {
            objects.push_back(list.GetNext(position));
        }
        return objects;
    }

    [[nodiscard]] std::vector<CObject*> Backward() const
    {
        std::vector<CObject*> objects;
        for (POSITION position = list.GetTailPosition(); position != nullptr;) {
            objects.push_back(list.GetPrev(position));
        }
        return objects;
    }

    CObList list;
    Item a;
    Item b;
    Item c;
};

TEST_F(CObListTest, isEmptyAtFirst)
{
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.GetCount(), 0);
    EXPECT_EQ(list.GetHeadPosition(), nullptr);
    EXPECT_EQ(list.GetTailPosition(), nullptr);
}

TEST_F(CObListTest, addsAtBothEnds)
{
    list.AddTail(&b);
    list.AddTail(&c);
    list.AddHead(&a);
    EXPECT_EQ(list.GetCount(), 3);
    EXPECT_EQ(list.GetHead(), &a);
    EXPECT_EQ(list.GetTail(), &c);
    EXPECT_THAT(Forward(), ElementsAre(&a, &b, &c));
    EXPECT_THAT(Backward(), ElementsAre(&c, &b, &a));
}

TEST_F(CObListTest, keepsNullAndRepeatedObjects)
{
    list.AddTail(nullptr);
    list.AddTail(&a);
    list.AddTail(&a);
    EXPECT_THAT(Forward(), ElementsAre(nullptr, &a, &a));
}

TEST_F(CObListTest, removesAtBothEnds)
{
    list.AddTail(&a);
    list.AddTail(&b);
    list.AddTail(&c);
    EXPECT_EQ(list.RemoveHead(), &a);
    EXPECT_EQ(list.RemoveTail(), &c);
    EXPECT_THAT(Forward(), ElementsAre(&b));
    EXPECT_EQ(list.RemoveTail(), &b);
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_EQ(list.GetHeadPosition(), nullptr);
    list.AddHead(&a);
    EXPECT_THAT(Backward(), ElementsAre(&a));
}

TEST_F(CObListTest, positionsStayWhileOtherElementsComeAndGo)
{
    list.AddTail(&a);
    const POSITION position = list.AddTail(&b);
    for (int i = 0; i < 10'000; ++i) {
        list.AddTail(&c);
        list.AddHead(&c);
    }
    for (int i = 0; i < 10'000; ++i) {
        list.RemoveHead();
        list.RemoveTail();
    }
    list.RemoveHead();
    EXPECT_EQ(list.GetAt(position), &b);
    EXPECT_EQ(list.GetHeadPosition(), position);
    EXPECT_EQ(list.GetTailPosition(), position);
}

TEST_F(CObListTest, removingAllDropsTheElementsButNotTheObjects)
{
    for (int i = 0; i < 5000; ++i) {
        list.AddTail(&a);
    }
    list.RemoveAll();
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_THAT(Forward(), IsEmpty());
    list.AddTail(&b);
    EXPECT_THAT(Forward(), ElementsAre(&b));
}

TEST_F(CObListTest, refusesToGiveWhatIsNotThere)
{
    POSITION none = nullptr;
    EXPECT_THROW((void)list.GetHead(), std::out_of_range);
    EXPECT_THROW((void)list.GetTail(), std::out_of_range);
    EXPECT_THROW(list.RemoveHead(), std::out_of_range);
    EXPECT_THROW(list.RemoveTail(), std::out_of_range);
    EXPECT_THROW((void)list.GetAt(none), std::out_of_range);
    EXPECT_THROW(list.GetNext(none), std::out_of_range);
    EXPECT_THROW(list.GetPrev(none), std::out_of_range);
}

TEST_F(CObListTest, aQueueOfConstantLengthUsesItsPlacesAgain)
{
    std::vector<POSITION> places;
    for (int i = 0; i < 4; ++i) {
        list.AddTail(&a);
    }
    for (int i = 0; i < 10'000; ++i) {
        list.RemoveHead();
        places.push_back(list.AddTail(&a));
    }
    std::sort(places.begin(), places.end());
    places.erase(std::unique(places.begin(), places.end()), places.end());
    EXPECT_LE(places.size(), 8u);
}

} // namespace
