#pragma once

#include "Traverse.h"

#include <optional>
#include <string>
#include <string_view>

/// What the command line fixes; settings lines for it are read but change nothing.
struct FixedSettings {
    std::optional<std::int16_t> linearMode;
    std::optional<std::int16_t> angularMode;
    std::optional<std::int16_t> precision; ///< of lengths and angles
};

/// Reads the lines of a traverse file. Settings come first:
///     units scientific|decimal|engineering|architectural|fractional [PRECISION]
///     angles degrees|dms|grads|radians|surveyor [PRECISION]
///     base DEGREES          the zero direction of bearings, counter-clockwise from east
///     direction ccw|cw      how bearings grow
///     bigfont NAME          the font that tells the code page of double-byte escapes
/// then points, `name ; x ; y ; label`, the label being optional. Names and labels are escaped drawing text. A number
/// sign begins a comment line.
class TraverseParser {
public:
    explicit TraverseParser(const FixedSettings& fixed);

    enum class Result { kNothing, kPoint, kBad };
    /// Reads one line: a point is then in point(), what is wrong with a bad one in expectation().
    Result parse(std::string_view line);

    const Settings& settings() const { return m_settings; }
    const Point& point() const { return m_point; }
    const std::string& expectation() const { return m_expectation; }

private:
    bool parseSetting(std::string_view name, std::string_view value);
    bool parseMode(std::string_view value, bool linear);
    bool parsePoint(std::string_view line);
    bool expect(const std::string& what, std::string_view found);

    FixedSettings m_fixed;
    Settings m_settings;
    Point m_point;
    std::string m_expectation;
    bool m_sawPoint = false;
};
