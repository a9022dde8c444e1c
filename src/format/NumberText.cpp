#include "format/NumberText.h"

#include "fltcvt/Ieee754.h"
#include "fltcvt/WideDigits.h"

#include <TqOsBase/format/OutputWithFormat.h>

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstdlib>
#include <string_view>

namespace tq::detail {

namespace {

// A precision beyond this many digits changes no text.
constexpr int kMaxPrecision = 2000;

// Everyday numbers at once; returns 0 for others.
int tryWriteFixed(wchar_t* out, bool negative, double magnitude, int decimals, bool plus) {
    if (!isEverydayNumber(magnitude) || decimals > RoundedDecimal::kMaxCount)
        return 0;
    const auto [integer, fraction] = roundedFixedPoint(magnitude, decimals);
    const bool hasMinus = negative && (integer | fraction) != 0;
    *out = hasMinus ? L'-' : L'+';
    wchar_t* p = out + (hasMinus || plus ? 1 : 0);
    const int integerDigits = digitCount(integer | 1);
    // Digits that are too many are cut, not rounded again: 123456.5 to 12 decimals.
    if (integer != 0 && integerDigits + decimals > RoundedDecimal::kMaxCount)
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

} // namespace

int writeFixed(wchar_t* out, bool negative, const RoundedDecimal& value, int decimals) {
    assert(decimals >= 0 && value.count <= RoundedDecimal::kMaxCount);
    wchar_t digits[RoundedDecimal::kMaxCount];
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
    decimals = std::clamp(RoundedDecimal::kMaxCount - value.point, 0, decimals);
    if (value.point >= 1)
        putDigits(std::min(value.point, room()));
    else
        *p++ = L'0';
    // A point at the limit would be the last character: 1e123 to one place.
    decimals = std::min(decimals, room() - 1);
    if (decimals > 0) {
        *p++ = L'.';
        const int zeros = std::clamp(-value.point, 0, decimals);
        p = std::fill_n(p, zeros, L'0');
        putDigits(decimals - zeros);
    }
    return static_cast<int>(p - out);
}

int writeFixed(wchar_t* out, double value, int decimals, bool plus) {
    assert(decimals >= 0);
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
        const RoundedDecimal rounded =
            roundedDecimal(magnitude, {DigitRequest::kPlaces, Rule::kAwayFromZero, decimals});
        const bool negative = isBelowZero(value) && rounded.digits != 0;
        if (plus && !negative)
            *p++ = L'+';
        p += writeFixed(p, negative, rounded, decimals);
    }
    return static_cast<int>(p - out);
}

int writeScientific(wchar_t* out, double value, int decimals) {
    assert(decimals >= 0);
    if (!std::isfinite(value))
        return writeNotFinite(out, value);
    decimals = std::min(decimals, kMaxPrecision);
    const double magnitude = std::fabs(value);
    RoundedDecimal rounded{};
    if (!tryRoundedFixedPoint(magnitude, decimals + 1, rounded))
        rounded = roundedDecimal(magnitude, {DigitRequest::kSignificant, Rule::kAwayFromZero, decimals + 1});
    *out = L'-';
    wchar_t* p = out + (isBelowZero(value) ? 1 : 0);
    // The first digit moves to before the point.
    writeDigits(p + 1, rounded.digits, rounded.count);
    p[0] = rounded.count > 0 ? p[1] : L'0';
    p[1] = L'.';
    const int shown = std::min(decimals, RoundedDecimal::kMaxCount - 1);
    if (shown >= rounded.count)
        std::fill_n(p + 1 + std::max(rounded.count, 1), shown + 1 - std::max(rounded.count, 1), L'0');
    p += shown > 0 ? 2 + shown : 1;
    *p++ = L'E';
    *p++ = rounded.point < 1 ? L'-' : L'+';
    const auto exponent = static_cast<unsigned>(std::abs(rounded.point - 1));
    *p++ = static_cast<wchar_t>(L'0' + exponent / 100);
    writeDigitPair(p, exponent % 100);
    return static_cast<int>(p + 2 - out);
}

int shortenExponent(wchar_t* text, int length) {
    constexpr int kExponentLength = 5;
    wchar_t* const letter = text + length - kExponentLength;
    if (length <= kExponentLength || *letter != L'E')
        return length;
    const bool isShort = letter[2] == L'0';
    letter[2] = isShort ? letter[3] : L'9';
    letter[3] = isShort ? letter[4] : L'9';
    return length - 1;
}

int writeNotFinite(wchar_t* out, double value) {
    const std::wstring_view text = std::isnan(value) ? L"nan" : value < 0 ? L"-inf" : L"inf";
    text.copy(out, text.size());
    return static_cast<int>(text.size());
}

} // namespace tq::detail

unsigned formatScienceDoubleUtil(double value, wchar_t letter, int precision, bool plus, wchar_t* text) {
    const int decimals = std::min(precision, tq::detail::kMaxPrecision);
    // Bits compare as magnitudes do, and tell subnormals from 0 also where the processor's mode does not. 1e-4 is no
    // double, but there is none between it and the nearest one, so the comparison is exact.
    const std::uint64_t magnitude = tq::detail::bitsOf(value) & ~tq::detail::kSignBit;
    constexpr std::uint64_t kSmallest = tq::detail::bitsOf(1e-4);
    constexpr std::uint64_t kLimit = tq::detail::bitsOf(1e5);
    const bool fixedForm =
        letter == L'f' || (letter != L'e' && (magnitude - kSmallest < kLimit - kSmallest || magnitude == 0));
    return static_cast<unsigned>(fixedForm ? tq::detail::writeFixed(text, value, decimals, plus)
                                           : tq::detail::writeScientific(text, value, decimals));
}

int FormatScienceDoubleAndOutputString(wchar_t* out, int size, const double& value, int precision) {
    if (out == nullptr || size < 1)
        return -1;
    wchar_t text[tq::detail::kNumberRoom];
    const int length = tq::detail::writeFixed(text, value, std::max(precision, 0), false);
    const bool fits = length < size;
    std::copy_n(text, fits ? length : 0, out);
    out[fits ? length : 0] = L'\0';
    return fits ? length : -1;
}
