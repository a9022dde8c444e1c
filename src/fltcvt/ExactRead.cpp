// Comparison of decimal and binary numbers as integers, after D. M. Gay, "Correctly rounded binary-decimal and
// decimal-binary conversions" (1990).

#include "fltcvt/ExactRead.h"

#include "fltcvt/DoubleBits.h"
#include "fltcvt/WideMath.h"

#include <bit>

namespace tq::detail {

namespace {

// No middle between two doubles has more than 768 significant digits; of what follows only whether it is 0 matters.
constexpr std::int64_t kDigitsThatDecide = 770;
// Digits put to a number at once.
constexpr std::int64_t kStep = 16;

// An integer above 0. Decimals of 771 digits take 2562 bits; so do their middles, which are as large, unless they count
// in powers of five: 54 bits times 5^1113, the number of places of such a decimal below the least double, take 2639.
class LargeNumber {
public:
    explicit LargeNumber(std::uint64_t value) noexcept : m_used(1) { m_words[0] = value; }

    void multiplyAdd(std::uint64_t factor, std::uint64_t addend) noexcept {
        std::uint64_t carry = addend;
        for (int i = 0; i < m_used; ++i) {
            const UInt128 product = UInt128{m_words[i]} * factor + carry;
            m_words[i] = static_cast<std::uint64_t>(product);
            carry = static_cast<std::uint64_t>(product >> 64);
        }
        if (carry != 0)
            m_words[m_used++] = carry;
    }

    void multiplyByPowerOfFive(int exponent) noexcept {
        for (; exponent > kLastSmallPowerOfFive; exponent -= kLastSmallPowerOfFive)
            multiplyAdd(kSmallPowersOfFive[kLastSmallPowerOfFive], 0);
        if (exponent > 0)
            multiplyAdd(kSmallPowersOfFive[static_cast<std::size_t>(exponent)], 0);
    }

    void shiftLeft(int bits) noexcept {
        if (bits <= 0)
            return;
        const int words = bits / 64;
        const int rest = bits % 64;
        std::uint64_t above = 0;
        for (int i = m_used; i-- > 0; above = m_words[i])
            m_words[i + words + 1] = above << rest | m_words[i] >> 1 >> (63 - rest);
        m_words[words] = above << rest;
        std::fill_n(m_words, words, 0);
        m_used += words + 1;
        if (m_words[m_used - 1] == 0)
            --m_used;
    }

    int compare(const LargeNumber& other) const noexcept {
        if (m_used != other.m_used)
            return m_used - other.m_used;
        int i = m_used - 1;
        while (i > 0 && m_words[i] == other.m_words[i])
            --i;
        return m_words[i] < other.m_words[i] ? -1 : m_words[i] > other.m_words[i] ? 1 : 0;
    }

private:
    static constexpr int kWords = 48;

    int m_used;
    std::uint64_t m_words[kWords];
};

// The digits as an integer; `exponent` gets the power of ten that it counts.
template <class Char>
LargeNumber integerOf(const DigitSpan<Char>& number, int& exponent) noexcept {
    const std::int64_t count = number.count();
    std::int64_t left = std::min(count, kDigitsThatDecide);
    exponent = static_cast<int>(number.lastExponent + (count - left));
    DigitsInOrder<Char> digits(number);
    LargeNumber value(digits.take(static_cast<int>(std::min(left, kStep))));
    for (left -= kStep; left > 0; left -= kStep) {
        const int step = static_cast<int>(std::min(left, kStep));
        value.multiplyAdd(kSmallPowersOfTen[static_cast<std::size_t>(step)], digits.take(step));
    }
    if (digits.hasMore()) {
        value.multiplyAdd(10, 1);
        --exponent;
    }
    return value;
}

} // namespace

template <class Char>
int compareWithMiddle(const DigitSpan<Char>& number, std::uint64_t bits) noexcept {
    int power = 0;
    LargeNumber decimal = integerOf(number, power);
    const DoubleParts parts(std::bit_cast<double>(bits));
    LargeNumber middle(2 * parts.significand + 1);
    decimal.multiplyByPowerOfFive(power);
    middle.multiplyByPowerOfFive(-power);
    const int excess = power - (parts.exponent - 1);
    decimal.shiftLeft(excess);
    middle.shiftLeft(-excess);
    return decimal.compare(middle);
}

template int compareWithMiddle(const DigitSpan<char>& number, std::uint64_t bits) noexcept;
template int compareWithMiddle(const DigitSpan<wchar_t>& number, std::uint64_t bits) noexcept;

} // namespace tq::detail
