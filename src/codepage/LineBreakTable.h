#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tq::detail {

/// The code points below this one have an entry each, the others share rows.
inline constexpr std::size_t kLowPartCount = 0x3200;
inline constexpr std::size_t kHighPartRowCount = 154;

/// A range of code points: from the one after the previous row's `last` to its own `last`. The code points from there
/// up to `next` have no class in the standard; they count to the row that follows.
struct LineBreakRow {
    std::int32_t last;
    std::int32_t lineBreakClass;
    std::int32_t next; ///< The first code point of the next row that has a class; 0 in the last row. For readers only.
};

extern const std::array<std::uint8_t, kLowPartCount> s_LowPartBrakClass;
/// Ascending.
extern const std::array<LineBreakRow, kHighPartRowCount> s_HighPartBreakClass;

} // namespace tq::detail
