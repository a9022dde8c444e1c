#include "fltcvt/CvtFormatter.h"
#include "fltcvt/DigitRequest.h"
#include "fltcvt/FastDigits.h"
#include "fltcvt/FastText.h"
#include "fltcvt/Ieee754.h"

#include <TqOsBase/fltcvt/FloatText.h>
#include <TqOsBase/memory/Allocation.h>

#include <algorithm>
#include <cstdlib>
#include <exception>

namespace {

using tq::detail::CvtFormatter;
using tq::detail::DigitLayout;
using tq::detail::DigitRequest;
using tq::detail::FastText;
using tq::detail::kPointOfNoNumber;
using tq::detail::Rule;

// The digits of a number as dtoa gives them, without a block of the digit allocator.
struct Digits {
    char text[tq::detail::kDigitRoom];
    int count;
    int point;
    int sign;

    Digits(double d, DigitRequest request) {
        const std::uint64_t bits = tq::detail::bitsOf(d);
        sign = static_cast<int>(bits >> 63);
        if (!tq::detail::isFinite(d)) {
            set(d == d ? "Infinity" : "NaN", kPointOfNoNumber);
        } else if (bits << 1 == 0) {
            set("0", 1);
        } else {
            const double v = std::bit_cast<double>(bits & ~tq::detail::kSignBit);
            DigitLayout layout;
            if (!tq::detail::tryFastDigits(v, request, text, layout))
                layout = tq::detail::writeManyDigits(v, request, text);
            count = layout.count;
            point = layout.point;
        }
    }

private:
    void set(const char* name, int pointOfName) {
        count = static_cast<int>(std::strlen(name));
        std::memcpy(text, name, static_cast<std::size_t>(count));
        point = pointOfName;
    }
};

wchar_t* newText(std::int64_t characters) {
    return static_cast<wchar_t*>(tqMalloc(static_cast<std::size_t>(characters) * sizeof(wchar_t)));
}

DigitRequest placesOrShorter(int nfrac) {
    return {DigitRequest::kPlaces, Rule::kOrShorter, nfrac};
}

DigitRequest significant(int count) {
    return {DigitRequest::kSignificant, Rule::kToEven, std::max(count, 1)};
}

// More digits than any number has are zeros; asking for fewer keeps the sum within range.
int digitsOfE(int nfrac) {
    return std::min(nfrac, tq::detail::kMaxDigits) + 1;
}

// Apart from the fast ways, which need no stack.

[[gnu::noinline]] void writeF(char* buf, double d, int places) {
    const Digits digits(d, placesOrShorter(places));
    CvtFormatter<char>::formatF(buf, digits.text, digits.count, places, digits.point, digits.sign);
}

[[gnu::noinline]] void writeE(char* buf, double d, int places, int expChar) {
    const Digits digits(d, significant(digitsOfE(places)));
    CvtFormatter<char>::formatE(buf, digits.text, digits.count, places, digits.point, digits.sign, expChar);
}

[[gnu::noinline]] void writeG(char* buf, double d, int shown, int expChar, int style) {
    Digits digits(d, significant(shown));
    CvtFormatter<char>::formatG(buf, digits.text, digits.count, shown, digits.point, digits.sign, expChar, style);
}

[[gnu::noinline]] void writeLongE(char* buf, double d, int places, int expChar) {
    if (!FastText::tryLongE(buf, d, places, expChar))
        writeE(buf, d, places, expChar);
}

[[gnu::noinline]] void writeLongG(char* buf, double d, int shown, int expChar, int style) {
    if (!FastText::tryLongG(buf, d, shown, expChar, style))
        writeG(buf, d, shown, expChar, style);
}

} // namespace

void tqFltToF(char* buf, double d, int nfrac) {
    const int places = std::max(nfrac, 0);
    if (!FastText::tryF(buf, d, places)) [[unlikely]]
        writeF(buf, d, places);
}

wchar_t* tqFltToF(double d, int nfrac) {
    const int places = std::max(nfrac, 0);
    const Digits digits(d, placesOrShorter(places));
    wchar_t* const text = newText(std::int64_t{std::abs(digits.point)} + places + digits.count + 3);
    return text == nullptr
               ? nullptr
               : CvtFormatter<wchar_t>::formatF(text, digits.text, digits.count, places, digits.point, digits.sign);
}

void tqFltToE(char* buf, double d, int nfrac, int expChar) {
    const int places = std::max(nfrac, 0);
    if (!FastText::tryE(buf, d, places, expChar)) [[unlikely]]
        writeLongE(buf, d, places, expChar);
}

wchar_t* tqFltToE(double d, int nfrac, int expChar) {
    const int places = std::max(nfrac, 0);
    const Digits digits(d, significant(digitsOfE(places)));
    wchar_t* const text = newText(std::int64_t{places} + digits.count + 8);
    return text == nullptr ? nullptr
                           : CvtFormatter<wchar_t>::formatE(text, digits.text, digits.count, places, digits.point,
                                                            digits.sign, expChar);
}

void tqFltToG(char* buf, double d, int nsig, int expChar, int style) {
    const int shown = std::max(nsig, 0);
    if (!FastText::tryG(buf, d, shown, style)) [[unlikely]]
        writeLongG(buf, d, shown, expChar, style);
}

wchar_t* tqFltToG(double d, int nsig, int expChar, int style) {
    const int shown = std::max(nsig, 0);
    Digits digits(d, significant(shown));
    // A single digit with a zero after its point needs the room of two.
    constexpr int kLeastPoint = 5;
    wchar_t* const text =
        newText(std::int64_t{std::max(digits.point, kLeastPoint)} + std::max(shown, 1) + digits.count + 3);
    return text == nullptr ? nullptr
                           : CvtFormatter<wchar_t>::formatG(text, digits.text, digits.count, shown, digits.point,
                                                            digits.sign, expChar, style);
}

void tqDToStr(char* buf, double d, char fmt, int prec, int style) {
    switch (fmt) {
    case 'e':
    case 'E':
        return tqFltToE(buf, d, prec, fmt);
    case 'f':
        return tqFltToF(buf, d, prec);
    case 'g':
    case 'G':
        return tqFltToG(buf, d, prec, fmt - 2, style);
    default:
        std::terminate();
    }
}

wchar_t* tqDToStr(double d, char fmt, int prec, int style) {
    switch (fmt) {
    case 'e':
    case 'E':
        return tqFltToE(d, prec, fmt);
    case 'f':
        return tqFltToF(d, prec);
    case 'g':
    case 'G':
        return tqFltToG(d, prec, fmt - 2, style);
    default:
        std::terminate();
    }
}

char* _fcvt(double d, int ndigit, int* decpt, int* sign) {
    return ::fcvt(d, ndigit, decpt, sign);
}
