#include "platform/Processor.h"

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace tq::platform {

#if defined(__x86_64__)

namespace {

bool detectAvx2() noexcept {
    constexpr unsigned kSystemSavesRegisters = 1U << 27;
    constexpr unsigned kAvx = 1U << 28;
    constexpr unsigned kAvx2 = 1U << 5;
    constexpr unsigned kVectorState = 6; // what the system saves: SSE and AVX registers
    unsigned a = 0;
    unsigned b = 0;
    unsigned c = 0;
    unsigned d = 0;
    if (__get_cpuid(1, &a, &b, &c, &d) == 0 || (c & kSystemSavesRegisters) == 0 || (c & kAvx) == 0)
        return false;
    unsigned saved = 0;
    unsigned high = 0;
    __asm__("xgetbv" : "=a"(saved), "=d"(high) : "c"(0));
    return (saved & kVectorState) == kVectorState && __get_cpuid_count(7, 0, &a, &b, &c, &d) != 0 && (b & kAvx2) != 0;
}

} // namespace

bool hasAvx2() noexcept {
    static const bool has = detectAvx2();
    return has;
}

#else

bool hasAvx2() noexcept {
    return false;
}

#endif

} // namespace tq::platform
