#include "base/Utf8.h"

namespace tq::detail {

namespace {

constexpr bool isContinuation(unsigned byte) {
    return (byte & 0xC0U) == 0x80U;
}

constexpr char continuation(char32_t character, int shift) {
    return static_cast<char>(0x80U | ((character >> shift) & 0x3FU));
}

} // namespace

std::size_t decodeUtf8(const char* src, char32_t& character) noexcept {
    const auto* p = reinterpret_cast<const unsigned char*>(src);
    if (p[0] < 0x80) {
        character = p[0];
        return 1;
    }
    std::size_t length = 0;
    char32_t value = 0;
    char32_t smallest = 0;
    if ((p[0] & 0xE0U) == 0xC0U) {
        length = 2, value = p[0] & 0x1FU, smallest = 0x80;
    } else if ((p[0] & 0xF0U) == 0xE0U) {
        length = 3, value = p[0] & 0x0FU, smallest = 0x800;
    } else if ((p[0] & 0xF8U) == 0xF0U) {
        length = 4, value = p[0] & 0x07U, smallest = 0x10000;
    } else {
        return 0;
    }
    for (std::size_t i = 1; i < length; ++i) {
        if (!isContinuation(p[i]))
            return 0;
        value = (value << 6) | (p[i] & 0x3FU);
    }
    if (value < smallest || isSurrogate(value) || value > 0x10FFFF)
        return 0;
    character = value;
    return length;
}

std::size_t encodeUtf8(char32_t character, char (&out)[kMaxUtf8Length]) noexcept {
    if (character < 0x80) {
        out[0] = static_cast<char>(character);
        return 1;
    }
    if (character < 0x800) {
        out[0] = static_cast<char>(0xC0U | (character >> 6));
        out[1] = continuation(character, 0);
        return 2;
    }
    if (character < 0x10000) {
        out[0] = static_cast<char>(0xE0U | (character >> 12));
        out[1] = continuation(character, 6);
        out[2] = continuation(character, 0);
        return 3;
    }
    if (character <= 0x10FFFF) {
        out[0] = static_cast<char>(0xF0U | (character >> 18));
        out[1] = continuation(character, 12);
        out[2] = continuation(character, 6);
        out[3] = continuation(character, 0);
        return 4;
    }
    return 0;
}

std::string utf8Of(const wchar_t* text) {
    std::string bytes;
    for (; *text != L'\0'; ++text) {
        char sequence[kMaxUtf8Length];
        std::size_t length = encodeUtf8(static_cast<char32_t>(*text), sequence);
        if (length == 0)
            length = encodeUtf8(kReplacementCharacter, sequence);
        bytes.append(sequence, length);
    }
    return bytes;
}

} // namespace tq::detail
