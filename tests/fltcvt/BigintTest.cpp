#include "fltcvt/DigitAllocator.h"
#include "fltcvt/UInt128.h"
#include "reference/ExactDecimal.h"

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

std::ptrdiff_t placeInPool(const void* block) {
    return static_cast<const char*>(block) - reinterpret_cast<const char*>(tqFCvtAllocator()->m_pool);
}

bool isPooled(const void* block) {
    return placeInPool(block) >= 0 && placeInPool(block) < TqFCvtAllocator::kPoolBytes;
}

TEST(DigitAllocator, BlocksAndStringsOfEveryClass) {
    // Blocks of one class follow each other, until the pool has no more room.
    std::vector<Owner> taken;
    while (taken.empty() || isPooled(taken.back().get()))
        taken.emplace_back(Impl::Balloc(5));
    const auto* const full = tqFCvtAllocator()->m_cursor;
    EXPECT_EQ(placeInPool(taken.end()[-2].get()) - placeInPool(taken.end()[-3].get()), 160);
    EXPECT_LE(placeInPool(full), TqFCvtAllocator::kPoolBytes);
    Bigint* const last = taken.front().get();
    last->sign = last->used = 1;
    taken.pop_back(); // the heap's, which enters no list
    EXPECT_EQ(tqFCvtAllocator()->m_freeLists[5], nullptr);
    taken.front().reset();
    taken.front().reset(Impl::Balloc(5));
    EXPECT_EQ(taken.front().get(), last) << "last freed, first taken";
    EXPECT_TRUE(last->k == 5 && last->capacity == 32 && last->sign + last->used == 0);
    taken.clear();
    EXPECT_EQ(tqFCvtAllocator()->m_cursor, full);
    Impl::Bfree(nullptr);
    Impl::freedtoa(nullptr);
    EXPECT_THROW(Impl::Balloc(31), std::bad_alloc);
    EXPECT_THROW(Impl::Balloc(-1), std::bad_alloc);

    for (const auto& [length, k] :
         {std::pair{-5, 0}, {27, 0}, {28, 1}, {31, 1}, {32, 2}, {40, 3}, {150, 5}, {5000, 11}}) {
        char* const text = Impl::rv_alloc(length);
        EXPECT_EQ(std::memcmp(text - sizeof k, &k, sizeof k), 0) << length;
        std::memset(text, 'x', static_cast<std::size_t>(std::max(length, 0)) + 1);
        Impl::freedtoa(text);
        char* const again = Impl::rv_alloc(length);
        EXPECT_TRUE(again == text || !isPooled(text)) << length;
        Impl::freedtoa(again);
    }
    for (const int n : {-1, 50}) {
        char source[] = "a text that is longer than the smallest block holds";
        char* end = nullptr;
        char* const copy = Impl::nrv_alloc(source, &end, n);
        EXPECT_TRUE(copy == std::string(source) && end == copy + sizeof source - 1);
        Impl::freedtoa(copy);
    }
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
        EXPECT_TRUE(value(difference.get()) == (x > y ? x - y : y - x) && difference->sign == (x < y ? 1 : 0));
        EXPECT_EQ(Impl::cmp(a.get(), b.get()) <=> 0, x <=> y);
        EXPECT_EQ(take(Impl::lshift(number(x), shift)), UInt128{x} << shift);
        const int m = static_cast<int>(any() % INT_MAX), c = static_cast<int>(any() % INT_MAX);
        EXPECT_EQ(take(Impl::multadd(number(x), m, c)),
                  UInt128{x} * static_cast<unsigned>(m) + static_cast<unsigned>(c));
        EXPECT_EQ(Impl::any_on(a.get(), shift), (x & ((std::uint64_t{1} << shift) - 1)) != 0);
        unsigned words[4] = {9, 9, 9, 9};
        EXPECT_EQ(Impl::copybits(words, 70, a.get()), 3);
        EXPECT_TRUE((words[0] | std::uint64_t{words[1]} << 32) == x && words[2] + words[3] == 9);
        std::string digits = std::to_string(x);
        const auto count = static_cast<int>(digits.size()), before = 1 + i % count;
        const auto leading = static_cast<unsigned>(std::stoul(digits.substr(0, 9)));
        if (before < count)
            digits.insert(static_cast<std::size_t>(before), ".");
        EXPECT_EQ(take(Impl::s2b(digits.c_str(), before, count, leading)), x) << digits;
        EXPECT_EQ(take(Impl::s2b(std::wstring(digits.begin(), digits.end()).c_str(), before, count, leading)), x);
        if (y != 0) {
            EXPECT_DOUBLE_EQ(Impl::ratio(Owner(number(x | 1)).get(), b.get()),
                             static_cast<double>(x | 1) / static_cast<double>(y));
            const UInt128 dividend = UInt128{y} * (x % 10) + x % y;
            const Owner rest(number(dividend));
            EXPECT_TRUE(static_cast<unsigned>(Impl::quorem(rest.get(), b.get())) == x % 10 &&
                        value(rest.get()) == x % y);
        }
    }
    EXPECT_EQ(Impl::any_on(Owner(number(0)).get(), 500) + Impl::copybits(nullptr, 0, Owner(number(5)).get()), 0);
}

TEST(Bigint, PowersOfFiveAndTheirCache) {
    Bigint* step = Impl::i2b(1);
    Bigint* cached = G_Pow5Data;
    EXPECT_EQ(placeInPool(cached), 0) << "the cache comes first";
    for (int k = 0; k <= 1100; ++k) {
        const Owner direct(Impl::pow5mult(Impl::i2b(1), k));
        ASSERT_EQ(Impl::cmp(direct.get(), step), 0) << k;
        if (k >= 4 && k <= 256 && std::has_single_bit(static_cast<unsigned>(k))) {
            ASSERT_EQ(Impl::cmp(cached, step), 0) << k;
            cached = cached->next;
        }
        step = Impl::multadd(step, 5, 0);
    }
    EXPECT_EQ(cached, nullptr);
    Impl::Bfree(step);
}

TEST(Bigint, TakesDoublesApart) {
    for (const double v : reference::numbers(500)) {
        int exponent = 0, bits = 0;
        const Owner b(Impl::d2b(-v, &exponent, &bits));
        const auto odd = static_cast<std::uint64_t>(value(b.get()));
        EXPECT_TRUE(std::ldexp(static_cast<double>(odd), exponent) == v && (odd & 1) == 1 && odd >> (bits - 1) == 1);
        int zeros = 0;
        const double leading = Impl::b2d(b.get(), &zeros);
        EXPECT_TRUE(std::ldexp(leading, 32 * b->used - zeros - 1 + exponent) == v && leading >= 1 && leading < 2);
    }
    for (std::uint64_t field = 0; field < 2046; ++field) {
        const auto v = std::bit_cast<double>(field << 52);
        EXPECT_EQ(Impl::ulp(-v), std::nextafter(v, HUGE_VAL) - v) << field;
    }
    EXPECT_EQ(Impl::ulp(1.7e308), std::ldexp(1.0, 971));
    unsigned words[] = {0x00A0, 0};
    EXPECT_TRUE(Impl::lo0bits(&words[0]) == 5 && words[0] == 5 && Impl::lo0bits(&words[1]) == 32);
    EXPECT_TRUE(Impl::hi0bits(5) == 29 && Impl::hi0bits(0) == 32);
}

} // namespace
