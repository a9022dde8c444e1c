#pragma once

// The Eisel-Lemire algorithm, after D. Lemire, "Number parsing at a gigabyte per second" (2021): one multiplication by
// a 128-bit power of ten decides nearly always. Here the powers are rounded up, so that the product is an upper bound.

#include "fltcvt/Ieee754.h"
#include "fltcvt/PowersOfTen.h"
#include "fltcvt/UInt128.h"

#include <bit>
#include <cassert>
#include <cstdint>

namespace tq::detail {

/// The bits of a positive double.
struct ReadResult {
    std::uint64_t bits;
    /// False where the number is so close to the middle between this double and the next one that it may be either:
    /// 45035996273704965 * 10^-1, and 1 in 300,000 random numbers.
    bool isCertain;
};

/// The double nearest to significand * 10^exponent, ties to even; infinity and 0 beyond the range. `significand` is
/// above 0.
inline ReadResult nearestDouble(std::uint64_t significand, std::int64_t exponent) noexcept {
    constexpr std::int64_t kLargestExponent = 308;
    constexpr std::uint64_t kHalf = std::uint64_t{1} << 63;
    assert(significand != 0);
    if (exponent > kLargestExponent)
        return {kInfinityBits, true};
    if (exponent < kFirstPower)
        return {0, true}; // even with 19 digits below half the smallest subnormal
    const int power = static_cast<int>(exponent);
    const int zeros = std::countl_zero(significand);
    const PowerOfTen& scale = powerOfTen(power);
    const UInt192 product = multiply(significand << zeros, scale.high, scale.low);

    // The highest bit of the product is its bit 190 or 191; 53 bits from there on make the significand.
    const int upper = static_cast<int>(product.high >> 63);
    int field = kExponentBias + 63 + upper + floorLog2OfPowerOfTen(power) - zeros;
    int drop = 64 - 1 - kFractionBits - 1 + upper;
    if (field >= kExponentMask) // 1.8e308
        return {kInfinityBits, true};
    if (field < 1) { // subnormal: 5e-324
        drop += 1 - field;
        field = 1;
        if (drop > 64)
            return {0, true}; // below half the smallest subnormal: 1e-325
    }
    const std::uint64_t kept = drop < 64 ? product.high >> drop : 0;
    const std::uint64_t rest = drop < 64 ? product.high << (64 - drop) : product.high;
    // The hidden bit adds one to the exponent; so does a carry out of the significand.
    const std::uint64_t bits = (static_cast<std::uint64_t>(field - 1) << kFractionBits) + kept;
    if (rest != kHalf || product.middle() != 0) [[likely]]
        return {bits + (rest >= kHalf ? 1 : 0), true};
    // The product is less than one unit of its middle word too large, so the number may lie below the middle.
    if (!isExactPower(power))
        return {bits, false};
    return {bits + (product.low() != 0 ? 1 : bits & 1), true};
}

} // namespace tq::detail
