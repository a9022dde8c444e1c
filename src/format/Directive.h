#pragma once

#include "format/DigitText.h"

#include <cstdint>

namespace tq::detail {

/// A width or precision: its number, or the argument that holds it.
struct CountField {
    bool isArgument;
    int value; ///< the number, or the position of the argument
};

/// What stands between `%` and the text that follows, the letter 0 when the format ends before it.
struct Directive {
    int position; ///< 1 when none is given
    bool plus;
    bool leftJustify;
    bool zeroPad;
    bool hasPrecision;
    CountField width;
    CountField precision;
    wchar_t letter;
};

/// What follows the letter of a drawing-unit directive.
struct QModeField {
    enum Kind : std::uint8_t { kNone, kWord, kArgument };
    Kind kind;
    int value; ///< the word, or the position of the argument that holds it
};

/// Reads decimal digits at `p`, none being 0, and steps past them; a number beyond the range of int becomes its limit.
int readNumber(const wchar_t*& p);

/// Reads digits or `*` at `p`; in a format with positions `*` may be followed by one.
CountField readCount(const wchar_t*& p, bool positional);

/// Reads the directive whose `%` stands before `p` and steps past its letter.
Directive parseDirective(const wchar_t*& p, bool positional);

/// Reads the Q mode word at `p`, behind the letter, and steps past it.
QModeField readQMode(const wchar_t*& p, bool positional);

constexpr bool isUnitLetter(wchar_t letter) {
    return letter == L'q' || letter == L'Q';
}

/// The FormatParameters type of the letter's argument, kParameterUnused when it takes none.
std::int32_t parameterType(wchar_t letter);

} // namespace tq::detail
