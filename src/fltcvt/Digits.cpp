#include "fltcvt/Digits.h"

#include "fltcvt/ExactDigits.h"
#include "fltcvt/FewDigits.h"
#include "fltcvt/FixedPointDigits.h"

namespace tq::detail {

DigitLayout writeManyDigits(double v, DigitRequest request, char* out) {
    DigitLayout layout{};
    return tryFewDigits<few_digits::Effort::eFull>(v, request, out, layout) ||
                   tryFixedPointDigits(v, request, out, layout)
               ? layout
               : exactDigits(v, request, out);
}

} // namespace tq::detail
