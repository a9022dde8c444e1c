#include "format/NumberText.h"
#include "format/ScaleTables.h"
#include "platform/FloatMode.h"

#include <TqOsBase/format/FormatUtil.h>

#include <algorithm>
#include <cfenv>
#include <cmath>

namespace {

// One walk through the powers that brings a magnitude of 1 or more down, to below 10 if the powers suffice.
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

// One walk through the powers that brings a magnitude below 1 up, to 0.1 or above if the powers suffice.
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

[[gnu::noinline]] int scaleToScience(long double* value) {
    if (*value == 0 || !std::isfinite(*value))
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

[[gnu::noinline]] int roundMantissa(long double* mantissa, int precision, int exponent) {
    if (!std::isfinite(*mantissa))
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

// The first 16 digits of a mantissa's magnitude, from the one before its point on, which may be 0. A magnitude of 10 or
// more gives nines. Returns whether the mantissa is below 0.
[[gnu::noinline]] bool takeLeadingDigits(long double mantissa, std::uint64_t* digits) {
    long double rest = std::fabs(mantissa);
    *digits = 0;
    for (int i = 0; i < tq::detail::RoundedDecimal::kMaxCount; ++i) {
        const int digit = rest < 10 ? static_cast<int>(rest) : 9;
        *digits = *digits * 10 + static_cast<unsigned>(digit);
        rest = (rest - static_cast<long double>(digit)) * 10;
    }
    return mantissa < 0;
}

// Calls a function that calculates in extended precision, which must not be inlined, with rounding to nearest. On
// x86-64 that precision has a rounding mode of its own, apart from that of doubles. Some C libraries tell this one,
// some that of doubles: so the mode is asked before that of doubles is changed.
template <class Result, class... Parameters>
Result roundedToNearest(Result (*function)(Parameters...), Parameters... arguments) {
    const int mode = std::fegetround();
    const tq::platform::DefaultFloatMode floatMode;
    if (mode == FE_TONEAREST)
        return function(arguments...);
    std::fesetround(FE_TONEAREST);
    const Result result = function(arguments...);
    std::fesetround(mode);
    return result;
}

} // namespace

void FormatUtil::initializeConstVar() {}

int FormatUtil::scaleDoubleToScience(long double* value) {
    return value != nullptr ? roundedToNearest(scaleToScience, value) : 0;
}

int FormatUtil::roundScienceDouble(long double* mantissa, int precision, int exponent) {
    return mantissa != nullptr ? roundedToNearest(roundMantissa, mantissa, precision, exponent) : 0;
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
        std::uint64_t digits = 0;
        const bool isNegative = roundedToNearest(takeLeadingDigits, mantissa, &digits);
        length =
            writeFixed(text, isNegative, {digits, RoundedDecimal::kMaxCount, integerDigits}, std::max(precision, 0));
    }
    length = std::min(length, limit);
    std::copy_n(text, length, out);
    out[length] = L'\0';
    return length;
}
