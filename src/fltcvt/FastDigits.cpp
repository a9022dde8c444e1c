#include "fltcvt/FastDigits.h"

namespace tq::detail::scaling {

Rounded roundedByAllBits(Normalised v, int power) noexcept {
    const PowerOfTen& scale = powerOfTen(power);
    // The product is scaled by 2^(128 + shift).
    const int shift = -1 - (v.exponent + floorLog2OfPowerOfTen(power));
    if (shift > 64)
        return {0, true}; // the product is below 2^192, so the number below one half
    if (shift < kMinShift)
        return {0, false};
    const UInt192 product = multiply(v.significand, scale.high, scale.low);
    const bool isAllFraction = shift == 64;
    const std::uint64_t integer = isAllFraction ? 0 : product.high >> shift;
    const std::uint64_t fraction =
        isAllFraction ? product.high : product.high << (64 - shift) | product.middle() >> shift;
    if (fraction != kHalf)
        return {integer + (fraction >> 63), true};
    // Between one half and 2^-64 above it. The product may be too large by less than one unit of its middle word.
    const std::uint64_t rest = isAllFraction ? product.middle() : product.middle() << (64 - shift);
    if (isExactPower(power))
        return {integer + ((rest | product.low()) != 0 ? 1 : integer & 1), true};
    return {integer + 1, rest != 0};
}

} // namespace tq::detail::scaling
