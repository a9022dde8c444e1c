#include "TraverseParser.h"

#include "DisplayText.h"

#include <TqOsBase/format/InputWithFormat.h>

#include <algorithm>
#include <cmath>

namespace {

constexpr double kRadiansPerDegree = 0.017453292519943295;

int scan(const std::wstring& text, const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    const int assigned = InputWithFormat(false, text.c_str(), format, args);
    va_end(args);
    return assigned;
}

std::string_view trimmed(std::string_view text) {
    constexpr std::string_view kBlanks = " \t";
    const std::size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
    text.remove_prefix(first);
    return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

// The part of `text` up to `separator`, which is removed from it together with the part.
std::string_view takeUntil(std::string_view& text, char separator) {
    const std::size_t end = std::min(text.find(separator), text.size());
    const std::string_view part = text.substr(0, end);
    text.remove_prefix(std::min(end + 1, text.size()));
    return trimmed(part);
}

// The whole of `text` as a number.
bool readNumber(std::string_view text, double& value) {
    const std::wstring wide(text.begin(), text.end());
    int consumed = 0;
    return scan(wide, L"%F%n", &value, &consumed) == 1 && static_cast<std::size_t>(consumed) == wide.size() &&
           std::isfinite(value);
}

bool readPrecision(std::string_view text, std::int16_t& precision) {
    const std::wstring wide(text.begin(), text.end());
    int value = 0;
    int consumed = 0;
    if (scan(wide, L"%u%n", &value, &consumed) != 1 || static_cast<std::size_t>(consumed) != wide.size() || value < 0 ||
        value > kMaxPrecision)
        return false;
    precision = static_cast<std::int16_t>(value);
    return true;
}

template <std::size_t N>
std::string namesOf(const std::array<NamedMode, N>& modes) {
    std::string names;
    for (const NamedMode& entry : modes)
        names += (names.empty() ? "" : ", ") + std::string(entry.name);
    return names;
}

} // namespace

TraverseParser::TraverseParser(const FixedSettings& fixed) : m_fixed(fixed) {
    LumoAppUnitSets& units = m_settings.units;
    units.angularUnitMode = fixed.angularMode.value_or(kAngularSurveyor);
    units.linearUnitMode = fixed.linearMode.value_or(kLinearDecimal);
    units.linearPrecision = units.angularPrecision = fixed.precision.value_or(std::int16_t{4});
}

TraverseParser::Result TraverseParser::parse(std::string_view line) {
    line = trimmed(line);
    if (line.empty() || line.front() == '#')
        return Result::kNothing;
    if (line.find(';') != std::string_view::npos) {
        if (!parsePoint(line))
            return Result::kBad;
        m_sawPoint = true;
        return Result::kPoint;
    }
    std::string_view value = line;
    const std::string_view name = takeUntil(value, ' ');
    return parseSetting(name, trimmed(value)) ? Result::kNothing : Result::kBad;
}

bool TraverseParser::expect(const std::string& what, std::string_view found) {
    constexpr std::size_t kMaxFound = 40;
    m_expectation = "expected " + what;
    if (found.empty()) {
        m_expectation += ", found nothing";
        return false;
    }
    std::string shown;
    appendUtf8(shown, decodeDrawingText(found.substr(0, kMaxFound)));
    std::replace_if(
        shown.begin(), shown.end(), [](unsigned char c) { return c < ' ' || c == 0x7F; }, '?');
    m_expectation += ", found \"" + shown + (found.size() > kMaxFound ? "...\"" : "\"");
    return false;
}

bool TraverseParser::parseSetting(std::string_view name, std::string_view value) {
    const bool isSetting =
        name == "units" || name == "angles" || name == "base" || name == "direction" || name == "bigfont";
    if (!isSetting)
        return expect("a point (name ; x ; y ; label) or a setting (units, angles, base, direction, bigfont)", name);
    if (m_sawPoint)
        return expect("points only, settings come before them", name);
    if (name == "units" || name == "angles")
        return parseMode(value, name == "units");
    if (name == "base") {
        double degrees = 0;
        if (!readNumber(value, degrees))
            return expect("a number of degrees", value);
        m_settings.units.angleBase = degrees * kRadiansPerDegree;
        return true;
    }
    if (name == "direction") {
        if (value != "ccw" && value != "cw")
            return expect("ccw or cw", value);
        m_settings.units.angleDirection = value == "cw" ? 1 : 0;
        return true;
    }
    if (value.empty())
        return expect("the file name of a big font", value);
    m_settings.bigFont = decodeDrawingText(value);
    return true;
}

bool TraverseParser::parseMode(std::string_view value, bool linear) {
    LumoAppUnitSets& units = m_settings.units;
    const std::string_view name = takeUntil(value, ' ');
    const std::int16_t mode = linear ? modeByName(kLinearModes, name) : modeByName(kAngularModes, name);
    if (mode < 0)
        return expect("one of " + (linear ? namesOf(kLinearModes) : namesOf(kAngularModes)), name);
    std::int16_t precision = linear ? units.linearPrecision : units.angularPrecision;
    value = trimmed(value);
    if (!value.empty() && !readPrecision(value, precision))
        return expect("a precision from 0 to " + std::to_string(kMaxPrecision), value);
    (linear ? units.linearUnitMode : units.angularUnitMode) =
        (linear ? m_fixed.linearMode : m_fixed.angularMode).value_or(mode);
    (linear ? units.linearPrecision : units.angularPrecision) = m_fixed.precision.value_or(precision);
    return true;
}

bool TraverseParser::parsePoint(std::string_view line) {
    const std::string_view name = takeUntil(line, ';');
    if (name.empty())
        return expect("the name of the point", name);
    Point point;
    for (const char axis : {'x', 'y'}) {
        const std::string_view number = takeUntil(line, ';');
        if (!readNumber(number, axis == 'x' ? point.x : point.y))
            return expect(std::string("a number for ") + axis, number);
    }
    point.name = decodeDrawingText(name);
    point.label = decodeDrawingText(trimmed(line));
    const std::size_t escape = std::min(point.label.find(L"\\M+"), point.label.find(L"\\m+"));
    if (escape != std::wstring::npos && escape + 3 < point.label.size())
        point.escapeDigit = point.label[escape + 3];
    m_point = std::move(point);
    return true;
}
