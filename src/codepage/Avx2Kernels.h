#pragma once

#include <cstddef>

namespace tq::detail {

/// How far a conversion has come: both count from the beginning.
struct TextProgress {
    std::size_t taken = 0;   ///< Characters read.
    std::size_t written = 0; ///< Elements that they became.
};

// The beginning of a text in AVX2 registers, whatever of it that serves; where the processor has none, nothing at all.
// Both may write scratch behind their result, up to the room.

/// The narrow text [src, end), which ends behind every escape that it begins, to wide text. Room: one element per byte.
TextProgress widenWithAvx2(const char* src, const char* end, wchar_t* out) noexcept;

/// The wide text at `src` up to its first 0, at most `limit` characters of it, into `room` bytes. Unless it runs out of
/// room it takes the text to its end, which it finds itself: it reads nothing behind the 32 bytes, on a boundary of 32,
/// in which the text ends.
TextProgress narrowWithAvx2(const wchar_t* src, std::size_t limit, char* out, std::size_t room) noexcept;

} // namespace tq::detail
