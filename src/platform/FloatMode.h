#pragma once

#include <cstdint>

#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace tq::platform {

/// Whether the thread rounds doubles to nearest now, told by arithmetic: reading the processor's setting, as
/// DefaultFloatMode does, waits for all arithmetic before it.
inline bool roundsToNearest() noexcept {
    const volatile double atRunTime = 1; // The compiler must not calculate the sums.
    const double one = atRunTime;
    // By 3/4 and 1/4 of its last bit: in every other mode both sums go the same way.
    return one + 0x1.8p-53 > one + 0x1p-54;
}

/// While it lives, doubles are rounded to nearest and subnormals are kept, whatever the thread has set; then the
/// thread's settings come back. A compiler may move arithmetic past both ends: what they are for belongs in a function
/// with effects of its own that is not inlined. On processors other than x86-64 and arm64 nothing changes.
class DefaultFloatMode {
public:
    DefaultFloatMode() noexcept : m_control(readControl()) {
        if ((m_control & kModeBits) != 0) [[unlikely]]
            writeControl(m_control & ~kModeBits);
    }
    ~DefaultFloatMode() {
        if ((m_control & kModeBits) != 0) [[unlikely]]
            writeControl(m_control);
    }
    DefaultFloatMode(const DefaultFloatMode&) = delete;
    DefaultFloatMode& operator=(const DefaultFloatMode&) = delete;

private:
#if defined(__x86_64__)
    using Control = unsigned;
    // Flush to zero, rounding, and subnormals read as zero.
    static constexpr Control kModeBits = 0x8000 | 0x6000 | 0x0040;

    static Control readControl() noexcept {
        return _mm_getcsr();
    }
    static void writeControl(Control control) noexcept {
        _mm_setcsr(control);
    }
#elif defined(__aarch64__)
    using Control = std::uint64_t;
    // Flush to zero and rounding; inputs alone flushed to zero.
    static constexpr Control kModeBits = 0x01C00000 | 0x1;

    static Control readControl() noexcept {
        Control control = 0;
        __asm__ volatile("mrs %0, fpcr" : "=r"(control));
        return control;
    }
    static void writeControl(Control control) noexcept {
        __asm__ volatile("msr fpcr, %0" : : "r"(control) : "memory");
    }
#else
    using Control = unsigned;
    static constexpr Control kModeBits = 0;

    static Control readControl() noexcept {
        return 0;
    }
    static void writeControl(Control) noexcept {}
#endif

    Control m_control;
};

} // namespace tq::platform
