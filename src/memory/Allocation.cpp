#include <TqOsBase/memory/Allocation.h>

#include <cstdlib>

void* tqMalloc(std::size_t size) {
    return std::malloc(size ? size : 1);
}

void tqFree(void* block) {
    std::free(block);
}
