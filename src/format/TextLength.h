#pragma once

#include "base/NeonMask.h"
#include "platform/PageReads.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cwchar>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tq::detail {

#if defined(__SSE2__)

/// Characters that textLength looks at together, so that there is no branch on short lengths, which cannot be
/// predicted.
inline constexpr std::size_t kWindow = 32;

/// Which of the characters from `text` on are 0, the first one in the lowest bit. Reads beyond the end of the text.
inline std::uint32_t zerosInWindow(const wchar_t* text) {
    const auto* const vectors = reinterpret_cast<const __m128i*>(text);
    const __m128i zero = _mm_setzero_si128();
    const auto zeros = [=](int i) { return _mm_cmpeq_epi32(_mm_loadu_si128(vectors + i), zero); };
    const auto sixteen = [=](int i) {
        const __m128i lower = _mm_packs_epi32(zeros(i), zeros(i + 1));
        const __m128i upper = _mm_packs_epi32(zeros(i + 2), zeros(i + 3));
        return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(lower, upper)));
    };
    return sixteen(0) | sixteen(4) << 16;
}

inline constexpr int kMaskBits = 1; ///< For each character.

#elif defined(__aarch64__)

inline constexpr std::size_t kWindow = 16;

inline std::uint64_t zerosInWindow(const wchar_t* text) {
    const auto zeros = [text](int first) {
        const uint8x16_t four = vld1q_u8(reinterpret_cast<const std::uint8_t*>(text + first));
        return vceqzq_u32(vreinterpretq_u32_u8(four));
    };
    const uint16x8_t lower = vmovn_high_u32(vmovn_u32(zeros(0)), zeros(4));
    const uint16x8_t upper = vmovn_high_u32(vmovn_u32(zeros(8)), zeros(12));
    return neonMask(vmovn_high_u16(vmovn_u16(lower), upper));
}

inline constexpr int kMaskBits = 4;

#endif

/// std::wcslen, faster for short texts.
inline std::size_t textLength(const wchar_t* text) {
#if defined(__SSE2__) || defined(__aarch64__)
    if (platform::mayReadBehind(text, kWindow * sizeof(wchar_t))) [[likely]] {
        if (const auto zeros = zerosInWindow(text); zeros != 0) [[likely]]
            return static_cast<std::size_t>(std::countr_zero(zeros) / kMaskBits);
    }
#endif
    return std::wcslen(text);
}

} // namespace tq::detail
