#include "fltcvt/Digits.h"

#include "fltcvt/DoubleBits.h"
#include "fltcvt/ExactDigits.h"
#include "fltcvt/FixedPointDigits.h"

#include <algorithm>

namespace tq::detail {

namespace {

// Two numbers of so many digits are never within one rounding interval of a normal double, so a number of no more
// digits that reads back to the double is the nearest one of that length: rounding finds it too.
constexpr int kDistinctDigits = 15;
constexpr std::uint64_t kDistinctLimit = kSmallPowersOfTen[kDistinctDigits];

bool isSubnormal(double v) noexcept {
    return exponentField(v) == 0;
}

void dropZeros(ShortDecimal& decimal) noexcept {
    while (decimal.digits % 10 == 0) {
        decimal.digits /= 10;
        ++decimal.exponent;
    }
}

bool trySignificant(double v, int count, ShortDecimal& out) noexcept {
    int exponent = 0;
    if (count > kMaxFastDigits || !tryRoundedDigits(v, count, out.digits, exponent))
        return false;
    out.exponent = exponent - count + 1;
    return true;
}

bool tryPlaces(double v, int places, ShortDecimal& out) noexcept {
    out.exponent = -places;
    return tryRoundedAt(v, places, out.digits);
}

bool trySignificantOrShorter(double v, int count, ShortDecimal& out) noexcept {
    if (count <= kDistinctDigits && !isSubnormal(v))
        return trySignificant(v, count, out);
    out = shortestDigits(v);
    dropZeros(out);
    return digitCount(out.digits) <= count || trySignificant(v, count, out);
}

bool tryPlacesOrShorter(double v, int places, ShortDecimal& out) noexcept {
    if (!isSubnormal(v) && tryPlaces(v, places, out) && out.digits < kDistinctLimit)
        return true;
    out = shortestDigits(v);
    if (-static_cast<std::int64_t>(out.exponent) <= places)
        return true;
    dropZeros(out);
    return -static_cast<std::int64_t>(out.exponent) <= places || tryPlaces(v, places, out);
}

} // namespace

DigitRequest DigitRequest::ofMode(int mode, int ndigits) noexcept {
    constexpr int kModes = 6;
    constexpr int kWithoutEstimate = 4; // modes 6 to 9 are 2 to 5
    const unsigned wanted = static_cast<unsigned>(mode);
    const unsigned plain = wanted < kModes + kWithoutEstimate && wanted >= kModes ? wanted - kWithoutEstimate : wanted;
    switch (plain) {
    case 2:
    case 4:
        return {eSignificant, plain == 4, std::max(ndigits, 1)};
    case 3:
    case 5:
        return {ePlaces, plain == 5, ndigits};
    default:
        return {eShortest, false, 0};
    }
}

bool tryFewDigits(double v, const DigitRequest& request, ShortDecimal& out) noexcept {
    switch (request.kind) {
    case DigitRequest::eSignificant:
        return request.orShorter ? trySignificantOrShorter(v, request.count, out)
                                 : trySignificant(v, request.count, out);
    case DigitRequest::ePlaces:
        return request.orShorter ? tryPlacesOrShorter(v, request.count, out) : tryPlaces(v, request.count, out);
    default:
        out = shortestDigits(v);
        return true;
    }
}

DigitLayout writeManyDigits(double v, const DigitRequest& request, char* out) {
    DigitLayout layout{};
    return tryFixedPointDigits(v, request, out, layout) ? layout : exactDigits(v, request, out);
}

} // namespace tq::detail
