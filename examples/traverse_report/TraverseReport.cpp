#include "TraverseReport.h"

#include "DisplayText.h"

#include <TqOsBase/codepage/TqCharMapper.h>
#include <TqOsBase/codepage/TqCodePageMapper.h>
#include <TqOsBase/format/FormatUtil.h>
#include <TqOsBase/format/QMode.h>

#include <cmath>

namespace {

constexpr int kNameColumns = 8;
constexpr int kLabelColumns = 24;
constexpr int kBearingColumns = 18;
constexpr int kLengthColumns = 16;

template <class... Arguments>
std::wstring format(const wchar_t* format, Arguments... arguments) {
    wchar_t text[256];
    FormatUtil::outputStringWithFormat(text, static_cast<int>(std::size(text)), format, arguments...);
    return text;
}

const char* nameOf(std::int16_t mode, bool linear) {
    for (const NamedMode& entry : linear ? kLinearModes : kAngularModes) {
        if (entry.mode == mode)
            return entry.name.data();
    }
    return "";
}

std::wstring widened(std::string_view ascii) {
    return std::wstring(ascii.begin(), ascii.end());
}

} // namespace

void TraverseReport::line(const std::wstring& text) {
    m_utf8.clear();
    appendUtf8(m_utf8, text);
    m_utf8.erase(m_utf8.find_last_not_of(' ') + 1);
    m_utf8 += '\n';
    m_sink(m_utf8);
}

// In the unit mode that is set; a length that is too long for its column falls back to scientific notation.
std::wstring TraverseReport::length(double value, int width) {
    return format(L"%*.*q*", width, kLengthColumns, qModeWord(kQTypeLength), value);
}

std::wstring TraverseReport::bearing(double dx, double dy) {
    return format(L"%*.*q*", kBearingColumns, kBearingColumns, qModeWord(kQTypeAngle), std::atan2(dy, dx));
}

void TraverseReport::add(const Point& point, const Settings& settings) {
    if (m_points == 0) {
        m_units = settings.units;
        initOsBaseUnits(m_units);
        m_first = m_last = point;
        writeSettings(settings);
        writeHead();
    } else {
        writeLeg(m_last, point);
        m_twiceArea += (m_last.x - m_first.x) * (point.y - m_first.y) - (point.x - m_first.x) * (m_last.y - m_first.y);
        m_last = point;
    }
    if (point.escapeDigit != 0) {
        ++m_keptEscapes;
        m_otherEscapes += point.escapeDigit != m_fontDigit ? 1 : 0;
    }
    ++m_points;
}

void TraverseReport::writeSettings(const Settings& settings) {
    const wchar_t* const direction = m_units.angleDirection != 0 ? L"clockwise" : L"counter-clockwise";
    line(format(L"units %s %d, angles %s %d from %.4f degrees %s",
                widened(nameOf(m_units.linearUnitMode, true)).c_str(), m_units.linearPrecision,
                widened(nameOf(m_units.angularUnitMode, false)).c_str(), m_units.angularPrecision,
                m_units.angleBase * 57.29577951308232, direction));
    if (settings.bigFont.empty())
        return;
    const code_page_id id = TqCharMapper::getCpByBigFont(settings.bigFont.c_str(), nullptr);
    std::wstring text = L"big font " + settings.bigFont + L": ";
    if (id == kCodePageUndefined) {
        text += L"code page not known";
    } else {
        m_fontDigit = reMapCodepage(id);
        text += format(L"double-byte escapes \\M+%c in code page %d", static_cast<int>(m_fontDigit),
                       TqCodePageMapper::lumoCpToAnsiCp(id));
    }
    line(text);
}

void TraverseReport::writeHead() {
    line(L"start " + m_first.name + L" at " + length(m_first.x, 0) + L", " + length(m_first.y, 0) +
         (m_first.label.empty() ? L"" : L": " + m_first.label));
    line(L"");
    std::wstring head;
    appendPadded(head, L"from", kNameColumns + 1);
    appendPadded(head, L"to", kNameColumns + 1);
    appendPadded(head, L"label", kLabelColumns);
    head += format(L"%*s", kBearingColumns + 1, L"bearing");
    head += format(L"%*s", kLengthColumns + 1, L"length");
    head += format(L"%*s", kLengthColumns + 1, L"running");
    for (const NamedMode& entry : kLinearModes) {
        if (entry.mode != m_units.linearUnitMode)
            head += format(L"%*s", kLengthColumns + 1, widened(entry.name).c_str());
    }
    line(head);
    line(std::wstring(head.size(), L'-'));
}

void TraverseReport::writeLeg(const Point& from, const Point& to) {
    const double dx = to.x - from.x;
    const double dy = to.y - from.y;
    const double distance = std::hypot(dx, dy);
    m_running += distance;
    std::wstring row;
    appendPadded(row, from.name, kNameColumns);
    row += L' ';
    appendPadded(row, to.name, kNameColumns);
    row += L' ';
    appendPadded(row, to.label, kLabelColumns);
    row += L' ' + bearing(dx, dy) + L' ' + length(distance, kLengthColumns) + L' ' + length(m_running, kLengthColumns);
    LumoAppUnitSets other = m_units;
    for (const NamedMode& entry : kLinearModes) {
        if (entry.mode == m_units.linearUnitMode)
            continue;
        other.linearUnitMode = entry.mode;
        initOsBaseUnits(other);
        row += L' ' + length(distance, kLengthColumns);
    }
    initOsBaseUnits(m_units);
    line(row);
}

void TraverseReport::finish() {
    line(L"");
    if (m_points < 2) {
        line(L"no legs: a traverse needs two points");
        return;
    }
    line(format(L"points     %D", static_cast<long long>(m_points)));
    line(L"perimeter  " + length(m_running, 0));
    writeClosure();
    if (m_points > 2)
        writeArea();
    if (m_keptEscapes != 0)
        line(format(
            L"labels with double-byte escapes, kept as they stand: %D, of another code page than the big font's: %D",
            static_cast<long long>(m_keptEscapes), static_cast<long long>(m_otherEscapes)));
}

void TraverseReport::writeClosure() {
    const double dx = m_first.x - m_last.x;
    const double dy = m_first.y - m_last.y;
    const double error = std::hypot(dx, dy);
    if (error == 0) {
        line(L"closure    exact");
        return;
    }
    std::wstring text = bearing(dx, dy);
    text.erase(0, text.find_first_not_of(L' '));
    line(L"closure    " + length(error, 0) + L", bearing " + text + format(L", 1 : %.0f", m_running / error));
}

void TraverseReport::writeArea() {
    constexpr double kSquareInchesPerSquareFoot = 144;
    const double area = std::fabs(m_twiceArea) / 2;
    std::wstring text = format(L"area       %.4f square units", area);
    const bool inInches = m_units.linearUnitMode == kLinearEngineering ||
                          m_units.linearUnitMode == kLinearArchitectural || m_units.linearUnitMode == kLinearFractional;
    if (inInches)
        text += format(L" (%.4f square feet)", area / kSquareInchesPerSquareFoot);
    line(text);
}
