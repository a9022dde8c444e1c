#include "fltcvt/Digits.h"

#include "fltcvt/ExactDigits.h"
#include "fltcvt/FixedPointDigits.h"

namespace tq::detail {

DigitLayout writeManyDigits(double v, DigitRequest request, char* out) {
    DigitLayout layout{};
    return tryFixedPointDigits(v, request, out, layout) ? layout : exactDigits(v, request, out);
}

} // namespace tq::detail
