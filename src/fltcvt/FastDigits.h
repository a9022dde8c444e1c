#pragma once

#include "fltcvt/DigitRequest.h"
#include "fltcvt/NarrowDigits.h"
#include "fltcvt/Schubfach.h"

namespace tq::detail {

/// Two numbers of so many digits never lie within one rounding interval of a normal double. So a number of no more
/// digits that reads back to the double is the nearest one of that length, and rounding finds it too.
inline constexpr int kDistinctDigits = 15;
inline constexpr std::uint64_t kDistinctLimit = smallPowerOfTen(kDistinctDigits);
inline constexpr std::uint64_t kAllDigits = smallPowerOfTen(kMaxFastDigits);

inline bool isSubnormal(double v) noexcept {
    return exponentField(v) == 0;
}

/// What is done where half of the bits of a power of ten do not decide.
enum class Effort : std::uint8_t {
    kQuick, ///< Nothing, so that there is no call.
    kFull   ///< All bits are used.
};

template <Effort kEffort>
inline constexpr Scaling& kScaling = kEffort == Effort::kQuick ? roundedByUpperHalf : roundedByAllBits;

template <Effort kEffort>
inline bool tryShortest(double v, char* out, DigitLayout& layout) noexcept {
    SeventeenDigits digits;
    if (tryShortestDigits(v, digits)) [[likely]] {
        layout = {writeSeventeen(out, digits.sixteen, digits.last), digits.point};
        return true;
    }
    if constexpr (kEffort == Effort::kFull)
        layout = shortestDigits(v, out);
    return kEffort == Effort::kFull;
}

template <Effort kEffort>
inline bool trySignificant(double v, int count, Rule rule, char* out, DigitLayout& layout) noexcept {
    std::uint64_t digits = 0;
    int exponent = 0;
    if (count > kMaxFastDigits || !tryRoundedDigits<kScaling<kEffort>>(v, count, rule, digits, exponent))
        return false;
    layout.point = exponent + 1;
    layout.count =
        count < kMaxFastDigits ? writeUpToSixteen(out, digits, count) : writeUpToSeventeen(out, digits, kMaxFastDigits);
    return true;
}

// `limit` is above the digits accepted.
template <Effort kEffort>
inline bool tryPlaces(double v, int places, Rule rule, std::uint64_t limit, char* out, DigitLayout& layout) noexcept {
    std::uint64_t digits = 0;
    if (!tryRoundedAt<kScaling<kEffort>>(v, places, rule, digits) || digits >= limit)
        return false;
    if (digits == 0) { // 0.001 to 2 places
        layout = {0, -places};
        return true;
    }
    const int length = digitCount(digits);
    layout.point = length - places;
    layout.count =
        length < kMaxFastDigits ? writeUpToSixteen(out, digits, length) : writeUpToSeventeen(out, digits, length);
    return true;
}

template <Effort kEffort>
inline bool trySignificantOrShorter(double v, int count, char* out, DigitLayout& layout) noexcept {
    if (count <= kDistinctDigits && !isSubnormal(v)) // 5e-324 to three digits is "5", not "494"
        return trySignificant<kEffort>(v, count, Rule::kToEven, out, layout);
    return tryShortest<kEffort>(v, out, layout) &&
           (layout.count <= count || trySignificant<kEffort>(v, count, Rule::kToEven, out, layout));
}

template <Effort kEffort>
inline bool tryPlacesOrShorter(double v, int places, char* out, DigitLayout& layout) noexcept {
    if (!isSubnormal(v) && tryPlaces<kEffort>(v, places, Rule::kToEven, kDistinctLimit, out, layout))
        return true;
    return tryShortest<kEffort>(v, out, layout) &&
           (std::int64_t{layout.count} - layout.point <= places ||
            tryPlaces<kEffort>(v, places, Rule::kToEven, kAllDigits, out, layout));
}

/// Sends a request to the way that answers it fast. The digits of a finite `v` above 0 where at most 17 are wanted, or
/// make the number, and the bits that the effort allows decide on them; false otherwise. `out` has kDigitWriterRoom
/// bytes or more; no terminator.
template <Effort kEffort = Effort::kQuick>
inline bool tryFastDigits(double v, DigitRequest request, char* out, DigitLayout& layout) noexcept {
    switch (request.kind) {
    case DigitRequest::kSignificant:
        return request.rule == Rule::kOrShorter ? trySignificantOrShorter<kEffort>(v, request.count, out, layout)
                                                : trySignificant<kEffort>(v, request.count, request.rule, out, layout);
    case DigitRequest::kPlaces:
        return request.rule == Rule::kOrShorter
                   ? tryPlacesOrShorter<kEffort>(v, request.count, out, layout)
                   : tryPlaces<kEffort>(v, request.count, request.rule, kAllDigits, out, layout);
    default:
        return tryShortest<kEffort>(v, out, layout);
    }
}

} // namespace tq::detail
