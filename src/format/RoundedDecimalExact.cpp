// The exact path: every digit that the double has, then rounding as on paper.

#include "format/RoundedDecimal.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace tq::detail {

namespace {

// No double has more significant decimal digits.
constexpr int kMaxExactDigits = 767;

struct ExactDigits {
    char digits[kMaxExactDigits + 1];
    int count;
    int exponent;
};

ExactDigits exactDigits(double value) {
    ExactDigits result{};
    char text[kMaxExactDigits + 16];
    std::snprintf(text, sizeof text, "%.*e", kMaxExactDigits - 1, value);
    result.digits[0] = text[0];
    std::copy_n(text + 2, kMaxExactDigits - 1, result.digits + 1);
    result.count = kMaxExactDigits;
    result.exponent = std::atoi(text + kMaxExactDigits + 2);
    return result;
}

// `keep` digits of `exact`, the last one rounded with halves up, then cut. A keep of 0 or less may leave one digit or
// none.
RoundedDecimal roundAfter(ExactDigits exact, int keep) {
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
    const ExactDigits exact = exactDigits(value);
    // Beyond the last digit of any double nothing is left to round.
    return roundAfter(exact, exact.exponent + 1 + std::min(decimals, 2000));
}

RoundedDecimal roundToSignificantExact(double value, int digits) {
    return roundAfter(exactDigits(value), digits);
}

} // namespace tq::detail
