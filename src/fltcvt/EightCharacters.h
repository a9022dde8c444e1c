#pragma once

#include "platform/PageReads.h"

#include <bit>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace tq::detail {

/// Eight characters of a text, one a byte, the first in the lowest one. A wide character that no byte holds becomes one
/// that is not a digit.
class EightCharacters {
public:
    static constexpr int kCount = 8;

    /// Whether eight can be made of the memory from `text` on, even though the text ends before.
    template <class Char>
    static bool mayStartAt(const Char* text) noexcept {
        return platform::mayReadBehind(text, kCount * sizeof(Char));
    }

    explicit EightCharacters(const char* text) noexcept { std::memcpy(&m_text, text, sizeof m_text); }

    explicit EightCharacters(const wchar_t* text) noexcept : m_text(narrowed(text)) {}

    bool areDigits() const noexcept { return nonDigits() == 0; }
    /// The number of digits at the start; not all are digits.
    int digitCount() const noexcept { return std::countr_zero(nonDigits()) / 8; }
    /// The value of the digits when all are digits.
    std::uint64_t value() const noexcept { return valueOf(m_text ^ kZeros); }
    /// The value of the first `count`, 0 to 7.
    std::uint64_t value(int count) const noexcept { return valueOf((m_text ^ kZeros) << 8 << (56 - 8 * count)); }

private:
    static constexpr std::uint64_t kZeros = 0x3030303030303030;
    static constexpr std::uint64_t kHighBits = 0x8080808080808080;

    static_assert(std::endian::native == std::endian::little, "the first character lies in the lowest byte");

    // The highest bit of every byte up to the first that is not a digit says so; those behind it may be wrong.
    std::uint64_t nonDigits() const noexcept {
        constexpr std::uint64_t kToHighBit = 0x7676767676767676; // from 10
        const std::uint64_t digits = m_text ^ kZeros;
        return ((digits + kToHighBit) | digits) & kHighBits;
    }

    static std::uint64_t valueOf(std::uint64_t digits) noexcept {
        const std::uint64_t twos = (digits * (10 << 8 | 1) >> 8) & 0x00FF00FF00FF00FF;
        const std::uint64_t fours = (twos * (100 << 16 | 1) >> 16) & 0x0000FFFF0000FFFF;
        return fours * (std::uint64_t{10000} << 32 | 1) >> 32;
    }

    static std::uint64_t narrowed(const wchar_t* text) noexcept {
#if defined(__SSE2__)
        const auto* const vectors = reinterpret_cast<const __m128i*>(text);
        const __m128i words = _mm_packs_epi32(_mm_loadu_si128(vectors), _mm_loadu_si128(vectors + 1));
        return static_cast<std::uint64_t>(_mm_cvtsi128_si64(_mm_packus_epi16(words, words)));
#else
        std::uint64_t bytes = 0;
        for (int i = kCount; i-- > 0;)
            bytes =
                bytes << 8 | (static_cast<std::uint32_t>(text[i]) <= 0xFF ? static_cast<std::uint8_t>(text[i]) : 0xFF);
        return bytes;
#endif
    }

    std::uint64_t m_text;
};

} // namespace tq::detail
