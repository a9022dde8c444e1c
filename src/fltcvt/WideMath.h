#pragma once

#include <bit>
#include <cstdint>

namespace tq::detail {

__extension__ using UInt128 = unsigned __int128;

/// Number of bits up to the highest one that is set.
constexpr int bitWidth(std::uint64_t value) noexcept {
    return 64 - std::countl_zero(value);
}

/// A number of 192 bits.
struct UInt192 {
    std::uint64_t high, middle, low;

    constexpr UInt192 operator+(const UInt192& other) const noexcept {
        const UInt128 sum = UInt128{low} + other.low;
        const UInt128 carried = UInt128{middle} + other.middle + static_cast<std::uint64_t>(sum >> 64);
        return {high + other.high + static_cast<std::uint64_t>(carried >> 64), static_cast<std::uint64_t>(carried),
                static_cast<std::uint64_t>(sum)};
    }
    constexpr UInt192 operator-(const UInt192& other) const noexcept {
        const UInt128 difference = UInt128{low} - other.low;
        const UInt128 borrowed = UInt128{middle} - other.middle - (static_cast<std::uint64_t>(difference >> 64) & 1);
        return {high - other.high - (static_cast<std::uint64_t>(borrowed >> 64) & 1),
                static_cast<std::uint64_t>(borrowed), static_cast<std::uint64_t>(difference)};
    }
};

/// a * (high * 2^64 + low).
constexpr UInt192 multiply(std::uint64_t a, std::uint64_t high, std::uint64_t low) noexcept {
    const UInt128 lower = UInt128{a} * low;
    const UInt128 upper = UInt128{a} * high + static_cast<std::uint64_t>(lower >> 64);
    return {static_cast<std::uint64_t>(upper >> 64), static_cast<std::uint64_t>(upper),
            static_cast<std::uint64_t>(lower)};
}

} // namespace tq::detail
