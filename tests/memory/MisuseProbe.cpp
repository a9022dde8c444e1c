// Misuses a block in the way its argument names, for a memory checker to report. Without an argument it uses blocks as
// it should, through every state of a page, and nothing is to be reported.

#include <TqOsBase/memory/Allocation.h>

#include <cstdio>
#include <cstring>
#include <vector>

namespace {

volatile char g_sink;

char* allocate(std::size_t size) {
    return static_cast<char*>(tqMalloc(size));
}

// The memory of a block that is no one's.
char* freed(std::size_t size) {
    char* const block = allocate(size);
    tqFree(block);
    return block;
}

void useProperly() {
    for (const std::size_t size : {8U, 256U, 2048U, 4096U, 8192U, 8U, 4096U}) {
        std::vector<char*> blocks;
        for (int i = 0; i < 600; ++i) {
            blocks.push_back(static_cast<char*>(size == 8192 ? tqAllocPageHeap(size) : tqMalloc(size)));
            std::memset(blocks.back(), i, tqMsize(blocks.back()));
        }
        for (std::size_t i = 0; i < blocks.size(); ++i) // out of order, so that there are chains
            tqFree(tqRealloc(blocks[i * 7 % blocks.size()], 3));
    }
}

} // namespace

int main(int argc, char** argv) {
    const char* const misuse = argc > 1 ? argv[1] : "none";
    const auto is = [misuse](const char* name) { return std::strcmp(misuse, name) == 0; };
    char* const keptAlive = allocate(48); // keeps its page in the pool
    if (is("none"))
        useProperly();
    else if (is("read"))
        g_sink = *freed(40);
    else if (is("write"))
        freed(48)[47] = 1;
    else if (is("overrun"))
        allocate(48)[48] = 1; // into a block that was never handed out
    else if (is("unit"))
        g_sink = static_cast<char*>(tqAllocPageHeap(8192))[8192];
    else
        tqFree(freed(48)); // twice
    tqFree(keptAlive);
    std::puts("done");
}
