#pragma once

#include "fltcvt/DigitWriter.h"
#include "fltcvt/Digits.h"
#include "fltcvt/FastDigits.h"
#include "fltcvt/ShortestDigits.h"

namespace tq::detail {

namespace few_digits {

// Two numbers of so many digits are never within one rounding interval of a normal double, so a number of no more
// digits that reads back to the double is the nearest one of that length: rounding finds it too.
inline constexpr int kDistinctDigits = 15;
inline constexpr std::uint64_t kDistinctLimit = kSmallPowersOfTen[kDistinctDigits];
inline constexpr std::uint64_t kAllDigits = kSmallPowersOfTen[kMaxFastDigits];

inline bool isSubnormal(double v) noexcept {
    return exponentField(v) == 0;
}

inline bool writeShortest(double v, char* out, DigitLayout& layout) noexcept {
    SeventeenDigits digits;
    if (tryShortestDigits(v, digits)) [[likely]]
        layout = {writeSeventeen(out, digits.sixteen, digits.last), digits.point};
    else
        layout = shortestDigits(v, out);
    return true;
}

inline bool trySignificant(double v, int count, char* out, DigitLayout& layout) noexcept {
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
inline bool tryPlaces(double v, int places, std::uint64_t limit, char* out, DigitLayout& layout) noexcept {
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

inline bool trySignificantOrShorter(double v, int count, char* out, DigitLayout& layout) noexcept {
    if (count <= kDistinctDigits && !isSubnormal(v))
        return trySignificant(v, count, out, layout);
    writeShortest(v, out, layout);
    return layout.count <= count || trySignificant(v, count, out, layout);
}

inline bool tryPlacesOrShorter(double v, int places, char* out, DigitLayout& layout) noexcept {
    if (!isSubnormal(v) && tryPlaces(v, places, kDistinctLimit, out, layout))
        return true;
    writeShortest(v, out, layout);
    return std::int64_t{layout.count} - layout.point <= places || tryPlaces(v, places, kAllDigits, out, layout);
}

} // namespace few_digits

/// The digits of a finite `v` above 0 when at most 17 are wanted, or make the number, and 128 bits decide on them.
/// Needs kDigitWriterRoom bytes of `out`, at least; no terminator. Returns false otherwise.
inline bool tryFewDigits(double v, DigitRequest request, char* out, DigitLayout& layout) noexcept {
    switch (request.kind) {
    case DigitRequest::eSignificant:
        return request.orShorter ? few_digits::trySignificantOrShorter(v, request.count, out, layout)
                                 : few_digits::trySignificant(v, request.count, out, layout);
    case DigitRequest::ePlaces:
        return request.orShorter ? few_digits::tryPlacesOrShorter(v, request.count, out, layout)
                                 : few_digits::tryPlaces(v, request.count, few_digits::kAllDigits, out, layout);
    default:
        return few_digits::writeShortest(v, out, layout);
    }
}

} // namespace tq::detail
