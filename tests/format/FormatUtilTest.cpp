
#include "format/ScaleTables.h"
#include "reference/Testing.h"

TEST(FormatUtil, CopiesAndFillsOnlyWhatFits) {
    wchar_t buffer[64];
    wchar_t* out = buffer;
    EXPECT_TRUE(FormatUtil::StringCopy(&out, 4, L"abcdef", 3) == 0 && buffer == std::wstring(L"abc"));
    const std::tuple<int, const wchar_t*, unsigned, int> rows[] = {{4, L"abcdef", 4, -1}, {4, L"abcdef", UINT_MAX, -1},
                                                                   {4, L"abcdef", 0, 0},  {0, L"abcdef", 0, -1},
                                                                   {4, nullptr, 1, -1},   {4, nullptr, 0, 0}};
    for (const auto& [room, text, count, result] : rows) {
        *out = result == 0 ? L'#' : L'\0';
        EXPECT_TRUE(FormatUtil::StringCopy(&out, room, text, count) == result && out == buffer + 3 && *out == L'\0');
    }

    const auto fill = [&out](wchar_t c, int count) { return FormatUtil::fillStringWithBlankChar(&out, 40, c, count); };
    EXPECT_TRUE(fill(L'-', 37) == 0 && buffer == L"abc" + std::wstring(37, L'-'));
    out = buffer;
    EXPECT_TRUE(fill(L'.', 50) == -1 && buffer == std::wstring(30, L'.') && fill(L'.', -1) == -1);
}

TEST(FormatUtil, WritesIntegersInAnyBase) {
    wchar_t text[66];
    const std::wstring hex(16, L'F'), decimal = std::to_wstring(LONG_MIN), binary = L"-1" + std::wstring(63, L'0');
    using Row = std::tuple<long, int, std::wstring>;
    const Row rows[] = {{-255, -16, L"-FF"}, {255, -16, L"FF"},        {-1, 16, hex},
                        {35, 99, L"Z"},      {5, 0, L"101"},           {0, 10, L"0"},
                        {5, INT_MIN, L"5"},  {LONG_MIN, -10, decimal}, {LONG_MIN, -2, binary}};
    for (const auto& [value, base, expected] : rows) {
        EXPECT_EQ(FormatUtil::formatLong(text, value, 7, base), static_cast<int>(expected.size()));
        EXPECT_EQ(text, expected);
    }
}

TEST(FormatUtil, CountsPositionsAsTheLastIntroducerSays) {
    const std::tuple<const wchar_t*, bool, int> rows[] = {
        {L"%d %s", false, 0}, {L"%2$s %1$d", true, 2},   {L"%1$d %d", true, 0},    {L"%3$d", true, 1},
        {L"%%1$d", false, 0}, {L"5 * 3$ %1$d", true, 1}, {L"a*2$b %1$d", true, 2}, {L"%5%1$d", false, 0},
        {L"%12", false, 0},   {L"%1$d %*", true, 0},     {nullptr, false, 0}};
    for (const auto& [format, isPositional, expected] : rows) {
        int count = -1;
        EXPECT_TRUE(FormatUtil::isDefineSelfParaIndex(&count, format) == isPositional && count == expected) << format;
    }
}

// Systems have long doubles of 53, 64 and 113 bits.
using Extended = std::numeric_limits<long double>;
constexpr double kClose = std::max(1e-15, static_cast<double>(64 * Extended::epsilon()));

TEST(FormatUtil, ScaleTablesAreWhatTheyStandFor) {
    for (std::size_t i = 0; i < g_arrIntegerPows.size(); ++i) {
        const long double power = std::stold("1e" + std::to_string(1 << i));
        EXPECT_NEAR(static_cast<double>(g_arrIntegerPows[i] / power - 1), 0, kClose);
        EXPECT_GE(g_arrIntegerPows[i] * g_arrDecimalPows[i], 1);
        EXPECT_LT(std::nextafter(g_arrDecimalPows[i], 0.0L) * g_arrIntegerPows[i], 1 + 2 * Extended::epsilon());
    }
    EXPECT_EQ(g_idxThirdOfPowrArr, 3);
    const auto half = [](int k) { return std::stold("5e-" + std::to_string(k)); };
    int length = 1; // up to the first that is lost in 1, at most 35
    while (length < 35 && 1 + half(length - 1) != 1)
        ++length;
    ASSERT_EQ(g_lenRndArray, length);
    long double power = 5;
    for (int k = 0; k < length; ++k, power /= 10) {
        long double tenSteps = power;
        for (int i = 0; i < 10; ++i)
            tenSteps = std::nextafter(tenSteps, 9.0L);
        EXPECT_EQ(g_arrRndConValue[static_cast<std::size_t>(k)], tenSteps) << k;
    }
}

TEST(FormatUtil, ScalesToMantissaAndExponent) {
    std::mt19937_64 random(3);
    constexpr int kFarthest = Extended::max_exponent10 - 32;
    for (int e = -kFarthest; e <= kFarthest; e += 7) {
        const long double value = std::stold(std::to_string(1 + random() % 9) + "." + std::to_string(random() % 1000) +
                                             "1e" + std::to_string(e));
        for (const long double sign : {1.0L, -1.0L}) {
            long double mantissa = value * sign;
            const int exponent = FormatUtil::scaleDoubleToScience(&mantissa);
            EXPECT_TRUE(exponent == e && std::fabs(mantissa) >= 1 && std::fabs(mantissa) < 10);
            EXPECT_NEAR(static_cast<double>(mantissa / (value * sign) * std::pow(10.0L, e) - 1), 0, kClose);
        }
    }
    for (long double odd : {-0.0L, std::numeric_limits<long double>::infinity(), std::nanl("")})
        EXPECT_EQ(FormatUtil::scaleDoubleToScience(&odd), 0);
    long double smallest = std::numeric_limits<long double>::denorm_min();
    const int exponent = Extended::digits == 64 ? -4951 : Extended::digits == 53 ? -324 : -4966;
    EXPECT_EQ(FormatUtil::scaleDoubleToScience(&smallest), exponent);
}

TEST(FormatUtil, RoundsAMantissaInPlace) {
    using Row = std::tuple<long double, int, int, int, double>; // the last is before cutting
    const Row rows[] = {{1.25L, 1, 0, 0, 1.30}, {9.97L, 1, 0, 1, 1.002},    {2.5L, 0, 0, 0, 3.0},
                        {2.5L, 0, -2, 0, 2.5},  {-6.0L, 2, -3, 1, 1.1},     {-4.0L, 2, -3, 0, 9.0},
                        {5.0L, 30, -1, 0, 5.0}, {5.0L, INT_MAX, 1, 0, 5.0}, {-2.5L, 1, 0, 0, -2.55}};
    for (const auto& [before, precision, exponent, carry, rounded] : rows) {
        long double mantissa = before;
        EXPECT_EQ(FormatUtil::roundScienceDouble(&mantissa, precision, exponent), carry);
        // The sign of a magnitude below the constant is lost: it rounds up from the other side of zero.
        EXPECT_NEAR(static_cast<double>(std::fabs(mantissa)), std::fabs(rounded), kClose);
        EXPECT_EQ(mantissa < 0, rounded < 0 || before == -6.0L);
    }
}

TEST(FormatUtil, WritesFixedTextFromAMantissa) {
    const std::wstring large = L"1" + std::wstring(19, L'0');
    using Row = std::tuple<long double, int, int, int, const wchar_t*>;
    const Row rows[] = {{-1.25, 3, 0, 0, L"-125"},   {5, -2, 5, 0, L"0.00500"},       {5, 0, 3, 0, L"0.500"},
                        {0, 1, 3, 0, L"0.000"},      {0, 3, 2, 0, L"000.00"},         {0.5, 3, 2, 0, L"050.00"},
                        {10, 2, 1, 0, L"99.9"},      {-0.25, 0, 4, 0, L"-0.0250"},    {1.5, 1, 2, 3, L"1."},
                        {1.5, 1, -2, 0, L"1"},       {0.0625, -1, 6, 0, L"0.000625"}, {-HUGE_VAL, 1, 2, 0, L"-inf"},
                        {1, 20, 2, 0, large.c_str()}};
    wchar_t text[126];
    for (const auto& [mantissa, integerDigits, precision, size, expected] : rows) {
        const int length = FormatUtil::formatScienceDouble(text, mantissa, integerDigits, precision, size);
        EXPECT_EQ(std::wstring(text, static_cast<std::size_t>(length)), expected);
    }
    EXPECT_EQ(FormatUtil::formatScienceDouble(text, -1.5L, 300, 6, 0), 125);
}
