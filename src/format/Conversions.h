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

} // namespace tq::detail

/// A width or precision, taken from its argument where it is not in the format.
inline int getIntFromFormatStrOrValist(const tq::detail::CountField& field, tq::detail::ArgumentSource& arguments) {
    return field.isArgument ? arguments.asInt(field.value) : field.value;
}

/// Renders the integer conversion `letter` into `text`. With a precision a decimal point is
/// inserted that many digits from the right. False when the text has more than textSize - 1 characters.
bool formatLongUtil(wchar_t letter, int number, tq::detail::ArgumentSource& arguments, bool hasPrecision,
                    unsigned precision, wchar_t* text, int textSize, tq::detail::Rendered& result);

/// Renders a drawing-unit conversion: takes the Q mode word that `mode` describes and then the value. Drops the minus
/// sign of a text whose digits, up to an exponent, are all 0. Without a word the text is empty and no argument is
/// taken.
void formatQModeDoubleUtil(const tq::detail::QModeField& mode, int number, tq::detail::ArgumentSource& arguments,
                           unsigned precision, wchar_t* text, int textSize, tq::detail::Rendered& result);
