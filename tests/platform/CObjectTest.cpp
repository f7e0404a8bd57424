#include "platform/CObject.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <new>
#include <type_traits>
#include <utility>

namespace {

using testing::StrEq;

static_assert(!std::is_copy_constructible_v<CObject> && !std::is_copy_assignable_v<CObject>);
static_assert(sizeof(CObject) == sizeof(void*));

int destroyed = 0;
int freed = 0;

class Derived : public CObject {
public:
    Derived() = default;
    ~Derived() override { ++destroyed; }
    [[nodiscard]] CRuntimeClass* GetRuntimeClass() const override
    {
        static CRuntimeClass runtimeClass{"Derived"};
        return &runtimeClass;
    }
    static void* operator new(std::size_t size) { return ::operator new(size); }
    static void* operator new(std::size_t, void* place) { return place; }
    static void operator delete(void* place)
    {
        ++freed;
        ::operator delete(place);
    }
};

// A pointer to a virtual member function holds the byte offset of its slot; a bit says that it is virtual, on ARM in
// the second word and elsewhere in the first.
template <class Function>
std::ptrdiff_t SlotOf(Function function)
{
    std::ptrdiff_t words[2];
    static_assert(sizeof(function) == sizeof(words));
    std::memcpy(words, &function, sizeof(words));
#ifdef __aarch64__
    std::swap(words[0], words[1]);
    const std::ptrdiff_t offset = words[1];
#else
    const std::ptrdiff_t offset = words[0] - 1;
#endif
    EXPECT_EQ(words[0] & 1, 1) << "not virtual";
    EXPECT_EQ(offset % static_cast<std::ptrdiff_t>(sizeof(void*)), 0);
    return offset / static_cast<std::ptrdiff_t>(sizeof(void*));
}

using DestructorSlot = void (*)(CObject*);

DestructorSlot SlotAt(const CObject* object, std::size_t index)
{
    const DestructorSlot* table = nullptr;
    std::memcpy(&table, static_cast<const void*>(object), sizeof(table));
    return table[index];
}

TEST(CObject, keepsTheOrderOfItsVirtualFunctions)
{
    EXPECT_EQ(SlotOf(&CObject::GetRuntimeClass), 0);
    EXPECT_EQ(SlotOf(&CObject::Serialize), 3);
    EXPECT_EQ(SlotOf(&CObject::AssertValid), 4);
    EXPECT_EQ(SlotOf(&CObject::Dump), 5);
}

TEST(CObject, keepsItsDestructorsInSlotsOneAndTwo)
{
    alignas(Derived) unsigned char place[sizeof(Derived)];
    CObject* inPlace = new (place) Derived;
    destroyed = freed = 0;
    SlotAt(inPlace, 1)(inPlace);
    EXPECT_EQ(destroyed, 1);
    EXPECT_EQ(freed, 0);
    CObject* onHeap = new Derived;
    SlotAt(onHeap, 2)(onHeap);
    EXPECT_EQ(destroyed, 2);
    EXPECT_EQ(freed, 1);
}

TEST(CObject, isDestroyedThroughItsRoot)
{
    destroyed = 0;
    const CObject* object = new Derived;
    delete object;
    EXPECT_EQ(destroyed, 1);
}

TEST(CObject, namesItsClass)
{
    const CObject object;
    const Derived derived;
    const CObject& root = derived;
    EXPECT_THAT(object.GetRuntimeClass()->m_lpszClassName, StrEq("CObject"));
    EXPECT_THAT(root.GetRuntimeClass()->m_lpszClassName, StrEq("Derived"));
}

TEST(CObject, isValid)
{
    const CObject object;
    object.AssertValid();
}

} // namespace
