#include "format/NumberText.h"

#include "fltcvt/DoubleBits.h"
#include "format/DecimalPowers.h"
#include "format/DigitText.h"

#include <TqOsBase/format/OutputWithFormat.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <new>
#include <string_view>

namespace tq::detail {

namespace {

// A precision beyond this many digits changes no text.
constexpr int kMaxPrecision = 2000;

// Between these, a number has bits on both sides of the point, and they fit a word.
constexpr double kSmallestEveryday = 0x1p-10;
constexpr double kLargestEveryday = 0x1p52;

// Everyday numbers: the integer part of the significand stands before the point, and the bits behind it, times a power
// of ten, are the decimals, exact to the last bit.
struct EverydayNumber {
    std::uint64_t significand;
    int shift;

    explicit EverydayNumber(const DoubleParts& parts) : significand(parts.significand), shift(-parts.exponent) {}

    static bool holds(double magnitude) { return magnitude >= kSmallestEveryday && magnitude < kLargestEveryday; }

    std::uint64_t integer() const { return significand >> shift; }
    // That many decimals, up to 16, as an integer; exact halves away from zero. May be all of 10^decimals.
    std::uint64_t fraction(int decimals) const {
        // With the point before the highest bit, the product has it between its two words.
        const UInt128 product =
            UInt128{significand << (64 - shift)} * kSmallPowersOfTen[static_cast<std::size_t>(decimals)];
        return static_cast<std::uint64_t>(product >> 64) + (static_cast<std::uint64_t>(product) >> 63);
    }
};

// Returns 0 for other numbers.
int tryWriteFixed(wchar_t* out, bool negative, double magnitude, int decimals, bool plus) {
    if (!EverydayNumber::holds(magnitude) || decimals > kMaxSignificantDigits)
        return 0;
    const EverydayNumber number{DoubleParts(magnitude)};
    std::uint64_t integer = number.integer();
    std::uint64_t fraction = number.fraction(decimals);
    if (fraction == kSmallPowersOfTen[static_cast<std::size_t>(decimals)]) {
        fraction = 0;
        ++integer;
    }
    const bool hasSign = (negative && (integer | fraction) != 0) || plus;
    *out = negative && (integer | fraction) != 0 ? L'-' : L'+';
    wchar_t* p = out + (hasSign ? 1 : 0);
    const int integerDigits = decimalDigits(integer | 1);
    // Digits that are too many are cut, not rounded again.
    if (integer != 0 && integerDigits + decimals > kMaxSignificantDigits)
        return 0;
    writeDigits(p, integer, integerDigits);
    p += integerDigits;
    if (decimals > 0) {
        *p = L'.';
        writeDigits(p + 1, fraction, decimals);
        p += 1 + decimals;
    }
    return static_cast<int>(p - out);
}

// A number with an integer part that has `digits` digits or fewer, to that many; false for other numbers.
bool tryRoundEveryday(double magnitude, int digits, RoundedDecimal& rounded) {
    if (!EverydayNumber::holds(magnitude) || magnitude < 1 || digits > kMaxSignificantDigits)
        return false;
    const EverydayNumber number{DoubleParts(magnitude)};
    const std::uint64_t integer = number.integer();
    const int integerDigits = decimalDigits(integer);
    const int decimals = digits - integerDigits;
    if (decimals < 0)
        return false;
    rounded.digits = integer * kSmallPowersOfTen[static_cast<std::size_t>(decimals)] + number.fraction(decimals);
    rounded.count = digits;
    rounded.exponent = integerDigits - 1;
    if (rounded.digits == kSmallPowersOfTen[static_cast<std::size_t>(digits)]) {
        rounded.digits /= 10;
        ++rounded.exponent;
    }
    return true;
}

} // namespace

int writeFixed(wchar_t* out, bool negative, const RoundedDecimal& value, int decimals) {
    wchar_t digits[kMaxSignificantDigits];
    writeDigits(digits, value.digits, value.count);
    wchar_t* p = out;
    if (negative)
        *p++ = L'-';
    int shown = 0;
    const auto putDigits = [&](int count) {
        const int there = std::min(count, value.count - shown);
        p = std::copy_n(digits + shown, there, p);
        p = std::fill_n(p, count - there, L'0');
        shown += there;
    };
    const auto room = [&] { return kMaxNumberText - static_cast<int>(p - out); };
    const int integerDigits = value.exponent + 1;
    decimals = std::clamp(kMaxSignificantDigits - integerDigits, 0, decimals);
    if (integerDigits >= 1)
        putDigits(std::min(integerDigits, room()));
    else
        *p++ = L'0';
    // A point at the limit would be the last character.
    decimals = std::min(decimals, room() - 1);
    if (decimals > 0) {
        *p++ = L'.';
        const int zeros = std::clamp(-integerDigits, 0, decimals);
        p = std::fill_n(p, zeros, L'0');
        putDigits(decimals - zeros);
    }
    return static_cast<int>(p - out);
}

int writeFixed(wchar_t* out, double value, int decimals, bool plus) {
    const double magnitude = std::fabs(value);
    if (const int length = tryWriteFixed(out, isBelowZero(value), magnitude, decimals, plus); length > 0)
        return length;
    wchar_t* p = out;
    decimals = std::min(decimals, kMaxPrecision);
    if (!std::isfinite(value)) {
        if (plus && value > 0)
            *p++ = L'+';
        p += writeNotFinite(p, value);
    } else {
        const RoundedDecimal rounded = roundToDecimals(magnitude, decimals);
        const bool negative = isBelowZero(value) && rounded.digits != 0;
        if (plus && !negative)
            *p++ = L'+';
        p += writeFixed(p, negative, rounded, decimals);
    }
    return static_cast<int>(p - out);
}

int writeScientific(wchar_t* out, double value, int decimals) {
    if (!std::isfinite(value))
        return writeNotFinite(out, value);
    decimals = std::min(decimals, kMaxPrecision);
    const double magnitude = std::fabs(value);
    RoundedDecimal rounded{};
    if (!tryRoundEveryday(magnitude, decimals + 1, rounded))
        rounded = roundToSignificant(magnitude, decimals + 1);
    *out = L'-';
    wchar_t* p = out + (isBelowZero(value) ? 1 : 0);
    // Of the digits, the first one moves in front of the point.
    writeDigits(p + 1, rounded.digits, rounded.count);
    p[0] = rounded.count > 0 ? p[1] : L'0';
    p[1] = L'.';
    const int shown = std::min(decimals, kMaxSignificantDigits - 1);
    if (shown >= rounded.count)
        std::fill_n(p + 1 + std::max(rounded.count, 1), shown + 1 - std::max(rounded.count, 1), L'0');
    p += shown > 0 ? 2 + shown : 1;
    *p++ = L'E';
    *p++ = rounded.exponent < 0 ? L'-' : L'+';
    const auto exponent = static_cast<unsigned>(std::abs(rounded.exponent));
    *p++ = static_cast<wchar_t>(L'0' + exponent / 100);
    writeDigitPair(p, exponent % 100);
    return static_cast<int>(p + 2 - out);
}

int writeNotFinite(wchar_t* out, double value) {
    const std::wstring_view text = std::isnan(value) ? L"nan" : value < 0 ? L"-inf" : L"inf";
    text.copy(out, text.size());
    return static_cast<int>(text.size());
}

} // namespace tq::detail

unsigned formatScienceDoubleUtil(double value, wchar_t conversion, int precision, bool plus, wchar_t* text) {
    const int decimals = std::min(precision, tq::detail::kMaxPrecision);
    // Bits compare as magnitudes do, and tell subnormals from 0 where the processor does not. No double lies between
    // 10^-4 and its nearest one, so that the comparison is exact.
    const std::uint64_t magnitude = tq::detail::bitsOf(value) & ~tq::detail::kSignBit;
    constexpr std::uint64_t kSmallest = tq::detail::bitsOf(1e-4);
    constexpr std::uint64_t kLimit = tq::detail::bitsOf(1e5);
    const bool fixedForm =
        conversion == L'f' || (conversion != L'e' && (magnitude - kSmallest < kLimit - kSmallest || magnitude == 0));
    return static_cast<unsigned>(fixedForm ? tq::detail::writeFixed(text, value, decimals, plus)
                                           : tq::detail::writeScientific(text, value, decimals));
}

int FormatScienceDoubleAndOutputString(wchar_t* out, int size, const double& value, int precision) {
    if (out == nullptr || size < 1)
        return -1;
    wchar_t text[tq::detail::kNumberRoom];
    int length = size;
    try {
        length = tq::detail::writeFixed(text, value, std::max(precision, 0), false);
    } catch (const std::bad_alloc&) {
        // Answered as a text that does not fit.
    }
    const bool fits = length < size;
    std::copy_n(text, fits ? length : 0, out);
    out[fits ? length : 0] = L'\0';
    return fits ? length : -1;
}
