
#include "reference/ExactDecimal.h"
#include "reference/ScanInput.h"

#include <cfenv>
#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace {

using reference::format;
using reference::widened;

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::vector<double> tellingValues() {
    std::vector<double> values{0.0, -0.0, 12.0, 9.9995, 9.99995, 1e15, 1e16, 1e17, 1e22, 4e38, 1.7e308, 123456.789};
    std::mt19937_64 random(7);
    for (const double v : reference::numbers(400)) {
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
            const std::wstring fixed = widened(reference::fixedText(value, exact, precision));
            const std::wstring plus = fixed[0] == L'-' ? fixed : L"+" + fixed;
            ASSERT_EQ(format(L"%.*f|%+.*f", precision, value, precision, value), fixed + L"|" + plus);
            ASSERT_EQ(format(L"%.*e", precision, value), widened(reference::scientificText(value, exact, precision)));
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
    EXPECT_TRUE(FormatScienceDoubleAndOutputString(buffer, 7, -12.345, 3) == -1 && buffer[0] == L'\0');
    EXPECT_TRUE(FormatScienceDoubleAndOutputString(buffer, 8, 2.5, -1) == 1 && buffer[0] == L'3');
    EXPECT_EQ(FormatScienceDoubleAndOutputString(nullptr, 8, 1, 1), -1);
    EXPECT_EQ(FormatScienceDoubleAndOutputString(buffer, 0, 1, 1), -1);
}

// Text and reading depend on no setting of the processor: rounding modes, subnormals flushed to zero.
template <class Function>
auto inMode(int rounding, bool flushesToZero, const Function& function) {
    std::fenv_t saved;
    std::fegetenv(&saved);
    std::fesetround(rounding);
#if defined(__x86_64__)
    _mm_setcsr(_mm_getcsr() | (flushesToZero ? 0x8040 : 0));
#elif defined(__aarch64__)
    std::uint64_t control = 0;
    __asm__ volatile("mrs %0, fpcr" : "=r"(control));
    __asm__ volatile("msr fpcr, %0" : : "r"(control | (flushesToZero ? 1U << 24 : 0)));
#endif
    auto result = function();
    EXPECT_EQ(std::fegetround(), rounding);
    std::fesetenv(&saved);
    return result;
}

// All that is made of a number, as one text. No arithmetic of doubles here, which would depend on the mode itself.
std::wstring results(double value, LumoAppUnitSets units) {
    std::wstring all = reference::format(L"%f|%.20f|%.2e|%e|%g|%+.1G|", value, value, value, value, value, value);
    for (const char letter : {'e', 'f', 'g'}) {
        char text[800];
        tqDToStr(text, value, letter, 16, 0);
        double read = 0;
        float single = 0;
        EXPECT_EQ(reference::scan((widened(text) + L" " + widened(text)).c_str(), L"%lf%f", &read, &single), 2);
        all += reference::format(L"%s %X %X %x|", widened(text).c_str(),
                                 std::bit_cast<std::uint64_t>(tqStrToD(text, nullptr)),
                                 std::bit_cast<std::uint64_t>(read), std::bit_cast<std::uint32_t>(single));
    }
    for (std::int16_t mode = 0; mode <= 5; ++mode)
        for (const std::int16_t precision : std::initializer_list<std::int16_t>{0, 4, 20}) {
            units.linearUnitMode = units.angularUnitMode = mode;
            units.linearPrecision = units.angularPrecision = precision;
            initOsBaseUnits(units);
            all += reference::format(L"%.60q1 %.60q2 %.60q3|", value, value, value);
        }
    wchar_t buffer[150];
    FormatUtil::formatQModeDouble(buffer, 150, value, kQTypeLength, 40); // keeps the sign of zeros
    all += buffer;
    FormatUtil::formatScienceDouble(buffer, value, 1, 15, 0);
    long double mantissa = value;
    all += reference::format(L"%s|%d", buffer, FormatUtil::scaleDoubleToScience(&mantissa));
    const bool isInRange = (mantissa >= 1 && mantissa < 10) || (mantissa <= -1 && mantissa > -10);
    return all + (isInRange ? L"" : L" out of range");
}

TEST(FloatModes, ChangeNoResult) {
    std::vector<double> values = reference::numbers(0);
    for (int i = 1; i < 1440; i += 17) // halves of degrees and minutes, almost feet
        values.insert(values.end(),
                      {i * 0.5 / 57.29577951308232, i / 120.0 / 57.29577951308232, std::nextafter(i * 12.0, 0.0)});
    LumoAppUnitSets units;
    for (std::size_t i = 0; i < values.size(); i += i < 30 ? 1 : 4) {
        const double value = i % 5 < 2 ? -values[i] : values[i];
        units.angleBase = i % 3 == 0 ? 0.1 : 0.0;
        const std::wstring expected = results(value, units);
        for (const int rounding : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO})
            for (const bool flushesToZero : {false, true})
                ASSERT_EQ(inMode(rounding, flushesToZero, [&] { return results(value, units); }), expected)
                    << std::hexfloat << value << ", mode " << rounding << flushesToZero;
    }
    initOsBaseUnits(units = LumoAppUnitSets());
}

} // namespace
