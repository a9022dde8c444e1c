#include "fltcvt/Digits.h"

#include "fltcvt/DoubleBits.h"
#include "fltcvt/ExactDigits.h"
#include "fltcvt/FixedPointDigits.h"

namespace tq::detail {

namespace {

// Two numbers of so many digits are never within one rounding interval of a normal double, so a number of no more
// digits that reads back to the double is the nearest one of that length: rounding finds it too.
constexpr int kDistinctDigits = 15;
constexpr std::uint64_t kDistinctLimit = kSmallPowersOfTen[kDistinctDigits];
constexpr std::uint64_t kAllDigits = kSmallPowersOfTen[kMaxFastDigits];

bool isSubnormal(double v) noexcept {
    return exponentField(v) == 0;
}

bool writeShortest(double v, char* out, DigitLayout& layout) noexcept {
    const ShortDecimal decimal = shortestDigits(v);
    const int length = digitCount(decimal.digits);
    layout = {writeDigits(out, decimal.digits, length), decimal.exponent + length};
    return true;
}

bool trySignificant(double v, int count, char* out, DigitLayout& layout) noexcept {
    std::uint64_t digits = 0;
    int exponent = 0;
    if (count > kMaxFastDigits || !tryRoundedDigits(v, count, digits, exponent))
        return false;
    layout.point = exponent + 1;
    layout.count =
        count < kMaxFastDigits ? writeFewDigits(out, digits, count) : writeDigits(out, digits, kMaxFastDigits);
    return true;
}

// `limit` is above the digits accepted.
bool tryPlaces(double v, int places, std::uint64_t limit, char* out, DigitLayout& layout) noexcept {
    std::uint64_t digits = 0;
    if (!tryRoundedAt(v, places, digits) || digits >= limit)
        return false;
    if (digits == 0) {
        layout = {0, -places};
        return true;
    }
    const int length = digitCount(digits);
    layout.point = length - places;
    layout.count = length < kMaxFastDigits ? writeFewDigits(out, digits, length) : writeDigits(out, digits, length);
    return true;
}

bool trySignificantOrShorter(double v, int count, char* out, DigitLayout& layout) noexcept {
    if (count <= kDistinctDigits && !isSubnormal(v))
        return trySignificant(v, count, out, layout);
    writeShortest(v, out, layout);
    return layout.count <= count || trySignificant(v, count, out, layout);
}

bool tryPlacesOrShorter(double v, int places, char* out, DigitLayout& layout) noexcept {
    if (!isSubnormal(v) && tryPlaces(v, places, kDistinctLimit, out, layout))
        return true;
    writeShortest(v, out, layout);
    return std::int64_t{layout.count} - layout.point <= places || tryPlaces(v, places, kAllDigits, out, layout);
}

} // namespace

bool tryFewDigits(double v, const DigitRequest& request, char* out, DigitLayout& layout) noexcept {
    switch (request.kind) {
    case DigitRequest::eSignificant:
        return request.orShorter ? trySignificantOrShorter(v, request.count, out, layout)
                                 : trySignificant(v, request.count, out, layout);
    case DigitRequest::ePlaces:
        return request.orShorter ? tryPlacesOrShorter(v, request.count, out, layout)
                                 : tryPlaces(v, request.count, kAllDigits, out, layout);
    default:
        return writeShortest(v, out, layout);
    }
}

DigitLayout writeManyDigits(double v, const DigitRequest& request, char* out) {
    DigitLayout layout{};
    return tryFixedPointDigits(v, request, out, layout) ? layout : exactDigits(v, request, out);
}

} // namespace tq::detail
