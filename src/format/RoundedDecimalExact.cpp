// The exact path: every digit that the double has, then rounding as on paper.

#include "fltcvt/Digits.h"
#include "format/RoundedDecimal.h"

#include <algorithm>

namespace tq::detail {

namespace {

// The digits as characters, the first one not 0; the exponent is that of the first.
struct ExactDigits {
    char digits[kDigitRoom];
    int count;
    int exponent;
};

ExactDigits exactDigits(double value) {
    ExactDigits exact;
    const DigitLayout layout = writeManyDigits(value, {DigitRequest::eSignificant, false, kMaxDigits}, exact.digits);
    exact.count = layout.count;
    exact.exponent = layout.point - 1;
    return exact;
}

// Keeps `keep` digits of `exact`, the last one rounded with halves up, then cuts them. A keep of 0 or less may leave
// one digit or none.
RoundedDecimal roundAfter(ExactDigits& exact, int keep) {
    if (keep < 0 || (keep == 0 && exact.digits[0] < '5'))
        return {0, 0, exact.exponent - keep};
    if (keep == 0)
        return {1, 1, exact.exponent + 1};
    if (keep < exact.count && exact.digits[keep] >= '5') {
        int last = keep - 1;
        while (last >= 0 && exact.digits[last] == '9')
            --last;
        if (last < 0)
            return {1, 1, exact.exponent + 1};
        ++exact.digits[last];
        std::fill(exact.digits + last + 1, exact.digits + keep, '0');
    }
    const int count = std::min({keep, exact.count, kMaxSignificantDigits});
    std::uint64_t digits = 0;
    for (int i = 0; i < count; ++i)
        digits = digits * 10 + static_cast<unsigned>(exact.digits[i] - '0');
    return {digits, count, exact.exponent};
}

} // namespace

RoundedDecimal roundToDecimalsExact(double value, int decimals) {
    ExactDigits exact = exactDigits(value);
    // Beyond the last digit of any double nothing is left to round.
    const int keep = exact.exponent + 1 + std::min(decimals, 2000);
    return roundAfter(exact, keep);
}

RoundedDecimal roundToSignificantExact(double value, int digits) {
    ExactDigits exact = exactDigits(value);
    return roundAfter(exact, digits);
}

} // namespace tq::detail
