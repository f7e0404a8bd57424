#include "platform/CObList.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

struct CObListNode {
    CObListNode* next;
    CObListNode* previous;
    CObject* object;
};

namespace {

constexpr std::size_t kFirstBlock = 8;
constexpr std::size_t kLargestBlock = 4096;

CObListNode* Existing(CObListNode* node)
{
    if (node == nullptr) {
        throw std::out_of_range("no such list element");
    }
    return node;
}

} // namespace

CObList::CObList() noexcept = default;
CObList::~CObList() = default;

CObListNode* CObList::TakeNode(CObject* object)
{
    if (m_free == nullptr) {
        const std::size_t size = std::min(kFirstBlock << std::min<std::size_t>(m_blocks.size(), 9), kLargestBlock);
        auto block = std::make_unique<CObListNode[]>(size);
        for (std::size_t i = size; i > 0; --i) {
            block[i - 1].next = m_free;
            m_free = &block[i - 1];
        }
        m_blocks.push_back(std::move(block));
    }
    CObListNode* node = m_free;
    m_free = node->next;
    *node = {nullptr, nullptr, object};
    ++m_count;
    return node;
}

CObject* CObList::Unlink(CObListNode* node)
{
    (node->previous ? node->previous->next : m_head) = node->next;
    (node->next ? node->next->previous : m_tail) = node->previous;
    node->next = m_free;
    m_free = node;
    --m_count;
    return node->object;
}

CObject* CObList::GetHead() const { return Existing(m_head)->object; }

CObject* CObList::GetTail() const { return Existing(m_tail)->object; }

POSITION CObList::AddHead(CObject* object)
{
    CObListNode* node = TakeNode(object);
    node->next = m_head;
    (m_head ? m_head->previous : m_tail) = node;
    m_head = node;
    return node;
}

POSITION CObList::AddTail(CObject* object)
{
    CObListNode* node = TakeNode(object);
    node->previous = m_tail;
    (m_tail ? m_tail->next : m_head) = node;
    m_tail = node;
    return node;
}

CObject* CObList::RemoveHead() { return Unlink(Existing(m_head)); }

CObject* CObList::RemoveTail() { return Unlink(Existing(m_tail)); }

void CObList::RemoveAll() noexcept
{
    m_blocks.clear();
    m_head = m_tail = m_free = nullptr;
    m_count = 0;
}

CObject* CObList::GetNext(POSITION& position) const
{
    const CObListNode* node = Existing(position);
    position = node->next;
    return node->object;
}

CObject* CObList::GetPrev(POSITION& position) const
{
    const CObListNode* node = Existing(position);
    position = node->previous;
    return node->object;
}

CObject* CObList::GetAt(POSITION position) const { return Existing(position)->object; }
