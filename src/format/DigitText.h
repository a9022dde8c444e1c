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

inline void writeDigitPair(wchar_t* out, std::uint64_t value) {
    std::memcpy(out, &kWideDigitPairs[value], sizeof(WideDigitPair));
}

/// Writes the lowest `count` digits of `value`, zeros before them included. From the end, where they do not have to
/// wait for the number of digits, and four at a time, because each division waits for the one before.
inline void writeDigits(wchar_t* out, std::uint64_t value, int count) {
    for (; count >= 4; count -= 4, value /= 10000) {
        const auto four = static_cast<std::uint32_t>(value % 10000);
        writeDigitPair(out + count - 4, four / 100);
        writeDigitPair(out + count - 2, four % 100);
    }
    if (count >= 2) {
        writeDigitPair(out + count - 2, value % 100);
        value /= 100;
        count -= 2;
    }
    if (count > 0)
        *out = static_cast<wchar_t>(L'0' + value % 10);
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

/// The same in hexadecimal.
inline void writeHexadecimal(wchar_t* out, std::uint64_t value, int count) {
    for (; count >= 2; count -= 2, value >>= 8)
        std::memcpy(out + count - 2, &kWideHexPairs[value & 0xFF], sizeof(WideHexPair));
    if (count > 0)
        *out = kWideHexPairs[value & 0xF].digits[1];
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
