
#include "format/AngleText.h"
#include "format/LengthText.h"
#include "reference/Testing.h"

namespace {

constexpr double kPi = 3.141592653589793;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

// Settings for one test; the initial ones come back at its end.
class UnitText : public ::testing::Test {
protected:
    ~UnitText() override { initOsBaseUnits(units = LumoAppUnitSets()); }

    std::wstring show(double value, int type, int flags = 0, int maxLength = 60) {
        initOsBaseUnits(units);
        return reference::format(L"%.*q*", maxLength, qModeWord(type, flags), value);
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

// The dash between feet and inches moves to before the fraction.
std::wstring withDashBit(std::wstring text) {
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == L'\'' && text[i + 1] == L'-')
            text.erase(i + 1, 1);
        text[i] = text[i] == L' ' ? L'-' : text[i];
    }
    return text;
}

// These tables hold what the page of units does not show: values, and their texts one after the other.

TEST_F(UnitText, ShowsLengthsInEveryMode) {
    // By default: decimal lengths, grads, four decimals.
    EXPECT_EQ(show(14.5, kQTypeLength) + show(1, kQTypeAlternateLength) + show(1, kQTypeAngle),
              L"14.50001.000063.6620g");
    constexpr int kNoZeros = kQFlagSuppressZeroFeet | kQFlagSuppressZeroInches;
    constexpr int kShortDecimals = kQFlagSuppressLeadingZero | kQFlagSuppressTrailingZeros;
    using Row = std::tuple<int, int, int, std::vector<double>, const wchar_t*>;
    const Row rows[] = {
        {kLinearArchitectural, 0, 4, {-14.5, 11.99, 12.25, -0.001}, LR"(-1'-2 1/2"|1'-0"|1'-1/4"|0'-0"|)"},
        {kLinearArchitectural, kQFlagSuppressZeroFeet, 4, {6, 11.99}, LR"(6"|1'-0"|)"},
        {kLinearArchitectural, kQFlagSuppressZeroInches, 8, {12, 12.25, 12.48828125}, LR"(1'|1'-1/4"|1'-125/256"|)"},
        {kLinearArchitectural, kNoZeros, 7, {0, 0.9921875}, LR"(0"|127/128"|)"},
        {kLinearArchitectural, 0, 99, {1.0 / 3}, LR"(0'-357913941/1073741824"|)"},
        {kLinearArchitectural, 0, -3, {1.5, std::nextafter(0.5, 0.0)}, LR"(0'-2"|0'-0"|)"},
        {kLinearArchitectural, kQFlagDrawingText, 4, {12.5}, LR"(1'-{\H0.000000x;\S1/2;}"|)"},
        {kLinearEngineering, 0, 0, {14.5, 1.19999e11}, LR"(1'-3"|9999916666'-8"|)"},
        {kLinearEngineering, kNoZeros, 1, {12, 0.5}, LR"(1'|0.5"|)"},
        {kLinearFractional, kNoZeros, 4, {0, 12.5, 0.75, std::nan("")}, L"0|12 1/2|3/4|nan|"},
        {kLinearDecimal, kShortDecimals, 4, {0.5, -0.5, 2, -kInfinity}, L".5|-.5|2|-inf|"},
        {kLinearDecimal, kQFlagSuppressTrailingZeros, 0, {100}, L"100|"},
        {kLinearScientific, 0, 2, {0, 1e-150}, L"0.00E+00|1.00E-99|"},
        {0, 0, 4, {5, -kInfinity}, L"|-|"},
        {6, 0, 4, {-5}, L"-|"}};
    for (const auto& [mode, flags, precision, values, expected] : rows)
        for (const bool hasDashBit : {false, true}) {
            units.flags = hasDashBit ? kUnitFlagDash : 0;
            std::wstring texts, ignored;
            for (const double value : values) {
                texts += length(mode, value, flags, precision) + L"|";
                ignored += length(mode, value, flags | kQFlagIgnoreDash, precision) + L"|";
            }
            EXPECT_EQ(texts, hasDashBit ? withDashBit(expected) : expected);
            EXPECT_EQ(ignored, expected);
        }
    units.fractionHeight = 2;
    units.fractionStackStyle = 1;
    EXPECT_EQ(length(kLinearFractional, 0.5, kQFlagDrawingText), LR"({\H2.000000x;\S1#2;})");
}

TEST_F(UnitText, FallsBackToScientificNotationByLength) {
    EXPECT_EQ(length(kLinearDecimal, 123456789, 0, 4, 14), L"123456789.0000");
    EXPECT_EQ(length(kLinearDecimal, 123456789, kQFlagSuppressTrailingZeros, 4, 13), L"1.2346E+08");
    EXPECT_EQ(length(kLinearDecimal, -123456789, 0, 4, 9), L"-1.23E+08");
    EXPECT_EQ(length(kLinearArchitectural, 14.5, 0, 4, 0), L"1E+01");
    EXPECT_EQ(length(kLinearFractional, 0.5, kQFlagDrawingText, 4, 3), LR"({\H0.000000x;\S1/2;})");
    EXPECT_EQ(length(kLinearDecimal, kInfinity, 0, 4, 2), L"inf");
    // As digits after the letter; from 4 on only the sign is written.
    EXPECT_EQ(reference::format(L"%.9q0|%.9Q1|%q4|%q9|%q", 2.5, -6.0, -3.0, 3.0), L"2.5000|-6.0000|-||");
}

TEST_F(UnitText, ChoosesThePairOfModeAndPrecision) {
    units.linearUnitMode = kLinearArchitectural;
    units.linearPrecision = 5;
    units.angularUnitMode = kAngularSurveyor;
    units.angularPrecision = -2;
    initOsBaseUnits(units);
    const std::tuple<int, int, std::pair<int, int>> rows[] = {
        // type and flags; mode and precision
        {kQTypeAlternateLength, kQFlagDecimalPair, {kLinearDecimal, 2}},
        {kQTypeLength, kQFlagDecimalPair, {kLinearArchitectural, 5}},
        {kQTypeAngle, 0, {kAngularSurveyor, 0}},
        {kQTypeRelativeAngle, kQFlagLinearPair, {kAngularDegreesMinutesSeconds, 5}},
        {4, 0, {kLinearArchitectural, 5}}};
    for (const auto& [type, flags, expected] : rows) {
        std::pair pair(-1, -1);
        FormatUtil::convertQTypeToAppType(pair.second, pair.first, type, flags);
        EXPECT_EQ(pair, expected) << type << "/" << flags;
    }
    units.linearUnitMode = kLinearEngineering; // its decimals are its own
    EXPECT_EQ(show(1.25, kQTypeAlternateLength, kQFlagDecimalPair), L"1.25000");
}

TEST_F(UnitText, AnglesTurnOnceAndNumbersThatAreNone) {
    constexpr int kSplit = kAngularDegreesMinutesSeconds;
    constexpr double kDegree = kPi / 180;
    using Row = std::tuple<int, int, int, std::vector<double>, const wchar_t*>;
    const Row rows[] = {{kAngularDegrees, 4, kQTypeAngle, {2 * kPi - 1e-9, -1e-20}, L"0.0000|0.0000|"},
                        {kAngularDegrees, 1, kQTypeRelativeAngle, {-3 * kPi, -1e-9}, L"-540.0|0.0|"},
                        {kSplit, 0, kQTypeAngle, {359.9999 * kDegree}, L"0d|"},
                        {kSplit, 2, kQTypeAngle, {359.9999 * kDegree}, L"0d0'|"},
                        {kSplit, 4, kQTypeAngle, {359.9999 * kDegree, 59.992 / 60 * kDegree}, L"0d0'0\"|1d0'0\"|"},
                        {kSplit, 4, kQTypeRelativeAngle, {kInfinity, kDegree / 32, -1e308}, L"inf|0d1'53\"|-inf|"},
                        {kSplit, 4, kQTypeRelativeAngle, {-kPi / 3, 0x1.1e87dc2be4fd2p+3}, L"-60d0'0\"|513d1'53\"|"},
                        {kSplit, 3, kQTypeAngle, {50.3 / 3600 * kDegree, 49.9 / 3600 * kDegree}, L"0d1'0\"|0d0'50\"|"},
                        // Next to a half and a whole second, where the rounding of the products decides.
                        {kSplit, 4, kQTypeAngle, {0x1.0a41719fc2407p-9, 0x1.90192d42ee5cbp-7}, L"0d7'0\"|0d41'59\"|"},
                        {kAngularGrads, 4, kQTypeRelativeAngle, {std::nan("")}, L"nan|"},
                        {kAngularSurveyor, 4, kQTypeAngle, {-kInfinity, 7 * kPi / 4}, L"-inf|S 45d0'0\" E|"},
                        {5, 4, kQTypeAngle, {1}, L"|"},
                        {-1, 4, kQTypeRelativeAngle, {-1}, L"-|"}};
    for (const auto& [mode, precision, type, values, expected] : rows) {
        std::wstring texts;
        for (const double value : values)
            texts += angle(mode, value, precision, 0, type) + L"|";
        EXPECT_EQ(texts, expected);
    }
    EXPECT_LT(angle(kSplit, 1e300, 0, 0, kQTypeRelativeAngle).size(), 12U);
    units.angleBase = kPi / 2;
    units.angleDirection = 1;
    EXPECT_EQ(angle(kAngularDegrees, 200 * kPi, 1) + angle(kAngularDegrees, kInfinity, 1), L"90.0inf");
    units.angleBase = kInfinity;
    EXPECT_EQ(angle(kAngularDegrees, 1, 1), L"nan");
}

TEST_F(UnitText, AnglesLoseDigitsWhereTheLengthIsShort) {
    constexpr double kValue = (10 + 20.0 / 60 + 30.6 / 3600) * kPi / 180;
    std::wstring texts;
    for (int maxLength = 5; maxLength < 14; ++maxLength)
        texts += angle(kAngularDegreesMinutesSeconds, kValue, 8, 0, kQTypeAngle, maxLength) + L" ";
    EXPECT_EQ(texts, L"10d 10d 10d21' 10d20'31\" 10d20'31\" 10d20'31\" 10d20'30.6\" 10d20'30.6\" 10d20'30.60\" ");
    EXPECT_EQ(angle(kAngularDegrees, 1, 8, 0, kQTypeAngle, 7) +
                  angle(kAngularDegrees, -1, 8, 0, kQTypeRelativeAngle, 7) +
                  angle(kAngularSurveyor, kValue, 8, 0, kQTypeAngle, 12),
              L"57.296-57.30N 79d39'29\" E");
}

// A text is cut, not made differently.
TEST_F(UnitText, StaysInsideABufferOfAnySize) {
    reference::GuardedBuffer<wchar_t> guarded(200);
    units.fractionHeight = 3;
    units.linearPrecision = units.angularPrecision = 20;
    for (int i = 0; i < 7 * 5 * 4 * 9; ++i) {
        const double values[] = {14.3, -1e10, 1e300, kInfinity, std::nan(""), 0.3, 5e-324, -11.9999, 900.0};
        const double value = values[i % 9];
        const int flags[] = {0, 3, 12, kQFlagDrawingText};
        units.linearUnitMode = units.angularUnitMode = units.alternateUnitMode = static_cast<std::int16_t>(i / 180);
        initOsBaseUnits(units);
        const int word = qModeWord(i / 36 % 5, flags[i / 9 % 4]);
        for (const unsigned maxLength : {140U, 10U, 5U}) {
            wchar_t whole[300];
            FormatUtil::formatQModeDouble(whole, 300, value, word, maxLength);
            ASSERT_LT(std::wcslen(whole), 140U);
            for (std::size_t size = 1; size < 40; ++size) {
                wchar_t* buffer = guarded.last(size);
                FormatUtil::formatQModeDouble(buffer, static_cast<int>(size), value, word, maxLength);
                ASSERT_EQ(buffer, std::wstring(whole).substr(0, size - 1));
            }
        }
    }
    wchar_t untouched = L'#';
    FormatUtil::formatQModeDouble(&untouched, 0, 1, 1, 9);
    FormatUtil::formatQModeDouble(nullptr, 9, 1, 1, 9);
    EXPECT_EQ(untouched, L'#');
}

TEST_F(UnitText, ZerosAreStrippedAroundWhatFollowsThem) {
    const auto strip = [](int flags, std::wstring text) {
        delPrefixSurfixZero(flags, text.data());
        return std::wstring(text.c_str());
    };
    std::wstring all;
    for (const wchar_t* text :
         {L"45.500\\U+00B0", L"45.0\\U+00B0", L"1.50g", L"2.500\"", L"100", L"000", L"", L"\\U+00B0"})
        all += strip(8, text) + L"|";
    EXPECT_EQ(all, L"45.5\\U+00B0|45\\U+00B0|1.5g|2.5\"|1|||\\U+00B|");
    EXPECT_EQ(strip(4, L"-0.50") + L"|" + strip(4, L"0") + L"|" + strip(12, L"0.0"), L"-.50|0|0");
}

} // namespace
