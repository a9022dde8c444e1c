#pragma once

#include "codepage/CharacterSteps.h"
#include "codepage/TextBlocks.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>

namespace tq::detail {

/// Sixteen characters in SSE2 registers.
struct Sse2Block {
    static constexpr std::size_t kSize = 16;
    using Mask = std::uint32_t; // Bit i stands for position i.

    static std::size_t firstOf(Mask mask) { return static_cast<std::size_t>(std::countr_zero(mask)); }
    static Mask withoutFirst(Mask mask) { return mask & (mask - 1); }

    struct Narrow {
        explicit Narrow(const char* p) : m_bytes(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))) {}

        Mask backslashes() const {
            return static_cast<Mask>(_mm_movemask_epi8(_mm_cmpeq_epi8(m_bytes, _mm_set1_epi8('\\'))));
        }
        Mask aboveAscii() const { return static_cast<Mask>(_mm_movemask_epi8(m_bytes)); }
        void widenTo(wchar_t* out) const {
            const __m128i zero = _mm_setzero_si128();
            const __m128i low = _mm_unpacklo_epi8(m_bytes, zero);
            const __m128i high = _mm_unpackhi_epi8(m_bytes, zero);
            auto* to = reinterpret_cast<__m128i*>(out);
            _mm_storeu_si128(to, _mm_unpacklo_epi16(low, zero));
            _mm_storeu_si128(to + 1, _mm_unpackhi_epi16(low, zero));
            _mm_storeu_si128(to + 2, _mm_unpacklo_epi16(high, zero));
            _mm_storeu_si128(to + 3, _mm_unpackhi_epi16(high, zero));
        }

    private:
        __m128i m_bytes;
    };

    // Packed with saturation in two steps, a character above ASCII becomes a byte above it and a negative one becomes
    // 0, which the text itself does not hold.
    struct Wide {
        explicit Wide(const wchar_t* p) : m_characters(p) {
            const __m128i low = _mm_packs_epi32(quad(p), quad(p + 4));
            const __m128i high = _mm_packs_epi32(quad(p + 8), quad(p + 12));
            m_bytes = _mm_packus_epi16(low, high);
        }

        Mask notAscii() const {
            const __m128i negative = _mm_cmpeq_epi8(m_bytes, _mm_setzero_si128());
            return static_cast<Mask>(_mm_movemask_epi8(_mm_or_si128(m_bytes, negative)));
        }
        void narrowTo(char* out) const { _mm_storeu_si128(reinterpret_cast<__m128i*>(out), m_bytes); }
        char* toUtf8(char* out) const {
            for (const wchar_t* p = m_characters; p < m_characters + kSize;) {
                if (takesThreeBytes(quad(p))) {
                    writeThreeBytes(quad(p), out);
                    p += 4;
                    out += 12;
                } else {
                    for (int i = 0; i < 4; ++i)
                        stepWideToUtf8(p, out);
                }
            }
            return out;
        }

    private:
        static bool takesThreeBytes(__m128i characters) {
            const __m128i above = _mm_cmpgt_epi32(characters, _mm_set1_epi32(0x7FF));
            const __m128i below = _mm_cmplt_epi32(characters, _mm_set1_epi32(0x10000));
            return _mm_movemask_epi8(_mm_and_si128(above, below)) == 0xFFFF;
        }

        // Four characters of three bytes each: first every one in its own four bytes, then two of them together in the
        // six lowest of eight bytes.
        static void writeThreeBytes(__m128i characters, char* out) {
            const __m128i first = _mm_srli_epi32(characters, 12);
            const __m128i second = _mm_and_si128(_mm_slli_epi32(characters, 2), _mm_set1_epi32(0x3F00));
            const __m128i third = _mm_and_si128(_mm_slli_epi32(characters, 16), _mm_set1_epi32(0x3F0000));
            const __m128i marks = _mm_set1_epi32(0x8080E0);
            const __m128i apart = _mm_or_si128(_mm_or_si128(first, second), _mm_or_si128(third, marks));
            const __m128i even = _mm_and_si128(apart, _mm_set1_epi64x(0xFFFFFF));
            const __m128i odd = _mm_and_si128(_mm_srli_epi64(apart, 8), _mm_set1_epi64x(0xFFFFFF000000));
            const __m128i pairs = _mm_or_si128(even, odd);
            _mm_storel_epi64(reinterpret_cast<__m128i*>(out), pairs);
            const int fifthToEighth = _mm_cvtsi128_si32(_mm_unpackhi_epi64(pairs, pairs));
            const auto lastTwo = static_cast<std::uint16_t>(_mm_extract_epi16(pairs, 6));
            std::memcpy(out + 6, &fifthToEighth, 4);
            std::memcpy(out + 10, &lastTwo, 2);
        }

        const wchar_t* m_characters;
        __m128i m_bytes;
    };

    static std::uint32_t countAbove(const wchar_t* p, std::size_t count, std::int32_t limit) {
        const __m128i limits = _mm_set1_epi32(limit);
        __m128i first = _mm_setzero_si128(); // Two chains of additions, each lane counting down.
        __m128i second = first;
        std::size_t i = 0;
        for (; i + 8 <= count; i += 8) {
            first = _mm_add_epi32(first, _mm_cmpgt_epi32(quad(p + i), limits));
            second = _mm_add_epi32(second, _mm_cmpgt_epi32(quad(p + i + 4), limits));
        }
        std::int32_t lanes[4];
        _mm_storeu_si128(reinterpret_cast<__m128i*>(lanes), _mm_add_epi32(first, second));
        const auto above = static_cast<std::uint32_t>(-(lanes[0] + lanes[1] + lanes[2] + lanes[3]));
        return above + WordBlock::countAbove(p + i, count - i, limit);
    }

private:
    static __m128i quad(const wchar_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
};

static_assert(sizeof(wchar_t) == 4);

} // namespace tq::detail

#endif
