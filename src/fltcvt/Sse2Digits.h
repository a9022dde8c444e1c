#pragma once

#include <bit>
#include <cassert>
#include <cstdint>

#if defined(__SSE2__)
#include <emmintrin.h>

namespace tq::detail {

/// Eight wide characters as bytes, the first in the lowest one; one above 255 becomes one that is not a digit.
inline std::uint64_t eightNarrowed(const wchar_t* text) noexcept {
    const auto* const vectors = reinterpret_cast<const __m128i*>(text);
    const __m128i words = _mm_packs_epi32(_mm_loadu_si128(vectors), _mm_loadu_si128(vectors + 1));
    return static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_packus_epi16(words, words)));
}

/// Sixteen decimal digits, as SixteenDigitsInWords gives them.
class SixteenDigitsInSse2 {
public:
    explicit SixteenDigitsInSse2(std::uint64_t value) noexcept
        : SixteenDigitsInSse2(static_cast<std::uint32_t>(value / kLimit), static_cast<std::uint32_t>(value % kLimit)) {
        assert(value / kLimit < kLimit);
    }
    SixteenDigitsInSse2(std::uint32_t upper, std::uint32_t lower) noexcept {
        assert(upper < kLimit && lower < kLimit);
        const __m128i eights = _mm_set_epi64x(lower, upper);
        const __m128i thousands = _mm_srli_epi64(_mm_mul_epu32(eights, _mm_set1_epi64x(0xD1B71759)), 45);
        const __m128i rest = _mm_sub_epi32(eights, _mm_mul_epu32(thousands, _mm_set1_epi64x(10000)));
        const __m128i fours = _mm_or_si128(thousands, _mm_slli_epi64(rest, 32));
        const __m128i hundreds = _mm_srli_epi16(_mm_mulhi_epu16(fours, _mm_set1_epi16(5243)), 3);
        const __m128i below = _mm_sub_epi16(fours, _mm_mullo_epi16(hundreds, _mm_set1_epi16(100)));
        const __m128i twos = _mm_or_si128(hundreds, _mm_slli_epi32(below, 16));
        const __m128i tens = _mm_mulhi_epu16(twos, _mm_set1_epi16(6554));
        const __m128i ones = _mm_sub_epi16(twos, _mm_mullo_epi16(tens, _mm_set1_epi16(10)));
        m_digits = _mm_or_si128(tens, _mm_slli_epi16(ones, 8));
    }

    void store(char* out) const noexcept { _mm_storeu_si128(reinterpret_cast<__m128i*>(out), text()); }
    std::uint64_t upperText() const noexcept { return static_cast<std::uint64_t>(_mm_cvtsi128_si64(text())); }
    std::uint64_t lowerText() const noexcept {
        return static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_unpackhi_epi64(text(), text())));
    }
    int significant() const noexcept {
        const auto nonZeros = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpgt_epi8(m_digits, _mm_setzero_si128())));
        return 31 - std::countl_zero(nonZeros << 1 | 1);
    }

private:
    static constexpr std::uint32_t kLimit = 100000000;

    __m128i text() const noexcept { return _mm_or_si128(m_digits, _mm_set1_epi8('0')); }

    __m128i m_digits;
};

} // namespace tq::detail

#endif
