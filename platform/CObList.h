#pragma once

/// @file
/// The list of object pointers.

#include "platform/Api.h"

#include <memory>
#include <vector>

class CObject;

/// The node of a CObList element, known to the list alone.
struct CObListNode;
/// Place of an element in a CObList; null is after the last or before the first. Valid until the element is removed.
using POSITION = CObListNode*;

/// Doubly linked list of object pointers. The list does not own the objects.
///
/// Elements live in blocks, so a long list costs few allocations. Not copyable; belongs to one thread at a time.
/// @throws std::out_of_range when an element is asked of an empty list or of a null position.
class QV_API CObList {
public:
    /// An empty list.
    CObList() noexcept;
    /// Frees the list; the objects are not deleted.
    ~CObList();
    CObList(const CObList&) = delete;
    CObList& operator=(const CObList&) = delete;

    /// The number of elements.
    [[nodiscard]] int GetCount() const noexcept { return m_count; }
    /// Whether there are no elements.
    [[nodiscard]] bool IsEmpty() const noexcept { return m_count == 0; }

    /// The first object. @throws std::out_of_range when the list is empty.
    [[nodiscard]] CObject* GetHead() const;
    /// The last object. @throws std::out_of_range when the list is empty.
    [[nodiscard]] CObject* GetTail() const;
    /// Adds an object, which may be null and is not copied, at the beginning. @return its place.
    POSITION AddHead(CObject* object);
    /// Adds an object, which may be null and is not copied, at the end. @return its place.
    POSITION AddTail(CObject* object);
    /// Removes the first element. @return its object, which is not deleted. @throws std::out_of_range when the list is
    /// empty.
    CObject* RemoveHead();
    /// Removes the last element. @return its object, which is not deleted. @throws std::out_of_range when the list is
    /// empty.
    CObject* RemoveTail();
    /// Empties the list. The objects are not deleted.
    void RemoveAll() noexcept;

    /// The place of the first element, null in an empty list.
    [[nodiscard]] POSITION GetHeadPosition() const noexcept { return m_head; }
    /// The place of the last element, null in an empty list.
    [[nodiscard]] POSITION GetTailPosition() const noexcept { return m_tail; }
    /// The object at a position, which then moves to the next element (null after the last).
    /// @throws std::out_of_range when the position is null.
    CObject* GetNext(POSITION& position) const;
    /// The object at a position, which then moves to the previous element (null before the first).
    /// @throws std::out_of_range when the position is null.
    CObject* GetPrev(POSITION& position) const;
    /// The object at a position. @throws std::out_of_range when the position is null.
    [[nodiscard]] CObject* GetAt(POSITION position) const;

private:
    CObListNode* TakeNode(CObject* object);
    CObject* Unlink(CObListNode* node);

    CObListNode* m_head = nullptr;
    CObListNode* m_tail = nullptr;
    CObListNode* m_free = nullptr;
    std::vector<std::unique_ptr<CObListNode[]>> m_blocks;
    int m_count = 0;
};
