#pragma once

#include <cstddef>
#include <cstdint>

// What the contenders beside ours must write for themselves, because their libraries do not know escapes.
namespace workload {

inline int hexDigit(int c) {
    if (c >= '0' && c <= '9')
        return c - '0';
    const int lower = c | 0x20;
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

/// The character at `p`, which moves after it. The text is terminated.
inline unsigned nextCharacter(const char*& p) {
    constexpr int kEscape = 7;
    if (p[0] == '\\' && (p[1] | 0x20) == 'u' && p[2] == '+') {
        unsigned value = 0;
        int i = 3;
        for (; i < kEscape && hexDigit(p[i]) >= 0; ++i)
            value = value * 16 + static_cast<unsigned>(hexDigit(p[i]));
        if (i == kEscape) {
            p += kEscape;
            return value;
        }
    }
    return static_cast<unsigned char>(*p++);
}

inline std::uint64_t sumOfCharacters(const char* p) {
    std::uint64_t sum = 0;
    while (*p != 0)
        sum += nextCharacter(p);
    return sum;
}

} // namespace workload
