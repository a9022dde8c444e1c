#pragma once

/// \file
/// The grammar of the output engine's directives. All of it is constexpr: the engine reads formats with it at run time,
/// and Checked.h at compile time.

#include <TqOsBase/format/FormatUtil.h>

#include <array>
#include <climits>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tq::detail {

/// True for '0' to '9'.
constexpr bool isDecimalDigit(wchar_t c) noexcept {
    return c >= L'0' && c <= L'9';
}

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
constexpr int readNumber(const wchar_t*& p) noexcept {
    std::int64_t number = 0;
    for (; isDecimalDigit(*p); ++p) {
        number = number * 10 + (*p - L'0');
        number = number < INT_MAX ? number : INT_MAX;
    }
    return static_cast<int>(number);
}

/// Reads "n$" at `p` and steps past it; without that nothing is read, and the position is 1.
constexpr int readPosition(const wchar_t*& p) noexcept {
    const wchar_t* end = p;
    const int number = readNumber(end);
    if (end == p || *end != L'$')
        return 1;
    p = end + 1;
    return number;
}

/// Steps past the `*` at `p` and returns the position of its argument. In a format with positions that is the number
/// after it, with or without a `$`, or 1.
constexpr int readArgumentPosition(const wchar_t*& p, bool positional) noexcept {
    ++p;
    if (!positional || !isDecimalDigit(*p))
        return 1;
    const int number = readNumber(p);
    if (*p == L'$')
        ++p;
    return number;
}

/// What the positions in a format amount to.
struct FormatPositions {
    bool any;  ///< Some directive has one.
    int count; ///< Arguments to collect; see FormatUtil::isDefineSelfParaIndex.
};

/// Looks for positions in a terminated format.
constexpr FormatPositions positionsIn(const wchar_t* format) noexcept {
    FormatPositions found{false, 0};
    int introducers = 0;
    int highest = 0;
    for (const wchar_t* p = format; *p != L'\0';) {
        if (p[0] == L'%' && p[1] == L'%') {
            p += 2;
            continue;
        }
        if (*p != L'%' && *p != L'*') {
            ++p;
            continue;
        }
        ++introducers;
        ++p;
        const bool hasDigits = isDecimalDigit(*p);
        const int number = readNumber(p);
        highest = highest > number ? highest : number;
        const bool hasPosition = hasDigits && *p == L'$';
        found.any = found.any || hasPosition;
        found.count = hasPosition ? highest : 0;
        // The character after the digits introduces nothing.
        if (*p != L'\0')
            ++p;
    }
    found.count = found.count < introducers ? found.count : introducers;
    return found;
}

/// Reads digits or `*` at `p`.
constexpr CountField readCount(const wchar_t*& p, bool positional) noexcept {
    if (*p == L'*')
        return {true, readArgumentPosition(p, positional)};
    return {false, readNumber(p)};
}

/// What a letter stands for.
struct LetterKind {
    std::int8_t parameter; ///< the FormatParameters type of its argument, kParameterUnused for one that writes itself
    std::uint8_t base;     ///< of an integer, else 0
    bool isSigned;
};

inline constexpr std::array<LetterKind, 128> kLetterKinds = [] {
    std::array<LetterKind, 128> table{};
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

constexpr const LetterKind* kindOf(wchar_t letter) noexcept {
    // NOLINTNEXTLINE(bugprone-signed-char-misuse): no char; a negative one is meant to be beyond the table.
    const auto index = static_cast<std::size_t>(letter);
    return &kLetterKinds[index < kLetterKinds.size() ? index : 0];
}

constexpr bool isUnitLetter(wchar_t letter) noexcept {
    return letter == L'q' || letter == L'Q';
}

/// Bits of one word, because single bytes that are stored one by one and read together make the processor wait.
enum DirectiveFlag : unsigned { kPlus = 1, kLeftJustify = 2, kZeroPad = 4, kHasPrecision = 8 };

/// What stands between `%` and the text that follows, the letter 0 when the format ends before it.
struct Directive {
    int position;   ///< 1 when none is given
    unsigned flags; ///< DirectiveFlag
    CountField width;
    CountField precision;
    wchar_t letter;
    const LetterKind* kind; ///< what the letter stands for
};

constexpr bool isLengthLetter(wchar_t c) noexcept {
    return c == L'L' || c == L'h' || c == L'l';
}

/// Reads the flags at `p` and steps past them.
constexpr unsigned readFlags(const wchar_t*& p) noexcept {
    unsigned flags = 0;
    const wchar_t first = *p;
    if (first == L'+' || first == L'-') {
        ++p;
        flags = first == L'+' ? kPlus : kLeftJustify;
        const wchar_t second = first == L'+' ? L'-' : L'+';
        if (*p == second) {
            ++p;
            flags = kPlus | kLeftJustify;
            // After "+-", and only then, a 0 belongs to the width.
            if (first == L'+')
                return flags;
        }
    }
    if (*p == L'0') {
        ++p;
        flags |= kZeroPad;
    }
    return flags;
}

/// Reads the directive whose `%` stands before `p` and steps past its letter. `positional` says that some directive of
/// the format has a position.
constexpr Directive parseDirective(const wchar_t*& p, bool positional) noexcept {
    constexpr int kDefaultPrecision = 6;
    Directive directive{1, 0, {false, 0}, {false, kDefaultPrecision}, *p, kindOf(*p)};
    // Most directives are a letter alone.
    if (directive.kind->parameter != kParameterUnused) {
        ++p;
        return directive;
    }
    if (positional)
        directive.position = readPosition(p);
    if (*p == L'$')
        ++p;
    directive.flags = readFlags(p);
    directive.width = readCount(p, positional);
    if (*p == L'.') {
        ++p;
        directive.flags |= kHasPrecision;
        directive.precision = readCount(p, positional);
    }
    if (isLengthLetter(*p))
        ++p;
    directive.letter = *p;
    directive.kind = kindOf(directive.letter);
    if (directive.letter != L'\0')
        ++p;
    return directive;
}

/// Reads the Q mode word at `p`, after a unit letter, and steps past it.
constexpr QModeField readQMode(const wchar_t*& p, bool positional) noexcept {
    if (*p == L'*')
        return {QModeField::kArgument, readArgumentPosition(p, positional)};
    if (isDecimalDigit(*p))
        return {QModeField::kWord, static_cast<int>(*p++ - L'0')};
    return {QModeField::kNone, 0};
}

} // namespace tq::detail
