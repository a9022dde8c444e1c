#include "platform/VirtualMemoryFlags.h"

#include <sys/mman.h>

int tq::platform::noReplaceFlag() noexcept {
    return 0;
}

int tq::platform::giveBackAdvice() noexcept {
    return MADV_FREE;
}

bool tq::platform::giveBackAtOnce(std::span<const PageRun> /*runs*/) noexcept {
    return false;
}
