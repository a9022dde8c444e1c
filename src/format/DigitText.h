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

/// Copies `count` characters that do not overlap: in blocks, the last of which may cover the one before in part. For
/// the few characters of a number that is quicker than a call.
inline wchar_t* copyText(wchar_t* out, const wchar_t* text, std::size_t count) {
    constexpr std::size_t kBlock = 4;
    constexpr std::size_t kLong = 64;
    if (count >= kLong) {
        std::memcpy(out, text, count * sizeof(wchar_t));
    } else if (count >= kBlock) {
        for (std::size_t i = 0; i + kBlock <= count; i += kBlock)
            std::memcpy(out + i, text + i, kBlock * sizeof(wchar_t));
        std::memcpy(out + count - kBlock, text + count - kBlock, kBlock * sizeof(wchar_t));
    } else {
        for (std::size_t i = 0; i < count; ++i)
            out[i] = text[i];
    }
    return out + count;
}

/// True for '0' to '9'.
constexpr bool isDecimalDigit(wchar_t c) {
    return c >= L'0' && c <= L'9';
}

} // namespace tq::detail
