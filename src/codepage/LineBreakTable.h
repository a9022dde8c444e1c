#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tq::detail {

/// The code points below this one have an entry each, the others share rows.
inline constexpr std::size_t kLowPartCount = 0x3200;
inline constexpr std::size_t kHighPartRowCount = 154;

/// A range of code points: from behind the row before it up to `last`. Between `last` and `next` lie code points
/// without a class of their own, which so take the class of the row that follows.
struct LineBreakRow {
    std::int32_t last;
    std::int32_t lineBreakClass;
    std::int32_t next; ///< Where the range of the following row really begins; 0 behind the last row. For readers only.
};

extern const std::array<std::uint8_t, kLowPartCount> s_LowPartBrakClass;
/// Ascending.
extern const std::array<LineBreakRow, kHighPartRowCount> s_HighPartBreakClass;

} // namespace tq::detail
