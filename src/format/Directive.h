#pragma once

#include "format/DigitText.h"

#include <TqOsBase/format/FormatUtil.h>

#include <algorithm>
#include <climits>
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
    bool isBare;  ///< a letter alone
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
inline int readNumber(const wchar_t*& p) {
    std::int64_t number = 0;
    for (; isDecimalDigit(*p); ++p)
        number = std::min<std::int64_t>(number * 10 + (*p - L'0'), INT_MAX);
    return static_cast<int>(number);
}

/// Reads "n$" at `p` and steps past it; without that nothing is read, and the position is 1.
inline int readPosition(const wchar_t*& p) {
    const wchar_t* end = p;
    const int number = readNumber(end);
    if (end == p || *end != L'$')
        return 1;
    p = end + 1;
    return number;
}

/// Reads digits or `*` at `p`; in a format with positions `*` may be followed by one.
inline CountField readCount(const wchar_t*& p, bool positional) {
    if (*p != L'*')
        return {false, readNumber(p)};
    ++p;
    return {true, positional ? readPosition(p) : 1};
}

constexpr bool isLetter(wchar_t c) {
    return (c >= L'a' && c <= L'z') || (c >= L'A' && c <= L'Z');
}

constexpr bool isLengthLetter(wchar_t c) {
    return c == L'L' || c == L'h' || c == L'l';
}

/// Reads the flags at `p` into the directive and steps past them.
inline void readFlags(const wchar_t*& p, Directive& directive) {
    const wchar_t first = *p;
    if (first == L'+' || first == L'-') {
        ++p;
        directive.plus = first == L'+';
        directive.leftJustify = first == L'-';
        const wchar_t second = first == L'+' ? L'-' : L'+';
        if (*p == second) {
            ++p;
            directive.plus = directive.leftJustify = true;
            // After "+-", and only then, a 0 belongs to the width.
            if (first == L'+')
                return;
        }
    }
    if (*p == L'0') {
        ++p;
        directive.zeroPad = true;
    }
}

/// Reads the directive whose `%` stands before `p` and steps past its letter.
inline Directive parseDirective(const wchar_t*& p, bool positional) {
    constexpr int kDefaultPrecision = 6;
    Directive directive{1, true, false, false, false, false, {false, 0}, {false, kDefaultPrecision}, *p};
    // Most directives are a letter alone.
    if (isLetter(directive.letter) && !isLengthLetter(directive.letter)) {
        ++p;
        return directive;
    }
    directive.isBare = false;
    if (positional)
        directive.position = readPosition(p);
    if (*p == L'$')
        ++p;
    readFlags(p, directive);
    directive.width = readCount(p, positional);
    if (*p == L'.') {
        ++p;
        directive.hasPrecision = true;
        directive.precision = readCount(p, positional);
    }
    if (isLengthLetter(*p))
        ++p;
    directive.letter = *p;
    if (directive.letter != L'\0')
        ++p;
    return directive;
}

/// Reads the Q mode word at `p`, behind the letter, and steps past it.
inline QModeField readQMode(const wchar_t*& p, bool positional) {
    if (*p == L'*')
        return {QModeField::kArgument, readCount(p, positional).value};
    if (isDecimalDigit(*p))
        return {QModeField::kWord, *p++ - L'0'};
    return {QModeField::kNone, 0};
}

constexpr bool isUnitLetter(wchar_t letter) {
    return letter == L'q' || letter == L'Q';
}

/// The FormatParameters type of the letter's argument, kParameterUnused when it takes none.
constexpr std::int32_t parameterType(wchar_t letter) {
    switch (letter) {
    case L'd':
    case L'i':
        return kParameterInt;
    case L'b':
    case L'o':
    case L'p':
    case L'u':
    case L'x':
        return kParameterUnsigned;
    case L'B':
    case L'D':
    case L'I':
    case L'O':
    case L'U':
    case L'X':
        return kParameterInt64;
    case L'e':
    case L'f':
    case L'g':
    case L'G':
    case L'q':
    case L'Q':
        return kParameterDouble;
    case L'c':
        return kParameterCharacter;
    case L's':
        return kParameterString;
    default:
        return kParameterUnused;
    }
}

} // namespace tq::detail
