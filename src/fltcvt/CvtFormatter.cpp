#include "fltcvt/CvtFormatter.h"

#include <algorithm>
#include <cassert>

namespace tq::detail {

namespace {

constexpr int kPadded = 1;
constexpr int kOneDigit = 2;

template <class CharT>
CharT* copy(CharT* out, const char* digits, int count) {
    return count > 0 ? std::copy_n(digits, count, out) : out;
}

template <class CharT>
CharT* zeros(CharT* out, int count) {
    return count > 0 ? std::fill_n(out, count, CharT{'0'}) : out;
}

template <class CharT>
CharT* exponentField(CharT* out, int decpt, int expChar) {
    int value = decpt >= 1 ? decpt - 1 : 1 - decpt;
    *out++ = static_cast<CharT>(expChar);
    // The fourth digit takes the place of the sign. Only infinity and NaN have one: their exponent is 9998.
    *out++ = static_cast<CharT>(value > 999 ? '0' + value / 1000 : decpt >= 1 ? '+' : '-');
    value %= 1000;
    *out++ = static_cast<CharT>('0' + value / 100);
    *out++ = static_cast<CharT>('0' + value / 10 % 10);
    *out++ = static_cast<CharT>('0' + value % 10);
    return out;
}

template <class CharT>
CharT* generalExponent(CharT* out, const char* digits, int ndig, int nsig, int decpt, int expChar, int style) {
    out = copy(out, digits, std::min(ndig, 1));
    const int places = std::max(nsig - 1, 0);
    if (ndig > 1) {
        const int shown = std::min(ndig - 1, places);
        *out++ = '.';
        out = copy(out, digits + 1, shown);
        if (style == kPadded)
            out = zeros(out, places - shown);
    } else if (style == kPadded || style == kOneDigit) {
        *out++ = '.';
        out = zeros(out, style == kPadded ? places : 1);
    }
    return exponentField(out, decpt, expChar);
}

template <class CharT>
CharT* generalBelowOne(CharT* out, const char* digits, int ndig, int nsig, int decpt, int style) {
    *out++ = '0';
    *out++ = '.';
    out = zeros(out, -decpt);
    const int shown = std::min(nsig, ndig);
    out = copy(out, digits, shown);
    return style == kPadded ? zeros(out, nsig - shown) : out;
}

template <class CharT>
CharT* generalFromOne(CharT* out, const char* digits, int ndig, int nsig, int decpt, int style) {
    const int whole = std::min(decpt, ndig);
    out = zeros(copy(out, digits, whole), decpt - whole);
    if (ndig > whole) {
        *out++ = '.';
        return copy(out, digits + whole, std::min(ndig - whole, nsig - decpt));
    }
    if (style <= 0)
        return out;
    *out++ = '.';
    if (style == kOneDigit)
        *out++ = '0';
    return style == kPadded ? zeros(out, nsig - decpt) : out;
}

} // namespace

template <class CharT>
CharT* CvtFormatter<CharT>::formatF(CharT* out, const char* digits, int ndig, int nfrac, int decpt, int sign) {
    assert(ndig >= 0 && nfrac >= 0);
    CharT* p = out;
    if (sign != 0)
        *p++ = '-';
    int before = 0; // digits before the point
    if (decpt < 1) {
        *p++ = '0';
    } else {
        before = std::min(decpt, ndig);
        p = zeros(copy(p, digits, before), decpt - before);
    }
    if (nfrac > 0) {
        *p++ = '.';
        const int gap = std::min(std::max(-decpt, 0), nfrac);
        p = zeros(p, gap);
        const int shown = std::min(ndig - before, nfrac - gap);
        p = zeros(copy(p, digits + before, shown), nfrac - gap - shown);
    }
    *p = 0;
    return out;
}

template <class CharT>
CharT* CvtFormatter<CharT>::formatE(CharT* out, const char* digits, int ndig, int nfrac, int decpt, int sign,
                                    int expChar) {
    assert(ndig >= 1 && nfrac >= 0);
    CharT* p = out;
    if (sign != 0)
        *p++ = '-';
    *p++ = static_cast<CharT>(digits[0]);
    *p++ = '.';
    const int shown = std::min(ndig - 1, nfrac);
    p = zeros(copy(p, digits + 1, shown), nfrac - shown);
    *exponentField(p, decpt, expChar) = 0;
    return out;
}

template <class CharT>
CharT* CvtFormatter<CharT>::formatG(CharT* out, char* digits, int ndig, int nsig, int decpt, int sign, int expChar,
                                    int style) {
    constexpr int kLeastPoint = -3;
    CharT* p = out;
    if (sign != 0)
        *p++ = '-';
    if (style != kPadded)
        while (ndig > 0 && digits[ndig - 1] == '0')
            digits[--ndig] = '\0';
    const bool isZero = ndig == 0 || digits[0] == '0';
    if (isZero && nsig == 0)
        *p++ = '0';
    else if (decpt < kLeastPoint || decpt > nsig)
        p = generalExponent(p, digits, ndig, nsig, decpt, expChar, style);
    else if (decpt <= 0)
        p = generalBelowOne(p, digits, ndig, nsig, decpt, style);
    else
        p = generalFromOne(p, digits, ndig, nsig, decpt, style);
    *p = 0;
    return out;
}

template struct CvtFormatter<char>;
template struct CvtFormatter<wchar_t>;

} // namespace tq::detail
