#pragma once

#include "format/DecimalPowers.h"

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tq::detail {

/// The writers below may change this many characters, whatever the count.
inline constexpr int kDigitsAtOnce = 16;

struct WideDigitPair {
    wchar_t digits[2];
};

inline constexpr std::array<WideDigitPair, 100> kWideDigitPairs = [] {
    std::array<WideDigitPair, 100> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i)
        pairs[i] = {{static_cast<wchar_t>(L'0' + i / 10), static_cast<wchar_t>(L'0' + i % 10)}};
    return pairs;
}();

inline void writeDigitPair(wchar_t* out, std::uint64_t pair) {
    std::memcpy(out, &kWideDigitPairs[pair], sizeof(WideDigitPair));
}

/// Bits behind the point of a fraction whose integer part is a pair of digits.
inline constexpr int kPairShift = 57;

/// ceil(2^57 / 10^(count - 2)): times a number of `count` digits, its first pair before the point.
inline constexpr std::array<std::uint64_t, 11> kPairScales = [] {
    std::array<std::uint64_t, 11> scales{0, (std::uint64_t{1} << kPairShift) * 10, std::uint64_t{1} << kPairShift};
    for (std::size_t count = 3; count < scales.size(); ++count) {
        const std::uint64_t divisor = kSmallPowersOfTen[count - 2];
        scales[count] = ((std::uint64_t{1} << kPairShift) + divisor - 1) / divisor;
    }
    return scales;
}();

/// Writes pairs of digits, the first one from the bits before the point; each next one comes there by a multiplication.
template <std::size_t pairCount>
inline void writePairs(wchar_t* out, std::uint64_t fraction) {
    for (std::size_t i = 0; i < pairCount; ++i) {
        writeDigitPair(out + 2 * i, fraction >> kPairShift);
        fraction = (fraction & ((std::uint64_t{1} << kPairShift) - 1)) * 100;
    }
}

/// The sixteen digits of a value below 10^16, zeros before them included.
inline void writeSixteenDigits(wchar_t* out, std::uint64_t value) {
    const std::uint64_t upper = value / kSmallPowersOfTen[8];
    writePairs<4>(out, upper * kPairScales[8]);
    writePairs<4>(out + 8, (value - upper * kSmallPowersOfTen[8]) * kPairScales[8]);
}

/// Writes `value`, below 10^count, as `count` digits, zeros before them included. Below 2^32, or 10^8 in one half of a
/// larger number, the scale's excess stays below one unit of the last digit.
inline void writeDigits(wchar_t* out, std::uint64_t value, int count) {
    if (count < static_cast<int>(kPairScales.size()) && value >> 32 == 0) [[likely]] {
        writePairs<5>(out, value * kPairScales[static_cast<std::size_t>(count)]);
        return;
    }
    // One by one until sixteen are left.
    constexpr std::uint64_t kLimit = kSmallPowersOfTen[kDigitsAtOnce];
    if (count > kDigitsAtOnce) {
        std::uint64_t above = value / kLimit;
        value %= kLimit;
        const int others = count - kDigitsAtOnce;
        for (int i = others; i-- > 0; above /= 10)
            out[i] = static_cast<wchar_t>(L'0' + above % 10);
        out += others;
        count = kDigitsAtOnce;
    }
    // Filled up with zeros behind, so that the first digit is the first of sixteen.
    writeSixteenDigits(out, value * kSmallPowersOfTen[static_cast<std::size_t>(kDigitsAtOnce - count)]);
}

inline constexpr std::array<WideDigitPair, 256> kWideHexPairs = [] {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::array<WideDigitPair, 256> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i)
        pairs[i] = {{static_cast<wchar_t>(kDigits[i / 16]), static_cast<wchar_t>(kDigits[i % 16])}};
    return pairs;
}();

/// The eight digits of a value in hexadecimal.
inline void writeEightHexDigits(wchar_t* out, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        std::memcpy(out + 2 * i, &kWideHexPairs[value >> (24 - 8 * i) & 0xFF], sizeof(WideDigitPair));
}

/// The same as writeDigits in hexadecimal, for a value below 16^count, count above 0.
inline void writeHexadecimal(wchar_t* out, std::uint64_t value, int count) {
    for (; count > kDigitsAtOnce; --count)
        *out++ = L'0';
    value <<= 4 * (kDigitsAtOnce - count);
    writeEightHexDigits(out, static_cast<std::uint32_t>(value >> 32));
    if (count > kDigitsAtOnce / 2)
        writeEightHexDigits(out + kDigitsAtOnce / 2, static_cast<std::uint32_t>(value));
}

/// The same in any base from 2 to 36, with upper-case letters above 9.
inline void writeInBase(wchar_t* out, std::uint64_t value, int count, unsigned base) {
    while (count-- > 0) {
        const auto digit = static_cast<wchar_t>(value % base);
        out[count] = static_cast<wchar_t>(digit < 10 ? L'0' + digit : L'A' + digit - 10);
        value /= base;
    }
}

/// Number of digits of `value` in a base from 2 to 36, 1 for 0.
inline int digitsInBase(std::uint64_t value, unsigned base) {
    if (base == 10)
        return decimalDigits(value | 1);
    if (base == 16)
        return static_cast<int>(std::bit_width(value | 1) + 3) / 4;
    int count = 1;
    while ((value /= base) != 0)
        ++count;
    return count;
}

/// True for '0' to '9'.
constexpr bool isDecimalDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

} // namespace tq::detail
