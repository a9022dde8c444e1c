#pragma once

#include <bit>
#include <cstdint>
#include <limits>

namespace tq::detail {

inline constexpr int kFractionBits = 52;
inline constexpr int kExponentMask = 0x7FF;
inline constexpr std::uint64_t kHiddenBit = std::uint64_t{1} << kFractionBits;
inline constexpr std::uint64_t kSignBit = std::uint64_t{1} << 63;
inline constexpr int kExponentBias = 1023;
/// The double 1.0.
inline constexpr std::uint64_t kOneBits = std::uint64_t{kExponentBias} << kFractionBits;
inline constexpr std::uint64_t kInfinityBits = std::uint64_t{kExponentMask} << kFractionBits;
/// A subnormal is a multiple of 2^kMinExponent.
inline constexpr int kMinExponent = -1074;

static_assert(std::numeric_limits<double>::is_iec559 && sizeof(double) == sizeof(std::uint64_t));

constexpr std::uint64_t bitsOf(double v) noexcept {
    return std::bit_cast<std::uint64_t>(v);
}

/// The biased exponent.
inline int exponentField(double v) noexcept {
    return static_cast<int>(bitsOf(v) >> kFractionBits) & kExponentMask;
}

inline bool isFinite(double v) noexcept {
    return exponentField(v) != kExponentMask;
}

/// v < 0, also where the processor takes subnormals for 0.
inline bool isBelowZero(double v) noexcept {
    return bitsOf(v) - kSignBit - 1 < kInfinityBits;
}

/// The magnitude of a finite double as significand * 2^exponent; the significand has 53 bits, fewer for a subnormal.
struct DoubleParts {
    std::uint64_t significand;
    int exponent;

    explicit DoubleParts(double v) noexcept : significand(bitsOf(v) & (kHiddenBit - 1)), exponent(exponentField(v)) {
        if (exponent != 0)
            significand |= kHiddenBit;
        exponent += kMinExponent - (exponent != 0 ? 1 : 0);
    }

    bool isSubnormal() const noexcept { return significand < kHiddenBit; }
    /// True for the powers of two whose lower neighbour is half as far away as the upper one.
    bool isLowerNeighbourCloser() const noexcept { return significand == kHiddenBit && exponent > kMinExponent; }
};

} // namespace tq::detail
