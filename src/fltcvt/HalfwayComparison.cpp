// Comparison of a decimal with the middle between two doubles, both as integers, after W. D. Clinger, "How to read
// floating point numbers accurately" (1990), and D. M. Gay, "Correctly rounded binary-decimal and decimal-binary
// conversions" (1990).

#include "fltcvt/HalfwayComparison.h"

#include "fltcvt/BigInteger.h"
#include "fltcvt/Ieee754.h"

#include <bit>

namespace tq::detail {

namespace {

// No middle between two doubles has more than 768 significant digits; of what follows only whether it is 0 matters.
constexpr std::int64_t kDigitsThatDecide = 770;
// Digits appended to a number in one step.
constexpr std::int64_t kStep = 16;

// The digits as an integer, in units of 10^exponent.
template <class Char>
BigInteger integerOf(const DigitSpan<Char>& number, int& exponent) noexcept {
    const std::int64_t count = number.count();
    std::int64_t left = std::min(count, kDigitsThatDecide);
    exponent = static_cast<int>(number.lastExponent + (count - left));
    DigitsInOrder<Char> digits(number);
    BigInteger value(digits.take(static_cast<int>(std::min(left, kStep))));
    for (left -= kStep; left > 0; left -= kStep) {
        const int step = static_cast<int>(std::min(left, kStep));
        value.multiplyAdd(smallPowerOfTen(step), digits.take(step));
    }
    if (digits.hasMore()) {
        value.multiplyAdd(10, 1);
        --exponent;
    }
    return value;
}

} // namespace

template <class Char>
int compareWithHalfway(const DigitSpan<Char>& number, std::uint64_t bits) noexcept {
    int power = 0;
    BigInteger decimal = integerOf(number, power);
    const DoubleParts parts(std::bit_cast<double>(bits));
    BigInteger middle(2 * parts.significand + 1);
    decimal.multiplyByPowerOfFive(power);
    middle.multiplyByPowerOfFive(-power);
    const int excess = power - (parts.exponent - 1);
    decimal.shiftLeft(excess);
    middle.shiftLeft(-excess);
    return decimal.compare(middle);
}

template int compareWithHalfway(const DigitSpan<char>& number, std::uint64_t bits) noexcept;
template int compareWithHalfway(const DigitSpan<wchar_t>& number, std::uint64_t bits) noexcept;

} // namespace tq::detail
