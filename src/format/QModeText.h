#pragma once

#include "format/UnitWriter.h"

namespace tq::detail {

/// FormatUtil::formatQModeDouble into a buffer with room for kUnitRoom characters, with the length of the text as its
/// result.
unsigned formatQMode(wchar_t* out, double value, int mode, unsigned maxLength);

} // namespace tq::detail

/// The text of the drawing-unit directive, as formatQMode; drops the minus sign of a text whose digits, up to an
/// exponent, are all 0.
unsigned formatQModeDoubleUtil(wchar_t* text, double value, int mode, unsigned maxLength);
