#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#if defined(__x86_64__)
#include <immintrin.h>

// What the AVX2 kernels of both kinds of narrow text share. The library is built for any x86-64 processor; the
// functions marked for AVX2 alone are for those that have it.

namespace tq::detail {

inline constexpr std::size_t kAvx2Step = 32;                // Bytes in a register; a step takes so many characters.
inline constexpr std::size_t kHalfAvx2Step = kAvx2Step / 2; // What instructions that know halves only work on.
inline constexpr std::size_t kAvx2Lanes = 8;                // Wide characters in a register.
// Long texts come from beyond the nearest caches. The processor fetches no further ahead than the page ends by itself;
// being asked to, it may go beyond the text: that reads nothing and cannot fail.
inline constexpr std::size_t kReadAhead = 512;

inline std::size_t distance(const char* from, const char* to) {
    return static_cast<std::size_t>(to - from);
}

__attribute__((target("avx2"))) inline void widenStep(const char* src, wchar_t* out) {
    for (std::size_t i = 0; i < kAvx2Step; i += kAvx2Lanes) {
        const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + i));
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), _mm256_cvtepu8_epi32(eight));
    }
}

inline bool isOnBoundary(const wchar_t* src) {
    return reinterpret_cast<std::uintptr_t>(src) % kAvx2Step == 0;
}

__attribute__((target("avx2"))) inline bool holdsZero(__m256i characters) {
    return _mm256_movemask_epi8(_mm256_cmpeq_epi32(characters, _mm256_setzero_si256())) != 0;
}

__attribute__((target("avx2"))) inline std::uint32_t notPositive(__m256i bytes) {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpgt_epi8(_mm256_set1_epi8(1), bytes)));
}

/// Thirty-two characters as bytes. Packing saturates in two steps: a character above ASCII becomes a byte above 127,
/// which as a signed number is negative, and a negative character becomes 0. So the positive bytes are those of ASCII
/// characters, and none of them is the 0 that ends a text.
__attribute__((target("avx2"))) inline __m256i packed(__m256i first, __m256i second, __m256i third, __m256i fourth) {
    const __m256i bytes = _mm256_packus_epi16(_mm256_packs_epi32(first, second), _mm256_packs_epi32(third, fourth));
    // Packing works in the halves of the registers; this puts the quarters back in their order.
    return _mm256_permutevar8x32_epi32(bytes, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7));
}

/// Where wide text is converted from and to. Form says what becomes of a character: sizeOf() and step().
template <class Form>
struct WideCursor {
    const wchar_t* src;
    std::size_t left; // Characters, at most.
    char* out;
    std::size_t room;

    void advance(std::size_t taken, std::size_t written) {
        src += taken;
        left -= taken;
        out += written;
        room -= written;
    }
    /// One character. False where the text or the room ends.
    bool step() {
        if (left == 0 || *src == 0 || room < Form::sizeOf(*src))
            return false;
        const wchar_t* character = src;
        char* end = out;
        Form::step(character, end);
        advance(1, static_cast<std::size_t>(end - out));
        return true;
    }
};

} // namespace tq::detail

#endif
