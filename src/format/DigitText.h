#pragma once

#include "format/DecimalPowers.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tq::detail {

struct WideDigitPair {
    wchar_t digits[2];
};

inline constexpr std::array<WideDigitPair, 100> kWideDigitPairs = [] {
    std::array<WideDigitPair, 100> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i)
        pairs[i] = {{static_cast<wchar_t>(L'0' + i / 10), static_cast<wchar_t>(L'0' + i % 10)}};
    return pairs;
}();

inline constexpr int kEightDigits = 8;
inline constexpr int kSixteenDigits = 16;

/// Writes the digits of a value below 10^8, zeros before them included. Four look-ups that do not wait for each other:
/// quicker here than digits from a vector register, whose steps do.
inline void writeEightDigits(wchar_t* out, std::uint32_t value) {
    const std::uint32_t upper = value / 10000;
    const std::uint32_t lower = value % 10000;
    const std::uint32_t pairs[] = {upper / 100, upper % 100, lower / 100, lower % 100};
    for (int i = 0; i < 4; ++i)
        std::memcpy(out + 2 * i, &kWideDigitPairs[pairs[i]], sizeof(WideDigitPair));
}

/// The same of a value below 10^16.
inline void writeSixteenDigits(wchar_t* out, std::uint64_t value) {
    constexpr std::uint64_t kHalf = kSmallPowersOfTen[kEightDigits];
    writeEightDigits(out, static_cast<std::uint32_t>(value / kHalf));
    writeEightDigits(out + kEightDigits, static_cast<std::uint32_t>(value % kHalf));
}

/// Writes a value of at most `count` digits, 0 to 16, as that many digits. Uses 16 characters of `out`.
inline void writeDigits(wchar_t* out, std::uint64_t value, int count) {
    if (count <= kEightDigits)
        writeEightDigits(
            out, static_cast<std::uint32_t>(value * kSmallPowersOfTen[static_cast<std::size_t>(kEightDigits - count)]));
    else
        writeSixteenDigits(out, value * kSmallPowersOfTen[static_cast<std::size_t>(kSixteenDigits - count)]);
}

/// Characters that writeDecimal uses, whatever the number.
inline constexpr int kDecimalRoom = 4 + kSixteenDigits;

/// Writes `value` from `out` on and returns its number of digits, 1 for 0.
inline int writeDecimal(wchar_t* out, std::uint64_t value) {
    constexpr std::uint64_t kLimit = kSmallPowersOfTen[kSixteenDigits];
    if (value >= kLimit) {
        const auto upper = static_cast<std::uint32_t>(value / kLimit);
        const int count = decimalDigits(std::uint64_t{upper});
        writeEightDigits(out,
                         upper * static_cast<std::uint32_t>(kSmallPowersOfTen[static_cast<std::size_t>(8 - count)]));
        writeSixteenDigits(out + count, value % kLimit);
        return count + kSixteenDigits;
    }
    const int count = decimalDigits(value | 1);
    writeDigits(out, value, count);
    return count;
}

struct WideHexPair {
    wchar_t digits[2];
};

inline constexpr std::array<WideHexPair, 256> kWideHexPairs = [] {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::array<WideHexPair, 256> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i)
        pairs[i] = {{static_cast<wchar_t>(kDigits[i / 16]), static_cast<wchar_t>(kDigits[i % 16])}};
    return pairs;
}();

/// Writes a 32-bit value in hexadecimal from `out` on and returns its number of digits, 1 for 0. Uses 8 characters.
inline int writeHexadecimal(wchar_t* out, std::uint32_t value) {
    const int digits = static_cast<int>(std::bit_width(value | 1U) + 3) / 4;
    value <<= 32 - 4 * digits;
    for (int i = 0; i < 4; ++i, value <<= 8)
        std::memcpy(out + 2 * i, &kWideHexPairs[value >> 24], sizeof(WideHexPair));
    return digits;
}

/// Writes `value` in a base from 2 to 36, with upper-case letters above 9, so that its digits end before `end`; returns
/// where they start. 0 is one digit.
inline wchar_t* writeBaseBackwards(wchar_t* end, std::uint64_t value, unsigned base) {
    do {
        const auto digit = static_cast<wchar_t>(value % base);
        *--end = static_cast<wchar_t>(digit < 10 ? L'0' + digit : L'A' + digit - 10);
        value /= base;
    } while (value != 0);
    return end;
}

/// True for '0' to '9'.
constexpr bool isDecimalDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

} // namespace tq::detail
