#pragma once

// The library's one arithmetic of big integers: the schoolbook steps over words, least significant first. Two kinds of
// numbers are made of it: Bigint, 32-bit words in blocks of the digit allocator, which is part of the public interface,
// and BigInteger, 64-bit words on the stack, which the conversions calculate with.
//
// Every number here has at least one word. A number is trimmed when its highest word is not 0 or is its only one.

#include "fltcvt/UInt128.h"

#include <cassert>
#include <cstdint>
#include <type_traits>

namespace tq::detail {

/// Holds the product of two words and two words more.
template <class Word>
using DoubleWord = std::conditional_t<sizeof(Word) == 8, UInt128, std::uint64_t>;

template <class Word>
inline constexpr int kBitsOf = 8 * int{sizeof(Word)};

/// The number of words without zeros at the top.
template <class Word>
constexpr int trimmed(const Word* words, int count) noexcept {
    while (count > 1 && words[count - 1] == 0)
        --count;
    return count;
}

/// words = words * factor + addend. Returns the word above the last one.
template <class Word>
constexpr Word multiplyAdd(Word* words, int count, Word factor, Word addend) noexcept {
    for (int i = 0; i < count; ++i) {
        const auto sum = DoubleWord<Word>{words[i]} * factor + addend;
        words[i] = static_cast<Word>(sum);
        addend = static_cast<Word>(sum >> kBitsOf<Word>);
    }
    return addend;
}

/// to += from * factor, over `count` words. Returns the word above the last one.
template <class Word>
constexpr Word addMultiple(Word* to, const Word* from, int count, Word factor) noexcept {
    Word carry = 0;
    for (int i = 0; i < count; ++i) {
        const auto sum = DoubleWord<Word>{from[i]} * factor + to[i] + carry;
        to[i] = static_cast<Word>(sum);
        carry = static_cast<Word>(sum >> kBitsOf<Word>);
    }
    return carry;
}

/// to -= from * factor. The difference is not negative, and `from` has no more words.
template <class Word>
constexpr void subtractMultiple(Word* to, int toCount, const Word* from, int fromCount, Word factor) noexcept {
    assert(fromCount <= toCount);
    Word carry = 0;
    Word borrow = 0;
    for (int i = 0; i < toCount; ++i) {
        const auto product = DoubleWord<Word>{i < fromCount ? from[i] : Word{0}} * factor + carry;
        carry = static_cast<Word>(product >> kBitsOf<Word>);
        const auto difference = DoubleWord<Word>{to[i]} - static_cast<Word>(product) - borrow;
        to[i] = static_cast<Word>(difference);
        borrow = static_cast<Word>(difference >> kBitsOf<Word>) & 1;
    }
    assert(carry == 0 && borrow == 0);
}

/// words /= divisor, cut off.
template <class Word>
constexpr void divide(Word* words, int count, Word divisor) noexcept {
    Word rest = 0;
    for (int i = count; i-- > 0;) {
        const auto dividend = DoubleWord<Word>{rest} << kBitsOf<Word> | words[i];
        words[i] = static_cast<Word>(dividend / divisor);
        rest = static_cast<Word>(dividend % divisor);
    }
}

/// to = from * 2^bits, in count + bits / kBitsOf + 1 words, the highest of which may be 0. `to` may be `from`.
template <class Word>
constexpr void shiftLeft(Word* to, const Word* from, int count, int bits) noexcept {
    assert(bits >= 0);
    const int whole = bits / kBitsOf<Word>;
    const int rest = bits % kBitsOf<Word>;
    Word above = 0;
    for (int i = count; i-- > 0;) {
        const Word word = from[i];
        to[i + whole + 1] = static_cast<Word>(above << rest | word >> 1 >> (kBitsOf<Word> - 1 - rest));
        above = word;
    }
    to[whole] = static_cast<Word>(above << rest);
    for (int i = whole; i-- > 0;)
        to[i] = 0;
}

/// Negative, 0 or positive; both numbers are trimmed.
template <class Word>
constexpr int compare(const Word* a, int aCount, const Word* b, int bCount) noexcept {
    if (aCount != bCount)
        return aCount - bCount;
    int i = aCount - 1;
    while (i > 0 && a[i] == b[i])
        --i;
    return a[i] < b[i] ? -1 : a[i] > b[i] ? 1 : 0;
}

/// The digit floor(a / b), which must be below 10; `a` becomes a - digit * b, and its number of words is brought down
/// to that. Both numbers are trimmed, and b is not 0.
template <class Word>
constexpr int takeDigit(Word* a, int& aCount, const Word* b, int bCount) noexcept {
    if (aCount < bCount)
        return 0;
    assert(aCount <= bCount + 1);
    // An estimate from the leading words that is never too large.
    const Word beyond = aCount > bCount ? a[bCount] : 0;
    const auto leading = DoubleWord<Word>{beyond} << kBitsOf<Word> | a[bCount - 1];
    auto digit = static_cast<Word>(leading / (DoubleWord<Word>{b[bCount - 1]} + 1));
    const auto subtract = [&](Word factor) {
        subtractMultiple(a, aCount, b, bCount, factor);
        aCount = trimmed(a, aCount);
    };
    if (digit != 0)
        subtract(digit);
    while (compare(a, aCount, b, bCount) >= 0) {
        ++digit;
        subtract(1);
    }
    assert(digit < 10);
    return static_cast<int>(digit);
}

} // namespace tq::detail
