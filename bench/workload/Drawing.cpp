#include "bench/workload/Drawing.h"

#include <cmath>
#include <cstdio>
#include <cstring>
#include <numbers>
#include <stdexcept>

namespace workload {

double Choice::coordinate() {
    for (;;) {
        const double scale = std::pow(10.0, between(1, 6));
        const double value = std::round(static_cast<double>(m_random()) * (1e6 / 4294967296.0) * scale) / scale;
        if (value * 64 != std::floor(value * 64)) // the only ones that can be ties
            return value;
    }
}

std::string Choice::text() {
    static const char* const kWords[] = {"Wall", "240 mm", "see", "A-101", "Door", "REI 90", "concrete", "axis", "C/D"};
    static const char* const kEscapes[] = {"\\U+00B0", "\\U+2205", "\\U+00B1", "\\U+58C1", "\\U+539A"};
    const std::size_t wanted = between(0, 9) < 7 ? between(4, 28) : between(29, 100);
    const bool hasEscapes = between(0, 9) == 0;
    std::string text;
    while (text.size() < wanted) {
        text += kWords[between(0, std::size(kWords) - 1)];
        text += ' ';
        if (hasEscapes)
            text += kEscapes[between(0, std::size(kEscapes) - 1)];
    }
    return text;
}

double Choice::length() {
    return between(1, 400) * 12 + between(1, 11) + (between(0, 7) * 2 + 1) / 16.0;
}

double Choice::angle() {
    const double degrees = between(1, 89) + between(1, 59) / 60.0 + (between(1, 58) + 0.3) / 3600.0;
    return degrees * std::numbers::pi / 180;
}

std::string layerName(std::size_t number) {
    static const char* const kKinds[] = {"Walls-", "Furniture-", "Dim-", "Hatch-Concrete-", "Text-Annotation-"};
    return kKinds[number % std::size(kKinds)] + std::to_string(number);
}

namespace {

class File {
public:
    explicit File(const std::string& path) : m_file(std::fopen(path.c_str(), "wb")) {
        if (m_file == nullptr)
            throw std::runtime_error("cannot write " + path);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() { std::fclose(m_file); }

    void put(const void* bytes, std::size_t count) {
        if (count != 0 && std::fwrite(bytes, 1, count, m_file) != count)
            throw std::runtime_error("cannot write the drawing");
    }
    template <class Number>
    void put(Number number) {
        put(&number, sizeof number);
    }
    void put(const std::string& text) {
        put(static_cast<std::uint16_t>(text.size()));
        put(text.data(), text.size());
    }

private:
    std::FILE* m_file;
};

} // namespace

void writeDrawing(const std::string& path) {
    File file(path);
    Choice choice(20240811);
    file.put(static_cast<std::uint32_t>(kLayers));
    for (std::size_t i = 0; i < kLayers; ++i)
        file.put(layerName(i));
    file.put(static_cast<std::uint32_t>(kEntities));
    for (std::size_t i = 0; i < kEntities; ++i) {
        file.put(static_cast<std::uint16_t>(choice.between(0, kLayers - 1)));
        file.put(static_cast<std::uint64_t>(i * 16 + choice.between(0, 15)));
        file.put(choice.text());
        const unsigned coordinates = choice.between(2, 24);
        file.put(static_cast<std::uint16_t>(coordinates));
        for (unsigned k = 0; k < coordinates; ++k)
            file.put(choice.coordinate());
        const std::string extra(choice.between(1, 160), static_cast<char>('a' + i % 26));
        file.put(extra);
    }
}

LengthParts partsOfLength(double inches) {
    const auto sixteenths = static_cast<int>(inches * 16);
    return {sixteenths / 192, sixteenths / 16 % 12, sixteenths % 16};
}

AngleParts partsOfAngle(double radians) {
    const auto seconds = static_cast<int>(radians * (180 * 3600 / std::numbers::pi) + 0.5);
    return {seconds / 3600, seconds / 60 % 60, seconds % 60};
}

std::uint64_t hashOf(const void* bytes, std::size_t count, std::uint64_t before) {
    const auto* p = static_cast<const unsigned char*>(bytes);
    for (std::size_t i = 0; i < count; ++i)
        before = (before ^ p[i]) * 1099511628211U;
    return before;
}

} // namespace workload
