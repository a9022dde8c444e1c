#pragma once

#include <algorithm>
#include <climits>
#include <cstdint>
#include <iterator>

namespace tq::detail {

/// Which digits of a number are wanted. Rounding is to nearest, ties go to the even digit.
struct DigitRequest {
    enum Kind : std::uint8_t {
        eShortest,    ///< The shortest digits that read back to the number.
        eSignificant, ///< `count` digits, at least 1.
        ePlaces       ///< The digits up to `count` places behind the decimal point; `count` may be negative.
    };
    Kind kind;
    bool orShorter; ///< The shortest digits instead, where those are not more than the wanted ones.
    int count;

    /// The request that a mode of TqGdImpl::dtoa stands for.
    static DigitRequest ofMode(int mode, int ndigits) noexcept {
        static constexpr DigitRequest kModes[] = {
            {eShortest, false, 0},   {eShortest, false, 0}, {eSignificant, false, 0}, {ePlaces, false, 0},
            {eSignificant, true, 0}, {ePlaces, true, 0},    {eSignificant, false, 0}, {ePlaces, false, 0},
            {eSignificant, true, 0}, {ePlaces, true, 0}};
        DigitRequest request = kModes[static_cast<unsigned>(mode) < std::size(kModes) ? mode : 0];
        request.count = std::max(ndigits, request.kind == eSignificant ? 1 : -INT_MAX); // so that it can be negated
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

/// The digits of a finite `v` above 0 to `out`, which has kDigitRoom bytes. No terminator. Throws std::bad_alloc.
DigitLayout writeManyDigits(double v, DigitRequest request, char* out);

} // namespace tq::detail
