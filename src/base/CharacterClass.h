#pragma once

#include <bit>
#include <cstdint>

namespace tq::detail {

/// The code of `c` as an unsigned number: a negative character lies above all others.
constexpr std::uint32_t codeOf(wchar_t c) {
    return std::bit_cast<std::uint32_t>(c);
}

/// The code of `c` as a signed number: below 0 for a character with the highest bit, also where wchar_t has no sign
/// (Linux on arm64).
constexpr std::int32_t signedCodeOf(wchar_t c) {
    return std::bit_cast<std::int32_t>(c);
}

/// The code of a narrow character: a byte from 128 on stays above the others where char is signed.
constexpr unsigned char byteOf(char c) {
    return static_cast<unsigned char>(c);
}

/// True for 0 to 127.
constexpr bool isAscii(wchar_t c) {
    return codeOf(c) < 128;
}

/// Set of character classes, one bit each.
using CharacterClasses = std::uint16_t;

inline constexpr CharacterClasses kUpper = 0x0001;
inline constexpr CharacterClasses kLower = 0x0002;
inline constexpr CharacterClasses kDigit = 0x0004;
inline constexpr CharacterClasses kSpace = 0x0008;
inline constexpr CharacterClasses kPunct = 0x0010;
inline constexpr CharacterClasses kControl = 0x0020;
inline constexpr CharacterClasses kBlank = 0x0040;
inline constexpr CharacterClasses kHexDigit = 0x0080;
inline constexpr CharacterClasses kAlpha = 0x0100;

/// The classes of `c`: below 128 those of ASCII whatever the locale, from 128 on those of the current C locale, without
/// kDigit and kHexDigit, which are ASCII's alone. A negative character has none.
CharacterClasses characterClasses(wchar_t c) noexcept;

bool isUpper(wchar_t c) noexcept;
bool isLower(wchar_t c) noexcept;
bool isDigit(wchar_t c) noexcept;
bool isSpace(wchar_t c) noexcept;
bool isPunct(wchar_t c) noexcept;
bool isControl(wchar_t c) noexcept;
bool isBlank(wchar_t c) noexcept;
bool isHexDigit(wchar_t c) noexcept;
bool isAlpha(wchar_t c) noexcept;

} // namespace tq::detail
