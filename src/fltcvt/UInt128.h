#pragma once

#include <cstdint>

namespace tq::detail {

__extension__ using UInt128 = unsigned __int128;

/// A number of 192 bits.
struct UInt192 {
    std::uint64_t high;
    UInt128 rest;

    constexpr std::uint64_t middle() const noexcept { return static_cast<std::uint64_t>(rest >> 64); }
    constexpr std::uint64_t low() const noexcept { return static_cast<std::uint64_t>(rest); }

    constexpr UInt192 operator+(const UInt192& other) const noexcept {
        const UInt128 sum = rest + other.rest;
        return {high + other.high + (sum < rest ? 1 : 0), sum};
    }
    constexpr UInt192 operator-(const UInt192& other) const noexcept {
        return {high - other.high - (rest < other.rest ? 1 : 0), rest - other.rest};
    }
};

/// a * (high * 2^64 + low).
constexpr UInt192 multiply(std::uint64_t a, std::uint64_t high, std::uint64_t low) noexcept {
    const UInt128 lower = UInt128{a} * low;
    const UInt128 upper = UInt128{a} * high + static_cast<std::uint64_t>(lower >> 64);
    return {static_cast<std::uint64_t>(upper >> 64), upper << 64 | static_cast<std::uint64_t>(lower)};
}

} // namespace tq::detail
