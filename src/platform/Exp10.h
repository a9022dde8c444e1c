#pragma once

#include <cmath>

namespace tq::platform {

/// 10 to the power of `exponent`, within a unit of the last place; infinity or 0 beyond the range of double.
inline double exp10(int exponent) {
#if defined(__APPLE__)
    return ::__exp10(exponent);
#else
    return ::exp10(exponent);
#endif
}

} // namespace tq::platform
