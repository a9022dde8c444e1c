#include "platform/SystemHeap.h"

#include <malloc.h>

std::size_t tq::platform::usableSize(void* block) noexcept {
    return ::malloc_usable_size(block);
}
