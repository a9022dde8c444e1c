#pragma once

#include "fltcvt/PowersOfTen.h"
#include "fltcvt/Schubfach.h"
#include "fltcvt/SwarDigits.h"

#include <algorithm>
#include <cassert>
#include <cstdint>

namespace tq::detail {

/// Characters that the writers below may use, whatever the number of digits.
inline constexpr int kDigitWriterRoom = kMaxFastDigits;

/// Writes sixteen digits and one more, no terminator. Returns the number of digits up to the last that is not 0.
inline int writeSeventeen(char* out, std::uint64_t sixteen, unsigned last) noexcept {
    assert(last < 10);
    const SixteenDigits digits(sixteen);
    digits.store(out);
    out[kMaxFastDigits - 1] = static_cast<char>('0' + last);
    return std::max(digits.significant(), last != 0 ? kMaxFastDigits : 0);
}

/// Writes the digits of a value above 0, `length` of them, up to seventeen, then zeros; no terminator. Returns the
/// number of digits up to the last that is not 0.
inline int writeUpToSeventeen(char* out, std::uint64_t value, int length) noexcept {
    constexpr std::uint64_t kFirstDigit = smallPowerOfTen(kMaxFastDigits - 1);
    assert(value != 0 && length == digitCount(value));
    const std::uint64_t filled = value * smallPowerOfTen(kMaxFastDigits - length);
    const auto first = static_cast<unsigned>(filled / kFirstDigit);
    const SixteenDigits others(filled - first * kFirstDigit);
    out[0] = static_cast<char>('0' + first);
    others.store(out + 1);
    return 1 + others.significant();
}

/// The same for up to sixteen digits, faster.
inline int writeUpToSixteen(char* out, std::uint64_t value, int length) noexcept {
    assert(value != 0 && length == digitCount(value));
    const SixteenDigits digits(value * smallPowerOfTen(kMaxFastDigits - 1 - length));
    digits.store(out);
    return digits.significant();
}

} // namespace tq::detail
