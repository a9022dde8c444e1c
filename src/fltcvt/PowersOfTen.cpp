#include "fltcvt/PowersOfTen.h"

#include "fltcvt/WideMath.h"

#include <bit>

namespace tq::detail {

namespace {

// A non-negative integer of fixed size, least significant word first; 5^342 takes 795 bits.
constexpr std::size_t kWords = 16;
using Words = std::array<std::uint64_t, kWords>;

constexpr void multiplyByFive(Words& words) {
    std::uint64_t carry = 0;
    for (std::uint64_t& word : words) {
        const UInt128 product = UInt128{word} * 5 + carry;
        word = static_cast<std::uint64_t>(product);
        carry = static_cast<std::uint64_t>(product >> 64);
    }
}

constexpr void divideByFive(Words& words) {
    std::uint64_t rest = 0;
    for (std::size_t i = kWords; i-- > 0;) {
        const UInt128 dividend = UInt128{rest} << 64 | words[i];
        words[i] = static_cast<std::uint64_t>(dividend / 5);
        rest = static_cast<std::uint64_t>(dividend % 5);
    }
}

// The leading 128 bits; what is cut off is not looked at.
constexpr PowerOfTen leadingBits(const Words& words) {
    std::size_t top = kWords - 1;
    while (words[top] == 0)
        --top;
    const int shift = std::countl_zero(words[top]);
    const auto below = [&](std::size_t distance) { return top >= distance ? words[top - distance] : 0; };
    if (shift == 0)
        return {below(0), below(1)};
    return {below(0) << shift | below(1) >> (64 - shift), below(1) << shift | below(2) >> (64 - shift)};
}

constexpr PowerOfTen roundedUp(PowerOfTen power) {
    const std::uint64_t low = power.low + 1;
    return {power.high + (low == 0 ? 1 : 0), low};
}

// Scaling by powers of two leaves the significant bits alone, so those of 5^k and of 2^1023 / 5^k are wanted. Dividing
// step by step and cutting each time gives the same as cutting once.
constexpr auto computePowers() {
    std::array<PowerOfTen, std::size_t{kLastPower - kFirstPower + 1}> powers{};
    const auto at = [&powers](int k) -> PowerOfTen& { return powers[static_cast<std::size_t>(k - kFirstPower)]; };
    Words words{1};
    for (int k = 0; k <= kLastPower; ++k) {
        at(k) = isExactPower(k) ? leadingBits(words) : roundedUp(leadingBits(words));
        multiplyByFive(words);
    }
    words = {};
    words[kWords - 1] = std::uint64_t{1} << 63;
    for (int k = -1; k >= kFirstPower; --k) {
        divideByFive(words);
        at(k) = roundedUp(leadingBits(words));
    }
    return powers;
}

} // namespace

constexpr decltype(computePowers()) kPowersOfTen = computePowers();

} // namespace tq::detail
