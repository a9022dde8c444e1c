#include "platform/VirtualMemoryFlags.h"

#include <sys/mman.h>

// Older C libraries do not name the flag; kernels that do not know it take the address as a hint.
int tq::platform::noReplaceFlag() noexcept {
#if defined(MAP_FIXED_NOREPLACE)
    return MAP_FIXED_NOREPLACE;
#else
    return 0x100000;
#endif
}

int tq::platform::giveBackAdvice() noexcept {
    return MADV_DONTNEED;
}
