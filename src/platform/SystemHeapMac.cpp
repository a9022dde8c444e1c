#include "platform/SystemHeap.h"

#include <malloc/malloc.h>

std::size_t tq::platform::usableSize(void* block) noexcept {
    return ::malloc_size(block);
}
