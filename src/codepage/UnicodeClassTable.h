#pragma once

#include <cstdint>

namespace tq::detail {

/// The number of charsets that a set of charsets can hold; bit i of a set stands for charSetOfBit(i).
inline constexpr int kCharSetBits = 29;

int charSetOfBit(int bit) noexcept;

/// The class, 0 to 32, of a UTF-16 code unit: code units of one class can be shown by the same charsets. Class 0, the
/// class of characters outside U+0000 to U+FFFF too, belongs to no script.
int unicodeClass(wchar_t ch) noexcept;

/// The charsets that can show the characters of a class, a set of bits.
std::uint32_t charSetsOfClass(int unicodeClass) noexcept;

} // namespace tq::detail
