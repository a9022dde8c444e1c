#pragma once

#include "fltcvt/PowersOfTen.h"
#include "fltcvt/WideDigits.h"
#include "format/ArgumentSource.h"

#include <TqOsBase/format/Directive.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <climits>
#include <cstdint>
#include <cstring>
#include <cwchar>

namespace tq::detail {

inline constexpr std::array<WideDigitPair, 256> kWideHexPairs = [] {
    constexpr char kDigits[] = "0123456789ABCDEF";
    std::array<WideDigitPair, 256> pairs{};
    for (std::size_t i = 0; i < pairs.size(); ++i)
        pairs[i] = {{static_cast<wchar_t>(kDigits[i / 16]), static_cast<wchar_t>(kDigits[i % 16])}};
    return pairs;
}();

/// The eight digits of a value in hexadecimal.
inline void writeEightHexDigits(wchar_t* out, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
        std::memcpy(out + 2 * i, &kWideHexPairs[value >> (24 - 8 * i) & 0xFF], sizeof(WideDigitPair));
}

/// The same as writeDigits in hexadecimal, for a value below 16^count, count above 0.
inline void writeHexadecimal(wchar_t* out, std::uint64_t value, int count) {
    assert(count > 0 && (count >= kDigitsAtOnce || value >> (4 * count) == 0));
    for (; count > kDigitsAtOnce; --count)
        *out++ = L'0';
    value <<= 4 * (kDigitsAtOnce - count);
    writeEightHexDigits(out, static_cast<std::uint32_t>(value >> 32));
    if (count > kDigitsAtOnce / 2)
        writeEightHexDigits(out + kDigitsAtOnce / 2, static_cast<std::uint32_t>(value));
}

/// The same in any base from 2 to 36, with upper-case letters above 9.
inline void writeInBase(wchar_t* out, std::uint64_t value, int count, unsigned base) {
    assert(base >= 2 && base <= 36);
    while (count-- > 0) {
        const auto digit = static_cast<wchar_t>(value % base);
        out[count] = static_cast<wchar_t>(digit < 10 ? L'0' + digit : L'A' + digit - 10);
        value /= base;
    }
}

/// Number of digits of `value` in a base from 2 to 36, 1 for 0.
inline int digitsInBase(std::uint64_t value, unsigned base) {
    if (base == 10)
        return digitCount(value | 1);
    if (base == 16)
        return static_cast<int>(std::bit_width(value | 1) + 3) / 4;
    int count = 1;
    while ((value /= base) != 0)
        ++count;
    return count;
}

/// An integer whose length is known before it is written.
struct IntegerText {
    std::uint64_t magnitude;
    unsigned base;
    int signs;    ///< 1 for a minus sign; a number, because branches on signs cannot be predicted
    int decimals; ///< digits after an inserted point, -1 without one
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

/// Fetches the argument of an integer letter. With a precision the text gets a decimal point that many digits from
/// the right.
inline tq::detail::IntegerText formatLongUtil(const tq::detail::LetterKind& kind, int number,
                                              tq::detail::ArgumentSource& arguments, bool hasPrecision, int precision) {
    std::uint64_t bits = 0;
    if (kind.parameter == kParameterInt64)
        bits = static_cast<std::uint64_t>(arguments.asInt64(number));
    else if (kind.parameter == kParameterInt)
        bits = static_cast<std::uint64_t>(std::int64_t{arguments.asInt(number)});
    else
        bits = arguments.asUnsigned(number);
    const std::uint64_t sign = bits >> 63 & (kind.isSigned ? 1 : 0);
    const std::uint64_t magnitude = (bits ^ (0 - sign)) + sign;
    tq::detail::IntegerText text{magnitude, kind.base, static_cast<int>(sign), -1,
                                 tq::detail::digitsInBase(magnitude, kind.base)};
    if (hasPrecision) {
        text.decimals = std::max(precision, 0);
        // One digit at least stands before the point.
        text.digits = std::max(text.digits, text.decimals == INT_MAX ? INT_MAX : text.decimals + 1);
    }
    return text;
}
