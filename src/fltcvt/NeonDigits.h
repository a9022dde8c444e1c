#pragma once

#include "base/NeonMask.h"

#include <bit>
#include <cassert>
#include <cstdint>

#if defined(__aarch64__)

namespace tq::detail {

/// Eight wide characters as bytes, the first in the lowest one; one above 255 becomes one that is not a digit.
inline std::uint64_t eightNarrowed(const wchar_t* text) noexcept {
    const auto four = [text](int first) {
        return vqmovn_s32(vreinterpretq_s32_u8(vld1q_u8(reinterpret_cast<const std::uint8_t*>(text + first))));
    };
    return vget_lane_u64(vreinterpret_u64_u8(vqmovun_s16(vcombine_s16(four(0), four(4)))), 0);
}

/// Sixteen decimal digits, as SixteenDigitsInWords gives them.
class SixteenDigitsInNeon {
public:
    explicit SixteenDigitsInNeon(std::uint64_t value) noexcept
        : SixteenDigitsInNeon(static_cast<std::uint32_t>(value / kLimit), static_cast<std::uint32_t>(value % kLimit)) {
        assert(value / kLimit < kLimit);
    }
    SixteenDigitsInNeon(std::uint32_t upper, std::uint32_t lower) noexcept {
        assert(upper < kLimit && lower < kLimit);
        const uint32x2_t eights = vcreate_u32(std::uint64_t{lower} << 32 | upper);
        const uint32x2_t thousands = vshrn_n_u64(vshrq_n_u64(vmull_n_u32(eights, 0xD1B71759), 32), 13);
        const uint32x2_t rest = vmls_n_u32(eights, thousands, 10000);
        const uint32x4_t fours = vcombine_u32(vzip1_u32(thousands, rest), vzip2_u32(thousands, rest));
        const uint32x4_t hundreds = vshrq_n_u32(vmulq_n_u32(fours, 5243), 19);
        const uint32x4_t below = vmlsq_n_u32(fours, hundreds, 100);
        const uint16x8_t twos = vreinterpretq_u16_u32(vsliq_n_u32(hundreds, below, 16));
        const uint16x8_t tens = vshrq_n_u16(vmulq_n_u16(twos, 103), 10);
        const uint16x8_t ones = vmlsq_n_u16(twos, tens, 10);
        m_digits = vreinterpretq_u8_u16(vsliq_n_u16(tens, ones, 8));
    }

    void store(char* out) const noexcept { vst1q_u8(reinterpret_cast<std::uint8_t*>(out), text()); }
    std::uint64_t upperText() const noexcept { return vgetq_lane_u64(vreinterpretq_u64_u8(text()), 0); }
    std::uint64_t lowerText() const noexcept { return vgetq_lane_u64(vreinterpretq_u64_u8(text()), 1); }
    int significant() const noexcept { return 16 - std::countl_zero(neonMask(vtstq_u8(m_digits, m_digits))) / 4; }

private:
    static constexpr std::uint32_t kLimit = 100000000;

    uint8x16_t text() const noexcept { return vorrq_u8(m_digits, vdupq_n_u8('0')); }

    uint8x16_t m_digits;
};

} // namespace tq::detail

#endif
