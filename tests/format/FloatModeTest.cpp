// The text and the reading of numbers depend on no setting of the processor: rounding modes, subnormals flushed to
// zero.

#include "fltcvt/NumberVectors.h"
#include "format/FormatProbe.h"
#include "reference/ScanInput.h"

#include <cfenv>
#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace {

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
    std::wstring all = probe::format(L"%f|%.20f|%.2e|%e|%g|%+.1G|", value, value, value, value, value, value);
    for (const char letter : {'e', 'f', 'g'}) {
        char text[800];
        tqDToStr(text, value, letter, 16, 0);
        double read = 0;
        float single = 0;
        EXPECT_EQ(reference::scan((probe::widen(text) + L" " + probe::widen(text)).c_str(), L"%lf%f", &read, &single),
                  2);
        all += probe::format(L"%s %X %X %x|", probe::widen(text).c_str(),
                             std::bit_cast<std::uint64_t>(tqStrToD(text, nullptr)), std::bit_cast<std::uint64_t>(read),
                             std::bit_cast<std::uint32_t>(single));
    }
    for (std::int16_t mode = 0; mode <= 5; ++mode) {
        for (const std::int16_t precision : std::initializer_list<std::int16_t>{0, 4, 20}) {
            units.linearUnitMode = units.angularUnitMode = mode;
            units.linearPrecision = units.angularPrecision = precision;
            initOsBaseUnits(units);
            all += probe::format(L"%.60q1 %.60q2 %.60q3|", value, value, value);
        }
    }
    wchar_t buffer[150];
    FormatUtil::formatQModeDouble(buffer, 150, value, kQTypeLength, 40); // keeps the sign of zeros
    all += buffer;
    FormatUtil::formatScienceDouble(buffer, value, 1, 15, 0);
    long double mantissa = value;
    all += probe::format(L"%s|%d", buffer, FormatUtil::scaleDoubleToScience(&mantissa));
    const bool isInRange = (mantissa >= 1 && mantissa < 10) || (mantissa <= -1 && mantissa > -10);
    return all + (isInRange ? L"" : L" out of range");
}

} // namespace

TEST(FloatModes, ChangeNoResult) {
    std::vector<double> values = number_test::vectors(0);
    for (int i = 1; i < 1440; i += 17) // halves of degrees and minutes, almost feet
        values.insert(values.end(),
                      {i * 0.5 / 57.29577951308232, i / 120.0 / 57.29577951308232, std::nextafter(i * 12.0, 0.0)});
    LumoAppUnitSets units;
    for (std::size_t i = 0; i < values.size(); i += i < 30 ? 1 : 4) {
        const double value = i % 5 < 2 ? -values[i] : values[i];
        units.angleBase = i % 3 == 0 ? 0.1 : 0.0;
        const std::wstring expected = results(value, units);
        for (const int rounding : {FE_TONEAREST, FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) {
            for (const bool flushesToZero : {false, true}) {
                ASSERT_EQ(inMode(rounding, flushesToZero, [&] { return results(value, units); }), expected)
                    << std::hexfloat << value << ", mode " << rounding << flushesToZero;
            }
        }
    }
    initOsBaseUnits(units = LumoAppUnitSets());
}
