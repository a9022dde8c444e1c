#pragma once

#include "format/ArgumentSource.h"
#include "format/DigitText.h"
#include "format/Directive.h"

#include <algorithm>
#include <climits>
#include <cstdint>
#include <cwchar>

namespace tq::detail {

/// An integer whose length is known before it is written.
struct IntegerText {
    std::uint64_t magnitude;
    unsigned base;
    int signs;    ///< 1 for a minus sign, a number because branches on signs are as good as random
    int decimals; ///< digits behind an inserted point, -1 without one
    int digits;   ///< the zeros before them included

    std::int64_t length() const { return std::int64_t{digits} + (decimals >= 0 ? 1 : 0) + signs; }
    /// The same where it is not beyond any buffer.
    unsigned count() const { return static_cast<unsigned>(length()); }

    /// Writes length() characters and may change kDigitsAtOnce more.
    void write(wchar_t* out) const {
        *out = L'-';
        out += signs;
        if (base == 10)
            writeDigits(out, magnitude, digits);
        else if (base == 16)
            writeHexadecimal(out, magnitude, digits);
        else
            writeInBase(out, magnitude, digits, base);
        if (decimals >= 0) {
            wchar_t* const point = out + digits - decimals;
            std::wmemmove(point + 1, point, static_cast<std::size_t>(decimals));
            *point = L'.';
        }
    }
};

} // namespace tq::detail

/// A width or precision, taken from its argument where it is not in the format.
inline int getIntFromFormatStrOrValist(const tq::detail::CountField& field, tq::detail::ArgumentSource& arguments) {
    return field.isArgument ? arguments.asInt(field.value) : field.value;
}

/// Fetches the argument of an integer conversion. With a precision the text gets a decimal point that many digits from
/// the right.
inline tq::detail::IntegerText formatLongUtil(const tq::detail::Conversion& conversion, int number,
                                              tq::detail::ArgumentSource& arguments, bool hasPrecision, int precision) {
    std::uint64_t bits = 0;
    if (conversion.parameter == kParameterInt64)
        bits = static_cast<std::uint64_t>(arguments.asInt64(number));
    else if (conversion.parameter == kParameterInt)
        bits = static_cast<std::uint64_t>(std::int64_t{arguments.asInt(number)});
    else
        bits = arguments.asUnsigned(number);
    const std::uint64_t sign = bits >> 63 & (conversion.isSigned ? 1 : 0);
    const std::uint64_t magnitude = (bits ^ (0 - sign)) + sign;
    tq::detail::IntegerText text{magnitude, conversion.base, static_cast<int>(sign), -1,
                                 tq::detail::digitsInBase(magnitude, conversion.base)};
    if (hasPrecision) {
        text.decimals = std::max(precision, 0);
        // One digit at least stands before the point.
        text.digits = std::max(text.digits, text.decimals == INT_MAX ? INT_MAX : text.decimals + 1);
    }
    return text;
}
