#include "format/DigitText.h"
#include "format/NumberText.h"
#include "format/ScaleTables.h"

#include <TqOsBase/format/FormatUtil.h>

#include <algorithm>
#include <cmath>

namespace {

// Brings a magnitude of 1 or more below 10 as far as one walk through the powers does.
int scaleDown(long double& magnitude) {
    int exponent = 0;
    const int start = magnitude < g_arrIntegerPows[g_idxThirdOfPowrArr] ? g_idxThirdOfPowrArr : g_lenPowrArray;
    for (int i = start - 1; i >= 0; --i) {
        const auto at = static_cast<std::size_t>(i);
        if (magnitude >= g_arrIntegerPows[at]) {
            magnitude *= g_arrDecimalPows[at];
            exponent += 1 << i;
        }
    }
    return exponent;
}

// Brings a magnitude below 1 up, to 0.1 or above.
int scaleUp(long double& magnitude) {
    int exponent = 0;
    const int start = magnitude > g_arrDecimalPows[g_idxThirdOfPowrArr] ? g_idxThirdOfPowrArr : g_lenPowrArray;
    for (int i = start - 1; i >= 0; --i) {
        const auto at = static_cast<std::size_t>(i);
        if (magnitude <= g_arrDecimalPows[at]) {
            magnitude *= g_arrIntegerPows[at];
            exponent -= 1 << i;
        }
    }
    return exponent;
}

// The digit in front of the point of a mantissa, which is then ready for the next one.
int takeDigit(long double& mantissa) {
    const int digit = mantissa < 10 ? static_cast<int>(mantissa) : 9;
    mantissa = (mantissa - static_cast<long double>(digit)) * 10;
    return digit;
}

} // namespace

void FormatUtil::initializeConstVar() {}

int FormatUtil::scaleDoubleToScience(long double* value) {
    if (value == nullptr || *value == 0 || !std::isfinite(*value))
        return 0;
    long double magnitude = std::fabs(*value);
    int exponent = 0;
    // A double takes one walk; the range of extended precision may take several.
    while (magnitude >= 10)
        exponent += scaleDown(magnitude);
    while (magnitude < g_arrDecimalPows[0])
        exponent += scaleUp(magnitude);
    if (magnitude < 1) {
        magnitude *= 10;
        --exponent;
    }
    // The last product may have been rounded up to 10.
    if (magnitude >= 10) {
        magnitude /= 10;
        ++exponent;
    }
    *value = std::copysign(magnitude, *value);
    return exponent;
}

int FormatUtil::roundScienceDouble(long double* mantissa, int precision, int exponent) {
    if (mantissa == nullptr || !std::isfinite(*mantissa))
        return 0;
    const std::int64_t place = std::int64_t{precision} + exponent + 1;
    if (place < 0 || (exponent <= 0 && place >= g_lenRndArray))
        return 0;
    const long double constant = place < g_lenRndArray
                                     ? g_arrRndConValue[static_cast<std::size_t>(place)]
                                     : g_arrRndConValue[static_cast<std::size_t>(g_lenRndArray - 1)] / 2;
    const bool negative = *mantissa < 0 && -*mantissa >= constant;
    long double magnitude = std::fabs(*mantissa) + constant;
    const int carry = magnitude >= 10 ? 1 : 0;
    if (carry != 0)
        magnitude /= 10;
    *mantissa = negative ? -magnitude : magnitude;
    return carry;
}

int FormatUtil::formatScienceDouble(wchar_t* out, long double mantissa, int integerDigits, int precision, int size) {
    using namespace tq::detail;
    if (out == nullptr)
        return 0;
    const int limit = size > 0 ? std::min(size - 1, kMaxNumberText) : kMaxNumberText;
    wchar_t text[kMaxNumberText];
    int length = 0;
    if (!std::isfinite(mantissa)) {
        length = writeNotFinite(text, static_cast<double>(mantissa));
    } else {
        RoundedDecimal value{0, 0, integerDigits - 1};
        long double rest = std::fabs(mantissa);
        // Leading zeros are the layout's business; a mantissa with more of them than digits is as good as 0.
        for (int zeros = 0; rest < 1 && zeros < kMaxSignificantDigits; ++zeros, --value.exponent)
            rest *= 10;
        for (; value.count < kMaxSignificantDigits && rest >= (value.count == 0 ? 1 : 0); ++value.count)
            value.digits = value.digits * 10 + static_cast<unsigned>(takeDigit(rest));
        length = writeFixed(text, mantissa < 0, value, std::max(precision, 0));
    }
    length = std::min(length, limit);
    std::copy_n(text, length, out);
    out[length] = L'\0';
    return length;
}
