#pragma once

#include "codepage/Escapes.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

// A block of neighbouring characters in registers. Both kinds answer the same questions; a set of positions in the
// block is a mask that only firstOf and withoutFirst look into.

namespace tq::detail {

/// Eight characters, for any processor.
struct WordBlock {
    static constexpr std::size_t kSize = 8;
    using Mask = std::uint64_t; // The highest bit of byte i stands for position i.

    static std::size_t firstOf(Mask mask) { return static_cast<std::size_t>(std::countr_zero(mask)) / 8; }
    static Mask withoutFirst(Mask mask) { return mask & (mask - 1); }

    struct Narrow {
        explicit Narrow(const char* p) {
            for (std::size_t i = 0; i < kSize; ++i)
                m_bytes |= std::uint64_t{static_cast<unsigned char>(p[i])} << (8 * i);
        }

        Mask backslashes() const {
            const std::uint64_t difference = m_bytes ^ (kOnes * '\\');
            // Exact for every byte: the sum of seven bits never carries into the next one.
            return ~(((difference & ~kHighs) + ~kHighs) | difference) & kHighs;
        }
        Mask aboveAscii() const { return m_bytes & kHighs; }
        void widenTo(wchar_t* out) const {
            for (std::size_t i = 0; i < kSize; ++i)
                out[i] = static_cast<wchar_t>((m_bytes >> (8 * i)) & 0xFF);
        }

    private:
        static constexpr std::uint64_t kOnes = 0x0101010101010101;
        static constexpr std::uint64_t kHighs = 0x8080808080808080;

        std::uint64_t m_bytes = 0;
    };

    struct Wide {
        explicit Wide(const wchar_t* p) {
            for (std::size_t i = 0; i < kSize; ++i) {
                m_bytes |= (static_cast<std::uint64_t>(p[i]) & 0xFF) << (8 * i);
                m_aboveAscii |= std::uint64_t{p[i] > kHighestAscii} << (8 * i + 7);
            }
        }

        Mask aboveAscii() const { return m_aboveAscii; }
        void narrowTo(char* out) const {
            for (std::size_t i = 0; i < kSize; ++i)
                out[i] = static_cast<char>(m_bytes >> (8 * i));
        }

    private:
        std::uint64_t m_bytes = 0;
        Mask m_aboveAscii = 0;
    };
};

#if defined(__SSE2__)

/// Sixteen characters in SSE2 registers.
struct VectorBlock {
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

    struct Wide {
        explicit Wide(const wchar_t* p) {
            const auto* from = reinterpret_cast<const __m128i*>(p);
            for (int i = 0; i < 4; ++i)
                m_quads[i] = _mm_loadu_si128(from + i);
        }

        Mask aboveAscii() const {
            const __m128i highest = _mm_set1_epi32(kHighestAscii);
            const __m128i low =
                _mm_packs_epi32(_mm_cmpgt_epi32(m_quads[0], highest), _mm_cmpgt_epi32(m_quads[1], highest));
            const __m128i high =
                _mm_packs_epi32(_mm_cmpgt_epi32(m_quads[2], highest), _mm_cmpgt_epi32(m_quads[3], highest));
            return static_cast<Mask>(_mm_movemask_epi8(_mm_packs_epi16(low, high)));
        }
        void narrowTo(char* out) const {
            const __m128i byte = _mm_set1_epi32(0xFF);
            const __m128i low = _mm_packs_epi32(_mm_and_si128(m_quads[0], byte), _mm_and_si128(m_quads[1], byte));
            const __m128i high = _mm_packs_epi32(_mm_and_si128(m_quads[2], byte), _mm_and_si128(m_quads[3], byte));
            _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm_packus_epi16(low, high));
        }

    private:
        __m128i m_quads[4];
    };
};

static_assert(sizeof(wchar_t) == 4);

#else

using VectorBlock = WordBlock;

#endif

} // namespace tq::detail
