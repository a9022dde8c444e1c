// A program whose static objects allocate and convert numbers before the heap and the allocator of digits are built and
// after they are gone. Ends with 0 when that works. With an argument it misuses a block in the way that is named there,
// for a memory checker to report; without one there is nothing to report.

#include "platform/StaticInit.h"

#include <TqOsBase/fltcvt/StrToD.h>
#include <TqOsBase/fltcvt/TqGdImpl.h>
#include <TqOsBase/memory/Allocation.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void require(bool holds, const char* what) {
    if (!holds) {
        std::fprintf(stderr, "failed: %s\n", what);
        std::_Exit(1);
    }
}

void convert() {
    int point = 0, sign = 0;
    char* const text = TqGdImpl::dtoa(5e-324, 2, 2000, &point, &sign, nullptr);
    const std::string digits = text;
    TqGdImpl::freedtoa(text);
    require(point == -323 && digits.size() == 751 && digits.starts_with("49406564584124654417"), "the smallest double");
    const std::string aboveTheMiddle = "9007199254740993." + std::string(900, '0') + "1";
    require(tqStrToD(aboveTheMiddle.c_str(), nullptr) == 9007199254740994, "a number of many digits");
}

// Holds blocks of every kind from its construction to its destruction.
class Holder {
public:
    explicit Holder(bool outlivesAll) : m_outlivesAll(outlivesAll) {
        for (std::size_t i = 0; i < kCount; ++i) {
            m_blocks[i] = static_cast<char*>(i % 9 == 8 ? tqAllocPageHeap(size(i)) : tqMalloc(size(i)));
            std::memset(m_blocks[i], static_cast<int>(i), size(i));
        }
        convert();
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

    ~Holder() {
        require((G_Pow5Data == nullptr) == m_outlivesAll, "the cache of powers is there, or gone");
        require((tqFCvtAllocator()->m_cursor == nullptr) == m_outlivesAll, "and so is the cursor");
        convert();
        m_blocks[1] = static_cast<char*>(tqRealloc(m_blocks[1], 4000));
        for (std::size_t k = 0; k < kCount; ++k) {
            const std::size_t i = k * 7 % kCount; // out of order, so that there are chains
            const auto isIntact = [i](char c) { return c == static_cast<char>(i); };
            require(std::all_of(m_blocks[i], m_blocks[i] + size(i), isIntact), "contents at the end");
            require(tqMsize(m_blocks[i]) >= size(i), "size at the end");
            tqFree(m_blocks[i]);
        }
        void* const fresh = std::memset(tqMalloc(9), 1, 9); // 16 bytes from a pool, from no one else
        require((tqMsize(fresh) == 16) != m_outlivesAll, m_outlivesAll ? "the heap is gone" : "the heap is there");
        tqFree(fresh);
        void* const unit = tqAllocPage();
        require(unit != nullptr, "a page unit at the end");
        tqFreePage(unit);
        std::printf(m_outlivesAll ? "after the heap\n" : "before the end of the heap\n");
        std::fflush(stdout);
    }

private:
    static constexpr std::size_t kCount = 4000;

    static std::size_t size(std::size_t i) {
        return i % 9 == 8 ? 4096 * (1 + i % 5) : i < 1000 ? 1 + i * 7 % 600 : i < 2000 ? 2048 : 4096;
    }

    bool m_outlivesAll;
    char* m_blocks[kCount];
};

// The memory of a block that is no one's.
char* freed(std::size_t size) {
    char* const block = static_cast<char*>(tqMalloc(size));
    tqFree(block);
    return block;
}

volatile char g_sink;

[[noreturn]] void misuse(const std::string& way) {
    void* const first = tqMalloc(48);
    char* const last = static_cast<char*>(tqMalloc(48)); // keeps its page in the pool, which has a chain then
    tqFree(first);
    if (way == "read")
        g_sink = *freed(40);
    else if (way == "write")
        freed(48)[47] = 1;
    else if (way == "overrun")
        last[48] = 1; // into a block that was never handed out
    else if (way == "unit")
        g_sink = static_cast<char*>(tqAllocPageHeap(8192))[8192];
    else
        tqFree(freed(48)); // twice
    std::_Exit(0);         // what is damaged serves nobody any more
}

// Before the library in the link: of the first priority, its object is constructed first and destroyed last.
TQ_INIT_FIRST Holder g_outer(true);

} // namespace

int main(int argc, char** argv) {
    static const Holder inner(false);
    for (int round = 0; round < 3; ++round) // what goes back is taken again
        const Holder other(false);
    if (argc > 1)
        misuse(argv[1]);
    void* const block = tqMalloc(9);
    require(tqMsize(block) == 16, "the heap serves main");
    require(G_Pow5Data != nullptr && G_Pow5Data->words[0] == 625, "the cache of powers in main");
    tqFree(block);
}
