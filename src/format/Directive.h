#pragma once

#include "format/DigitText.h"

#include <TqOsBase/format/FormatUtil.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tq::detail {

/// A width or precision: its number, or the argument that holds it.
struct CountField {
    bool isArgument;
    int value; ///< the number, or the position of the argument
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

/// Steps past the `*` at `p` and returns the position of its argument. In a format with positions that is the number
/// after it, with or without a `$`, or 1.
inline int readArgumentPosition(const wchar_t*& p, bool positional) {
    ++p;
    if (!positional || !isDecimalDigit(*p))
        return 1;
    const int number = readNumber(p);
    if (*p == L'$')
        ++p;
    return number;
}

/// Reads digits or `*` at `p`.
inline CountField readCount(const wchar_t*& p, bool positional) {
    if (*p == L'*')
        return {true, readArgumentPosition(p, positional)};
    return {false, readNumber(p)};
}

/// What a letter stands for.
struct Conversion {
    std::int8_t parameter; ///< the FormatParameters type of its argument, kParameterUnused when it takes none
    std::uint8_t base;     ///< of an integer
    bool isSigned;
};

inline constexpr std::array<Conversion, 128> kConversions = [] {
    std::array<Conversion, 128> table{};
    const auto set = [&table](std::string_view letters, std::int32_t parameter, int base = 0, bool isSigned = false) {
        for (const char letter : letters)
            table[static_cast<unsigned char>(letter)] = {static_cast<std::int8_t>(parameter),
                                                         static_cast<std::uint8_t>(base), isSigned};
    };
    set("di", kParameterInt, 10, true);
    set("DI", kParameterInt64, 10, true);
    set("u", kParameterUnsigned, 10);
    set("U", kParameterInt64, 10);
    set("o", kParameterUnsigned, 8);
    set("O", kParameterInt64, 8);
    // Of a pointer only the low 32 bits are shown.
    set("xp", kParameterUnsigned, 16);
    set("X", kParameterInt64, 16);
    set("b", kParameterUnsigned, 2);
    set("B", kParameterInt64, 2);
    set("efgGqQ", kParameterDouble);
    set("c", kParameterCharacter);
    set("s", kParameterString);
    return table;
}();

constexpr const Conversion& conversionOf(wchar_t letter) {
    // NOLINTNEXTLINE(bugprone-signed-char-misuse): no char; a negative one is meant to be beyond the table.
    const auto index = static_cast<std::size_t>(letter);
    return kConversions[index < kConversions.size() ? index : 0];
}

/// One word for all, because single bytes that are stored one by one and read together make the processor wait.
enum DirectiveFlag : unsigned { kPlus = 1, kLeftJustify = 2, kZeroPad = 4, kHasPrecision = 8 };

/// What stands between `%` and the text that follows, the letter 0 when the format ends before it.
struct Directive {
    int position;   ///< 1 when none is given
    unsigned flags; ///< DirectiveFlag
    CountField width;
    CountField precision;
    wchar_t letter;
    const Conversion* conversion; ///< what the letter stands for
};

constexpr bool isLengthLetter(wchar_t c) {
    return c == L'L' || c == L'h' || c == L'l';
}

/// Reads the flags at `p` into the directive and steps past them.
inline void readFlags(const wchar_t*& p, Directive& directive) {
    const wchar_t first = *p;
    if (first == L'+' || first == L'-') {
        ++p;
        directive.flags = first == L'+' ? kPlus : kLeftJustify;
        const wchar_t second = first == L'+' ? L'-' : L'+';
        if (*p == second) {
            ++p;
            directive.flags = kPlus | kLeftJustify;
            // After "+-", and only then, a 0 belongs to the width.
            if (first == L'+')
                return;
        }
    }
    if (*p == L'0') {
        ++p;
        directive.flags |= kZeroPad;
    }
}

/// Reads the directive whose `%` stands before `p` and steps past its letter.
inline Directive parseDirective(const wchar_t*& p, bool positional) {
    constexpr int kDefaultPrecision = 6;
    Directive directive{1, 0, {false, 0}, {false, kDefaultPrecision}, *p, &conversionOf(*p)};
    // Most directives are a letter alone.
    if (directive.conversion->parameter != kParameterUnused) {
        ++p;
        return directive;
    }
    if (positional)
        directive.position = readPosition(p);
    if (*p == L'$')
        ++p;
    readFlags(p, directive);
    directive.width = readCount(p, positional);
    if (*p == L'.') {
        ++p;
        directive.flags |= kHasPrecision;
        directive.precision = readCount(p, positional);
    }
    if (isLengthLetter(*p))
        ++p;
    directive.letter = *p;
    directive.conversion = &conversionOf(directive.letter);
    if (directive.letter != L'\0')
        ++p;
    return directive;
}

/// Reads the Q mode word at `p`, behind the letter, and steps past it.
inline QModeField readQMode(const wchar_t*& p, bool positional) {
    if (*p == L'*')
        return {QModeField::kArgument, readArgumentPosition(p, positional)};
    if (isDecimalDigit(*p))
        return {QModeField::kWord, *p++ - L'0'};
    return {QModeField::kNone, 0};
}

constexpr bool isUnitLetter(wchar_t letter) {
    return letter == L'q' || letter == L'Q';
}

} // namespace tq::detail
