#pragma once

#include <cstdint>

#if defined(__aarch64__)
#include <arm_neon.h>

namespace tq::detail {

/// Which of sixteen bytes have their highest bit set: bit 4i + 3 stands for byte i. NEON has no instruction that
/// gathers single bits; halving the register is the shortest way to a word.
inline std::uint64_t neonMask(uint8x16_t bytes) {
    const uint8x16_t all = vcltzq_s8(vreinterpretq_s8_u8(bytes));
    const uint8x8_t halved = vshrn_n_u16(vreinterpretq_u16_u8(all), 4);
    return vget_lane_u64(vreinterpret_u64_u8(halved), 0) & 0x8888888888888888;
}

} // namespace tq::detail

#endif
