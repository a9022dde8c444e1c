#pragma once

#include "fltcvt/DoubleBits.h"
#include "fltcvt/PowersOfTen.h"
#include "fltcvt/SixteenDigits.h"

#include <algorithm>
#include <cstdint>

namespace tq::detail {

/// Digits written at once: what a double needs at most to be read back.
inline constexpr int kMaxFastDigits = 17;
/// Number of decimal digits of a value above 0 and below 10^17.
inline int digitCount(std::uint64_t value) noexcept {
    // The sign of a difference, because compilers make branches of comparisons here, and those are as good as random.
    const auto reaches = [value](std::size_t power) {
        return static_cast<int>((kSmallPowersOfTen[power] - 1 - value) >> 63);
    };
    if (value >= kSmallPowersOfTen[14]) [[likely]] // as nearly all shortest digits are
        return 15 + reaches(15) + reaches(16);
    // The exponent of a double is the position of the highest bit. The processor's own instruction for that would wait
    // for the previous use of its target register.
    const int width = exponentField(static_cast<double>(static_cast<std::int64_t>(value))) - kExponentBias + 1;
    const int guess = width * 1233 >> 12;
    return guess + reaches(static_cast<std::size_t>(guess));
}

/// Characters that the writers below may use, whatever the number of digits.
inline constexpr int kDigitWriterRoom = kMaxFastDigits;

/// Writes sixteen digits and one more, no terminator. Returns the number of digits up to the last that is not 0.
inline int writeSeventeen(char* out, std::uint64_t sixteen, unsigned last) noexcept {
    const SixteenDigits digits(sixteen);
    digits.store(out);
    out[kMaxFastDigits - 1] = static_cast<char>('0' + last);
    return std::max(digits.significant(), last != 0 ? kMaxFastDigits : 0);
}

/// Writes the digits of a value above 0, `length` of them, up to kMaxFastDigits, then zeros; no terminator. Returns the
/// number of digits up to the last that is not 0.
inline int writeDigits(char* out, std::uint64_t value, int length) noexcept {
    constexpr std::uint64_t kFirstDigit = kSmallPowersOfTen[kMaxFastDigits - 1];
    const std::uint64_t filled = value * kSmallPowersOfTen[static_cast<std::size_t>(kMaxFastDigits - length)];
    const auto first = static_cast<unsigned>(filled / kFirstDigit);
    const SixteenDigits others(filled - first * kFirstDigit);
    out[0] = static_cast<char>('0' + first);
    others.store(out + 1);
    return 1 + others.significant();
}

/// The same for at most kMaxFastDigits - 1 digits, faster.
inline int writeFewDigits(char* out, std::uint64_t value, int length) noexcept {
    const SixteenDigits digits(value * kSmallPowersOfTen[static_cast<std::size_t>(kMaxFastDigits - 1 - length)]);
    digits.store(out);
    return digits.significant();
}

} // namespace tq::detail
