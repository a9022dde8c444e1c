#include "platform/VirtualMemory.h"

#include <sys/mman.h>

namespace tq::platform {

// A fixed mapping would replace what is there. Without that flag the address is a hint, which the system follows when
// the range is free.
bool reserveAt(std::uintptr_t address, std::size_t size) noexcept {
    void* const wanted = reinterpret_cast<void*>(address);
    void* const mapping = ::mmap(wanted, size, PROT_NONE, MAP_PRIVATE | MAP_ANON | MAP_NORESERVE, -1, 0);
    if (mapping == MAP_FAILED)
        return false;
    if (mapping != wanted) {
        ::munmap(mapping, size);
        return false;
    }
    return true;
}

void giveBack(void* address, std::size_t size) noexcept {
    ::madvise(address, size, MADV_FREE);
}

} // namespace tq::platform
