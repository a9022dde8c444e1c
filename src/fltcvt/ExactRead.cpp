// Comparison of decimal and binary numbers as big integers, after D. M. Gay, "Correctly rounded binary-decimal and
// decimal-binary conversions" (1990).

#include "fltcvt/ExactRead.h"

#include "fltcvt/BigNumber.h"
#include "fltcvt/DoubleBits.h"

#include <algorithm>
#include <bit>

namespace tq::detail {

namespace {

// No middle between two doubles has more than 768 significant digits; of what follows only whether it is 0 matters.
constexpr std::int64_t kDigitsThatDecide = 770;
constexpr std::int64_t kFirstDigits = 9;

template <class Char>
unsigned firstNine(const DigitSpan<Char>& number, std::int64_t count) {
    unsigned value = 0;
    const Char* p = number.first;
    for (std::int64_t left = std::min(count, kFirstDigits); left > 0; ++p)
        if (p != number.point) {
            value = value * 10 + static_cast<unsigned>(*p - '0');
            --left;
        }
    return value;
}

// The digits as an integer; `exponent` gets the power of ten that it counts.
template <class Char>
BigNumber integerOf(const DigitSpan<Char>& number, std::int64_t& exponent) {
    const bool hasPoint = number.point != nullptr;
    const std::int64_t count = number.end - number.first - (hasPoint ? 1 : 0);
    const std::int64_t kept = std::min(count, kDigitsThatDecide);
    const std::int64_t beforePoint = hasPoint ? std::min<std::int64_t>(number.point - number.first, kept) : kept;
    exponent = number.lastExponent + (count - kept);
    BigNumber value(
        TqGdImpl::s2b(number.first, static_cast<int>(beforePoint), static_cast<int>(kept), firstNine(number, kept)));
    const Char* const rest = number.end - (count - kept) - (hasPoint && number.point - number.first > kept ? 1 : 0);
    if (kept < count && std::any_of(rest, number.end, [](Char c) { return c > '0'; })) {
        value.multiplyAdd(10, 1);
        --exponent;
    }
    return value;
}

} // namespace

template <class Char>
int compareWithMiddle(const DigitSpan<Char>& number, std::uint64_t bits) {
    std::int64_t exponent = 0;
    BigNumber decimal = integerOf(number, exponent);
    const int power = static_cast<int>(exponent);

    const DoubleParts parts(std::bit_cast<double>(bits));
    const std::uint64_t doubled = 2 * parts.significand + 1;
    BigNumber middle(TqGdImpl::Balloc(1));
    middle->words[0] = static_cast<std::uint32_t>(doubled);
    middle->words[1] = static_cast<std::uint32_t>(doubled >> 32);
    middle->used = middle->words[1] != 0 ? 2 : 1;

    decimal.multiplyByPowerOfFive(power);
    middle.multiplyByPowerOfFive(-power);
    const int excess = power - (parts.exponent - 1);
    decimal.shiftLeft(excess);
    middle.shiftLeft(-excess);
    return decimal.compare(middle);
}

template int compareWithMiddle(const DigitSpan<char>& number, std::uint64_t bits);
template int compareWithMiddle(const DigitSpan<wchar_t>& number, std::uint64_t bits);

} // namespace tq::detail
