// Arithmetic of big integers in blocks of the digit allocator, after D. M. Gay, "Correctly rounded binary-decimal and
// decimal-binary conversions" (1990). Part of the public interface; the library's own conversions use BigInteger, which
// needs no blocks.

#include "fltcvt/DigitAllocator.h"
#include "fltcvt/Ieee754.h"
#include "fltcvt/PowersOfTen.h"
#include "fltcvt/WordArithmetic.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <utility>

namespace {

using Word = std::uint32_t;

constexpr int kWordBits = tq::detail::kBitsOf<Word>;
/// A power of the cache stands for 5^(4 * 2^i).
constexpr int kCachedStep = 4;
constexpr std::array<int, kCachedStep - 1> p05 = {5, 25, 125};
constexpr int kDigitsPerStep = 9;

/// Owner of a block, which it frees.
class BigintOwner {
public:
    explicit BigintOwner(Bigint* block = nullptr) noexcept : m_block(block) {}
    BigintOwner(BigintOwner&& other) noexcept : m_block(other.release()) {}
    BigintOwner& operator=(BigintOwner&& other) noexcept {
        std::swap(m_block, other.m_block);
        return *this;
    }
    ~BigintOwner() {
        if (m_block != nullptr)
            tq::detail::giveBlock(m_block, m_block->k);
    }

    Bigint* get() const noexcept { return m_block; }
    Bigint* operator->() const noexcept { return m_block; }
    Bigint* release() noexcept { return std::exchange(m_block, nullptr); }

private:
    Bigint* m_block;
};

void copyNumber(Bigint* to, const Bigint* from) {
    to->sign = from->sign;
    to->used = from->used;
    std::memcpy(to->words, from->words, static_cast<std::size_t>(from->used) * sizeof(Word));
}

void append(BigintOwner& b, Word word) {
    if (b->used >= b->capacity) {
        BigintOwner larger(TqGdImpl::Balloc(b->k + 1));
        copyNumber(larger.get(), b.get());
        b = std::move(larger);
    }
    b->words[b->used++] = word;
}

// The least class whose blocks have room for this many words.
int classOfWords(int words) {
    return static_cast<int>(std::bit_width(static_cast<unsigned>(words - 1)));
}

template <class Char>
Bigint* fromDigits(const Char* s, int nd0, int nd, unsigned y9) {
    BigintOwner b(TqGdImpl::Balloc(classOfWords(std::max(1, (nd + kDigitsPerStep - 1) / kDigitsPerStep))));
    b->words[0] = y9;
    b->used = 1;
    // The first nine digits are in y9 already; a decimal point among them or after them is passed over with them.
    s += nd0 > kDigitsPerStep ? kDigitsPerStep : kDigitsPerStep + 1;
    for (int i = kDigitsPerStep; i < nd;) {
        const int count = std::min(kDigitsPerStep, (i < nd0 ? std::min(nd0, nd) : nd) - i);
        int value = 0;
        for (const Char* const end = s + count; s != end; ++s)
            value = value * 10 + static_cast<int>(*s - '0');
        b = BigintOwner(TqGdImpl::multadd(b.release(), static_cast<int>(tq::detail::smallPowerOfTen(count)), value));
        i += count;
        if (i == nd0 && nd0 > kDigitsPerStep)
            ++s;
    }
    return b.release();
}

} // namespace

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
    BigintOwner result(b);
    const Word carry = tq::detail::multiplyAdd(b->words, b->used, static_cast<Word>(m), static_cast<Word>(a));
    if (carry != 0)
        append(result, carry);
    result->used = tq::detail::trimmed(result->words, result->used); // times 0
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
    for (int j = 0; j < b->used; ++j)
        c->words[j + a->used] = tq::detail::addMultiple(c->words + j, a->words, a->used, b->words[j]);
    c->used = tq::detail::trimmed(c->words, words);
    return c;
}

Bigint* TqGdImpl::pow5mult(Bigint* b, int k) {
    BigintOwner result(b);
    if (k <= 0)
        return result.release();
    if (k % kCachedStep != 0)
        result = BigintOwner(multadd(result.release(), p05[static_cast<std::size_t>(k % kCachedStep - 1)], 0));
    BigintOwner beyond; // the last power, where it is none of the cache
    bool isCached = G_Pow5Data != nullptr;
    Bigint* power = G_Pow5Data;
    if (!isCached) { // after exit
        beyond = BigintOwner(i2b(625));
        power = beyond.get();
    }
    for (int q = k / kCachedStep; q != 0;) {
        if ((q & 1) != 0)
            result = BigintOwner(mult(result.get(), power));
        q >>= 1;
        if (q == 0)
            break;
        isCached = isCached && power->next != nullptr;
        if (isCached) {
            power = power->next;
        } else {
            beyond = BigintOwner(mult(power, power));
            power = beyond.get();
        }
    }
    return result.release();
}

Bigint* TqGdImpl::lshift(Bigint* b, int k) {
    if (k <= 0)
        return b;
    const BigintOwner source(b);
    const int words = b->used + k / kWordBits + 1;
    Bigint* const shifted = Balloc(std::max<int>(b->k, classOfWords(words)));
    tq::detail::shiftLeft(shifted->words, b->words, b->used, k);
    shifted->used = tq::detail::trimmed(shifted->words, words);
    return shifted;
}

int TqGdImpl::cmp(Bigint* a, Bigint* b) {
    return tq::detail::compare(a->words, a->used, b->words, b->used);
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
    copyNumber(c, a);
    c->sign = order < 0 ? 1 : 0;
    tq::detail::subtractMultiple(c->words, c->used, b->words, b->used, Word{1});
    c->used = tq::detail::trimmed(c->words, c->used);
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
    *bits = static_cast<int>(std::bit_width(odd));
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

int TqGdImpl::quorem(Bigint* b, Bigint* S) {
    return tq::detail::takeDigit(b->words, b->used, S->words, S->used);
}
