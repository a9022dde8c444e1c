#include "codepage/AsciiRun.h"

#include "platform/Processor.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace tq::detail {

#if defined(__x86_64__)

namespace {

constexpr std::size_t kStep = 32;

// The library is built for any x86-64 processor; these two functions alone are for those with AVX2.

__attribute__((target("avx2"))) std::size_t widenWithAvx2(const char* src, std::size_t count, wchar_t* out) noexcept {
    const __m256i backslash = _mm256_set1_epi8('\\');
    std::size_t done = 0;
    for (; count - done >= kStep; done += kStep) {
        const __m256i bytes = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(src + done));
        if (_mm256_movemask_epi8(_mm256_cmpeq_epi8(bytes, backslash)) != 0)
            break;
        for (std::size_t i = 0; i < kStep; i += 8) {
            const __m128i eight = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(src + done + i));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + done + i), _mm256_cvtepu8_epi32(eight));
        }
    }
    return done;
}

// Packed with saturation in two steps, a character above ASCII becomes a byte above it and a negative one becomes 0.
__attribute__((target("avx2"))) std::size_t narrowWithAvx2(const wchar_t* src, std::size_t count, char* out) noexcept {
    const __m256i zero = _mm256_setzero_si256();
    // Packing works in the halves of the registers; this puts the quarters back in their order.
    const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    std::size_t done = 0;
    for (; count - done >= kStep; done += kStep) {
        const auto* from = reinterpret_cast<const __m256i*>(src + done);
        const __m256i low = _mm256_packs_epi32(_mm256_loadu_si256(from), _mm256_loadu_si256(from + 1));
        const __m256i high = _mm256_packs_epi32(_mm256_loadu_si256(from + 2), _mm256_loadu_si256(from + 3));
        const __m256i bytes = _mm256_packus_epi16(low, high);
        if (_mm256_movemask_epi8(_mm256_or_si256(bytes, _mm256_cmpeq_epi8(bytes, zero))) != 0)
            break;
        _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + done), _mm256_permutevar8x32_epi32(bytes, order));
    }
    return done;
}

} // namespace

std::size_t widenPlainRun(const char* src, std::size_t count, wchar_t* out) noexcept {
    return platform::hasAvx2() ? widenWithAvx2(src, count, out) : 0;
}

std::size_t narrowAsciiRun(const wchar_t* src, std::size_t count, char* out) noexcept {
    return platform::hasAvx2() ? narrowWithAvx2(src, count, out) : 0;
}

#else

std::size_t widenPlainRun(const char*, std::size_t, wchar_t*) noexcept {
    return 0;
}

std::size_t narrowAsciiRun(const wchar_t*, std::size_t, char*) noexcept {
    return 0;
}

#endif

} // namespace tq::detail
