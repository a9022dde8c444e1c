#pragma once

#include "fltcvt/PowersOfTen.h"
#include "fltcvt/WordArithmetic.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstdint>

namespace tq::detail {

/// A non-negative integer of up to kMaxBits bits, on the stack: no conversion needs the heap or shares anything. Always
/// trimmed.
class BigInteger {
public:
    /// The largest number arises where a text of 771 digits is compared with the middle between two subnormals: 54 bits
    /// times 5^1113, 2639 bits in all. Making digits takes fewer than 1200 bits.
    static constexpr int kMaxBits = 48 * 64;

    constexpr explicit BigInteger(std::uint64_t value) noexcept : m_used(1) { m_words[0] = value; }
    constexpr BigInteger(const BigInteger& other) noexcept : m_used(other.m_used) { copyWords(other); }
    constexpr BigInteger& operator=(const BigInteger& other) noexcept {
        m_used = other.m_used;
        copyWords(other);
        return *this;
    }

    constexpr void multiplyAdd(std::uint64_t factor, std::uint64_t addend) noexcept {
        push(detail::multiplyAdd(m_words, m_used, factor, addend));
    }

    /// Times 5^exponent; nothing for an exponent of 0 or less.
    constexpr void multiplyByPowerOfFive(int exponent) noexcept {
        for (; exponent > kLastSmallPowerOfFive; exponent -= kLastSmallPowerOfFive)
            multiplyAdd(smallPowerOfFive(kLastSmallPowerOfFive), 0);
        if (exponent > 0)
            multiplyAdd(smallPowerOfFive(exponent), 0);
    }

    constexpr void divide(std::uint64_t divisor) noexcept {
        detail::divide(m_words, m_used, divisor);
        m_used = trimmed(m_words, m_used);
    }

    /// Times 2^bits; nothing for 0 bits or less.
    constexpr void shiftLeft(int bits) noexcept {
        if (bits <= 0)
            return;
        const int words = m_used + bits / 64 + 1;
        assert(words <= kWords);
        detail::shiftLeft(m_words, m_words, m_used, bits);
        m_used = trimmed(m_words, words);
    }

    constexpr void add(const BigInteger& other) noexcept {
        while (m_used < other.m_used)
            m_words[m_used++] = 0;
        std::uint64_t carry = addMultiple(m_words, other.m_words, other.m_used, std::uint64_t{1});
        for (int i = other.m_used; carry != 0 && i < m_used; ++i)
            carry = (m_words[i] += carry) == 0 ? 1 : 0;
        push(carry);
    }

    constexpr int compare(const BigInteger& other) const noexcept {
        return detail::compare(m_words, m_used, other.m_words, other.m_used);
    }

    /// The digit floor(this / divisor), below 10; what remains is left.
    constexpr int takeDigit(const BigInteger& divisor) noexcept {
        return detail::takeDigit(m_words, m_used, divisor.m_words, divisor.m_used);
    }

    constexpr bool isZero() const noexcept { return m_used == 1 && m_words[0] == 0; }
    constexpr int bitCount() const noexcept { return 64 * m_used - std::countl_zero(m_words[m_used - 1]); }
    /// The word that many words below the highest one, 0 below the lowest.
    constexpr std::uint64_t wordBelowTop(int distance) const noexcept {
        return distance < m_used ? m_words[m_used - 1 - distance] : 0;
    }

private:
    static constexpr int kWords = kMaxBits / 64;

    // The words that are not in use have no value.
    constexpr void copyWords(const BigInteger& other) noexcept { std::copy_n(other.m_words, m_used, m_words); }

    // A word above the highest one, unless it is 0.
    constexpr void push(std::uint64_t word) noexcept {
        assert(word == 0 || m_used < kWords);
        if (word != 0)
            m_words[m_used++] = word;
    }

    int m_used;
    std::uint64_t m_words[kWords];
};

} // namespace tq::detail
