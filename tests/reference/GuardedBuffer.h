#pragma once

#include "reference/Testing.h"

#include <sys/mman.h>

namespace reference {

/// Memory whose last element borders on a page that cannot be touched: reading or writing one element too far ends the
/// test. One buffer serves many texts in turn.
template <class T>
class GuardedBuffer {
public:
    explicit GuardedBuffer(std::size_t capacity) {
        const auto page = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
        m_usable = (capacity * sizeof(T) + page - 1) / page * page;
        m_size = m_usable + page;
        void* memory = ::mmap(nullptr, m_size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory == MAP_FAILED)
            std::abort();
        m_memory = static_cast<char*>(memory);
        if (::mprotect(m_memory + m_usable, page, PROT_NONE) != 0)
            std::abort();
    }
    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;
    ~GuardedBuffer() { ::munmap(m_memory, m_size); }

    /// The last `count` elements before the guard.
    T* last(std::size_t count) {
        if (count * sizeof(T) > m_usable)
            std::abort();
        return reinterpret_cast<T*>(m_memory + m_usable) - count;
    }

    /// A copy of `count` elements that ends at the guard.
    const T* place(const T* data, std::size_t count) {
        T* copy = last(count);
        if (count != 0)
            std::memcpy(copy, data, count * sizeof(T));
        return copy;
    }

private:
    char* m_memory = nullptr;
    std::size_t m_usable = 0;
    std::size_t m_size = 0;
};

} // namespace reference
