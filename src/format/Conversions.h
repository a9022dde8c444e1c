#pragma once

#include "format/ArgumentSource.h"
#include "format/Directive.h"

/// Room for the text of one conversion, strings excepted.
inline constexpr int kWorkBufferSize = 2048;

namespace tq::detail {

/// The text of a conversion before padding. It lies in the work buffer, or is the string argument itself.
struct Rendered {
    const wchar_t* start;
    unsigned length;
    bool numeric;     ///< zero padding goes behind a sign
    bool blankPadded; ///< zero padding is done with blanks
};

/// An integer whose length is known before it is written.
struct IntegerText {
    std::uint64_t magnitude;
    unsigned base;
    bool negative;
    int decimals; ///< digits behind an inserted point, -1 without one
    int digits;   ///< the zeros that the point needs before it included

    std::int64_t length() const { return std::int64_t{digits} + (decimals >= 0 ? 1 : 0) + (negative ? 1 : 0); }
    /// Writes all but the sign: length() characters, less one when negative.
    void writeMagnitude(wchar_t* out) const;
};

} // namespace tq::detail

/// A width or precision, taken from its argument where it is not in the format.
inline int getIntFromFormatStrOrValist(const tq::detail::CountField& field, tq::detail::ArgumentSource& arguments) {
    return field.isArgument ? arguments.asInt(field.value) : field.value;
}

/// Fetches the argument of the integer conversion `letter`. With a precision the text gets a decimal point that many
/// digits from the right.
tq::detail::IntegerText formatLongUtil(wchar_t letter, int number, tq::detail::ArgumentSource& arguments,
                                       bool hasPrecision, int precision);

/// Renders a drawing-unit conversion: takes the Q mode word that `mode` describes and then the value. Drops the minus
/// sign of a text whose digits, up to an exponent, are all 0. Without a word the text is empty and no argument is
/// taken.
void formatQModeDoubleUtil(const tq::detail::QModeField& mode, int number, tq::detail::ArgumentSource& arguments,
                           unsigned precision, wchar_t* text, int textSize, tq::detail::Rendered& result);
