#pragma once

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <stdexcept>
#include <utility>

namespace platform {

/// The body of the framework's arrays: elements side by side, appended in amortised constant time.
///
/// Grows with realloc, which lets the system move pages instead of copying them. Element types must therefore allow
/// being moved by copying their bytes. Belongs to one thread at a time.
/// @throws std::out_of_range for an index outside the array, std::bad_alloc when memory runs out.
template <class T>
class GrowingArray {
public:
    /// An empty array.
    GrowingArray() noexcept = default;
    GrowingArray(const GrowingArray&) = delete;
    GrowingArray& operator=(const GrowingArray&) = delete;
    /// Destroys all elements.
    ~GrowingArray() { Free(); }

    /// The number of elements.
    [[nodiscard]] int GetSize() const noexcept { return m_size; }
    /// Whether there are no elements.
    [[nodiscard]] bool IsEmpty() const noexcept { return m_size == 0; }

    /// The element at an index, valid until the array grows. @throws std::out_of_range outside 0..GetSize()-1.
    [[nodiscard]] const T& GetAt(int index) const { return m_elements[Checked(index)]; }
    /// The element at an index, valid until the array grows. @throws std::out_of_range outside 0..GetSize()-1.
    [[nodiscard]] T& operator[](int index) { return m_elements[Checked(index)]; }
    /// The element at an index, valid until the array grows. @throws std::out_of_range outside 0..GetSize()-1.
    [[nodiscard]] const T& operator[](int index) const { return m_elements[Checked(index)]; }

    /// Appends an element. @return its index. @throws std::bad_alloc when memory runs out.
    int Add(T element)
    {
        if (m_size == m_capacity) {
            Grow(m_size + 1LL);
        }
        new (m_elements + m_size) T(std::move(element));
        return m_size++;
    }

    /// Sets an element; an index at or after the end makes the array longer, with empty elements in between.
    /// @throws std::out_of_range for an index below 0, std::bad_alloc when memory runs out.
    void SetAtGrow(int index, T element)
    {
        if (index < 0) {
            throw std::out_of_range("array index below zero");
        }
        if (index < m_size) {
            m_elements[index] = std::move(element);
            return;
        }
        if (index >= m_capacity) {
            Grow(index + 1LL);
        }
        while (m_size < index) {
            new (m_elements + m_size) T();
            ++m_size;
        }
        new (m_elements + m_size) T(std::move(element));
        ++m_size;
    }

    /// Drops all elements and gives the memory back.
    void RemoveAll() noexcept
    {
        Free();
        m_elements = nullptr;
        m_size = 0;
        m_capacity = 0;
    }

    /// The first element, for range-based loops; valid until the array grows.
    [[nodiscard]] const T* begin() const noexcept { return m_elements; }
    /// The end after the last element, for range-based loops; valid until the array grows.
    [[nodiscard]] const T* end() const noexcept { return m_elements + m_size; }

private:
    [[nodiscard]] int Checked(int index) const
    {
        if (index < 0 || index >= m_size) {
            throw std::out_of_range("array index out of range");
        }
        return index;
    }

    void Grow(long long needed)
    {
        constexpr long long most = std::numeric_limits<int>::max();
        if (needed > most) {
            throw std::bad_alloc();
        }
        long long capacity = m_capacity < 16 ? 16 : m_capacity * 2LL;
        capacity = capacity < needed ? needed : capacity;
        capacity = capacity > most ? most : capacity;
        void* moved = std::realloc(static_cast<void*>(m_elements), static_cast<std::size_t>(capacity) * sizeof(T));
        if (moved == nullptr) {
            throw std::bad_alloc();
        }
        m_elements = static_cast<T*>(moved);
        m_capacity = static_cast<int>(capacity);
    }

    void Free() noexcept
    {
        for (int i = 0; i < m_size; ++i) {
            m_elements[i].~T();
        }
        std::free(static_cast<void*>(m_elements));
    }

    T* m_elements = nullptr;
    int m_size = 0;
    int m_capacity = 0;
};

} // namespace platform
