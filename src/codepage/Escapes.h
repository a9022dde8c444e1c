#pragma once

#include "base/CharacterClass.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstring>

// The escapes of narrow text. All tests take the characters in ascending order and stop at the first that does not fit,
// so they never pass the terminator of the text. Char is char, unsigned char or wchar_t.

namespace tq::detail {

inline constexpr std::size_t kUnicodeEscapeLength = 7; ///< \U+XXXX
inline constexpr std::size_t kMifEscapeLength = 8;     ///< \M+nXXXX
inline constexpr int kNoEscape = -1;

inline constexpr int kHighestAscii = 127;

/// The value of every byte as a hexadecimal digit, negative for one that is none.
inline constexpr auto kHexValues = [] {
    std::array<std::int8_t, 256> table{};
    for (int c = 0; c < 256; ++c) {
        int value = -1;
        if (c >= '0' && c <= '9')
            value = c - '0';
        else if (c >= 'A' && c <= 'F')
            value = c - 'A' + 10;
        else if (c >= 'a' && c <= 'f')
            value = c - 'a' + 10;
        table[static_cast<std::size_t>(c)] = static_cast<std::int8_t>(value);
    }
    return table;
}();

/// The number that the four hexadecimal digits at `p` give, or kNoEscape.
template <class Char>
constexpr int hexQuad(const Char* p) {
    int value = 0;
    for (int i = 0; i < 4; ++i) {
        // A negative character becomes a large number and is no digit.
        const auto c = static_cast<std::uint32_t>(p[i]); // NOLINT(bugprone-signed-char-misuse)
        const int digit = c < kHexValues.size() ? kHexValues[c] : -1;
        if (digit < 0)
            return kNoEscape;
        value = value * 16 + digit;
    }
    return value;
}

/// The character that the Unicode escape at `p` names, or kNoEscape.
template <class Char>
constexpr int unicodeEscapeValue(const Char* p) {
    if (p[0] != '\\' || (p[1] != 'U' && p[1] != 'u') || p[2] != '+')
        return kNoEscape;
    return hexQuad(p + 3);
}

/// The same where all bytes of an escape may be read, terminator or not: three tests in place of eight.
inline int readableUnicodeEscapeValue(const char* p) {
    constexpr bool kIsLittle = std::endian::native == std::endian::little;
    constexpr std::uint32_t kPrefix = kIsLittle ? 0x2B555C : 0x5C552B00; // \U+
    constexpr std::uint32_t kAnyCase = kIsLittle ? 0xFFDFFF : 0xFFDFFF00;
    std::uint32_t first = 0;
    std::memcpy(&first, p, sizeof first);
    if ((first & kAnyCase) != kPrefix)
        return kNoEscape;
    const auto digit = [p](int i) { return int{kHexValues[byteOf(p[3 + i])]}; };
    const int value = digit(0) * 0x1000 | digit(1) * 0x100 | digit(2) * 0x10 | digit(3);
    return value < 0 ? kNoEscape : value; // any byte that is no digit makes it negative
}

/// The double-byte code of the MIF escape at `p`, or kNoEscape. Its code page digit is p[3].
template <class Char>
constexpr int mifEscapeValue(const Char* p) {
    if (p[0] != '\\' || (p[1] != 'M' && p[1] != 'm') || p[2] != '+' || p[3] < '0' || p[3] > '5')
        return kNoEscape;
    return hexQuad(p + 4);
}

/// True when a MIF escape of this value stands for an ASCII character; the others cannot be mapped without tables.
constexpr bool isAsciiMifValue(int value) {
    return value >= 1 && value <= kHighestAscii;
}

/// Where a conversion of [src, end) stops reading: after the escape that begins before `end` and runs beyond it, if
/// there is one, otherwise at `end`. An escape holds no second backslash, so only the last one can begin it.
template <class Char>
const Char* endAfterLastEscape(const Char* src, const Char* end) {
    assert(src <= end);
    const Char* const first = end - std::min<std::ptrdiff_t>(end - src, kMifEscapeLength - 1);
    for (const Char* p = end; p != first;) {
        --p;
        if (*p != '\\')
            continue;
        std::size_t length = 0;
        if (unicodeEscapeValue(p) != kNoEscape)
            length = kUnicodeEscapeLength;
        else if (mifEscapeValue(p) != kNoEscape)
            length = kMifEscapeLength;
        return length > static_cast<std::size_t>(end - p) ? p + length : end;
    }
    return end;
}

} // namespace tq::detail
