// The text of doubles against exact decimal arithmetic on digit strings.

#include "fltcvt/NumberVectors.h"
#include "format/FormatProbe.h"
#include "reference/ExactDecimal.h"

namespace {

using probe::format;
using probe::widen;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::vector<double> tellingValues() {
    std::vector<double> values{0.0, -0.0, 12.0, 9.9995, 9.99995, 1e15, 1e16, 1e17, 1e22, 4e38, 1.7e308, 123456.789};
    std::mt19937_64 random(7);
    for (const double v : number_test::vectors(400)) {
        const double withHalves = std::ldexp(static_cast<double>(random() % 100000), -static_cast<int>(random() % 30));
        values.insert(values.end(), {v, -v, withHalves});
    }
    return values;
}

TEST(NumberText, IsRoundedOnceHalfAwayAndCutTo16Digits) {
    for (const double value : tellingValues()) {
        const auto bits = std::bit_cast<std::uint64_t>(std::fabs(value));
        const reference::Decimal exact = value == 0 ? reference::Decimal() : reference::Binary(bits).exact();
        for (const int precision : {0, 1, 2, 4, 6, 10, 14, 15, 16, 17, 18, 22, 23, 24, 40, 126, 400}) {
            SCOPED_TRACE(testing::Message() << value << " with " << precision << " decimals");
            const std::wstring fixed = widen(reference::fixedText(value, exact, precision));
            const std::wstring plus = fixed[0] == L'-' ? fixed : L"+" + fixed;
            ASSERT_EQ(format(L"%.*f|%+.*f", precision, value, precision, value), fixed + L"|" + plus);
            ASSERT_EQ(format(L"%.*e", precision, value), widen(reference::scientificText(value, exact, precision)));
        }
    }
}

TEST(NumberText, GeneralFormSignsAndSpecialValues) {
    // Fixed notation for small exponents, which keeps its zeros.
    EXPECT_EQ(format(L"%g %G %g %g", 3.5, -0.0001, std::nextafter(1e-4, 0.0), std::nextafter(1e5, 0.0)),
              L"3.500000 -0.000100 1.000000E-004 100000.000000");
    EXPECT_EQ(format(L"%g %g %.0e", 1e5, 0.0, 5.0), L"1.000000E+005 0.000000 5E+000");
    EXPECT_EQ(format(L"%+g %+g %+e %+f", 3.5, 1e9, 3.5, 0.25), L"+3.500000 1.000000E+009 3.500000E+000 +0.250000");
    EXPECT_EQ(format(L"%+.1f %.2f %e", -0.04, -0.004, -0.0), L"+0.0 0.00 0.000000E+000");
    EXPECT_EQ(format(L"%f %+f %e %+G", kInfinity, kInfinity, -kInfinity, kInfinity), L"inf +inf -inf inf");
    EXPECT_EQ(format(L"%08f|%+08f|%-5g|", -kInfinity, std::nan(""), -std::nan("")), L"    -inf|     nan|nan  |");
}

TEST(NumberText, FixedTextFunctionFitsItsBuffer) {
    wchar_t buffer[] = L"################";
    EXPECT_EQ(FormatScienceDoubleAndOutputString(buffer, 8, -12.345, 3), 7);
    EXPECT_EQ(std::wstring(buffer, 9), std::wstring(L"-12.345\0#", 9));
    EXPECT_EQ(FormatScienceDoubleAndOutputString(buffer, 7, -12.345, 3), -1);
    EXPECT_EQ(buffer[0], L'\0');
    EXPECT_TRUE(FormatScienceDoubleAndOutputString(buffer, 8, 2.5, -1) == 1 && buffer[0] == L'3');
    EXPECT_EQ(FormatScienceDoubleAndOutputString(nullptr, 8, 1, 1), -1);
    EXPECT_EQ(FormatScienceDoubleAndOutputString(buffer, 0, 1, 1), -1);
}

} // namespace
