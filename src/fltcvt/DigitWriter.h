#pragma once

#include "fltcvt/DoubleBits.h"
#include "fltcvt/PowersOfTen.h"
#include "fltcvt/SixteenDigits.h"

#include <cstdint>

namespace tq::detail {

/// Digits written at once: what a double needs at most to be read back.
inline constexpr int kMaxFastDigits = 17;
/// Number of decimal digits of a value above 0 and below 10^17.
inline int digitCount(std::uint64_t value) noexcept {
    if (value >= kSmallPowersOfTen[14]) [[likely]] // as nearly all shortest digits are
        return 15 + (value >= kSmallPowersOfTen[15] ? 1 : 0) + (value >= kSmallPowersOfTen[16] ? 1 : 0);
    // The exponent of a double is the position of the highest bit. The processor's own instruction for that would wait
    // for the previous use of its target register.
    const int width = exponentField(static_cast<double>(static_cast<std::int64_t>(value))) - kExponentBias + 1;
    const int guess = width * 1233 >> 12;
    return guess + (value >= kSmallPowersOfTen[static_cast<std::size_t>(guess)] ? 1 : 0);
}

/// Writes the digits of a value above 0 of at most kMaxFastDigits digits, then zeros, together kMaxFastDigits
/// characters; no terminator. `count` gets the digits up to the last that is not 0. Returns the digits of the value.
inline int writeDigits(char* out, std::uint64_t value, int& count) noexcept {
    constexpr std::uint64_t kFirstDigit = kSmallPowersOfTen[kMaxFastDigits - 1];
    const int digits = digitCount(value);
    const std::uint64_t filled = value * kSmallPowersOfTen[static_cast<std::size_t>(kMaxFastDigits - digits)];
    const auto first = static_cast<unsigned>(filled / kFirstDigit);
    const SixteenDigits others(filled - first * kFirstDigit);
    out[0] = static_cast<char>('0' + first);
    others.store(out + 1);
    count = 1 + others.significant();
    return digits;
}

} // namespace tq::detail
