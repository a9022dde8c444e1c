#include "DisplayText.h"

#include <TqOsBase/codepage/TqCharMapper.h>

#include <algorithm>

namespace {

struct CharacterRange {
    wchar_t first;
    wchar_t last;
};

constexpr CharacterRange kWide[] = {{0x1100, 0x115F}, {0x2E80, 0x303E}, {0x3041, 0xA4CF}, {0xAC00, 0xD7A3},
                                    {0xF900, 0xFAFF}, {0xFE30, 0xFE6F}, {0xFF00, 0xFF60}, {0xFFE0, 0xFFE6}};
constexpr CharacterRange kCombining[] = {{0x0300, 0x036F}, {0x0483, 0x0489}, {0x0591, 0x05BD}, {0x064B, 0x065F},
                                         {0x0E31, 0x0E31}, {0x0E34, 0x0E3A}, {0x0E47, 0x0E4E}, {0x200B, 0x200F},
                                         {0x20D0, 0x20FF}, {0x3099, 0x309A}, {0xFE20, 0xFE2F}};

template <std::size_t N>
bool isIn(const CharacterRange (&ranges)[N], wchar_t c) {
    return std::any_of(ranges, ranges + N, [c](const CharacterRange& r) { return c >= r.first && c <= r.last; });
}

int characterWidth(wchar_t c) {
    if (c < kCombining[0].first)
        return 1;
    return isIn(kCombining, c) ? 0 : isIn(kWide, c) ? 2 : 1;
}

bool isShown(wchar_t c) {
    const bool isControl = c < L' ' || (c >= 0x7F && c < 0xA0);
    const bool isSurrogate = c >= 0xD800 && c <= 0xDFFF;
    return !isControl && !isSurrogate;
}

} // namespace

std::wstring decodeDrawingText(std::string_view escaped) {
    constexpr wchar_t kReplacement = 0xFFFD;
    // The decoder looks ahead for escapes, so the text needs its terminator.
    const std::string source(escaped);
    TqVector<wchar_t> wide;
    TqCharMapper::multiByteToWideChar(kCodePageUndefined, source.c_str(), static_cast<int>(source.size()), wide);
    std::wstring text(wide.asArrayPtr(), static_cast<std::size_t>(wide.logicalLength() - 1));
    std::replace_if(
        text.begin(), text.end(), [](wchar_t c) { return !isShown(c); }, kReplacement);
    return text;
}

int displayWidth(std::wstring_view text) {
    int width = 0;
    for (const wchar_t c : text)
        width += characterWidth(c);
    return width;
}

void appendPadded(std::wstring& line, std::wstring_view text, int columns) {
    int width = displayWidth(text);
    if (width <= columns) {
        line += text;
    } else {
        // One column for the ellipsis; the character before it may leave one empty.
        width = 0;
        for (const wchar_t c : text) {
            if (width + characterWidth(c) > columns - 1)
                break;
            width += characterWidth(c);
            line += c;
        }
        line += L'\u2026';
        ++width;
    }
    line.append(static_cast<std::size_t>(columns - width), L' ');
}

void appendUtf8(std::string& out, const std::wstring& text) {
    TqVector<char> utf8;
    TqCharMapper::unicodeToUtf8(text.c_str(), static_cast<int>(text.size()), utf8);
    if (utf8.logicalLength() > 1)
        out.append(utf8.asArrayPtr(), static_cast<std::size_t>(utf8.logicalLength() - 1));
}
