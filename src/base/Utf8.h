#pragma once

#include <cstddef>
#include <string>

namespace tq::detail {

/// The longest UTF-8 sequence of one character, in bytes.
inline constexpr std::size_t kMaxUtf8Length = 4;

constexpr bool isSurrogate(char32_t character) noexcept {
    return character >= 0xD800 && character <= 0xDFFF;
}

/// Decodes the one character at `src`, a text that ends with a 0 byte. Returns its length in bytes and stores it, or
/// returns 0 and stores nothing when the bytes are malformed, overlong, a surrogate or above U+10FFFF. At the
/// terminator it returns 1 and stores U+0000. Never reads past the first byte that does not fit.
std::size_t decodeUtf8(const char* src, char32_t& character) noexcept;

/// Writes `character` as UTF-8 and returns the number of bytes, 1 to 4; 0 above U+10FFFF. A surrogate is written in
/// the three-byte form like any other value, so that two different texts never encode alike.
std::size_t encodeUtf8(char32_t character, char (&out)[kMaxUtf8Length]) noexcept;

/// Stands for what cannot be read or written as a character.
inline constexpr char32_t kReplacementCharacter = 0xFFFD;

/// `text` as UTF-8 up to its terminator, with the replacement character for what lies outside Unicode.
std::string utf8Of(const wchar_t* text);

} // namespace tq::detail
