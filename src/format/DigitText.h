#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace tq::detail {

struct DigitPair {
    wchar_t digits[2];
};

inline constexpr std::array<DigitPair, 100> kDigitPairs = [] {
    std::array<DigitPair, 100> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i)
        pairs[i] = {{static_cast<wchar_t>(L'0' + i / 10), static_cast<wchar_t>(L'0' + i % 10)}};
    return pairs;
}();

/// Writes `value` so that its digits end before `end`; returns where they start. 0 is one digit.
inline wchar_t* writeDecimalBackwards(wchar_t* end, std::uint64_t value) {
    while (value >= 100) {
        end -= 2;
        std::memcpy(end, &kDigitPairs[static_cast<std::size_t>(value % 100)], sizeof(DigitPair));
        value /= 100;
    }
    if (value >= 10) {
        end -= 2;
        std::memcpy(end, &kDigitPairs[static_cast<std::size_t>(value)], sizeof(DigitPair));
    } else {
        *--end = static_cast<wchar_t>(L'0' + value);
    }
    return end;
}

/// The same in any base from 2 to 36, with upper-case letters above 9.
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
