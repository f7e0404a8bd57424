#pragma once

#include "platform/Api.h"

#include <memory>
#include <vector>

class CObject;

/// Place of an element in a CObList; null is "behind the last" or "before the first".
struct CObListNode;
using POSITION = CObListNode*;

/// Doubly linked list of object pointers. The list does not own the objects.
///
/// Elements live in blocks, so a long list costs few allocations. Not copyable; belongs to one thread at a time.
/// @throws std::out_of_range when an element is asked of an empty list or of a null position.
class QV_API CObList {
public:
    CObList() noexcept;
    ~CObList();
    CObList(const CObList&) = delete;
    CObList& operator=(const CObList&) = delete;

    [[nodiscard]] int GetCount() const noexcept { return m_count; }
    [[nodiscard]] bool IsEmpty() const noexcept { return m_count == 0; }

    [[nodiscard]] CObject* GetHead() const;
    [[nodiscard]] CObject* GetTail() const;
    POSITION AddHead(CObject* object);
    POSITION AddTail(CObject* object);
    /// Takes the element off the list and gives it. The object is not deleted.
    CObject* RemoveHead();
    CObject* RemoveTail();
    /// Empties the list. The objects are not deleted.
    void RemoveAll() noexcept;

    [[nodiscard]] POSITION GetHeadPosition() const noexcept { return m_head; }
    [[nodiscard]] POSITION GetTailPosition() const noexcept { return m_tail; }
    /// The element at a position, which moves on to the next (null behind the last).
    CObject* GetNext(POSITION& position) const;
    /// The element at a position, which moves back to the one before (null before the first).
    CObject* GetPrev(POSITION& position) const;
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
