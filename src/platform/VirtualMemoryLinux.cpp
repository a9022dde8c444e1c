#include "platform/VirtualMemory.h"

#include <sys/mman.h>

namespace tq::platform {

namespace {

// Older C libraries do not name the flag; kernels that do not know it take the address as a hint.
#if defined(MAP_FIXED_NOREPLACE)
constexpr int kNoReplace = MAP_FIXED_NOREPLACE;
#else
constexpr int kNoReplace = 0x100000;
#endif

} // namespace

bool reserveAt(std::uintptr_t address, std::size_t size) noexcept {
    void* const wanted = reinterpret_cast<void*>(address);
    void* const mapping =
        ::mmap(wanted, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | kNoReplace, -1, 0);
    if (mapping == MAP_FAILED)
        return false;
    if (mapping != wanted) {
        ::munmap(mapping, size);
        return false;
    }
    return true;
}

void giveBack(void* address, std::size_t size) noexcept {
    ::madvise(address, size, MADV_DONTNEED);
}

} // namespace tq::platform
