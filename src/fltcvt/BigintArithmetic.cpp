// Arithmetic of big integers, after D. M. Gay, "Correctly rounded binary-decimal and decimal-binary conversions"
// (1990).

#include "fltcvt/BigNumber.h"
#include "fltcvt/DoubleBits.h"
#include "fltcvt/PowersOfTen.h"
#include "fltcvt/WideMath.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>

using tq::detail::BigNumber;
using tq::detail::UInt128;

namespace {

using Word = std::uint32_t;

constexpr int kWordBits = 32;
/// A power of the cache stands for 5^(4 * 2^i).
constexpr int kCachedStep = 4;
constexpr std::array<int, kCachedStep - 1> p05 = {5, 25, 125};
constexpr int kFirstDigits = 9;
constexpr int kDigitsPerStep = 18;

std::size_t usedWords(const Bigint* b) {
    return static_cast<std::size_t>(b->used);
}

// Drops the leading zero words, but not the last word.
void trim(Bigint* b) {
    while (b->used > 1 && b->words[b->used - 1] == 0)
        --b->used;
}

void copyNumber(Bigint* to, const Bigint* from) {
    to->sign = from->sign;
    to->used = from->used;
    std::memcpy(to->words, from->words, usedWords(from) * sizeof(Word));
}

void append(BigNumber& b, Word word) {
    if (b->used >= b->capacity) {
        BigNumber larger(TqGdImpl::Balloc(b->k + 1));
        copyNumber(larger.get(), b.get());
        b = std::move(larger);
    }
    b->words[b->used++] = word;
}

// The least class whose blocks have room for this many words.
int classOfWords(int words) {
    return tq::detail::bitWidth(static_cast<unsigned>(words - 1));
}

template <class Char>
Bigint* fromDigits(const Char* s, int nd0, int nd, unsigned y9) {
    BigNumber b(TqGdImpl::Balloc(classOfWords(std::max(1, (nd + kFirstDigits - 1) / kFirstDigits))));
    b->words[0] = y9;
    b->used = 1;
    // The first nine digits are in y9 already; a decimal point among them or behind them is passed over with them.
    s += nd0 > kFirstDigits ? kFirstDigits : kFirstDigits + 1;
    for (int i = kFirstDigits; i < nd;) {
        const int count = std::min(kDigitsPerStep, (i < nd0 ? std::min(nd0, nd) : nd) - i);
        std::uint64_t value = 0;
        for (const Char* const end = s + count; s != end; ++s)
            value = value * 10 + static_cast<std::uint64_t>(*s - '0');
        b.multiplyAddLong(tq::detail::kSmallPowersOfTen[static_cast<std::size_t>(count)], value);
        i += count;
        if (i == nd0 && nd0 > kFirstDigits)
            ++s;
    }
    return b.release();
}

} // namespace

namespace tq::detail {

void BigNumber::multiplyAddLong(std::uint64_t factor, std::uint64_t addend) {
    std::uint64_t carry = addend;
    for (std::size_t i = 0; i < usedWords(m_block); ++i) {
        const UInt128 sum = UInt128{factor} * m_block->words[i] + carry;
        m_block->words[i] = static_cast<Word>(sum);
        carry = static_cast<std::uint64_t>(sum >> kWordBits);
    }
    for (; carry != 0; carry >>= kWordBits)
        append(*this, static_cast<Word>(carry));
}

void BigNumber::multiplyByPowerOfFive(int exponent) {
    constexpr int kShortWay = 3 * kLastSmallPowerOfFive;
    if (exponent > kShortWay) {
        m_block = TqGdImpl::pow5mult(release(), exponent);
        return;
    }
    for (; exponent > 0; exponent -= kLastSmallPowerOfFive)
        multiplyAddLong(kSmallPowersOfFive[static_cast<std::size_t>(std::min(exponent, kLastSmallPowerOfFive))], 0);
}

} // namespace tq::detail

int TqGdImpl::lo0bits(unsigned* x) {
    const int zeros = std::countr_zero(*x);
    if (zeros < kWordBits)
        *x >>= zeros;
    return zeros;
}

int TqGdImpl::hi0bits(unsigned x) {
    return std::countl_zero(x);
}

Bigint* TqGdImpl::multadd(Bigint* b, int m, int a) {
    BigNumber result(b);
    auto carry = static_cast<std::uint64_t>(a);
    for (std::size_t i = 0; i < usedWords(b); ++i) {
        const std::uint64_t sum = std::uint64_t{b->words[i]} * static_cast<Word>(m) + carry;
        b->words[i] = static_cast<Word>(sum);
        carry = sum >> kWordBits;
    }
    if (carry != 0)
        append(result, static_cast<Word>(carry));
    trim(result.get()); // times 0
    return result.release();
}

Bigint* TqGdImpl::i2b(int i) {
    Bigint* const b = Balloc(1);
    b->words[0] = static_cast<Word>(i);
    b->used = 1;
    return b;
}

Bigint* TqGdImpl::mult(Bigint* a, Bigint* b) {
    if (a->used < b->used)
        std::swap(a, b);
    const int words = a->used + b->used;
    Bigint* const c = Balloc(a->k + (words > a->capacity ? 1 : 0));
    std::memset(c->words, 0, static_cast<std::size_t>(words) * sizeof(Word));
    for (std::size_t j = 0; j < usedWords(b); ++j) {
        const std::uint64_t factor = b->words[j];
        std::uint64_t carry = 0;
        for (std::size_t i = 0; i < usedWords(a); ++i) {
            const std::uint64_t sum = a->words[i] * factor + c->words[i + j] + carry;
            c->words[i + j] = static_cast<Word>(sum);
            carry = sum >> kWordBits;
        }
        c->words[j + usedWords(a)] = static_cast<Word>(carry);
    }
    c->used = words;
    trim(c);
    return c;
}

Bigint* TqGdImpl::pow5mult(Bigint* b, int k) {
    BigNumber result(b);
    if (k <= 0)
        return result.release();
    if (k % kCachedStep != 0)
        result.multiplyAdd(p05[static_cast<std::size_t>(k % kCachedStep - 1)], 0);
    BigNumber beyond; // the last power, where it is none of the cache
    bool isCached = G_Pow5Data != nullptr;
    Bigint* power = G_Pow5Data;
    if (!isCached) { // after exit
        beyond = BigNumber(i2b(625));
        power = beyond.get();
    }
    for (int q = k / kCachedStep; q != 0;) {
        if ((q & 1) != 0)
            result = BigNumber(mult(result.get(), power));
        q >>= 1;
        if (q == 0)
            break;
        isCached = isCached && power->next != nullptr;
        if (isCached) {
            power = power->next;
        } else {
            beyond = BigNumber(mult(power, power));
            power = beyond.get();
        }
    }
    return result.release();
}

Bigint* TqGdImpl::lshift(Bigint* b, int k) {
    if (k <= 0)
        return b;
    const BigNumber source(b);
    const int whole = k / kWordBits;
    const int bits = k % kWordBits;
    const int words = b->used + whole + 1;
    Bigint* const shifted = Balloc(std::max<int>(b->k, classOfWords(words)));
    std::memset(shifted->words, 0, static_cast<std::size_t>(whole) * sizeof(Word));
    Word* to = shifted->words + whole;
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < usedWords(b); ++i) {
        carry |= std::uint64_t{b->words[i]} << bits;
        *to++ = static_cast<Word>(carry);
        carry >>= kWordBits;
    }
    *to = static_cast<Word>(carry);
    shifted->used = words;
    trim(shifted);
    return shifted;
}

int TqGdImpl::cmp(Bigint* a, Bigint* b) {
    if (a->used != b->used)
        return a->used - b->used;
    for (std::size_t i = usedWords(a); i-- > 0;)
        if (a->words[i] != b->words[i])
            return a->words[i] < b->words[i] ? -1 : 1;
    return 0;
}

Bigint* TqGdImpl::diff(Bigint* a, Bigint* b) {
    const int order = cmp(a, b);
    if (order == 0) {
        Bigint* const zero = Balloc(0);
        zero->words[0] = 0;
        zero->used = 1;
        return zero;
    }
    if (order < 0)
        std::swap(a, b);
    Bigint* const c = Balloc(a->k);
    c->sign = order < 0 ? 1 : 0;
    std::uint64_t borrow = 0;
    for (std::size_t i = 0; i < usedWords(a); ++i) {
        const std::uint64_t subtrahend = i < usedWords(b) ? b->words[i] : 0;
        const std::uint64_t difference = a->words[i] - subtrahend - borrow;
        c->words[i] = static_cast<Word>(difference);
        borrow = difference >> kWordBits & 1;
    }
    c->used = a->used;
    trim(c);
    return c;
}

double TqGdImpl::ulp(double x) {
    const int field = tq::detail::exponentField(x);
    if (field > tq::detail::kFractionBits)
        return std::bit_cast<double>(static_cast<std::uint64_t>(field - tq::detail::kFractionBits)
                                     << tq::detail::kFractionBits);
    return std::bit_cast<double>(std::uint64_t{1} << std::max(field - 1, 0));
}

double TqGdImpl::b2d(Bigint* a, int* e) {
    const auto word = [a](int index) { return index >= 0 ? std::uint64_t{a->words[index]} : 0; };
    const int top = a->used - 1;
    *e = hi0bits(static_cast<unsigned>(word(top)));
    std::uint64_t bits = word(top) << 32 | word(top - 1);
    bits = bits << *e | word(top - 2) >> (kWordBits - *e);
    return std::bit_cast<double>(tq::detail::kOneBits | (bits >> 11 & (tq::detail::kHiddenBit - 1)));
}

Bigint* TqGdImpl::d2b(double d, int* e, int* bits) {
    const tq::detail::DoubleParts parts(d);
    Bigint* const b = Balloc(1);
    const int zeros = parts.significand != 0 ? std::countr_zero(parts.significand) : 0;
    const std::uint64_t odd = parts.significand >> zeros;
    b->words[0] = static_cast<Word>(odd);
    b->words[1] = static_cast<Word>(odd >> kWordBits);
    b->used = b->words[1] != 0 ? 2 : 1;
    *e = parts.exponent + zeros;
    *bits = tq::detail::bitWidth(odd);
    return b;
}

Bigint* TqGdImpl::s2b(const char* s, int nd0, int nd, unsigned y9) {
    return fromDigits(s, nd0, nd, y9);
}

Bigint* TqGdImpl::s2b(const wchar_t* s, int nd0, int nd, unsigned y9) {
    return fromDigits(s, nd0, nd, y9);
}

double TqGdImpl::ratio(Bigint* a, Bigint* b) {
    int zerosOfA = 0;
    int zerosOfB = 0;
    const double upper = b2d(a, &zerosOfA);
    const double lower = b2d(b, &zerosOfB);
    return std::ldexp(upper / lower, kWordBits * (a->used - b->used) - zerosOfA + zerosOfB);
}

int TqGdImpl::copybits(unsigned* c, int n, Bigint* b) {
    const int words = n > 0 ? (n - 1) / kWordBits + 1 : 0;
    for (int i = 0; i < words; ++i)
        c[i] = i < b->used ? b->words[i] : 0;
    return words;
}

int TqGdImpl::any_on(Bigint* b, int k) {
    for (int i = 0; i < b->used && k > 0; ++i, k -= kWordBits) {
        const Word wanted = k < kWordBits ? (Word{1} << k) - 1 : ~Word{0};
        if ((b->words[i] & wanted) != 0)
            return 1;
    }
    return 0;
}

namespace {

// b -= factor * S, in place. S has no more words than b, and the difference is not negative.
void subtractMultiple(Bigint* b, const Bigint* S, Word factor) {
    std::uint64_t carry = 0;
    std::uint64_t borrow = 0;
    for (std::size_t i = 0; i < usedWords(S); ++i) {
        const std::uint64_t product = std::uint64_t{S->words[i]} * factor + carry;
        carry = product >> kWordBits;
        const std::uint64_t difference = std::uint64_t{b->words[i]} - static_cast<Word>(product) - borrow;
        b->words[i] = static_cast<Word>(difference);
        borrow = difference >> kWordBits & 1;
    }
    if (b->used > S->used)
        b->words[S->used] -= static_cast<Word>(carry + borrow);
    trim(b);
}

} // namespace

int TqGdImpl::quorem(Bigint* b, Bigint* S) {
    if (b->used < S->used)
        return 0;
    // An estimate from the leading words that is never too large.
    const int top = S->used - 1;
    const std::uint64_t leading =
        std::uint64_t{b->words[top]} | (b->used > S->used ? std::uint64_t{b->words[top + 1]} << kWordBits : 0);
    auto digit = static_cast<Word>(leading / (std::uint64_t{S->words[top]} + 1));
    if (digit != 0)
        subtractMultiple(b, S, digit);
    while (cmp(b, S) >= 0) {
        ++digit;
        subtractMultiple(b, S, 1);
    }
    return static_cast<int>(digit);
}
