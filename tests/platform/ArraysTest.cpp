#include "platform/CStringArray.h"
#include "platform/CUIntArray.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace {

static_assert(!std::is_copy_constructible_v<CStringArray> && !std::is_copy_assignable_v<CStringArray>);
static_assert(!std::is_copy_constructible_v<CUIntArray> && !std::is_copy_assignable_v<CUIntArray>);

// What an array that starts with 16 places and doubles goes through.
int DoublingsUpTo(int count)
{
    int doublings = 1;
    for (int capacity = 16; capacity < count; capacity *= 2) {
        ++doublings;
    }
    return doublings;
}

template <class Array>
int MovesWhileAdding(Array& array, int count)
{
    int moves = 0;
    const void* place = nullptr;
    for (int i = 0; i < count; ++i) {
        array.Add({});
        if (static_cast<const void*>(&array.GetAt(0)) != place) {
            place = &array.GetAt(0);
            ++moves;
        }
    }
    return moves;
}

TEST(Arrays, givesElementsBackInTheOrderTheyWereAdded)
{
    CStringArray texts;
    EXPECT_TRUE(texts.IsEmpty());
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(texts.Add(CString(('#' + std::to_string(i)).c_str())), i);
    }
    EXPECT_EQ(texts.GetSize(), 1000);
    EXPECT_EQ(texts[999], "#999");
    EXPECT_EQ(texts.GetAt(0), "#0");
}

TEST(Arrays, addingMovesTheElementsRarely)
{
    CUIntArray numbers;
    EXPECT_LE(MovesWhileAdding(numbers, 1'000'000), DoublingsUpTo(1'000'000));
    CStringArray texts;
    EXPECT_LE(MovesWhileAdding(texts, 200'000), DoublingsUpTo(200'000));
}

TEST(Arrays, settingBehindTheEndMovesTheElementsRarely)
{
    CUIntArray numbers;
    int moves = 0;
    const void* place = nullptr;
    for (int i = 0; i < 1'000'000; ++i) {
        numbers.SetAtGrow(i, 1);
        moves += &numbers[0] == place ? 0 : 1;
        place = &numbers[0];
    }
    EXPECT_LE(moves, DoublingsUpTo(1'000'000));
}

TEST(Arrays, keepsShortAndLongTextsWhenElementsMove)
{
    const std::string longText(100, 'x');
    CStringArray texts;
    for (int i = 0; i < 2000; ++i) {
        texts.Add(i % 2 ? CString(longText.c_str()) : CString("short"));
    }
    for (int i = 0; i < 2000; ++i) {
        EXPECT_EQ(texts[i], i % 2 ? longText.c_str() : "short");
    }
}

TEST(Arrays, addsAnElementOfItsOwn)
{
    CStringArray texts;
    texts.Add(CString("a text that does not fit into the object"));
    for (int i = 0; i < 100; ++i) {
        texts.Add(texts[i]);
    }
    EXPECT_EQ(texts[100], texts[0]);
}

TEST(Arrays, settingBehindTheEndFillsWithEmptyElements)
{
    CStringArray texts;
    texts.SetAtGrow(3, CString("c"));
    EXPECT_EQ(texts.GetSize(), 4);
    EXPECT_TRUE(texts[0].IsEmpty());
    EXPECT_EQ(texts[3], "c");
    texts.SetAtGrow(0, CString("a"));
    EXPECT_EQ(texts.GetSize(), 4);
    EXPECT_EQ(texts[0], "a");
    CUIntArray numbers;
    numbers.SetAtGrow(100, 7);
    EXPECT_EQ(numbers[99], 0u);
    EXPECT_EQ(numbers[100], 7u);
}

TEST(Arrays, elementsCanBeChangedInPlace)
{
    CUIntArray numbers;
    numbers.Add(1);
    numbers[0] = 4294967295u;
    EXPECT_EQ(numbers.GetAt(0), 4294967295u);
}

TEST(Arrays, refusesIndexesOutside)
{
    CUIntArray numbers;
    EXPECT_THROW((void)numbers.GetAt(0), std::out_of_range);
    numbers.Add(1);
    EXPECT_THROW((void)numbers.GetAt(1), std::out_of_range);
    EXPECT_THROW((void)numbers[-1], std::out_of_range);
    EXPECT_THROW(numbers.SetAtGrow(-1, 1), std::out_of_range);
    EXPECT_THROW(numbers.SetAtGrow(std::numeric_limits<int>::max(), 1), std::bad_alloc);
    EXPECT_EQ(numbers.GetSize(), 1);
}

TEST(Arrays, removingAllGivesAnEmptyArrayThatCanBeUsedAgain)
{
    CStringArray texts;
    texts.RemoveAll();
    texts.Add(CString("a text that does not fit into the object"));
    texts.RemoveAll();
    EXPECT_TRUE(texts.IsEmpty());
    EXPECT_EQ(texts.begin(), texts.end());
    EXPECT_EQ(texts.Add(CString("b")), 0);
}

TEST(Arrays, canBeWalked)
{
    CUIntArray numbers;
    for (unsigned i = 1; i <= 4; ++i) {
        numbers.Add(i);
    }
    unsigned sum = 0;
    for (const unsigned number : numbers) {
        sum += number;
    }
    EXPECT_EQ(sum, 10u);
}

} // namespace
