#pragma once

// How numbers become text and text becomes numbers, and which file does it.
//
// From a double to digits. A request asks for the shortest digits that read back, for a number of digits, or for the
// digits up to a place. The ways are tried in this order; each gives the right digits or says that it cannot.
//
//   wanted: characters              wanted: a number, cut to 16 digits
//     tryFastDigits,                  the functions of RoundedDecimal.h
//     then writeManyDigits              |
//       |                               |
//   1   + FastDigits.h                  + RoundedDecimal.h    quick: by half of a power of ten; by two words
//       |                               |
//   2   +------ Schubfach.cpp ----------+                     up to 17 digits, by all bits of a power of ten
//       |                               |
//   3   +------ FixedPoint.cpp ---------+                     multiples of 2^-63 below 2^128, any number of digits
//       |                               |
//   4   +------ LongProduct.cpp --------+                     up to 64 digits, by 256 bits of a power of five
//       |                               |
//   5   +------ SteeleWhite.cpp --------+                     big integers: right for every request
//
// 123.456 to 6 digits takes way 1, 2.5 to one digit way 2, 25 to one digit and 0.1 to 20 places way 3, 5e-324 to 30
// digits way 4, and to 100 digits way 5.
//
//   Schubfach     R. Giulietti, "The Schubfach way to render doubles" (2020): one product with a 128-bit power of ten
//                 (PowersOfTen.h), scaled so that the interval that reads back holds one or two short decimals. The
//                 same product, rounded, gives a wanted number of digits.
//   Steele-White  G. L. Steele, J. L. White, "How to print floating-point numbers accurately" (1990), as improved by
//                 D. M. Gay, "Correctly rounded binary-decimal and decimal-binary conversions" (1990): digit by digit
//                 in exact integers (BigInteger.h, WordArithmetic.h).
//   SWAR          SIMD within a register: sixteen digits become characters, or eight characters a number, all in
//                 parallel in one word or vector (SwarDigits.h, used by NarrowDigits.h; WideDigits.h has tables).
//
// Who lays digits out: Dtoa.cpp; FloatText.cpp with FastText.h (everyday numbers, narrow) and CvtFormatter.cpp; the
// room format with NumberText.cpp.
//
// From text to a double: StrToD.cpp, and the scanner of the room format.
//
//   1  up to 19 digits  EiselLemire.h: one product with a 128-bit power of ten
//   2  more digits      HalfwayComparison.h: the same with the first 19 digits as they are and with one more in
//                       the last place; the double on which both agree is the answer
//   3  undecided        HalfwayComparison.cpp: the text and the middle between two doubles as big integers;
//                       4503599627370496.5 takes this way
//
//   Eisel-Lemire  D. Lemire, "Number parsing at a gigabyte per second" (2021).
//   halfway       W. D. Clinger, "How to read floating point numbers accurately" (1990), and Gay as above: a candidate
//                 is right unless the text lies beyond the middle between it and the next double.

#include <algorithm>
#include <climits>
#include <cstdint>
#include <iterator>

namespace tq::detail {

/// How digits are chosen. All round to nearest; they differ in ties, numbers exactly halfway between two results.
enum class Rule : std::uint8_t {
    kToEven,       ///< Ties go to the even last digit.
    kAwayFromZero, ///< Ties go to the larger result.
    kOrShorter     ///< As kToEven; but the shortest digits instead, where those are not more than the wanted ones.
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

/// Where the point of an infinity or a NaN is said to be.
inline constexpr int kPointOfNoNumber = 9999;
/// No finite double has more significant digits.
inline constexpr int kMaxDigits = 767;
/// Bytes that every function writing digits may use of its output.
inline constexpr int kDigitRoom = kMaxDigits + 100;

/// The digits of a finite `v` above 0 to `out`, which has kDigitRoom bytes, by the ways that need more than
/// tryFastDigits takes at first. No terminator.
DigitLayout writeManyDigits(double v, DigitRequest request, char* out) noexcept;
/// The same for a request that tryFastDigits has refused with full effort.
DigitLayout writeSlowDigits(double v, DigitRequest request, char* out) noexcept;

/// @{
/// The ways that writeSlowDigits tries one after the other; the tests ask each of them. Same output.

/// Any number of digits of a multiple of 2^-63 below 2^128. False for other numbers and for the shortest digits;
/// kOrShorter counts as kToEven: the caller knows that the shortest digits are too many.
bool tryFixedPointDigits(double v, DigitRequest request, char* out, DigitLayout& layout) noexcept;
/// Up to 64 digits of any number, unless a run of zeros or nines leaves the last one in doubt, as in 1e23. For the same
/// requests.
bool tryLongProductDigits(double v, DigitRequest request, char* out, DigitLayout& layout) noexcept;
/// By big integers: slow, and right for every request.
DigitLayout exactDigits(double v, DigitRequest request, char* out) noexcept;
/// @}

} // namespace tq::detail
