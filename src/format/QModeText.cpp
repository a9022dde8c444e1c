// Drawing units: from a Q mode word and the settings to a length or an angle.

#include "format/QModeText.h"

#include "fltcvt/Ieee754.h"
#include "format/AngleText.h"
#include "format/LengthText.h"
#include "format/UnitSettings.h"
#include "platform/FloatMode.h"

#include <TqOsBase/format/Directive.h>
#include <TqOsBase/format/FormatUtil.h>
#include <TqOsBase/format/QMode.h>

#include <algorithm>
#include <climits>
#include <cwchar>

namespace {

using tq::detail::UnitPair;

UnitPair linearPair() {
    return {tq::detail::t_appUnits.settings.linearUnitMode, tq::detail::t_appUnits.settings.linearPrecision};
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

UnitPair chosenPair(int qType, int flags) {
    const bool linear = (flags & kQFlagLinearPair) != 0;
    switch (qType) {
    case kQTypeAlternateLength:
        if (linear)
            return linearPair();
        if ((flags & kQFlagDecimalPair) != 0)
            return decimalPair();
        return {tq::detail::t_appUnits.settings.alternateUnitMode, tq::detail::t_appUnits.settings.alternatePrecision};
    case kQTypeAngle:
    case kQTypeRelativeAngle:
        return linear ? linearPair()
                      : UnitPair{tq::detail::t_appUnits.settings.angularUnitMode,
                                 tq::detail::t_appUnits.settings.angularPrecision};
    default:
        return linearPair();
    }
}

UnitPair unitPair(int qType, int flags) {
    UnitPair pair = chosenPair(qType, flags);
    pair.precision = std::max(pair.precision, 0);
    if (qType == kQTypeRelativeAngle && pair.mode == kAngularSurveyor)
        pair.mode = kAngularDegreesMinutesSeconds;
    return pair;
}

} // namespace

void FormatUtil::convertQTypeToAppType(int& precision, int& unitMode, int qType, int flags) {
    tq::detail::followUnitSettings();
    const UnitPair pair = unitPair(qType, flags);
    precision = pair.precision;
    unitMode = pair.mode;
}

namespace {

void writeQMode(tq::detail::UnitWriter& writer, double value, int mode, unsigned maxLength) {
    const int qType = mode & 0xFF;
    const int flags = mode >> 8 & 0xFF;
    const UnitPair units = unitPair(qType, flags);
    if (qType == kQTypeAngle || qType == kQTypeRelativeAngle) {
        const auto show = [&] {
            const auto length = static_cast<int>(std::min<unsigned>(maxLength, INT_MAX));
            writer = formatQModeAngleUnit(writer, units, value, qType == kQTypeAngle, flags, length);
        };
        // The mode needs no change where doubles are rounded to nearest and none comes near the subnormals.
        constexpr int kSmallestExponent = tq::detail::kExponentBias - 500;
        if (tq::platform::roundsToNearest() && tq::detail::exponentField(value) >= kSmallestExponent) [[likely]] {
            show();
        } else {
            const tq::platform::DefaultFloatMode floatMode;
            show();
        }
        return;
    }
    if (tq::detail::isBelowZero(value)) {
        writer.put(L'-');
        value = -value;
        maxLength -= maxLength != 0 ? 1 : 0;
    }
    if (qType == kQTypeAlternateLength || qType == kQTypeLength)
        tq::detail::formatLength(writer, units.mode, units.precision, value, flags, maxLength);
}

bool allDigitsZero(const wchar_t* text) {
    bool anyDigit = false;
    for (; *text != L'\0' && *text != L'E' && *text != L'e'; ++text) {
        if (tq::detail::isDecimalDigit(*text)) {
            if (*text != L'0')
                return false;
            anyDigit = true;
        }
    }
    return anyDigit;
}

} // namespace

unsigned tq::detail::formatQMode(wchar_t* out, double value, int mode, unsigned maxLength) {
    followUnitSettings();
    UnitWriter writer(out);
    writeQMode(writer, value, mode, maxLength);
    writer.terminate();
    return writer.length();
}

unsigned formatQModeDoubleUtil(wchar_t* text, double value, int mode, unsigned maxLength) {
    const unsigned length = tq::detail::formatQMode(text, value, mode, maxLength);
    if (*text != L'-' || !allDigitsZero(text + 1))
        return length;
    std::wmemmove(text, text + 1, length - 1);
    return length - 1;
}

void FormatUtil::formatQModeDouble(wchar_t* out, int size, double value, int mode, unsigned maxLength) {
    if (out == nullptr || size < 1)
        return;
    if (size >= tq::detail::kUnitRoom) {
        tq::detail::formatQMode(out, value, mode, maxLength);
        return;
    }
    // `maxLength` is compared with the whole text, which is cut to the buffer afterwards.
    wchar_t whole[tq::detail::kUnitRoom];
    const unsigned length = tq::detail::formatQMode(whole, value, mode, maxLength);
    *std::copy_n(whole, std::min(length, static_cast<unsigned>(size) - 1), out) = L'\0';
}
