#pragma once

#include "reference/Testing.h"

/// The text conversions as their rules say them, one character at a time and with nothing shared with the library. The
/// results have no terminator.
namespace reference {

/// The forms of escapes: for every place the characters that may stand there.
inline const std::string kHex = "0123456789ABCDEFabcdef";
inline const std::vector<std::string> kUnicodeEscape = {"\\", "Uu", "+", kHex, kHex, kHex, kHex};
inline const std::vector<std::string> kMifEscape = {"\\", "Mm", "+", "012345", kHex, kHex, kHex, kHex};

/// The length of the escape at `p`, 0 if there is none.
template <class Char>
int escapeLength(const Char* p, const std::vector<std::string>& form) {
    const auto fits = [&p](const std::string& allowed) {
        const Char c = *p++;
        return c > 0 && c < 128 && allowed.find(static_cast<char>(c)) != std::string::npos;
    };
    return std::all_of(form.begin(), form.end(), fits) ? static_cast<int>(form.size()) : 0;
}

inline std::wstring narrowToWide(const char* src, int length) {
    std::wstring out;
    for (int i = 0; i < length && src[i] != 0;) {
        const int n = escapeLength(src + i, kUnicodeEscape);
        const int m = escapeLength(src + i, kMifEscape);
        const long value = n + m == 0 ? 0 : std::stol(std::string(src + i + n + m - 4, 4), nullptr, 16);
        if (n != 0 || (value > 0 && value < 128))
            out += static_cast<wchar_t>(value);
        else if (m != 0)
            out.append(src + i, src + i + m);
        else
            out += static_cast<wchar_t>(static_cast<unsigned char>(src[i++]));
        i += n + m;
    }
    return out;
}

inline std::string wideToNarrow(const wchar_t* src, int length) {
    std::string out;
    for (int i = 0; i < length && src[i] != 0;) {
        const int n = escapeLength(src + i, kUnicodeEscape) + escapeLength(src + i, kMifEscape);
        const auto c = static_cast<std::int32_t>(src[i]);
        if (n == 0 && c > 127) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\U+%04X", static_cast<unsigned>(c) & 0xFFFF);
            out += escape;
            ++i;
        } else {
            for (const int end = i + (n != 0 ? n : 1); i < end; ++i)
                out += static_cast<char>(src[i]);
        }
    }
    return out;
}

inline std::wstring utf8ToUnicode(const char* src, int length) {
    std::wstring out;
    const auto byte = [src](std::int64_t i) { return static_cast<unsigned>(static_cast<unsigned char>(src[i])); };
    std::int64_t i = 0;
    while ((length == 0 || (length > 0 && i <= length)) && byte(i) != 0) {
        const unsigned b = byte(i);
        if ((b & 0xE0) == 0xE0 && (byte(i + 1) & 0xC0) == 0x80 && (byte(i + 2) & 0xC0) == 0x80) {
            out += static_cast<wchar_t>((b & 0x0F) * 4096 + (byte(i + 1) & 0x3F) * 64 + (byte(i + 2) & 0x3F));
            i += 3;
        } else if ((b & 0xC0) == 0xC0 && (byte(i + 1) & 0xC0) == 0x80) {
            out += static_cast<wchar_t>((b & 0x1F) * 64 + (byte(i + 1) & 0x3F));
            i += 2;
        } else {
            out += static_cast<wchar_t>(b);
            i += 1;
        }
    }
    return out;
}

inline std::string unicodeToUtf8(const wchar_t* src, int length) {
    std::string out;
    for (std::int64_t i = 0; i <= length && src[i] != 0; ++i) {
        const long c = static_cast<std::int32_t>(src[i]);
        if (c <= 127)
            out += static_cast<char>(c & 0xFF);
        else if (c <= 0x7FF)
            out += {static_cast<char>(0xC0 + c / 64), static_cast<char>(0x80 + c % 64)};
        else if (c <= 0xFFFF)
            out += {static_cast<char>(0xE0 + c / 4096), static_cast<char>(0x80 + c / 64 % 64),
                    static_cast<char>(0x80 + c % 64)};
    }
    return out;
}

} // namespace reference
