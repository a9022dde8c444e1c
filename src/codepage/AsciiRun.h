#pragma once

#include <cstddef>

namespace tq::detail {

// The beginning of a text as far as it is plain, in the widest registers that the processor at hand has; where those
// are not wider than what the kernels use anyway, nothing at all. Each returns the number of characters converted,
// never more than `count`, and writes no element beyond them.

/// Bytes other than backslashes to the characters of their values.
std::size_t widenPlainRun(const char* src, std::size_t count, wchar_t* out) noexcept;

/// ASCII characters other than 0 to bytes.
std::size_t narrowAsciiRun(const wchar_t* src, std::size_t count, char* out) noexcept;

} // namespace tq::detail
