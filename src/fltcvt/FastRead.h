#pragma once

#include <cstdint>

namespace tq::detail {

/// The bits of a positive double.
struct ReadResult {
    std::uint64_t bits;
    /// False when the number is so close to the middle between this double and the next one that it may be either.
    bool isCertain;
};

/// The double nearest to significand * 10^exponent, ties to even; infinity and 0 beyond the range. `significand` is
/// above 0.
ReadResult nearestDouble(std::uint64_t significand, std::int64_t exponent) noexcept;

} // namespace tq::detail
