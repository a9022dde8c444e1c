#pragma once

/// \file
/// How a drawing shows its lengths and angles: the settings and their modes.

#include <TqOsBase/Export.h>

#include <cstdint>

/// @{
/// Modes of linear units, the values of LumoAppUnitSets::linearUnitMode and alternateUnitMode.
constexpr std::int16_t kLinearScientific = 1;
constexpr std::int16_t kLinearDecimal = 2;
constexpr std::int16_t kLinearEngineering = 3;
constexpr std::int16_t kLinearArchitectural = 4;
constexpr std::int16_t kLinearFractional = 5;
/// @}

/// @{
/// Modes of angular units, the values of LumoAppUnitSets::angularUnitMode.
constexpr std::int16_t kAngularDegrees = 0;
constexpr std::int16_t kAngularDegreesMinutesSeconds = 1;
constexpr std::int16_t kAngularGrads = 2;
constexpr std::int16_t kAngularRadians = 3;
constexpr std::int16_t kAngularSurveyor = 4;
/// @}

/// Bit of LumoAppUnitSets::flags, the dash bit. Clear: `1'-2 1/2"` and `N 45d E`. Set: `1'2-1/2"` and `N45dE`.
constexpr std::uint16_t kUnitFlagDash = 1;

/// How the drawing shows lengths and angles. The drawing unit of engineering, architectural and fractional lengths is
/// the inch. Modes outside their list write nothing; negative precisions count as 0.
struct LumoAppUnitSets {
    std::uint16_t flags = 0;                      ///< kUnitFlagDash
    std::int16_t linearUnitMode = kLinearDecimal; ///< of kQTypeLength
    std::int16_t linearPrecision = 4; ///< decimals; architectural and fractional: power of two of the denominator
    std::int16_t alternateUnitMode = kLinearDecimal; ///< of kQTypeAlternateLength
    std::int16_t alternatePrecision = 4;             ///< as linearPrecision
    std::int16_t angularUnitMode = kAngularGrads;    ///< of kQTypeAngle and kQTypeRelativeAngle
    std::int16_t angularPrecision = 4;    ///< decimals; 1 or 2 minutes, 3 or 4 seconds, above 4 decimals of seconds
    std::int16_t fractionStackStyle = 0;  ///< stacked fractions: 0 for a slash, otherwise a number sign
    std::int16_t fractionHeight = 0;      ///< height factor written into stacked fractions
    std::int16_t reserved[3] = {0, 0, 0}; ///< not read
    double angleBase = 0.0;               ///< radians: the zero direction of absolute angles
    std::uint8_t angleDirection = 0;      ///< 0: absolute angles grow counter-clockwise; otherwise clockwise
};

namespace Lumo {
using ::LumoAppUnitSets;
}

/// Makes a copy of `units` the settings of every length and angle formatted from then on, in the whole process. Any
/// thread may call it at any time: a text that another thread formats meanwhile follows the old or the new settings,
/// never a mixture. Until the first call they are those of a default-constructed LumoAppUnitSets.
TQ_API void initOsBaseUnits(LumoAppUnitSets& units);
