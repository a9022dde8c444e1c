#include "fltcvt/FastDigits.h"
#include "fltcvt/RoundedDecimal.h"
#include "reference/ExactDecimal.h"

namespace {

using reference::Decimal;
using tq::detail::DigitLayout;
using tq::detail::DigitRequest;
using tq::detail::Rule;

struct Dtoa {
    std::string digits;
    int point = 0, sign = 0;

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
    for (int mode = -1; mode <= 10; ++mode)
        for (const int sign : {0, 1}) {
            EXPECT_EQ(Dtoa(std::copysign(0.0, 0.5 - sign), mode, 3), Dtoa("0", 1, sign));
            EXPECT_EQ(Dtoa(std::copysign(HUGE_VAL, 0.5 - sign), mode, 3), Dtoa("Infinity", 9999, sign));
            EXPECT_EQ(Dtoa(std::copysign(nan, 0.5 - sign), mode, 3), Dtoa("NaN", 9999, sign));
        }
    EXPECT_TRUE(Dtoa(-0.1, 0, 0) == Dtoa("1", 0, 1) && Dtoa(2.0 / 3, 2, 3) == Dtoa("667", 0, 0));
    EXPECT_EQ(Dtoa(5e-324, 4, 3), Dtoa("5", -323, 0));
    EXPECT_EQ(Dtoa(1.6127338325376e-86, 2, 64).digits.substr(60), "6546") << "beside a middle";
    EXPECT_EQ(Dtoa(1.4470355378477e-129, 2, 65).digits.substr(61), "4627") << "beside a middle";
    EXPECT_TRUE(Dtoa(0.5, 2, INT_MAX) == Dtoa("5", 0, 0) && Dtoa(1.5, 3, INT_MAX) == Dtoa("15", 1, 0));
    for (const Dtoa& none : {Dtoa(1e22, 3, INT_MIN), Dtoa(1e-22, 5, -INT_MAX)})
        EXPECT_EQ(none, Dtoa("", INT_MAX, 0));
}

TEST(Digits, AgreeWithExactDecimalsInEveryMode) {
    std::mt19937 random(7);
    int decided[2] = {};
    for (const double v : reference::numbers(3000)) {
        const Decimal exact = reference::Binary(std::bit_cast<std::uint64_t>(v)).exact();
        const Decimal shortest = reference::shortest(v);
        for (int mode = -1; mode <= 10; ++mode) {
            const bool isPlaces = mode > 2 && mode % 2 == 1;
            int ndigits = static_cast<int>(random() % 44) - 2 - (isPlaces && random() % 2 != 0 ? exact.point : 0);
            if (random() % 100 == 0)
                ndigits = 2000; // all there are
            SCOPED_TRACE(testing::Message() << std::hexfloat << v << " mode " << mode << " digits " << ndigits);
            const Dtoa wanted = expected(exact, shortest, mode, ndigits);
            ASSERT_EQ(Dtoa(v, mode, ndigits), wanted);

            char digits[tq::detail::kDigitRoom];
            const auto laidOut = [&digits](const DigitLayout& layout) {
                return Dtoa(std::string(digits, static_cast<std::size_t>(layout.count)), layout.point, 0);
            };
            const DigitRequest request = DigitRequest::ofMode(mode, ndigits);
            DigitLayout layout = tq::detail::exactDigits(v, request, digits);
            ASSERT_EQ(laidOut(layout), wanted);
            for (const auto way : {tq::detail::tryFixedPointDigits, tq::detail::tryLongProductDigits})
                if (request.rule != Rule::kOrShorter && way(v, request, digits, layout = {})) {
                    ++decided[way == tq::detail::tryLongProductDigits];
                    ASSERT_EQ(laidOut(layout), wanted);
                }
            if (request.kind == DigitRequest::kShortest || request.rule == Rule::kOrShorter)
                continue;
            // One number, with ties away from zero.
            const DigitRequest away{request.kind, Rule::kAwayFromZero, request.count};
            layout = tq::detail::exactDigits(v, away, digits);
            const tq::detail::RoundedDecimal number = tq::detail::roundedDecimal(v, away);
            std::string text = number.count != 0 ? std::to_string(number.digits) : "";
            ASSERT_EQ(static_cast<int>(text.size()), number.count);
            Dtoa rest = laidOut(layout); // without the zeros at its end
            for (std::string* digitString : {&text, &rest.digits})
                digitString->resize(tq::detail::RoundedDecimal::kMaxCount, '0');
            ASSERT_EQ(Dtoa(text, number.point, 0), rest);
        }
    }
    EXPECT_GT(decided[0], 6000) << "each way has its use";
    EXPECT_GT(decided[1], 10000);
}

// The fast conversions alone: certain nearly always, and right whenever they say so.
TEST(Digits, FastConversionsDecide) {
    using tq::detail::tryRoundedDigits;
    constexpr decltype(&tryRoundedDigits<>) kWays[] = {&tryRoundedDigits<>,
                                                       &tryRoundedDigits<tq::detail::roundedByAllBits>,
                                                       &tryRoundedDigits<tq::detail::roundedByUpperHalf>};
    int undecided[std::size(kWays)] = {};
    int undecidedShortest = 0;
    const std::vector<double> values = reference::numbers(2000);
    for (const double v : values) {
        SCOPED_TRACE(testing::Message() << std::hexfloat << v);
        const Decimal exact = reference::Binary(std::bit_cast<std::uint64_t>(v)).exact();
        const Decimal shortest = reference::shortest(v);
        const auto expectNumber = [](const std::string& digits, std::size_t count, int point, const Decimal& wanted) {
            Decimal result{digits, point};
            result.trim();
            EXPECT_TRUE(digits.size() == count && result == wanted) << digits << " point " << point;
        };
        tq::detail::SeventeenDigits fast;
        if (tq::detail::tryShortestDigits(v, fast))
            expectNumber(std::to_string(fast.sixteen) + std::to_string(fast.last), 17, fast.point, shortest);
        else if (tq::detail::DoubleParts(v).significand > tq::detail::kHiddenBit)
            ++undecidedShortest;
        for (int count = 1; count <= tq::detail::kMaxFastDigits; ++count)
            for (std::size_t way = 0; way < std::size(kWays); ++way) {
                std::uint64_t digits = 0;
                int exponent = 0;
                if (kWays[way](v, count, Rule::kToEven, digits, exponent))
                    expectNumber(std::to_string(digits), static_cast<std::size_t>(count), exponent + 1,
                                 rounded(exact, count));
                else
                    ++undecided[way];
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
    const auto expectText = [](const auto& digits, const std::string& text) {
        char out[16];
        digits.store(out);
        EXPECT_EQ(std::string(out, 16), text);
        EXPECT_EQ(digits.significant(), static_cast<int>(text.find_last_not_of('0') + 1)) << text;
    };
    for (int i = 0; i < 20000; ++i) {
        const std::uint64_t power = tq::detail::kSmallPowersOfTen[random() % 17];
        const std::uint64_t value = random() % 10000000000000000 / power * power;
        const std::string text = std::to_string(10000000000000000 + value).substr(1);
        expectText(tq::detail::SixteenDigits(value), text);
        expectText(tq::detail::SixteenDigitsInWords(value), text);
    }
}

// The powers are recomputed by another program with exact fractions: 10^k * 2^s below 2^128, rounded up.
TEST(PowersOfTen, TableAndLogarithms) {
    using namespace tq::detail;
    reference::Checksum powers;
    for (int k = kFirstPower; k <= kLastPower; ++k) {
        powers.add(static_cast<std::int64_t>(powerOfTen(k).high));
        powers.add(static_cast<std::int64_t>(powerOfTen(k).low));
        powers.add(isExactPower(k) ? 1 : 0);
    }
    EXPECT_EQ(powers.sum(), 0xF9360C9F8FE8BA18U);
    EXPECT_EQ(reference::checksum(-342, 342, floorLog2OfPowerOfTen), 0x2FCC61D0A01356E1U);
    EXPECT_EQ(reference::checksum(-1100, 1100, floorLog10OfPowerOfTwo), 0xAFA8C54819C5FAEFU);
    EXPECT_EQ(reference::checksum(-1100, 1100, floorLog10OfThreeQuarters), 0xA7ACB5A0F4598455U);
}

} // namespace
