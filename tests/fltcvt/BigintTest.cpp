#include "NumberVectors.h"
#include "fltcvt/DigitAllocator.h"
#include "fltcvt/UInt128.h"

#include <TqOsBase/fltcvt/FloatText.h>
#include <TqOsBase/fltcvt/StrToD.h>
#include <TqOsBase/fltcvt/TqGdImpl.h>

#include <array>
#include <climits>
#include <gtest/gtest.h>
#include <memory>
#include <new>
#include <set>
#include <string>

namespace {

using Impl = TqGdImpl;
using tq::detail::UInt128;

struct Free {
    void operator()(Bigint* b) const { Impl::Bfree(b); }
};
using Owner = std::unique_ptr<Bigint, Free>;

Bigint* number(UInt128 value) {
    Bigint* const b = Impl::Balloc(2);
    do {
        b->words[b->used++] = static_cast<std::uint32_t>(value);
        value >>= 32;
    } while (value != 0);
    return b;
}

UInt128 value(const Bigint* b) {
    UInt128 result = 0;
    for (int i = b->used; i-- > 0;)
        result = result << 32 | b->words[i];
    EXPECT_LE(b->used, b->capacity);
    EXPECT_EQ(b->capacity, 1 << b->k);
    EXPECT_TRUE(b->used == 1 || b->words[b->used - 1] != 0);
    return result;
}

UInt128 take(Bigint* b) {
    return value(Owner(b).get());
}

struct Usage {
    std::ptrdiff_t used = 0;
    std::array<int, TqFCvtAllocator::kSizeClasses> free{};

    bool operator==(const Usage&) const = default;
};

const unsigned char* poolStart() {
    return reinterpret_cast<const unsigned char*>(tqFCvtAllocator()->m_pool);
}

bool isPooled(const void* block) {
    const auto offset = reinterpret_cast<std::uintptr_t>(block) - reinterpret_cast<std::uintptr_t>(poolStart());
    return offset < TqFCvtAllocator::kPoolBytes;
}

// Walks the free lists; every block of the pool that is not in use is on the list of its class.
Usage usage() {
    Usage result{tqFCvtAllocator()->m_cursor - poolStart(), {}};
    for (int k = 0; k < TqFCvtAllocator::kSizeClasses; ++k)
        for (const Bigint* b = tqFCvtAllocator()->m_freeLists[k]; b != nullptr; b = b->next) {
            EXPECT_TRUE(isPooled(b));
            EXPECT_EQ(b->k, k);
            ++result.free[static_cast<std::size_t>(k)];
        }
    return result;
}

TEST(DigitAllocator, TheCacheComesFirst) {
    EXPECT_EQ(static_cast<void*>(G_Pow5Data), static_cast<const void*>(poolStart()));
    std::set<const Bigint*> seen;
    const Bigint* power = G_Pow5Data;
    for (int exponent = 4; exponent <= 256; exponent *= 2, power = power->next) {
        const Owner computed(Impl::i2b(1));
        Bigint* expected = Impl::i2b(1);
        for (int i = 0; i < exponent; ++i)
            expected = Impl::multadd(expected, 5, 0);
        const Owner owner(expected);
        ASSERT_NE(power, nullptr);
        EXPECT_EQ(Impl::cmp(const_cast<Bigint*>(power), expected), 0) << exponent;
        EXPECT_TRUE(isPooled(power));
        EXPECT_TRUE(seen.empty() || *seen.rbegin() < power);
        seen.insert(power);
    }
    EXPECT_EQ(power, nullptr);
}

TEST(DigitAllocator, BlocksHaveTheLengthOfTheirClass) {
    // As long as the pool has room the blocks of one class follow each other.
    for (const auto& [k, bytes] : {std::pair{0, 32}, {1, 40}, {2, 48}, {3, 64}, {4, 96}}) {
        const int before = usage().free[static_cast<std::size_t>(k)];
        std::vector<Owner> taken;
        taken.reserve(static_cast<std::size_t>(before) + 1);
        for (int i = 0; i < before; ++i)
            taken.emplace_back(Impl::Balloc(k));
        Bigint* const first = Impl::Balloc(k);
        taken.emplace_back(first);
        EXPECT_EQ(tqFCvtAllocator()->m_cursor - reinterpret_cast<unsigned char*>(first), bytes);
        EXPECT_EQ(first->k, k);
        EXPECT_EQ(first->capacity, 1 << k);
    }
}

TEST(DigitAllocator, LastFreedIsFirstTaken) {
    Bigint* const a = Impl::Balloc(3);
    a->sign = a->used = 1;
    Impl::Bfree(a);
    Bigint* const b = Impl::Balloc(3);
    EXPECT_EQ(a, b);
    EXPECT_EQ(b->sign + b->used, 0);
    Impl::Bfree(b);
    Impl::Bfree(nullptr);
    Impl::freedtoa(nullptr);
}

TEST(DigitAllocator, StringsTakeTheirClass) {
    const Usage before = usage();
    for (const auto& [length, k] :
         {std::pair{-5, 0}, {0, 0}, {27, 0}, {28, 1}, {31, 1}, {32, 2}, {39, 2}, {40, 3}, {5000, 11}}) {
        char* const text = Impl::rv_alloc(length);
        std::int32_t stored = -1;
        std::memcpy(&stored, text - sizeof stored, sizeof stored);
        EXPECT_EQ(stored, k) << length;
        std::memset(text, 'x', static_cast<std::size_t>(std::max(length, 0)) + 1);
        Impl::freedtoa(text);
    }
    for (const int n : {-1, 2, 50}) {
        char source[] = "a text that is longer than the smallest block holds";
        char* end = nullptr;
        char* const copy = Impl::nrv_alloc(source, &end, n);
        EXPECT_STREQ(copy, source);
        EXPECT_EQ(end, copy + sizeof source - 1);
        Impl::freedtoa(copy);
    }
    EXPECT_GE(usage().used, before.used);
    EXPECT_THROW(Impl::Balloc(31), std::bad_alloc);
    EXPECT_THROW(Impl::Balloc(-1), std::bad_alloc);
}

TEST(DigitAllocator, NothingIsLost) {
    const auto run = [] {
        for (const double v : number_test::vectors(500)) {
            for (int mode = 0; mode < 6; ++mode)
                for (const int ndigits : {-3, 0, 7, 17, 60, 400}) {
                    int point = 0;
                    int sign = 0;
                    Impl::freedtoa(Impl::dtoa(v, mode, ndigits, &point, &sign, nullptr));
                }
            wchar_t* const text = tqFltToE(v, 800, 'e');
            text[700] = L'1';
            tqStrToD(text, nullptr);
            tqFree(text);
        }
    };
    run(); // now every class has the blocks that it needs
    const Usage before = usage();
    run();
    EXPECT_EQ(usage(), before);
}

TEST(DigitAllocator, PoolThenHeap) {
    std::vector<Bigint*> pooled, others;
    while (others.size() < 100) {
        Bigint* const b = Impl::Balloc(5);
        (isPooled(b) ? pooled : others).push_back(b);
    }
    EXPECT_LE(usage().used, TqFCvtAllocator::kPoolBytes);
    const Usage before = usage();
    for (Bigint* b : others)
        Impl::Bfree(b);
    EXPECT_EQ(usage(), before); // the heap's blocks enter no list
    for (Bigint* b : pooled)
        Impl::Bfree(b);
    EXPECT_EQ(usage().free[5], static_cast<int>(pooled.size()) + before.free[5]);
}

TEST(Bigint, AgreesWithWideIntegers) {
    std::mt19937_64 random(3);
    for (int i = 0; i < 5000; ++i) {
        const auto any = [&random] { return random() >> (random() % 64); };
        const std::uint64_t x = any(), y = any();
        const int shift = static_cast<int>(random() % 60);
        const Owner a(number(x)), b(number(y));
        EXPECT_EQ(take(Impl::mult(a.get(), b.get())), UInt128{x} * y);
        const Owner difference(Impl::diff(a.get(), b.get()));
        EXPECT_EQ(value(difference.get()), x > y ? x - y : y - x);
        EXPECT_EQ(difference->sign, x < y ? 1 : 0);
        EXPECT_EQ(Impl::cmp(a.get(), b.get()) > 0, x > y);
        EXPECT_EQ(Impl::cmp(a.get(), b.get()) < 0, x < y);
        EXPECT_EQ(take(Impl::lshift(number(x), shift)), UInt128{x} << shift);
        const int m = static_cast<int>(any() % INT_MAX), c = static_cast<int>(any() % INT_MAX);
        EXPECT_EQ(take(Impl::multadd(number(x), m, c)),
                  UInt128{x} * static_cast<unsigned>(m) + static_cast<unsigned>(c));
        EXPECT_EQ(Impl::any_on(a.get(), shift), (x & ((std::uint64_t{1} << shift) - 1)) != 0);
        unsigned words[4] = {9, 9, 9, 9};
        EXPECT_EQ(Impl::copybits(words, 70, a.get()), 3);
        EXPECT_EQ(words[0] | std::uint64_t{words[1]} << 32, x);
        EXPECT_EQ(words[2] + words[3], 9U);
        if (y != 0) {
            EXPECT_DOUBLE_EQ(Impl::ratio(Owner(number(x | 1)).get(), b.get()),
                             static_cast<double>(x | 1) / static_cast<double>(y));
            const UInt128 dividend = UInt128{y} * (x % 10) + x % y;
            const Owner rest(number(dividend));
            EXPECT_EQ(static_cast<unsigned>(Impl::quorem(rest.get(), b.get())), x % 10);
            EXPECT_EQ(value(rest.get()), x % y);
        }
    }
    EXPECT_EQ(Impl::any_on(Owner(number(0)).get(), 500), 0);
    EXPECT_EQ(Impl::copybits(nullptr, 0, Owner(number(5)).get()), 0);
}

TEST(Bigint, PowersOfFiveBeyondTheCacheToo) {
    Bigint* step = Impl::i2b(3);
    for (int k = 0; k <= 1100; ++k) {
        const Owner direct(Impl::pow5mult(Impl::i2b(3), k));
        ASSERT_EQ(Impl::cmp(direct.get(), step), 0) << k;
        step = Impl::multadd(step, 5, 0);
    }
    Impl::Bfree(step);
}

TEST(Bigint, TakesDoublesApart) {
    for (const double v : number_test::vectors(500)) {
        int exponent = 0;
        int bits = 0;
        const Owner b(Impl::d2b(-v, &exponent, &bits));
        const auto odd = static_cast<std::uint64_t>(value(b.get()));
        EXPECT_EQ(std::ldexp(static_cast<double>(odd), exponent), v);
        EXPECT_EQ(odd & 1, 1U);
        EXPECT_EQ(odd >> (bits - 1), 1U);
        EXPECT_EQ(Impl::ulp(-v), v < 1e308 ? std::nextafter(v, HUGE_VAL) - v : std::ldexp(1.0, 971));
        int zeros = 0;
        const double leading = Impl::b2d(b.get(), &zeros);
        EXPECT_EQ(std::ldexp(leading, 32 * b->used - zeros - 1 + exponent), v);
        EXPECT_TRUE(leading >= 1 && leading < 2);
    }
    unsigned word = 0x00A0;
    EXPECT_EQ(Impl::lo0bits(&word), 5);
    EXPECT_EQ(word, 5U);
    EXPECT_EQ(Impl::hi0bits(word), 29);
    EXPECT_EQ(Impl::hi0bits(0), 32);
    word = 0;
    EXPECT_EQ(Impl::lo0bits(&word), 32);
}

TEST(Bigint, OfDecimalDigits) {
    const std::string digits = "98765432101234567890123456789012345678";
    UInt128 all = 0;
    for (int nd = 1; nd <= 38; ++nd) {
        all = all * 10 + static_cast<unsigned>(digits[static_cast<std::size_t>(nd) - 1] - '0');
        for (int nd0 = 1; nd0 <= nd; ++nd0) {
            std::string text = digits.substr(0, static_cast<std::size_t>(nd));
            if (nd0 < nd)
                text.insert(static_cast<std::size_t>(nd0), ".");
            const std::wstring wide(text.begin(), text.end());
            const auto y9 =
                static_cast<unsigned>(std::stoul(digits.substr(0, static_cast<std::size_t>(std::min(nd, 9)))));
            EXPECT_EQ(take(Impl::s2b(text.c_str(), nd0, nd, y9)), all) << text;
            EXPECT_EQ(take(Impl::s2b(wide.c_str(), nd0, nd, y9)), all) << text;
        }
    }
}

} // namespace
