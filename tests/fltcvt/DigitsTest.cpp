#include "NumberVectors.h"
#include "fltcvt/FastDigits.h"
#include "fltcvt/RoundedDecimal.h"
#include "reference/ExactDecimal.h"

#include <TqOsBase/fltcvt/TqGdImpl.h>

#include <climits>
#include <cstring>
#include <gtest/gtest.h>
#include <limits>

namespace {

using reference::Decimal;
using tq::detail::DigitLayout;
using tq::detail::DigitRequest;
using tq::detail::Rule;

struct Dtoa {
    std::string digits;
    int point = 0;
    int sign = 0;

    bool operator==(const Dtoa&) const = default;
    Dtoa(std::string text, int decpt, int negative) : digits(std::move(text)), point(decpt), sign(negative) {}
    Dtoa(double v, int mode, int ndigits) {
        char* end = nullptr;
        char* const text = TqGdImpl::dtoa(v, mode, ndigits, &point, &sign, &end);
        digits = text;
        EXPECT_EQ(end, text + digits.size());
        TqGdImpl::freedtoa(text);
    }
};

std::ostream& operator<<(std::ostream& out, const Dtoa& result) {
    return out << result.digits << " point " << result.point << " sign " << result.sign;
}

// What a mode asks for, from the exact and the shortest decimal.
Dtoa expected(const Decimal& exact, const Decimal& shortest, int mode, int ndigits) {
    if (mode < 0 || mode > 9)
        mode = 0;
    mode = mode > 5 ? mode - 4 : mode;
    if (mode < 2)
        return {shortest.digits, shortest.point, 0};
    const bool isPlaces = mode % 2 == 1;
    if (!isPlaces && ndigits < 1)
        ndigits = 1;
    const int places = static_cast<int>(shortest.digits.size()) - (isPlaces ? shortest.point : 0);
    if (mode > 3 && places <= ndigits)
        return {shortest.digits, shortest.point, 0};
    const Decimal result = rounded(exact, isPlaces ? exact.point + ndigits : ndigits);
    return {result.digits, result.digits.empty() ? -ndigits : result.point, 0};
}

TEST(Digits, OfSpecialValues) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double infinity = std::numeric_limits<double>::infinity();
    for (int mode = -1; mode <= 10; ++mode) {
        EXPECT_EQ(Dtoa(0.0, mode, 3), Dtoa("0", 1, 0));
        EXPECT_EQ(Dtoa(-0.0, mode, 3), Dtoa("0", 1, 1));
        EXPECT_EQ(Dtoa(infinity, mode, 3), Dtoa("Infinity", 9999, 0));
        EXPECT_EQ(Dtoa(-infinity, mode, 3), Dtoa("Infinity", 9999, 1));
        EXPECT_EQ(Dtoa(nan, mode, 3), Dtoa("NaN", 9999, 0));
        EXPECT_EQ(Dtoa(std::copysign(nan, -1.0), mode, 3), Dtoa("NaN", 9999, 1));
    }
    EXPECT_EQ(Dtoa(-0.1, 0, 0), Dtoa("1", 0, 1));
    EXPECT_EQ(Dtoa(2.0 / 3, 2, 3), Dtoa("667", 0, 0));
    EXPECT_EQ(Dtoa(5e-324, 4, 3), Dtoa("5", -323, 0));
    EXPECT_EQ(Dtoa(1e22, 3, INT_MIN), Dtoa("", INT_MAX, 0));
    EXPECT_EQ(Dtoa(1e-22, 5, -INT_MAX), Dtoa("", INT_MAX, 0));
    EXPECT_EQ(Dtoa(0.5, 2, INT_MAX), Dtoa("5", 0, 0));
    EXPECT_EQ(Dtoa(1.5, 3, INT_MAX), Dtoa("15", 1, 0));
}

TEST(Digits, AgreeWithExactDecimalsInEveryMode) {
    std::mt19937 random(7);
    for (const double v : number_test::vectors(3000)) {
        const Decimal exact = reference::Binary(std::bit_cast<std::uint64_t>(v)).exact();
        const Decimal shortest = reference::shortest(v);
        for (int mode = -1; mode <= 10; ++mode) {
            const bool isPlaces = mode > 2 && mode % 2 == 1;
            const int ndigits = static_cast<int>(random() % 44) - 2 - (isPlaces && random() % 2 != 0 ? exact.point : 0);
            SCOPED_TRACE(testing::Message() << std::hexfloat << v << " mode " << mode << " digits " << ndigits);
            const Dtoa wanted = expected(exact, shortest, mode, ndigits);
            ASSERT_EQ(Dtoa(v, mode, ndigits), wanted);

            char digits[tq::detail::kDigitRoom];
            const DigitRequest request = DigitRequest::ofMode(mode, ndigits);
            DigitLayout layout = tq::detail::exactDigits(v, request, digits);
            ASSERT_EQ(Dtoa(std::string(digits, static_cast<std::size_t>(layout.count)), layout.point, 0), wanted);
            if (request.rule != Rule::kOrShorter && tq::detail::tryFixedPointDigits(v, request, digits, layout)) {
                ASSERT_EQ(Dtoa(std::string(digits, static_cast<std::size_t>(layout.count)), layout.point, 0), wanted);
            }
            if (request.kind == DigitRequest::kShortest || request.rule == Rule::kOrShorter)
                continue;
            // One number, with ties away from zero.
            const DigitRequest away{request.kind, Rule::kAwayFromZero, request.count};
            layout = tq::detail::exactDigits(v, away, digits);
            const tq::detail::RoundedDecimal number = tq::detail::roundedDecimal(v, away);
            std::string text = number.count != 0 ? std::to_string(number.digits) : "";
            ASSERT_EQ(static_cast<int>(text.size()), number.count);
            text.resize(tq::detail::RoundedDecimal::kMaxCount, '0');
            std::string cut(digits, static_cast<std::size_t>(layout.count));
            cut.resize(tq::detail::RoundedDecimal::kMaxCount, '0');
            ASSERT_EQ(text, cut);
            ASSERT_EQ(number.point, layout.point);
        }
    }
}

TEST(Digits, AllOfThemComeOut) {
    for (const double v : {5e-324, 2.2250738585072009e-308, 1.7976931348623157e308, 0.1, 1e-5}) {
        const Decimal exact = reference::Binary(std::bit_cast<std::uint64_t>(v)).exact();
        EXPECT_EQ(Dtoa(v, 2, 2000), Dtoa(exact.digits, exact.point, 0));
        EXPECT_EQ(Dtoa(v, 3, 2000), Dtoa(exact.digits, exact.point, 0));
    }
}

// The fast conversions alone: certain nearly always, and right whenever they say so.
TEST(Digits, FastConversionsDecide) {
    using tq::detail::tryRoundedDigits;
    constexpr decltype(&tryRoundedDigits<>) kWays[] = {&tryRoundedDigits<>,
                                                       &tryRoundedDigits<tq::detail::roundedByAllBits>,
                                                       &tryRoundedDigits<tq::detail::roundedByUpperHalf>};
    int undecided[std::size(kWays)] = {};
    int undecidedShortest = 0;
    const std::vector<double> values = number_test::vectors(2000);
    for (const double v : values) {
        const Decimal exact = reference::Binary(std::bit_cast<std::uint64_t>(v)).exact();
        const Decimal shortest = reference::shortest(v);
        tq::detail::SeventeenDigits fast;
        if (tq::detail::tryShortestDigits(v, fast)) {
            Decimal result{std::to_string(fast.sixteen) + std::to_string(fast.last), fast.point};
            ASSERT_EQ(result.digits.size(), 17U);
            result.trim();
            ASSERT_EQ(result, shortest) << std::hexfloat << v;
        } else if (tq::detail::DoubleParts(v).significand > tq::detail::kHiddenBit) {
            ++undecidedShortest;
        }
        char text[tq::detail::kDigitRoom];
        const DigitLayout layout = tq::detail::shortestDigits(v, text);
        ASSERT_EQ((Decimal{std::string(text, static_cast<std::size_t>(layout.count)), layout.point}), shortest)
            << std::hexfloat << v;
        for (int count = 1; count <= tq::detail::kMaxFastDigits; ++count) {
            const Decimal wanted = rounded(exact, count);
            for (std::size_t way = 0; way < std::size(kWays); ++way) {
                std::uint64_t digits = 0;
                int exponent = 0;
                if (!kWays[way](v, count, Rule::kToEven, digits, exponent)) {
                    ++undecided[way];
                    continue;
                }
                Decimal result{std::to_string(digits), exponent + 1};
                ASSERT_EQ(result.digits.size(), static_cast<std::size_t>(count));
                result.trim();
                ASSERT_EQ(result, wanted) << std::hexfloat << v << " " << count << " way " << way;
            }
        }
    }
    const int all = static_cast<int>(values.size()) * tq::detail::kMaxFastDigits;
    EXPECT_LT(undecided[0], all / 100);
    EXPECT_EQ(undecided[1], undecided[0]);
    EXPECT_LT(undecided[2], all / 10);
    EXPECT_LT(undecidedShortest, static_cast<int>(values.size()) / 100);
}

TEST(Digits, SixteenAtOnce) {
    std::mt19937_64 random(11);
    const auto check = [](std::uint64_t value, const auto& digits, const std::string& text) {
        char out[16];
        digits.store(out);
        EXPECT_EQ(std::string(out, 16), text) << value;
        EXPECT_EQ(digits.significant(), static_cast<int>(text.find_last_not_of('0') + 1)) << value;
    };
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t power = tq::detail::kSmallPowersOfTen[random() % 17];
        const std::uint64_t value = i == 0 ? 9999999999999999 : random() % 10000000000000000 / power * power;
        std::string text = std::to_string(value);
        text.insert(0, 16 - text.size(), '0');
        check(value, tq::detail::SixteenDigits(value), text);
        check(value, tq::detail::SixteenDigitsInWords(value), text);
    }
}

Bigint* ofWords(std::uint64_t high, std::uint64_t low) {
    Bigint* const b = TqGdImpl::Balloc(2);
    const std::uint64_t words[] = {low, high};
    std::memcpy(b->words, words, sizeof words);
    b->used = 4;
    return b;
}

// g is the power scaled by a power of two, rounded up: g - 1 < 10^k * 2^s <= g.
TEST(PowersOfTen, AreRecomputedByBigIntegers) {
    for (int k = tq::detail::kFirstPower; k <= tq::detail::kLastPower; ++k) {
        SCOPED_TRACE(k);
        const tq::detail::PowerOfTen& power = tq::detail::powerOfTen(k);
        ASSERT_GE(power.high, std::uint64_t{1} << 63);
        const int shift = 127 - tq::detail::floorLog2OfPowerOfTen(k) + k; // of 5^k
        // Both sides times 2^(-shift), and times 5^(-k), where those are integers.
        const auto scaled = [k, shift](Bigint* g) {
            return TqGdImpl::lshift(TqGdImpl::pow5mult(g, std::max(-k, 0)), std::max(-shift, 0));
        };
        Bigint* const exact =
            TqGdImpl::lshift(TqGdImpl::pow5mult(TqGdImpl::i2b(1), std::max(k, 0)), std::max(shift, 0));
        Bigint* const upper = scaled(ofWords(power.high, power.low));
        Bigint* const lower = scaled(ofWords(power.low == 0 ? power.high - 1 : power.high, power.low - 1));
        EXPECT_GE(TqGdImpl::cmp(upper, exact), 0);
        EXPECT_LT(TqGdImpl::cmp(lower, exact), 0);
        EXPECT_EQ(TqGdImpl::cmp(upper, exact) == 0, tq::detail::isExactPower(k));
        for (Bigint* b : {exact, upper, lower})
            TqGdImpl::Bfree(b);
    }
}

TEST(PowersOfTen, LogarithmsAreExact) {
    const auto log10 = [](int e, double factor) {
        return static_cast<int>(std::floor(e * std::log10(2.0L) + std::log10(factor)));
    };
    for (int e = -1100; e <= 1100; ++e) {
        ASSERT_EQ(tq::detail::floorLog10OfPowerOfTwo(e), log10(e, 1.0)) << e;
        ASSERT_EQ(tq::detail::floorLog10OfThreeQuarters(e), log10(e, 0.75)) << e;
    }
}

} // namespace
