#include "format/Conversions.h"

#include "format/DigitText.h"
#include "format/UnitText.h"

#include <algorithm>
#include <climits>
#include <cwchar>

namespace {

using tq::detail::IntegerText;

IntegerText fetchSigned(std::int64_t value) {
    const auto bits = static_cast<std::uint64_t>(value);
    return {value < 0 ? 0 - bits : bits, 10, value < 0, -1, 0};
}

unsigned baseOf(wchar_t letter) {
    switch (letter) {
    case L'b':
    case L'B':
        return 2;
    case L'o':
    case L'O':
        return 8;
    case L'p':
    case L'x':
    case L'X':
        return 16;
    default:
        return 10;
    }
}

// An upper-case letter takes 64 bits; of a pointer only the low 32 are shown.
IntegerText fetchInteger(wchar_t letter, int number, tq::detail::ArgumentSource& arguments) {
    switch (letter) {
    case L'd':
    case L'i':
        return fetchSigned(arguments.asInt(number));
    case L'D':
    case L'I':
        return fetchSigned(arguments.asInt64(number));
    default: {
        const bool isWide = tq::detail::parameterType(letter) == kParameterInt64;
        const auto bits = isWide ? static_cast<std::uint64_t>(arguments.asInt64(number)) : arguments.asUnsigned(number);
        return {bits, baseOf(letter), false, -1, 0};
    }
    }
}

void writeDigitsInBase(wchar_t* out, std::uint64_t value, int count, unsigned base) {
    if (base == 10)
        tq::detail::writeDigits(out, value, count);
    else if (base == 16)
        tq::detail::writeHexadecimal(out, value, count);
    else
        tq::detail::writeInBase(out, value, count, base);
}

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

void tq::detail::IntegerText::writeMagnitude(wchar_t* out) const {
    writeDigitsInBase(out, magnitude, digits, base);
    if (decimals < 0)
        return;
    wchar_t* const point = out + digits - decimals;
    std::wmemmove(point + 1, point, static_cast<std::size_t>(decimals));
    *point = L'.';
}

tq::detail::IntegerText formatLongUtil(wchar_t letter, int number, tq::detail::ArgumentSource& arguments,
                                       bool hasPrecision, int precision) {
    IntegerText text = fetchInteger(letter, number, arguments);
    text.digits = tq::detail::digitsInBase(text.magnitude, text.base);
    if (hasPrecision) {
        text.decimals = std::max(precision, 0);
        // One digit at least stands before the point.
        text.digits = std::max(text.digits, text.decimals == INT_MAX ? INT_MAX : text.decimals + 1);
    }
    return text;
}

void formatQModeDoubleUtil(const tq::detail::QModeField& mode, int number, tq::detail::ArgumentSource& arguments,
                           unsigned precision, wchar_t* text, int textSize, tq::detail::Rendered& result) {
    using tq::detail::QModeField;
    result = {text, 0, false, false};
    if (mode.kind == QModeField::kNone)
        return;
    const int word = mode.kind == QModeField::kWord ? mode.value : arguments.asInt(mode.value);
    const double value = arguments.asDouble(number);
    result.length = tq::detail::formatQMode(text, textSize, value, word, precision);
    if (*text == L'-' && allDigitsZero(text + 1)) {
        ++result.start;
        --result.length;
    }
    result.numeric = result.length != 0;
}
