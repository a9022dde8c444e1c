// Drawing units: from a Q mode word and the settings to a length or an angle.

#include "format/AngleText.h"
#include "format/LengthText.h"
#include "format/UnitText.h"

#include <TqOsBase/format/FormatUtil.h>
#include <TqOsBase/format/QMode.h>

#include <algorithm>
#include <climits>
#include <new>

namespace {

struct UnitPair {
    int mode;
    int precision;
};

UnitPair linearPair() {
    return {g_appUnits.linearUnitMode, g_appUnits.linearPrecision};
}

// Engineering and architectural units shown as decimal ones, with about as many decimals as their fractions tell.
UnitPair decimalPair() {
    UnitPair pair = linearPair();
    if (pair.mode == kLinearArchitectural)
        pair.precision = (pair.precision + 2) / 3;
    if (pair.mode == kLinearEngineering || pair.mode == kLinearArchitectural)
        pair.mode = kLinearDecimal;
    return pair;
}

UnitPair unitPair(int qType, int flags) {
    const bool linear = (flags & kQFlagLinearPair) != 0;
    switch (qType) {
    case kQTypeAlternateLength:
        if (linear)
            return linearPair();
        if ((flags & kQFlagDecimalPair) != 0)
            return decimalPair();
        return {g_appUnits.alternateUnitMode, g_appUnits.alternatePrecision};
    case kQTypeAngle:
    case kQTypeRelativeAngle:
        return linear ? linearPair() : UnitPair{g_appUnits.angularUnitMode, g_appUnits.angularPrecision};
    default:
        return linearPair();
    }
}

} // namespace

void FormatUtil::convertQTypeToAppType(int& precision, int& unitMode, int qType, int flags) {
    const UnitPair pair = unitPair(qType, flags);
    precision = std::max(pair.precision, 0);
    unitMode = pair.mode;
    if (qType == kQTypeRelativeAngle && unitMode == kAngularSurveyor)
        unitMode = kAngularDegreesMinutesSeconds;
}

namespace {

void writeQMode(tq::detail::UnitWriter& writer, double value, int mode, unsigned maxLength) {
    const int qType = mode & 0xFF;
    const int flags = mode >> 8 & 0xFF;
    int precision = 0;
    int unitMode = 0;
    FormatUtil::convertQTypeToAppType(precision, unitMode, qType, flags);
    if (qType == kQTypeAngle || qType == kQTypeRelativeAngle) {
        double angle = qType == kQTypeAngle ? tq::detail::absoluteAngle(value) : value;
        const auto length = static_cast<int>(std::min<unsigned>(maxLength, INT_MAX));
        formatQModeAngleUnit(writer, unitMode, angle, flags, length, precision);
        return;
    }
    if (value < 0) {
        writer.put(L'-');
        value = -value;
        maxLength -= maxLength != 0 ? 1 : 0;
    }
    if (qType == kQTypeAlternateLength || qType == kQTypeLength)
        tq::detail::formatLength(writer, unitMode, precision, value, flags, maxLength);
}

} // namespace

unsigned tq::detail::formatQMode(wchar_t* out, int size, double value, int mode, unsigned maxLength) {
    UnitWriter writer(out, size);
    writeQMode(writer, value, mode, maxLength);
    writer.terminate();
    return writer.length();
}

void FormatUtil::formatQModeDouble(wchar_t* out, int size, double value, int mode, unsigned maxLength) {
    if (out == nullptr || size < 1)
        return;
    try {
        tq::detail::formatQMode(out, size, value, mode, maxLength);
    } catch (const std::bad_alloc&) {
        *out = L'\0';
    }
}
