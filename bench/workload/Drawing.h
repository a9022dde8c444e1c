#pragma once

#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

// The drawing that the workload is done on. It is made by a seeded generator, so it is the same everywhere.
//
// The file: the number of layers (32 bits), their names, the number of entities (32 bits), the entities. A name or text
// is its length (16 bits) and its bytes. An entity is its layer (16 bits), its handle (64 bits), its text, the number
// of its coordinates (16 bits), these, the length of its extra data (16 bits), that.
namespace workload {

inline constexpr std::size_t kLayers = 2000;
inline constexpr std::size_t kEntities = 210000; ///< About 50 MB.
inline constexpr std::size_t kLongestText = 128;

/// The sequence of choices that makes a drawing, or an edit of one.
class Choice {
public:
    explicit Choice(unsigned seed) : m_random(seed) {}

    /// `first` to `last`, both possible.
    unsigned between(unsigned first, unsigned last) {
        return first + static_cast<unsigned>(m_random() % (last - first + 1));
    }

    /// Below a million, with 1 to 6 decimals, and never the middle between two numbers of fewer decimals.
    double coordinate();
    /// Mostly short, plain ASCII but for a tenth with a `\U+XXXX` escape or two.
    std::string text();
    /// A length in inches, in odd sixteenths, of a foot or more, neither its inches nor its fraction 0.
    double length();
    /// In radians, of whole seconds and three tenths, below 90 degrees.
    double angle();

private:
    std::mt19937 m_random;
};

/// The name of a layer, plain ASCII.
std::string layerName(std::size_t number);

/// Writes the drawing.
void writeDrawing(const std::string& path);

/// The parts of a length and an angle as people read them, for contenders that have no notion of them.
struct LengthParts {
    int feet, inches, sixteenths;
};
struct AngleParts {
    int degrees, minutes, seconds;
};
LengthParts partsOfLength(double inches);
AngleParts partsOfAngle(double radians);

/// A value that tells the bytes apart from others.
std::uint64_t hashOf(const void* bytes, std::size_t count, std::uint64_t before = 14695981039346656037U);

} // namespace workload
