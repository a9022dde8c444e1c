#include "format/Conversions.h"

#include "format/DigitText.h"

#include <algorithm>
#include <cwchar>

namespace {

struct IntegerValue {
    std::uint64_t magnitude;
    unsigned base;
    bool negative;
};

IntegerValue signedValue(std::int64_t value) {
    const auto bits = static_cast<std::uint64_t>(value);
    return {value < 0 ? 0 - bits : bits, 10, value < 0};
}

IntegerValue fetchInteger(wchar_t letter, int number, tq::detail::ArgumentSource& arguments) {
    switch (letter) {
    case L'd':
    case L'i':
        return signedValue(arguments.asInt(number));
    case L'D':
    case L'I':
        return signedValue(arguments.asInt64(number));
    case L'u':
        return {arguments.asUnsigned(number), 10, false};
    case L'o':
        return {arguments.asUnsigned(number), 8, false};
    case L'b':
        return {arguments.asUnsigned(number), 2, false};
    case L'U':
        return {static_cast<std::uint64_t>(arguments.asInt64(number)), 10, false};
    case L'O':
        return {static_cast<std::uint64_t>(arguments.asInt64(number)), 8, false};
    case L'B':
        return {static_cast<std::uint64_t>(arguments.asInt64(number)), 2, false};
    case L'X':
        return {static_cast<std::uint64_t>(arguments.asInt64(number)), 16, false};
    default: // x and p, which shows only the low half of a pointer
        return {arguments.asUnsigned(number), 16, false};
    }
}

// The binary digits of 64 bits.
constexpr int kLongestInteger = 64;

// Inserts a decimal point `precision` digits from the right; false when the text outgrows its buffer.
bool writeWithPoint(const IntegerValue& value, unsigned precision, wchar_t* text, int textSize,
                    tq::detail::Rendered& result) {
    // Sign, first zero and point come on top of the digits behind the point.
    constexpr unsigned kFrame = 4;
    if (precision > static_cast<unsigned>(textSize) - kFrame)
        return false;
    wchar_t* const end = text + textSize - 1;
    wchar_t* start = tq::detail::writeBaseBackwards(end, value.magnitude, value.base);
    const auto decimals = static_cast<std::ptrdiff_t>(precision);
    while (end - start <= decimals)
        *--start = L'0';
    std::wmemmove(start - 1, start, static_cast<std::size_t>(end - start - decimals));
    --start;
    *(end - decimals - 1) = L'.';
    if (value.negative)
        *--start = L'-';
    result = {start, static_cast<unsigned>(end - start), true, false};
    return true;
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

bool formatLongUtil(wchar_t letter, int number, tq::detail::ArgumentSource& arguments, bool hasPrecision,
                    unsigned precision, wchar_t* text, int textSize, tq::detail::Rendered& result) {
    const IntegerValue value = fetchInteger(letter, number, arguments);
    if (hasPrecision)
        return writeWithPoint(value, precision, text, textSize, result);
    *text = L'-';
    wchar_t* start = text + (value.negative ? 1 : 0);
    int length = 0;
    if (value.base == 10) {
        length = tq::detail::writeDecimal(start, value.magnitude);
    } else if (value.base == 16 && value.magnitude <= UINT32_MAX) {
        length = tq::detail::writeHexadecimal(start, static_cast<std::uint32_t>(value.magnitude));
    } else {
        wchar_t* const end = text + kLongestInteger;
        text = start = tq::detail::writeBaseBackwards(end, value.magnitude, value.base);
        length = static_cast<int>(end - start);
    }
    result = {text, static_cast<unsigned>(start - text + length), true, false};
    return true;
}

void formatQModeDoubleUtil(const tq::detail::QModeField& mode, int number, tq::detail::ArgumentSource& arguments,
                           unsigned precision, wchar_t* text, int textSize, tq::detail::Rendered& result) {
    using tq::detail::QModeField;
    result = {text, 0, false, false};
    if (mode.kind == QModeField::kNone)
        return;
    const int word = mode.kind == QModeField::kWord ? mode.value : arguments.asInt(mode.value);
    const double value = arguments.asDouble(number);
    FormatUtil::formatQModeDouble(text, textSize, value, word, precision);
    if (*text == L'-' && allDigitsZero(text + 1))
        ++result.start;
    result.length = static_cast<unsigned>(std::wcslen(result.start));
    result.numeric = result.length != 0;
}
