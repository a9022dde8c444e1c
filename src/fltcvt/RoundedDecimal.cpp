#include "fltcvt/RoundedDecimal.h"

#include "fltcvt/Ieee754.h"
#include "fltcvt/Schubfach.h"

#include <algorithm>
#include <cassert>

namespace tq::detail {

namespace {

// Of more than seventeen digits, by the first seventeen rounded. Rounding at a later place instead moves the number by
// less than a unit of the seventeenth digit, so the sixteen that are kept stay the same, unless the seventeenth is 0:
// 0.1 to 20 places is undecided here.
bool tryCut(double v, RoundedDecimal& result) noexcept {
    constexpr int kOneMore = RoundedDecimal::kMaxCount + 1;
    std::uint64_t digits = 0;
    int exponent = 0;
    if (!tryRoundedDigits(v, kOneMore, Rule::kToEven, digits, exponent) || digits % 10 == 0)
        return false;
    result = {digits / 10, RoundedDecimal::kMaxCount, exponent + 1};
    return true;
}

// Up to seventeen digits, the last of which is then cut.
bool tryFew(double v, DigitRequest request, RoundedDecimal& result) noexcept {
    if (request.kind == DigitRequest::kSignificant) {
        int exponent = 0;
        if (request.count > kMaxFastDigits ||
            !tryRoundedDigits(v, request.count, request.rule, result.digits, exponent))
            return false;
        result.count = request.count;
        result.point = exponent + 1;
    } else {
        if (!tryRoundedAt(v, request.count, request.rule, result.digits))
            return false;
        result.count = result.digits != 0 ? digitCount(result.digits) : 0;
        result.point = result.count - request.count;
    }
    if (result.count > RoundedDecimal::kMaxCount) {
        result.digits /= 10;
        --result.count;
    }
    return true;
}

RoundedDecimal ofCharacters(double v, DigitRequest request) noexcept {
    char text[kDigitRoom];
    const DigitLayout layout = writeSlowDigits(v, request, text);
    RoundedDecimal result{0, std::min(layout.count, RoundedDecimal::kMaxCount), layout.point};
    for (int i = 0; i < result.count; ++i)
        result.digits = result.digits * 10 + static_cast<unsigned>(text[i] - '0');
    return result;
}

bool isBeyondSeventeenDigits(double v, DigitRequest request) noexcept {
    const int count = request.kind == DigitRequest::kPlaces ? floorLog10(Normalised(v)) + 1 : 0;
    return std::int64_t{request.count} + count > kMaxFastDigits;
}

// Apart from the fast way, which needs no stack.
[[gnu::noinline]] RoundedDecimal roundedManyDigits(double v, DigitRequest request) noexcept {
    if (bitsOf(v) == 0)
        return {0, 0, 1};
    RoundedDecimal result{};
    return isBeyondSeventeenDigits(v, request) && tryCut(v, result) ? result : ofCharacters(v, request);
}

} // namespace

RoundedDecimal roundedDecimal(double v, DigitRequest request) noexcept {
    assert(isFinite(v) && bitsOf(v) < kInfinityBits);
    assert(request.kind != DigitRequest::kShortest && request.rule != Rule::kOrShorter);
    RoundedDecimal result{};
    return bitsOf(v) != 0 && tryFew(v, request, result) ? result : roundedManyDigits(v, request);
}

} // namespace tq::detail
