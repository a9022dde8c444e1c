#include "HeapFixture.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <random>
#include <vector>

namespace {

using namespace heap_test;

struct Live {
    unsigned char* block;
    std::size_t size;
    unsigned char mark;
};

class RandomUse : public HeapTest {
protected:
    std::size_t below(std::size_t n) { return m_random() % n; }

    // Mostly small, with the edges of the large pools, what lies between them, and foreign blocks.
    std::size_t someSize() {
        constexpr std::size_t kLarge[] = {512, 1024, 2048, 4096, 4096, 4096};
        const std::size_t kind = below(8);
        return kind == 0 ? kLarge[below(std::size(kLarge))] : 1 + below(kind == 1 ? 6000 : 256);
    }

    void add() {
        const bool isUnit = below(40) == 0;
        const std::size_t size = isUnit ? (1 + below(below(6) == 0 ? 256 : 8)) * kPageBytes : someSize();
        void* const block = isUnit ? tqAllocPageHeap(size) : below(30) == 0 ? std::malloc(size) : tqMalloc(size);
        ASSERT_NE(block, nullptr);
        m_live.push_back({static_cast<unsigned char*>(block), size, static_cast<unsigned char>(below(256))});
        fill(m_live.back());
    }

    void resize(Live& live) {
        verify(live);
        const std::size_t size = someSize();
        auto* const moved = static_cast<unsigned char*>(tqRealloc(live.block, size));
        ASSERT_NE(moved, nullptr);
        live = {moved, std::min(size, live.size), live.mark};
        verify(live);
        live.size = size;
        fill(live);
    }

    void remove(std::size_t index) {
        verify(m_live[index]);
        tqFree(m_live[index].block);
        m_live[index] = m_live.back();
        m_live.pop_back();
    }

    // Both ends of large blocks; their middle is touched by no one else either.
    static void fill(const Live& live) {
        const std::size_t edge = std::min<std::size_t>(live.size, 256);
        std::memset(live.block, live.mark, edge);
        std::memset(live.block + live.size - edge, live.mark, edge);
    }

    static void verify(const Live& live) {
        const std::size_t edge = std::min<std::size_t>(live.size, 256);
        const auto isMark = [&live](unsigned char c) { return c == live.mark; };
        ASSERT_TRUE(std::all_of(live.block, live.block + edge, isMark));
        ASSERT_GE(tqMsize(live.block), live.size);
    }

    std::mt19937 m_random{20240507};
    std::vector<Live> m_live;
};

TEST_F(RandomUse, BlocksKeepTheirContentsAndTheHeapItsOrder) {
    constexpr int kOperations = 150000;
    std::size_t target = 2000;
    for (int i = 0; i < kOperations; ++i) {
        if (i % 10000 == 0) // grow and shrink in turns, so that segments come and go
            target = i % 20000 == 0 ? 6000 : 50;
        if (below(10) == 0 && !m_live.empty())
            resize(m_live[below(m_live.size())]);
        else if (m_live.size() < target || m_live.empty())
            add();
        else if (m_live.size() > target + 100 || below(2) == 0)
            remove(below(m_live.size()));
        else
            add();
        if (HasFatalFailure())
            return;
        if (i % 2500 == 0) {
            ASSERT_EQ(tq::detail::checkHeap(g_tqGlobalHeap), "") << "operation " << i;
        }
    }
    while (!m_live.empty())
        remove(below(m_live.size()));
}

} // namespace
