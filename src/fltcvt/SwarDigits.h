#pragma once

// Digits by SWAR, SIMD within a register: several characters of a number in parallel in one word or vector. Both
// directions, for words of any processor here and for vectors in Sse2Digits.h and NeonDigits.h; all kinds give the
// same.

#include "fltcvt/NeonDigits.h"
#include "fltcvt/Sse2Digits.h"
#include "platform/PageReads.h"

#include <bit>
#include <cassert>
#include <cstdint>
#include <cstring>

namespace tq::detail {

static_assert(std::endian::native == std::endian::little, "the first digit lies in the lowest byte");

/// Eight characters of a text, one in each byte, the first in the lowest one. A wide character above 255 becomes one
/// that is not a digit.
class EightCharacters {
public:
    static constexpr int kCount = 8;

    /// Whether eight characters may be read from `text` on although the text may end before.
    template <class Char>
    static bool mayStartAt(const Char* text) noexcept {
        return platform::mayReadBehind(text, kCount * sizeof(Char));
    }

    explicit EightCharacters(const char* text) noexcept { std::memcpy(&m_text, text, sizeof m_text); }

    explicit EightCharacters(const wchar_t* text) noexcept : m_text(narrowed(text)) {}

    bool areDigits() const noexcept { return nonDigits() == 0; }
    /// The number of digits at the start where not all are digits.
    int digitCount() const noexcept {
        assert(!areDigits());
        return std::countr_zero(nonDigits()) / 8;
    }
    /// The value of the digits where all are digits.
    std::uint64_t value() const noexcept {
        assert(areDigits());
        return valueOf(m_text ^ kZeros);
    }
    /// The value of the first `count`, 0 to 7, which are digits.
    std::uint64_t value(int count) const noexcept {
        assert(count >= 0 && count < kCount);
        return valueOf((m_text ^ kZeros) << 8 << (56 - 8 * count));
    }

private:
    static constexpr std::uint64_t kZeros = 0x3030303030303030;
    static constexpr std::uint64_t kHighBits = 0x8080808080808080;

    // The highest bit of a byte is set where it is no digit. That holds up to the first such byte; a carry out of it
    // may spoil those after it.
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
#if defined(__SSE2__) || defined(__aarch64__)
        return eightNarrowed(text);
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

// The sixteen decimal digits of a value below 10^16, zeros before them included, one in each byte. They are found by
// three divisions, each in all parts of the register at once, by multiplication with a reciprocal that is exact for
// parts of this size.

/// For any processor.
class SixteenDigitsInWords {
public:
    explicit SixteenDigitsInWords(std::uint64_t value) noexcept
        : SixteenDigitsInWords(static_cast<std::uint32_t>(value / kLimit), static_cast<std::uint32_t>(value % kLimit)) {
        assert(value / kLimit < kLimit);
    }
    /// The digits of two values below 10^8.
    SixteenDigitsInWords(std::uint32_t upper, std::uint32_t lower) noexcept
        : m_upper(digitsOf(upper)), m_lower(digitsOf(lower)) {
        assert(upper < kLimit && lower < kLimit);
    }

    /// Writes them as characters.
    void store(char* out) const noexcept {
        const std::uint64_t words[] = {upperText(), lowerText()};
        std::memcpy(out, words, sizeof words);
    }
    /// The first eight as characters, and the other eight.
    std::uint64_t upperText() const noexcept { return m_upper | kZeros; }
    std::uint64_t lowerText() const noexcept { return m_lower | kZeros; }
    /// How many there are up to the last that is not 0.
    int significant() const noexcept {
        return m_lower != 0 ? 16 - std::countl_zero(m_lower) / 8 : 8 - std::countl_zero(m_upper) / 8;
    }

private:
    static constexpr std::uint32_t kLimit = 100000000;
    static constexpr std::uint64_t kZeros = 0x3030303030303030U;

    static std::uint64_t digitsOf(std::uint32_t value) noexcept {
        const std::uint32_t upper = value / 10000;
        const std::uint64_t fours = upper | static_cast<std::uint64_t>(value - upper * 10000) << 32;
        const std::uint64_t hundreds = (fours * 10486 >> 20) & 0x0000007F0000007FU;
        const std::uint64_t twos = (fours << 16) - hundreds * ((100U << 16) - 1);
        const std::uint64_t tens = (twos * 103 >> 10) & 0x000F000F000F000FU;
        return (twos << 8) - tens * ((10U << 8) - 1);
    }

    std::uint64_t m_upper, m_lower;
};

#if defined(__SSE2__)
using SixteenDigits = SixteenDigitsInSse2;
#elif defined(__aarch64__)
using SixteenDigits = SixteenDigitsInNeon;
#else
using SixteenDigits = SixteenDigitsInWords;
#endif

} // namespace tq::detail
