#include "format/Directive.h"

#include <TqOsBase/format/FormatUtil.h>

#include <climits>

namespace tq::detail {

namespace {

constexpr int kDefaultPrecision = 6;

// Reads "n$" at `p` and steps past it; without that nothing is read, and the position is 1.
int readPosition(const wchar_t*& p) {
    const wchar_t* digits = p;
    const int number = readNumber(p);
    if (p != digits && *p == L'$') {
        ++p;
        return number;
    }
    p = digits;
    return 1;
}

void readFlags(const wchar_t*& p, Directive& directive) {
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

} // namespace

int readNumber(const wchar_t*& p) {
    std::int64_t number = 0;
    for (; isDecimalDigit(*p); ++p) {
        number = number * 10 + (*p - L'0');
        if (number > INT_MAX)
            number = INT_MAX;
    }
    return static_cast<int>(number);
}

CountField readCount(const wchar_t*& p, bool positional) {
    if (*p != L'*')
        return {false, readNumber(p)};
    ++p;
    return {true, positional ? readPosition(p) : 1};
}

Directive parseDirective(const wchar_t*& p, bool positional) {
    Directive directive{1, false, false, false, false, {false, 0}, {false, kDefaultPrecision}, L'\0'};
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
    if (*p == L'L' || *p == L'h' || *p == L'l')
        ++p;
    directive.letter = *p;
    if (directive.letter != L'\0')
        ++p;
    return directive;
}

QModeField readQMode(const wchar_t*& p, bool positional) {
    if (*p == L'*') {
        const CountField word = readCount(p, positional);
        return {QModeField::kArgument, word.value};
    }
    if (isDecimalDigit(*p))
        return {QModeField::kWord, *p++ - L'0'};
    return {QModeField::kNone, 0};
}

std::int32_t parameterType(wchar_t letter) {
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
