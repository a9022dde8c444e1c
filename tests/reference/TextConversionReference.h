#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>

/// The text conversions as their rules say them, one character at a time and with nothing shared with the library. The
/// results have no terminator.
namespace reference {

/// The length of the escape at `p`, 0 if there is none: `\U+XXXX` for "Uu", 4 digits; `\M+nXXXX` for "Mm".
template <class Char>
int escapeLength(const Char* p, char letter, bool withCodePageDigit) {
    const auto isOneOf = [](Char c, const char* set) {
        return c > 0 && c < 128 && std::strchr(set, static_cast<int>(c));
    };
    int i = 0;
    if (p[i++] != '\\')
        return 0;
    if (p[i] != static_cast<Char>(letter) && p[i] != static_cast<Char>(letter + ('a' - 'A')))
        return 0;
    if (p[++i] != '+')
        return 0;
    ++i;
    if (withCodePageDigit && !isOneOf(p[i++], "012345"))
        return 0;
    for (int digit = 0; digit < 4; ++digit) {
        if (!isOneOf(p[i++], "0123456789ABCDEFabcdef"))
            return 0;
    }
    return i;
}

template <class Char>
long hexNumber(const Char* p) {
    const std::string digits(p, p + 4);
    return std::stol(digits, nullptr, 16);
}

inline std::wstring narrowToWide(const char* src, int length) {
    std::wstring out;
    int i = 0;
    while (i < length && src[i] != 0) {
        if (const int n = escapeLength(src + i, 'U', false)) {
            out += static_cast<wchar_t>(hexNumber(src + i + 3));
            i += n;
        } else if (const int m = escapeLength(src + i, 'M', true)) {
            const long value = hexNumber(src + i + 4);
            if (value == 0 || value >= 128)
                out.append(src + i, src + i + m);
            else
                out += static_cast<wchar_t>(value);
            i += m;
        } else {
            out += static_cast<wchar_t>(static_cast<unsigned char>(src[i++]));
        }
    }
    return out;
}

inline std::string wideToNarrow(const wchar_t* src, int length) {
    std::string out;
    int i = 0;
    while (i < length && src[i] != 0) {
        const auto c = static_cast<std::int32_t>(src[i]);
        int n = 0;
        if (c == '\\')
            n = escapeLength(src + i, 'U', false) + escapeLength(src + i, 'M', true);
        if (n != 0) {
            for (const int end = i + n; i < end; ++i)
                out += static_cast<char>(src[i]);
        } else if (c > 127) {
            char escape[8];
            std::snprintf(escape, sizeof escape, "\\U+%04X", static_cast<unsigned>(c) & 0xFFFF);
            out += escape;
            ++i;
        } else {
            out += static_cast<char>(c);
            ++i;
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
        if (c <= 127) {
            out += static_cast<char>(c & 0xFF);
        } else if (c <= 0x7FF) {
            out += static_cast<char>(0xC0 + c / 64);
            out += static_cast<char>(0x80 + c % 64);
        } else if (c <= 0xFFFF) {
            out += static_cast<char>(0xE0 + c / 4096);
            out += static_cast<char>(0x80 + c / 64 % 64);
            out += static_cast<char>(0x80 + c % 64);
        }
    }
    return out;
}

} // namespace reference
