#pragma once

#include <TqOsBase/format/LumoAppUnitSets.h>

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

/// One point of the traverse, in drawing units (inches where the units are feet and inches).
struct Point {
    std::wstring name;
    double x = 0;
    double y = 0;
    std::wstring label;      ///< decoded
    wchar_t escapeDigit = 0; ///< code page digit of a double-byte escape that was left in the label, 0 without one
};

/// What the settings lines and the command line say.
struct Settings {
    LumoAppUnitSets units;
    std::wstring bigFont;
};

struct NamedMode {
    std::string_view name;
    std::int16_t mode;
};

inline constexpr std::array<NamedMode, 5> kLinearModes{{{"scientific", kLinearScientific},
                                                        {"decimal", kLinearDecimal},
                                                        {"engineering", kLinearEngineering},
                                                        {"architectural", kLinearArchitectural},
                                                        {"fractional", kLinearFractional}}};
inline constexpr std::array<NamedMode, 5> kAngularModes{{{"degrees", kAngularDegrees},
                                                         {"dms", kAngularDegreesMinutesSeconds},
                                                         {"grads", kAngularGrads},
                                                         {"radians", kAngularRadians},
                                                         {"surveyor", kAngularSurveyor}}};

/// The mode of that name, or -1.
template <std::size_t N>
constexpr std::int16_t modeByName(const std::array<NamedMode, N>& modes, std::string_view name) {
    for (const NamedMode& entry : modes) {
        if (entry.name == name)
            return entry.mode;
    }
    return -1;
}

/// More decimals than a double has digits, or a finer fraction, show nothing new.
inline constexpr int kMaxPrecision = 15;
