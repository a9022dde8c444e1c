#include "fltcvt/PowersOfTen.h"

#include "fltcvt/BigInteger.h"

namespace tq::detail {

namespace {

// The leading 128 bits; what is cut off is not looked at.
constexpr PowerOfTen leadingBits(const BigInteger& number) {
    const int shift = (64 - number.bitCount() % 64) % 64;
    const auto word = [&](int distance) { return number.wordBelowTop(distance); };
    if (shift == 0)
        return {word(0), word(1)};
    return {word(0) << shift | word(1) >> (64 - shift), word(1) << shift | word(2) >> (64 - shift)};
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
    BigInteger number(1);
    for (int k = 0; k <= kLastPower; ++k) {
        at(k) = isExactPower(k) ? leadingBits(number) : roundedUp(leadingBits(number));
        number.multiplyAdd(5, 0);
    }
    number = BigInteger(1);
    number.shiftLeft(1023);
    for (int k = -1; k >= kFirstPower; --k) {
        number.divide(5);
        at(k) = roundedUp(leadingBits(number));
    }
    return powers;
}

} // namespace

constexpr decltype(computePowers()) kPowersOfTen = computePowers();

} // namespace tq::detail
