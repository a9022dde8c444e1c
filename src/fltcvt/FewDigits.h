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

/// What is done where half of the bits of a power of ten do not decide.
enum class Effort : std::uint8_t {
    eQuick, ///< Nothing, so that there is no call.
    eFull   ///< All bits are used.
};

template <Effort kEffort>
inline constexpr auto kRounded = kEffort == Effort::eQuick ? scaling::roundedByUpperHalf : scaling::roundedByAllBits;

template <Effort kEffort>
inline bool tryShortest(double v, char* out, DigitLayout& layout) noexcept {
    SeventeenDigits digits;
    if (tryShortestDigits(v, digits)) [[likely]] {
        layout = {writeSeventeen(out, digits.sixteen, digits.last), digits.point};
        return true;
    }
    if constexpr (kEffort == Effort::eFull)
        layout = shortestDigits(v, out);
    return kEffort == Effort::eFull;
}

template <Effort kEffort>
inline bool trySignificant(double v, int count, char* out, DigitLayout& layout) noexcept {
    std::uint64_t digits = 0;
    int exponent = 0;
    if (count > kMaxFastDigits || !tryRoundedDigits<kRounded<kEffort>>(v, count, digits, exponent))
        return false;
    layout.point = exponent + 1;
    layout.count =
        count < kMaxFastDigits ? writeFewDigits(out, digits, count) : writeDigits(out, digits, kMaxFastDigits);
    return true;
}

// `limit` is above the digits accepted.
template <Effort kEffort>
inline bool tryPlaces(double v, int places, std::uint64_t limit, char* out, DigitLayout& layout) noexcept {
    std::uint64_t digits = 0;
    if (!tryRoundedAt<kRounded<kEffort>>(v, places, digits) || digits >= limit)
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

template <Effort kEffort>
inline bool trySignificantOrShorter(double v, int count, char* out, DigitLayout& layout) noexcept {
    if (count <= kDistinctDigits && !isSubnormal(v))
        return trySignificant<kEffort>(v, count, out, layout);
    return tryShortest<kEffort>(v, out, layout) &&
           (layout.count <= count || trySignificant<kEffort>(v, count, out, layout));
}

template <Effort kEffort>
inline bool tryPlacesOrShorter(double v, int places, char* out, DigitLayout& layout) noexcept {
    if (!isSubnormal(v) && tryPlaces<kEffort>(v, places, kDistinctLimit, out, layout))
        return true;
    return tryShortest<kEffort>(v, out, layout) && (std::int64_t{layout.count} - layout.point <= places ||
                                                    tryPlaces<kEffort>(v, places, kAllDigits, out, layout));
}

} // namespace few_digits

/// The digits of a finite `v` above 0 when at most 17 are wanted, or make the number, and the bits that the effort
/// allows decide on them. Needs kDigitWriterRoom bytes of `out`, at least; no terminator. Returns false otherwise.
template <few_digits::Effort kEffort = few_digits::Effort::eQuick>
inline bool tryFewDigits(double v, DigitRequest request, char* out, DigitLayout& layout) noexcept {
    using namespace few_digits;
    switch (request.kind) {
    case DigitRequest::eSignificant:
        return request.orShorter ? trySignificantOrShorter<kEffort>(v, request.count, out, layout)
                                 : trySignificant<kEffort>(v, request.count, out, layout);
    case DigitRequest::ePlaces:
        return request.orShorter ? tryPlacesOrShorter<kEffort>(v, request.count, out, layout)
                                 : tryPlaces<kEffort>(v, request.count, kAllDigits, out, layout);
    default:
        return tryShortest<kEffort>(v, out, layout);
    }
}

} // namespace tq::detail
