#pragma once

#include <TqOsBase/stream/MoveBytes.h>

#include <cstdint>

namespace tq::detail {

/// Most bytes that an output buffer collects before they go to the C stream.
inline constexpr std::uint32_t kWriteBehind = 16384;

/// True when the n bytes from `pos` on end at or before `length`; no sum that could overflow.
constexpr bool fits(std::uint64_t pos, std::uint64_t n, std::uint64_t length) noexcept {
    return pos <= length && n <= length - pos;
}

} // namespace tq::detail
