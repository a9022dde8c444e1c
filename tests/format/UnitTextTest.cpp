// Lengths and angles in drawing units: the written forms, and that what is written reads back.

#include "format/AngleText.h"
#include "format/FormatProbe.h"
#include "format/LengthText.h"
#include "reference/GuardedBuffer.h"

#include <TqOsBase/format/LumoAppUnitSets.h>
#include <TqOsBase/format/QMode.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Settings for one test; the initial ones come back at its end.
class UnitText : public ::testing::Test {
protected:
    ~UnitText() override {
        LumoAppUnitSets initial;
        initOsBaseUnits(initial);
    }

    std::wstring show(double value, int type, int flags = 0, int maxLength = 60) {
        initOsBaseUnits(units);
        return probe::format(L"%.*q*", maxLength, qModeWord(type, flags), value);
    }
    std::wstring length(int mode, double value, int flags = 0, int precision = 4, int maxLength = 60) {
        units.linearUnitMode = static_cast<std::int16_t>(mode);
        units.linearPrecision = static_cast<std::int16_t>(precision);
        return show(value, kQTypeLength, flags, maxLength);
    }
    std::wstring angle(int mode, double value, int precision = 4, int flags = 0, int type = kQTypeAngle,
                       int maxLength = 60) {
        units.angularUnitMode = static_cast<std::int16_t>(mode);
        units.angularPrecision = static_cast<std::int16_t>(precision);
        return show(value, type, flags, maxLength);
    }

    LumoAppUnitSets units;
};

// Reads `1'-2 1/2"`, `14 1/2`, `-0'6-3/4"` and plain numbers.
double readLength(const std::wstring& text) {
    const wchar_t* p = text.c_str();
    const bool negative = *p == L'-';
    p += negative ? 1 : 0;
    double total = 0;
    while (*p != L'\0' && *p != L'"') {
        wchar_t* end = nullptr;
        const double number = std::wcstod(p, &end);
        p = end;
        if (*p == L'\'') {
            total += number * 12;
            ++p;
        } else if (*p == L'/') {
            total += number / std::wcstod(p + 1, &end);
            p = end;
        } else {
            total += number;
        }
        p += *p == L'-' || *p == L' ' ? 1 : 0;
    }
    return negative ? -total : total;
}

// Reads `-45d30'15.5"` in degrees.
double readDegrees(const std::wstring& text) {
    const wchar_t* p = text.c_str();
    const bool negative = *p == L'-';
    double unit = 1;
    double total = 0;
    for (p += negative ? 1 : 0; std::iswdigit(static_cast<wint_t>(*p)) != 0; unit /= 60) {
        wchar_t* end = nullptr;
        total += std::wcstod(p, &end) * unit;
        p = end + 1;
    }
    return negative ? -total : total;
}

// Reads a bearing as degrees counter-clockwise from east.
double readBearing(std::wstring text) {
    if (text.size() == 1)
        return text == L"E" ? 0 : text == L"N" ? 90 : text == L"W" ? 180 : 270;
    const bool north = text.front() == L'N';
    const bool west = text.back() == L'W';
    const double fromAxis = readDegrees(text.substr(text[1] == L' ' ? 2 : 1));
    return north ? (west ? 90 + fromAxis : 90 - fromAxis) : (west ? 270 - fromAxis : std::fmod(270 + fromAxis, 360));
}

} // namespace

TEST_F(UnitText, ShowsLengthsInEveryModeAndFlag) {
    const struct {
        int mode;
        double value;
        int flags;
        int precision;
        const wchar_t* text;
        const wchar_t* withDashBit; // null: the same
    } rows[] = {
        {kLinearArchitectural, 14.5, 0, 4, LR"(1'-2 1/2")", LR"(1'2-1/2")"},
        {kLinearArchitectural, 14.5, kQFlagIgnoreDash, 4, LR"(1'-2 1/2")", nullptr},
        {kLinearEngineering, 14.5, 0, 4, LR"(1'-2.5000")", LR"(1'2.5000")"},
        {kLinearFractional, 14.5, 0, 4, L"14 1/2", L"14-1/2"},
        {kLinearDecimal, 14.5, 0, 4, L"14.5000", nullptr},
        {kLinearScientific, 14.5, 0, 4, L"1.4500E+01", nullptr},
        {kLinearArchitectural, 11.99, 0, 4, LR"(1'-0")", LR"(1'0")"},
        {kLinearEngineering, 23.99999, 0, 2, LR"(2'-0.00")", LR"(2'0.00")"},
        {kLinearFractional, 11.99, 0, 4, L"12", nullptr},
        {kLinearFractional, 12.5, 0, 4, L"12 1/2", L"12-1/2"},
        {kLinearFractional, 0.75, 0, 4, L"3/4", nullptr},
        {kLinearFractional, 0, kQFlagSuppressZeroInches, 4, L"0", nullptr},
        {kLinearArchitectural, 6, 0, 4, LR"(0'-6")", LR"(0'6")"},
        {kLinearArchitectural, 6, kQFlagSuppressZeroFeet, 4, LR"(6")", nullptr},
        {kLinearArchitectural, 11.99, kQFlagSuppressZeroFeet, 4, LR"(1'-0")", LR"(1'0")"},
        {kLinearArchitectural, 12.25, 0, 4, LR"(1'-1/4")", LR"(1'1/4")"},
        {kLinearArchitectural, 12, kQFlagSuppressZeroInches, 4, L"1'", nullptr},
        {kLinearArchitectural, 12.25, kQFlagSuppressZeroInches, 4, LR"(1'-1/4")", LR"(1'1/4")"},
        {kLinearEngineering, 12, kQFlagSuppressZeroInches, 4, L"1'", nullptr},
        {kLinearEngineering, 0.5, kQFlagSuppressZeroFeet | kQFlagSuppressZeroInches, 1, LR"(0.5")", nullptr},
        {kLinearArchitectural, 0, kQFlagSuppressZeroFeet | kQFlagSuppressZeroInches, 4, LR"(0")", nullptr},
        {kLinearArchitectural, -14.5, 0, 4, LR"(-1'-2 1/2")", LR"(-1'2-1/2")"},
        {kLinearArchitectural, -0.001, 0, 4, LR"(0'-0")", LR"(0'0")"},
        {kLinearArchitectural, 1.0 / 3, 0, 30, LR"(0'-357913941/1073741824")", LR"(0'357913941/1073741824")"},
        {kLinearArchitectural, 0.5, 0, 99, LR"(0'-1/2")", LR"(0'1/2")"},
        {kLinearArchitectural, 0.9921875, 0, 7, LR"(0'-127/128")", LR"(0'127/128")"},
        {kLinearArchitectural, 12.48828125, kQFlagSuppressZeroInches, 8, LR"(1'-125/256")", LR"(1'125/256")"},
        {kLinearArchitectural, std::nextafter(0.5, 0.0), 0, 0, LR"(0'-0")", LR"(0'0")"},
        {kLinearArchitectural, 1.5, 0, -3, LR"(0'-2")", LR"(0'2")"},
        {kLinearArchitectural, 2e11, 0, 4, L"2.0000E+11", nullptr},
        {kLinearEngineering, 1.19999e11, 0, 0, LR"(9999916666'-8")", LR"(9999916666'8")"},
        {kLinearDecimal, 0.5, kQFlagSuppressLeadingZero | kQFlagSuppressTrailingZeros, 4, L".5", nullptr},
        {kLinearDecimal, -0.5, kQFlagSuppressLeadingZero, 4, L"-.5000", nullptr},
        {kLinearDecimal, 2, kQFlagSuppressLeadingZero | kQFlagSuppressTrailingZeros, 4, L"2", nullptr},
        {kLinearDecimal, 100, kQFlagSuppressTrailingZeros, 0, L"100", nullptr},
        {kLinearEngineering, 12.5, kQFlagSuppressTrailingZeros, 4, LR"(1'-0.5000")", LR"(1'0.5000")"},
        {kLinearScientific, 1e-150, 0, 2, L"1.00E-99", nullptr},
        {kLinearScientific, 0, 0, 2, L"0.00E+00", nullptr},
        {kLinearArchitectural, 12.5, kQFlagDrawingText, 4, LR"(1'-{\H0.000000x;\S1/2;}")",
         LR"(1'{\H0.000000x;\S1/2;}")"},
        {kLinearFractional, 3.25, kQFlagDrawingText, 4, LR"(3{\H0.000000x;\S1/4;})", nullptr},
        {0, 5, 0, 4, L"", nullptr},
        {6, -5, 0, 4, L"-", nullptr},
        {kLinearArchitectural, kInfinity, 0, 4, L"inf", nullptr},
        {kLinearDecimal, -kInfinity, 0, 4, L"-inf", nullptr},
        {kLinearFractional, std::nan(""), 0, 4, L"nan", nullptr},
        {7, -kInfinity, 0, 4, L"-", nullptr},
    };
    for (const auto& row : rows) {
        units.flags = 0;
        EXPECT_EQ(length(row.mode, row.value, row.flags, row.precision), row.text);
        units.flags = kUnitFlagDash;
        EXPECT_EQ(length(row.mode, row.value, row.flags, row.precision),
                  row.withDashBit != nullptr ? row.withDashBit : row.text);
    }
    units.fractionHeight = 2;
    units.fractionStackStyle = 1;
    EXPECT_EQ(length(kLinearFractional, 0.5, kQFlagDrawingText), LR"({\H2.000000x;\S1#2;})");
}

TEST_F(UnitText, FallsBackToScientificNotationByLength) {
    EXPECT_EQ(length(kLinearDecimal, 123456789.0, 0, 4, 14), L"123456789.0000");
    EXPECT_EQ(length(kLinearDecimal, 123456789.0, 0, 4, 13), L"1.2346E+08");
    EXPECT_EQ(length(kLinearDecimal, 123456789.0, kQFlagSuppressTrailingZeros, 4, 13), L"1.2346E+08");
    EXPECT_EQ(length(kLinearDecimal, -123456789.0, 0, 4, 9), L"-1.23E+08");
    EXPECT_EQ(length(kLinearArchitectural, 14.5, 0, 4, 8), L"1.45E+01");
    EXPECT_EQ(length(kLinearArchitectural, 14.5, 0, 4, 0), L"1E+01");
    EXPECT_EQ(length(kLinearFractional, 0.5, kQFlagDrawingText, 4, 3), LR"({\H0.000000x;\S1/2;})");
    EXPECT_EQ(length(kLinearDecimal, kInfinity, 0, 4, 2), L"inf");
}

TEST_F(UnitText, ChoosesThePairOfModeAndPrecision) {
    units.linearUnitMode = kLinearArchitectural;
    units.linearPrecision = 5;
    units.alternateUnitMode = kLinearScientific;
    units.alternatePrecision = 1;
    units.angularUnitMode = kAngularSurveyor;
    units.angularPrecision = -2;
    const struct {
        int type;
        int flags;
        int mode;
        int precision;
    } rows[] = {
        {kQTypeAlternateLength, 0, kLinearScientific, 1},
        {kQTypeAlternateLength, kQFlagLinearPair, kLinearArchitectural, 5},
        {kQTypeAlternateLength, kQFlagDecimalPair, kLinearDecimal, 2},
        {kQTypeAlternateLength, kQFlagLinearPair | kQFlagDecimalPair, kLinearArchitectural, 5},
        {kQTypeLength, kQFlagDecimalPair, kLinearArchitectural, 5},
        {kQTypeAngle, 0, kAngularSurveyor, 0},
        {kQTypeAngle, kQFlagLinearPair, kLinearArchitectural, 5},
        {kQTypeRelativeAngle, 0, kAngularDegreesMinutesSeconds, 0},
        {kQTypeRelativeAngle, kQFlagLinearPair, kAngularDegreesMinutesSeconds, 5},
        {4, 0, kLinearArchitectural, 5},
    };
    initOsBaseUnits(units);
    for (const auto& row : rows) {
        int precision = -1;
        int mode = -1;
        FormatUtil::convertQTypeToAppType(precision, mode, row.type, row.flags);
        EXPECT_EQ(mode, row.mode) << row.type << "/" << row.flags;
        EXPECT_EQ(precision, row.precision) << row.type << "/" << row.flags;
    }
    units.linearPrecision = 4;
    EXPECT_EQ(show(1.25, kQTypeAlternateLength, kQFlagDecimalPair), L"1.25");
    units.linearUnitMode = kLinearEngineering;
    EXPECT_EQ(show(1.25, kQTypeAlternateLength, kQFlagDecimalPair), L"1.2500");
    // As digits after the letter; from 4 on only the sign is written.
    EXPECT_EQ(probe::format(L"%.9q0|%.9Q1|%q4|%q9|%q", 2.5, -6.0, -3.0, 3.0), L"2.5E+00|-6.00E+00|-||");
}

TEST_F(UnitText, ShowsAnglesInEveryModeAndFlag) {
    const struct {
        int mode;
        double value;
        int precision;
        int flags;
        int type;
        const wchar_t* text;
    } rows[] = {
        {kAngularDegrees, kPi / 4, 4, 0, kQTypeAngle, L"45.0000"},
        {kAngularDegrees, kPi / 4, 2, kQFlagDrawingText, kQTypeAngle, L"45.00\\U+00B0"},
        {kAngularDegrees, 2 * kPi - 1e-9, 4, 0, kQTypeAngle, L"0.0000"},
        {kAngularDegrees, -1e-20, 4, 0, kQTypeAngle, L"0.0000"},
        {kAngularDegrees, 20 * kPi, 1, 0, kQTypeRelativeAngle, L"0.0"}, // 3600 degrees begin with 360
        {kAngularDegrees, -3 * kPi, 1, 0, kQTypeRelativeAngle, L"-540.0"},
        {kAngularDegrees, -1e-9, 1, 0, kQTypeRelativeAngle, L"0.0"},
        {kAngularDegreesMinutesSeconds, 0.7854, 0, 0, kQTypeAngle, L"45d"},
        {kAngularDegreesMinutesSeconds, 0.7854, 1, 0, kQTypeAngle, L"45d0'"},
        {kAngularDegreesMinutesSeconds, 0.7854, 4, 0, kQTypeAngle, L"45d0'0\""},
        {kAngularDegreesMinutesSeconds, 0.7854, 6, 0, kQTypeAngle, L"45d0'0.38\""},
        {kAngularDegreesMinutesSeconds, 0.7854, 4, kQFlagDrawingText, kQTypeAngle, L"45\\U+00B00'0\""},
        {kAngularDegreesMinutesSeconds, -kPi / 3, 4, 0, kQTypeRelativeAngle, L"-60d0'0\""},
        {kAngularDegreesMinutesSeconds, 59.992 / 60 * kPi / 180, 4, 0, kQTypeAngle, L"1d0'0\""},
        {kAngularDegreesMinutesSeconds, (10 + 51.0 / 3600) * kPi / 180, 3, 0, kQTypeAngle, L"10d1'0\""},
        {kAngularDegreesMinutesSeconds, (10 + 51.0 / 3600) * kPi / 180, 4, 0, kQTypeAngle, L"10d0'51\""},
        {kAngularDegreesMinutesSeconds, 359.9999 * kPi / 180, 0, 0, kQTypeAngle, L"0d"},
        {kAngularDegreesMinutesSeconds, 359.9999 * kPi / 180, 2, 0, kQTypeAngle, L"0d0'"},
        {kAngularDegreesMinutesSeconds, 359.9999 * kPi / 180, 4, 0, kQTypeAngle, L"0d0'0\""},
        {kAngularDegreesMinutesSeconds, 1e300, 0, 0, kQTypeRelativeAngle, nullptr},
        {kAngularGrads, kPi / 2, 4, 0, kQTypeAngle, L"100.0000g"},
        {kAngularRadians, -kPi / 2, 3, 0, kQTypeRelativeAngle, L"-1.571r"},
        {kAngularSurveyor, 0, 0, 0, kQTypeAngle, L"E"},
        {kAngularSurveyor, kPi / 2, 4, 0, kQTypeAngle, L"N"},
        {kAngularSurveyor, kPi, 4, 0, kQTypeAngle, L"W"},
        {kAngularSurveyor, 3 * kPi / 2, 4, 0, kQTypeAngle, L"S"},
        {kAngularSurveyor, kPi / 4, 0, 0, kQTypeAngle, L"N 45d E"},
        {kAngularSurveyor, 3 * kPi / 4, 0, 0, kQTypeAngle, L"N 45d W"},
        {kAngularSurveyor, 5 * kPi / 4, 0, 0, kQTypeAngle, L"S 45d W"},
        {kAngularSurveyor, 7 * kPi / 4, 0, 0, kQTypeAngle, L"S 45d E"},
        {kAngularSurveyor, 0.2 * kPi / 180, 0, 0, kQTypeAngle, L"E"}, // on the axis as far as it is shown
        {kAngularSurveyor, 0.2 * kPi / 180, 1, 0, kQTypeAngle, L"N 89d48' E"},
        {kAngularSurveyor, kPi / 4, 0, 0, kQTypeRelativeAngle, L"45d"},
        {5, 1, 4, 0, kQTypeAngle, L""},
        {-1, -1, 4, 0, kQTypeRelativeAngle, L"-"},
        {kAngularSurveyor, -kInfinity, 4, 0, kQTypeAngle, L"-inf"},
        {kAngularDegreesMinutesSeconds, kInfinity, 4, 0, kQTypeAngle, L"inf"},
        {kAngularDegreesMinutesSeconds, -1e308, 4, 0, kQTypeRelativeAngle, L"-inf"},
        {kAngularGrads, std::nan(""), 4, 0, kQTypeRelativeAngle, L"nan"},
    };
    for (const auto& row : rows) {
        const std::wstring text = angle(row.mode, row.value, row.precision, row.flags, row.type);
        if (row.text != nullptr)
            EXPECT_EQ(text, row.text) << row.mode << " of " << row.value;
        else
            EXPECT_LT(text.size(), 12U);
    }
    units.flags = kUnitFlagDash;
    EXPECT_EQ(angle(kAngularSurveyor, kPi / 4, 0), L"N45dE");
    EXPECT_EQ(angle(kAngularSurveyor, kPi / 4, 0, kQFlagIgnoreDash), L"N 45d E");
}

TEST_F(UnitText, AnglesCountFromTheBaseInTheDirection) {
    units.angleBase = kPi / 2;
    EXPECT_EQ(angle(kAngularDegrees, kPi / 4, 1), L"315.0");
    units.angleDirection = 1;
    EXPECT_EQ(angle(kAngularDegrees, kPi / 4, 1), L"45.0");
    EXPECT_EQ(angle(kAngularDegrees, 200 * kPi, 1), L"90.0");
    EXPECT_EQ(angle(kAngularDegrees, kInfinity, 1), L"inf");
    EXPECT_EQ(angle(kAngularDegrees, kPi / 4, 1, 0, kQTypeRelativeAngle), L"45.0");
    units.angleBase = kInfinity;
    EXPECT_EQ(angle(kAngularDegrees, 1, 1), L"nan");
}

TEST_F(UnitText, AnglesLoseDigitsWhereTheLengthIsShort) {
    const wchar_t* const byLength[] = {LR"(10d)",         LR"(10d)",         LR"(10d)",       LR"(10d)",
                                       LR"(10d)",         LR"(10d)",         LR"(10d)",       LR"(10d21')",
                                       LR"(10d20'31")",   LR"(10d20'31")",   LR"(10d20'31")", LR"(10d20'30.6")",
                                       LR"(10d20'30.6")", LR"(10d20'30.60")"};
    for (int maxLength = 0; maxLength < 14; ++maxLength) {
        const double value = (10 + 20.0 / 60 + 30.6 / 3600) * kPi / 180;
        EXPECT_EQ(angle(kAngularDegreesMinutesSeconds, value, 8, 0, kQTypeAngle, maxLength), byLength[maxLength])
            << maxLength;
    }
    EXPECT_EQ(angle(kAngularDegrees, 1, 8, 0, kQTypeAngle, 7), L"57.296");
    EXPECT_EQ(angle(kAngularDegrees, -1, 8, 0, kQTypeRelativeAngle, 7), L"-57.30");
}

TEST_F(UnitText, LengthsReadBackWithinHalfADisplayedUnit) {
    std::mt19937_64 random(17);
    for (int i = 0; i < 20000; ++i) {
        const double value =
            std::ldexp(static_cast<double>(static_cast<std::int64_t>(random())), -40 - static_cast<int>(random() % 24));
        const int precision = static_cast<int>(random() % 7);
        units.flags = static_cast<std::uint16_t>(random() % 2);
        const int flags = static_cast<int>(random() % 8) & ~kQFlagSuppressLeadingZero;
        for (const int mode : {kLinearDecimal, kLinearEngineering, kLinearArchitectural, kLinearFractional}) {
            const bool binary = mode == kLinearArchitectural || mode == kLinearFractional;
            const double unit = binary ? std::ldexp(1, -precision) : std::pow(10, -precision);
            const std::wstring text = length(mode, value, flags, precision);
            ASSERT_NEAR(readLength(text), value, unit / 2 + std::fabs(value) * 1e-15) << mode << " of " << value;
            // Twelve inches are a foot.
            ASSERT_TRUE(text.find(L"'12") == std::wstring::npos && text.find(L"'-12") == std::wstring::npos);
        }
    }
}

TEST_F(UnitText, AnglesReadBackWithinTheirCarry) {
    std::mt19937_64 random(19);
    for (int i = 0; i < 20000; ++i) {
        const double degrees = static_cast<double>(random() % 360000000) / 1e6;
        const double radians = degrees * kPi / 180;
        const int precision = static_cast<int>(random() % 9);
        units.flags = static_cast<std::uint16_t>(random() % 2);
        // Seconds near 60 become a minute; else half of what is shown last, and a little for the radians.
        const double shown = precision == 0  ? 1
                             : precision < 3 ? 1.0 / 60
                                             : std::pow(10, -std::max(precision - 4, 0)) / 3600;
        const double carry = precision < 3 ? 0 : std::pow(10, 4 - precision) / 3600;
        const double tolerance = std::max(shown / 2, carry) + 1e-12;
        const auto expectNear = [&](double read, const std::wstring& text) {
            const double difference = std::fabs(std::remainder(read - degrees, 360));
            ASSERT_LE(difference, tolerance) << degrees << " as " << std::string(text.begin(), text.end());
            ASSERT_TRUE(text.find(L"d60'") == std::wstring::npos && text.find(L"'60") == std::wstring::npos)
                << std::string(text.begin(), text.end());
        };
        const std::wstring split = angle(kAngularDegreesMinutesSeconds, radians, precision);
        expectNear(readDegrees(split), split);
        const std::wstring bearing = angle(kAngularSurveyor, radians, precision);
        expectNear(readBearing(bearing), bearing);
        const double decimal = std::wcstod(angle(kAngularDegrees, radians, precision).c_str(), nullptr);
        ASSERT_LE(std::fabs(std::remainder(decimal - degrees, 360)), std::pow(10, -precision) / 2 + 1e-12);
    }
}

// A text is cut, not made differently.
TEST_F(UnitText, StaysInsideABufferOfAnySize) {
    reference::GuardedBuffer<wchar_t> guarded(200);
    units.fractionHeight = 3;
    for (const double value : {14.3, -1e10, 1e300, kInfinity, std::nan(""), 0.3, 5e-324, -11.9999, 900.0}) {
        for (std::int16_t mode = 0; mode <= 6; ++mode) {
            units.linearUnitMode = units.angularUnitMode = units.alternateUnitMode = mode;
            units.linearPrecision = units.angularPrecision = 20;
            initOsBaseUnits(units);
            for (int type = 0; type < 5; ++type) {
                for (const int flags : {0, 3, 12, kQFlagDrawingText}) {
                    for (const unsigned maxLength : {140U, 10U, 5U}) {
                        wchar_t whole[300];
                        FormatUtil::formatQModeDouble(whole, 300, value, qModeWord(type, flags), maxLength);
                        ASSERT_LT(std::wcslen(whole), 140U);
                        for (std::size_t size = 1; size < 40; ++size) {
                            wchar_t* buffer = guarded.last(size);
                            FormatUtil::formatQModeDouble(buffer, static_cast<int>(size), value, qModeWord(type, flags),
                                                          maxLength);
                            ASSERT_EQ(buffer, std::wstring(whole).substr(0, size - 1));
                        }
                    }
                }
            }
        }
    }
    wchar_t untouched = L'#';
    FormatUtil::formatQModeDouble(&untouched, 0, 1, 1, 9);
    FormatUtil::formatQModeDouble(nullptr, 9, 1, 1, 9);
    EXPECT_EQ(untouched, L'#');
}

TEST_F(UnitText, ZerosAreStrippedAroundWhatFollowsThem) {
    const struct {
        int flags;
        const wchar_t* text;
        const wchar_t* stripped;
    } rows[] = {
        {8, L"45.5000\\U+00B0", L"45.5\\U+00B0"},
        {8, L"45.0\\U+00B0", L"45\\U+00B0"},
        {8, L"1.50g", L"1.5g"},
        {8, L"2.500\"", L"2.5\""},
        {8, L"100", L"1"},
        {8, L"000", L""},
        {4, L"-0.50", L"-.50"},
        {4, L"0", L"0"},
        {12, L"0.0", L"0"},
        {8, L"", L""},
        {8, L"\\U+00B0", L"\\U+00B"},
    };
    for (const auto& row : rows) {
        wchar_t text[32];
        std::wcscpy(text, row.text);
        delPrefixSurfixZero(row.flags, text);
        EXPECT_STREQ(text, row.stripped);
    }
}
