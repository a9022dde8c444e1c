// A program whose static objects use the heap before it is built and after it is gone. Ends with 0 when that works.

#include "platform/StaticInit.h"

#include <TqOsBase/memory/Allocation.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "failed: %s\n", what);
        std::_Exit(1);
    }
}

// Holds blocks of every kind from its construction to its destruction.
class Holder {
public:
    explicit Holder(bool outlivesHeap) : m_outlivesHeap(outlivesHeap) {
        for (std::size_t i = 0; i < kCount; ++i) {
            m_blocks[i] = static_cast<char*>(i % 9 == 8 ? tqAllocPageHeap(size(i)) : tqMalloc(size(i)));
            std::memset(m_blocks[i], static_cast<int>(i), size(i));
        }
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    ~Holder() {
        for (std::size_t i = 0; i < kCount; ++i) {
            require(isIntact(m_blocks[i], i, size(i)), "contents at the end");
            require(tqMsize(m_blocks[i]) >= size(i), "size at the end");
        }
        auto* const moved = static_cast<char*>(tqRealloc(m_blocks[1], 4000));
        require(isIntact(moved, 1, size(1)), "reallocation at the end");
        m_blocks[1] = moved;
        for (std::size_t i = 0; i < kCount; ++i)
            tqFree(m_blocks[i]);
        char* const fresh = static_cast<char*>(tqMalloc(9)); // 16 bytes from a pool, from no one else
        require((tqMsize(fresh) == 16) != m_outlivesHeap, m_outlivesHeap ? "the heap is gone" : "the heap is there");
        std::memset(fresh, 1, 9);
        tqFree(fresh);
        void* const unit = tqAllocPage();
        require(unit != nullptr, "a page unit at the end");
        tqFreePage(unit);
        std::printf(m_outlivesHeap ? "after the heap\n" : "before the heap\n");
        std::fflush(stdout);
    }

private:
    static constexpr std::size_t kCount = 1000;

    static std::size_t size(std::size_t i) { return i % 9 == 8 ? 4096 * (1 + i % 5) : 1 + i * 7 % 600; }

    static bool isIntact(const char* block, std::size_t i, std::size_t length) {
        for (std::size_t k = 0; k < length; ++k)
            if (block[k] != static_cast<char>(i))
                return false;
        return true;
    }

    bool m_outlivesHeap;
    char* m_blocks[kCount];
};

// This file comes before the library in the link, so among objects of the first priority its own is the first to be
// constructed and the last to be destroyed.
TQ_INIT_FIRST Holder g_outer(true);

} // namespace

int main() {
    static const Holder inner(false);
    void* const block = tqMalloc(9);
    require(tqMsize(block) == 16, "the heap serves main");
    tqFree(block);
}
