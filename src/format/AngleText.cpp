#include "format/AngleText.h"

#include "fltcvt/PowersOfTen.h"
#include "format/UnitSettings.h"

#include <TqOsBase/format/QMode.h>

#include <algorithm>
#include <array>
#include <cassert>
#include <climits>
#include <cmath>

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
int precisionForLength(unsigned maxLength) {
    const int length = static_cast<int>(std::min<unsigned>(maxLength, INT_MAX));
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

// 10^(4 - precision), for a precision that shows seconds.
double carryTolerance(int precision) {
    const int decimals = precision - kSecondDecimalsFrom;
    if (decimals < 0)
        return 10;
    return decimals <= tq::detail::kLastSmallPower ? kDecimalFractions[static_cast<std::size_t>(decimals)]
                                                   : std::pow(10.0, -decimals);
}

class AngleText {
public:
    AngleText(tq::detail::UnitWriter& writer, int flags, int maxLength, int precision)
        : m_writer(writer), m_flags(flags), m_maxLength(maxLength), m_precision(precision) {}

    void writeDegrees(double& angle) {
        wchar_t* const start = m_writer.here();
        m_writer.putFixed(angle * kDegreesPerRadian, shownDecimals());
        // Meant for 359.99999; every larger angle whose digits begin so is taken too: 3600 degrees. Callers rely on it.
        const std::wstring_view text = m_writer.from(start);
        if (text.size() >= 3 && text[0] == L'3' && text[1] == L'6' && text[2] == L'0') {
            angle = 0;
            m_writer.endAt(start);
            m_writer.putFixed(angle, shownDecimals());
        }
        if ((m_flags & kQFlagDrawingText) != 0)
            m_writer.put(tq::detail::kDegreeEscape);
    }

    void writeWithUnit(double value, wchar_t unit) {
        m_writer.putFixed(value, shownDecimals());
        m_writer.put(unit);
    }

    void writeDegreesMinutesSeconds(double& angle) {
        // Finite in radians, but not in degrees: 1e308.
        if (!std::isfinite(angle * kDegreesPerRadian)) {
            m_writer.putFixed(angle * kDegreesPerRadian, 0);
            return;
        }
        writeSplit(splitAngle(angle, m_maxLength));
    }

    void writeBearing(double& angle) {
        const bool spaced = !tq::detail::isDashBitSet(m_flags);
        wchar_t first = 0;
        wchar_t second = 0;
        getAngleOrient(angle, first, second);
        const Split split = splitAngle(angle, m_maxLength - kBearingFrame);
        if (split.liesOnAxis()) {
            m_writer.put(split.degrees == 0 ? first : second);
            return;
        }
        m_writer.put(first);
        if (spaced)
            m_writer.put(L' ');
        writeSplit(split);
        if (spaced)
            m_writer.put(L' ');
        m_writer.put(second);
    }

private:
    struct Split {
        int degrees;
        int minutes;
        double seconds;
        int precision;

        // Only what is shown counts.
        bool liesOnAxis() const {
            return (degrees == 0 || degrees == 90) && (precision == 0 || minutes == 0) &&
                   (precision < kSecondsPrecision || std::fabs(seconds) <= kAxisSeconds);
        }
    };

    int shownDecimals() const { return std::clamp(m_maxLength - 4, 0, std::max(m_precision, 0)); }

    Split splitAngle(double& angle, int maxLength) const {
        Split split{};
        getRoundedDegreeAngle(angle, static_cast<unsigned>(std::max(maxLength, 0)), m_precision, split.degrees,
                              split.minutes, split.seconds, split.precision);
        return split;
    }

    void writeSplit(const Split& split) {
        tq::detail::UnitWriter writer = m_writer; // A copy, which stays in registers.
        writer.putInteger(split.degrees);
        if ((m_flags & kQFlagDrawingText) != 0)
            writer.put(tq::detail::kDegreeEscape);
        else
            writer.put(L'd');
        if (split.precision > 0) {
            writer.putInteger(split.minutes);
            writer.put(L'\'');
        }
        if (split.precision >= kSecondsPrecision) {
            if (split.precision > kSecondDecimalsFrom)
                writer.putFixed(split.seconds, split.precision - kSecondDecimalsFrom);
            else
                writer.putWhole(split.seconds);
            writer.put(tq::detail::kInchMark);
        }
        m_writer = writer;
    }

    tq::detail::UnitWriter& m_writer;
    int m_flags;
    int m_maxLength;
    int m_precision;
};

} // namespace

double tq::detail::absoluteAngle(double angle) {
    if (!std::isfinite(angle))
        return angle;
    const bool clockwise = tq::detail::t_appUnits.settings.angleDirection != 0;
    return reduceToOneTurn(clockwise ? tq::detail::t_appUnits.settings.angleBase - angle
                                     : angle - tq::detail::t_appUnits.settings.angleBase);
}

void formatQModeAngleUnit(tq::detail::UnitWriter& writer, int unitMode, double& angle, int flags, int maxLength,
                          int precision) {
    const bool isFinite = std::isfinite(angle);
    if (unitMode == kAngularSurveyor && isFinite) {
        angle = reduceToOneTurn(angle);
    } else if (angle < 0) {
        writer.put(L'-');
        angle = -angle;
        --maxLength;
    }
    if (unitMode < kAngularDegrees || unitMode > kAngularSurveyor)
        return;
    if (!isFinite) {
        writer.putFixed(angle, 0);
        return;
    }
    AngleText text(writer, flags, maxLength, precision);
    switch (unitMode) {
    case kAngularDegrees:
        text.writeDegrees(angle);
        break;
    case kAngularDegreesMinutesSeconds:
        text.writeDegreesMinutesSeconds(angle);
        break;
    case kAngularGrads:
        text.writeWithUnit(angle * kGradsPerRadian, L'g');
        break;
    case kAngularRadians:
        text.writeWithUnit(angle, L'r');
        break;
    default:
        text.writeBearing(angle);
        break;
    }
}

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

void getRoundedDegreeAngle(double& angle, unsigned maxLength, int precision, int& degrees, int& minutes,
                           double& seconds, int& usedPrecision) {
    assert(angle >= 0);
    usedPrecision = std::min(std::max(precision, 0), precisionForLength(maxLength));
    angle *= kDegreesPerRadian;
    // Whole degrees are an int; an angle that has more is reduced to one turn.
    if (!(angle < INT_MAX))
        angle = std::fmod(angle, kFullTurn);
    if (usedPrecision == 0)
        angle += kHalfDegree;
    else if (usedPrecision < kSecondsPrecision)
        angle += kHalfMinute;
    degrees = static_cast<int>(angle);
    const double shownMinutes = (angle - degrees) * 60;
    minutes = static_cast<int>(shownMinutes);
    seconds = (shownMinutes - minutes) * 60;
    // At precision 3, which shows whole seconds first, the tolerance is ten seconds instead of half a second: 50" and
    // more become a minute. Callers rely on it.
    if (usedPrecision >= kSecondsPrecision && 60 - seconds <= carryTolerance(usedPrecision)) {
        seconds = 0;
        ++minutes;
    }
    if (minutes == 60) {
        minutes = 0;
        ++degrees;
    }
    if (degrees == kFullTurn)
        degrees = 0;
}
