#include "fltcvt/DigitRequest.h"

#include "fltcvt/FastDigits.h"

namespace tq::detail {

DigitLayout writeManyDigits(double v, DigitRequest request, char* out) noexcept {
    DigitLayout layout{};
    return tryFastDigits<Effort::kFull>(v, request, out, layout) ? layout : writeSlowDigits(v, request, out);
}

DigitLayout writeSlowDigits(double v, DigitRequest request, char* out) noexcept {
    DigitLayout layout{};
    return tryFixedPointDigits(v, request, out, layout) || tryLongProductDigits(v, request, out, layout)
               ? layout
               : exactDigits(v, request, out);
}

} // namespace tq::detail
