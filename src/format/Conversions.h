#pragma once

#include "format/UnitText.h"

namespace tq::detail {

/// The text of a conversion before padding. It lies in the work buffer, or is the string argument itself.
struct Rendered {
    const wchar_t* start;
    unsigned length;
    bool numeric;     ///< zero padding goes behind a sign
    bool blankPadded; ///< zero padding is done with blanks
};

/// A double with all that decides on its text.
struct DoubleConversion {
    double value;
    wchar_t letter; ///< one of those for doubles; for drawing units `q` or `Q`
    int qMode;      ///< for drawing units, the Q mode word
    int precision;  ///< 0 or more; for drawing units the greatest length
    bool plus;      ///< a `+` before a `f`, and the fixed form of `g`, that has no minus sign
};

/// Characters that renderDouble may write.
inline constexpr int kDoubleRoom = kUnitRoom;
static_assert(kUnitRoom >= kNumberRoom);

/// Writes the text to `out`, which has room for kDoubleRoom characters. Throws std::bad_alloc.
Rendered renderDouble(const DoubleConversion& conversion, wchar_t* out);

} // namespace tq::detail

/// Renders a drawing-unit conversion. Drops the minus sign of a text whose digits, up to an exponent, are all 0.
tq::detail::Rendered formatQModeDoubleUtil(const tq::detail::DoubleConversion& conversion, wchar_t* text);
