#include "format/AngleText.h"

#include "fltcvt/PowersOfTen.h"
#include "format/UnitSettings.h"

#include <TqOsBase/format/QMode.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <climits>
#include <cmath>
#include <cstdint>

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kThreeHalvesPi = 4.71238898038469;
constexpr double kPi = 3.141592653589793;
constexpr double kHalfPi = 1.5707963267948966;
constexpr double kDegreesPerRadian = 57.29577951308232;
constexpr double kGradsPerRadian = 63.66197723675813;
// Added before cutting to whole degrees and whole minutes.
constexpr double kHalfDegree = 0.5;
constexpr double kHalfMinute = 0.008333333333333333;
constexpr int kFullTurn = 360;
// The letters and blanks of a bearing.
constexpr int kBearingFrame = 4;
constexpr double kAxisSeconds = 1e-10;

constexpr int kSecondsPrecision = 3;
constexpr int kSecondDecimalsFrom = 4;

double reduceToOneTurn(double angle) {
    // Most angles need no division.
    double reduced = std::fabs(angle) < kTwoPi ? angle : std::fmod(angle, kTwoPi);
    if (reduced < 0)
        reduced += kTwoPi;
    // A tiny negative angle, such as -1e-20, vanishes in the sum.
    return reduced >= kTwoPi ? 0 : reduced;
}

// How many digits of degrees, minutes and seconds a text of this length has room for.
int precisionForLength(int length) {
    if (length >= 12)
        return length - 7;
    if (length >= 10)
        return length - 6;
    return length >= 7 ? length - 5 : 0;
}

constexpr std::array<double, tq::detail::kLastSmallPower + 1> kDecimalFractions = [] {
    std::array<double, tq::detail::kLastSmallPower + 1> fractions{};
    for (std::size_t i = 0; i < fractions.size(); ++i)
        fractions[i] = 1 / static_cast<double>(tq::detail::kSmallPowersOfTen[i]);
    return fractions;
}();

// 10^(4 - precision), for a precision that shows seconds: so near to the next minute they become one. At precision 3,
// which shows whole seconds first, that is ten seconds instead of half a second: 50" and more become a minute. Callers
// rely on it.
double carryTolerance(int precision) {
    const int decimals = precision - kSecondDecimalsFrom;
    if (decimals < 0)
        return 10;
    return decimals <= tq::detail::kLastSmallPower ? kDecimalFractions[static_cast<std::size_t>(decimals)]
                                                   : std::pow(10.0, -decimals);
}

// An angle of 0 or more in whole degrees, whole minutes and seconds.
struct Split {
    int degrees;
    int minutes;
    double seconds;
    int wholeSeconds; // the seconds rounded, halves up
    int precision;    // how much is shown

    // Only what is shown counts.
    bool liesOnAxis() const {
        return (degrees == 0 || degrees == 90) && (precision == 0 || minutes == 0) &&
               (precision < kSecondsPrecision || std::fabs(seconds) <= kAxisSeconds);
    }
    void carrySeconds() {
        seconds = 0;
        wholeSeconds = 0;
        ++minutes;
    }
    void carryMinutes() {
        if (minutes == 60) {
            minutes = 0;
            ++degrees;
        }
        if (degrees == kFullTurn)
            degrees = 0;
    }
};

// Splits degrees of 0 or more, by doubles.
Split splitDegrees(double degrees, int precision) {
    Split split{};
    split.precision = precision;
    // Whole degrees are an int; an angle that has more is reduced to one turn.
    if (!(degrees < INT_MAX))
        degrees = std::fmod(degrees, kFullTurn);
    if (precision == 0)
        degrees += kHalfDegree;
    else if (precision < kSecondsPrecision)
        degrees += kHalfMinute;
    split.degrees = static_cast<int>(degrees);
    const double minutes = (degrees - split.degrees) * 60;
    split.minutes = static_cast<int>(minutes);
    if (precision >= kSecondsPrecision) {
        split.seconds = (minutes - split.minutes) * 60;
        split.wholeSeconds = static_cast<int>(split.seconds);
        split.wholeSeconds += split.seconds - split.wholeSeconds >= 0.5 ? 1 : 0; // The difference is exact.
        if (60 - split.seconds <= carryTolerance(precision))
            split.carrySeconds();
    }
    split.carryMinutes();
    return split;
}

// The same for whole seconds by fixed point, which makes the text a tenth faster: by doubles, each conversion waits
// for the one before it. Both ways agree: the products of multiples of 2^-49 with 60 are exact as doubles too, and all
// degrees from 8 on are such; others are cut to one, and then the seconds of both ways are less than 2^-36 apart, which
// counts only next to whole and half seconds. There, and for too many degrees, it returns false.
bool trySplitToSeconds(double degrees, int precision, Split& split) {
    constexpr int kPoint = 49;
    constexpr std::uint64_t kOne = std::uint64_t{1} << kPoint;
    constexpr std::uint64_t kHalf = kOne / 2;
    constexpr std::uint64_t kNear = std::uint64_t{1} << 17; // 2^-32 s, more than kAxisSeconds
    constexpr double kTooMany = 512;                        // for the degrees' bits before the point
    if (!(degrees < kTooMany)) [[unlikely]]
        return false;
    const double scaled = degrees * static_cast<double>(kOne);
    const auto fixed = static_cast<std::int64_t>(scaled);
    const std::uint64_t minutes = (static_cast<std::uint64_t>(fixed) & (kOne - 1)) * 60;
    const std::uint64_t seconds = (minutes & (kOne - 1)) * 60;
    const bool isNear = ((seconds + kNear) & (kHalf - 1)) < 2 * kNear;
    if (isNear && static_cast<double>(fixed) != scaled) [[unlikely]]
        return false;
    split = {static_cast<int>(fixed >> kPoint), static_cast<int>(minutes >> kPoint),
             static_cast<double>(static_cast<std::int64_t>(seconds)) / static_cast<double>(kOne),
             static_cast<int>((seconds + kHalf) >> kPoint), precision};
    // As in carryTolerance.
    if (seconds >= (precision == kSecondsPrecision ? 50 : 59) * kOne)
        split.carrySeconds();
    split.carryMinutes();
    return true;
}

// The angle is rounded for the digits that are shown, of those the length leaves: 0 shows degrees, 1 and 2 minutes too,
// 3 and 4 seconds too, each one above 4 a decimal of the seconds.
Split getRoundedDegreeAngle(double angle, int maxLength, int precision) {
    precision = std::min(std::max(precision, 0), precisionForLength(maxLength));
    const double degrees = angle * kDegreesPerRadian;
    Split split{};
    const bool showsWholeSeconds = precision == kSecondsPrecision || precision == kSecondDecimalsFrom;
    if (showsWholeSeconds && trySplitToSeconds(degrees, precision, split))
        return split;
    return splitDegrees(degrees, precision);
}

// The letters of the bearing of an angle from 0 to below 2 pi, where east is 0 and north pi / 2. `angle` becomes the
// angle from the north or south axis, 0 to pi / 2.
void getAngleOrient(double& angle, wchar_t& first, wchar_t& second) {
    assert(angle >= 0 && angle < kTwoPi);
    const bool north = angle >= 0 && angle < kPi;
    first = north ? L'N' : L'S';
    angle -= north ? kHalfPi : kThreeHalvesPi;
    const bool negative = angle < 0;
    second = north == negative ? L'E' : L'W';
    if (negative)
        angle = -angle;
}

class AngleText {
public:
    AngleText(tq::detail::UnitWriter writer, int flags, int maxLength, int precision)
        : m_writer(writer), m_flags(flags), m_maxLength(maxLength), m_precision(precision) {}

    void writeDegrees(double angle) {
        wchar_t* const start = m_writer.here();
        m_writer.putFixed(angle * kDegreesPerRadian, shownDecimals());
        // Meant for 359.99999; every larger angle whose digits begin so is taken too: 3600 degrees. Callers rely on it.
        const std::wstring_view text = m_writer.from(start);
        if (text.size() >= 3 && text[0] == L'3' && text[1] == L'6' && text[2] == L'0') {
            m_writer.endAt(start);
            m_writer.putFixed(0, shownDecimals());
        }
        if ((m_flags & kQFlagDrawingText) != 0)
            m_writer.put(tq::detail::kDegreeEscape);
    }

    void writeWithUnit(double value, wchar_t unit) {
        m_writer.putFixed(value, shownDecimals());
        m_writer.put(unit);
    }

    // Degrees, minutes and seconds, or a bearing.
    void writeSplitAngle(double angle, bool isBearing) {
        // Finite in radians, but not in degrees: 1e308.
        if (!std::isfinite(angle * kDegreesPerRadian)) {
            m_writer.putFixed(angle * kDegreesPerRadian, 0);
            return;
        }
        wchar_t first = 0;
        wchar_t second = 0;
        if (isBearing)
            getAngleOrient(angle, first, second);
        const Split split = getRoundedDegreeAngle(angle, m_maxLength - (isBearing ? kBearingFrame : 0), m_precision);
        if (!isBearing)
            writeSplit(split);
        else if (split.liesOnAxis())
            m_writer.put(split.degrees == 0 ? first : second);
        else
            writeBearing(first, split, second);
    }

    tq::detail::UnitWriter writer() const { return m_writer; }

private:
    int shownDecimals() const { return std::clamp(m_maxLength - 4, 0, std::max(m_precision, 0)); }

    void writeBearing(wchar_t first, const Split& split, wchar_t second) {
        const bool spaced = !tq::detail::isDashBitSet(m_flags);
        m_writer.put(first);
        if (spaced)
            m_writer.put(L' ');
        writeSplit(split);
        if (spaced)
            m_writer.put(L' ');
        m_writer.put(second);
    }

    void writeSplit(const Split& split) {
        m_writer.putInteger(split.degrees);
        if ((m_flags & kQFlagDrawingText) != 0)
            m_writer.put(tq::detail::kDegreeEscape);
        else
            m_writer.put(L'd');
        if (split.precision > 0) {
            m_writer.putInteger(split.minutes);
            m_writer.put(L'\'');
        }
        if (split.precision >= kSecondsPrecision) {
            if (split.precision > kSecondDecimalsFrom)
                m_writer.putFixed(split.seconds, split.precision - kSecondDecimalsFrom);
            else
                m_writer.putInteger(split.wholeSeconds);
            m_writer.put(tq::detail::kInchMark);
        }
    }

    tq::detail::UnitWriter m_writer; // A copy, which stays in registers.
    int m_flags;
    int m_maxLength;
    int m_precision;
};

// An absolute angle, counted from the settings' base in their direction, from 0 to below 2 pi.
double absoluteAngle(double angle) {
    const LumoAppUnitSets& settings = tq::detail::t_appUnits.settings;
    return reduceToOneTurn(settings.angleDirection != 0 ? settings.angleBase - angle : angle - settings.angleBase);
}

} // namespace

tq::detail::UnitWriter formatQModeAngleUnit(tq::detail::UnitWriter writer, tq::detail::UnitPair units, double angle,
                                            bool isAbsolute, int flags, int maxLength) {
    const int unitMode = units.mode;
    const bool isBearing = unitMode == kAngularSurveyor;
    if (isAbsolute && std::isfinite(angle))
        angle = absoluteAngle(angle);
    const bool isFinite = std::isfinite(angle);
    if (isBearing && isFinite) {
        angle = reduceToOneTurn(angle);
    } else if (angle < 0) {
        writer.put(L'-');
        angle = -angle;
        --maxLength;
    }
    if (unitMode < kAngularDegrees || unitMode > kAngularSurveyor)
        return writer;
    if (!isFinite) {
        writer.putFixed(angle, 0);
        return writer;
    }
    AngleText text(writer, flags, maxLength, units.precision);
    switch (unitMode) {
    case kAngularDegrees:
        text.writeDegrees(angle);
        break;
    case kAngularGrads:
        text.writeWithUnit(angle * kGradsPerRadian, L'g');
        break;
    case kAngularRadians:
        text.writeWithUnit(angle, L'r');
        break;
    default:
        text.writeSplitAngle(angle, isBearing);
        break;
    }
    return text.writer();
}
