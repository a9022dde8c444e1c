#pragma once

#include "Traverse.h"

#include <cstdint>
#include <functional>
#include <string>

/// Writes the report of a traverse, point by point; it keeps only what the sums need. Every line is handed on in UTF-8,
/// with its end.
class TraverseReport {
public:
    using LineSink = std::function<void(const std::string&)>;
    explicit TraverseReport(LineSink sink) : m_sink(std::move(sink)) {}

    /// The next point; `settings` are those in force before the first one.
    void add(const Point& point, const Settings& settings);
    /// Perimeter, closure and area.
    void finish();
    std::int64_t points() const { return m_points; }

private:
    void writeSettings(const Settings& settings);
    void writeHead();
    void writeLeg(const Point& from, const Point& to);
    void writeClosure();
    void writeArea();
    void line(const std::wstring& text);

    std::wstring length(double value, int width);
    std::wstring bearing(double dx, double dy);

    LineSink m_sink;
    std::string m_utf8;
    LumoAppUnitSets m_units;
    wchar_t m_fontDigit = 0; ///< code page digit that the big font stands for, 0 without one
    std::int64_t m_points = 0;
    std::int64_t m_otherEscapes = 0;
    std::int64_t m_keptEscapes = 0;
    Point m_first;
    Point m_last;
    double m_running = 0;
    double m_twiceArea = 0; ///< of the polygon so far, counter-clockwise positive
};
