#pragma once

// How numbers become text and text becomes numbers, and which file does it.
//
// A request asks for the shortest digits that read back, for some number of digits, or for the digits up to a place.
// The ways to answer it are tried from the fastest on; each gives the right digits or says that it cannot.
//
//                         characters wanted              a number wanted, cut to 16 digits
//                         tryFastDigits,                 RoundedDecimal.h
//                         then writeManyDigits             |
//                           |                              |
//   1 quick                 | FastDigits.h: half of a      | RoundedDecimal.h: everyday numbers, whose integer part and
//                           | power of ten               | fraction fit a word each
//   2 powers of ten         +-- Schubfach.cpp -------------+ up to 17 digits; not for some ties, such as 2.5e22 to one
//                           |                              |
//   3 fixed point           +-- FixedPoint.cpp ------------+ any number of digits of a multiple of 2^-63 below 2^128
//                           |                              |
//   4 big integers          +-- SteeleWhite.cpp -----------+ right for every request: 5e-324 with 30 digits
//
//   Schubfach       R. Giulietti, "The Schubfach way to render doubles" (2020): one product with a 128-bit power of ten
//                   (PowersOfTen.h), scaled so that the interval that reads back holds one or two short decimals. The
//                   same product, rounded, gives a wanted number of digits.
//   Steele-White    G. L. Steele, J. L. White, "How to print floating-point numbers accurately" (1990), as improved by
//                   D. M. Gay, "Correctly rounded binary-decimal and decimal-binary conversions" (1990): digit by digit
//                   in exact integers (BigInteger.h on WordArithmetic.h).
//   SWAR            SIMD within a register: eight characters to a number and sixteen digits to characters, all in
//                   parallel in one word or vector (SwarDigits.h); NarrowDigits.h and WideDigits.h write with it.
//
// Layout: FloatText.cpp and CvtFormatter.cpp (tqFltToF ..., common narrow texts at once by FastText.h), Dtoa.cpp, and
// the room format, which takes its digits from here too.
//
//                         text to double: StrToD.cpp, and the scanner of the room format
//   1 up to 19 digits       EiselLemire.h
//   2 more digits           HalfwayComparison.h: EiselLemire for the first 19, once as they are and once with one more
//   in
//                           the last place; the same double from both is the answer
//   3 undecided             HalfwayComparison.cpp: text and halfway value as big integers; 9007199254740993 with 30
//                           zeros and a 1 after it takes this way
//
//   Eisel-Lemire    D. Lemire, "Number parsing at a gigabyte per second" (2021): one product with a 128-bit power of
//   ten. halfway         W. D. Clinger, "How to read floating point numbers accurately" (1990), and Gay as above: the
//                   candidate is right unless the text lies beyond the middle between it and the next double.

#include <algorithm>
#include <climits>
#include <cstdint>
#include <iterator>

namespace tq::detail {

/// How digits are chosen: rounded to nearest, and a number exactly halfway between two results
enum class Rule : std::uint8_t {
    kToEven,       ///< becomes the one whose last digit is even,
    kAwayFromZero, ///< becomes the larger one,
    kOrShorter     ///< as kToEven; but the shortest digits instead, where those are not more than the wanted ones.
};

/// Which digits of a number are wanted.
struct DigitRequest {
    enum Kind : std::uint8_t {
        kShortest,    ///< The shortest digits that read back to the number.
        kSignificant, ///< `count` digits, at least 1.
        kPlaces       ///< The digits up to `count` places after the decimal point; `count` may be negative.
    };
    Kind kind;
    Rule rule;
    int count;

    /// The request that a mode of TqGdImpl::dtoa stands for.
    static DigitRequest ofMode(int mode, int ndigits) noexcept {
        static constexpr DigitRequest kModes[] = {{kShortest, Rule::kToEven, 0},       {kShortest, Rule::kToEven, 0},
                                                  {kSignificant, Rule::kToEven, 0},    {kPlaces, Rule::kToEven, 0},
                                                  {kSignificant, Rule::kOrShorter, 0}, {kPlaces, Rule::kOrShorter, 0},
                                                  {kSignificant, Rule::kToEven, 0},    {kPlaces, Rule::kToEven, 0},
                                                  {kSignificant, Rule::kOrShorter, 0}, {kPlaces, Rule::kOrShorter, 0}};
        DigitRequest request = kModes[static_cast<unsigned>(mode) < std::size(kModes) ? mode : 0];
        request.count = std::max(ndigits, request.kind == kSignificant ? 1 : -INT_MAX); // so that it can be negated
        return request;
    }
};

/// Digits without zeros at the end: value = 0.d1d2d3... * 10^point. None, with `point` -places, for a number that
/// rounds to nothing.
struct DigitLayout {
    int count;
    int point;
};

/// No finite double has more significant digits.
inline constexpr int kMaxDigits = 767;
/// Bytes that every function writing digits may use of its output.
inline constexpr int kDigitRoom = kMaxDigits + 100;

/// The digits of a finite `v` above 0 to `out`, which has kDigitRoom bytes, by the ways that need more than
/// tryFastDigits takes at first. No terminator.
DigitLayout writeManyDigits(double v, DigitRequest request, char* out) noexcept;

/// @{
/// The ways that writeManyDigits tries last, for itself and for the tests. Same output.

/// Any number of digits of a multiple of 2^-63 below 2^128. False for other numbers and for the shortest digits;
/// kOrShorter counts as kToEven: the caller knows that the shortest digits are too many.
bool tryFixedPointDigits(double v, DigitRequest request, char* out, DigitLayout& layout) noexcept;
/// By big integers: slow, and right for every request.
DigitLayout exactDigits(double v, DigitRequest request, char* out) noexcept;
/// @}

} // namespace tq::detail
