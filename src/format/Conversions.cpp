#include "format/Conversions.h"

#include "fltcvt/DoubleBits.h"
#include "format/DigitText.h"
#include "format/Directive.h"
#include "format/NumberText.h"

#include <cwchar>

namespace {

bool allDigitsZero(const wchar_t* text) {
    bool anyDigit = false;
    for (; *text != L'\0' && *text != L'E' && *text != L'e'; ++text) {
        if (tq::detail::isDecimalDigit(*text)) {
            if (*text != L'0')
                return false;
            anyDigit = true;
        }
    }
    return anyDigit;
}

} // namespace

tq::detail::Rendered formatQModeDoubleUtil(const tq::detail::DoubleConversion& conversion, wchar_t* text) {
    unsigned length =
        tq::detail::formatQMode(text, conversion.value, conversion.qMode, static_cast<unsigned>(conversion.precision));
    if (*text == L'-' && allDigitsZero(text + 1)) {
        --length;
        std::wmemmove(text, text + 1, length);
    }
    // inf and nan, which a large angle becomes too, are the only texts that end so.
    const wchar_t last = length != 0 ? text[length - 1] : L'\0';
    return {text, length, length != 0, last == L'f' || last == L'n'};
}

tq::detail::Rendered tq::detail::renderDouble(const DoubleConversion& conversion, wchar_t* out) {
    if (isUnitLetter(conversion.letter))
        return formatQModeDoubleUtil(conversion, out);
    const unsigned length =
        formatScienceDoubleUtil(conversion.value, conversion.letter, conversion.precision, conversion.plus, out);
    return {out, length, true, !isFinite(conversion.value)};
}
