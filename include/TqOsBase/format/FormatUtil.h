#pragma once

/// \file
/// Formatted text into the caller's buffer, and the writers of lengths and angles.

#include <TqOsBase/Export.h>

#include <cstdarg>
#include <cstdint>

/// Kinds of a collected argument, the values of FormatParameters::type.
constexpr std::int32_t kParameterUnused = 0;    ///< named by no directive, not fetched
constexpr std::int32_t kParameterInt = 1;       ///< an int
constexpr std::int32_t kParameterUnsigned = 2;  ///< an unsigned int
constexpr std::int32_t kParameterInt64 = 3;     ///< 64 bits, signed or not
constexpr std::int32_t kParameterDouble = 4;    ///< a double
constexpr std::int32_t kParameterCharacter = 5; ///< an int
constexpr std::int32_t kParameterString = 6;    ///< a const wchar_t*

/// One collected argument of a format with positions.
struct FormatParameters {
    /// The value, as the type says.
    union Value {
        std::int32_t asInt;         ///< also a character
        std::uint32_t asUnsigned;   ///< kParameterUnsigned
        std::int64_t asInt64;       ///< kParameterInt64
        std::uint64_t asUnsigned64; ///< the same without sign
        double asDouble;            ///< kParameterDouble
        const wchar_t* asString;    ///< not owned, may be null
    };
    std::int32_t type; ///< one of the kinds above
    Value value;       ///< 0 for an unused one
};

/// The parts of the output engine that other code may use by themselves. All are static and reentrant; those that
/// show lengths or angles read the process-wide unit settings.
class TQ_API FormatUtil {
public:
    /// OutputWithFormat on a buffer whose address does not move: the same arguments, results and failures.
    static int outputStringWithFormat(wchar_t* buffer, int capacity, const wchar_t* format, ...);

    /// Moves `count` characters of `src` to *out, advances *out by count and writes a 0 there, when 0 < count <
    /// capacity; otherwise writes only a 0 at *out. Returns 0 when count < capacity, else -1. With a null pointer or a
    /// capacity below 1 nothing is written and the result is -1; `src` may be null when count is 0, and it may overlap
    /// the destination.
    static int StringCopy(wchar_t** out, int capacity, const wchar_t* src, unsigned count);

    /// Writes `count` copies of `ch` at *out in runs of at most 30, each of which needs to be shorter than the room
    /// left, advances *out past them and writes a 0 there. Returns 0, or -1 at the first run that does not fit; the
    /// earlier ones stay. A negative count, null pointer or capacity below 1 writes nothing and returns -1.
    static int fillStringWithBlankChar(wchar_t** out, int capacity, wchar_t ch, int count);

    /// Whether a directive of `format` has a position (`n$`). Stores the number of arguments to collect. That is 0 when
    /// the last introducer (a `%` or `*`; "%%" is none) has no position; otherwise the number of introducers, or the
    /// highest position when that is smaller. A null format has no position; a null `count` is not stored to.
    static bool isDefineSelfParaIndex(int* count, const wchar_t* format);

    /// Types the `count` elements of `params` after the directives of `format`, then fetches their values from a copy
    /// of `args` in the order of their numbers; an element that no directive names is not fetched and becomes 0.
    /// Numbers above count are ignored. Always true; does nothing with a null pointer or a count below 1.
    static bool valist2FormatParameters(va_list args, FormatParameters* params, const wchar_t* format, int count);

    /// Writes `value` to `text` (66 characters suffice) and returns the length. A negative base means signed, with a
    /// "-" before a negative value; its magnitude is the base, taken into 2 to 36. Digits above 9 are upper-case
    /// letters. `ignored` has no effect.
    static int formatLong(wchar_t* text, long value, int ignored, int base);

    /// The tables of powers of ten and of rounding constants are constants of the library: there is nothing left to
    /// build at run time, and calling this is never needed.
    static void initializeConstVar();

    /// Replaces a finite value other than 0 by its mantissa, from 1 to below 10 with its sign, and returns the decimal
    /// exponent. Zero, infinity and NaN stay and give 0. The mantissa may be off by a few units of its last place.
    static int scaleDoubleToScience(long double* value);

    /// Adds half a unit of decimal `precision` to the mantissa of a value with this exponent, for cutting it there:
    /// 5 * 10^-k to the magnitude with k = precision + exponent + 1, a trace more so that halves go away from zero.
    /// With a negative k nothing is added. From k = 21 on nothing is added either, except where the exponent is above
    /// 0: there it is half of the table's last entry. Returns 1 when the sum reached 10 and was divided by 10 (the
    /// exponent rises by one), else 0. A negative mantissa smaller than the constant loses its sign.
    static int roundScienceDouble(long double* mantissa, int precision, int exponent);

    /// Writes mantissa * 10^(integerDigits - 1) in fixed notation, cut after `precision` decimals and after 16 digits
    /// of the mantissa, and returns the length. A mantissa below 1 has zeros for its first digits, which are written as
    /// the others are ("000.0" for 0 with 3 integer digits). The length is at most 125, and below `size` when that is
    /// above 0. Digits past the 16th are 0; a point with nothing after it is left out. A negative precision counts as
    /// 0; infinity and NaN give `inf`, `-inf`, `nan`; a mantissa outside (-10, 10) is shown as nines.
    static int formatScienceDouble(wchar_t* out, long double mantissa, int integerDigits, int precision, int size);

    /// Writes `value` as the Q mode word `mode` (QMode.h) and the unit settings say, in at most `size` characters, the
    /// 0 included; what does not fit is cut off the whole text. A length longer than `maxLength` falls back to
    /// scientific notation (which may still be longer); an angle loses digits instead. Keeps the minus sign of a text
    /// whose digits are all 0; the directive drops it.
    static void formatQModeDouble(wchar_t* out, int size, double value, int mode, unsigned maxLength);

    /// The unit mode and precision that the settings give for a Q type and its flags (QMode.h). A negative precision
    /// becomes 0; a type outside 0 to 3 gets the linear pair.
    static void convertQTypeToAppType(int& precision, int& unitMode, int qType, int flags);
};
