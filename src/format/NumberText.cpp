#include "format/NumberText.h"

#include "format/DecimalPowers.h"
#include "format/DigitText.h"

#include <TqOsBase/format/OutputWithFormat.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <string_view>

namespace tq::detail {

namespace {

// A precision beyond this many digits changes no text.
constexpr int kMaxPrecision = 2000;

// Digits of a number from the first one on, zeros after its last.
class DigitSource {
public:
    explicit DigitSource(const RoundedDecimal& value) {
        m_first = writeDecimalBackwards(m_digits + kMaxSignificantDigits, value.digits);
        if (value.count == 0)
            m_first = m_digits + kMaxSignificantDigits;
    }

    wchar_t* copy(wchar_t* out, int count) {
        const int there = std::min(count, static_cast<int>(m_digits + kMaxSignificantDigits - m_first));
        for (int i = 0; i < there; ++i)
            out[i] = m_first[i];
        m_first += there;
        return std::fill_n(out + there, count - there, L'0');
    }

private:
    wchar_t m_digits[kMaxSignificantDigits];
    wchar_t* m_first;
};

} // namespace

int writeFixed(wchar_t* out, bool negative, const RoundedDecimal& value, int decimals, int limit) {
    wchar_t* p = out;
    if (negative)
        *p++ = L'-';
    DigitSource digits(value);
    const int integerDigits = value.exponent + 1;
    decimals = std::clamp(kMaxSignificantDigits - integerDigits, 0, decimals);
    if (integerDigits >= 1) {
        p = digits.copy(p, std::min(integerDigits, limit - static_cast<int>(p - out)));
    } else {
        *p++ = L'0';
    }
    // A point at the limit would be the last character.
    decimals = std::min(decimals, limit - static_cast<int>(p - out) - 1);
    if (decimals > 0) {
        *p++ = L'.';
        const int zeros = std::clamp(-integerDigits, 0, decimals);
        p = std::fill_n(p, zeros, L'0');
        p = digits.copy(p, decimals - zeros);
    }
    return static_cast<int>(p - out);
}

int writeFixed(wchar_t* out, double value, int decimals, bool plus) {
    wchar_t* p = out;
    decimals = std::min(decimals, kMaxPrecision);
    if (!std::isfinite(value)) {
        if (plus && value > 0)
            *p++ = L'+';
        p += writeNotFinite(p, value);
    } else {
        const RoundedDecimal rounded = roundToDecimals(std::fabs(value), decimals);
        const bool negative = value < 0 && rounded.digits != 0;
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
    const RoundedDecimal rounded = roundToSignificant(std::fabs(value), decimals + 1);
    wchar_t* p = out;
    if (value < 0)
        *p++ = L'-';
    DigitSource digits(rounded);
    p = digits.copy(p, 1);
    if (decimals > 0) {
        *p++ = L'.';
        p = digits.copy(p, std::min(decimals, kMaxSignificantDigits - 1));
    }
    *p++ = L'E';
    *p++ = rounded.exponent < 0 ? L'-' : L'+';
    const int exponent = std::abs(rounded.exponent);
    *p++ = static_cast<wchar_t>(L'0' + exponent / 100);
    std::memcpy(p, &kDigitPairs[static_cast<std::size_t>(exponent % 100)], sizeof(DigitPair));
    return static_cast<int>(p + 2 - out);
}

int writeNotFinite(wchar_t* out, double value) {
    const std::wstring_view text = std::isnan(value) ? L"nan" : value < 0 ? L"-inf" : L"inf";
    text.copy(out, text.size());
    return static_cast<int>(text.size());
}

} // namespace tq::detail

void formatScienceDoubleUtil(double value, wchar_t conversion, unsigned precision, bool plus, wchar_t* text,
                             unsigned& length) {
    const int decimals = static_cast<int>(std::min<unsigned>(precision, tq::detail::kMaxPrecision));
    const double magnitude = std::fabs(value);
    // No double lies between 10^-4 and its nearest one, so that the comparison is exact.
    const bool fixedForm = conversion != L'e' && ((magnitude >= 1e-4 && magnitude < 1e5) || magnitude == 0);
    length = static_cast<unsigned>(fixedForm ? tq::detail::writeFixed(text, value, decimals, plus)
                                             : tq::detail::writeScientific(text, value, decimals));
}

int FormatScienceDoubleAndOutputString(wchar_t* out, int size, const double& value, int precision) {
    if (out == nullptr || size < 1)
        return -1;
    wchar_t text[tq::detail::kMaxNumberText + 1];
    const int length = tq::detail::writeFixed(text, value, std::max(precision, 0), false);
    const bool fits = length < size;
    std::copy_n(text, fits ? length : 0, out);
    out[fits ? length : 0] = L'\0';
    return fits ? length : -1;
}
