#pragma once

#include "base/CharacterClass.h"
#include "codepage/Escapes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

// One character of each conversion, as every form of the kernels takes those that are not plain ASCII. Each writes its
// character and moves `src` and `out` after it.

namespace tq::detail {

/// A backslash that may begin an escape, or any other byte.
inline void stepNarrowToWide(const char*& src, wchar_t*& out) noexcept {
    if (*src == '\\') {
        if (const int value = unicodeEscapeValue(src); value != kNoEscape) {
            *out++ = static_cast<wchar_t>(value);
            src += kUnicodeEscapeLength;
            return;
        }
        if (const int value = mifEscapeValue(src); value != kNoEscape && isAsciiMifValue(value)) {
            *out++ = static_cast<wchar_t>(value);
            src += kMifEscapeLength;
            return;
        }
        // Any other MIF escape stays as it is and holds no second backslash: its bytes can go one by one.
    }
    *out++ = byteOf(*src++);
}

inline constexpr auto kHexPairs = [] {
    std::array<std::array<char, 2>, 256> table{};
    for (std::size_t i = 0; i < table.size(); ++i)
        table[i] = {"0123456789ABCDEF"[i >> 4], "0123456789ABCDEF"[i & 15]};
    return table;
}();

inline void stepWideToNarrow(const wchar_t*& src, char*& out) noexcept {
    const wchar_t c = *src++;
    if (signedCodeOf(c) <= kHighestAscii) {
        *out++ = static_cast<char>(c);
        return;
    }
    const auto unit = codeOf(c) & 0xFFFF;
    std::memcpy(out, "\\U+", 3);
    std::memcpy(out + 3, kHexPairs[unit >> 8].data(), 2);
    std::memcpy(out + 5, kHexPairs[unit & 0xFF].data(), 2);
    out += kUnicodeEscapeLength;
}

constexpr bool isContinuation(char byte) {
    return (byteOf(byte) & 0xC0U) == 0x80U;
}

constexpr unsigned payload(char byte, unsigned mask) {
    return byteOf(byte) & mask;
}

inline void stepUtf8ToWide(const char*& src, wchar_t*& out) noexcept {
    const auto lead = byteOf(*src);
    if (lead >= 0xE0 && isContinuation(src[1]) && isContinuation(src[2])) {
        *out++ = static_cast<wchar_t>((lead & 0x0FU) << 12 | payload(src[1], 0x3F) << 6 | payload(src[2], 0x3F));
        src += 3;
    } else if (lead >= 0xC0 && isContinuation(src[1])) {
        *out++ = static_cast<wchar_t>((lead & 0x1FU) << 6 | payload(src[1], 0x3F));
        src += 2;
    } else {
        *out++ = lead;
        src += 1;
    }
}

inline void stepWideToUtf8(const wchar_t*& src, char*& out) noexcept {
    const std::int32_t c = signedCodeOf(*src++);
    const auto bits = static_cast<std::uint32_t>(c);
    if (c <= kHighestAscii) {
        *out++ = static_cast<char>(bits);
    } else if (c <= 0x7FF) {
        *out++ = static_cast<char>(0xC0U | (bits >> 6));
        *out++ = static_cast<char>(0x80U | (bits & 0x3FU));
    } else if (c <= 0xFFFF) {
        *out++ = static_cast<char>(0xE0U | (bits >> 12));
        *out++ = static_cast<char>(0x80U | ((bits >> 6) & 0x3FU));
        *out++ = static_cast<char>(0x80U | (bits & 0x3FU));
    }
}

} // namespace tq::detail
