#pragma once

#include "fltcvt/DigitRequest.h"

#include <cassert>
#include <cstdint>

namespace tq::detail {

/// How many digits the request takes from a number whose decimal point is after digit `point`; negative where the last
/// place wanted lies before the first digit.
constexpr std::int64_t wantedDigits(DigitRequest request, int point) noexcept {
    return request.kind == DigitRequest::kPlaces ? std::int64_t{request.count} + point : request.count;
}

/// Adds one in the last place. Nines at the end become zeros, and so disappear; where all were nines, a 1 is left: 9.99
/// to two digits becomes 1 with the point one place further.
inline void addOneInLastPlace(char* digits, DigitLayout& layout) noexcept {
    while (layout.count > 0 && digits[layout.count - 1] == '9')
        --layout.count;
    if (layout.count > 0) {
        ++digits[layout.count - 1];
    } else {
        digits[layout.count++] = '1';
        ++layout.point;
    }
}

/// Rounds the exact digits of `layout`, in place, as requested, and drops the zeros at the end. `isMore` says that
/// digits other than 0 follow; there are more digits than wanted then. For a number that rounds to nothing `point` is
/// moved to the last place wanted.
inline void roundDigits(char* digits, bool isMore, DigitRequest request, DigitLayout& layout) noexcept {
    const std::int64_t wanted = wantedDigits(request, layout.point);
    assert(!isMore || wanted < layout.count);
    if (wanted < layout.count) {
        const int kept = static_cast<int>(wanted < 0 ? 0 : wanted);
        const char next = digits[kept];
        for (int i = kept + 1; next == '5' && i < layout.count && !isMore; ++i)
            isMore = digits[i] != '0';
        const bool isTieUp =
            request.rule == Rule::kAwayFromZero || (kept > 0 && (digits[kept - 1] & 1) != 0); // the digit is odd
        const bool isUp = wanted >= 0 && (next > '5' || (next == '5' && (isMore || isTieUp)));
        layout.count = kept;
        if (isUp)
            addOneInLastPlace(digits, layout);
    }
    while (layout.count > 0 && digits[layout.count - 1] == '0')
        --layout.count;
    if (layout.count == 0)
        layout.point = static_cast<int>(layout.point - wanted);
}

} // namespace tq::detail
