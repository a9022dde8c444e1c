#pragma once

#include "fltcvt/PowersOfTen.h"
#include "fltcvt/WideMath.h"

#include <bit>
#include <cstdint>
#include <cstring>

namespace tq::detail {

static_assert(std::endian::native == std::endian::little, "the first digit lies in the lowest byte");

/// Digits written at once: what a double needs at most to be read back.
inline constexpr int kMaxFastDigits = 17;
/// Makes eight digits characters.
inline constexpr std::uint64_t kAsciiZeros = 0x3030303030303030U;
inline constexpr std::uint32_t kEightDigitLimit = 100000000;

/// The eight digits of a value below 10^8, one a byte, the first in the lowest: three divisions, each in all parts of
/// the word at once, by multiplication with a reciprocal that is exact for parts of this size.
constexpr std::uint64_t eightDigits(std::uint32_t value) noexcept {
    const std::uint32_t upper = value / 10000;
    const std::uint64_t fours = upper | static_cast<std::uint64_t>(value - upper * 10000) << 32;
    const std::uint64_t hundreds = (fours * 10486 >> 20) & 0x0000007F0000007FU;
    const std::uint64_t twos = (fours << 16) - hundreds * ((100U << 16) - 1);
    const std::uint64_t tens = (twos * 103 >> 10) & 0x000F000F000F000FU;
    return (twos << 8) - tens * ((10U << 8) - 1);
}

/// Number of decimal digits of a value above 0.
inline int digitCount(std::uint64_t value) noexcept {
    const int guess = bitWidth(value) * 1233 >> 12;
    return guess + (value >= kSmallPowersOfTen[static_cast<std::size_t>(guess)] ? 1 : 0);
}

/// Writes a value below 10^16 with zeros before it.
inline void writeSixteenDigits(char* out, std::uint64_t value) noexcept {
    const std::uint64_t texts[2] = {eightDigits(static_cast<std::uint32_t>(value / kEightDigitLimit)) | kAsciiZeros,
                                    eightDigits(static_cast<std::uint32_t>(value % kEightDigitLimit)) | kAsciiZeros};
    std::memcpy(out, texts, sizeof texts);
}

/// Writes the digits of a value above 0 of at most kMaxFastDigits digits, then zeros, together kMaxFastDigits
/// characters; no terminator. `count` gets the digits up to the last that is not 0. Returns the digits of the value.
inline int writeDigits(char* out, std::uint64_t value, int& count) noexcept {
    const int digits = digitCount(value);
    const std::uint64_t filled = value * kSmallPowersOfTen[static_cast<std::size_t>(kMaxFastDigits - digits)];
    const auto upper = static_cast<std::uint32_t>(filled / kEightDigitLimit);
    const auto lower = static_cast<std::uint32_t>(filled % kEightDigitLimit);
    const std::uint32_t first = upper / kEightDigitLimit;
    const std::uint64_t middle = eightDigits(upper - first * kEightDigitLimit);
    const std::uint64_t last = eightDigits(lower);
    const std::uint64_t texts[2] = {middle | kAsciiZeros, last | kAsciiZeros};
    out[0] = static_cast<char>('0' + first);
    std::memcpy(out + 1, texts, sizeof texts);
    count = last != 0 ? kMaxFastDigits - std::countl_zero(last) / 8 : 9 - std::countl_zero(middle) / 8;
    return digits;
}

} // namespace tq::detail
